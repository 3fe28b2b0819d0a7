# Cross-builds for 64-bit Windows with the MinGW-w64 compiler of Debian; programs run under Wine where it is installed.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(target x86_64-w64-mingw32)
find_program(MINGW_CXX ${target}-g++-posix REQUIRED)
cmake_path(GET MINGW_CXX PARENT_PATH bin)
set(CMAKE_C_COMPILER ${target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${target}-g++-posix)
set(CMAKE_RC_COMPILER ${target}-windres)
set(CMAKE_FIND_ROOT_PATH ${bin}/../${target})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian keeps Wine's 64-bit binary out of the search path.
find_program(WINE NAMES wine64 wine PATH_SUFFIXES ../lib/wine)
if(WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_COMMAND};-E;env;WINEPREFIX=${CMAKE_BINARY_DIR}/wine;WINEDEBUG=-all
                                    "WINEDLLOVERRIDES=mscoree=,mshtml=" ${WINE})
endif()
