#!/bin/bash
# Installs what is missing, configures, builds and runs tests. The last line is the summary of what
# ran.
# usage: scripts/test.sh [PRESET [FOLDER...]]
#   PRESET  dev (the default), asan or tsan
#   FOLDER  build and run the tests of these folders of tests/ only
set -euo pipefail
cd "$(dirname "$0")/.."
preset=${1:-dev}
folders=("${@:2}")
jobs=$(nproc)

scripts/install_dependencies.sh library tests
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
# Only what this run runs is counted.
[ ${#folders[@]} -gt 0 ] || find "build/$preset" -name '*.gcda' -delete

export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"
if [ "$preset" = tsan ] && setarch -R true 2>/dev/null; then
  # The thread sanitizer wants its memory where the kernel may have put something else.
  run=(setarch -R "${run[@]}")
fi

# Where ctest writes what each test printed.
log=build/$preset/Testing/Temporary/LastTest.log
rm -f "$log"
status=0
"${run[@]}" || status=$?

# One test may be many cases of a program. The last line counts the cases that ran.
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
