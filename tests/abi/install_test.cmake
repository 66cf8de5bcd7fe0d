# Installs a built library into a folder of the build tree. Builds and runs consumers of the installed
# copy, with the CMake package and with pkg-config, in C++ and in C.
# cmake -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DHOST= -DGENERATOR= -DCC= -DCXX= -DFLAGS=
#       -DPKG_CONFIG= -DSTATIC= -DEMBED= -DTOOLKIT= -P install_test.cmake
#   HOST    the source of a host in C
#   STATIC  whether the library is a static library
#   EMBED   whether the component embed is built
#   TOOLKIT whether the component toolkit is built
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
set(first_prefix "${WORK_DIR}/installed")
set(prefix "${WORK_DIR}/moved")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${first_prefix}")
# An installed copy does not depend on its path, so it can be moved.
file(RENAME "${first_prefix}" "${prefix}")

foreach(path include/vornath_data/vrnt.h include/vornath_data/vrdm.h include/vornath_data/version.h)
  if(NOT EXISTS "${prefix}/${path}")
    message(FATAL_ERROR "not installed: ${path}")
  endif()
endforeach()
file(GLOB_RECURSE package "${prefix}/*/vornath_data.pc")
list(LENGTH package count)
if(NOT count EQUAL 1)
  message(FATAL_ERROR "no pkg-config file, or several: ${package}")
endif()
get_filename_component(package_dir "${package}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${package_dir}")

# The consumers are copied, so that they cannot find files of the source tree by accident.
foreach(consumer consumer consumer_in_c embed_consumer components)
  file(COPY "${CONSUMER_DIR}/${consumer}" DESTINATION "${WORK_DIR}")
endforeach()
file(COPY_FILE "${HOST}" "${WORK_DIR}/consumer_in_c/host.c")
set(configure "${CMAKE_COMMAND}" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}"
  "-DCMAKE_C_COMPILER=${CC}" "-DCMAKE_C_FLAGS=${FLAGS}"
  "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${FLAGS}")
set(consumers consumer consumer_in_c)
set(components core)
if(EMBED)
  list(APPEND consumers embed_consumer)
  list(APPEND components embed)
endif()
if(TOOLKIT)
  list(APPEND components toolkit)
endif()
list(JOIN components "\", \"" components)
foreach(consumer IN LISTS consumers)
  set(build "${WORK_DIR}/${consumer}/build")
  run(${configure} -S "${WORK_DIR}/${consumer}" -B "${build}")
  run("${CMAKE_COMMAND}" --build "${build}")
  run("${build}/${consumer}")
endforeach()

# A component that was not installed is not found, and the message names the installed components.
function(ask_for_components asked expected)
  execute_process(COMMAND ${configure} -S "${WORK_DIR}/components" -B "${WORK_DIR}/components/build"
      "-DASKED=${asked}"
    OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
  string(FIND "${output}" "${expected}" at)
  if(NOT result EQUAL 0 OR at EQUAL -1)
    message(FATAL_ERROR "for ${asked}, CMake does not print ${expected} but\n${output}${errors}")
  endif()
endfunction()
ask_for_components("" "core: TRUE; ")
ask_for_components("COMPONENTS;core" "core: TRUE; ")
ask_for_components("OPTIONAL_COMPONENTS;core;paint" "core: TRUE; paint: FALSE; ")
ask_for_components("COMPONENTS;core;OPTIONAL_COMPONENTS;paint" "core: TRUE; paint: FALSE; ")
ask_for_components("COMPONENTS;paint;core;brush"
  "not found: vornath_data was installed with the components \"${components}\" and without \"paint\", \"brush\"")

# The commands of README.md, and the version that pkg-config reports.
set(linking "")
if(STATIC)
  set(linking --static)
endif()
ask_pkg_config(flags --cflags --libs ${linking})
ask_pkg_config(libdir --variable=libdir)
ask_pkg_config(version --modversion)
separate_arguments(own_flags UNIX_COMMAND "${FLAGS}")
run("${CXX}" -std=c++17 ${own_flags} "-DPACKAGE_VERSION=\"${version}\""
    "${WORK_DIR}/consumer/main.cpp" -o "${WORK_DIR}/host_in_cxx" ${flags} "-Wl,-rpath,${libdir}")
run("${WORK_DIR}/host_in_cxx")
run("${CC}" -std=c11 ${own_flags} "${WORK_DIR}/consumer_in_c/host.c" -o "${WORK_DIR}/host_in_c"
    ${flags} "-Wl,-rpath,${libdir}")
run("${WORK_DIR}/host_in_c")

file(GLOB static_libraries "${libdir}/*.a")
list(FILTER static_libraries EXCLUDE REGEX "/libvornath_data_embed[.]a$")
list(FILTER static_libraries EXCLUDE REGEX "/libvornath_toolkit[.]a$")
file(GLOB shared_libraries "${libdir}/libvornath_data.so*")
if(STATIC)
  if(shared_libraries OR NOT static_libraries)
    message(FATAL_ERROR "not one static library: ${shared_libraries} ${static_libraries}")
  endif()
else()
  if(static_libraries OR NOT shared_libraries)
    message(FATAL_ERROR "not one shared library: ${static_libraries} ${shared_libraries}")
  endif()
  # A host of the shared library does not link its dependencies.
  ask_pkg_config(static_flags --cflags --libs --static)
  if(NOT static_flags STREQUAL flags)
    message(FATAL_ERROR "more than ${flags}: ${static_flags}")
  endif()
endif()
