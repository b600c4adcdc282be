#!/usr/bin/env bash
# instructions.sh FOLDER: what the works in the folder cost the device's processor, against the limits in data/instructions.
# Fails if one is exceeded by more than 3 %, or if a work or a limit has no counterpart.
set -euo pipefail
cd "$(dirname "$0")/.."
bench/device/count "$1" | awk '
  NR == FNR { limit[$1] = $2; next }
  $2 != "devfacts" { next }
  !($1 in limit) { print $1 ": has no limit"; failed = 1; next }
  { counted[$1] = 1 }
  $3 > limit[$1] * 1.03 { print $1 ": " $3 " instructions, the limit is " limit[$1]; failed = 1 }
  END {
    for (work in limit) if (!(work in counted)) { print work ": was not counted"; failed = 1 }
    exit failed
  }' tests/data/instructions -
