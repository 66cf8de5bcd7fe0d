#!/bin/sh
# Installs what the project is built and tested with, from Debian 12's packages, and only what is
# missing. Runs as root or through sudo.
set -eu

packages="
  binutils
  bison
  cmake
  flex
  g++
  gcc
  libbenchmark-dev
  libboost-dev
  libboost-thread-dev
  libcrypto++-dev
  libc6-dev
  libfmt-dev
  libgtest-dev
  libimath-dev
  libtbb-dev
  ninja-build
  pkg-config
  python3
"

missing=""
for package in $packages; do
  state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$state" = installed ] || missing="$missing $package"
done
if [ -z "$missing" ]; then
  echo "All dependencies are installed."
  exit 0
fi

echo "Installing:$missing"
as_root=""
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "Not root, and there is no sudo: install these as root:$missing" >&2
    exit 1
  fi
  as_root="sudo"
fi
$as_root apt-get update
# Word splitting is meant: one argument a package.
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
