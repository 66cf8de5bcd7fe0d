#!/bin/sh
# Compiles a public header alone, included twice in one file; checks that it leaks no macros; and checks
# that the number of files that it includes in C++ is within its bound, since each costs hosts build time.
# usage: check_header.sh C_COMPILER CXX_COMPILER INCLUDE_DIR HEADER BOUNDS
#   BOUNDS  a file with a line "HEADER FILES" for each public header
set -eu
export LC_ALL=C
cc=$1
cxx=$2
include=$3
header=$4
bounds=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"

printf '#include "%s"\n#include "%s"\nextern int something;\n' "$header" "$header" >"$work/source"
compile() {
  "$@" $warnings -I"$include" -fsyntax-only "$work/source"
  # With -dD, the output contains macro definitions, and line markers name the files that define them.
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

bound=$(awk -v header="$header" '$1 == header { print $2 }' "$bounds")
[ -n "$bound" ] || { echo "$bounds has no line for $header"; exit 1; }
files=$("$cxx" -x c++ -std=c++17 -I"$include" -M "$work/source" | tr -d '\\' | wc -w)
files=$((files - 2)) # the rule's target and the source
if [ "$files" -gt "$bound" ]; then
  echo "$header includes $files files, more than its bound of $bound"
  exit 1
fi
echo "$header compiles alone and includes $files files (bound: $bound)"
