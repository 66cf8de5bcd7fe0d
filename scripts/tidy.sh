#!/bin/bash
# Runs clang-tidy with the checks of .clang-tidy on the sources of the library, the toolkit, vrn, the
# renderer and the converter. The last line is the number of files that were checked, and of those with
# findings, with their names.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_dependencies.sh library toolkit renderer converter tests tidy
cmake --preset dev -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
cmake --build --preset dev -j "$(nproc)" --target vornath_grammar >/dev/null

# The longest files come first, so that at the end no processor waits for one of them.
mapfile -t files < <(ls -S common/*.cpp src/*/*.cpp src/*/tables/*.cpp toolkit/*/*.cpp tools/*.cpp tools/*/*.cpp renderer/*.cpp renderer/*/*.cpp converter/*.cpp converter/*/*.cpp)
log=$(mktemp)
trap 'rm -f "$log"' EXIT
printf '%s\0' "${files[@]}" |
  xargs -0 -P "$(nproc)" -I{} sh -c \
    'clang-tidy -p build/dev --quiet --header-filter="^$PWD/(common|include|src|toolkit|tools|renderer|converter)/" "$1" 2>/dev/null || echo "FINDINGS in $1"' sh {} | tee "$log"
mapfile -t findings < <(sed -n 's/^FINDINGS in //p' "$log")
echo "clang-tidy checked ${#files[@]} files, ${#findings[@]} with findings${findings[*]:+: ${findings[*]}}"
[ ${#findings[@]} -eq 0 ]
