#!/bin/bash
# Builds the Debian package python3-vornath-data: the Python package with the libraries it needs.
# usage: scripts/build_python_deb.sh [--output FOLDER] [--libraries FOLDERS | --without-libraries]
#   --output FOLDER      where to write the .deb (the default is build)
#   --libraries FOLDERS  takes libvornath_data.so.1 and libvornath_toolkit.so.1 from these folders, joined
#                        with ':'; by default, they are built in Release in build/python_deb
#   --without-libraries  builds a package for all architectures, which needs the libraries in the system
# Prints the path of the .deb. Needs the packages of `scripts/install_dependencies.sh library toolkit python`.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
name=python3-vornath-data
libraries=(libvornath_data.so.1 libvornath_toolkit.so.1)

output=$root/build
folders=""
with_libraries=true
fail() {
  echo "build_python_deb.sh: $1" >&2
  exit 2
}
while [ $# -gt 0 ]; do
  case $1 in
    --output) output=${2:?"--output needs a folder"}; shift 2 ;;
    --libraries) folders=${2:?"--libraries needs folders"}; shift 2 ;;
    --without-libraries) with_libraries=false; shift ;;
    *) fail "unknown argument: $1" ;;
  esac
done

number() {
  awk -v part="VORNATH_DATA_VERSION_$1" '$2 == part { print $3 }' "$root/include/vornath_data/version.h"
}
version=$(number MAJOR).$(number MINOR).$(number PATCH)
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "version.h has no version"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tree=$work/tree
packages=$tree/usr/lib/python3/dist-packages
mkdir -p "$packages" "$output"

# The wheel has what pip would install, and the metadata that other tools read. It is built from a copy, since
# the backend may leave files in the folder.
cp -r "$root/python" "$work/python"
find "$work/python" -name __pycache__ -prune -exec rm -rf {} +
python=/usr/bin/python3
"$python" -m pip wheel --quiet --no-index --no-deps --no-cache-dir --disable-pip-version-check \
  --wheel-dir "$work" "$work/python" >&2
wheel=("$work/vornath_data-$version"-*.whl)
[ -f "${wheel[0]}" ] || fail "the wheel does not have the version $version of version.h"
"$python" -m zipfile -e "${wheel[0]}" "$packages"
rm -f "$packages"/*.dist-info/RECORD  # dpkg knows the files.

mkdir -p "$tree/usr/bin"
cat >"$tree/usr/bin/vornath-batch" <<'END'
#!/usr/bin/python3
import sys

from vornath_data.batch import main

sys.exit(main())
END
chmod 755 "$tree/usr/bin/vornath-batch"

depends="python3 (>= 3.11), python3-numpy"
architecture=all
if $with_libraries; then
  if [ -z "$folders" ]; then
    build=$root/build/python_deb
    configure=(cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release
               -DVORNATH_DATA_BUILD_TESTS=OFF -DVORNATH_DATA_BUILD_EXAMPLES=OFF)
    if command -v ccache >/dev/null; then
      configure+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    "${configure[@]}" >&2
    cmake --build "$build" -j "$(nproc)" --target vornath_data vornath_toolkit >&2
    folders=$build/src:$build/toolkit
  fi
  mkdir "$packages/vornath_data/lib"
  # shellcheck disable=SC2016  # CMake expands it.
  echo 'file(RPATH_REMOVE FILE "${FILE}")' >"$work/remove_path.cmake"
  for library in "${libraries[@]}"; do
    found=""
    IFS=: read -ra places <<<"$folders"
    for place in "${places[@]}"; do
      if [ -f "$place/$library" ]; then found=$place/$library; break; fi
    done
    [ -n "$found" ] || fail "$library is not in $folders"
    target=$packages/vornath_data/lib/$library
    install -m 644 "$found" "$target"
    strip --strip-unneeded "$target"
    # The search path of a build names folders of this machine.
    cmake "-DFILE=$target" -P "$work/remove_path.cmake" >&2
    # The packages whose libraries it is linked with.
    while read -r needed; do
      [[ $needed == libvornath_* ]] && continue
      path=$(ldd "$target" | awk -v name="$needed" '$1 == name { print $3 }')
      # Debian may list a library with or without the link /lib -> /usr/lib in its path.
      owner=$(dpkg-query -S "${path#/usr}" "/usr${path#/usr}" 2>/dev/null | head -n 1 | sed 's/:.*//' || true)
      [ -n "$owner" ] || fail "no package has $needed, which $library needs"
      [[ ", $depends, " == *", $owner, "* ]] || depends+=", $owner"
    done < <(objdump -p "$target" | awk '$1 == "NEEDED" { print $2 }')
  done
  architecture=$(dpkg --print-architecture)
  words=" The libraries are in this package."
else
  words=" It needs ${libraries[0]} and ${libraries[1]}, which are not in this package."
fi

documents=$tree/usr/share/doc/$name
mkdir -p "$documents"
cp "$root/docs/python.md" "$documents/"
gzip -9 -n <"$root/CHANGELOG.md" >"$documents/changelog.gz"

mkdir "$tree/DEBIAN"
size=$(du -sk --exclude=DEBIAN "$tree" | cut -f 1)
cat >"$tree/DEBIAN/control" <<END
Package: $name
Version: $version
Section: python
Priority: optional
Architecture: $architecture
Maintainer: vornath_data <vornath_data@localhost>
Installed-Size: $size
Depends: $depends
Recommends: python3-dask, python3-distributed
Suggests: python3-matplotlib
Description: scene descriptions for renderers in Python
 Scenes, types, self-describing values and spectral colour of vornath_data,
 with NumPy views of the bytes of meshes, textures and values, and tools that
 check, compare and convert thousands of scene files.
$words
END
# Debian's Python compiles the modules of packages when they are installed.
cat >"$tree/DEBIAN/postinst" <<END
#!/bin/sh
set -e
if [ "\$1" = configure ] && command -v py3compile >/dev/null 2>&1; then py3compile -p $name; fi
END
cat >"$tree/DEBIAN/prerm" <<END
#!/bin/sh
set -e
if command -v py3clean >/dev/null 2>&1; then py3clean -p $name; fi
END
chmod 755 "$tree/DEBIAN/postinst" "$tree/DEBIAN/prerm"
(cd "$tree" && find usr -type f -print0 | LC_ALL=C sort -z | xargs -0 md5sum) >"$tree/DEBIAN/md5sums"
find "$tree" -type d -exec chmod 755 {} +
find "$tree/usr" -type f ! -path '*/usr/bin/*' -exec chmod 644 {} +

package=$output/${name}_${version}_$architecture.deb
dpkg-deb --root-owner-group --build "$tree" "$package" >&2
echo "$package"
