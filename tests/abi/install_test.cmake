# Installs the built library below the build tree, and builds and runs a consumer of the installed
# copy: once through the CMake package, once through pkg-config.
# cmake -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DGENERATOR= -DCXX= -DCXX_FLAGS= -DPKG_CONFIG=
#       -P install_test.cmake
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed (${result}): ${command}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
set(first_prefix "${WORK_DIR}/installed")
set(prefix "${WORK_DIR}/moved")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${first_prefix}")
# The installed copy doesn't know where it stands.
file(RENAME "${first_prefix}" "${prefix}")

foreach(path include/vornath_data/vrnt.h include/vornath_data/vrdm.h)
  if(NOT EXISTS "${prefix}/${path}")
    message(FATAL_ERROR "not installed: ${path}")
  endif()
endforeach()
file(GLOB_RECURSE package "${prefix}/*/vornath_data.pc")
list(LENGTH package count)
if(NOT count EQUAL 1)
  message(FATAL_ERROR "no pkg-config file, or several: ${package}")
endif()

# A copy outside the tree, so that nothing of the tree is found by accident.
file(COPY "${CONSUMER_DIR}/" DESTINATION "${WORK_DIR}/consumer")
run("${CMAKE_COMMAND}" -S "${WORK_DIR}/consumer" -B "${WORK_DIR}/build" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")

get_filename_component(package_dir "${package}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${package_dir}")
foreach(option --cflags --libs)
  execute_process(COMMAND "${PKG_CONFIG}" ${option} vornath_data
    OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(arguments UNIX_COMMAND "${output}")
  list(APPEND flags ${arguments})
endforeach()
execute_process(COMMAND "${PKG_CONFIG}" --variable=libdir vornath_data
  OUTPUT_VARIABLE libdir OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(cxx_flags UNIX_COMMAND "${CXX_FLAGS}")
run("${CXX}" -std=c++17 ${cxx_flags} "${WORK_DIR}/consumer/main.cpp"
    -o "${WORK_DIR}/pkg_config_consumer" ${flags} "-Wl,-rpath,${libdir}")
run("${WORK_DIR}/pkg_config_consumer")
