# Installs the build into a folder of the build tree, and builds and runs a host in C against the installed
# toolkit, with the CMake package and with pkg-config.
# cmake -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DHOST= -DGENERATOR= -DCC= -DCXX= -DPKG_CONFIG=
#       -P install_test.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../abi/run.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
# An installed copy does not depend on its path.
set(prefix "${WORK_DIR}/moved")
file(RENAME "${WORK_DIR}/installed" "${prefix}")
if(NOT EXISTS "${prefix}/include/vornath_toolkit/vrtk.h")
  message(FATAL_ERROR "vornath_toolkit/vrtk.h is not installed")
endif()

file(COPY "${CONSUMER_DIR}/CMakeLists.txt" DESTINATION "${WORK_DIR}/consumer")
file(COPY_FILE "${HOST}" "${WORK_DIR}/consumer/host.c")
run("${CMAKE_COMMAND}" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_C_COMPILER=${CC}"
  -S "${WORK_DIR}/consumer" -B "${WORK_DIR}/consumer/build")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/consumer/build")
run("${WORK_DIR}/consumer/build/toolkit_consumer" "${WORK_DIR}/scene.vrnscene")

file(GLOB_RECURSE package "${prefix}/*/vornath_toolkit.pc")
list(LENGTH package count)
if(NOT count EQUAL 1)
  message(FATAL_ERROR "no pkg-config file, or several: ${package}")
endif()
get_filename_component(package_dir "${package}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${package_dir}")
function(ask result)
  execute_process(COMMAND "${PKG_CONFIG}" ${ARGN} vornath_toolkit
    OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(words UNIX_COMMAND "${output}")
  set(${result} "${words}" PARENT_SCOPE)
endfunction()
ask(flags --cflags --libs)
ask(libdir --variable=libdir)
run("${CC}" -std=c11 "${HOST}" -o "${WORK_DIR}/host" ${flags} "-Wl,-rpath,${libdir}")
run("${WORK_DIR}/host" "${WORK_DIR}/scene.vrnscene")
