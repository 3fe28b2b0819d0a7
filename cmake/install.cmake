# Command, host library with its headers, and the module in the folder where the library looks for it: components, which become
# packages of their own. An installed tree may be moved as a whole: every file finds the others from where it lies itself. In the build
# they lie side by side. Files that looked in other places there would have CMake fill up the shorter list with empty ones, and an
# empty place is the current folder.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vorna)
file(RELATIVE_PATH library_from_command ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

function(look_in target folder)
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN;${folder}")
endfunction()
look_in(krb $ORIGIN/..)
install(TARGETS vorna15 project_options EXPORT vorna
        RUNTIME COMPONENT library
        LIBRARY COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development)
install(TARGETS krb EXPORT vorna LIBRARY DESTINATION ${VORNA_MODULE_FOLDER} COMPONENT library)
if(VORNA_BUILD_COMMAND)
  look_in(vorna $ORIGIN/${library_from_command})
  install(TARGETS vorna COMPONENT command)
endif()
# The drawing library, with everything that programs need of it. Its headers include each other.
if(TARGET vorna_drawing_library)
  look_in(vorna_drawing_library $ORIGIN)
  install(TARGETS vorna_drawing_library EXPORT vorna_drawing LIBRARY COMPONENT drawing)
  foreach(header drawing.h export.h image_samples.h recordings.h files/interrupted.h files/usage_error.h image/image.h job/print_settings.h map/map_paint.h map/map_settings.h map/shapes.h model/camera.h
                 model/material.h model/mesh.h model/model_look.h)
    get_filename_component(folder drawing/${header} DIRECTORY)
    install(FILES drawing/${header} DESTINATION ${VORNA_INCLUDE_FOLDER}/${folder} COMPONENT drawing)
  endforeach()
  install(EXPORT vorna_drawing NAMESPACE Vorna:: FILE vorna-drawing-targets.cmake DESTINATION ${package_folder} COMPONENT drawing)
endif()
# The C interface. Its headers are found as <vorna/vorna.h>.
if(TARGET vorna_c)
  look_in(vorna_c $ORIGIN)
  install(TARGETS vorna_c EXPORT vorna_c LIBRARY COMPONENT c)
  foreach(header vorna c_canvas c_draw c_image c_map c_model c_recording c_types)
    install(FILES vorna/${header}.h DESTINATION ${VORNA_INCLUDE_FOLDER}/vorna COMPONENT c)
  endforeach()
  install(EXPORT vorna_c NAMESPACE Vorna:: FILE vorna-c-targets.cmake DESTINATION ${package_folder} COMPONENT c)
endif()
if(VORNA_WITH_VIEWER)
  look_in(vorna_window $ORIGIN/..)
  install(TARGETS vorna_window LIBRARY DESTINATION ${VORNA_MODULE_FOLDER} COMPONENT viewer)
endif()
install(DIRECTORY host DESTINATION ${VORNA_INCLUDE_FOLDER} COMPONENT development
        FILES_MATCHING PATTERN "*.h" PATTERN "*.inc")
install(FILES vorna/canvas.h vorna/draw.h vorna/module.h vorna/slot_contracts.h ${PROJECT_BINARY_DIR}/include/vorna/version.h
        DESTINATION ${VORNA_INCLUDE_FOLDER}/vorna COMPONENT development)

# Found as Vorna, and as vorna too, by the file's name. The drawing library and the C interface are found where they are installed.
install(EXPORT vorna NAMESPACE Vorna:: FILE vorna-targets.cmake DESTINATION ${package_folder} COMPONENT development)
install(FILES cmake/vorna-config.cmake DESTINATION ${package_folder} COMPONENT development)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vorna-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorna-config-version.cmake DESTINATION ${package_folder} COMPONENT development)

foreach(folder LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
    message(FATAL_ERROR "CMAKE_INSTALL_${folder}: expected a folder below the installation's, found ${CMAKE_INSTALL_${folder}}")
  endif()
endforeach()
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/vorna.pc.in vorna.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorna.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
if(TARGET vorna_c)
  configure_file(cmake/vorna-c.pc.in vorna-c.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorna-c.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT c)
endif()
if(TARGET vorna_drawing_library)
  configure_file(cmake/vorna-drawing.pc.in vorna-drawing.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorna-drawing.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT drawing)
endif()
