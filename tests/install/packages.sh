#!/bin/bash
# What scripts/release makes: Debian packages without lintian errors that depend on what they need, whose files
# work together, and the source archive.
source "$(dirname "$0")/common.sh"
version=$(head -n 1 "$SOURCE/VERSION")
for program in lintian dpkg-shlibdeps dpkg-deb; do
    command -v $program >/dev/null || { echo "skipped: $program is not installed (scripts/setup package)"; exit 77; }
done

"$SOURCE/scripts/release" "$work/dist"

field() { dpkg-deb -f "$work/dist/$1"_*.deb "$2"; }
depends() { # depends PACKAGE ON...
    local package=$1 on
    shift
    for on in "$@"; do
        [[ ", $(field "$package" Depends)," =~ ,\ $on[\ ,] ]] || fail "$package does not depend on $on: $(field "$package" Depends)"
    done
}
depends libostrelvideounix1 libc6 'libstdc[+][+]6' 'libqt[56]core[56a-z0-9]*' libyuv0 libobjc4
depends libostrelvideounix-dev "libostrelvideounix1 \(= $version-1\)" '(qt6-base-dev|qtbase5-dev)'
for package in libostrelvideounix1 libostrelvideounix-dev ostrel-tools libostrelcamera1 libostrelcamera-dev python3-ostrel; do
    for relation in Depends Recommends Suggests; do
        [[ "$(field $package $relation)" != *gnustep* ]] || fail "$package: $relation has GNUstep: $(field $package $relation)"
    done
done
depends libostrelcamera1 libc6 "libostrelvideounix1 \(= $version-1\)"
depends libostrelcamera-dev "libostrelcamera1 \(= $version-1\)"
[[ "$(field libostrelcamera-dev Depends)" != *qt* ]] || fail "C programs need Qt: $(field libostrelcamera-dev Depends)"
depends python3-ostrel python3-numpy "libostrelcamera1 \(>= $version-1\)"
[ "$(field python3-ostrel Architecture)" = all ] || fail "python3-ostrel is for $(field python3-ostrel Architecture)"
depends ostrel-tools "libostrelvideounix1 \(= $version-1\)" 'libqt[56]gui[56a-z0-9]*'

for package in "$work"/dist/*.deb; do
    dpkg-deb -x "$package" "$work/root"
done
libdir=$(dirname "$(find "$work/root/usr/lib" -name 'libostrelvideounix.so.1')")
[ "$libdir" = "$work/root/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" ] || fail "the library is in $libdir"
for tool in "$work"/root/usr/bin/*; do
    readelf -d "$tool" | grep -q 'R.*PATH' && fail "$(basename "$tool") has a search path, which Debian forbids"
    output=$(LD_LIBRARY_PATH="$libdir" "$tool" --version)
    [[ "$output" == *"$version"* ]] || fail "$(basename "$tool") --version said: $output"
done
[ "$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --variable=libdir ostrelvideounix | xargs realpath)" = "$libdir" ] ||
    fail "pkg-config finds the library elsewhere"

said=$(LD_LIBRARY_PATH="$libdir" PYTHONPATH="$work/root/usr/lib/python3/dist-packages" /usr/bin/python3 -c '
import ostrel
with ostrel.TestCamera() as test, ostrel.Camera(test, timeout=30) as camera:
    print(ostrel.__version__, ostrel.version(), camera.read().shape)')
[ "$said" = "$version $version (480, 640, 3)" ] || fail "Python said: $said"
python3 -m zipfile -l "$work/dist/ostrel-$version-py3-none-any.whl" | grep -q '^ostrel/py.typed ' || fail "no wheel, or no types in it"

git -C "$SOURCE" rev-parse -q --verify HEAD >/dev/null 2>&1 || { echo "no git clone, so no source archive"; exit 0; }
tar -tzf "$work/dist/libostrelvideounix-$version.tar.gz" >"$work/archive"
grep -q "^libostrelvideounix-$version/CMakeLists.txt$" "$work/archive" || fail "the source archive has no CMakeLists.txt"
grep -q "/build/" "$work/archive" && fail "the source archive has build results"
exit 0
