#!/bin/sh
# Checks what the toolkit includes of vornath_data: public headers only, and no file of src/, so that it
# can do nothing that another host cannot.
# usage: check_includes.sh SOURCE_DIR
set -eu
cd "$1"
bad=$(grep -rnE '^#include "' --include='*.hpp' --include='*.cpp' --include='*.h' toolkit |
  sed 's/^\([^:]*:[0-9]*\):#include "\(.*\)".*/\1 \2/' |
  while read -r place header; do
    case $header in
      check/codes.def) continue ;;
    esac
    if [ -e "include/$header" ] || [ -e "toolkit/$header" ] || [ -e "toolkit/include/$header" ]; then
      continue
    fi
    echo "$place: $header is no public header"
  done)
if [ -n "$bad" ]; then
  echo "$bad"
  exit 1
fi
echo "the toolkit includes public headers and its own"
