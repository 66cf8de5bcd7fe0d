#!/bin/bash
# Installs missing packages, and configures, builds and runs tests. The last line is a summary of the
# tests that ran.
# usage: scripts/test.sh [PRESET [FOLDER...]]
#   PRESET  dev (the default), asan or tsan
#   FOLDER  builds and runs only the tests of these folders of tests/
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-dev}
folders=("${@:2}")
jobs=$(nproc)

scripts/install_dependencies.sh library toolkit renderer converter tests browser python
configure=(cmake --preset "$preset")
if command -v ccache >/dev/null; then
  configure+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
"${configure[@]}"

targets=(all)
run=(ctest --preset "$preset" -j "$jobs" --no-tests=error --no-label-summary)
if [ ${#folders[@]} -gt 0 ]; then
  targets=("${folders[@]/#/tests_}")
  run+=(-L "^($(IFS='|'; echo "${folders[*]}"))\$")
fi
cmake --build --preset "$preset" -j "$jobs" --target "${targets[@]}"
# A run of all tests removes the counts of earlier runs.
[ ${#folders[@]} -gt 0 ] || find "build/$preset" -name '*.gcda' -delete

export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"
if [ "$preset" = tsan ] && setarch -R true 2>/dev/null; then
  # The thread sanitizer needs fixed address ranges, which address space randomisation may use.
  run=(setarch -R "${run[@]}")
fi

# ctest writes the output of each test to this file.
log=build/$preset/Testing/Temporary/LastTest.log
rm -f "$log"
status=0
"${run[@]}" || status=$?

# One test of ctest may run many cases of a program. The last line counts the cases.
awk -v status="$status" '
  function end_of_test() {
    if (!cases) cases = running
    tests += cases
    if (bad) failures += cases > passed ? cases - passed : 1
    cases = passed = bad = 0
  }
  /^ *[0-9]+\/[0-9]+ Testing: / { end_of_test(); running = 1 }
  /\[ RUN      \] / { ++cases }
  /\[       OK \] |\[  SKIPPED \] .* ms\)$/ { ++passed }
  /^Test Failed\.$/ { bad = 1 }
  END {
    end_of_test()
    if (!tests) { print "no test ran"; exit 1 }
    if (status && !failures) failures = 1
    printf "%d%% tests passed, %d tests failed out of %d\n",
           int((tests - failures) * 100 / tests), failures, tests
    exit status
  }' "$log"
