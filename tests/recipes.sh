#!/usr/bin/env bash
# Builds each recipe by the line in its head, against an installed tree, and runs it. recipes.sh BUILD_DIR SOURCE_DIR CC
# [EMULATOR...], in namespaces of its own.
set -euo pipefail
build=$1 source=$2 compiler=$3
shift 3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/installed" >/dev/null
library=$(dirname "$(find "$work/installed" -name 'libdevfacts.so')")
export PKG_CONFIG_PATH=$library/pkgconfig
emulator=("$@")
start() { LD_LIBRARY_PATH=$library exec "${emulator[@]}" "$@"; } # with & after it
run() { (start "$@"); }
cp "$source"/examples/*.[ch] "$work" && cd "$work"
for recipe in *.c; do
  line=$(sed -nE 's|^[/ ]\*.*(cc .* \$\(pkg-config.*\)).*|\1|p' "$recipe")
  eval "${line/cc/$compiler -Werror}" || { echo "$recipe does not build"; exit 1; }
  [ "$(wc -l <"$recipe")" -le 120 ] || { echo "$recipe is too long to be read in passing"; exit 1; }
done
failed() { echo "$*"; exit 1; }
prints() { grep -q -- "$2" "$1" || failed "$1: no line \"$2\":" "$(cat "$1")"; }
until_prints() { for _ in $(seq 100); do ! grep -qs -- "$2" "$1" || return 0; sleep 0.1; done; prints "$1" "$2"; }

# A document a second while interfaces come and go; without descriptors there is none, and the program goes on.
ip link add 'a<b&c' type veth peer name pair
start ./statusd 1 status.xml 6 2>statusd.errors &
until_prints status.xml '<name>a&lt;b&amp;c</name>'
ip link del pair
prlimit --nofile=3: --pid $!
until_prints statusd.errors 'no document this time'
prlimit --nofile=64: --pid $!
wait $! || failed "statusd did not recover: $(cat statusd.errors)"
xmllint --noout status.xml
! grep -q '<name>a' status.xml || failed 'statusd still has an interface that is gone'

# Changes as they come; a child that the kernel's changes overrun is replaced by another one.
start ./monitor 1 >changes 2>monitor.errors &
monitor=$!
until_prints changes '^+ lo '
ip link add first type veth peer name second
until_prints changes '^+ first down'
ip link set first up
until_prints changes '^= first up'
reader=$(cat /proc/$monitor/task/$monitor/children)
kill -STOP $reader
for i in $(seq 150); do echo "link add v$i type veth peer name w$i"; done | ip -batch -
ip link del second
kill -CONT $reader
until_prints monitor.errors 'changes were lost'
until_prints changes '^+ w150 '
kill $monitor

# Messages of both types, one of none, and a receiver that is gone.
start ./receiver socket 1 >messages &
receiver=$!
until [ -S socket ]; do sleep 0.1; done
run ./sender socket signal 02:0c:43:26:60:10 -57
run ./sender socket note "$(printf 'two\033 words')"
run "$work/installed/bin/devfacts" send socket xx
until_prints messages '^2 messages taken, 1 refused'
prints messages '^signal of 02:0C:43:26:60:10: -57 dBm'
prints messages '^note: two? words'
kill -TERM $receiver
wait $receiver
[ ! -e socket ] || failed 'the receiver left its socket'
! run ./sender socket note lost 2>/dev/null || failed 'a message to nobody counts as sent'
! run ./sender socket signal 02:0c 1 2>/dev/null || failed 'half an address is sent'

# Factory records: every mixture of sectors of the old store, of the new one, and erased ones.
mount -t tmpfs none /var
mkdir /var/cfg
store=/var/cfg/.eeprom copy=/var/cfg/.eeprom.copy
provision() { run ./provision "$@" 2>provision.errors; }
text() { printf "%0$2d" 0 | tr 0 "$1"; }
size() { od -An -tu4 --endian=big -j 4100 -N 4 "$1.store"; }
run "$work/installed/bin/devfacts" records set 3 01 --write
! provision verify || failed 'records without a checksum are good'
provision backup
provision set 5 "$(text a 700)"
provision set 9 "$(text b 600)"
provision verify
cp $store old.store && cp $copy old.copy
provision set 5 "$(text c 710)"
provision set 9 "$(text d 1200)"
cp $store new.store
! cmp -s old.store new.store || failed 'there is nothing to tear'
sectors=$((($(size new) + 511) / 512))
for ((i = 0; i < sectors; i++)); do
  for state in old new; do dd if=$state.store of=$state.$i bs=512 skip=$((8 + i)) count=1 status=none; done
  head -c 512 /dev/zero | tr '\0' '\377' >erased.$i
done
head -c 4096 old.store >head
tail -c +$((4097 + 512 * sectors)) old.store >tail
holds() { cmp -s -n $((4096 + $(size $1))) $store $1.store; }
for ((mixture = 0; mixture < 3 ** sectors; mixture++)); do
  parts=() rest=$mixture
  for ((i = 0; i < sectors; i++, rest /= 3)); do
    case $((rest % 3)) in 0) parts+=(old.$i) ;; 1) parts+=(new.$i) ;; 2) parts+=(erased.$i) ;; esac
  done
  cat head "${parts[@]}" tail >$store
  cp old.copy $copy
  torn=1
  for state in old new; do ! holds $state || torn=; done
  provision restore || failed "not restored: ${parts[*]}"
  [ -z "$torn" ] || holds old || failed "foreign records are good: ${parts[*]}"
  provision verify || failed "not whole after it was restored: ${parts[*]}"
done
echo "$mixture mixtures"
