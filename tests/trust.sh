#!/usr/bin/env bash
# docs/trust.md against the code: the operations from which die() can be reached, by the relocations of the archive's sections,
# and the texts of the sources. trust.sh BUILD_DIR SOURCE_DIR OBJDUMP
set -euo pipefail
cd "$2"
reaching() {
  "$2" -r "$1/libdevfacts.a" | awk '
    function name(text) { sub(/[-+]0x[0-9a-f]+$/, "", text); sub(/^\.text\.((unlikely|hot)\.)?/, "", text); return text }
    /^RELOCATION RECORDS/ { from = /\[\.text\./ ? $0 : ""; gsub(/^.*\[|\].*$/, "", from); from = name(from); next }
    from != "" && NF == 3 { callers[name($3)] = callers[name($3)] " " from }
    END {
      for (queue[last = 1] = "die"; ++at <= last;) {
        print queue[at]
        count = split(callers[queue[at]], each)
        for (i = 1; i <= count; ++i) if (!seen[each[i]]++) queue[++last] = each[i]
      }
    }' | LC_ALL=C sort -u | LC_ALL=C comm -12 - <(sed -n 's/^    \([A-Za-z_0-9]*\);$/\1/p' "$1/exports.map")
}
named() { sed -n '/^## What can end/,/^## Every/s/^| *\(.*\) |.*/\1/p' docs/trust.md | grep -o '`[a-z_0-9]*`' | tr -d '`' | LC_ALL=C sort -u; }
texts() {
  grep -hv scanf {core,net,wireless,ethernet,product,store,transport,i18n}/*.cpp |
    grep -oE '"([^"\\]|\\[^"])*\\n"|(die|puts|perror)\("[^"]*"' | grep -o '".*"'
}

failed=0
diff <(named) <(reaching "$1" "$3") || { echo "can end the process (>), and is said to (<)"; failed=1; }
while IFS= read -r text; do
  [[ $text = '"%s"' || $text = '"\n"' ]] || grep -qF -- "\`$text\`" docs/trust.md || { echo "not told of: $text"; failed=1; }
done < <(texts 2>/dev/null | sort -u)
[ "$(texts 2>/dev/null | wc -l)" -gt 20 ] || { echo "no texts found"; failed=1; }
exit $failed
