#!/usr/bin/env bash
# The Debian packages of a build, unpacked into a path with blanks: a static C program is built with them by pkg-config, a C++ project
# by find_package, and these and the tool run from there. A second build, of a copy of the sources, gives the same bytes.
# packages.sh BUILD_DIR SOURCE_DIR CC [EMULATOR...]
set -euo pipefail
build=$1 source=$2 compiler=$3
shift 3
emulator=("$@")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*"; exit 1; }
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }
cached() { sed -nE "s/^($1):/-D&/p" "$build/CMakeCache.txt"; }
pack() { quietly cpack --config "$1/CPackConfig.cmake" -B "$2"; }
lists_lo() { "${emulator[@]}" "$@" | grep -qE '<name>lo</name>$|^1: lo' || fail "$*: does not list lo"; }

pack "$build" "$work/packages"
for package in "$work"/packages/*.deb; do dpkg-deb -x "$package" "$work/a root"; done
usr="$work/a root/usr"
libraries=$(dirname "$(find "$usr" -name libdevfacts.a)")
documents=$usr/share/doc/devfacts-dev
for file in "$usr"/{bin/devfacts,include/devfacts/net.h,include/devfacts/platform/log.h,share/man/man3/ifi_get_all.3devfacts} \
  "$usr"/share/{man/man1/devfacts.1,bash-completion/completions/devfacts} \
  "$libraries"/libdevfacts{,-platform}.so{,.0} "$documents"/{README.md,docs/state.md,html/index.html,examples/interfaces.c}; do
  [ -e "$file" ] || fail "no $file in the packages"
done
find "$usr" -type f \( -name '*.so.*' -o -path '*/bin/*' \) -exec "$source/script/size" --hardened "$build" {} +

# Those of two architectures can be installed at once: what differs is in the architecture's own folder.
architecture=${libraries#"$usr/lib/"}
for package in "$work"/packages/{lib,devfacts-dev}*.deb; do
  [ "$(dpkg-deb -f "$package" Multi-Arch)" = same ] || fail "$package: not for several architectures"
  dpkg-deb -c "$package" | grep -v '/$' | grep -vE " ./usr/(include|share|lib/$architecture)/" && fail "$package: not in a folder of its own"
done
! grep -rlF "$architecture" "$usr/include" "$usr/share/man" || fail "these tell the architecture"

eval "flags=($(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --static --cflags --libs devfacts))"
"$compiler" -std=c99 -static "$documents/examples/interfaces.c" "${flags[@]}" -o "$work/example"
toolchain=$(sed -nE 's/^CMAKE_TOOLCHAIN_FILE:[A-Z]+=//p' "$build/CMakeCache.txt") # as the presets have it, from the sources on
quietly cmake -G Ninja -S "$source/tests/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$usr" \
  ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$(cd "$source" && realpath "$toolchain")"}
quietly cmake --build "$work/consumer"
for program in "$work"/example "$work"/consumer/{shared,static}-consumer; do lists_lo "$program"; done
lists_lo "$usr/bin/devfacts" net

mkdir "$work/a copy"
tar -C "$source" -c --exclude=./build --exclude=./.git . | tar -C "$work/a copy" -x
[ ! -e "$source/.git" ] || ln -s "$source/.git" "$work/a copy/.git"
mapfile -t settings < <(cached 'CMAKE_BUILD_TYPE|CMAKE_TOOLCHAIN_FILE|CMAKE_CXX?_FLAGS|DEVFACTS_(PLATFORM|DOCS|STACK_PROTECTOR|RELRO|FORTIFY)')
quietly cmake -G Ninja -S "$work/a copy" -B "$work/a build" "${settings[@]}"
quietly cmake --build "$work/a build"
pack "$work/a build" "$work/packages again"
for package in "$work"/packages/*.deb; do cmp "$package" "$work/packages again/${package##*/}"; done

# With the firmware's own libraries their headers come with these; without the manual there are no packages.
quietly cmake -G Ninja -S "$work/a copy" -B "$work/device" "${settings[@]}" -DDEVFACTS_PLATFORM=-lfirmware -DDEVFACTS_DOCS=OFF
! grep -q platform/log.h "$work/device/cmake_install.cmake" || fail "headers of the firmware's libraries are installed"
! cpack --config "$work/device/CPackConfig.cmake" -B "$work/none" >"$work/log" 2>&1 || fail "packages without the manual"
grep -q 'The packages hold the manual' "$work/log" || fail "no word of the manual: $(cat "$work/log")"
