# cmake -D OBJDUMP=objdump -D FILE=krb.vrd -P imports.cmake
#
# A file for Windows needs the system's libraries and the host library only.
cmake_minimum_required(VERSION 3.25)
set(allowed KERNEL32.dll msvcrt.dll vorna15.dll)
execute_process(COMMAND ${OBJDUMP} -p ${FILE} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]+" lines "${listing}")
if(NOT lines)
  message(SEND_ERROR "  ${FILE}: no imports found, not even the system's")
endif()
foreach(line IN LISTS lines)
  string(REPLACE "DLL Name: " "" name "${line}")
  if(NOT name IN_LIST allowed)
    message(SEND_ERROR "  ${FILE}: needs ${name}")
  endif()
endforeach()
