"""The webcam itself: pictures at the negotiated rate, and the faults that it is told to have."""
import struct
import threading
import time

from . import descriptors as d
from .controls import Controls
from .usbip import Link

HEADER_END_OF_FRAME, HEADER_END_OF_HEADER = 0x02, 0x80


def jpeg_size(data):
    """Width and height out of a baseline picture's frame header."""
    at = data.find(b'\xff\xc0')
    if at < 0:
        raise ValueError('not a baseline JPEG picture')
    height, width = struct.unpack('>HH', data[at + 5:at + 9])
    return width, height


class Pictures:
    """The JPEG files in turn, by size; raw pictures are grey and darker with each frame."""

    def __init__(self, files):
        self.by_size = {}
        for name in files:
            with open(name, 'rb') as file:
                data = file.read()
            self.by_size.setdefault(jpeg_size(data), []).append(data)

    def get(self, mode, number):
        size = mode.size()
        if mode.format == d.YUYV:
            return bytes((255 - number % 256, 128)) * (size.width * size.height)
        files = self.by_size.get((size.width, size.height))
        if not files:
            raise ValueError(f'no JPEG file of {size.width}x{size.height} was given')
        return files[number % len(files)]


class Webcam:
    """Plugged and unplugged by its owner's thread; sends from a thread of its own while the host streams."""

    def __init__(self, pictures, truncate_every=0, port=0):
        self.pictures = pictures
        self.port = port                      # of the controller
        self.truncate_every = truncate_every  # every so many frames one is cut in half; 0: none
        self.stalled = False                  # no frame is sent
        self.link = None

    def plug(self):
        if self.link:
            return
        stream = Stream(self)
        stream.link = self.link = Link(Controls(stream.begin).answer, self.port)
        threading.Thread(target=stream.run, daemon=True).start()

    def unplug(self):
        if self.link:
            self.link.unplug()
            self.link = None


class Stream:
    """What is sent over one link. A commit by the host begins it anew."""

    def __init__(self, webcam):
        self.webcam = webcam
        self.link = None
        self.mode = None
        self.number = 0
        self.due = 0.0
        self.frame_id = 0  # toggles with each frame, by which the host tells them apart
        self.commits = 0

    def begin(self, mode):
        self.mode = mode
        self.number = 0
        self.due = time.monotonic()
        self.commits += 1

    def run(self):
        while self.link.plugged:
            if not self.link.wait_for_transfer(0.05) or self.mode is None:
                continue
            if self.webcam.stalled:
                time.sleep(0.01)
                continue
            self.send_next_frame()

    def send_next_frame(self):
        mode, commits, number = self.mode, self.commits, self.number
        data = self.webcam.pictures.get(mode, number)
        every = self.webcam.truncate_every
        if every and number % every == every - 1:
            data = data[:len(data) // 2]
        time.sleep(max(0.0, self.due - time.monotonic()))
        # A host that fell behind gets the next frame at once, but no burst of missed ones.
        self.due = max(self.due + mode.interval / 1e7, time.monotonic())
        self.send_frame(data, commits)
        if commits == self.commits:
            self.number = number + 1

    def send_frame(self, data, commits):
        """Gives up when the host begins a new stream or the cable is pulled."""
        room = d.PAYLOAD_BYTES - 2
        for start in range(0, len(data), room):
            flags = HEADER_END_OF_HEADER | self.frame_id
            if start + room >= len(data):
                flags |= HEADER_END_OF_FRAME
            payload = d.u8(2, flags) + data[start:start + room]
            while not self.link.send_stream_data(payload):
                if not self.link.plugged or commits != self.commits:
                    return
                self.link.wait_for_transfer(0.05)
        self.frame_id ^= 1
