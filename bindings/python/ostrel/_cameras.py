"""What cameras there are, and how they are doing."""
from __future__ import annotations

import ctypes
import os
from dataclasses import dataclass
from typing import Dict, List, Tuple, Union

from ._errors import NoSuchCamera
from ._library import call, items
from ._structs import CameraStruct, DetailsStruct, NodeStruct, StateStruct


@dataclass(frozen=True)
class CameraInfo:
    """An attached camera. id names it after a reboot too; name is for people."""

    id: str
    name: str


@dataclass(frozen=True)
class Node:
    """A video node of the system; id is empty where it is no camera, and reason says why."""

    path: str
    name: str
    id: str
    reason: str


@dataclass(frozen=True)
class Details:
    """A camera's device. Texts are empty, and numbers 0, where there is nothing to say."""

    kind: str
    node: str
    driver: str
    bus: str
    vendor: int
    product: int
    serial: str


@dataclass(frozen=True)
class State:
    """How a camera is doing. Texts are empty, and numbers 0, where there is nothing to say."""

    known: bool
    open: bool
    why_no_frames: str
    refused: str
    ended: str
    stalled: str
    shared: str
    captured_by: str
    restarts: int
    delivered: int
    taken: int
    skipped: int
    lost: int
    dropped: Dict[str, int]
    granted_format: str
    granted_size: Tuple[int, int]
    granted_rate: float


def cameras() -> List[CameraInfo]:
    """The attached cameras, in the order of their identifiers."""
    return [CameraInfo(**camera.values()) for camera in items("cameras", "camera_at", CameraStruct)]


def nodes() -> List[Node]:
    """The machine's video nodes, those that are no cameras among them."""
    return [Node(**node.values()) for node in items("nodes", "node_at", NodeStruct)]


def find(text: Union[str, "os.PathLike[str]"]) -> CameraInfo:
    """The camera that a saved or typed text means: its identifier of today or of earlier, the path of its node, its
    name, or a part of its name that no other camera has. Raises NoSuchCamera, which names those there are.
    """
    camera = CameraStruct()
    call("find", text, ctypes.byref(camera))
    return CameraInfo(**camera.values())


def details(id: str) -> Details:
    """What is known of the device of the camera with this identifier. Raises NoSuchCamera."""
    answer = DetailsStruct()
    call("details", id, ctypes.byref(answer))
    values = answer.values()
    if not values.pop("attached"):
        raise NoSuchCamera(f"No attached camera has the identifier {id}")
    return Details(**values)


def state(id: str) -> State:
    """How the camera with this identifier is doing. Never waits for hardware."""
    answer = StateStruct()
    call("state", id, ctypes.byref(answer))
    values = answer.values()
    drops = [line.partition(" ") for line in values.pop("drops").splitlines()]
    del values["refused_at"]
    values["known"] = bool(values["known"])
    values["open"] = bool(values["open"])
    values["granted_size"] = values.pop("granted_width"), values.pop("granted_height")
    values["dropped"] = {reason: int(count) for count, _, reason in drops}
    return State(**values)
