#!/bin/sh
# Prints a line "HEADER FILES" for each public header: the number of files that it includes in C++17,
# rounded up to leave room for the headers of another compiler. tests/abi/header_files.txt is this list.
# usage: scripts/measure_headers.sh > tests/abi/header_files.txt
set -eu
cd "$(dirname "$0")/../include"
find vornath_data -name '*.h' -o -name '*.hpp' | LC_ALL=C sort | while read -r header; do
  files=$(printf '#include "%s"\n' "$header" | "${CXX:-c++}" -x c++ -std=c++17 -I. -M - | tr -d '\\' | wc -w)
  # Two words are not headers: the target of the rule, and standard input.
  echo "$header $(((files - 2) / 10 * 10 + 10))"
done
