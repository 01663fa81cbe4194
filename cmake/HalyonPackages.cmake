# The Debian packages, one for each part that HalyonInstall.cmake names: `cpack` in a build that is configured for the
# prefix /usr. The libraries that programs need are found in the programs themselves.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME halyon)
set(CPACK_PACKAGE_VENDOR "Halyon")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_CONTACT "Halyon developers <developers@halyon.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL module dev host)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# halyon_package(PART SECTION section SUMMARY text TEXT lines... [DEPENDS packages...])
function(halyon_package part)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "SECTION;SUMMARY" "TEXT;DEPENDS")
  string(TOUPPER ${part} key)
  list(JOIN arg_TEXT "\n" text)
  list(JOIN arg_DEPENDS ", " depends)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME halyon-${part} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${arg_SECTION} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${arg_SUMMARY}\n${text}" PARENT_SCOPE)
  install(FILES cmake/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/halyon-${part} COMPONENT ${part})
endfunction()

set(this_module "halyon-module (= ${PROJECT_VERSION})")
halyon_package(
  module
  SECTION libs
  SUMMARY "SQLite as a component that hosts load"
  TEXT "HynSQ.so gives the components of a host connections to SQLite databases,"
       "through interfaces that do not depend on the compiler.")
halyon_package(
  dev
  SECTION libdevel
  SUMMARY "component runtime, to build hosts and components with"
  TEXT "Headers, static libraries, CMake package, pkg-config files and examples:"
       "object model, wide string, threads with event queues, dates, and the"
       "tools of the desktop. hynvalidate checks that a module keeps the rules."
  DEPENDS ${this_module} libicu-dev libsqlite3-dev qt6-base-dev libglib2.0-dev)
halyon_package(
  host
  SECTION utils
  SUMMARY "catalogue of media files in a database"
  TEXT "hynhost catalogues the media files of folders, lists them by day, tells"
       "about them, opens them and moves them to the trash. hynhost show is a"
       "window to look through them by day, to search, rate and import."
  DEPENDS ${this_module})

include(CPack)
