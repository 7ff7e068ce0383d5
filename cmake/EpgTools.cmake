# The companion programs, and the libraries that they alone need.

find_package(LibXml2 QUIET)
find_package(LibArchive QUIET)
find_package(ICU COMPONENTS i18n uc QUIET)
find_package(CLI11 QUIET)
set(all_found OFF)
if(LibXml2_FOUND AND LibArchive_FOUND AND ICU_FOUND AND CLI11_FOUND)
  set(all_found ON)
endif()
option(EPG_TOOLS
  "Build the companion programs (needs libarchive, libxml2, ICU and CLI11)" ${all_found})
if(EPG_TOOLS AND NOT all_found)
  message(FATAL_ERROR "The companion programs need libarchive, libxml2, ICU and CLI11; \
-DEPG_TOOLS=OFF builds without them.")
endif()
