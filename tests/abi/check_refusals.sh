#!/bin/sh
# Compiles statements that hosts must not write, and checks the messages of the compiler.
# usage: check_refusals.sh CXX_COMPILER INCLUDE_DIR
set -eu
export LC_ALL=C
cxx=$1
include=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

# expect MESSAGE STATEMENT: the compiler reports the message; if it is empty, the statement compiles.
expect() {
  printf '#include "vornath_data/value.hpp"\nvoid f(const vrnt::View& view) { %s }\n' "$2" \
    >"$work/source.cpp"
  if "$cxx" -std=c++17 -I"$include" -fsyntax-only "$work/source.cpp" 2>"$work/words"; then
    [ -z "$1" ] && return
    echo "compiles: $2"
  else
    [ -n "$1" ] && grep -qF "$1" "$work/words" && return
    echo "is not rejected with \"$1\": $2"
    cat "$work/words"
  fi
  status=1
}

takes="a view takes float, bool, 32-bit integers and characters"
expect "" "view.write(1.0F); view.write(true); view.read<int>();"
expect "$takes" "view.write(1.0);"
expect "$takes" "view.write(1L);"
expect "$takes" "view.write(&view);"
expect "$takes" "view.read<double>();"
expect "$takes" "view.read<const char*>();"
expect "$takes" "struct Text { Text(const Text&); }; view.read<Text>();"
expect "an index is an integer" "view.element(1.5);"
expect "an array has one to four dimensions" "view.element(1, 2, 3, 4, 5);"
exit $status
