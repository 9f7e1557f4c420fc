#!/bin/bash
# Each public C++ header compiles alone, in the oldest language that the Qt version allows, with warnings as errors and
# under the Qt switches that strict clients set.
source "$(dirname "$0")/common.sh"
switches="-DQT_NO_KEYWORDS -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_FOREACH -DQT_DISABLE_DEPRECATED_BEFORE=0x0$QT""0000"

# -isystem for Qt: its warnings are not ours.
flags=$(pkg-config --cflags "Qt${QT}Core" | sed 's/-I/-isystem /g')
for file in "$TREE"/include/ostrel/*.h; do
    header=$(basename "$file" .h)
    [ "$header" != capture_session ] || continue # Objective-C++
    echo "#include <ostrel/$header.h>" >"$work/$header.cpp"
    "$CXX" -std=$standard -fPIC -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Werror $switches \
        -I"$TREE/include" $flags -fsyntax-only "$work/$header.cpp" || fail "ostrel/$header.h"
done
