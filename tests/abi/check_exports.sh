#!/bin/sh
# Compares the exports of a shared library with a sorted list of names, and prints the differences.
# usage: check_exports.sh LIBRARY LIST
set -eu
export LC_ALL=C
library=$1
list=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

nm -D -C --defined-only "$library" >"$work/symbols"
# A compiler emits several symbols for one constructor or destructor; demangled, they have the same name.
sed 's/^[0-9a-f]* [A-Za-z] //' "$work/symbols" | sort -u >"$work/exported"
sort -u "$list" >"$work/listed"

status=0
if ! cmp -s "$list" "$work/listed"; then
  echo "$list is not sorted (LC_ALL=C sort -u)"
  status=1
fi
missing=$(comm -13 "$work/exported" "$work/listed")
unexpected=$(comm -23 "$work/exported" "$work/listed")
# Instances of templates and inline functions are weak symbols, since each user emits them. The vtable and
# the type information of a class are weak too, although only the file of its key function emits them.
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
  printf 'exported, but an instance of a template or an inline function:\n%s\n' "$weak"
  status=1
fi
[ $status -ne 0 ] || echo "$(wc -l <"$work/exported") names are exported, as listed"
exit $status
