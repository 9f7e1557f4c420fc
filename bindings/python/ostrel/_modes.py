"""The modes of a camera."""
from __future__ import annotations

import ctypes
from dataclasses import dataclass
from fractions import Fraction
from typing import List, Optional, Tuple

from ._errors import BadArgument
from ._library import call, items, number, text
from ._structs import ModeStruct


@dataclass(frozen=True)
class Mode:
    """What a camera offers; of ranges, the largest size and the highest rate. Or a wish, in which what is left out
    means any.
    """

    format: str = ""
    """Four characters: "MJPG", "YUYV"."""
    size: Tuple[int, int] = (0, 0)
    fps: float = 0
    """Frames a second; 0 where the driver does not say."""
    least_size: Tuple[int, int] = (0, 0)
    """The smallest of a range; else the size."""
    least_fps: float = 0
    has_picture: bool = True
    """Without one there are only native frames."""


def _mode(struct: ModeStruct) -> Mode:
    values = struct.values()

    def rate(which: str) -> float:
        interval = values[which + "_numerator"]
        return float(values[which + "_denominator"] / interval) if interval else 0.0

    return Mode(
        format=values["format"],
        size=(values["width"], values["height"]),
        fps=rate("interval"),
        least_size=(values["least_width"], values["least_height"]),
        least_fps=rate("longest"),
        has_picture=bool(values["has_picture"]),
    )


def modes(id: str) -> List[Mode]:
    """All that the camera with this identifier offers, in its own order. May ask the hardware."""
    return [_mode(mode) for mode in items("modes", "mode_at", ModeStruct, id)]


def request_mode(id: str, mode: Optional[Mode]) -> None:
    """From now on captures of this camera that start it use such a mode, in this process; None: any."""
    if mode is None:
        call("request_mode", id, None)
        return
    wish = ModeStruct()
    wish.format = text(mode.format)
    wish.width, wish.height = map(number, mode.size)
    if mode.fps:
        if not 1e-6 <= mode.fps <= 1e6:
            raise BadArgument(f"{mode.fps} frames a second are no rate")
        interval = (1 / Fraction(mode.fps)).limit_denominator(1000000)
        wish.interval_numerator, wish.interval_denominator = interval.numerator, interval.denominator
    call("request_mode", id, ctypes.byref(wish))


def requested_mode(id: str) -> Mode:
    """What was requested; Mode() where nothing was."""
    wish = ModeStruct()
    call("requested_mode", id, ctypes.byref(wish))
    return _mode(wish)
