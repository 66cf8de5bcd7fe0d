#!/bin/sh
# Checks the hardening of a built library: full RELRO, a stack that is not executable, stack protector, and
# C functions that check the size of their destination.
# usage: check_hardening.sh LIBRARY
set -eu
library=$1
status=0
miss() {
  echo "$1" >&2
  status=1
}
readelf -lW "$library" | grep -q GNU_RELRO || miss "no part is read-only after relocation (RELRO)"
readelf -dW "$library" | grep -q 'NOW' || miss "functions are not bound at load"
readelf -lW "$library" | grep 'GNU_STACK' | grep -q 'RW ' || miss "the stack is executable"
nm -D --undefined-only "$library" | grep -q '__stack_chk_fail' || miss "there is no stack protector"
nm -D --undefined-only "$library" | grep -q '_chk@' || miss "no C function checks the size of its destination"
exit $status
