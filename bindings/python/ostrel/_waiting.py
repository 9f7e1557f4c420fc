"""Waiting for a descriptor to become readable, in ways that Ctrl-C ends at once."""
from __future__ import annotations

import asyncio
import contextlib
import ctypes
import math
import os
import select
import time
import weakref
from typing import Optional, Set

from ._errors import BadArgument, Closed, Timeout
from ._library import Handle, call

SLICE = 0.1  # seconds, after which who waits looks whether another thread has closed the handle


class Deadline:
    def __init__(self, timeout: Optional[float]) -> None:
        self._until = math.inf if timeout is None else time.monotonic() + timeout
        if math.isnan(self._until):
            raise BadArgument("The timeout is not a number")

    def left(self) -> float:
        """Seconds, 0 when it is over."""
        return max(self._until - time.monotonic(), 0.0)


def _resolve(future: asyncio.Future[None]) -> None:
    if not future.done():
        future.set_result(None)


class Readable:
    """The descriptor of a handle: a copy, whose number is no other file's as long as somebody may wait by it."""

    def __init__(self, handle: Handle) -> None:
        self._handle = handle
        self._awaiting: Set[asyncio.Future[None]] = set()
        descriptor = ctypes.c_int32(-1)
        call("descriptor", handle.number, ctypes.byref(descriptor))
        self._copy = os.dup(descriptor.value)
        weakref.finalize(self, os.close, self._copy).atexit = False

    @property
    def descriptor(self) -> int:
        if self._handle.closed:
            raise Closed("The object was closed")
        return self._copy

    def close(self) -> None:
        """Closes the handle and wakes who waits; the next call by the handle tells them."""
        self._handle.close()
        for future in list(self._awaiting):
            with contextlib.suppress(RuntimeError):  # its loop was closed
                future.get_loop().call_soon_threadsafe(_resolve, future)

    def wait(self, deadline: Deadline, what: str) -> None:
        """Raises Timeout. Python's poll lets other threads run, and runs signal handlers."""
        poll = select.poll()  # of its own: one is one thread's at a time
        poll.register(self._copy, select.POLLIN)
        while not self._handle.closed:
            left = deadline.left()
            # Rounded up: what ends a little early would be asked again many times.
            if poll.poll(math.ceil(min(left, SLICE) * 1000)):
                return
            if left == 0:
                raise Timeout(f"No {what} within the time limit")

    async def wait_async(self, deadline: Deadline, what: str) -> None:
        loop = asyncio.get_running_loop()
        readable: asyncio.Future[None] = loop.create_future()
        # A loop has one reader for a descriptor, and several tasks may wait.
        descriptor = os.dup(self._copy)
        self._awaiting.add(readable)
        loop.add_reader(descriptor, _resolve, readable)
        try:
            if not self._handle.closed:
                left = deadline.left()
                await asyncio.wait_for(readable, None if left == math.inf else left)
        except asyncio.TimeoutError:
            raise Timeout(f"No {what} within the time limit") from None
        finally:
            loop.remove_reader(descriptor)
            self._awaiting.discard(readable)
            os.close(descriptor)
