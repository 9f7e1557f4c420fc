"""python_test.py vivid | webcam FILE - what the Python package makes of one of the kernel's cameras."""
import pathlib
import sys

import ostrel


def check_frames(camera):
    last = None
    for frame in camera:
        assert frame.shape == (480, 640, 3), frame.shape
        if last is not None:
            assert frame.number == last.number + 1 + frame.passed_over
            assert frame.captured > last.captured
            if frame.number > 5:
                return frame
        last = frame


def vivid():
    camera = ostrel.cameras()[0]
    assert "vivid" in camera.name, camera
    node = next(node for node in ostrel.nodes() if node.id == camera.id)
    assert ostrel.find(node.path) == camera
    with ostrel.Camera(node.path, timeout=120) as capture:
        frame = check_frames(capture)
        # Eight bars of 75 %: white, yellow, cyan, green, magenta, red, blue, black; B, G, R.
        bars = [frame[240, 40 + 80 * bar].astype(int) for bar in range(8)]
        wanted = [(1, 1, 1), (0, 1, 1), (1, 1, 0), (0, 1, 0), (1, 0, 1), (0, 0, 1), (1, 0, 0), (0, 0, 0)]
        for bar, colour in zip(bars, wanted):
            assert all(abs(seen - 191 * there) < 12 for seen, there in zip(bar, colour)), bars
        state = capture.state
        assert state.captured_by == f"V4L2 ({node.path})" and state.delivered >= 5, state
    with ostrel.Camera(camera, channels=1, timeout=120) as capture:
        assert capture.read().shape == (480, 640)


def webcam(captured):
    with ostrel.Camera(ostrel.cameras()[0], timeout=120) as capture:
        assert capture.id.startswith("usb-"), capture
        frame = check_frames(capture)
        native = capture.read_native()
        assert native.format == frame.native_format in ("MJPG", "YUYV"), (native.format, frame.native_format)
        assert native.format != "MJPG" or native.data.startswith(b"\xff\xd8")
        pathlib.Path(captured).touch()
        try:
            for _ in capture:
                pass
        except ostrel.Over as reason:
            print(f"unplugged: {reason}")
        else:
            raise AssertionError("the loop ended without a reason")


{"vivid": vivid, "webcam": webcam}[sys.argv[1]](*sys.argv[2:])
print(f"ok: {sys.argv[1]}")
