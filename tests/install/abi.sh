#!/bin/bash
# abi.sh BASELINE... - programs that were built with an earlier release run with the installed libraries: nothing of what
# the baselines hold is gone or has another shape. New names are welcome. Private types, and those of others, are left
# out: which Qt it was does not matter.
#
# A baseline is made at a release, in that release's source folder, and never changed afterwards. LIBRARY was built with
# debug information:
#   tests/install/abi.sh --dump LIBRARY.so >tests/install/LIBRARY-VERSION.abi.xz
set -euo pipefail

if [ "${1:-}" = --dump ]; then
    abidw --headers-dir include --drop-private-types --exported-interfaces-only --type-id-style hash \
        --no-show-locs --no-corpus-path --no-comp-dir-path "$2" | sed "/<abi-instr/s| path='$PWD/| path='|" | xz -9
    exit
fi

source "$(dirname "$0")/common.sh"
cat >"$work/private" <<'END'
[suppress_type]
  name_regexp = ^(const )?(Q|std::|__gnu_cxx::|NS|objc_|__CV|ostrel::.*Private)
END
[ $# -gt 0 ] || fail "no baseline"
for baseline in "$@"; do
    name=$(basename "$baseline" .abi.xz)
    xz -dc "$baseline" >"$work/$name.abi"
    abidiff --exported-interfaces-only --no-added-syms --suppressions "$work/private" "$work/$name.abi" \
        "$TREE/$LIBDIR/${name%-*}.so" || fail "it is not compatible with $name"
done
