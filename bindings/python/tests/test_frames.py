"""What a frame is, and whose memory it is in."""
import gc
import pickle
import struct
import time
import zlib

import numpy as np
import pytest
from conftest import TIMEOUT, wait_for

import ostrel
from ostrel._frames import Memory


@pytest.mark.parametrize("channels, shape", [(3, (480, 640, 3)), (4, (480, 640, 4)), (1, (480, 640))])
def test_frame_is_the_pattern_in_the_shape_that_was_asked_for(bars, channels, shape):
    with ostrel.Camera(bars, channels=channels, timeout=TIMEOUT) as camera:
        frame = camera.read()
    assert isinstance(frame, np.ndarray)
    assert (frame.shape, frame.dtype, frame.flags.c_contiguous) == (shape, np.uint8, True)
    if channels != 1:
        assert ostrel.read_pattern(frame)[0] == frame.sequence
        white, yellow = frame[200, 40], frame[200, 120]
        assert white[:3].tolist() == [255, 255, 255]
        assert yellow[0] < 40 and yellow[1] > 215 and yellow[2] > 215  # blue comes first
    if channels == 4:
        assert (frame[:, :, 3] == 255).all()


def test_facts_of_frames(bars):
    before = time.monotonic()
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        frames = [camera.read() for _ in range(4)]
    assert frames[0].number == 1 + frames[0].passed_over
    for last, frame in zip(frames, frames[1:]):
        assert frame.number == last.number + 1 + frame.passed_over
        assert before < last.captured < frame.captured < time.monotonic()
    assert (frames[0].native_format, frames[0].native_size) == ("BGRA", (640, 480))


def test_frames_that_nobody_read_are_passed_over(pushed):
    _, camera, push = pushed
    for value in (1, 2, 3):
        push(value)
    frame = camera.read()
    assert (frame[0, 0, 0], frame.number, frame.passed_over) == (3, 3, 2)
    assert camera.poll() is None


def test_held_frames_stay_what_they_were(pushed):
    _, camera, push = pushed
    held = []
    for value in range(20):
        push(value)
        frame = camera.read()
        # Every third goes at once; of others only a view is kept, which keeps the memory.
        if value % 3:
            held.append((value, frame if value % 2 else frame[10:20, ::2]))
        del frame
    camera.close()
    gc.collect()
    for value, frame in held:
        assert (np.asarray(frame) == value).all()


def test_memory_is_used_again_once_nobody_looks_into_it():
    memory = Memory((48, 64))
    loan = memory.borrow()
    array = np.ndarray((48, 64), "u1", loan)
    view = array[3:5]
    address = array.ctypes.data
    del loan, array
    other = np.ndarray((48, 64), "u1", memory.borrow())
    assert other.ctypes.data != address  # the view is still there
    del view
    assert np.ndarray((48, 64), "u1", memory.borrow()).ctypes.data == address


def test_unused_memory_does_not_pile_up():
    memory = Memory((48, 64))
    loans = [memory.borrow() for _ in range(50)]
    del loans
    assert len(memory._unused) == Memory.KEPT and not memory._used


def test_views_and_copies_know_the_facts_and_results_are_plain_arrays(pushed):
    _, camera, push = pushed
    push(7)
    frame = camera.read()
    assert frame[2:4].number == frame.copy().number == 1
    again = pickle.loads(pickle.dumps(frame))
    assert isinstance(again, ostrel.Frame) and again.captured == frame.captured and (again == frame).all()
    assert type(frame + 1) is np.ndarray and type(frame.mean(axis=2)) is np.ndarray
    assert frame.max() == 7 and not isinstance(frame.max(), np.ndarray)
    frame += 1
    assert isinstance(frame, ostrel.Frame) and frame[0, 0, 0] == 8


@pytest.mark.parametrize("channels, kind, pixel", [(1, 0, [50]), (3, 2, [30, 20, 10]), (4, 6, [30, 20, 10, 255])])
def test_saved_picture_is_a_png_of_the_frame(pushed, tmp_path, channels, kind, pixel):
    source, _, _ = pushed
    frames = []
    with ostrel.Camera(source, size=(64, 48), channels=channels) as camera:
        picture = np.empty((48, 64, 3), np.uint8)
        picture[:] = [50, 50, 50] if channels == 1 else [10, 20, 30]

        def frame_came():
            source.push(picture)
            frames.append(camera.poll())
            return frames[-1] is not None

        wait_for(frame_came)
    frames[-1].save(tmp_path / "frame.png")
    data = (tmp_path / "frame.png").read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n" and struct.unpack(">IIBB", data[16:26]) == (64, 48, 8, kind)
    size = struct.unpack(">I", data[33:37])[0]
    rows = zlib.decompress(data[41 : 41 + size])
    assert len(rows) == 48 * (1 + 64 * len(pixel))
    assert rows[0] == 0 and list(rows[1 : 1 + len(pixel)]) == pixel
