"""What is closed while others wait for it, and what becomes of its descriptor."""
import asyncio
import contextlib
import gc
import os
import threading
import time

import pytest
from conftest import TIMEOUT

import ostrel


@contextlib.contextmanager
def every_free_number_taken():
    """Pipes in which nothing ever comes, so that the number of a closed descriptor is one of theirs."""
    pipes = [os.pipe() for _ in range(20)]
    yield
    for pipe in pipes:
        os.close(pipe[0])
        os.close(pipe[1])


@pytest.fixture
def silent():
    """A camera that never has a frame."""
    with ostrel.PushCamera() as camera:
        yield camera


def waits(silent, bars):
    """Objects to wait by, each with its ways of waiting for ever."""
    yield lambda: ostrel.Camera(silent), [
        lambda camera: camera.read(),
        lambda camera: camera.read_native(),
        lambda camera: asyncio.run(camera.read_async()),
    ]
    yield ostrel.monitor, [
        lambda monitor: monitor.wait(),
        lambda monitor: asyncio.run(monitor.wait_async()),
    ]
    yield ostrel.Controls(bars.id).watch, [lambda watch: watch.wait()]


def ended_with(wait):
    """What a wait in another thread raises; the thread, and a list that will have it."""
    raised = []

    def run():
        try:
            wait()
        except Exception as error:
            raised.append(type(error))

    thread = threading.Thread(target=run, daemon=True)
    thread.start()
    return thread, raised


def test_closing_ends_every_wait_of_another_thread(silent, bars):
    for make, ways in waits(silent, bars):
        for way in ways:
            closed = make()
            thread, raised = ended_with(lambda: way(closed))
            time.sleep(0.05)  # into the wait; one that has not begun ends too
            closed.close()
            with every_free_number_taken():
                thread.join(TIMEOUT)
            assert raised == [ostrel.Closed], closed


def test_what_is_closed_does_not_wait_by_a_number_that_is_another_files_now(silent, bars):
    for make, ways in waits(silent, bars):
        for way in ways:
            closed = make()
            closed.fileno()
            closed.close()
            with every_free_number_taken():
                thread, raised = ended_with(lambda: way(closed))
                thread.join(TIMEOUT)
            assert raised == [ostrel.Closed], closed
            with pytest.raises(ostrel.Closed):
                closed.fileno()


def test_tasks_that_read_one_camera_each_get_frames(bars):
    async def read_by_three():
        with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
            return await asyncio.gather(*(camera.read_async() for _ in range(3)))

    assert len({frame.number for frame in asyncio.run(read_by_three())}) == 3


def test_task_that_closes_ends_the_iteration_of_another(silent):
    async def close_soon(iterated):
        asyncio.get_running_loop().call_later(0.05, iterated.close)
        return [item async for item in iterated]

    for iterated in (ostrel.Camera(silent), ostrel.monitor()):
        assert asyncio.run(asyncio.wait_for(close_soon(iterated), TIMEOUT)) == []


def test_camera_that_is_opened_where_a_closed_one_was_awaited_gets_its_frames(bars, silent):
    async def reopen():
        closed = ostrel.Camera(silent)
        waiting = asyncio.ensure_future(closed.read_async())
        await asyncio.sleep(0.05)
        closed.close()
        with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
            reading = asyncio.ensure_future(camera.read_async())
            with pytest.raises(ostrel.Closed):
                await asyncio.wait_for(waiting, TIMEOUT)
            return (await reading).number

    assert asyncio.run(reopen()) >= 1


def test_loop_that_is_closed_in_the_middle_of_a_wait_leaves_the_camera_as_it_is(bars, silent):
    loop = asyncio.new_event_loop()
    waiting, reading = ostrel.Camera(silent), ostrel.Camera(bars, timeout=TIMEOUT)
    task = loop.create_task(waiting.read_async())
    loop.run_until_complete(reading.read_async())
    loop.close()
    waiting.close()
    assert reading.read().number > 1
    task._log_destroy_pending = False  # which it says on standard error
    del task
    gc.collect()


def test_reading_with_no_time_left_takes_what_is_there(pushed):
    _, camera, push = pushed
    push(1)
    assert camera.read(0).number == 1
    push(2)
    assert asyncio.run(camera.read_async(0)).number == 2
