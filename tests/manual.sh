#!/usr/bin/env bash
# The manual: every exported name has a page, every page renders without a warning and has its line for whatis, and what headers
# say is on the pages to the byte. manual.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
pages=$1/docs/pages failed=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*"; failed=1; }
# A page as it is read, its white space as single blanks.
rendered() { groff -man -ww -Tascii -P-cbou "$@" 2>>"$work/warnings" | tr -s '[:space:]' ' '; }

for name in $(sed -n 's/^    \([A-Za-z_].*\);$/\1/p' "$1/exports.map"); do
  [ -e "$pages/$name.3devfacts" ] || fail "no page of $name"
done

# No page has a date: the same sources give the same bytes.
mandoc -Tlint -Wwarning "$pages"/* | grep -v 'missing date' && fail "mandoc is not content"
lexgrog "$pages"/* >"$work/whatis" || { fail "pages without a line for whatis:"; grep -v ': "' "$work/whatis"; }
rendered "$pages"/* >"$work/all"
[ ! -s "$work/warnings" ] || { fail "groff warns:"; cat "$work/warnings"; }

# What the headers have in backquotes: texts to the byte, code.
grep -ho '`[^`]*`' "$2"/include/devfacts/*.h | tr -d '`' | tr -s ' ' | sort -u >"$work/texts"
while IFS= read -r text; do grep -qF -e "$text" "$work/all" || fail "on no page: $text"; done <"$work/texts"

while IFS='|' read -r page text; do
  rendered "$pages/$page.3devfacts" | grep -qF -e "$text" || fail "$page does not say: $text"
done <<'TEXTS'
iterate|#include <devfacts/core.h>
iterate|cc program.c $(pkg-config --cflags --libs devfacts)
iterate|void iterate(const char *path, const char *prefix, iterate_callback callback, void *context);
iw_security_mode2str|RETURN VALUE
cpu_detect|CPU_NONE(3devfacts)
CPU_NONE|"adm5120"
CPU_NONE|"rt3352"
ifi_entry|list_link addrs;
eeprom_write|/var/cfg/.eeprom
devfacts|printf("%d: %s\n",
TEXTS
grep -q 'href="group__net.html"' "$1/docs/html/index.html" || fail "index.html does not lead to the network interfaces"
exit $failed
