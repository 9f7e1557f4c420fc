#!/bin/bash
# exported_symbols.sh LIST... - compares what the installed library exports with the lists. After a wanted change:
#   nm -DC --defined-only LIBRARY | cut -d' ' -f3- | sort -u
# says what tests/install/exported-symbols.txt is to have, with the names of Foundation in a list of their own.
source "$(dirname "$0")/common.sh"
export LC_ALL=C

nm -DC --defined-only "$TREE/$LIBDIR/libostrelvideounix.so" | cut -d' ' -f3- | sort -u >"$work/exported"
sort -u "$@" | diff -u - "$work/exported" || fail "the library exports other names than $*"
