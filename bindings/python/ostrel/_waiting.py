"""Waiting for a descriptor to become readable, in ways that Ctrl-C ends at once."""
from __future__ import annotations

import asyncio
import ctypes
import select
import time
from typing import Optional

from ._errors import Timeout
from ._library import Handle, call


class Deadline:
    def __init__(self, timeout: Optional[float]) -> None:
        self._until = None if timeout is None else time.monotonic() + timeout

    def left(self) -> Optional[float]:
        return None if self._until is None else self._until - time.monotonic()


def _resolve(future: asyncio.Future[None]) -> None:
    if not future.done():
        future.set_result(None)


class Readable:
    """The descriptor of a handle."""

    def __init__(self, handle: Handle) -> None:
        descriptor = ctypes.c_int32(-1)
        call("descriptor", handle.number, ctypes.byref(descriptor))
        self.descriptor = descriptor.value

    def wait(self, deadline: Deadline, what: str) -> None:
        """Raises Timeout. Python's poll lets other threads run, and runs signal handlers."""
        left = deadline.left()
        if left is not None and left < 0:
            left = 0
        poll = select.poll()  # of its own: one is one thread's at a time
        poll.register(self.descriptor, select.POLLIN)
        # Rounded up: what ends a little early would be asked again many times.
        if not poll.poll(None if left is None else int(left * 1000 + 0.999)):
            raise Timeout(f"No {what} within the time limit")

    async def wait_async(self, deadline: Deadline, what: str) -> None:
        loop = asyncio.get_running_loop()
        readable: asyncio.Future[None] = loop.create_future()
        loop.add_reader(self.descriptor, _resolve, readable)
        try:
            await asyncio.wait_for(readable, deadline.left())
        except asyncio.TimeoutError:
            raise Timeout(f"No {what} within the time limit") from None
        finally:
            loop.remove_reader(self.descriptor)
