# Where things are installed to, and the packages that are made of them: one of the plug-in and its
# console host, and one of the companion programs, with the libraries that those need.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME epgbrowser)
set(documents ${CMAKE_INSTALL_DATADIR}/doc/epgbrowser)
# Engine and module are private to this package; the programs find them from where they stand.
set(private_libraries ${CMAKE_INSTALL_LIBDIR}/epgbrowser)

install(TARGETS epgshell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS orvane LIBRARY DESTINATION ${private_libraries})
install(TARGETS epgbrowser LIBRARY DESTINATION ${private_libraries})
# What host programs are compiled with.
install(DIRECTORY host/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/epgbrowser/host
  FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
install(DIRECTORY samples DESTINATION ${documents})
install(FILES cmake/installed-readme.md DESTINATION ${documents} RENAME README.md)
install(FILES docs/embedding.md docs/listings.md docs/real-guides.md docs/scripting.md
  DESTINATION ${documents}/docs)

# A manual page, a change log and a copyright notice, as a package of that name has them.
find_program(GZIP gzip)
function(epg_install_notices package manual)
  set(place ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES cmake/copyright DESTINATION ${place} COMPONENT ${package})
  if(NOT GZIP)
    install(FILES docs/${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${package})
    return()
  endif()
  foreach(document docs/${manual} cmake/changelog)
    get_filename_component(name ${document} NAME)
    set(compressed ${CMAKE_CURRENT_BINARY_DIR}/${package}/${name}.gz)
    add_custom_command(OUTPUT ${compressed} DEPENDS ${document}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/${package}
      COMMAND sed s/^epgbrowser/${package}/ ${CMAKE_CURRENT_SOURCE_DIR}/${document} |
        ${GZIP} -9n > ${compressed} VERBATIM)
    list(APPEND all_compressed ${compressed})
  endforeach()
  add_custom_target(${package}_documents ALL DEPENDS ${all_compressed})
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/${package})
  install(FILES ${compressed}/${manual}.gz
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${package})
  install(FILES ${compressed}/changelog.gz DESTINATION ${place} COMPONENT ${package})
endfunction()
epg_install_notices(epgbrowser epgshell.1)
if(EPG_TOOLS)
  install(TARGETS epgcache RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT epgcache)
  epg_install_notices(epgcache epgcache.1)
endif()

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME epgbrowser)
set(CPACK_PACKAGE_CONTACT "The EPG browser authors <authors@norvex.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_EPGBROWSER_PACKAGE_NAME epgbrowser)
set(CPACK_DEBIAN_EPGBROWSER_DESCRIPTION
"electronic programme guide plug-in with a console host
Loads television listings (XMLTV, TitanTV data service, Radio Times XML and
a cache format of its own) in the background into a schedule that is indexed
by time, and lets scripts of a 3D engine ask it.

The package holds the plug-in, a stand-in of the engine, sample listings, and
epgshell, a console program that shows a listings file as a guide.")
set(CPACK_DEBIAN_EPGCACHE_PACKAGE_NAME epgcache)
# The engine that both use is private to that package.
set(CPACK_DEBIAN_EPGCACHE_PACKAGE_DEPENDS "epgbrowser (= ${PROJECT_VERSION})")
# The rules of time zones.
set(CPACK_DEBIAN_EPGCACHE_PACKAGE_RECOMMENDS tzdata)
set(CPACK_DEBIAN_EPGCACHE_DESCRIPTION
"listings for the programme guide plug-in out of any XMLTV guide
Reads XMLTV guides as they are found in public use, plain or compressed, in
any encoding and with any kind of times, mends and merges them, and writes a
file that the programme guide plug-in loads. It also says whether the plug-in
would take a guide as it stands, and what it would lose.")
set(CPACK_COMPONENTS_ALL epgbrowser)
if(EPG_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL epgcache)
endif()
include(CPack)
