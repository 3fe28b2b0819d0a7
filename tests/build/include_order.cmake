# cmake -D ROOT=folder -P include_order.cmake
#
# Files of host/ and renderer/ include only from their own folder and from folders before it in this list. The slot table
# installs what stands in the other folders, and alone looks at all of them.
cmake_minimum_required(VERSION 3.25)
set(folders host renderer/core renderer/kernels renderer/mask renderer/triangles renderer/depth_lines renderer/primitives renderer/lines)
set(exceptions renderer/core/actions.cpp)

set(before "")
foreach(folder IN LISTS folders)
  list(APPEND before ${folder})
  file(GLOB files RELATIVE ${ROOT} ${ROOT}/${folder}/*)
  foreach(file IN LISTS files)
    if(file IN_LIST exceptions)
      continue()
    endif()
    math(EXPR looked_at "${looked_at} + 1")
    file(STRINGS ${ROOT}/${file} includes REGEX "^ *# *include +\"")
    foreach(include IN LISTS includes)
      string(REGEX REPLACE "^[^\"]*\"([^\"]*)/[^/\"]*\".*" "\\1" from "${include}")
      if(NOT from IN_LIST before)
        message(SEND_ERROR "  ${file} includes from ${from}")
      endif()
    endforeach()
  endforeach()
endforeach()
if(NOT looked_at)
  message(FATAL_ERROR "no files of host/ and renderer/ in ${ROOT}")
endif()
