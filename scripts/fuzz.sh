#!/bin/bash
# Builds the fuzz targets with libFuzzer and runs one of them, or all in parallel. A target starts with
# its seeds and its corpus. It stores new inputs in build/fuzz/corpus/, and failing inputs in
# build/fuzz/failures/. The last line is the number of targets that ran, and of those that failed,
# with their names.
# usage: scripts/fuzz.sh TARGET|all SECONDS|-runs=N [OPTION OF LIBFUZZER...]
#   SECONDS   runs each target for this time
#   -runs=N   runs each target N times, but at most for 15 seconds, starting only with the seeds and
#             the corpus of the repository; the random seed is fixed
set -euo pipefail
cd "$(dirname "$0")/.."
if [ $# -lt 2 ]; then
  sed -n 's/^# \{0,1\}//; 2,9p' "$0" >&2
  exit 2
fi
what=$1
bound=$2
shift 2

scripts/install_dependencies.sh library toolkit fuzz
configure=(cmake --preset fuzz)
if command -v ccache >/dev/null; then
  configure+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
"${configure[@]}"
build=fuzzers
[ "$what" = all ] || build=fuzz_$what
cmake --build --preset fuzz -j "$(nproc)" --target "$build" fuzz_make_seeds


# A larger allocation fails, which is a correct outcome. libFuzzer's own limits are higher; they
# terminate the program.
export ASAN_OPTIONS="allocator_may_return_null=1:max_allocation_size_mb=24:${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="print_stacktrace=1:${UBSAN_OPTIONS:-}"

# Runs a target. Prints to the terminal; if targets run in parallel, the caller redirects the output.
fuzz() {
  local target=$1 work=""
  shift
  mkdir -p "build/fuzz/corpus/$target" build/fuzz/failures
  # The entropic schedule takes more time here than the inputs themselves.
  local run=("build/fuzz/fuzz/fuzz_$target" -rss_limit_mb=4096 -malloc_limit_mb=256 -timeout=20
             -entropic=0 -print_final_stats=1 "-artifact_prefix=build/fuzz/failures/$target-")
  # A scene with all classes is longer than libFuzzer's default maximum length.
  local like=$target
  [ "$target" != scene_check ] || like=scene_file
  [ "$like" != scene_file ] || run+=(-max_len=16384)
  [ ! -f "fuzz/$like.dict" ] || run+=("-dict=fuzz/$like.dict")
  case $bound in
    -runs=*)
      work=$(mktemp -d)
      run+=("$bound" -max_total_time=15 -seed=1 "$work")
      ;;
    *) run+=("-max_total_time=$bound" "build/fuzz/corpus/$target") ;;
  esac
  [ ! -d "build/fuzz/seeds/$target" ] || run+=("build/fuzz/seeds/$target")
  [ ! -d "fuzz/corpus/$target" ] || run+=("fuzz/corpus/$target")
  [ "$like" = "$target" ] || run+=("fuzz/corpus/$like")
  local status=0
  "${run[@]}" "$@" || status=$?
  [ -z "$work" ] || rm -rf "$work"
  return "$status"
}

build/fuzz/fuzz/fuzz_make_seeds build/fuzz/seeds
targets=("$what")
if [ "$what" = all ]; then
  targets=()
  for seeds in build/fuzz/seeds/*/; do targets+=("$(basename "$seeds")"); done
fi

failed=()
if [ ${#targets[@]} -eq 1 ]; then
  echo "== $what"
  fuzz "$what" "$@" || failed=("$what")
else
  # Runs as many targets at a time as there are processors.
  logs=$(mktemp -d)
  trap 'rm -rf "$logs"' EXIT
  trap 'kill $(jobs -p); exit 130' INT TERM
  for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
    { fuzz "$target" "$@" >"$logs/$target" 2>&1 && touch "$logs/$target.passed"; } &
  done
  wait
  for target in "${targets[@]}"; do
    echo "== $target"
    if [ -e "$logs/$target.passed" ]; then
      tail -n 6 "$logs/$target"
    else
      cat "$logs/$target"
      failed+=("$target")
    fi
  done
fi
echo "${#targets[@]} fuzz targets ran, ${#failed[@]} failed${failed[*]:+: ${failed[*]}}"
[ ${#failed[@]} -eq 0 ]
