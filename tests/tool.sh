#!/usr/bin/env bash
# The tool as a person meets it: runs the commands of data/session, those after "$ ": what each prints, then its errors
# and its status if that is not 0, must be what is below it. tool.sh COMMAND... runs the tool.
set -uo pipefail
tool=("$@") source=$(cd "$(dirname "$0")/.." && pwd) work=$(mktemp -d)
data=$source/tests/data
trap 'rm -rf "$work"' EXIT
devfacts() {
  local status=0
  "${tool[@]}" "$@" 2>"$work/errors" || status=$?
  grep -v Deficit "$work/errors" >&2 # which is said of the messages that an emulator hands on
  return $status
}
emulated() { [[ ${tool[0]} == qemu-* ]]; }
cp -R "$source/examples/device" "$work/device" && cd "$work" || exit
while IFS= read -r line; do
  case $line in
    '$ '*) echo "$line"; eval "${line#??}" 2>&1 </dev/null || echo "[$?]" ;;
    '' | '#'*) echo "$line" ;;
  esac
done <"$data/session" >answers
diff "$data/session" answers
