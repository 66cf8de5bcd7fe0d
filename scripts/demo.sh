#!/bin/bash
# Installs missing packages and builds the library and its example programs in Release. Then one
# program writes a scene of a measured box, another reads and prints it, a third compares it with the
# measurements, and a fourth draws black bodies and the measured reflectances. Then the command vrn looks
# into the file, checks it and a damaged copy of it, and compares it with a changed version. At the end, the
# renderer draws the box, each spectrum as it was measured.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/demo
hosts=$build/examples/cornell_box
scene=$build/cornell_box.vrnscene
picture=$build/blackbody.svg
heading() { printf '\n== %s\n\n' "$1"; }

heading "Dependencies"
scripts/install_dependencies.sh library toolkit renderer

heading "Build"
configure=(cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release
           -DVORNATH_DATA_BUILD_TESTS=OFF -DVORNATH_DATA_BUILD_BENCH=OFF -DVORNATH_DATA_BUILD_RENDERER=ON)
if command -v ccache >/dev/null; then
  configure+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
"${configure[@]}"
cmake --build "$build" -j "$(nproc)" --target build_scene show_scene check_scene blackbody vrn vrn-render

heading "build_scene: from the measurements to a scene file"
"$hosts/build_scene" "$scene"

heading "show_scene: the scene as another program reads it"
"$hosts/show_scene" "$scene"

heading "check_scene: the file compared with the measurements"
"$hosts/check_scene" "$scene"

heading "blackbody: colours that the library computes"
"$build/examples/blackbody/blackbody" "$picture"

# Runs a command and prints it before. The first argument is the exit code that it must have.
vrn=$build/tools/vrn
run_vrn() {
  local expected=$1 status=0
  shift
  printf '$ vrn %s\n' "$*"
  "$vrn" "$@" || status=$?
  [ $status -eq "$expected" ] || { echo "demo.sh: vrn exited with $status, not $expected" >&2; exit 1; }
}

heading "vrn info: the scene file in numbers"
run_vrn 0 info "$scene"

heading "vrn check: the file, and a copy of which the end is missing"
run_vrn 0 check "$scene"
damaged=$build/damaged.vrnscene
head -c 9000 "$scene" >"$damaged"
run_vrn 1 check "$damaged"

heading "vrn diff: two versions of the scene"
changed=$build/changed.vrnscene
run_vrn 0 set "$scene" Camera/0/groups/General/near_distance 0.25 -o "$changed"
run_vrn 0 set "$changed" Shape/3/slots/material 2
run_vrn 1 diff "$scene" "$changed"

heading "vrn render: the box as a picture"
image=$PWD/$build/cornell_box.png
run_vrn 0 render "$scene" -o "$image" --size 512 --samples 128 --time 18 --exposure 1

printf '\nThe demo succeeded: the programs read what was written.\nThe picture: %s\n' "$image"
