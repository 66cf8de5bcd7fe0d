# Builds print_bits with each compiler and optimisation level and compares what the builds print.
#   cmake -D COMPILERS=g++;clang++ -D SOURCE_DIR=... -D WORK_DIR=... -P compare_builds.cmake
# The flags that keep the arithmetic exact are those of the library's own build (EXACT_FLAGS).
file(GLOB arithmetic "${SOURCE_DIR}/src/colour/tables/*.cpp")
foreach(name black_body colour_space reconstruction spectral_integral spectrum_view step_function
             wavelengths)
  list(APPEND arithmetic "${SOURCE_DIR}/src/colour/${name}.cpp")
endforeach()
set(sources "${SOURCE_DIR}/tests/colour/bits/print_bits.cpp" ${arithmetic}
            "${SOURCE_DIR}/src/embed/spectral_pairs.cpp" "${SOURCE_DIR}/src/embed/spectrum_sampling.cpp"
            "${SOURCE_DIR}/src/embed/wavelength.cpp"
            "${SOURCE_DIR}/src/foundation/result.cpp")
file(MAKE_DIRECTORY "${WORK_DIR}")

set(expected "")
set(number 0)
foreach(compiler IN LISTS COMPILERS)
  foreach(level -O0 "-O3;-march=native;-ffast-math")
    math(EXPR number "${number} + 1")
    set(program "${WORK_DIR}/print_bits_${number}")
    set(build "${compiler} ${level}")
    # As in the library's build, the exact flags come last.
    execute_process(
      COMMAND "${compiler}" -std=c++20 ${level} ${EXACT_FLAGS} "-I${SOURCE_DIR}/include"
              "-I${SOURCE_DIR}/src" ${sources} -lfmt -o "${program}"
      RESULT_VARIABLE status ERROR_VARIABLE errors)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "${build} does not compile the colour arithmetic:\n${errors}")
    endif()
    execute_process(COMMAND "${program}" OUTPUT_VARIABLE bits RESULT_VARIABLE status)
    string(LENGTH "${bits}" length)
    if(NOT status EQUAL 0 OR length LESS 100000)
      message(FATAL_ERROR "${build}: status ${status} and ${length} characters")
    endif()
    if(expected STREQUAL "")
      set(expected "${bits}")
      set(expected_build "${build}")
    elseif(NOT bits STREQUAL expected)
      message(FATAL_ERROR "${build} and ${expected_build} don't answer the same bits")
    endif()
    message(STATUS "${build}: ${length} characters, the same")
  endforeach()
endforeach()
