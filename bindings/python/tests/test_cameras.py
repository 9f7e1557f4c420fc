"""Finding cameras, capturing from them, and what is raised."""
import asyncio
import gc
import os
import select
import threading
import time

import numpy as np
import pytest
from conftest import TIMEOUT, wait_for

import ostrel


def test_cameras_are_listed_while_they_are_attached():
    with ostrel.TestCamera(id="listed", name="Fürstenkamera") as camera:
        assert ostrel.CameraInfo("listed", "Fürstenkamera") in ostrel.cameras()
        camera.detach()
        assert "listed" not in [camera.id for camera in ostrel.cameras()]
        camera.attach()
    assert "listed" not in [camera.id for camera in ostrel.cameras()]


def test_camera_is_meant_by_a_part_of_its_name():
    with ostrel.TestCamera(id="meant", name="Desk Webcam 9000"), ostrel.TestCamera(id="other", name="Door"):
        assert ostrel.find("webcam 9").id == "meant"
        with ostrel.Camera("9000", timeout=TIMEOUT) as camera:
            assert (camera.id, camera.name) == ("meant", "Desk Webcam 9000")
            assert camera.read().shape == (480, 640, 3)


def test_no_such_camera_lists_those_there_are(bars):
    with pytest.raises(ostrel.NoSuchCamera, match="Moving bars"):
        ostrel.Camera("no such camera")
    assert issubclass(ostrel.NoSuchCamera, LookupError)


def test_nodes_are_listed():
    for node in ostrel.nodes():
        assert node.path and (node.id or node.reason)


def test_iteration_gives_each_frame_once_and_ends_with_close(bars):
    numbers = []
    camera = ostrel.Camera(bars, timeout=TIMEOUT)
    for frame in camera:
        numbers.append(frame.number)
        if len(numbers) == 5:
            camera.close()
    assert numbers == sorted(set(numbers)) and len(numbers) == 5
    assert camera.closed
    with pytest.raises(ostrel.Closed):
        camera.read()


def test_timeout_is_raised_in_time(pushed):
    _, camera, push = pushed
    start = time.monotonic()
    with pytest.raises(TimeoutError):
        camera.read(0.2)
    assert 0.2 <= time.monotonic() - start < TIMEOUT / 2
    push(1)
    assert camera.read(TIMEOUT).number == 1


def test_refused_camera_says_why(bars):
    bars.set_fault("open")
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        with pytest.raises(ostrel.Over) as refusal:
            camera.read()
        assert camera.state.refused and camera.state.refused in str(refusal.value)
        assert camera.state.why_no_frames == camera.state.refused


def test_unplugged_camera_ends_the_iteration_with_its_reason(bars):
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        camera.read()
        bars.detach()
        with pytest.raises(ostrel.Over, match="."):
            for _ in camera:
                pass


def test_state_has_the_figures(bars):
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        camera.read()
        state = camera.state
    assert state.known and state.open and state.delivered >= 1
    assert (state.granted_size, state.granted_rate, state.dropped) == ((640, 480), 100.0, {})


def test_native_frame_is_what_was_pushed(pushed):
    source, camera, _ = pushed
    picture = np.arange(8 * 6 * 4, dtype=np.uint8).reshape(6, 8, 4)
    wait_for(lambda: source.push(picture))
    native = camera.read_native()
    assert native.size == (8, 6) and native.number == 1
    assert native.data == picture.tobytes() and native.bytes_per_line == [32]


def test_pushed_pictures_may_be_slices_and_wrong_ones_are_refused(pushed):
    source, camera, push = pushed
    push(0)
    camera.read()
    picture = np.zeros((48, 128, 3), np.uint8)
    picture[:, ::2] = 9
    assert source.push(picture[:, ::2])
    assert (camera.read() == 9).all()
    for wrong in (np.zeros((2, 2, 2), np.uint8), np.zeros(5, np.uint8)):
        with pytest.raises(ValueError):
            source.push(wrong)
    with pytest.raises(ostrel.BadArgument):
        source.push(np.zeros((0, 5), np.uint8))


def test_file_camera_plays_a_video(tmp_path):
    path = tmp_path / "grey.y4m"
    path.write_bytes(b"YUV4MPEG2 W16 H8 F50:1 Cmono\n" + b"FRAME\n" + bytes([126]) * 128)
    with ostrel.FileCamera(path) as file, ostrel.Camera(file, (16, 8), channels=1, timeout=TIMEOUT) as camera:
        assert abs(int(camera.read()[4, 4]) - 128) <= 1  # limited range widened
    with pytest.raises(ostrel.Error, match="no-such"):
        ostrel.FileCamera(tmp_path / "no-such.y4m")


def test_frames_come_while_another_thread_computes(bars):
    """Waiting and converting let go of Python's lock."""
    counted = 0
    done = threading.Event()

    def count():
        nonlocal counted
        while not done.is_set():
            counted += 1

    thread = threading.Thread(target=count)
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        camera.read()
        thread.start()
        before = counted
        camera.read()
        camera.read()
        assert counted > before
        done.set()
        thread.join()


def test_each_frame_goes_to_one_of_several_threads(bars):
    numbers = []
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        threads = [
            threading.Thread(target=lambda: numbers.extend(camera.read().number for _ in range(5))) for _ in range(3)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    assert len(numbers) == len(set(numbers)) == 15


def test_close_by_another_thread_ends_the_waiting(pushed):
    _, camera, _ = pushed
    ended = []
    thread = threading.Thread(target=lambda: ended.extend(camera))
    thread.start()
    camera.close()
    thread.join(TIMEOUT)
    assert not thread.is_alive() and ended == []


def test_select_tells_of_a_frame(pushed):
    _, camera, push = pushed
    assert select.select([camera], [], [], 0)[0] == []
    push(1)
    assert select.select([camera], [], [], TIMEOUT)[0] == [camera]
    assert camera.poll().number == 1
    assert select.select([camera], [], [], 0)[0] == []


def test_asyncio_gets_frames_beside_other_tasks(bars):
    async def numbers_of(camera, count):
        numbers = []
        async for frame in camera:
            numbers.append(frame.number)
            if len(numbers) == count:
                return numbers

    async def both():
        with ostrel.Camera(bars, timeout=TIMEOUT) as one, ostrel.Camera(bars, (320, 240), timeout=TIMEOUT) as two:
            return await asyncio.gather(numbers_of(one, 4), numbers_of(two, 5))

    one, two = asyncio.run(both())
    assert one == sorted(set(one)) and len(one) == 4 and len(two) == 5


def test_asyncio_times_out(pushed):
    _, camera, push = pushed

    async def nothing_then_something():
        with pytest.raises(ostrel.Timeout):
            await camera.read_async(0.05)
        push(5)
        return (await camera.read_async()).number

    assert asyncio.run(nothing_then_something()) == 1


def resources():
    return len(os.listdir("/proc/self/fd")), len(os.listdir("/proc/self/task"))


def test_a_hundred_cameras_leave_no_descriptor_and_no_thread(bars):
    ostrel.Camera(bars, (64, 48), timeout=TIMEOUT).read()
    gc.collect()
    wait_for(lambda: not ostrel.state(bars.id).open)
    before = resources()
    for number in range(100):
        camera = ostrel.Camera(bars, (64, 48), timeout=TIMEOUT)
        if number % 10 == 0:
            camera.read()
        del camera
    wait_for(lambda: resources() <= before)


@pytest.mark.parametrize("arguments", [{"size": (0, 5)}, {"size": (640, -1)}, {"channels": 2}])
def test_values_that_cannot_be_used_are_value_errors(bars, arguments):
    with pytest.raises(ValueError):
        ostrel.Camera(bars, **arguments)
