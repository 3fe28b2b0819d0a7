# The command with files and outputs that are against it.
find_program(BASH bash)
if(BASH AND NOT WIN32 AND VORNA_WITH_MODEL_LIBRARIES)
  add_test(NAME reliability.hostile_input COMMAND ${BASH} ${CMAKE_CURRENT_LIST_DIR}/hostile_input.sh $<TARGET_FILE:vorna>
                                                  ${PROJECT_SOURCE_DIR}/recordings)
  set_tests_properties(reliability.hostile_input PROPERTIES TIMEOUT 300)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set_tests_properties(reliability.hostile_input PROPERTIES TIMEOUT 1200)
  endif()
endif()

# Where the command writes, and how it ends when it is stopped.
if(BASH AND NOT WIN32)
  set(noted_calls)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    add_library(vorna_noted_calls MODULE ${CMAKE_CURRENT_LIST_DIR}/noted_calls.cpp)
    target_link_libraries(vorna_noted_calls PRIVATE project_options ${CMAKE_DL_LIBS})
    set(noted_calls $<TARGET_FILE:vorna_noted_calls>)
  endif()
  add_test(NAME reliability.outputs COMMAND ${BASH} ${CMAKE_CURRENT_LIST_DIR}/outputs.sh $<TARGET_FILE:vorna> ${noted_calls})
  set_tests_properties(reliability.outputs PROPERTIES TIMEOUT 300)
endif()
