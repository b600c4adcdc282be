#!/usr/bin/env bash
# The tool as a person meets it: tool.sh COMMAND... runs it.
set -uo pipefail
tool=("$@") failed=0 err=$(mktemp)
trap 'rm -f "$err"*' EXIT
expect() { # STATUS OUT-PATTERN ERR-PATTERN ARGUMENT...: patterns are of the whole text
  local status out wanted=$1 out_pattern=$2 err_pattern=$3
  shift 3
  out=$("${tool[@]}" "$@" 2>"$err") && status=0 || status=$?
  [[ $status = "$wanted" && $out == $out_pattern && $(grep -v Deficit "$err") == $err_pattern ]] && return
  printf 'devfacts %s: status %s\n%s\n%s\n' "$*" "$status" "$out" "$(cat "$err")"
  failed=1
}
expect 0 'usage: devfacts *net *' '' --help
expect 0 'devfacts [0-9]*.[0-9]*.[0-9]*' '' --version
expect 0 $'<netstats>\n <interface>\n  <name>lo</name>*</netstats>' '' net lo
expect 0 $'<netstats>\n*<name>lo</name>*</netstats>' '' net
expect 1 '' 'devfacts: no interface "lo0"' net lo0
expect 2 '' $'devfacts: no command given\nusage: *'
expect 2 '' $'devfacts: no such command: ney\nusage: *' ney
expect 2 '' $'devfacts: too many arguments: eth1\nusage: *' net lo eth1
expect 1 '' 'devfacts: no value of "a.b"' config a.b
expect 2 '' $'devfacts: too few arguments: config\nusage: *' config
expect 1 '' 'devfacts: "lo" is no wireless interface' wireless lo
expect 1 '' 'devfacts: the driver of "lo" does not tell about an Ethernet link' ethernet lo
ip link add pair0 type veth peer name pair1
[[ $1 == qemu-* ]] || # which hands no ethtool request on
  expect 0 $'<ethernet>\n  <name>pair0</name>\n  <speed>10000</speed>\n  <duplex>full</duplex>\n  <link>no</link>*' '' ethernet pair0
expect 0 $'<peers>\n</peers>' '' peers lo
expect 0 $'<radio>\n*<ieee_band>5GHz</ieee_band>\n*</radio>' '' radio lo
expect 1 $'<product>\n*<product_name>product</product_name>\n*</product>' 'devfacts: cannot load the product description' product
mount --bind "$(dirname "$0")/../examples/device/etc" /etc
expect 0 'ra1' '' product radio.1.master
expect 1 '' 'devfacts: no value of "radio.%d.master"' product radio.%d.master
expect 0 $'<product>\n*<radio>*</product>' '' product
commands=$("${tool[@]}" --help | sed -n '/^commands:/,$s/^  \([a-z]*\) .*/\1/p' | sort)
described=$(sed -n '/^\.SH COMMANDS/,/^\.SH OPTIONS/{/^\.TP/{n;s/^\.B[RI] \([a-z]*\) .*/\1/p}}' "$(dirname "$0")/../docs/devfacts.1" | sort)
[[ -n $commands && $commands == "$described" ]] || { echo "devfacts.1 describes" $described, "not" $commands; failed=1; }
expect 0 'Verbundene Stationen' '' translate "$(dirname "$0")/../examples/device/usr/share/po" status 'Connected stations'
"${tool[@]}" listen "$err.socket" >"$err.heard" &
until [ -S "$err.socket" ]; do sleep 0.1; done
expect 0 '' '' send "$err.socket" 'a message'
expect 1 '' 'devfacts: the message to "*" is not sent' send "$err.socket" ''
kill -TERM $! && wait $! && [[ $(<"$err.heard") == 'a message' && ! -e $err.socket ]] ||
  { echo "listen hears $(<"$err.heard"), status $?"; failed=1; }
expect 1 '' $'Socket write error: No such file or directory\n*is not sent' send "$err.socket" text
expect 1 '' 'devfacts: cannot make a socket at "*"' listen "$err.heard"
umount /etc
expect 1 '' 'devfacts: cannot read a language in /etc/lang' translate /po status text

mount -t tmpfs none /var && mkdir /var/cfg && cp "$(dirname "$0")/../examples/device/var/cfg/.eeprom" /var/cfg
cp /var/cfg/.eeprom /var/before && tail -c +4097 /var/before >/var/image
unchanged() { cmp /var/before /var/cfg/.eeprom || failed=1; }
expect 0 $'<records>\n*<id>15</id>\n  <size>2</size>\n  <element_size>2</element_size>\n  <bytes>0168</bytes>\n*</records>' '' records
for words in 'set 15 0168' 'set 15 0168 --writ' 'set 15 016 --write' 'set 15 0g --write' 'set 65535 00 --write' 'set 1x 00 --write' \
  'delete 15' 'import /var/image' 'get -1' 'get'; do
  expect 2 '' 'usage: devfacts records *' records $words
done
expect 2 '' 'devfacts: no such action: records put' records put
expect 1 '' 'devfacts: no record 99' records get 99
expect 1 '' 'devfacts: no record 99' records delete 99 --write
expect 1 '' 'devfacts: the store does not hold the new records: *' records set 99 "$(printf '%0123000d')" --write
unchanged
expect 0 '' '' records set 65534 00fFA9 --write
expect 0 '00ffa9' '' records get 65534
expect 0 '' '' records delete 1 --write
expect 0 '' '' records import /var/image --write
expect 0 '03' '' records get 1
expect 0 '' '' records delete 65534 --write
dd if=/dev/zero of=/var/cfg/.eeprom conv=notrunc bs=4 seek=1043 count=2 status=none # what a longer image left behind
unchanged
printf '\377' | dd of=/var/cfg/.eeprom conv=notrunc bs=1 seek=4120 status=none
cp /var/cfg/.eeprom /var/before
expect 1 $'<records>\n*<id>1</id>\n*</records>' 'devfacts: the store holds no whole image' records
expect 1 '' 'devfacts: the stored image is damaged; only import replaces it' records set 1 00 --write
unchanged
expect 1 '' $'*devfacts: "/var/before" holds no whole image*' records import /var/before --write
expect 0 '' '' records import /var/image --write
expect 0 '0168' '' records get 15
"${tool[@]}" net >/dev/full 2>/dev/null && { echo "a full disk goes unnoticed"; failed=1; }
exit $failed
