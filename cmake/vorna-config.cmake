# The installed package: Vorna::vorna15, Vorna::krb and, where it is installed, Vorna::drawing.
include(${CMAKE_CURRENT_LIST_DIR}/vorna-targets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/vorna-drawing-targets.cmake OPTIONAL)
foreach(component IN LISTS ${CMAKE_FIND_PACKAGE_NAME}_FIND_COMPONENTS)
  if(NOT TARGET Vorna::${component} AND ${CMAKE_FIND_PACKAGE_NAME}_FIND_REQUIRED_${component})
    set(${CMAKE_FIND_PACKAGE_NAME}_FOUND FALSE)
    set(${CMAKE_FIND_PACKAGE_NAME}_NOT_FOUND_MESSAGE "Vorna::${component} is not installed")
  endif()
endforeach()
