# Builds the library as a static library and as a subproject of a project that installs it. Runs a host
# there, and installs the library for consumers.
# cmake -DSOURCE_DIR= -DBUILD_DIR= -DWORK_DIR= -DCONSUMER_DIR= -DHOST= -DGENERATOR= -DCC= -DCXX=
#       -DLAUNCHER= -DPKG_CONFIG= -P static_test.cmake
#   BUILD_DIR  is kept, so that the next run builds only what has changed
#   LAUNCHER   the compiler launcher, for example ccache
include("${CMAKE_CURRENT_LIST_DIR}/run.cmake")

run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/subproject" -B "${BUILD_DIR}" -G "${GENERATOR}"
  "-DCMAKE_C_COMPILER=${CC}" "-DCMAKE_CXX_COMPILER=${CXX}"
  "-DCMAKE_C_COMPILER_LAUNCHER=${LAUNCHER}" "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
  -DHOW=add_subdirectory "-DSOURCE=${SOURCE_DIR}" "-DHOST=${HOST}"
  -DBUILD_SHARED_LIBS=OFF -DVORNATH_DATA_INSTALL=ON)
run("${CMAKE_COMMAND}" --build "${BUILD_DIR}" --parallel 2)
run("${BUILD_DIR}/host")

set(STATIC ON)
set(FLAGS "")
include("${CMAKE_CURRENT_LIST_DIR}/install_test.cmake")

# All global symbols have names of the library, since hosts may have parsers and scanners of their own.
execute_process(COMMAND nm -C -g --defined-only "${static_libraries}"
  OUTPUT_VARIABLE names COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n[0-9a-f]+ [A-TX-Z] [^\n]*" names "${names}")
list(LENGTH names count)
list(FILTER names EXCLUDE REGEX
  "^.[0-9a-f]+ . ([a-z ]+ for )?(vrnt|vrtn|vrdm|vornath_|qex::vornath::|VornathValuesAssertionFailure)")
if(names OR count LESS 300)
  message(FATAL_ERROR "of ${count} symbols, these do not have names of the library: ${names}")
endif()

# A plugin that contains the library does not export the library's functions.
file(WRITE "${WORK_DIR}/plugin.c" "#include <vornath_data/vrdm.h>
vrdmScene_t* pluginScene(void) { return vrdmCreateScene(); }\n")
run("${CC}" -shared -fPIC "${WORK_DIR}/plugin.c" -o "${WORK_DIR}/plugin.so" ${flags})
execute_process(COMMAND nm -D -C --defined-only "${WORK_DIR}/plugin.so"
  OUTPUT_VARIABLE names COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+ [A-TX-Z] [^\n]*" names "${names}")
if(NOT names MATCHES "^[0-9a-f]+ T pluginScene$")
  message(FATAL_ERROR "a plugin exports other functions than its own: ${names}")
endif()
