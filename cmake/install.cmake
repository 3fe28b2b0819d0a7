# Command, host library with its headers, and the module in the folder where the command looks for it: components, which become
# packages of their own.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/vorna)
file(RELATIVE_PATH library_from_command ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

set_target_properties(vorna15 PROPERTIES EXPORT_NAME vorna15)
set_target_properties(krb PROPERTIES INSTALL_RPATH "$ORIGIN/..")
install(TARGETS vorna15 project_options EXPORT vorna
        RUNTIME COMPONENT library LIBRARY COMPONENT library ARCHIVE COMPONENT development)
install(TARGETS krb LIBRARY DESTINATION ${VORNA_MODULE_FOLDER} COMPONENT library)
if(VORNA_BUILD_COMMAND)
  set_target_properties(vorna PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_command}")
  install(TARGETS vorna COMPONENT command)
endif()
if(VORNA_WITH_VIEWER)
  set_target_properties(vorna_window PROPERTIES INSTALL_RPATH "$ORIGIN/..")
  install(TARGETS vorna_window LIBRARY DESTINATION ${VORNA_MODULE_FOLDER} COMPONENT viewer)
endif()
install(DIRECTORY renderer/host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/renderer COMPONENT development
        FILES_MATCHING PATTERN "*.h" PATTERN "*.inc")
install(FILES vorna/draw.h vorna/module.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vorna COMPONENT development)

install(EXPORT vorna NAMESPACE vorna:: FILE vorna-config.cmake DESTINATION ${package_folder} COMPONENT development)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vorna-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorna-config-version.cmake DESTINATION ${package_folder} COMPONENT development)
