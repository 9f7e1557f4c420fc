"""The webcam's answers on its control endpoint."""
import struct
from dataclasses import dataclass

from . import descriptors as d

GET_STATUS, GET_DESCRIPTOR, GET_CONFIGURATION, GET_INTERFACE = 0x00, 0x06, 0x08, 0x0a
SET_CUR, GET_CUR, GET_MIN, GET_MAX, GET_RES, GET_LEN, GET_INFO, GET_DEF = (
    0x01, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87)
PROBE, COMMIT = 1, 2
MANUAL, APERTURE_PRIORITY = 1, 8  # modes of exposure


@dataclass(frozen=True)
class Mode:
    """What the host negotiated: a format, one of its frames, an interval."""
    format: int = d.MJPEG
    frame: int = 1
    interval: int = d.FPS_30

    def size(self):
        return d.FRAMES[self.format][self.frame - 1]

    def pack(self):
        return struct.pack('<HBBIHHHHHII', 1, self.format, self.frame, self.interval, 0, 0, 0, 0, 0,
                           self.size().raw_bytes(), d.PAYLOAD_BYTES)

    @staticmethod
    def nearest(data):
        """The mode that the webcam offers for what the host asked."""
        _, fmt, frame, interval = struct.unpack('<HBBI', data[:8])
        fmt = fmt if fmt in d.FRAMES else d.MJPEG
        frame = frame if 1 <= frame <= len(d.FRAMES[fmt]) else 1
        offered = d.FRAMES[fmt][frame - 1].intervals
        return Mode(fmt, frame, min(offered, key=lambda i: abs(i - interval)))


@dataclass
class Value:
    """One control: its bytes, limits and value, and which other one has the say over it unless that has a certain
    value. A camera stalls who sets it then."""
    bytes: int
    minimum: int
    maximum: int
    step: int
    default: int
    held_by: tuple = None
    released: int = 0

    def __post_init__(self):
        self.value = self.default

    def answer(self, request, data, held):
        if request == SET_CUR:
            value = int.from_bytes(data[:self.bytes], 'little', signed=True)
            if held or not self.minimum <= value <= self.maximum:
                return None
            self.value = value
            return b''
        if request == GET_INFO:
            return d.u8(3 | (4 if held else 0))
        if request == GET_LEN:
            return d.u16(self.bytes)
        values = {GET_CUR: self.value, GET_MIN: self.minimum, GET_MAX: self.maximum, GET_RES: self.step,
                  GET_DEF: self.default}
        return values[request].to_bytes(self.bytes, 'little', signed=True) if request in values else None


BRIGHTNESS = (d.PROCESSING_UNIT, 2)
EXPOSURE_MODE = (d.CAMERA_TERMINAL, 2)
EXPOSURE_PRIORITY = (d.CAMERA_TERMINAL, 3)
EXPOSURE_TIME = (d.CAMERA_TERMINAL, 4)
FOCUS = (d.CAMERA_TERMINAL, 6)
FOCUS_AUTO = (d.CAMERA_TERMINAL, 8)


def values():
    """As they are when the webcam is plugged in. Of the mode the step has a bit for each that there is."""
    return {BRIGHTNESS: Value(2, 0, 100, 1, 50),
            EXPOSURE_MODE: Value(1, MANUAL, APERTURE_PRIORITY, MANUAL | APERTURE_PRIORITY, APERTURE_PRIORITY),
            EXPOSURE_PRIORITY: Value(1, 0, 1, 1, 0),
            EXPOSURE_TIME: Value(4, 3, 2047, 1, 250, EXPOSURE_MODE, MANUAL),
            FOCUS: Value(2, 0, 250, 5, 0, FOCUS_AUTO, 0),
            FOCUS_AUTO: Value(1, 0, 1, 1, 1)}


class Controls:
    """Bound to the link's thread. answer() returns the bytes for the host, or None to stall the request."""

    def __init__(self, on_commit):
        self.on_commit = on_commit
        self.probed = Mode()
        self.values = values()

    def answer(self, setup, data):
        kind, request, value, index, _ = struct.unpack('<BBHHH', setup)
        if kind & 0x60 == 0:
            return self.standard(request, value)
        selector, entity, interface = value >> 8, index >> 8, index & 0xff
        if interface == d.STREAM_INTERFACE and selector in (PROBE, COMMIT):
            return self.stream(request, selector, data)
        value = self.values.get((entity, selector)) if interface == d.CONTROL_INTERFACE else None
        return value.answer(request, data, self.is_held(value)) if value else None

    def is_held(self, value):
        return value.held_by is not None and self.values[value.held_by].value != value.released

    def standard(self, request, value):
        if request == GET_DESCRIPTOR:
            kind, index = value >> 8, value & 0xff
            if kind == 3:
                return d.string_descriptor(index)
            make = {1: d.device_descriptor, 2: d.configuration_descriptor, 6: d.qualifier_descriptor}.get(kind)
            return make() if make else None
        fixed = {GET_STATUS: b'\0\0', GET_CONFIGURATION: b'\1', GET_INTERFACE: b'\0'}
        return fixed.get(request, b'')  # the others set something and carry no answer

    def stream(self, request, selector, data):
        if request == SET_CUR:
            self.probed = Mode.nearest(data)
            if selector == COMMIT:
                self.on_commit(self.probed)
            return b''
        if request == GET_CUR:
            return self.probed.pack()
        fixed = {GET_MIN: Mode().pack(), GET_MAX: Mode().pack(), GET_DEF: Mode().pack(),
                 GET_INFO: b'\3', GET_LEN: d.u16(len(Mode().pack()))}
        return fixed.get(request)
