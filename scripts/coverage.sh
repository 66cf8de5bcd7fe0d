#!/bin/bash
# Reports which lines of src/ the tests execute. Uses the counts of the last complete run of
# scripts/test.sh asan, and starts this run if there are no counts. The last line is the line coverage.
# usage: scripts/coverage.sh [LEAST]
#   LEAST  the script fails if the line coverage is below this percentage
set -euo pipefail
cd "$(dirname "$0")/.."
least=${1:-0}
build=build/asan

scripts/install_dependencies.sh coverage
[ -n "$(find "$build" -name '*.gcda' -print -quit 2>/dev/null)" ] || scripts/test.sh asan

report=$(mktemp)
trap 'rm -f "$report"' EXIT
# Counts for generated code refer to the lines that it was generated from, which are not under src/.
# Threads that count at the same time may leave a line with a count below 0, which gcovr does not read.
gcovr --root . --filter 'src/' --exclude-unreachable-branches --gcov-ignore-parse-errors -j "$(nproc)" \
  --object-directory "$build" "$build" --txt "$report" --fail-under-line "$least" || status=$?
cat "$report"
echo "line coverage of src/: $(sed -n 's/^TOTAL.* \([0-9]*%\).*/\1/p' "$report") (required: $least%)"
exit "${status:-0}"
