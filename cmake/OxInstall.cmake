# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# `cmake --install`: the libraries, shared and static, their public headers, what CMake and pkg-config
# ask about them, the tool with its pages, and GStreamer's plugin. The components are Debian's packages.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

foreach(name core cv)
  install(
    TARGETS ox_${name} EXPORT oxTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${name} NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  if(TARGET ox_${name}_static)
    install(
      TARGETS ox_${name}_static EXPORT oxStaticTargets
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
      INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  endif()
endforeach()

file(GLOB public_folders LIST_DIRECTORIES true "${PROJECT_SOURCE_DIR}/src/ox_*")
install(
  DIRECTORY ${public_folders}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "ox_impl_*" EXCLUDE)

# The CMake package. Static libraries leave it to their users to link what they need.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ox)
set(OX_NEEDS_HIGHWAY OFF)
if(TARGET ox::hwy)
  set(OX_NEEDS_HIGHWAY ON)
endif()
install(EXPORT oxTargets NAMESPACE ox:: DESTINATION ${package_dir} COMPONENT development)
if(BUILD_SHARED_LIBS)
  install(EXPORT oxStaticTargets NAMESPACE ox:: DESTINATION ${package_dir} COMPONENT development)
endif()
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/oxConfig.cmake.in" "${PROJECT_BINARY_DIR}/oxConfig.cmake"
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/oxConfigVersion.cmake" VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMinorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/oxConfig.cmake" "${PROJECT_BINARY_DIR}/oxConfigVersion.cmake"
  DESTINATION ${package_dir} COMPONENT development)

# pkg-config. Paths are relative to the file, so that an installed tree may be moved.
set(pc_dir "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH OX_PC_PREFIX "${pc_dir}" "${CMAKE_INSTALL_PREFIX}")
file(RELATIVE_PATH OX_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH OX_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
set(OX_PC_CORE_PRIVATE "-lstdc++ -lm")
set(OX_PC_CV_PRIVATE "-pthread")
if(OX_NEEDS_HIGHWAY)
  string(PREPEND OX_PC_CV_PRIVATE "-lhwy ")
endif()
foreach(name core cv)
  string(TOUPPER ${name} upper)
  set(OX_PC_PUBLIC "")
  set(OX_PC_PRIVATE "${OX_PC_${upper}_PRIVATE}")
  if(NOT BUILD_SHARED_LIBS)
    set(OX_PC_PUBLIC " ${OX_PC_PRIVATE}")
    set(OX_PC_PRIVATE "")
  endif()
  configure_file(cmake/ox-${name}.pc.in "${PROJECT_BINARY_DIR}/ox-${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/ox-${name}.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
          COMPONENT development)
endforeach()

install(FILES LICENSE NOTICE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
if(TARGET oxcv)
  install(TARGETS oxcv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
endif()
if(TARGET oxcv_pages)
  set(OX_ZSH_FOLDER ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Of zsh's completions")
  set(pages "${PROJECT_BINARY_DIR}/tools/oxcv/pages")
  install(FILES "${pages}/oxcv.1" "${pages}/oxcv-convert.1" "${pages}/oxcv-tensor.1"
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(FILES "${pages}/completion.bash" RENAME oxcv COMPONENT tool
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES "${pages}/completion.zsh" RENAME _oxcv COMPONENT tool DESTINATION ${OX_ZSH_FOLDER})
  install(FILES "${pages}/completion.fish" RENAME oxcv.fish COMPONENT tool
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

if(TARGET gstox)
  install(TARGETS gstox LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT gstreamer)
endif()

# The documents, if script/docs has built them: nothing else needs what that needs.
option(OX_INSTALL_DOCUMENTS "Install the site that script/docs has built" OFF)
if(OX_INSTALL_DOCUMENTS)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/build/docs/site/"
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libox-doc/html COMPONENT documents)
endif()

option(OX_PACKAGES "Make Debian's packages out of the install (cpack)" OFF)
if(OX_PACKAGES)
  include(OxPackages)
endif()
