"""What is raised. The words are the library's own."""
from __future__ import annotations

from typing import Dict, Type


class Error(Exception):
    """The library, a camera or its driver refused; the reason is in the words."""


class NoSuchCamera(Error, LookupError):
    """No attached camera is meant, or several are; the words name those there are."""


class Timeout(Error, TimeoutError):
    """No frame came in time."""


class Over(Error):
    """No frame will come any more: the camera was refused, unplugged, or has ended."""


class Closed(Error, ValueError):
    """The object was closed."""


class Busy(Error):
    """Another thread is using the object at this moment."""


class BadArgument(Error, ValueError):
    """A value that cannot be used."""


class Forked(Error):
    """This process was forked from one that had used the library."""


class NoMemory(Error, MemoryError):
    """There is no memory for it."""


_BY_CODE: Dict[int, Type[Error]] = {
    -1: BadArgument,
    -2: Closed,
    -3: Busy,
    -4: NoSuchCamera,
    -5: Over,
    -8: NoMemory,
    -9: Forked,
}


def error_of(code: int, words: str) -> Error:
    return _BY_CODE.get(code, Error)(words)
