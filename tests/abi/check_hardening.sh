#!/bin/sh
# The library's tables are read-only and bound at load, its stack is guarded, and the C functions that
# copy know how much room there is.
# usage: check_hardening.sh LIBRARY
set -eu
library=$1
status=0
miss() {
  echo "$1" >&2
  status=1
}
readelf -lW "$library" | grep -q GNU_RELRO || miss "there is no read-only part after relocation"
readelf -dW "$library" | grep -q 'NOW' || miss "functions are bound late"
readelf -lW "$library" | grep 'GNU_STACK' | grep -q 'RW ' || miss "the stack is executable"
nm -D --undefined-only "$library" | grep -q '__stack_chk_fail' || miss "there are no stack guards"
nm -D --undefined-only "$library" | grep -q '_chk@' || miss "no C function is checked"
exit $status
