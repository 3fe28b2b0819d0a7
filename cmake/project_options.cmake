# What every target is compiled with: C++20, warnings, and floating point that gives the same bytes everywhere. A project that uses
# the installed host library takes over the language and the include folder only.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
# The one header that is made: of the project's version.
configure_file(vorna/version.h.in include/vorna/version.h @ONLY)
target_include_directories(project_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                                     $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
                                                     $<INSTALL_INTERFACE:${VORNA_INCLUDE_FOLDER}>)
set(definitions)
set(link_options)
if(MSVC)
  # Entry points are plain C names that throw. Members of exported classes belong to the same compiler and library on both sides.
  set(options /W4 /permissive- /utf-8 /bigobj /EHs /EHc- /wd4251 /wd4275 /fp:precise)
  set(definitions _CRT_SECURE_NO_WARNINGS)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    list(APPEND options /clang:-ffp-contract=off)
  endif()
else()
  set(options -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wno-missing-field-initializers -ffp-contract=off)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in its own std::string concatenation.
    list(APPEND options -Wno-restrict)
    if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
      # With sanitizers it does not follow which alternative of a std::variant holds the value.
      list(APPEND options -Wno-maybe-uninitialized)
    endif()
  endif()
  if(EMSCRIPTEN)
    # Sizes are counted in 64 bits and checked before memory of 32 bits is asked for.
    list(APPEND options -Wno-shorten-64-to-32)
  endif()
endif()
if(WIN32)
  list(APPEND definitions NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
# What a fault in the code could still be turned into is little: guarded stacks and copies, and tables that nobody writes once they are
# filled. MinGW's linker has its own ways switched on.
set(hardening)
set(hardening_links)
if(UNIX AND NOT APPLE AND NOT EMSCRIPTEN)
  set(fortify 3)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
    set(fortify 2)
  endif()
  # Targets may do without guards.
  set(is_guarded $<NOT:$<BOOL:$<TARGET_PROPERTY:VORNA_UNGUARDED>>>)
  set(hardening -U_FORTIFY_SOURCE $<${is_guarded}:-D_FORTIFY_SOURCE=${fortify}> $<${is_guarded}:-fstack-protector-strong>
                $<${is_guarded}:-fstack-clash-protection>)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    list(APPEND hardening -fcf-protection)
  endif()
  set(hardening_links LINKER:-z,relro LINKER:-z,now)
endif()
if(MINGW)
  # Only the system's own libraries at run time, and the same file from the same sources.
  set(link_options -static LINKER:--no-insert-timestamp $<$<CONFIG:Release>:-s>)
endif()
target_compile_options(project_options INTERFACE "$<BUILD_INTERFACE:${options}>"
                                                 "$<BUILD_INTERFACE:$<$<CONFIG:Release>:${hardening}>>")
target_compile_definitions(project_options INTERFACE "$<BUILD_INTERFACE:${definitions}>")
target_link_options(project_options INTERFACE "$<BUILD_INTERFACE:${link_options}>"
                                              "$<BUILD_INTERFACE:$<$<CONFIG:Release>:${hardening_links}>>")
