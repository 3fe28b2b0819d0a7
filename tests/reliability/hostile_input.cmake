# The command with files and outputs that are against it.
find_program(BASH bash)
if(BASH AND NOT WIN32 AND VORNA_WITH_MODEL_LIBRARIES)
  add_test(NAME reliability.hostile_input COMMAND ${BASH} ${CMAKE_CURRENT_LIST_DIR}/hostile_input.sh $<TARGET_FILE:vorna>
                                                  ${PROJECT_SOURCE_DIR}/pictures)
  set_tests_properties(reliability.hostile_input PROPERTIES TIMEOUT 300)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set_tests_properties(reliability.hostile_input PROPERTIES TIMEOUT 1200)
  endif()
endif()
