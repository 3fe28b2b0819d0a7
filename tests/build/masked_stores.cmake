# cmake -D OBJDUMP=objdump -D OBJECTS=a.o;b.o -P masked_stores.cmake
#
# Kernels rely on masked stores that touch no memory of lanes they leave out. Extraction of a part of a vector to memory has a mask
# too, but faults on all of its bytes, and GCC 12 makes it of an extraction followed by a masked store.
cmake_minimum_required(VERSION 3.25)
if(NOT OBJECTS)
  message(FATAL_ERROR "no objects to look at")
endif()
foreach(object IN LISTS OBJECTS)
  execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${object} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
  if(NOT listing MATCHES "ret")
    message(SEND_ERROR "  ${object}: no code found")
  endif()
  if(listing MATCHES "(vextract[a-z0-9]+ [^\n]*\\)[{]%k[^\n]*)")
    message(SEND_ERROR "  ${object}: faults on lanes that it leaves out: ${CMAKE_MATCH_1}")
  endif()
endforeach()
