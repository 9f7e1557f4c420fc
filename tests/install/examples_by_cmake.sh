#!/bin/bash
# examples/ is a project of its own that finds the installed library with find_package; its tests run each program.
source "$(dirname "$0")/common.sh"

"$CMAKE" -S "$SOURCE/examples" -B "$work/build" -DCMAKE_PREFIX_PATH="$TREE" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >"$work/configure.log" ||
    { cat "$work/configure.log"; fail "configuring"; }
"$CMAKE" --build "$work/build"
[ -x "$work/build/brightness_test" ] || fail "brightness_test was not built; is GoogleTest missing?"
[ -x "$work/build/motion" ] || fail "motion was not built; is OpenCV's core missing?"
cd "$work/build"
ctest --output-on-failure >"$work/tests.log" 2>&1 || { cat "$work/tests.log"; fail "an example failed"; }
grep -c ' Passed ' "$work/tests.log"

# The video is one that other programs read: right header, whole frames.
bytes=$(stat -c %s video.y4m)
header=$(head -n 1 video.y4m | wc -c)
[ "$bytes" = $((header + 20 * (6 + 320 * 240 * 3 / 2))) ] || fail "video.y4m has $bytes bytes"
# A client that asks for another major version is told so.
! "$CMAKE" -S "$SOURCE/tests/install/other_version" -B "$work/other" -DCMAKE_PREFIX_PATH="$TREE" >"$work/other.log" 2>&1 ||
    fail "find_package(OstrelVideoUnix 2) was answered"
grep -q 'version: 1\.' "$work/other.log" || { cat "$work/other.log"; fail "not refused for its version"; }
# So is a project that has found the other Qt.
! "$CMAKE" -S "$SOURCE/tests/install/other_qt" -B "$work/other_qt" -DCMAKE_PREFIX_PATH="$TREE" -DOTHER_QT=Qt$((11 - QT)) \
    >"$work/other_qt.log" 2>&1 || fail "a project with Qt$((11 - QT)) was answered"
tr -s '\n ' ' ' <"$work/other_qt.log" | grep -q "was built with Qt$QT, and this project has found Qt$((11 - QT))" ||
    { cat "$work/other_qt.log"; fail "not refused for its Qt"; }
