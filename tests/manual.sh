#!/usr/bin/env bash
# The manual: every exported name has a page, every page renders without a warning and has its line for whatis, and what headers
# say is on the pages to the byte. manual.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
pages=$1/docs/pages failed=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "$*"; failed=1; }
# Pages as they are read, their white space as single blanks.
rendered() { groff -man -ww -Tascii -P-cbou "$@" 2>>"$work/warnings" | tr -s '[:space:]' ' '; }
says() { rendered "$1" | grep -qF -e "$2" || fail "${1##*/} does not say: $2"; }

for name in $(sed -n 's/^    \([A-Za-z_].*\);$/\1/p' "$1/exports.map"); do
  [ -e "$pages/$name.3devfacts" ] || fail "no page of $name"
done

# No page has a date: the same sources give the same bytes.
mandoc -Tlint -Wwarning "$pages"/* | grep -v 'missing date' && fail "mandoc is not content"
lexgrog "$pages"/* >"$work/whatis" || { fail "pages without a line for whatis:"; grep -v ': "' "$work/whatis"; }
rendered "$pages"/* >"$work/all"

# The messages and formats of the headers, and what they have in backquotes.
sed 's|^ \*/\{0,1\} \{0,1\}||' "$2"/{include/devfacts,platform}/*.h | tr -s '[:space:]' ' ' >"$work/headers"
{ grep -oE '"[^"]*"' "$work/headers" | grep '[%\\]'; grep -oE '`[^`]*`' "$work/headers" | tr -d '`'; } | sort -u >"$work/texts"
[ "$(grep -c '%s' "$work/texts")" -gt 9 ] || fail "the headers' messages are not found"
while IFS= read -r text; do grep -qF -e "$text" "$work/all" || fail "on no page: $text"; done <"$work/texts"

# What troff and Doxygen take for theirs.
cat >"$work/traps.h" <<'HEADER'
/** @mainpage Traps */
/** @defgroup traps Traps
 * Holds for all traps.
 *
 * 'Twas in a section.
 * @{ */
/** Begins a line.
 *
 * 'apostrophe' begins this paragraph.
 *
 * .dot begins this one, each %s is there, and "%s\n", and `a  b it's. '%s' -- \n ::x #if @p <b> &amp; \fB`.
 * @code
 * .hidden % 'x';
 *
 *   printf("%s\n");
 * @endcode
 * @param value "text\n"
 * @return 'quoted' */
int trap(int value);
/** @} */
HEADER
sed -E "s|^(OUTPUT_DIRECTORY *=).*|\1 \"$work\"|; s|^(INPUT *=).*|\1 \"$work/traps.h\"|; s|^(GENERATE_HTML *=).*|\1 NO|" "$1/docs/Doxyfile" | doxygen -
python3 -B "$2/cmake/manual/pages.py" "$work/xml" "$work/traps" 0
says "$work/traps/devfacts_traps.3devfacts" "Holds for all traps. 'Twas in a section. trap(3devfacts) begins a line"
[ "$(groff -man -Tascii -P-cbou "$work/traps/trap.3devfacts" | grep -cE '^ +printf|a  b')" -eq 2 ] || fail "blanks are lost"
while IFS= read -r text; do says "$work/traps/trap.3devfacts" "$text"; done <<'TEXTS'
int trap(int value); cc program.c $(pkg-config --cflags --libs devfacts) DESCRIPTION Begins a line. 'apostrophe' begins this paragraph. .dot begins this one, each %s is there, and "%s\n", and
and a b it's. '%s' -- \n ::x #if @p <b> &amp; \fB. .hidden % 'x'; printf("%s\n");
ARGUMENTS value "text\n" RETURN VALUE 'quoted' SEE
TEXTS

while IFS='|' read -r page text; do says "$pages/$page.3devfacts" "$text"; done <<'TEXTS'
iw_security_mode2str|RETURN VALUE "off", "restricted" or "open"
cpu_detect|CPU_NONE(3devfacts)
CPU_RT3352|CPU_RT3352 = 11 "rt3352"
ifi_entry|list_link addrs;
eeprom_write|/var/cfg/.eeprom
TEXTS
[ ! -s "$work/warnings" ] || { fail "groff warns:"; cat "$work/warnings"; }
grep -q 'href="group__net.html"' "$1/docs/html/index.html" || fail "index.html does not lead to the network interfaces"
exit $failed
