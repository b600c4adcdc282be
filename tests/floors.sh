#!/usr/bin/env bash
# script/floors accepts what points down, and names each include that does not: floors.sh SCRIPT
set -euo pipefail
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree"/{core,wireless}
printf '#include <devfacts/product.h>\n#include "core/owner.h"\n' >"$tree/wireless/limits.cpp"
"$1" "$tree"
printf '#include "product/product_file.h"\n#include <devfacts/net.h>\n' >>"$tree/wireless/limits.cpp"
printf '#include "wireless/query.h"\n' >"$tree/core/xml.h"
if "$1" "$tree" >"$tree/found"; then exit 1; fi
diff "$tree/found" - <<END
core/xml.h:1: core may not include "wireless/"
wireless/limits.cpp:3: wireless may not include "product/"
wireless/limits.cpp:4: wireless may not include <devfacts/net.h>
END
