# The compiler and linker flags of the project's targets.

# Flags of all targets: warnings, and hardening if VORNATH_DATA_HARDEN is set.
add_library(vornath_flags INTERFACE)
target_compile_options(vornath_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
# GCC 12 at -O3 takes copies inside of std::string for overlapping ones.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12 AND
   CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(vornath_flags INTERFACE
    "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release>>:-Wno-restrict>")
endif()
if(VORNATH_DATA_WERROR)
  target_compile_options(vornath_flags INTERFACE -Werror)
endif()

# Hardening makes it more difficult to exploit a defect: the library runs in the processes of its hosts.
if(VORNATH_DATA_HARDEN AND NOT VORNATH_DATA_SANITIZE)
  # The checks of C functions depend on the optimiser, so they need an optimised build.
  target_compile_options(vornath_flags INTERFACE -fstack-protector-strong
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  target_link_options(vornath_flags INTERFACE -Wl,-z,relro,-z,now)
endif()

# Additional flags of the tests: there are many, and each runs once, so they are not optimised.
add_library(vornath_test_flags INTERFACE)
target_compile_options(vornath_test_flags INTERFACE -O0 -U_FORTIFY_SOURCE)

# Floating-point arithmetic as it is written: neither contracted nor rearranged.
set(VORNATH_EXACT_FLOATS -fno-fast-math -ffp-contract=off)

# Coverage uses plain counters, since atomic counters make the library ten times as slow. Counts of several
# threads at the same time are therefore not exact; the build for tests of threads has no coverage.
function(vornath_count_lines target)
  if(VORNATH_DATA_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=single)
  endif()
endfunction()
if(VORNATH_DATA_COVERAGE)
  add_link_options(--coverage)
endif()

# Sets the macros that the public headers need in the library's own code.
function(vornath_part_of_library target)
  target_compile_definitions(${target} PRIVATE VORNATH_DATA_BUILD)
  if(VORNATH_DATA_IS_STATIC)
    target_compile_definitions(${target} PRIVATE VORNATH_DATA_STATIC)
  endif()
endfunction()

# Adds a layer: one object library for each folder of src/. An include names the folder of its header; the
# test abi.layers checks that no include names a layer above.
#   vornath_layer(NAME values SOURCES a.cpp b.cpp LINK vornath_types fmt::fmt)
function(vornath_layer)
  cmake_parse_arguments(LAYER "" "NAME" "SOURCES;LINK" ${ARGN})
  set(target vornath_${LAYER_NAME})
  add_library(${target} OBJECT ${LAYER_SOURCES})
  target_include_directories(${target} PUBLIC
    "${PROJECT_SOURCE_DIR}/include" "${PROJECT_SOURCE_DIR}/src")
  vornath_part_of_library(${target})
  target_link_libraries(${target} PUBLIC ${LAYER_LINK} PRIVATE vornath_flags)
  vornath_count_lines(${target})
endfunction()

if(VORNATH_DATA_SANITIZE)
  # Reports name functions and lines. For this, the lowest level of debug information suffices.
  add_compile_options(-fsanitize=${VORNATH_DATA_SANITIZE} -fno-omit-frame-pointer -g1
                      -fno-sanitize-recover=all -D_GLIBCXX_ASSERTIONS)
  add_link_options(-fsanitize=${VORNATH_DATA_SANITIZE})
endif()
