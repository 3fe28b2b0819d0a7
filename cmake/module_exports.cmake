# The module gives its host the three entry points and nothing else: hidden visibility does not reach the templates of the standard
# library.
if(UNIX AND NOT APPLE)
  target_link_options(krb PRIVATE LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/module_exports.map)
  set_property(TARGET krb APPEND PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/module_exports.map)
endif()
