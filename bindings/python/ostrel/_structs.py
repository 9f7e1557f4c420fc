"""The structs of ostrel/camera_c.h."""
from __future__ import annotations

from ctypes import Structure, c_char, c_double, c_int32, c_int64, c_size_t, c_uint32, c_uint64, sizeof
from typing import Any, Dict


class Sized(Structure):
    """A struct whose first member is its size."""

    size: int

    def __init__(self) -> None:
        super().__init__()
        self.size = sizeof(self)

    def values(self) -> Dict[str, Any]:
        """The members but the size, texts as str."""
        answers = {}
        for field in self._fields_[1:]:
            value = getattr(self, field[0])
            answers[field[0]] = value.decode(errors="replace") if isinstance(value, bytes) else value
        return answers


class CameraStruct(Sized):
    _fields_ = [("size", c_size_t), ("id", c_char * 1024), ("name", c_char * 256)]


class NodeStruct(Sized):
    _fields_ = [
        ("size", c_size_t),
        ("path", c_char * 256),
        ("name", c_char * 256),
        ("id", c_char * 1024),
        ("reason", c_char * 1024),
    ]


class FrameStruct(Sized):
    captured: int
    passed_over: int
    number: int
    sequence: int
    native_width: int
    native_height: int
    native_format: bytes
    _fields_ = [
        ("size", c_size_t),
        ("captured", c_int64),
        ("passed_over", c_uint64),
        ("number", c_uint32),
        ("sequence", c_uint32),
        ("time_source", c_int32),
        ("native_width", c_int32),
        ("native_height", c_int32),
        ("native_format", c_char * 20),
    ]


class NativeStruct(Sized):
    bytes: int
    _fields_ = [
        ("size", c_size_t),
        ("bytes", c_uint64),
        ("offset", c_uint64 * 4),
        ("bytes_per_line", c_int32 * 4),
        ("planes", c_int32),
        ("width", c_int32),
        ("height", c_int32),
        ("encoding", c_int32),
        ("full_range", c_int32),
        ("fields", c_int32),
        ("format", c_char * 20),
    ]


class StateStruct(Sized):
    _fields_ = [
        ("size", c_size_t),
        ("delivered", c_uint64),
        ("taken", c_uint64),
        ("skipped", c_uint64),
        ("lost", c_uint64),
        ("dropped", c_uint64),
        ("restarts", c_uint64),
        ("granted_rate", c_double),
        ("known", c_int32),
        ("open", c_int32),
        ("refused_at", c_int32),
        ("granted_width", c_int32),
        ("granted_height", c_int32),
        ("granted_format", c_char * 20),
        ("why_no_frames", c_char * 1024),
        ("refused", c_char * 1024),
        ("ended", c_char * 1024),
        ("stalled", c_char * 1024),
        ("shared", c_char * 1024),
        ("captured_by", c_char * 256),
        ("drops", c_char * 2048),
    ]


class ChangeStruct(Sized):
    _fields_ = [("size", c_size_t), ("kind", c_int32), ("id", c_char * 1024), ("name", c_char * 256)]


class DetailsStruct(Sized):
    _fields_ = [
        ("size", c_size_t),
        ("attached", c_int32),
        ("vendor", c_int32),
        ("product", c_int32),
        ("kind", c_char * 64),
        ("node", c_char * 256),
        ("driver", c_char * 64),
        ("bus", c_char * 256),
        ("serial", c_char * 512),
    ]


class ModeStruct(Sized):
    interval_numerator: int
    interval_denominator: int
    width: int
    height: int
    format: bytes
    _fields_ = [
        ("size", c_size_t),
        ("interval_numerator", c_uint32),
        ("interval_denominator", c_uint32),
        ("longest_numerator", c_uint32),
        ("longest_denominator", c_uint32),
        ("has_picture", c_int32),
        ("width", c_int32),
        ("height", c_int32),
        ("least_width", c_int32),
        ("least_height", c_int32),
        ("step_width", c_int32),
        ("step_height", c_int32),
        ("format", c_char * 20),
    ]


class ControlStruct(Sized):
    _fields_ = [
        ("size", c_size_t),
        ("minimum", c_int64),
        ("maximum", c_int64),
        ("step", c_int64),
        ("default_value", c_int64),
        ("value", c_int64),
        ("id", c_uint32),
        ("automatic", c_uint32),
        ("type", c_int32),
        ("items", c_int32),
        ("has_value", c_int32),
        ("inactive", c_int32),
        ("read_only", c_int32),
        ("is_volatile", c_int32),
        ("grabbed", c_int32),
        ("name", c_char * 64),
        ("text", c_char * 1024),
    ]
