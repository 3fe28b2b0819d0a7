# Cross-builds for another Linux with a cross compiler of Debian; VORNA_TARGET names the system as the compiler does, for example
# aarch64-linux-gnu. Programs run under QEMU's user mode where it is installed. Libraries that Debian has for this machine only are
# looked for in build/libraries, where scripts/test-foreign.sh puts them.
set(CMAKE_SYSTEM_NAME Linux)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VORNA_TARGET)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR "${VORNA_TARGET}")
set(CMAKE_C_COMPILER ${VORNA_TARGET}-gcc)
set(CMAKE_CXX_COMPILER ${VORNA_TARGET}-g++)
set(CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../build/libraries/${VORNA_TARGET} /usr/${VORNA_TARGET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(QEMU_FOR_TARGET qemu-${CMAKE_SYSTEM_PROCESSOR})
if(QEMU_FOR_TARGET)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QEMU_FOR_TARGET} -L /usr/${VORNA_TARGET})
endif()
