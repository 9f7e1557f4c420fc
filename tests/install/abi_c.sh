#!/bin/bash
# abi_c.sh BASELINE... - programs in C, and every language that has the structs written down, go on with the installed C
# library: nothing of what the baselines hold is gone or has another shape. New calls are welcome.
#
# A baseline is made at a release, in the source folder, of a library that was built there, and never changed afterwards:
#   abidw --headers-dir include --drop-private-types --exported-interfaces-only --type-id-style hash --no-show-locs \
#       --no-corpus-path --no-comp-dir-path LIBRARY | sed "s| path='$PWD/| path='|" | xz -9 >abi-c-VERSION.xz
source "$(dirname "$0")/common.sh"
[ $# -gt 0 ] || fail "no baseline"
for baseline in "$@"; do
    name=$(basename "$baseline" .xz)
    xz -dc "$baseline" >"$work/$name.abi"
    abidiff --exported-interfaces-only --no-added-syms "$work/$name.abi" "$TREE/$LIBDIR/libostrelcamera.so" ||
        fail "it is not compatible with $name"
done
