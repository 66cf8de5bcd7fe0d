#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them on one core. Prints medians and, for benchmarks that
# have a yardstick (a reference operation), the ratio to it in the same run. Other arguments are passed
# to the benchmark program, for example --benchmark_filter=vrdmSerialize.
# usage: scripts/bench.sh [--scaling] [ARGUMENT...]
#   --scaling  measures the throughput of two threads relative to one, on all cores
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
