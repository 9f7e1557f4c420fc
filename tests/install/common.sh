# Sourced by the tests beside it. Their environment: TREE (installed tree), SOURCE, LIBDIR, QT (5 or 6), CMAKE, CXX.
set -euo pipefail
: "${TREE:?}" "${SOURCE:?}" "${LIBDIR:?}" "${QT:?}" "${CMAKE:?}" "${CXX:?}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

export PKG_CONFIG_PATH="$TREE/$LIBDIR/pkgconfig"
[ "$QT" = 5 ] && standard=c++11 || standard=c++17
