#!/usr/bin/env bash
# The Debian packages of a build: the tool runs from an empty root that they are unpacked into, and a second build, of a copy
# of the sources in paths with blanks, gives the same bytes. packages.sh BUILD_DIR SOURCE_DIR [EMULATOR...]
set -euo pipefail
build=$1 source=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
pack() { cpack --config "$1/CPackConfig.cmake" -B "$2" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }

pack "$build" "$work/packages"
for package in "$work"/packages/*.deb; do dpkg-deb -x "$package" "$work/a root"; done
(cd "$work/a root" && find . ! -type d | LC_ALL=C sort) >"$work/files"
for file in bin/devfacts lib/libdevfacts.so.0 lib/libdevfacts.so lib/libdevfacts.a include/devfacts/net.h lib/pkgconfig/devfacts.pc; do
  grep -qx "./usr/$file" "$work/files" || { echo "no $file in the packages"; cat "$work/files"; exit 1; }
done
find "$work/a root/usr" -type f \( -name '*.so.*' -o -path '*/bin/*' \) -exec "$source/script/size" --hardened "$build" {} +
"$@" "$work/a root/usr/bin/devfacts" net lo | grep -qx '  <name>lo</name>' || { echo "the packaged tool does not list lo"; exit 1; }

mkdir "$work/a copy"
tar -C "$source" -c --exclude=./build --exclude=./.git . | tar -C "$work/a copy" -x
[ ! -e "$source/.git" ] || ln -s "$source/.git" "$work/a copy/.git"
mapfile -t settings < <(sed -nE 's/^(CMAKE_BUILD_TYPE|CMAKE_TOOLCHAIN_FILE|CMAKE_CXX?_FLAGS|DEVFACTS_(PLATFORM|DOCS|STACK_PROTECTOR|RELRO|FORTIFY)):/-D&/p' "$build/CMakeCache.txt")
{ cmake -G Ninja -S "$work/a copy" -B "$work/a build" "${settings[@]}" && cmake --build "$work/a build"; } >"$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }
pack "$work/a build" "$work/packages again"
for file in "$build"/lib*.so.*.*.* "$build"/lib*.a "$build/tools/devfacts"; do cmp "$file" "$work/a build${file#"$build"}"; done
for package in "$work"/packages/*.deb; do cmp "$package" "$work/packages again/${package##*/}"; done
