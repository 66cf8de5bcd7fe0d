#!/bin/sh
# Installs those of the given Debian packages that are missing. Needs root or sudo.
# usage: scripts/install_packages.sh PACKAGE...
set -eu

missing=""
for package in "$@"; do
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
    echo "This script needs root, and sudo is not installed. Install as root:$missing" >&2
    exit 1
  fi
  as_root="sudo"
fi
$as_root apt-get update
# Word splitting is intended: each package is one argument.
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
