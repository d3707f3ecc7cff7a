# How the project's targets are built: libraries out of object libraries, warnings, sanitizers.

# Every target of the project.
function(ox_configure_target target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow)
  if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Types of anonymous namespaces are the sources' own, although a batch includes them.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
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
# classes, and the library ox_NAME, alias ox::NAME, made of them.
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
  add_library(ox::${name} ALIAS ox_${name})
  ox_configure_target(ox_${name})
  # The sources need C++20, the public headers don't.
  target_compile_features(ox_${name} INTERFACE cxx_std_14)
  target_include_directories(
    ox_${name} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>" "$<INSTALL_INTERFACE:include>")
  # Code that nothing calls is left out, calls inside the library take no detour, and what it has of
  # the standard library's templates isn't exported.
  target_compile_options(${objects} PRIVATE -ffunction-sections -fdata-sections)
  if(BUILD_SHARED_LIBS)
    target_link_options(
      ox_${name} PRIVATE LINKER:--gc-sections LINKER:-Bsymbolic-functions
      "LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map")
  endif()
  set_target_properties(ox_${name} PROPERTIES EXPORT_NAME ${name} LINKER_LANGUAGE CXX
                                              VERSION ${PROJECT_VERSION} SOVERSION 0)
endfunction()
