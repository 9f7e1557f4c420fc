"""A camera's own controls."""
from __future__ import annotations

import ctypes
import re
from dataclasses import dataclass
from typing import Any, Dict, Iterator, List, Mapping, Optional, Union

from ._library import Handle, call, listed, number, text
from ._structs import ControlStruct
from ._waiting import Deadline, Readable

Value = Union[int, bool, str, None]

_TYPES = {
    1: "integer",
    2: "boolean",
    3: "menu",
    4: "button",
    5: "integer",
    7: "text",
    8: "bitmask",
    9: "menu",
}


@dataclass(frozen=True)
class Control:
    """One control, as it was when it was asked for. Numbers and units are V4L2's."""

    key: str
    """By which Controls finds it: "white_balance_automatic"."""
    name: str
    """The driver's own: "White Balance, Automatic"."""
    id: int
    type: str
    """"integer", "boolean", "menu", "button", "text", "bitmask"."""
    value: Value
    """None of buttons, and where the camera would not tell."""
    minimum: int
    maximum: int
    step: int
    default: int
    items: Dict[int, str]
    """Of menus: names by values."""
    automatic: int
    """The id of the control that may have the say over this one; 0: none is known."""
    inactive: bool
    """Another setting has the say for the time being."""
    read_only: bool
    volatile: bool
    grabbed: bool


def _key(name: str) -> str:
    return re.sub(r"[^a-z0-9]+", "_", name.lower()).strip("_")


def _value(values: Dict[str, Any], kind: str) -> Value:
    if not values["has_value"]:
        return None
    if kind == "text":
        return str(values["text"])
    return bool(values["value"]) if kind == "boolean" else int(values["value"])


def _items(handle: int, index: int, count: int) -> Dict[int, str]:
    names = {}
    for item in range(count):
        value, name = ctypes.c_int64(), ctypes.create_string_buffer(256)
        call("control_item", handle, index, item, ctypes.byref(value), name, len(name))
        names[value.value] = name.value.decode(errors="replace")
    return names


def _controls(of: str, argument: Union[str, int]) -> List[Control]:
    found = []
    with listed(of, argument) as (handle, count):
        for index in range(count):
            struct = ControlStruct()
            call("control_at", handle, index, ctypes.byref(struct))
            values = struct.values()
            kind = _TYPES.get(values["type"], "unknown")
            found.append(
                Control(
                    key=_key(values["name"]),
                    name=values["name"],
                    id=values["id"],
                    type=kind,
                    value=_value(values, kind),
                    minimum=values["minimum"],
                    maximum=values["maximum"],
                    step=values["step"],
                    default=values["default_value"],
                    items=_items(handle, index, values["items"]),
                    automatic=values["automatic"],
                    inactive=bool(values["inactive"]),
                    read_only=bool(values["read_only"]),
                    volatile=bool(values["is_volatile"]),
                    grabbed=bool(values["grabbed"]),
                )
            )
    return found


class Controls(Mapping[str, Value]):
    """The controls of a camera: values by names such as "brightness". Each look asks the camera.

        controls["brightness"] = 40
        controls.set(auto_exposure=1, exposure_time_absolute=200)
    """

    def __init__(self, id: str) -> None:
        self.id = id

    def all(self) -> Dict[str, Control]:
        """Everything known of each."""
        return {control.key: control for control in _controls("controls", self.id)}

    def info(self, name: str) -> Control:
        """Everything known of one; name may also be the driver's own."""
        controls = self.all()
        if _key(name) not in controls:
            raise KeyError(f"no control {name!r}; there are: {', '.join(controls) or 'none'}")
        return controls[_key(name)]

    def set(self, **values: Union[int, bool, str]) -> None:
        """Sets several at once. Menus take the name of an item as well as its value. Raises Error where the camera
        refuses, which then says why and which were set."""
        self._set(values)

    def _set(self, values: Mapping[str, Union[int, bool, str]]) -> None:
        known = self.all()
        ids, numbers, texts = [], [], []
        for name, value in values.items():
            control = known.get(_key(name))
            if control is None:
                raise KeyError(f"no control {name!r}; there are: {', '.join(known) or 'none'}")
            words = text(value) if control.type == "text" and isinstance(value, str) else None
            ids.append(control.id)
            numbers.append(0 if words is not None else number(_value_of(control, value), 64))
            texts.append(words)
        count = len(ids)
        call(
            "set_controls",
            self.id,
            (ctypes.c_uint32 * count)(*ids),
            (ctypes.c_int64 * count)(*numbers),
            (ctypes.c_char_p * count)(*texts),
            count,
        )

    def watch(self) -> ControlWatch:
        """Sees them change, whoever changes them."""
        return ControlWatch(self.id)

    def __getitem__(self, name: str) -> Value:
        return self.info(name).value

    def __setitem__(self, name: str, value: Union[int, bool, str]) -> None:
        self._set({name: value})

    def __iter__(self) -> Iterator[str]:
        return iter(self.all())

    def __len__(self) -> int:
        return len(self.all())


def _value_of(control: Control, value: Union[int, bool, str]) -> int:
    if not isinstance(value, str):
        return int(value)
    for item, name in control.items.items():
        if name.lower() == value.lower():
            return item
    raise ValueError(f"{control.name} takes {', '.join(control.items.values()) or 'a number'}")


class ControlWatch:
    """An iterator of the controls that changed, each as it is now. It keeps the camera awake until close()."""

    def __init__(self, id: str) -> None:
        self._handle = Handle("watch_controls", id)
        self._readable = Readable(self._handle)

    def fileno(self) -> int:
        return self._readable.descriptor

    def take(self) -> List[Control]:
        """What has changed since the last call; never waits."""
        return _controls("take_controls", self._handle.number)

    def wait(self, timeout: Optional[float] = None) -> List[Control]:
        """Waits for a change. Raises Timeout, or Over once the camera has left."""
        deadline = Deadline(timeout)
        while True:
            self._readable.wait(deadline, "change")
            call("wait", self._handle.number, 0)  # raises Over
            changed = self.take()
            if changed:
                return changed

    def close(self) -> None:
        self._readable.close()

    def __enter__(self) -> ControlWatch:
        return self

    def __exit__(self, *exception: object) -> None:
        self.close()
