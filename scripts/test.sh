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

log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
"${run[@]}" | tee "$log" || status=$?
grep 'tests passed' "$log" || { echo "$preset: no test ran"; exit 1; }
exit "$status"
