# `cmake --install` and find_package(ox): the libraries, their public headers and the tool.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

install(TARGETS ox_core ox_cv EXPORT oxTargets)
install(DIRECTORY src/ox_core src/ox_cv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h" PATTERN "ox_impl_*" EXCLUDE)
if(OX_BUILD_TOOLS)
  install(TARGETS oxcv)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ox)
install(EXPORT oxTargets NAMESPACE ox:: DESTINATION ${package_dir} FILE oxConfig.cmake)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/oxConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/oxConfigVersion.cmake" DESTINATION ${package_dir})
