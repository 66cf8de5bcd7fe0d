#!/bin/sh
# Checks that the scripts ask only for known purposes of packages, and that building the library does not
# install packages that only its tests and benchmarks need.
# usage: check_dependencies.sh SOURCE_FOLDER
set -eu
cd "$1"
status=0
scripts=0
for script in scripts/*.sh; do
  purposes=$(sed -n 's,^scripts/install_dependencies\.sh ,,p' "$script")
  [ -n "$purposes" ] || continue
  scripts=$((scripts + 1))
  # Word splitting is intended: each purpose is one argument.
  # shellcheck disable=SC2086
  if ! packages=$(scripts/install_dependencies.sh --list $purposes); then
    echo "$script asks for packages of an unknown purpose"
    status=1
  fi
  case $script in
    scripts/demo.sh) demo=$packages ;;
  esac
done
if [ $scripts -lt 5 ]; then
  echo "only $scripts scripts ask for packages"
  status=1
fi

for package in bison cmake flex g++ libboost-dev libcrypto++-dev libfmt-dev libimath-dev libtbb-dev; do
  if ! echo "$demo" | grep -qxF "$package"; then
    echo "the demo does not install $package, which the library needs"
    status=1
  fi
done
unwanted=$(echo "$demo" | grep -xE 'libgtest-dev|libbenchmark-dev|python3|pkg-config|gcovr|clang.*' || true)
if [ -n "$unwanted" ]; then
  echo "the demo installs packages that it does not use: $unwanted"
  status=1
fi
exit $status
