"""Being told of cameras that come and go."""
from __future__ import annotations

from collections import deque
from dataclasses import dataclass
from typing import AsyncIterator, Deque, Iterator, List, Optional

from ._cameras import CameraInfo
from ._errors import Closed
from ._library import Handle, items
from ._structs import CameraStruct, ChangeStruct
from ._waiting import Deadline, Readable


@dataclass(frozen=True)
class Change:
    """A camera that was "added" or "removed"."""

    kind: str
    id: str
    name: str


class Monitor:
    """An iterator of the changes since it was made, which ends with close().

        for change in ostrel.monitor():
            print(change.kind, change.name)
    """

    def __init__(self) -> None:
        self._handle = Handle("monitor")
        self._readable = Readable(self._handle)
        self._taken: Deque[Change] = deque()

    @property
    def cameras(self) -> List[CameraInfo]:
        """Those that were there when it was made, as changed by what was taken since."""
        listed = items("monitor_cameras", "camera_at", CameraStruct, self._handle.number)
        return [CameraInfo(**camera.values()) for camera in listed]

    def fileno(self) -> int:
        return self._readable.descriptor

    def take(self) -> List[Change]:
        """What has changed since the last call, removals first; never waits."""
        changes = list(self._taken)
        self._taken.clear()
        for change in items("take_changes", "change_at", ChangeStruct, self._handle.number):
            values = change.values()
            changes.append(Change({1: "added", 2: "removed"}[values["kind"]], values["id"], values["name"]))
        return changes

    def wait(self, timeout: Optional[float] = None) -> List[Change]:
        """Waits for a change. Raises Timeout."""
        deadline = Deadline(timeout)
        while True:
            changes = self.take()
            if changes:
                return changes
            self._readable.wait(deadline, "change")

    async def wait_async(self, timeout: Optional[float] = None) -> List[Change]:
        """As wait(), for asyncio."""
        deadline = Deadline(timeout)
        while True:
            changes = self.take()
            if changes:
                return changes
            await self._readable.wait_async(deadline, "change")

    def close(self) -> None:
        self._readable.close()

    def __enter__(self) -> Monitor:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __iter__(self) -> Iterator[Change]:
        return self

    def __next__(self) -> Change:
        if not self._taken:
            try:
                self._taken.extend(self.wait())
            except Closed:
                raise StopIteration from None
        return self._taken.popleft()

    def __aiter__(self) -> AsyncIterator[Change]:
        return self

    async def __anext__(self) -> Change:
        if not self._taken:
            try:
                self._taken.extend(await self.wait_async())
            except Closed:
                raise StopAsyncIteration from None
        return self._taken.popleft()


def monitor() -> Monitor:
    """Tells of cameras that come and go from now on."""
    return Monitor()
