#!/bin/bash
# c_library.sh LIST - the C library as C programs meet it: its SONAME, the names that it exports (those of LIST and no
# others), what it needs, and a header that a strict C99 compiler takes.
source "$(dirname "$0")/common.sh"
export LC_ALL=C
library=$TREE/$LIBDIR/libostrelcamera.so

readelf -d "$library" >"$work/dynamic"
grep -q 'SONAME.*\[libostrelcamera\.so\.1\]' "$work/dynamic" || fail "no SONAME libostrelcamera.so.1"
version=$(head -n 1 "$SOURCE/VERSION")
[ "$(readlink "$library.1")" = "libostrelcamera.so.$version" ] || fail ".so.1 does not point to .so.$version"
grep -q 'R.*PATH.*/home\|R.*PATH.*build' "$work/dynamic" && fail "a path of the build machine in the library"
[ "$(pkg-config --modversion ostrelcamera)" = "$version" ] || fail "ostrelcamera.pc has another version"
[[ "$(pkg-config --cflags --libs ostrelcamera)" != *Qt* ]] || fail "C programs are compiled with Qt"

nm -D --defined-only "$library" | cut -d' ' -f3 | sort -u >"$work/exported"
diff -u "$1" "$work/exported" || fail "the library exports other names than $1"

echo '#include <ostrel/camera_c.h>' >"$work/header.c"
gcc -std=c99 -pedantic -Wall -Wextra -Werror -I"$TREE/include" -fsyntax-only "$work/header.c" || fail "as C99"
cp "$work/header.c" "$work/header.cpp"
g++ -std=c++98 -pedantic -Wall -Wextra -Werror -Wno-long-long -I"$TREE/include" -fsyntax-only "$work/header.cpp" ||
    fail "as C++98"
