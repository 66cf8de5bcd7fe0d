#!/bin/sh
# Compares what a shared library exports with a sorted list of names, and says which names differ.
# usage: check_exports.sh LIBRARY LIST
set -eu
export LC_ALL=C
library=$1
list=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

nm -D -C --defined-only "$library" >"$work/symbols"
# The two constructors and destructors that a compiler makes of one have one name.
sed 's/^[0-9a-f]* [A-Za-z] //' "$work/symbols" | sort -u >"$work/exported"
sort -u "$list" >"$work/listed"

status=0
if ! cmp -s "$list" "$work/listed"; then
  echo "$list isn't sorted (LC_ALL=C sort -u)"
  status=1
fi
missing=$(comm -13 "$work/exported" "$work/listed")
unexpected=$(comm -23 "$work/exported" "$work/listed")
# Templates and inline functions are weak, since each user makes them. So are the tables of a class
# with virtual operations, though these have one home, the file of its first operation.
weak=$(sed -n 's/^[0-9a-f]* [WVuvw] //p' "$work/symbols" |
  grep -v -e '^vtable for ' -e '^typeinfo for ' -e '^typeinfo name for ' | sort -u || true)
if [ -n "$missing" ]; then
  printf 'listed, but not exported:\n%s\n' "$missing"
  status=1
fi
if [ -n "$unexpected" ]; then
  printf 'exported, but not listed:\n%s\n' "$unexpected"
  status=1
fi
if [ -n "$weak" ]; then
  printf 'exported, but made of a template or an inline function:\n%s\n' "$weak"
  status=1
fi
[ $status -ne 0 ] || echo "$(wc -l <"$work/exported") names, all as listed"
exit $status
