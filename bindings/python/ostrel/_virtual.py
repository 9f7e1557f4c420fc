"""Cameras without hardware, listed beside the others."""
from __future__ import annotations

import ctypes
import itertools
import os
from typing import Any, Optional, Tuple, Union

import numpy as np

from ._errors import Closed
from ._library import OK, Handle, call

_FAULTS = {None: 0, "open": 1, "input": 2, "output": 3, "padding": 4, "stall": 5}
_LAYOUTS = {4: 1, 3: 2, 1: 3}  # by channels
_numbers = itertools.count(1)


class VirtualCamera:
    """A camera that is attached for as long as the object lives, or until close()."""

    def __init__(self, kind: str, id: Optional[str], name: str, *arguments: Any) -> None:
        self.id = id or f"{kind.replace('_', '-')}-{os.getpid()}-{next(_numbers)}"
        self.name = name
        self._handle = Handle(kind, self.id, name, *arguments)

    def attach(self) -> None:
        """As if it was plugged in again."""
        call("attach", self._handle.number, 1)

    def detach(self) -> None:
        """As if it was pulled out: captures of it end."""
        call("attach", self._handle.number, 0)

    def set_fault(self, fault: Optional[str]) -> None:
        """From now on it fails so: "open", "input", "output", "padding" or "stall"; None heals."""
        if fault not in _FAULTS:
            raise ValueError(f"faults are {', '.join(str(name) for name in _FAULTS)}")
        call("set_fault", self._handle.number, _FAULTS[fault])

    def close(self) -> None:
        self._handle.close()

    def __enter__(self) -> VirtualCamera:
        if self._handle.closed:
            raise Closed("The camera was closed")
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()


class TestCamera(VirtualCamera):
    """A moving test pattern with a frame counter that read_pattern() reads."""

    __test__ = False  # its name is none of pytest's business

    def __init__(
        self,
        id: Optional[str] = None,
        name: str = "Test camera",
        size: Tuple[int, int] = (1280, 720),
        fps: float = 30.0,
    ) -> None:
        super().__init__("test_camera", id, name, size[0], size[1], fps)


class FileCamera(VirtualCamera):
    """Plays a Y4M file at its own rate, again and again or once."""

    def __init__(
        self,
        path: Union[str, "os.PathLike[str]"],
        id: Optional[str] = None,
        name: str = "Video file",
        loop: bool = True,
    ) -> None:
        super().__init__("file_camera", id, name, path, loop)


class PushCamera(VirtualCamera):
    """Delivers the pictures that the program pushes."""

    def __init__(self, id: Optional[str] = None, name: str = "Pushed frames") -> None:
        super().__init__("push_camera", id, name)

    def push(self, picture: Any) -> bool:
        """Delivers an array of uint8, shaped as a Frame is, to every running capture of this camera, which gets it
        at its own size. False while nobody captures.
        """
        pixels = np.ascontiguousarray(picture)
        channels = pixels.shape[2] if pixels.ndim == 3 else 1
        if pixels.dtype != np.uint8 or pixels.ndim not in (2, 3) or channels not in _LAYOUTS:
            raise ValueError(
                "a picture is of uint8 and has the shape (height, width, 3), (height, width, 4) or (height, width)"
            )
        height, width = pixels.shape[:2]
        return (
            call(
                "push",
                self._handle.number,
                pixels.ctypes.data,
                pixels.nbytes,
                width,
                height,
                0,
                _LAYOUTS[channels],
            )
            == OK
        )


def read_pattern(picture: Any) -> Optional[Tuple[int, int]]:
    """The frame counter and the clock (milliseconds modulo 2**32) in a picture of a TestCamera; None when they cannot
    be read.
    """
    pixels = np.ascontiguousarray(picture, np.uint8)
    if pixels.ndim == 2 or pixels.shape[2] == 1:
        pixels = np.repeat(pixels.reshape(*pixels.shape[:2], 1), 3, axis=2)
    if pixels.shape[2] == 3:
        pixels = np.dstack([pixels, np.full(pixels.shape[:2], 255, np.uint8)])
    counter, clock = ctypes.c_uint32(), ctypes.c_uint32()
    height, width = pixels.shape[:2]
    code = call(
        "read_pattern",
        pixels.ctypes.data,
        pixels.nbytes,
        width,
        height,
        0,
        ctypes.byref(counter),
        ctypes.byref(clock),
    )
    return (counter.value, clock.value) if code == OK else None
