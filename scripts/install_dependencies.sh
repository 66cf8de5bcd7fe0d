#!/bin/sh
# Installs what the project needs, from Debian 12's packages, and only what is missing. Runs as root or
# through sudo.
# usage: scripts/install_dependencies.sh [--list] [PURPOSE...]
#   PURPOSE  library (and the examples), tests, bench, coverage, tidy or fuzz; library and tests if none
#            is given
#   --list   names the packages and installs nothing
set -eu

list=false
if [ "${1:-}" = --list ]; then
  list=true
  shift
fi
[ $# -gt 0 ] || set -- library tests

packages=""
for purpose in "$@"; do
  case $purpose in
    library)
      packages="$packages bison cmake flex g++ gcc libboost-dev libc6-dev libcrypto++-dev libfmt-dev
                libimath-dev libtbb-dev ninja-build"
      ;;
    # The tests look into the built library, ask pkg-config, and have Python work out colours.
    tests) packages="$packages binutils libgtest-dev pkg-config python3" ;;
    bench) packages="$packages libbenchmark-dev" ;;
    coverage) packages="$packages gcovr" ;;
    tidy) packages="$packages clang-tidy" ;;
    fuzz) packages="$packages clang libclang-rt-14-dev" ;;
    *)
      echo "install_dependencies.sh: no purpose is named $purpose" >&2
      exit 2
      ;;
  esac
done

# Word splitting is meant: one argument a package.
# shellcheck disable=SC2086
if $list; then
  printf '%s\n' $packages
else
  exec "$(dirname "$0")/install_packages.sh" $packages
fi
