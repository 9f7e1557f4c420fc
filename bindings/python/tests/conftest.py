import time

import numpy as np
import pytest

import ostrel

TIMEOUT = 30  # seconds for what takes milliseconds


@pytest.fixture
def bars():
    """A test camera of which no frame is scaled."""
    with ostrel.TestCamera(name="Moving bars", size=(640, 480), fps=100) as camera:
        yield camera


@pytest.fixture
def pushed():
    """A push camera, a capture of it, and a function that pushes a picture as soon as the capture has begun."""
    with ostrel.PushCamera() as source, ostrel.Camera(source, size=(64, 48), timeout=TIMEOUT) as camera:

        def push(value):
            picture = np.full((48, 64, 3), value, np.uint8)
            wait_for(lambda: source.push(picture))

        yield source, camera, push


def wait_for(condition):
    until = time.monotonic() + TIMEOUT
    while not condition():
        assert time.monotonic() < until, "it did not happen"
        time.sleep(0.002)
