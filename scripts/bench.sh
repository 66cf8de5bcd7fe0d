#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them on one core. Prints medians and, for benchmarks that
# have yardsticks (reference operations), the ratios to these in the same run. Other arguments are
# passed to the benchmark program, for example --benchmark_filter=vrdmSerialize.
# usage: scripts/bench.sh [--scaling] [ARGUMENT...]
#        scripts/bench.sh --gate [--column NAME]
#   --scaling  measures two threads relative to one, on all cores
#   --gate     runs the rows of bench/aims.def three times, in both programs, and compares the medians
#              of their ratios with the aims. Fails if one is more than 25 % above its aim
#   --column   also writes the figures into the column NAME of docs/performance.md, Base or Now
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install_dependencies.sh library toolkit bench
if ! scripts/install_dependencies.sh yardsticks; then
  echo "some yardsticks cannot be installed; their rows are left out"
fi
configuration=$(cmake --preset release)
grep "left out of the benchmarks" <<< "$configuration" || true
# Order of the pages from which on a virtual machine gives free memory back to its host; -1 for none.
reporting=/sys/module/page_reporting/parameters/page_reporting_order
if [ -r "$reporting" ] && [ "$(cat "$reporting")" -ge 0 ] && [ "$(cat "$reporting")" -le 10 ]; then
  echo "this virtual machine gives free memory back to its host: figures of large scenes and assets vary by"
  echo "a factor of 10; as root, write 11 to $reporting while you measure"
fi
core=()
if command -v taskset > /dev/null; then core=(taskset -c 0); fi

if [ "${1:-}" = --gate ]; then
  shift
  cmake --build --preset release --target vornath_bench vornath_scaling_bench
  results=$(mktemp -d)
  trap 'rm -rf "$results"' EXIT
  run() {  # PROGRAM RESULT [COMMAND...]: the command runs the program
    "${@:3}" "build/release/bench/$1" --benchmark_filter="$filter" \
      --benchmark_out="$results/$2.json" --benchmark_out_format=json \
      --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true \
      --benchmark_display_aggregates_only=true --benchmark_min_time=0.01 > "$results/log" 2>&1 ||
      { cat "$results/log"; exit 1; }
  }
  filter=$(bench/gate.py --filter)
  for i in 1 2 3; do
    echo "run $i of 3"
    run vornath_bench "one$i" "${core[@]}"
    run vornath_scaling_bench "two$i"
  done
  bench/gate.py "$@" "$results"/*.json
  exit
fi

program=vornath_bench
if [ "${1:-}" = --scaling ]; then
  shift
  program=vornath_scaling_bench
  core=()
fi
cmake --build --preset release --target "$program"
"${core[@]}" "build/release/bench/$program" --benchmark_repetitions=9 \
  --benchmark_report_aggregates_only=true --benchmark_min_time=0.1 "$@"
