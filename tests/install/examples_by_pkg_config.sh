#!/bin/bash
# The examples built with pkg-config and make alone.
source "$(dirname "$0")/common.sh"

[ "$(pkg-config --modversion ostrelvideounix)" = "$(head -n 1 "$SOURCE/VERSION")" ] || fail "wrong version"
[[ "$(pkg-config --cflags ostrelvideounix)" != *-std=* ]] || fail "the flags choose a C++ standard"
make -s -C "$SOURCE/examples" BUILD="$work" CXX="$CXX" CXXFLAGS="-O1 -Wall -Wextra -Werror -std=$standard"
export LD_LIBRARY_PATH="$TREE/$LIBDIR"
"$work/poll" || fail "poll"
"$work/notified" || fail "notified"
"$work/newest_frame" || fail "newest_frame"
"$work/capture_to_i420" "$work/video.y4m" 5 || fail "capture_to_i420"
"$work/watch_cameras" 1 | tee "$work/watch.log"
grep -q '^+ Visiting camera' "$work/watch.log" && grep -q '^- Visiting camera' "$work/watch.log" || fail "watch_cameras"
