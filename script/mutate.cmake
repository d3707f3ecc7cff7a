# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# script/mutate gives this file to CMake (CMAKE_PROJECT_ox_INCLUDE): of the preset's settings, only
# those of the library's own sources change, so that the tests come out of ccache.

# Each source by itself and hardly optimised compiles soonest. A change may leave something unused.
function(ox_compile_quickly)
  foreach(objects ox_core_objects ox_cv_objects)
    set_target_properties(${objects} PROPERTIES UNITY_BUILD OFF)
    target_compile_options(${objects} PRIVATE -O1 -g0 -w)
  endforeach()
endfunction()
cmake_language(DEFER CALL ox_compile_quickly)
