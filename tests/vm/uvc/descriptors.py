"""What the webcam says about itself: USB and UVC 1.0 descriptors, built from the list of its formats.

It is made like the common cheap webcam: 30 frames a second raw at small sizes, but at 1280x720 only as motion
JPEG, since raw pictures of that size do not fit through USB 2.
"""
import struct
from dataclasses import dataclass

FPS_30, FPS_15, FPS_10, FPS_5 = 333333, 666666, 1000000, 2000000  # in units of 100 ns
PAYLOAD_BYTES = 16384  # one bulk transfer, header included
VENDOR, PRODUCT = 0x1209, 0x0001  # a number pair kept for tests
STRINGS = {1: 'Ostrel Test', 2: 'Emulated UVC Camera', 3: '0001'}  # maker, product, serial number

STREAM_ENDPOINT = 0x81
CONTROL_INTERFACE, STREAM_INTERFACE = 0, 1
CAMERA_TERMINAL, PROCESSING_UNIT, OUTPUT_TERMINAL = 1, 2, 3

MJPEG, YUYV = 1, 2  # bFormatIndex
CLASS_SPECIFIC = 0x24


@dataclass(frozen=True)
class Frame:
    width: int
    height: int
    intervals: tuple  # the first is the default

    def raw_bytes(self):
        return self.width * self.height * 2


FRAMES = {  # by bFormatIndex, then bFrameIndex - 1
    MJPEG: (Frame(640, 480, (FPS_30, FPS_15)), Frame(320, 240, (FPS_30, FPS_15)), Frame(1280, 720, (FPS_30, FPS_15))),
    YUYV: (Frame(640, 480, (FPS_30, FPS_15)), Frame(320, 240, (FPS_30, FPS_15)), Frame(1280, 720, (FPS_10, FPS_5))),
}


def u8(*values):
    return bytes(values)


def u16(value):
    return struct.pack('<H', value)


def u32(value):
    return struct.pack('<I', value)


def sized(body):
    """Puts the length byte before a descriptor."""
    return u8(len(body) + 1) + body


def frame_descriptor(subtype, index, frame):
    fastest = 10000000 // min(frame.intervals)
    slowest = 10000000 // max(frame.intervals)
    body = u8(CLASS_SPECIFIC, subtype, index, 0) + u16(frame.width) + u16(frame.height)
    body += u32(frame.raw_bytes() * 8 * slowest) + u32(frame.raw_bytes() * 8 * fastest) + u32(frame.raw_bytes())
    body += u32(frame.intervals[0]) + u8(len(frame.intervals)) + b''.join(map(u32, frame.intervals))
    return sized(body)


def frame_descriptors(subtype, frames):
    return b''.join(frame_descriptor(subtype, i + 1, frame) for i, frame in enumerate(frames))


def color_matching():
    return sized(u8(CLASS_SPECIFIC, 0x0d, 1, 1, 4))  # BT.709 primaries and transfer, SMPTE 170M matrix


def format_descriptors():
    mjpeg = sized(u8(CLASS_SPECIFIC, 6, MJPEG, len(FRAMES[MJPEG]), 1, 1, 0, 0, 0, 0))
    guid = b'YUY2\x00\x00\x10\x00\x80\x00\x00\xaa\x00\x38\x9b\x71'
    yuyv = sized(u8(CLASS_SPECIFIC, 4, YUYV, len(FRAMES[YUYV])) + guid + u8(16, 1, 0, 0, 0, 0))
    return (mjpeg + frame_descriptors(7, FRAMES[MJPEG]) + color_matching()
            + yuyv + frame_descriptors(5, FRAMES[YUYV]) + color_matching())


def stream_header():
    formats = format_descriptors()
    head = u8(CLASS_SPECIFIC, 1, len(FRAMES))
    tail = u8(STREAM_ENDPOINT, 0, OUTPUT_TERMINAL, 0, 0, 0, 1, 0, 0)
    return sized(head + u16(len(head) + 3 + len(tail) + len(formats)) + tail) + formats


def control_header():
    # Exposure: mode, priority over the rate, time; focus: where, automatic.
    camera = sized(u8(CLASS_SPECIFIC, 2, CAMERA_TERMINAL) + u16(0x0201) + bytes(8) + u8(3, 0x2e, 0, 2))
    processing = sized(u8(CLASS_SPECIFIC, 5, PROCESSING_UNIT, CAMERA_TERMINAL) + u16(0) + u8(2, 1, 0, 0))  # brightness
    output = sized(u8(CLASS_SPECIFIC, 3, OUTPUT_TERMINAL) + u16(0x0101) + u8(0, PROCESSING_UNIT, 0))
    units = camera + processing + output
    return sized(u8(CLASS_SPECIFIC, 1) + u16(0x0100) + u16(13 + len(units)) + u32(48000000)
                 + u8(1, STREAM_INTERFACE)) + units


def interface(number, endpoints, subclass):
    return sized(u8(4, number, 0, endpoints, 0x0e, subclass, 0, 0))


def configuration_descriptor():
    association = sized(u8(11, CONTROL_INTERFACE, 2, 0x0e, 3, 0, 0))
    endpoint = sized(u8(5, STREAM_ENDPOINT, 2) + u16(512) + u8(0))
    body = (association + interface(CONTROL_INTERFACE, 0, 1) + control_header()
            + interface(STREAM_INTERFACE, 1, 2) + stream_header() + endpoint)
    return sized(u8(2) + u16(9 + len(body)) + u8(2, 1, 0, 0x80, 50)) + body


def device_descriptor():
    return sized(u8(1) + u16(0x0200) + u8(0xef, 2, 1, 64) + u16(VENDOR) + u16(PRODUCT) + u16(0x0100) + u8(1, 2, 3, 1))


def qualifier_descriptor():
    return sized(u8(6) + u16(0x0200) + u8(0xef, 2, 1, 64, 1, 0))


def string_descriptor(index):
    if index == 0:
        return sized(u8(3) + u16(0x0409))
    if index in STRINGS:
        return sized(u8(3) + STRINGS[index].encode('utf-16le'))
    return None
