#!/usr/bin/env python3
"""OpenCV draws on the newest frame: draw.py [CAMERA [FRAMES [PICTURE]]]. Without FRAMES it shows a window until q is
pressed; with them it needs no screen, and saves the last one as PICTURE."""
import sys
import time

import cv2

import ostrel

which = sys.argv[1] if len(sys.argv) > 1 else None
wanted = int(sys.argv[2]) if len(sys.argv) > 2 else None
pattern = None if ostrel.cameras() else ostrel.TestCamera()  # no camera here, so one without hardware

with ostrel.Camera(which, size=(1280, 720), timeout=10) as camera:
    for count, frame in enumerate(camera, 1):
        age = (time.monotonic() - frame.captured) * 1000
        cv2.rectangle(frame, (0, 0), (520, 60), (0, 0, 0), cv2.FILLED)
        cv2.putText(frame, f"{camera.name}: {age:.0f} ms old", (10, 40), cv2.FONT_HERSHEY_SIMPLEX, 1, (0, 255, 255), 2)
        if wanted is None:
            cv2.imshow(camera.name, frame)
            if cv2.waitKey(1) == ord("q"):
                break
        elif count == wanted:
            if len(sys.argv) > 3:
                cv2.imwrite(sys.argv[3], frame)
            print(f"{count} frames, the last one {frame.number}")
            break
