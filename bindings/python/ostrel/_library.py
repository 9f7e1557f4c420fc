"""The calls of libostrelcamera. While one of them runs other Python threads run too."""
from __future__ import annotations

import contextlib
import ctypes
import operator
import os
import weakref
from ctypes import POINTER, c_char_p, c_double, c_int32, c_int64, c_size_t, c_uint32, c_uint64, c_void_p
from typing import Any, Callable, Iterator, List, Tuple, Type, TypeVar

from ._errors import BadArgument, error_of
from ._structs import Sized

OK, NOTHING, OVER, TOO_SMALL = 0, 1, -5, -6

try:
    _library = ctypes.CDLL("libostrelcamera.so.1")
except OSError as error:
    raise ImportError(f"libostrelcamera.so.1 is not installed (Debian: libostrelcamera1): {error}") from error


def text(value: Any) -> bytes:
    """A text or a path as C takes it, which would end it at a zero byte."""
    path = os.fspath(value)
    utf8: bytes = path if isinstance(path, bytes) else path.encode()
    if b"\0" in utf8:
        raise BadArgument(f"There is a zero byte in {path!r}")
    return utf8


def number(value: Any, bits: int = 32) -> int:
    """An integer. ctypes would take those that do not fit without their upper bits."""
    integer = operator.index(value)
    if not -(1 << bits - 1) <= integer < 1 << bits - 1:
        raise BadArgument(f"{integer} does not fit into {bits} bits")
    return integer


class _Text:
    from_param = staticmethod(text)


class _Number:
    from_param = staticmethod(number)


_HANDLE, _TEXT, _NUMBER, _PIXELS, _STRUCT = c_uint64, _Text, _Number, c_void_p, c_void_p
_TO_HANDLE, _TO_COUNT = POINTER(c_uint64), POINTER(c_size_t)
# Each takes two more: where the words go, and how much room there is.
_CALLS: Any = {
    "close": [_HANDLE],
    "cameras": [_TO_HANDLE, _TO_COUNT],
    "camera_at": [_HANDLE, c_size_t, _STRUCT],
    "nodes": [_TO_HANDLE, _TO_COUNT],
    "node_at": [_HANDLE, c_size_t, _STRUCT],
    "details": [_TEXT, _STRUCT],
    "modes": [_TEXT, _TO_HANDLE, _TO_COUNT],
    "mode_at": [_HANDLE, c_size_t, _STRUCT],
    "request_mode": [_TEXT, _STRUCT],
    "requested_mode": [_TEXT, _STRUCT],
    "controls": [_TEXT, _TO_HANDLE, _TO_COUNT],
    "control_at": [_HANDLE, c_size_t, _STRUCT],
    "control_item": [_HANDLE, c_size_t, c_size_t, POINTER(c_int64), c_char_p, c_size_t],
    "set_controls": [_TEXT, POINTER(c_uint32), POINTER(c_int64), POINTER(c_char_p), c_size_t],
    "watch_controls": [_TEXT, _TO_HANDLE],
    "take_controls": [_HANDLE, _TO_HANDLE, _TO_COUNT],
    "monitor": [_TO_HANDLE],
    "monitor_cameras": [_HANDLE, _TO_HANDLE, _TO_COUNT],
    "take_changes": [_HANDLE, _TO_HANDLE, _TO_COUNT],
    "change_at": [_HANDLE, c_size_t, _STRUCT],
    "wait": [_HANDLE, c_int32],
    "find": [_TEXT, _STRUCT],
    "start": [_TEXT, _NUMBER, _NUMBER, _TO_HANDLE],
    "descriptor": [_HANDLE, POINTER(c_int32)],
    "next": [_HANDLE, _PIXELS, c_size_t, c_int32, c_int32, c_int32, _STRUCT],
    "next_native": [_HANDLE, _PIXELS, c_size_t, c_int32, _STRUCT, _STRUCT],
    "state": [_TEXT, _STRUCT],
    "test_camera": [_TEXT, _TEXT, _NUMBER, _NUMBER, c_double, _TO_HANDLE],
    "push_camera": [_TEXT, _TEXT, _TO_HANDLE],
    "file_camera": [_TEXT, _TEXT, _TEXT, c_int32, _TO_HANDLE],
    "push": [_HANDLE, _PIXELS, c_size_t, c_int32, c_int32, c_int32, c_int32],
    "attach": [_HANDLE, c_int32],
    "set_fault": [_HANDLE, c_int32],
    "read_pattern": [
        _PIXELS,
        c_size_t,
        c_int32,
        c_int32,
        c_int32,
        POINTER(c_uint32),
        POINTER(c_uint32),
    ],
}


def function(name: str) -> Callable[..., int]:
    """The C function of this name, without its prefix."""
    found: Any = getattr(_library, "ostrel_" + name)
    found.argtypes = _CALLS[name] + [c_char_p, c_size_t]
    found.restype = ctypes.c_int
    return found  # type: ignore[no-any-return]


_functions = {name: function(name) for name in _CALLS}


def call(name: str, *arguments: Any) -> int:
    """The code, where it is no error; else raises."""
    words = ctypes.create_string_buffer(2048)
    try:
        code = _functions[name](*arguments, words, len(words))
    except ctypes.ArgumentError as error:
        raise BadArgument(str(error)) from None
    if code < 0:
        raise error_of(code, words.value.decode(errors="replace"))
    return code


def _close(number: int) -> None:
    _functions["close"](number, None, 0)


class Handle:
    """A handle that is closed when it is let go of, and at the end of the program."""

    def __init__(self, name: str, *arguments: Any) -> None:
        number = c_uint64()
        call(name, *arguments, ctypes.byref(number))
        self.number = number.value
        self._finalizer = weakref.finalize(self, _close, self.number)

    @property
    def closed(self) -> bool:
        return not self._finalizer.alive

    def close(self) -> None:
        self._finalizer()


Struct = TypeVar("Struct", bound=Sized)


@contextlib.contextmanager
def listed(of: str, *arguments: Any) -> Iterator[Tuple[int, int]]:
    """A list that a call of this name answers: its handle, and how many items there are."""
    handle, count = c_uint64(), c_size_t()
    call(of, *arguments, ctypes.byref(handle), ctypes.byref(count))
    try:
        yield handle.value, count.value
    finally:
        _close(handle.value)


def items(of: str, at: str, struct: Type[Struct], *arguments: Any) -> List[Struct]:
    """Asks for a list by one call and for each of its items by another."""
    answers = []
    with listed(of, *arguments) as (handle, count):
        for index in range(count):
            answers.append(struct())
            call(at, handle, index, ctypes.byref(answers[-1]))
    return answers


def version() -> str:
    """That of the library, "1.1.0"."""
    _library.ostrel_version.restype = c_char_p
    text: bytes = _library.ostrel_version()
    return text.decode()
