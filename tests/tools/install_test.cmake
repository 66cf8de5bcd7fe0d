# Installs the build into a folder of the build tree, moves it, and runs vrn there. Checks that the manual
# pages and the completions are where man and the shells look.
# cmake -DBUILD_DIR= -DWORK_DIR= -DBUILD_SCENE= -P install_test.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../abi/run.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
# An installed copy does not depend on its path.
set(prefix "${WORK_DIR}/moved")
file(RENAME "${WORK_DIR}/installed" "${prefix}")

run("${BUILD_SCENE}" "${WORK_DIR}/box.vrnscene")
run("${prefix}/bin/vrn" check --strict "${WORK_DIR}/box.vrnscene")

# The commands that vrn has are those that it has pages for.
execute_process(COMMAND "${prefix}/bin/vrn" --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n  [a-z]+ " lines "${help}")
set(expected vrn.1)
if(EXISTS "${prefix}/share/man/man1/vrn-convert.1")
  list(APPEND expected vrn-convert.1)
endif()
foreach(line IN LISTS lines)
  string(STRIP "${line}" name)
  list(APPEND expected "vrn-${name}.1")
endforeach()
# A program of its own brings its page.
if(EXISTS "${prefix}/bin/vrn-render")
  list(APPEND expected vrn-render.1)
endif()
file(GLOB pages RELATIVE "${prefix}/share/man/man1" "${prefix}/share/man/man1/*")
list(SORT expected)
list(SORT pages)
if(NOT pages STREQUAL expected)
  message(FATAL_ERROR "manual pages: ${pages}\nexpected: ${expected}")
endif()

foreach(file IN ITEMS bash-completion/completions/vrn zsh/site-functions/_vrn
        fish/vendor_completions.d/vrn.fish)
  if(NOT EXISTS "${prefix}/share/${file}")
    message(FATAL_ERROR "${file} is not installed")
  endif()
endforeach()
