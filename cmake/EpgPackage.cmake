# Where things are installed to, and the packages that are made of them: one of the plug-in and its
# console host, and one of the companion programs, with the libraries that those need.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME epgbrowser)

install(TARGETS epgshell RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS orvane
  LIBRARY DESTINATION ${EPG_LIBRARIES}
  RUNTIME DESTINATION ${EPG_LIBRARIES}
  ARCHIVE EXCLUDE_FROM_ALL DESTINATION ${EPG_LIBRARIES})
install(TARGETS epgbrowser LIBRARY DESTINATION ${EPG_LIBRARIES})
# What host programs are compiled with.
install(DIRECTORY host/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/epgbrowser/host
  FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
install(DIRECTORY samples DESTINATION ${EPG_DOCUMENTS})
install(FILES cmake/${EPG_SYSTEM}-readme.md DESTINATION ${EPG_DOCUMENTS} RENAME README.md)
install(FILES docs/embedding.md docs/guide.schema.json docs/json.md docs/listings.md docs/real-guides.md docs/scripting.md
  DESTINATION ${EPG_DOCUMENTS}/docs)

set(CPACK_PACKAGE_NAME epgbrowser)
set(CPACK_PACKAGE_CONTACT "The EPG browser authors <authors@norvex.example>")
set(CPACK_STRIP_FILES ON)
if(WIN32)
  install(TARGETS epgshell_program LIBRARY DESTINATION .)
  install(FILES LICENSE DESTINATION licences RENAME epgbrowser.txt)
  # Of the run-time libraries that stand beside the programs.
  install(FILES /usr/share/doc/gcc-mingw-w64-base/copyright DESTINATION licences RENAME gcc.txt)
  install(FILES /usr/share/doc/mingw-w64-x86-64-dev/copyright
    DESTINATION licences RENAME mingw-w64.txt)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME epgbrowser-${PROJECT_VERSION}-windows-x86_64)
  include(CPack)
  return()
endif()

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
