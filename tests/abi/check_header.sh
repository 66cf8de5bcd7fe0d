#!/bin/sh
# Compiles a public header alone, twice in one file, and looks for macros that it leaks.
# usage: check_header.sh C_COMPILER CXX_COMPILER INCLUDE_DIR HEADER
set -eu
export LC_ALL=C
cc=$1
cxx=$2
include=$3
header=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"

printf '#include "%s"\n#include "%s"\nextern int something;\n' "$header" "$header" >"$work/source"
compile() {
  "$@" $warnings -I"$include" -fsyntax-only "$work/source"
  # With the definitions kept, the line markers tell which file makes which.
  "$@" -I"$include" -E -dD "$work/source" | awk -v dir="$include/vornath_data/" '
    /^# [0-9]+ "/ { split($0, part, "\""); ours = index(part[2], dir) == 1 }
    /^#define / && ours { split($2, words, "("); defined[words[1]] = 1 }
    /^#undef / && ours { delete defined[$2] }
    END {
      for (macro in defined) {
        if (macro !~ /^(VRNT|VRDM|VORNATH)_/) { print "leaks the macro " macro; leaks = 1 }
        ++count
      }
      if (count == 0) { print "no macro seen, not even the include guard"; leaks = 1 }
      exit leaks
    }'
}

case $header in
  *.h)
    compile "$cc" -x c -std=c11
    compile "$cxx" -x c++ -std=c++17
    ;;
  *)
    compile "$cxx" -x c++ -std=c++17
    ;;
esac
echo "$header compiles alone"
