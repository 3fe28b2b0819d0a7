# Builds for browsers and Node.js with Emscripten 3.1.6, Debian's. Its toolchain file is that of the compiler that is found. The
# libraries for it are looked for in build/libraries, where scripts/zlib-for.sh puts them.
execute_process(COMMAND em-config EMSCRIPTEN_ROOT OUTPUT_VARIABLE emscripten_root OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_CURRENT_LIST_DIR}/../build/libraries/wasm32-emscripten)
set(EMSCRIPTEN_SYSTEM_PROCESSOR wasm32)
include(${emscripten_root}/cmake/Modules/Platform/Emscripten.cmake)
# Exceptions of WebAssembly itself: those made of JavaScript's are slower and larger.
set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions -include ${CMAKE_CURRENT_LIST_DIR}/missing_library.h")
set(CMAKE_C_FLAGS_INIT -fwasm-exceptions)
set(CMAKE_CROSSCOMPILING_EMULATOR node)
# The C library declares threads, and none can be made.
set(CMAKE_HAVE_LIBC_PTHREAD ON)
