# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# Whether the GStreamer plugin is built: by itself where its packages are and nobody includes the
# project, and elsewhere if OX_GSTREAMER says so. PkgConfig::OX_GSTREAMER_VIDEO is what it links.
set(found OFF)
# When cross-compiling, pkg-config would tell of this machine's packages.
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CROSSCOMPILING AND NOT DEFINED OX_GSTREAMER)
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(OX_GSTREAMER_VIDEO QUIET gstreamer-video-1.0>=1.22)
    set(found ${OX_GSTREAMER_VIDEO_FOUND})
  endif()
endif()
option(OX_GSTREAMER "Build the GStreamer plugin (libgstreamer-plugins-base1.0-dev)" ${found})
if(OX_GSTREAMER)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(OX_GSTREAMER_VIDEO REQUIRED IMPORTED_TARGET gstreamer-video-1.0>=1.22)
endif()
