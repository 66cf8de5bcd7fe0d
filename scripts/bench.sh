#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them on one core. Prints medians and, where there is a
# yardstick, the ratio to it in the same run. Arguments go to the benchmark program, as in
# --benchmark_filter=vrdmSerialize.
# usage: scripts/bench.sh [--scaling] [the program's arguments]
#   --scaling  what two threads get done against one, on all cores
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install_dependencies.sh library bench
cmake --preset release > /dev/null
program=vornath_bench
core=()
if command -v taskset > /dev/null; then core=(taskset -c 0); fi
if [ "${1:-}" = --scaling ]; then
  shift
  program=vornath_scaling_bench
  core=()
fi
cmake --build --preset release --target "$program"
"${core[@]}" "build/release/bench/$program" --benchmark_repetitions=9 \
  --benchmark_report_aggregates_only=true --benchmark_min_time=0.1 "$@"
