"""The cable: USB/IP between the webcam and this machine's own virtual USB controller (module vhci-hcd)."""
import socket
import struct
import threading
import time
from pathlib import Path

CONTROLLER = Path('/sys/devices/platform/vhci_hcd.0')
PORT_FREE = 4  # in the controller's status file
HIGH_SPEED = 3
DEVICE_ID = 0x10001

CMD_SUBMIT, CMD_UNLINK, RET_SUBMIT, RET_UNLINK = 1, 2, 3, 4
COMMAND = struct.Struct('>IIIII IiiiI 8s')  # command, sequence, device, direction, endpoint; then by command
STALLED, UNLINKED = -32, -104


def port_is_free(port):
    for line in (CONTROLLER / 'status').read_text().splitlines():
        fields = line.split()  # hub port state ...
        if len(fields) > 2 and fields[0] == 'hs' and int(fields[1]) == port:
            return int(fields[2]) == PORT_FREE
    return False


class Link:
    """One plugged cable. Thread-safe; a new plugging-in needs a new Link.

    answer(setup, data) serves the control endpoint. Transfers that wait for stream data are taken one at a time by
    send_stream_data().
    """

    def __init__(self, answer, port):
        self.answer = answer
        self.port = port
        self.plugged = True
        self.waiting = []  # (sequence, length) of the host's transfers on the stream endpoint
        self.changed = threading.Condition()
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket = ours
        while not port_is_free(port):  # the controller clears a port some time after unplugging
            time.sleep(0.01)
        (CONTROLLER / 'attach').write_text(f'{port} {theirs.fileno()} {DEVICE_ID + port} {HIGH_SPEED}')
        theirs.close()  # the kernel holds it
        threading.Thread(target=self.serve, daemon=True).start()

    def unplug(self):
        with self.changed:
            self.plugged = False
            self.changed.notify_all()
        (CONTROLLER / 'detach').write_text(str(self.port))

    def wait_for_transfer(self, seconds):
        """Whether the host asks for stream data."""
        with self.changed:
            self.changed.wait_for(lambda: self.waiting or not self.plugged, seconds)
            return self.plugged and bool(self.waiting)

    def send_stream_data(self, data):
        """Fills the host's oldest waiting transfer; False when none is there."""
        with self.changed:
            if not self.plugged or not self.waiting:
                return False
            sequence, length = self.waiting.pop(0)
            self.complete(sequence, 0, data[:length])
            return True

    def complete(self, sequence, status, data=b'', length=None):
        head = struct.pack('>IIIII iiiii 8x', RET_SUBMIT, sequence, 0, 0, 0,
                           status, len(data) if length is None else length, 0, 0, 0)
        self.write(head + data)

    def write(self, message):
        try:
            self.socket.sendall(message)
        except OSError:
            self.plugged = False

    def read(self, count):
        data = b''
        while len(data) < count:
            part = self.socket.recv(count - len(data))
            if not part:
                raise EOFError
            data += part
        return data

    def serve(self):
        try:
            while True:
                self.serve_one()
        except (EOFError, OSError):  # unplugged
            with self.changed:
                self.plugged = False
                self.changed.notify_all()
            self.socket.close()

    def serve_one(self):
        command, sequence, _, is_in, endpoint, first, length, *_, setup = COMMAND.unpack(self.read(COMMAND.size))
        if command == CMD_UNLINK:
            self.unlink(sequence, first)
        elif command == CMD_SUBMIT:
            data = b'' if is_in or length <= 0 else self.read(length)
            if endpoint == 0:
                self.submit_control(sequence, is_in, length, setup, data)
            else:
                with self.changed:
                    self.waiting.append((sequence, length))
                    self.changed.notify_all()

    def submit_control(self, sequence, is_in, length, setup, data):
        answer = self.answer(setup, data)
        with self.changed:
            if answer is None:
                self.complete(sequence, STALLED)
            elif is_in:
                self.complete(sequence, 0, answer[:length])
            else:
                self.complete(sequence, 0, length=length)

    def unlink(self, sequence, target):
        with self.changed:
            found = any(waiting[0] == target for waiting in self.waiting)
            self.waiting = [waiting for waiting in self.waiting if waiting[0] != target]
            self.write(struct.pack('>IIIII i 24x', RET_UNLINK, sequence, 0, 0, 0, UNLINKED if found else 0))
