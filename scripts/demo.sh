#!/bin/bash
# Installs what is missing, builds the library and the hosts of examples/cornell_box in Release, and
# lets one program write a scene of a measured box, another one read and print it, and a third one
# hold it against the measurements.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/demo
hosts=$build/examples/cornell_box
scene=$build/cornell_box.vrnscene
heading() { printf '\n== %s\n\n' "$1"; }

heading "Dependencies"
scripts/install_dependencies.sh

heading "Build"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DVORNATH_DATA_BUILD_TESTS=OFF -DVORNATH_DATA_BUILD_BENCH=OFF
cmake --build "$build" -j "$(nproc)" --target build_scene show_scene check_scene

heading "build_scene: from the measurements to a scene file"
"$hosts/build_scene" "$scene"

heading "show_scene: what another program reads in it"
"$hosts/show_scene" "$scene"

heading "check_scene: the file against the measurements"
"$hosts/check_scene" "$scene"

printf '\nThe demo succeeded: what was read is what was written.\n'
