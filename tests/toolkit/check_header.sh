#!/bin/sh
# Compiles a public header of the toolkit alone, included twice in one file, as C11 and as C++17, and checks
# that it leaks no macros.
# usage: check_header.sh C_COMPILER CXX_COMPILER SOURCE_DIR HEADER
set -eu
export LC_ALL=C
cc=$1
cxx=$2
source=$3
header=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"
folders="-I$source/toolkit/include -I$source/include"

printf '#include "%s"\n#include "%s"\nextern int something;\n' "$header" "$header" >"$work/source"
compile() {
  "$@" $warnings $folders -fsyntax-only "$work/source"
  "$@" $folders -E -dD "$work/source" | awk -v dir="$source/toolkit/include/" '
    /^# [0-9]+ "/ { split($0, part, "\""); ours = index(part[2], dir) == 1 }
    /^#define / && ours { split($2, words, "("); defined[words[1]] = 1 }
    /^#undef / && ours { delete defined[$2] }
    END {
      for (macro in defined) {
        if (macro !~ /^(VRTK|VORNATH_TOOLKIT)_/) { print "leaks the macro " macro; leaks = 1 }
        ++count
      }
      if (count == 0) { print "no macro seen, not even the include guard"; leaks = 1 }
      exit leaks
    }'
}
compile "$cc" -x c -std=c11
compile "$cxx" -x c++ -std=c++17
echo "$header compiles alone"
