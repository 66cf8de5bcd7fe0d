#!/bin/bash
# Tells which lines of src/ the tests run, and which they don't. Counts what the last whole run of
# scripts/test.sh asan counted, and makes that run first if there is none. The last line is the share
# of lines. usage: scripts/coverage.sh [LEAST]
#   LEAST  percent of lines below which the script fails
set -euo pipefail
cd "$(dirname "$0")/.."
least=${1:-0}
build=build/asan

scripts/install_dependencies.sh coverage
[ -n "$(find "$build" -name '*.gcda' -print -quit 2>/dev/null)" ] || scripts/test.sh asan

report=$(mktemp)
trap 'rm -f "$report"' EXIT
# Generated code counts by the lines that it was generated from, which aren't under src/.
gcovr --root . --filter 'src/' --exclude-unreachable-branches -j "$(nproc)" \
  --object-directory "$build" "$build" --txt "$report" --fail-under-line "$least" || status=$?
cat "$report"
echo "line coverage of src/: $(sed -n 's/^TOTAL.* \([0-9]*%\).*/\1/p' "$report") (at least $least% asked for)"
exit "${status:-0}"
