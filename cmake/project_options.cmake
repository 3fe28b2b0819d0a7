# What every target is compiled with: C++20, warnings, and floating point that gives the same bytes everywhere.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_include_directories(project_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
if(MSVC)
  target_compile_options(project_options INTERFACE /W4 /permissive- /utf-8 /fp:precise)
else()
  target_compile_options(project_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wno-missing-field-initializers
                                                   -ffp-contract=off)
endif()
set_property(TARGET project_options PROPERTY INTERFACE_CXX_EXTENSIONS OFF)
