# `cmake --install`: headers under include/halyon, the static runtime, the module in lib/halyon, and the CMake package.

include(CMakePackageConfigHelpers)

set(HALYON_MODULE_DIR ${CMAKE_INSTALL_LIBDIR}/halyon)
set(HALYON_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Halyon)

install(TARGETS Client Core Database Thread Tools EXPORT HalyonTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS HynSQ EXPORT HalyonTargets LIBRARY DESTINATION ${HALYON_MODULE_DIR})
if(HALYON_BUILD_HOST)
  install(TARGETS hynhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(
  DIRECTORY halyon/ ${PROJECT_BINARY_DIR}/include/halyon/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/halyon
  FILES_MATCHING
  PATTERN "*.h"
  PATTERN "platform/gio" EXCLUDE
  PATTERN "platform/linux" EXCLUDE
  PATTERN "platform/qt" EXCLUDE)
install(EXPORT HalyonTargets NAMESPACE Halyon:: DESTINATION ${HALYON_PACKAGE_DIR})

configure_package_config_file(
  cmake/HalyonConfig.cmake.in ${PROJECT_BINARY_DIR}/HalyonConfig.cmake
  INSTALL_DESTINATION ${HALYON_PACKAGE_DIR}
  PATH_VARS HALYON_MODULE_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/HalyonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/HalyonConfig.cmake ${PROJECT_BINARY_DIR}/HalyonConfigVersion.cmake
        DESTINATION ${HALYON_PACKAGE_DIR})
