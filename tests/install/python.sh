#!/bin/bash
# The examples in Python, with the installed package and libraries.
source "$(dirname "$0")/common.sh"
export PYTHONPATH=$TREE/lib/python3/dist-packages LD_LIBRARY_PATH=$TREE/$LIBDIR PYTHONDONTWRITEBYTECODE=1
cd "$work"

cat >other.py <<'END'
import sys

import ostrel

with ostrel.TestCamera(id="example-pattern", name="Moving bars", size=(1280, 720)):
    sys.argv = ["draw.py", "bars", "5", "drawn.png"]
    exec(open(sys.path[0] + "/draw.py").read())
END
cp "$SOURCE/examples/draw.py" .
/usr/bin/python3 other.py | grep '^5 frames, the last one ' || fail "draw.py"
# The yellow words are drawn on the frame.
/usr/bin/python3 -c '
import cv2
picture = cv2.imread("drawn.png")
assert picture.shape == (720, 1280, 3), picture.shape
assert (picture[:60, :520].reshape(-1, 3) == [0, 255, 255]).all(axis=1).sum() > 500' || fail "the drawn picture"

/usr/bin/python3 "$SOURCE/examples/two_cameras.py" | tee two.log
[ "$(grep -c '^Left: frame' two.log)" = 10 ] && [ "$(grep -c '^Right: frame' two.log)" = 5 ] && grep -q '^tick' two.log ||
    fail "two_cameras.py"
