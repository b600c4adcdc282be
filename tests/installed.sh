#!/usr/bin/env bash
# Installs a build, moves it into a path with blanks, and uses it from there: the C example by pkg-config, shared and static,
# a C++ project by find_package, the tool. installed.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root="$work/a root"
cmake --install "$1" --prefix "$work/first" >/dev/null
mv "$work/first" "$root"
pc=$(dirname "$(find "$root" -name devfacts.pc)")

for kind in shared static; do
  eval "flags=($(PKG_CONFIG_PATH=$pc pkg-config --$kind --cflags --libs devfacts))"
  [ $kind = shared ] || flags+=(-static)
  cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$2/examples/interfaces.c" "${flags[@]}" -o "$work/$kind-example"
done
cmake -G Ninja -S "$2/tests/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$root" >/dev/null
cmake --build "$work/consumer" >/dev/null

lists_lo() { "$@" | grep -qxF '  <name>lo</name>' || { echo "$*: does not list lo"; exit 1; }; }
lists_lo "$work/consumer/shared-consumer"
lists_lo "$work/consumer/static-consumer"
lists_lo "$root/bin/devfacts" net
for kind in shared static; do
  LD_LIBRARY_PATH=$(dirname "$pc") "$work/$kind-example" | grep -q '^1: lo' || { echo "the $kind example does not list lo"; exit 1; }
done
