"""The webcam's answers on its control endpoint."""
import struct
from dataclasses import dataclass

from . import descriptors as d

GET_STATUS, GET_DESCRIPTOR, GET_CONFIGURATION, GET_INTERFACE = 0x00, 0x06, 0x08, 0x0a
SET_CUR, GET_CUR, GET_MIN, GET_MAX, GET_RES, GET_LEN, GET_INFO, GET_DEF = (
    0x01, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87)
PROBE, COMMIT = 1, 2
BRIGHTNESS = 2


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


class Controls:
    """Bound to the link's thread. answer() returns the bytes for the host, or None to stall the request."""

    def __init__(self, on_commit):
        self.on_commit = on_commit
        self.probed = Mode()
        self.brightness = 50

    def answer(self, setup, data):
        kind, request, value, index, _ = struct.unpack('<BBHHH', setup)
        if kind & 0x60 == 0:
            return self.standard(request, value)
        selector, entity, interface = value >> 8, index >> 8, index & 0xff
        if interface == d.STREAM_INTERFACE and selector in (PROBE, COMMIT):
            return self.stream(request, selector, data)
        if interface == d.CONTROL_INTERFACE and (entity, selector) == (d.PROCESSING_UNIT, BRIGHTNESS):
            return self.brightness_control(request, data)
        return None

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

    def brightness_control(self, request, data):
        if request == SET_CUR:
            self.brightness = struct.unpack('<h', data[:2])[0]
            return b''
        values = {GET_CUR: self.brightness, GET_MIN: 0, GET_MAX: 100, GET_RES: 1, GET_DEF: 50, GET_LEN: 2}
        if request in values:
            return struct.pack('<h', values[request])
        return b'\3' if request == GET_INFO else None
