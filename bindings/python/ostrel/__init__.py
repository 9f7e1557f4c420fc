"""Camera frames as numpy arrays: the newest one, at the size that you ask for, from a camera that keeps its name.

    import ostrel
    for frame in ostrel.Camera("webcam", size=(1280, 720)):
        print(frame.shape, frame.number, frame.captured)
"""
from ._cameras import CameraInfo, Node, State, cameras, find, nodes, state
from ._capture import Camera, NativeFrame
from ._errors import BadArgument, Busy, Closed, Error, Forked, NoMemory, NoSuchCamera, Over, Timeout
from ._frames import Frame
from ._library import version
from ._version import VERSION as __version__
from ._virtual import FileCamera, PushCamera, TestCamera, VirtualCamera, read_pattern

__all__ = [
    "BadArgument",
    "Busy",
    "Camera",
    "CameraInfo",
    "Closed",
    "Error",
    "FileCamera",
    "Forked",
    "Frame",
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
    "find",
    "nodes",
    "read_pattern",
    "state",
    "version",
]
