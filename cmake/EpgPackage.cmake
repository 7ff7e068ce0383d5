# Where things are installed to, and the packages that are made of them.

set(documents ${CMAKE_INSTALL_DATADIR}/doc/epgbrowser)
# Engine and module are private to this package; the program finds them from where it stands.
set(private_libraries ${CMAKE_INSTALL_LIBDIR}/epgbrowser)

install(TARGETS epgshell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS orvane LIBRARY DESTINATION ${private_libraries})
install(TARGETS epgbrowser LIBRARY DESTINATION ${private_libraries})
install(DIRECTORY samples/ DESTINATION ${documents}/examples)
install(FILES README.md DESTINATION ${documents})
install(DIRECTORY docs/ DESTINATION ${documents}/docs FILES_MATCHING PATTERN "*.md")
install(FILES cmake/copyright DESTINATION ${documents})

find_program(GZIP gzip)
if(GZIP)
  foreach(document docs/epgshell.1 cmake/changelog)
    get_filename_component(name ${document} NAME)
    add_custom_command(OUTPUT ${name}.gz DEPENDS ${document}
      COMMAND ${GZIP} -9nc ${CMAKE_CURRENT_SOURCE_DIR}/${document} > ${name}.gz VERBATIM)
    list(APPEND compressed ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz)
  endforeach()
  add_custom_target(compressed_documents ALL DEPENDS ${compressed})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/epgshell.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz DESTINATION ${documents})
else()
  install(FILES docs/epgshell.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME epgbrowser)
set(CPACK_PACKAGE_CONTACT "The EPG browser authors <authors@norvex.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "electronic programme guide plug-in with a console host")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Loads television listings (XMLTV, TitanTV data service, Radio Times XML and
a cache format of its own) in the background into a schedule that is indexed
by time, and lets scripts of a 3D engine ask it.

The package holds the plug-in, a stand-in of the engine, sample listings, and
epgshell, a console program that shows a listings file as a guide.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
include(CPack)
