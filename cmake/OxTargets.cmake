# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# How the project's targets are built: libraries out of object libraries, warnings, sanitizers.

include(CheckLinkerFlag)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
  # For a fault of Cortex-A53 the linker leaves a page free in which it could mend the few places
  # concerned. In libraries below a megabyte they can all be mended where they are.
  check_linker_flag(CXX LINKER:--fix-cortex-a53-843419=adr OX_LINKS_WITHOUT_STUBS)
endif()

# Every target of the project.
function(ox_configure_target target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow)
  if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Types of anonymous namespaces are the sources' own, although a batch includes them.
    target_compile_options(
      ${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-Wno-subobject-linkage>)
  endif()
  if(OX_STRICT_WARNINGS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(OX_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${OX_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${OX_SANITIZE})
  endif()
endfunction()

# ox_add_library(NAME SOURCE...): the objects ox_NAME_objects, for tests and tools that use private
# classes, and made of them the libraries ox_NAME, alias ox::NAME, and ox::NAME_static, which is the
# same where libraries are static anyway.
function(ox_add_library name)
  set(objects ox_${name}_objects)
  add_library(${objects} OBJECT ${ARGN})
  ox_configure_target(${objects})
  # The bytes don't depend on the flags of the project around: no product is fused with a sum unless
  # the source says so, and no option may loosen the arithmetic. Exception flags don't count as
  # results; without them more loops are vectorised.
  target_compile_options(${objects} PRIVATE -fno-fast-math -ffp-contract=off -fno-trapping-math)
  target_include_directories(
    ${objects} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
  # Each source's constant `here` is the place that its refusals name; a batch includes several.
  set_target_properties(
    ${objects} PROPERTIES UNITY_BUILD_UNIQUE_ID OX_SOURCE
                          UNITY_BUILD_CODE_BEFORE_INCLUDE "#define here OX_SOURCE")
  set_target_properties(
    ${objects} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                          VISIBILITY_INLINES_HIDDEN ON)

  add_library(ox_${name} $<TARGET_OBJECTS:${objects}>)
  set_target_properties(
    ox_${name} PROPERTIES EXPORT_NAME ${name} VERSION ${PROJECT_VERSION}
                          SOVERSION ${OX_SOVERSION})
  if(BUILD_SHARED_LIBS)
    add_library(ox_${name}_static STATIC $<TARGET_OBJECTS:${objects}>)
    set_target_properties(
      ox_${name}_static PROPERTIES EXPORT_NAME ${name}_static OUTPUT_NAME ox_${name})
    if(NOT OX_INSTALL)
      set_target_properties(ox_${name}_static PROPERTIES EXCLUDE_FROM_ALL ON)
    endif()
    add_library(ox::${name}_static ALIAS ox_${name}_static)
  else()
    add_library(ox::${name}_static ALIAS ox_${name})
  endif()
  add_library(ox::${name} ALIAS ox_${name})
  ox_libraries(libraries ${name})
  foreach(library IN LISTS libraries)
    ox_configure_target(${library})
    # The sources need C++20, the public headers don't.
    target_compile_features(${library} INTERFACE cxx_std_14)
    target_include_directories(
      ${library} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
    set_target_properties(${library} PROPERTIES LINKER_LANGUAGE CXX)
  endforeach()
  # Code that nothing calls is left out, calls inside the library take no detour, and what it has of
  # the standard library's templates isn't exported.
  target_compile_options(${objects} PRIVATE -ffunction-sections -fdata-sections)
  if(BUILD_SHARED_LIBS)
    target_link_options(
      ox_${name} PRIVATE LINKER:--gc-sections LINKER:-Bsymbolic-functions
      "LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map"
      $<$<BOOL:${OX_LINKS_WITHOUT_STUBS}>:LINKER:--fix-cortex-a53-843419=adr>)
  endif()
endfunction()

# ox_libraries(VARIABLE NAME): the libraries that are made of the objects ox_NAME_objects.
function(ox_libraries variable name)
  set(libraries ox_${name})
  if(TARGET ox_${name}_static)
    list(APPEND libraries ox_${name}_static)
  endif()
  set(${variable} ${libraries} PARENT_SCOPE)
endfunction()

# ox_link_privately(NAME LIBRARY...): ox_NAME uses these libraries, which its headers don't show.
function(ox_link_privately name)
  target_link_libraries(ox_${name}_objects PUBLIC ${ARGN})
  ox_libraries(libraries ${name})
  foreach(library IN LISTS libraries)
    target_link_libraries(${library} PRIVATE ${ARGN})
  endforeach()
endfunction()
