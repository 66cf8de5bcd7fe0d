#!/bin/sh
# Installs the packages of Debian 12 that the project needs, if they are missing. Needs root or sudo.
# usage: scripts/install_dependencies.sh [--list] [PURPOSE...]
#   PURPOSE  library (includes the examples), toolkit (includes the command vrn), tests, browser, python
#            (the Python package and its tests), renderer, converter, bench, yardsticks, coverage, tidy or
#            fuzz; the default is library, toolkit, tests, browser and python
#   --list   prints the names of the packages and installs nothing
set -eu

list=false
if [ "${1:-}" = --list ]; then
  list=true
  shift
fi
[ $# -gt 0 ] || set -- library toolkit tests browser python

packages=""
for purpose in "$@"; do
  case $purpose in
    library)
      packages="$packages bison cmake flex g++ gcc libboost-dev libc6-dev libcrypto++-dev libfmt-dev
                libimath-dev libtbb-dev ninja-build rapidjson-dev"
      ;;
    # Only who builds the toolkit and the command vrn needs these.
    toolkit) packages="$packages libcli11-dev rapidjson-dev" ;;
    # The tests inspect the built library, call pkg-config, compute colours with Python, check documents
    # against a JSON Schema, and apply patches with another library.
    tests)
      packages="$packages binutils libgtest-dev nlohmann-json3-dev pkg-config python3 python3-jsonschema"
      ;;
    # The test of the catalogue's page runs it in a browser.
    browser) packages="$packages chromium chromium-driver python3-selenium" ;;
    # The package needs NumPy. Dask spreads work over processes, matplotlib draws where it is wanted, and
    # the others test, check and build the package.
    python)
      packages="$packages python3 python3-dask python3-distributed python3-hatchling python3-matplotlib
                mypy python3-numpy python3-pip python3-pytest"
      ;;
    # Ray tracing, pictures and threads.
    renderer) packages="$packages libembree-dev libopenexr-dev libpng-dev libtbb-dev" ;;
    # Readers of other kinds of files and images. The tests convert the models.
    converter)
      packages="$packages libassimp-dev libstb-dev libtinygltf-dev nlohmann-json3-dev assimp-testmodels"
      ;;
    bench) packages="$packages libbenchmark-dev" ;;
    # Libraries that the benchmarks measure beside this one, if they are installed.
    yardsticks)
      packages="$packages libhdf5-dev libprotobuf-dev libprotoc-dev"
      ;;
    coverage) packages="$packages gcovr" ;;
    tidy) packages="$packages clang-tidy" ;;
    fuzz) packages="$packages clang libclang-rt-14-dev" ;;
    *)
      echo "install_dependencies.sh: unknown purpose: $purpose" >&2
      exit 2
      ;;
  esac
done

# Word splitting is intended: each package is one argument.
# shellcheck disable=SC2086
if $list; then
  printf '%s\n' $packages
else
  exec "$(dirname "$0")/install_packages.sh" $packages
fi
