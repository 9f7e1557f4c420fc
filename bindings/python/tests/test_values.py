"""Values that C has no room for: none is cut, and none is taken for another."""
import asyncio
import math
import pathlib

import numpy as np
import pytest
from conftest import TIMEOUT

import ostrel


@pytest.mark.parametrize("size", [(2**32 + 640, 480), (640, 2**31), (640, -(2**32) + 480), (10**30, 1)])
def test_sizes_that_wrap_are_refused(bars, size):
    with pytest.raises(ostrel.BadArgument):
        ostrel.Camera(bars, size)
    with pytest.raises(ostrel.BadArgument):
        ostrel.TestCamera(size=size)
    with pytest.raises(ostrel.BadArgument):
        ostrel.request_mode(bars.id, ostrel.Mode(size=size))


def test_sizes_may_be_numbers_of_numpy(bars):
    with ostrel.Camera(bars, np.array([640, 480]) // 2, timeout=TIMEOUT) as camera:
        assert camera.size == (320, 240) and camera.read().shape == (240, 320, 3)
    with pytest.raises(TypeError):
        ostrel.Camera(bars, (640.0, 480.0))


def test_values_of_controls_that_wrap_are_refused(bars):
    controls = ostrel.Controls(bars.id)
    before = controls["brightness"]
    with pytest.raises(ostrel.BadArgument):
        controls["brightness"] = 2**64 + before + 1
    assert controls["brightness"] == before


@pytest.mark.parametrize("fps", [-30, 1e-9, 1e12, math.inf, math.nan])
def test_rates_that_are_none_are_refused(bars, fps):
    with pytest.raises(ostrel.BadArgument):
        ostrel.request_mode(bars.id, ostrel.Mode(fps=fps))


def test_texts_with_a_zero_byte_are_refused(bars, tmp_path):
    for call in (
        lambda: ostrel.find(bars.id + "\0 and more"),
        lambda: ostrel.Camera(bars.id + "\0"),
        lambda: ostrel.state(bars.id + "\0"),
        lambda: ostrel.TestCamera(name="Anna\0Berta"),
        lambda: ostrel.TestCamera(id="anna\0berta"),
        lambda: ostrel.FileCamera(str(tmp_path / "clip.y4m") + "\0"),
    ):
        with pytest.raises(ostrel.BadArgument, match="zero byte"):
            call()


def test_what_is_no_text_is_refused_and_paths_are_texts(bars):
    for wrong in (0, "\ud800", 2.5):
        with pytest.raises(ValueError):
            ostrel.Camera(wrong)
    with pytest.raises(ostrel.NoSuchCamera, match="/dev/video99"):
        ostrel.Camera(pathlib.Path("/dev/video99"))


@pytest.mark.parametrize("timeout", [math.inf, 1e10, 10**30])
def test_timeouts_may_be_as_long_as_one_likes(bars, timeout):
    with ostrel.Camera(bars, timeout=timeout) as camera:
        assert camera.read().number < camera.read_native().number < asyncio.run(camera.read_async()).number


def test_timeout_that_is_no_number_is_refused(bars):
    with ostrel.Camera(bars) as camera, ostrel.monitor() as monitor:
        for wait in (camera.read, camera.read_native, monitor.wait):
            with pytest.raises(ostrel.BadArgument):
                wait(math.nan)


@pytest.mark.parametrize("wrong", [np.full((4, 4, 3), 0.5), np.full((4, 4), 300), [[1, 2], [3, 4]]])
def test_pictures_of_other_numbers_are_not_pushed(pushed, wrong):
    source, _, push = pushed
    push(0)
    with pytest.raises(ValueError, match="uint8"):
        source.push(wrong)


def test_parts_of_a_frame_that_are_no_picture_are_not_saved(pushed, tmp_path):
    _, camera, push = pushed
    push(7)
    frame = camera.read()
    for part in (frame[:0], frame[0, 0], frame[:, :, :2], frame.astype(float).view(ostrel.Frame)):
        with pytest.raises(ValueError, match="picture"):
            part.save(tmp_path / "part.png")
    for picture in (frame[::2, ::-3], frame[:, :, :1], frame[:, :, 0]):
        picture.save(tmp_path / "part.png")
