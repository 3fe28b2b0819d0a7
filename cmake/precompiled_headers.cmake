# Reading the headers of the standard library takes more than half of the time to compile sources like those of app/. Builds that
# are only tested read them once a library. Others compile each source with the headers that it includes itself.
set(standard_headers <algorithm> <array> <charconv> <cmath> <filesystem> <functional> <map> <memory> <optional> <span> <string> <vector>)
foreach(library krb_objects vorna15 vorna_files vorna_image vorna_job vorna_map vorna_model vorna_recording vorna_app)
  if(TARGET ${library})
    target_precompile_headers(${library} PRIVATE ${standard_headers})
  endif()
endforeach()
if(TARGET vorna_recording)
  target_precompile_headers(vorna_recording PRIVATE <nlohmann/json.hpp>)
  # A source with options of its own.
  set_source_files_properties(${PROJECT_SOURCE_DIR}/drawing/image/studio_shading.cpp TARGET_DIRECTORY vorna_image
                              PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
endif()
