"""Modes, controls and details, on the test camera; and the monitor."""
import asyncio
import threading

import pytest
from conftest import TIMEOUT

import ostrel


def test_modes_are_listed_and_one_of_them_is_used(bars):
    modes = ostrel.modes(bars.id)
    assert modes[0].size == (640, 480) and modes[0].fps == 100 and modes[0].has_picture
    wish = ostrel.Mode(size=(1280, 720), fps=30)
    assert any((mode.size, mode.fps) == (wish.size, wish.fps) for mode in modes)
    with ostrel.Camera(bars, (320, 240), mode=wish, timeout=TIMEOUT) as camera:
        frame = camera.read()
        assert frame.native_size == (1280, 720) and frame.shape == (240, 320, 3)
        assert camera.state.granted_rate == 30 and camera.modes == modes
    assert ostrel.requested_mode(bars.id).size == (1280, 720)
    ostrel.request_mode(bars.id, None)
    assert ostrel.requested_mode(bars.id) == ostrel.Mode(has_picture=ostrel.requested_mode(bars.id).has_picture)


def test_rates_that_are_no_whole_numbers_can_be_wished(bars):
    ostrel.request_mode(bars.id, ostrel.Mode(fps=29.97))  # of 30, within one percent
    assert abs(ostrel.requested_mode(bars.id).fps - 29.97) < 0.001
    ostrel.request_mode(bars.id, None)


def test_modes_that_nobody_offers_are_refused(bars):
    with pytest.raises(ostrel.Error, match="."):
        ostrel.Camera(bars, mode=ostrel.Mode(format="H264"))


def test_details(bars):
    details = ostrel.details(bars.id)
    assert (details.kind, details.node) == ("virtual", "")
    with pytest.raises(ostrel.NoSuchCamera):
        ostrel.details("no such camera")


def test_controls_are_read_and_set_by_name(bars):
    with ostrel.Camera(bars, timeout=TIMEOUT) as camera:
        controls = camera.controls
        brightness = controls.info("brightness")
        assert brightness.type == "integer" and brightness.minimum < brightness.default < brightness.maximum
        assert controls["brightness"] == controls["Brightness"] == brightness.value
        controls["brightness"] = brightness.minimum
        assert controls["brightness"] == brightness.minimum
        controls.set(brightness=brightness.default)
        assert controls["brightness"] == brightness.default
        assert "brightness" in controls and len(controls) == len(list(controls)) > 0


def test_controls_that_there_are_not_and_values_that_they_do_not_take(bars):
    controls = ostrel.Controls(bars.id)
    with pytest.raises(KeyError, match="brightness"):
        controls["fog"]
    with pytest.raises(KeyError, match="brightness"):
        controls["fog"] = 1
    with pytest.raises(ostrel.Error, match="."):
        controls["brightness"] = controls.info("brightness").maximum + 1
    with pytest.raises(ValueError):
        controls["brightness"] = "bright"


def test_watch_tells_of_a_control_that_somebody_else_sets(bars):
    controls = ostrel.Controls(bars.id)
    value = controls.info("brightness").minimum
    with controls.watch() as watch:
        assert watch.take() == []
        thread = threading.Thread(target=lambda: controls.set(brightness=value))
        thread.start()
        changed = watch.wait(TIMEOUT)
        thread.join()
    assert [(control.key, control.value) for control in changed] == [("brightness", value)]


def test_monitor_tells_what_came_and_went():
    with ostrel.monitor() as monitor:
        before = monitor.cameras
        with ostrel.TestCamera(id="visitor", name="Visiting camera"):
            assert monitor.wait(TIMEOUT) == [ostrel.Change("added", "visitor", "Visiting camera")]
            assert ostrel.CameraInfo("visitor", "Visiting camera") in monitor.cameras
        assert next(monitor) == ostrel.Change("removed", "visitor", "Visiting camera")
        assert monitor.cameras == before and monitor.take() == []
        with pytest.raises(ostrel.Timeout):
            monitor.wait(0.05)


def test_iteration_over_a_monitor_ends_with_close():
    monitor = ostrel.monitor()
    with ostrel.TestCamera(id="visitor"):
        for change in monitor:
            assert change.id == "visitor"
            monitor.close()
    assert list(monitor) == []


def test_monitor_for_asyncio():
    async def come_and_go():
        kinds = []
        with ostrel.monitor() as monitor:
            camera = ostrel.TestCamera(id="visitor")
            async for change in monitor:
                kinds.append(change.kind)
                if change.kind == "removed":
                    return kinds
                camera.close()

    assert asyncio.run(asyncio.wait_for(come_and_go(), TIMEOUT)) == ["added", "removed"]
