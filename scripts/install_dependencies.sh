#!/bin/sh
# Installs what the project is built and tested with, from Debian 12's packages, and only what is
# missing. Runs as root or through sudo.
set -eu

exec "$(dirname "$0")/install_packages.sh" \
  binutils \
  bison \
  cmake \
  flex \
  g++ \
  gcc \
  libbenchmark-dev \
  libboost-dev \
  libboost-thread-dev \
  libcrypto++-dev \
  libc6-dev \
  libfmt-dev \
  libgtest-dev \
  libimath-dev \
  libtbb-dev \
  ninja-build \
  pkg-config \
  python3
