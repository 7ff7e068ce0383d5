# Usage requirements that targets of ours ask for by name.

# A sanitizer for the whole tree, as a preset asks for it.
set(EPG_SANITIZE "" CACHE STRING "Sanitizers to build with, separated by commas")
if(EPG_SANITIZE)
  add_compile_options(-fsanitize=${EPG_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${EPG_SANITIZE})
endif()
if(EPG_LIBFUZZER)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

option(EPG_PLAIN_SEARCH "Search listings byte by byte, as on a processor without SSE2 or NEON" OFF)
if(EPG_PLAIN_SEARCH)
  add_compile_definitions(EPG_PLAIN_SEARCH)
endif()

if(WIN32)
  # The system's headers without what nobody asks them for, and without its macros MIN, MAX and ERROR.
  add_compile_definitions(WIN32_LEAN_AND_MEAN NOGDI NOMINMAX)
endif()

# Warnings, all of them errors.
add_library(epg_warnings INTERFACE)
target_compile_options(epg_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-qual -Wcast-align
  -Wformat=2 -Wold-style-cast -Woverloaded-virtual -Wundef -Wunused
  -Wdouble-promotion -Wimplicit-fallthrough -Werror
  # g++ 12 finds overlaps in the standard library's own text operations.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(EPG_SANITIZE)
  # And, under a sanitizer, what is not initialised in its functions.
  target_compile_options(epg_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# Nothing leaves a library unless it is marked; and no symbol is unique in the process, since the
# loader never unloads a module that has one.
add_library(epg_hidden INTERFACE)
target_compile_options(epg_hidden INTERFACE
  -fvisibility=hidden -fvisibility-inlines-hidden
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)

# Where engine and module are installed, and the documents; and where that is from the programs.
if(WIN32)
  set(EPG_LIBRARIES .)
  set(EPG_DOCUMENTS .)
  set(EPG_MODULE_FOLDER .)
  set(EPG_DOCUMENTS_FOLDER .)
else()
  # Engine and module are private to this package.
  set(EPG_LIBRARIES ${CMAKE_INSTALL_LIBDIR}/epgbrowser)
  set(EPG_DOCUMENTS ${CMAKE_INSTALL_DATADIR}/doc/epgbrowser)
  file(RELATIVE_PATH EPG_MODULE_FOLDER
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/epgbrowser)
  file(RELATIVE_PATH EPG_DOCUMENTS_FOLDER
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR}/doc/epgbrowser)
endif()
function(epg_find_engine_from_program program)
  set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${EPG_MODULE_FOLDER}")
endfunction()
