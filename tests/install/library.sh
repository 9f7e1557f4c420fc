#!/bin/bash
# The name that programs record, the links to it, and what protects the library at run time.
source "$(dirname "$0")/common.sh"
library=$TREE/$LIBDIR/libostrelvideounix.so

readelf -d "$library" >"$work/dynamic"
grep -q 'SONAME.*\[libostrelvideounix\.so\.1\]' "$work/dynamic" || fail "no SONAME libostrelvideounix.so.1"
[ "$(readlink "$library")" = libostrelvideounix.so.1 ] || fail "libostrelvideounix.so does not point to .so.1"
version=$(head -n 1 "$SOURCE/VERSION")
[ "$(readlink "$library.1")" = "libostrelvideounix.so.$version" ] || fail ".so.1 does not point to .so.$version"
grep NEEDED "$work/dynamic" | sed 's/.*\[\(.*\)\]/\1/; s/\.so.*//' |
    grep -vxE "libQt[56]Core|libyuv|libjpeg|libudev|libobjc|libstdc\+\+|libm|libgcc_s|libc|libpthread|ld-linux.*" >"$work/others" || true
[ "$(pkg-config --variable=foundation ostrelvideounix)" = own ] || sed -i '/^libgnustep-base$/d' "$work/others"
[ ! -s "$work/others" ] || fail "the library needs further libraries: $(paste -sd ' ' "$work/others")"
grep -q 'NODELETE' "$work/dynamic" || fail "the library can be unloaded, which Objective-C classes cannot"
grep -q 'BIND_NOW\|FLAGS.*NOW' "$work/dynamic" || fail "symbols are bound late (BIND_NOW is missing)"
readelf -lW "$library" >"$work/segments"
readelf --dyn-syms -W "$library" >"$work/symbols"
grep -q GNU_RELRO "$work/segments" || fail "no read-only relocations (RELRO)"
grep -q 'GNU_STACK.*RWE' "$work/segments" && fail "an executable stack"
grep -q '__stack_chk_fail' "$work/symbols" || fail "no stack protector"
grep -q 'R.*PATH.*/home\|R.*PATH.*build' "$work/dynamic" && fail "a path of the build machine in the library"
exit 0
