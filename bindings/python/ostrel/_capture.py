"""Capturing from a camera."""
from __future__ import annotations

import ctypes
import os
import threading
from dataclasses import dataclass
from typing import Any, AsyncIterator, Iterator, List, Optional, Tuple, Union

from ._cameras import CameraInfo, Details, State, cameras, details, find, state
from ._controls import Controls
from ._errors import Closed, NoSuchCamera, error_of
from ._frames import Frame, Memory
from ._library import NOTHING, OK, TOO_SMALL, Handle, function, number
from ._modes import Mode, modes, request_mode
from ._structs import FrameStruct, NativeStruct
from ._virtual import VirtualCamera
from ._waiting import Deadline, Readable

_next = function("next")
_next_native = function("next_native")
_LAYOUTS = {4: 1, 3: 2, 1: 3}  # by channels

Which = Union[None, str, "os.PathLike[str]", CameraInfo, VirtualCamera]


def _meant(which: Which) -> CameraInfo:
    if isinstance(which, CameraInfo):
        return which
    if isinstance(which, VirtualCamera):
        return CameraInfo(which.id, which.name)
    if which is not None:
        return find(which)
    attached = cameras()
    if not attached:
        raise NoSuchCamera("No camera is attached; ostrel.TestCamera() makes one without hardware")
    return attached[0]


@dataclass(frozen=True)
class NativeFrame:
    """A frame as the camera delivered it: a JPEG picture, or planes."""

    data: bytes
    format: str
    size: Tuple[int, int]
    offsets: List[int]
    """Where each plane begins."""
    bytes_per_line: List[int]
    """Of each plane; 0 of compressed pictures."""
    encoding: int
    """How Y, U and V stand for colours: 1 BT.601, 2 BT.709, 3 BT.2020."""
    full_range: bool
    fields: int
    """0: rows from top to bottom; 1 and 2: one field after the other, the top or the bottom one first."""
    number: int
    captured: float
    passed_over: int


class Camera:
    """Frames of a camera: the newest, each once.

        for frame in ostrel.Camera("webcam", size=(1280, 720)):
            ...

    which: what ostrel.find() takes, one of ostrel.cameras(), a virtual camera, or None for the first there is.
    size: width and height of the frames, whatever the camera's own are. channels: 3 for B, G, R; 4 for B, G, R, A;
    1 for grey. timeout: seconds to wait for a frame, None for ever. mode: one of ostrel.modes(), or a wish such as
    ostrel.Mode(format="MJPG", fps=60), that the camera is to use from now on.

    Capturing begins at once and ends with close(), with the end of a with statement, or when the object is let go
    of. Any thread may use it; of several that read, each frame goes to one.
    """

    def __init__(
        self,
        which: Which = None,
        size: Tuple[int, int] = (640, 480),
        *,
        channels: int = 3,
        timeout: Optional[float] = None,
        mode: Optional[Mode] = None,
    ) -> None:
        if channels not in _LAYOUTS:
            raise ValueError("channels is 3 for B, G, R, 4 for B, G, R, A, or 1 for grey")
        self.info = _meant(which)
        width, height = map(number, size)
        self.size = width, height
        self.timeout = timeout
        self._layout = _LAYOUTS[channels]
        if mode is not None:
            request_mode(self.id, mode)
        self._handle = Handle("start", self.id, width, height)
        self._readable = Readable(self._handle)
        self._memory = Memory((height, width) if channels == 1 else (height, width, channels))
        self._loan: Any = None  # memory for the next frame
        self._facts = FrameStruct()
        self._where = ctypes.byref(self._facts)
        self._words = ctypes.create_string_buffer(2048)
        self._lock = threading.Lock()  # of the three above

    @property
    def id(self) -> str:
        """What names the camera after a reboot too."""
        return self.info.id

    @property
    def name(self) -> str:
        return self.info.name

    @property
    def state(self) -> State:
        """How the camera is doing, and why no frames come."""
        return state(self.id)

    @property
    def details(self) -> Details:
        """What is known of its device."""
        return details(self.id)

    @property
    def modes(self) -> List[Mode]:
        """What the camera offers; it is captured in the best of them for the size that was asked for."""
        return modes(self.id)

    @property
    def controls(self) -> Controls:
        """Brightness, exposure, focus and the like: camera.controls["brightness"] = 40."""
        return Controls(self.id)

    def fileno(self) -> int:
        """For select and its kin: readable while poll() has something to say."""
        return self._readable.descriptor

    def poll(self) -> Optional[Frame]:
        """The newest frame, if it was not read before; never waits."""
        with self._lock:
            if self._loan is None:
                self._loan = self._memory.borrow()
            code = _next(
                self._handle.number,
                ctypes.addressof(self._loan),
                self._memory.bytes,
                0,
                self._layout,
                0,
                self._where,
                self._words,
                2048,
            )
            if code == NOTHING:
                return None
            if code != OK:
                raise error_of(code, self._words.value.decode(errors="replace"))
            loan, self._loan = self._loan, None
            return self._frame(loan)

    def _frame(self, loan: Any) -> Frame:
        frame = Frame(self._memory.shape, "u1", loan)
        facts = self._facts
        frame.number = facts.number
        frame.captured = facts.captured * 1e-9
        frame.passed_over = facts.passed_over
        frame.sequence = facts.sequence
        frame.native_format = facts.native_format.decode()
        frame.native_size = facts.native_width, facts.native_height
        return frame

    def read(self, timeout: Optional[float] = None) -> Frame:
        """Waits for the newest frame that was not read before: timeout seconds, or what the camera was made with.
        Raises Timeout, or Over when none will come any more.
        """
        deadline = Deadline(self.timeout if timeout is None else timeout)
        while True:
            self._readable.wait(deadline, "frame")
            frame = self.poll()
            if frame is not None:
                return frame

    async def read_async(self, timeout: Optional[float] = None) -> Frame:
        """As read(), for asyncio."""
        deadline = Deadline(self.timeout if timeout is None else timeout)
        while True:
            frame = self.poll()
            if frame is not None:
                return frame
            await self._readable.wait_async(deadline, "frame")

    def read_native(self, timeout: Optional[float] = None) -> NativeFrame:
        """As read(), the camera's own bytes."""
        deadline = Deadline(self.timeout if timeout is None else timeout)
        while True:
            self._readable.wait(deadline, "frame")
            native = self._poll_native()
            if native is not None:
                return native

    def _poll_native(self) -> Optional[NativeFrame]:
        info, words = NativeStruct(), self._words
        with self._lock:
            data = ctypes.create_string_buffer(0)
            while True:
                code = _next_native(
                    self._handle.number, data, len(data), 0, ctypes.byref(info), self._where, words, 2048
                )
                if code != TOO_SMALL:
                    break
                data = ctypes.create_string_buffer(info.bytes)
            if code == NOTHING:
                return None
            if code != OK:
                raise error_of(code, words.value.decode(errors="replace"))
            values, facts = info.values(), self._facts
            planes = values["planes"]
            return NativeFrame(
                data=ctypes.string_at(data, info.bytes),
                format=values["format"],
                size=(values["width"], values["height"]),
                offsets=list(values["offset"])[:planes],
                bytes_per_line=list(values["bytes_per_line"])[:planes],
                encoding=values["encoding"],
                full_range=bool(values["full_range"]),
                fields=values["fields"],
                number=facts.number,
                captured=facts.captured * 1e-9,
                passed_over=facts.passed_over,
            )

    def close(self) -> None:
        """Ends the capture; frames stay what they are. Whoever waits is told."""
        self._readable.close()

    @property
    def closed(self) -> bool:
        return self._handle.closed

    def __enter__(self) -> Camera:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()

    def __iter__(self) -> Iterator[Frame]:
        return self

    def __next__(self) -> Frame:
        try:
            return self.read()
        except Closed:
            raise StopIteration from None

    def __aiter__(self) -> AsyncIterator[Frame]:
        return self

    async def __anext__(self) -> Frame:
        try:
            return await self.read_async()
        except Closed:
            raise StopAsyncIteration from None

    def __repr__(self) -> str:
        return f"<ostrel.Camera {self.id!r} {self.size[0]}x{self.size[1]}{' closed' if self.closed else ''}>"
