"""Frames, and the memory that they are in."""
from __future__ import annotations

import ctypes
import os
import struct
import weakref
import zlib
from typing import Any, Dict, List, Tuple, Union

import numpy as np


class Frame(np.ndarray):  # type: ignore[type-arg]
    """A picture: uint8, top row first; (height, width, 3) with B, G, R, (height, width, 4) with B, G, R, A, or
    (height, width) of grey.

    It is the caller's alone: the library never writes to it again. What is computed from it is a plain array.
    """

    number: int = 0
    """1 for the first frame of the capture."""
    captured: float = 0.0
    """When it was captured, in seconds of time.monotonic()."""
    passed_over: int = 0
    """Frames since the one before that nobody read."""
    sequence: int = 0
    """As the camera's driver counts."""
    native_format: str = ""
    """As the camera delivered it: "MJPG", "YUYV"."""
    native_size: Tuple[int, int] = (0, 0)

    def __array_finalize__(self, source: Any) -> None:
        if isinstance(source, Frame):
            self.__dict__.update(source.__dict__)

    def __array_wrap__(self, array: Any, context: Any = None, return_scalar: bool = False) -> Any:
        if array is self:
            return array
        return array.view(np.ndarray) if array.ndim else array[()]

    def __reduce__(self) -> Any:
        remake, arguments, state = super().__reduce__()  # type: ignore[misc]
        return remake, arguments, (state, self.__dict__)

    def __setstate__(self, state: Any) -> None:
        super().__setstate__(state[0])
        self.__dict__.update(state[1])

    def save(self, path: Union[str, "os.PathLike[str]"]) -> None:
        """Writes it as a PNG file."""
        with open(path, "wb") as file:
            file.write(_png(np.asarray(self)))


def _png(pixels: "np.ndarray[Any, np.dtype[np.uint8]]") -> bytes:
    channels = pixels.shape[2] if pixels.ndim == 3 else 1
    if pixels.dtype != np.uint8 or pixels.size == 0 or pixels.ndim not in (2, 3) or channels not in (1, 3, 4):
        raise ValueError("This is no picture any more")
    if channels > 1:  # PNG has R in front
        pixels = pixels[:, :, [2, 1, 0, 3][:channels]]
    height, width = pixels.shape[:2]
    kind = {1: 0, 3: 2, 4: 6}[channels]  # grey, R G B, R G B A
    rows = np.zeros((height, pixels[0].size + 1), np.uint8)  # a 0 before each row: no filter
    rows[:, 1:] = pixels.reshape(height, -1)

    def chunk(name: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    header = struct.pack(">IIBBBBB", width, height, 8, kind, 0, 0, 0)
    return (
        b"\x89PNG\r\n\x1a\n"
        + chunk(b"IHDR", header)
        + chunk(b"IDAT", zlib.compress(rows.tobytes(), 3))
        + chunk(b"IEND", b"")
    )


class Memory:
    """Memory for pictures of one size. It is used again once the frame in it, and every array that looks into it,
    is gone: fresh memory for each would cost more than the picture.
    """

    KEPT = 4  # that lie unused

    def __init__(self, shape: Tuple[int, ...]) -> None:
        self.shape = shape
        self.bytes = int(np.prod(shape))
        self._type: Any = ctypes.c_ubyte * self.bytes
        self._unused: List[Any] = []
        self._used: Dict[int, Tuple[Any, Any]] = {}

    def borrow(self) -> Any:
        """A part that nobody else looks into, for as long as the answer lives."""
        memory = self._unused.pop() if self._unused else np.empty(self.bytes, np.uint8)
        loan = self._type.from_buffer(memory)
        watch = weakref.ref(loan, self._give_back)
        self._used[id(watch)] = watch, memory
        return loan

    def _give_back(self, watch: Any) -> None:
        _, memory = self._used.pop(id(watch))
        if len(self._unused) < self.KEPT:
            self._unused.append(memory)
