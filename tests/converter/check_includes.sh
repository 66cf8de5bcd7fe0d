#!/bin/sh
# Checks what the converter includes: its own headers, and of the libraries those that are installed, so that any
# other program can do what it does.
# usage: check_includes.sh SOURCE_DIR
set -eu
cd "$1"
bad=$(grep -rnE '^#include ("|<vornath)' --include='*.hpp' --include='*.cpp' converter |
  sed 's/^\([^:]*:[0-9]*\):#include ["<]\([^">]*\)[">].*/\1 \2/' |
  while read -r place header; do
    case $header in
      vornath_data/*) [ -e "include/$header" ] || echo "$place: $header is not installed" ;;
      vornath_toolkit/*) [ -e "toolkit/include/$header" ] || echo "$place: $header is not installed" ;;
      *) [ -e "converter/$header" ] || echo "$place: $header is no header of the converter" ;;
    esac
  done)
if [ -n "$bad" ]; then
  echo "$bad"
  exit 1
fi
echo "the converter includes installed headers and its own"
