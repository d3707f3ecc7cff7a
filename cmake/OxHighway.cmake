# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# Vector code needs Highway, which is found at run time on x86-64 and compiled in on AArch64; without
# it there are plain loops with the same results.
option(OX_WITH_HIGHWAY "Vector code through Highway (libhwy-dev)" ON)

if(OX_WITH_HIGHWAY)
  include(CheckIncludeFileCXX)
  check_include_file_cxx("hwy/highway.h" OX_HIGHWAY_FOUND -std=c++20)
  if(NOT OX_HIGHWAY_FOUND)
    message(WARNING "Highway isn't installed: building plain loops, which are slower")
  endif()
endif()

# On x86-64 its library tells the processor.
if(OX_WITH_HIGHWAY AND OX_HIGHWAY_FOUND AND NOT CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  find_library(OX_HIGHWAY_LIBRARY hwy REQUIRED)
  add_library(ox::hwy UNKNOWN IMPORTED GLOBAL)
  set_target_properties(ox::hwy PROPERTIES IMPORTED_LOCATION "${OX_HIGHWAY_LIBRARY}")
endif()

# ox_use_highway(NAME): lets the library ox_NAME have vector sources.
function(ox_use_highway name)
  if(OX_WITH_HIGHWAY AND OX_HIGHWAY_FOUND)
    target_compile_definitions(ox_${name}_objects PRIVATE OX_WITH_HIGHWAY)
    # Beside vector code, plain loops needn't be unrolled and vectorised: that doubles the library.
    target_compile_options(ox_${name}_objects PRIVATE $<$<CONFIG:Release>:-O2>)
    if(TARGET ox::hwy)
      ox_link_privately(${name} ox::hwy)
    else()
      # Segments begin at 64 KiB there, and this is what keeps the code before one.
      target_compile_options(ox_${name}_objects
                             PRIVATE $<$<CONFIG:Release>:-fno-align-functions>)
    endif()
  endif()
endfunction()

# ox_compile_releases(NAME OPTION SOURCE...): compiles these sources of the library ox_NAME in
# releases by an option of their own, where there is vector code.
function(ox_compile_releases name option)
  # An option of its own would keep a source out of a batch.
  if(OX_WITH_HIGHWAY AND OX_HIGHWAY_FOUND AND NOT CMAKE_UNITY_BUILD)
    set_property(
      SOURCE ${ARGN} TARGET_DIRECTORY ox_${name}_objects
      APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:${option}>)
  endif()
endfunction()

# ox_add_vector_sources(NAME SOURCE...): sources of the library ox_NAME that are compiled once per
# instruction set, and not at all without Highway.
function(ox_add_vector_sources name)
  if(OX_WITH_HIGHWAY AND OX_HIGHWAY_FOUND)
    target_sources(ox_${name}_objects PRIVATE ${ARGN})
    # What is detected as AVX3_DL may lack AVX-VNNI, which the compiler would use for loops of its
    # own.
    set_source_files_properties(${ARGN} TARGET_DIRECTORY ox_${name}_objects
                                PROPERTIES COMPILE_OPTIONS -fno-tree-vectorize)
    ox_compile_releases(${name} -O3 ${ARGN})
  endif()
endfunction()
