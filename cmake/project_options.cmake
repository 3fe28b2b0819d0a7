# What every target is compiled with: C++20, warnings, and floating point that gives the same bytes everywhere. A project that uses
# the installed host library takes over the language and the include folder only.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_include_directories(project_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                                     $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
if(MSVC)
  set(options /W4 /permissive- /utf-8 /fp:precise)
else()
  set(options -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wno-missing-field-initializers -ffp-contract=off)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in its own std::string concatenation.
    list(APPEND options -Wno-restrict)
  endif()
endif()
target_compile_options(project_options INTERFACE "$<BUILD_INTERFACE:${options}>")
