#!/usr/bin/env python3
"""What a camera costs a program in Python, by the library or by OpenCV: one line of JSON, as peer.h tells.

usage: python.py ostrel|cv2 DEVICE WIDTH HEIGHT YUYV|NV12|MJPG RATE FRAMES

Each frame is an array of three bytes a pixel, of which one is looked at. The library takes the first camera that is
listed, whatever DEVICE is.
"""
import json
import resource
import sys

WARM_UP = 10  # frames


def by_library(_, width, height, layout, rate):
    import ostrel

    camera = ostrel.Camera(size=(width, height), timeout=20)
    if (layout, rate) not in {(mode.format, round(mode.fps)) for mode in camera.modes}:
        sys.exit("another camera")
    return camera.read


def by_opencv(device, width, height, layout, rate):
    import cv2

    cv2.setNumThreads(1)
    camera = cv2.VideoCapture(device, cv2.CAP_V4L2)
    camera.set(cv2.CAP_PROP_FOURCC, cv2.VideoWriter_fourcc(*layout))
    camera.set(cv2.CAP_PROP_FRAME_WIDTH, width)
    camera.set(cv2.CAP_PROP_FRAME_HEIGHT, height)
    camera.set(cv2.CAP_PROP_FPS, rate)

    def read():
        ok, frame = camera.read()
        if not ok or frame.shape != (height, width, 3):
            sys.exit("no frame of this size")
        return frame

    return read


def main():
    way, device, width, height, layout, rate, frames = sys.argv[1:]
    width, height, rate, frames = int(width), int(height), int(rate), int(frames)
    read = {"ostrel": by_library, "cv2": by_opencv}[way](device, width, height, layout, rate)
    for _ in range(WARM_UP):
        read()
    before = resource.getrusage(resource.RUSAGE_SELF)
    for _ in range(frames):
        middle = int(read()[height // 2, 0, 0])
    after = resource.getrusage(resource.RUSAGE_SELF)
    user, system = after.ru_utime - before.ru_utime, after.ru_stime - before.ru_stime
    result = {
        "kind": "peer",
        "contender": f"Python, {way}",
        "camera": f"{'MJPEG' if layout == 'MJPG' else layout} {width}x{height}",
        "frames": frames,
        "microseconds": (user + system) * 1e6 / frames,
        "user": user * 1e6 / frames,
        "system": system * 1e6 / frames,
        "page_faults": (after.ru_minflt - before.ru_minflt) / frames,
        "middle_byte": middle,
    }
    print(json.dumps(result))


main()
