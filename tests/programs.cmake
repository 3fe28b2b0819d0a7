# GoogleTest, and how its programs become tests. Natively each of their tests is one of CTest's. A cross-built program runs as a
# whole, since starting it takes long: for Windows on Wine, for other processors under the emulator of the toolchain file.
if(CMAKE_CROSSCOMPILING)
  find_path(GOOGLETEST_FOLDER googletest/CMakeLists.txt PATHS /usr/src/googletest NO_CMAKE_FIND_ROOT_PATH NO_DEFAULT_PATH REQUIRED)
  set(INSTALL_GTEST OFF)
  add_subdirectory(${GOOGLETEST_FOLDER} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
if(CMAKE_CROSSCOMPILING AND WIN32)
  set(wine_script ${CMAKE_CURRENT_LIST_DIR}/windows/wine.sh)
  set(wine_prefix ${CMAKE_BINARY_DIR}/wine)
  # One server for all tests, started and stopped beside them.
  add_test(NAME wine.start COMMAND sh ${wine_script} start ${wine_prefix} ${WINE})
  add_test(NAME wine.stop COMMAND sh ${wine_script} stop ${wine_prefix} ${WINE})
  set_tests_properties(wine.start PROPERTIES FIXTURES_SETUP wine TIMEOUT 300)
  set_tests_properties(wine.stop PROPERTIES FIXTURES_CLEANUP wine TIMEOUT 60)
elseif(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

set(whole_run_timeout 600)
if(CMAKE_CROSSCOMPILING AND NOT WIN32)
  set(whole_run_timeout 3000) # an emulator takes some ten times as long
endif()

# add_whole_run(NAME PROGRAM [LEFT_OUT TEST...])
function(add_whole_run name program)
  cmake_parse_arguments(run "" "" LEFT_OUT ${ARGN})
  list(JOIN run_LEFT_OUT ":" left_out)
  if(CMAKE_CROSSCOMPILING AND WIN32)
    add_test(NAME ${name} COMMAND sh ${wine_script} test ${wine_prefix} ${WINE} $<TARGET_FILE:${program}> --gtest_brief=1
                                  --gtest_filter=-${left_out})
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine)
  else()
    add_test(NAME ${name} COMMAND ${program} --gtest_brief=1 --gtest_filter=-${left_out})
  endif()
  set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT ${whole_run_timeout})
endfunction()

# add_test_program(PROGRAM [PREFIX PREFIX] [LEFT_OUT TEST...]): LEFT_OUT names tests that cannot run on Wine.
function(add_test_program program)
  cmake_parse_arguments(run "" PREFIX LEFT_OUT ${ARGN})
  if(WIN32)
    target_sources(${program} PRIVATE ${PROJECT_SOURCE_DIR}/tests/windows/crash_status.cpp)
  endif()
  if(CMAKE_CROSSCOMPILING)
    add_whole_run(${program} ${program} LEFT_OUT ${run_LEFT_OUT})
  else()
    gtest_discover_tests(${program} TEST_PREFIX "${run_PREFIX}" PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# What stands before the command in a command line: the emulator of its processor, if it needs one.
set(emulator)
if(CMAKE_CROSSCOMPILING AND NOT WIN32)
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
  string(APPEND emulator " ")
endif()

# use_command(PROGRAM): tests that run the command and look at what it writes.
function(use_command program)
  target_compile_definitions(${program} PRIVATE
    KRB_MODULE="$<TARGET_FILE:krb>"
    VORNA_COMMAND="$<TARGET_FILE:vorna>"
    VORNA_EMULATOR="${emulator}"
    VORNA_PICTURES="${PROJECT_SOURCE_DIR}/recordings"
    VORNA_GOLDENS="${PROJECT_SOURCE_DIR}/tests/golden"
    WITH_PROJ=$<BOOL:${VORNA_WITH_PROJ}>
    WITH_FREETYPE=$<BOOL:${VORNA_WITH_FREETYPE}>)
  add_dependencies(${program} vorna krb)
  # They wait for processes.
  if(NOT MSVC)
    target_compile_options(${program} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
  # Reading what every test includes takes longer than compiling most of them.
  target_precompile_headers(${program} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <filesystem> <fstream> <functional> <string>
                                               <vector>)
endfunction()
