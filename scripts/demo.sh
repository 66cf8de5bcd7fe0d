#!/bin/bash
# Installs missing packages and builds the library and its example programs in Release. Then one
# program writes a scene of a measured box, another reads and prints it, a third compares it with the
# measurements, and a fourth draws black bodies and the measured reflectances.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/demo
hosts=$build/examples/cornell_box
scene=$build/cornell_box.vrnscene
picture=$build/blackbody.svg
heading() { printf '\n== %s\n\n' "$1"; }

heading "Dependencies"
scripts/install_dependencies.sh library

heading "Build"
configure=(cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release
           -DVORNATH_DATA_BUILD_TESTS=OFF -DVORNATH_DATA_BUILD_BENCH=OFF)
if command -v ccache >/dev/null; then
  configure+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
"${configure[@]}"
cmake --build "$build" -j "$(nproc)" --target build_scene show_scene check_scene blackbody

heading "build_scene: from the measurements to a scene file"
"$hosts/build_scene" "$scene"

heading "show_scene: the scene as another program reads it"
"$hosts/show_scene" "$scene"

heading "check_scene: the file compared with the measurements"
"$hosts/check_scene" "$scene"

heading "blackbody: colours that the library computes"
"$build/examples/blackbody/blackbody" "$picture"

printf '\nThe demo succeeded: the programs read what was written.\n'
