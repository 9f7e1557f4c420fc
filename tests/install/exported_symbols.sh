#!/bin/bash
# exported_symbols.sh LIST - compares what the installed library exports with the list. After a wanted change:
#   nm -DC --defined-only LIBRARY | cut -d' ' -f3- | sort -u > tests/install/exported-symbols.txt
source "$(dirname "$0")/common.sh"
export LC_ALL=C

nm -DC --defined-only "$TREE/$LIBDIR/libostrelvideounix.so" | cut -d' ' -f3- | sort -u >"$work/exported"
diff -u "$1" "$work/exported" || fail "the library exports other names than $1"
