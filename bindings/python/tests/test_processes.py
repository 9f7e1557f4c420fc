"""Signals, forks and the end of a program, in programs of their own."""
import os
import signal
import subprocess
import sys
import time

from conftest import TIMEOUT


def run(program):
    return subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def test_ctrl_c_ends_a_waiting_loop_at_once():
    program = run(
        "import ostrel\n"
        "with ostrel.PushCamera() as source, ostrel.Camera(source) as camera:\n"
        "    print('waiting', flush=True)\n"
        "    for frame in camera: pass\n"
    )
    assert program.stdout.readline() == "waiting\n"
    time.sleep(0.3)  # into the wait; a signal before it would end the program too
    sent = time.monotonic()
    program.send_signal(signal.SIGINT)
    _, errors = program.communicate(timeout=TIMEOUT)
    assert time.monotonic() - sent < 2
    assert program.returncode == -signal.SIGINT and "KeyboardInterrupt" in errors


def test_ctrl_c_ends_the_waiting_of_a_monitor_at_once():
    program = run(
        "import ostrel\n"
        "with ostrel.monitor() as monitor:\n"
        "    print('waiting', flush=True)\n"
        "    for change in monitor: pass\n"
    )
    assert program.stdout.readline() == "waiting\n"
    time.sleep(0.3)
    sent = time.monotonic()
    program.send_signal(signal.SIGINT)
    program.communicate(timeout=TIMEOUT)
    assert time.monotonic() - sent < 2 and program.returncode == -signal.SIGINT


def test_calls_after_a_fork_are_refused_and_the_parent_goes_on():
    program = run(
        "import os, ostrel\n"
        "source = ostrel.TestCamera()\n"
        "camera = ostrel.Camera(source, timeout=30)\n"
        "frame = camera.read()\n"
        "child = os.fork()\n"
        "if child == 0:\n"
        "    for call in (camera.poll, ostrel.cameras, lambda: ostrel.Camera(source), lambda: source.detach()):\n"
        "        try: call()\n"
        "        except ostrel.Forked: pass\n"
        "        else: os._exit(1)\n"
        "    raise SystemExit(0 if frame.any() else 2)\n"
        "print(os.waitpid(child, 0)[1], camera.read().number > 1)\n"
    )
    assert program.communicate(timeout=TIMEOUT) == ("0 True\n", "")


def test_a_child_of_a_process_that_only_imported_may_capture():
    program = run(
        "import os, ostrel\n"
        "child = os.fork()\n"
        "if child == 0:\n"
        "    with ostrel.TestCamera() as source, ostrel.Camera(source, timeout=30) as camera:\n"
        "        os._exit(0 if camera.read().any() else 1)\n"
        "print(os.waitpid(child, 0)[1])\n"
    )
    assert program.communicate(timeout=TIMEOUT) == ("0\n", "")


def test_a_program_may_end_in_the_middle_and_writes_nothing():
    program = run(
        "import ostrel, threading\n"
        "source = ostrel.TestCamera(fps=500)\n"
        "camera = ostrel.Camera(source)\n"
        "threading.Thread(target=lambda: [None for _ in camera], daemon=True).start()\n"
        "held = camera.read()\n"
    )
    assert program.communicate(timeout=TIMEOUT) == ("", "")
    assert program.returncode == 0


def test_import_says_what_is_missing():
    environment = {**os.environ, "LD_LIBRARY_PATH": "/nonexistent"}
    done = subprocess.run(
        [sys.executable, "-c", "import ctypes.util, ostrel"], env=environment, capture_output=True, text=True
    )
    if done.returncode != 0:  # it is not installed on this system
        assert "ImportError: libostrelcamera.so.1 is not installed (Debian: libostrelcamera1)" in done.stderr
