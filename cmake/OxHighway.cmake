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

# ox_use_highway(NAME): lets the library ox_NAME have vector sources.
function(ox_use_highway name)
  if(OX_WITH_HIGHWAY AND OX_HIGHWAY_FOUND)
    target_compile_definitions(ox_${name}_objects PRIVATE OX_WITH_HIGHWAY)
    if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
      target_link_libraries(ox_${name}_objects PUBLIC hwy)
      target_link_libraries(ox_${name} PRIVATE hwy)
    endif()
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
  endif()
endfunction()

# ox_make_small(NAME SOURCE...): sources of the library ox_NAME that are seldom run where there is
# vector code: they are to be small there in releases.
function(ox_make_small name)
  if(OX_WITH_HIGHWAY AND OX_HIGHWAY_FOUND)
    set_source_files_properties(${ARGN} TARGET_DIRECTORY ox_${name}_objects
                                PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-Os>)
  endif()
endfunction()
