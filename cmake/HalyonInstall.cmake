# `cmake --install`, in three parts, which are also the packages: `module` (HynSQ.so), `dev` (headers, static runtime,
# CMake package, pkg-config files, examples, validator) and `host` (the sample host).

include(CMakePackageConfigHelpers)

set(HALYON_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/halyon)
set(HALYON_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Halyon)
set(HALYON_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(HALYON_COMPONENTS Core Client Database Thread Tools)

# Each component is exported by itself, so that asking for one does not ask for what another needs.
foreach(name IN LISTS HALYON_COMPONENTS)
  install(TARGETS ${name} EXPORT Halyon${name} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
endforeach()
install(TARGETS HynSQ EXPORT HalyonHynSQ LIBRARY DESTINATION ${HALYON_MODULE_DIR} COMPONENT module)
foreach(name IN LISTS HALYON_COMPONENTS ITEMS HynSQ)
  install(EXPORT Halyon${name} NAMESPACE Halyon:: FILE Halyon${name}Targets.cmake DESTINATION ${HALYON_PACKAGE_DIR}
          COMPONENT dev)
endforeach()

# What link-time optimisation left in the libraries is of this compiler alone: another one's linker would refuse it.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  install(
    CODE "file(GLOB libraries \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libHalyon*.a\")
execute_process(COMMAND \"${CMAKE_STRIP}\" --enable-deterministic-archives -R .gnu.lto_* -R .gnu.debuglto_*
                        -N __gnu_lto_v1 \${libraries} COMMAND_ERROR_IS_FATAL ANY)"
    COMPONENT dev)
endif()

install(
  DIRECTORY halyon/ ${PROJECT_BINARY_DIR}/include/halyon/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/halyon
  COMPONENT dev
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN "platform/gio" EXCLUDE
  PATTERN "platform/linux" EXCLUDE
  PATTERN "platform/qt" EXCLUDE)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/halyon-dev/examples COMPONENT dev)

string(REPLACE ";" " " HALYON_COMPONENTS "${HALYON_COMPONENTS}")
configure_package_config_file(
  cmake/HalyonConfig.cmake.in ${PROJECT_BINARY_DIR}/HalyonConfig.cmake
  INSTALL_DESTINATION ${HALYON_PACKAGE_DIR}
  PATH_VARS HALYON_MODULE_DIR
  NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/HalyonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/HalyonConfig.cmake ${PROJECT_BINARY_DIR}/HalyonConfigVersion.cmake
              cmake/HalyonModule.cmake cmake/HynModule.exports
        DESTINATION ${HALYON_PACKAGE_DIR} COMPONENT dev)

# halyon_pc(NAME DESCRIPTION text REQUIRES packages [CFLAGS flags] LIBS flags)
# The requirements are public: the libraries are static, so whoever links one links what it stands on, with or without
# `--static`.
file(RELATIVE_PATH HALYON_PC_TO_PREFIX /${HALYON_PC_DIR} /)
string(REGEX REPLACE "/$" "" HALYON_PC_TO_PREFIX ${HALYON_PC_TO_PREFIX})
function(halyon_pc pc_name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION;REQUIRES;CFLAGS;LIBS" "")
  string(STRIP "-I\${includedir} ${arg_CFLAGS}" pc_cflags)
  string(STRIP "-L\${libdir} ${arg_LIBS}" pc_libs)
  configure_file(cmake/halyon.pc.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${pc_name}.pc DESTINATION ${HALYON_PC_DIR} COMPONENT dev)
endfunction()

halyon_pc(halyon-core DESCRIPTION "Object model, wide string, dates and paths" REQUIRES "icu-uc"
          LIBS "-lHalyonCore -pthread")
halyon_pc(halyon-client DESCRIPTION "The interfaces of the module as modern C++, header-only" REQUIRES "halyon-core")
halyon_pc(halyon-database DESCRIPTION "The database component, to be linked in" REQUIRES "halyon-core, sqlite3"
          LIBS "-lHalyonDatabase")
halyon_pc(halyon-thread DESCRIPTION "Threads and events" REQUIRES "halyon-core, Qt6Core" LIBS "-lHalyonThread")
halyon_pc(halyon-tools DESCRIPTION "Tools of the screen and the desktop" REQUIRES "halyon-core, Qt6Widgets, gio-unix-2.0"
          LIBS "-lHalyonTools")
# What halyon_add_module does, for those who build a component module without CMake.
halyon_pc(
  halyon-module
  DESCRIPTION "Flags of a component module of one's own: one command compiles and links it"
  REQUIRES "halyon-core"
  CFLAGS "-fPIC -fvisibility=hidden -fvisibility-inlines-hidden"
  LIBS "-shared -Wl,--version-script=\${prefix}/${HALYON_PACKAGE_DIR}/HynModule.exports \
-Wl,-Bsymbolic -Wl,--as-needed -Wl,--no-undefined")
