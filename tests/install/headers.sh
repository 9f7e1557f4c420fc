#!/bin/bash
# Each public C++ header compiles alone, in the oldest language that the Qt version allows, with warnings as errors and
# under the Qt switches that strict clients set.
source "$(dirname "$0")/common.sh"
switches="-DQT_NO_KEYWORDS -DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_FOREACH -DQT_DISABLE_DEPRECATED_BEFORE=0x0$QT""0000"

for header in capture devices export processing virtual_camera; do
    echo "#include <ostrel/$header.h>" >"$work/$header.cpp"
    # -isystem for Qt: its warnings are not ours.
    flags=$(pkg-config --cflags "Qt${QT}Core" | sed 's/-I/-isystem /g')
    "$CXX" -std=$standard -fPIC -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Werror $switches \
        -I"$TREE/include" $flags -c -o "$work/$header.o" "$work/$header.cpp" || fail "ostrel/$header.h"
done
