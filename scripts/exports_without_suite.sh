#!/bin/sh
# Prints the exported flat functions without a test suite of the same name. Exits with 1 if there are
# any.
set -eu
cd "$(dirname "$0")/.."
status=0
for name in $(grep -E '^(vrnt|vrtn|vrdm)[A-Za-z]+$' tests/abi/exports.txt); do
  if ! grep -rqE "^TEST(_F|_P)?\($name(DeathTest)?," tests --include='*_test.cpp'; then
    echo "$name"
    status=1
  fi
done
exit $status
