# Configures the library as a subproject of another project. It changes nothing in that project, and is
# installed only on request.
# cmake -DSOURCE_DIR= -DWORK_DIR= -DHOST= -DGENERATOR= -DCC= -DCXX= -DHOW= -P subproject_test.cmake
#   HOST  the source of a host in C
#   HOW   add_subdirectory or FetchContent
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
set(configure "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/subproject" -G "${GENERATOR}"
  "-DCMAKE_C_COMPILER=${CC}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DHOW=${HOW}" "-DSOURCE=${SOURCE_DIR}"
  "-DHOST=${HOST}" --no-warn-unused-cli)
# Packages that only tests and benchmarks need are not searched for.
foreach(package GTest benchmark Python3)
  list(APPEND configure "-DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON")
endforeach()
run(${configure} -B "${WORK_DIR}/plain")
# Options for the library's own code do not affect the code of the other project, and the settings of the
# other project do not change.
run(${configure} -B "${WORK_DIR}/set" -DVORNATH_DATA_SANITIZE=address -DVORNATH_DATA_COVERAGE=ON
    -DVORNATH_DATA_INSTALL=ON -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_STANDARD=17)
# Configures again, with an existing cache.
run("${CMAKE_COMMAND}" "${WORK_DIR}/plain")

# Nothing was built, so an installation of the library would fail.
run("${CMAKE_COMMAND}" --install "${WORK_DIR}/plain" --prefix "${WORK_DIR}/prefix")
file(GLOB_RECURSE installed "${WORK_DIR}/prefix/*")
if(installed)
  message(FATAL_ERROR "installed without a request: ${installed}")
endif()
