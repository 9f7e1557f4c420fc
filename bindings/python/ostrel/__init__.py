"""Camera frames as numpy arrays: the newest one, at the size that you ask for, from a camera that keeps its name.

    import ostrel
    for frame in ostrel.Camera("webcam", size=(1280, 720)):
        print(frame.shape, frame.number, frame.captured)
"""
from ._cameras import CameraInfo, Details, Node, State, cameras, details, find, nodes, state
from ._capture import Camera, NativeFrame
from ._controls import Control, Controls, ControlWatch
from ._errors import BadArgument, Busy, Closed, Error, Forked, NoMemory, NoSuchCamera, Over, Timeout
from ._frames import Frame
from ._library import version
from ._modes import Mode, modes, request_mode, requested_mode
from ._monitor import Change, Monitor, monitor
from ._version import VERSION as __version__
from ._virtual import FileCamera, PushCamera, TestCamera, VirtualCamera, read_pattern

__all__ = [
    "BadArgument",
    "Busy",
    "Camera",
    "CameraInfo",
    "Change",
    "Closed",
    "Control",
    "ControlWatch",
    "Controls",
    "Details",
    "Error",
    "FileCamera",
    "Forked",
    "Frame",
    "Mode",
    "Monitor",
    "NativeFrame",
    "NoMemory",
    "NoSuchCamera",
    "Node",
    "Over",
    "PushCamera",
    "State",
    "TestCamera",
    "Timeout",
    "VirtualCamera",
    "__version__",
    "cameras",
    "details",
    "find",
    "modes",
    "monitor",
    "nodes",
    "read_pattern",
    "request_mode",
    "requested_mode",
    "state",
    "version",
]
