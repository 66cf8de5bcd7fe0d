#!/bin/sh
# Checks what a program beside the library includes: its own headers, and of the libraries those that are
# installed, so that any other program can do what it does.
# usage: check_host_includes.sh SOURCE_DIR FOLDER
set -eu
cd "$1"
folder=$2
includes=$(grep -rnE '^#include ("|<vornath)' --include='*.hpp' --include='*.cpp' "$folder")
bad=$(echo "$includes" |
  sed 's/^\([^:]*:[0-9]*\):#include ["<]\([^">]*\)[">].*/\1 \2/' |
  while read -r place header; do
    case $header in
      vornath_data/*) [ -e "include/$header" ] || echo "$place: $header is not installed" ;;
      vornath_toolkit/*) [ -e "toolkit/include/$header" ] || echo "$place: $header is not installed" ;;
      *) [ -e "$folder/$header" ] || echo "$place: $header is no header of $folder" ;;
    esac
  done)
if [ -n "$bad" ]; then
  echo "$bad"
  exit 1
fi
echo "$folder includes installed headers and its own"
