# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# Debian's packages, one for each component of the install; script/package makes them.
set(OX_PACKAGER "The libox authors <libox@example.org>" CACHE STRING "Who maintains the packages")
set(release ${PROJECT_VERSION}-1)
set(core libox-core${OX_SOVERSION})
set(cv libox-cv${OX_SOVERSION})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libox)
set(CPACK_PACKAGE_VENDOR "The libox authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_CONTACT "${OX_PACKAGER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL core cv development)
if(TARGET oxcv)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
if(TARGET gstox)
  list(APPEND CPACK_COMPONENTS_ALL gstreamer)
endif()
if(OX_INSTALL_DOCUMENTS)
  list(APPEND CPACK_COMPONENTS_ALL documents)
  set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_SHLIBDEPS OFF)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What libraries of the system each needs is found out of them, where they are of this machine.
set(CPACK_DEBIAN_CORE_PACKAGE_DEPENDS "")
set(CPACK_DEBIAN_CV_PACKAGE_DEPENDS "${core} (= ${release})")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "")
set(CPACK_DEBIAN_GSTREAMER_PACKAGE_DEPENDS "${core} (= ${release}), ${cv} (= ${release})")
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
  set(runtime "libc6 (>= 2.34), libgcc-s1 (>= 4.2), libstdc++6 (>= 12)")
  set(CPACK_DEBIAN_CORE_PACKAGE_DEPENDS "${runtime}")
  string(APPEND CPACK_DEBIAN_CV_PACKAGE_DEPENDS ", ${runtime}")
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS
      "${runtime}, libjpeg62-turbo (>= 1.3.1), libpng16-16 (>= 1.6.2)")
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src/ox_core"
                                                  "${PROJECT_BINARY_DIR}/src/ox_cv")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${core} (= ${release}), ${cv} (= ${release})")
if(OX_NEEDS_HIGHWAY)
  string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", libhwy-dev")
endif()

# ox_describe_package(COMPONENT PACKAGE SECTION SYNOPSIS TEXT): and the files that each package has.
function(ox_describe_package component package section synopsis text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${synopsis}\n${text}" PARENT_SCOPE)
  if(NOT component MATCHES "tool|documents")
    set(CPACK_DEBIAN_${upper}_PACKAGE_MULTIARCH same PARENT_SCOPE)
  endif()
  install(
    FILES "${PROJECT_SOURCE_DIR}/packaging/copyright" NOTICE
          "${PROJECT_BINARY_DIR}/packaging/changelog.gz"
          "${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz"
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(what "Frames of cameras and videos (NV12, YUYV, BGR and twenty more formats) are
cropped, scaled, converted and made tensors of networks, row by row; every
byte of a result is the same on every processor.")
ox_describe_package(core ${core} libs "exact image processing: frames and tensors"
  "${what}\n.\nThis package has the library of frames, buffers and tensors.")
ox_describe_package(cv ${cv} libs "exact image processing: scaling and conversion"
  "${what}\n.\nThis package has the library of scalers, conversions and tensors' makers.")
ox_describe_package(development libox-dev libdevel "exact image processing: headers and static libraries"
  "${what}\n.\nThis package has what programs are built with, for CMake and pkg-config.")
ox_describe_package(documents libox-doc doc "exact image processing: documents"
  "${what}\n.\nThis package has the guide and the reference, as pages to be read offline.")
ox_describe_package(tool oxcv graphics "exact image processing from the command line"
  "${what}\n.\nThis package has the tool, for pictures, Y4M video, raw frames and NumPy\narrays.")
ox_describe_package(gstreamer gstreamer1.0-ox libs "exact image processing: GStreamer's plugin"
  "${what}\n.\nThis package has the element oxconvertscale, which crops, scales and converts\nvideo in one pass.")

foreach(library core cv)
  string(TOUPPER ${library} upper)
  file(WRITE "${PROJECT_BINARY_DIR}/packaging/${library}/shlibs"
       "libox_${library} ${OX_SOVERSION} ${${library}} (>= ${PROJECT_VERSION})\n")
  file(WRITE "${PROJECT_BINARY_DIR}/packaging/${library}/triggers" "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
      "${PROJECT_BINARY_DIR}/packaging/${library}/shlibs"
      "${PROJECT_BINARY_DIR}/packaging/${library}/triggers")
endforeach()

# Changes, packed as Debian wants them; the time is that of the last commit.
find_package(Git QUIET)
set(date "Thu, 01 Jan 1970 00:00:00 +0000")
if(Git_FOUND)
  execute_process(COMMAND "${GIT_EXECUTABLE}" log -1 --format=%aD
                  WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE commit_date
                  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(commit_date)
    set(date "${commit_date}")
  endif()
endif()
file(WRITE "${PROJECT_BINARY_DIR}/packaging/changelog.Debian"
     "libox (${release}) unstable; urgency=medium\n\n  * New release.\n\n -- ${OX_PACKAGER}  ${date}\n")
file(COPY "${PROJECT_SOURCE_DIR}/CHANGELOG.md" DESTINATION "${PROJECT_BINARY_DIR}/packaging")
file(RENAME "${PROJECT_BINARY_DIR}/packaging/CHANGELOG.md" "${PROJECT_BINARY_DIR}/packaging/changelog")
execute_process(COMMAND gzip -9nf changelog changelog.Debian
                WORKING_DIRECTORY "${PROJECT_BINARY_DIR}/packaging")

# Pages are packed there.
if(TARGET oxcv_pages)
  install(
    CODE "file(GLOB pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1/*.1\")
          execute_process(COMMAND gzip -9nf \${pages})"
    COMPONENT tool)
endif()

include(CPack)
