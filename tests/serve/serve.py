"""A running `ostrel-camera serve` for tests."""
import http.client
import re
import signal
import socket
import subprocess
import time

HANG = 60  # seconds


class Server:
    def __init__(self, program, *options):
        self.process = subprocess.Popen([program, "serve", "--port", "0", *options], stderr=subprocess.PIPE, text=True,
                                        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
        self.said = [self.process.stderr.readline(), self.process.stderr.readline()]
        self.port = int(re.search(r"http://127\.0\.0\.1:(\d+)/", self.said[0]).group(1))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self.process.stderr.close()

    def end(self):
        """By Ctrl-C; answers its exit code."""
        self.process.send_signal(signal.SIGINT)
        return self.process.wait(HANG)

    def ask(self, path="/", headers=None, method="GET"):
        """Status, headers and body."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=HANG)
        try:
            connection.request(method, path, headers=headers or {})
            response = connection.getresponse()
            return response.status, dict(response.getheaders()), response.read()
        finally:
            connection.close()

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), timeout=HANG)

    def look(self):
        """Asks for the live picture; answers the response, to be read with pictures()."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=HANG)
        connection.request("GET", "/stream.mjpeg")
        return connection.getresponse()

    def cpu_seconds(self):
        with open(f"/proc/{self.process.pid}/stat") as stat:
            fields = stat.read().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / 100

    def memory(self):
        """What is resident, in bytes."""
        with open(f"/proc/{self.process.pid}/statm") as statm:
            return int(statm.read().split()[1]) * 4096

    def threads(self):
        """Their names."""
        import os
        names = []
        for thread in os.listdir(f"/proc/{self.process.pid}/task"):
            try:
                with open(f"/proc/{self.process.pid}/task/{thread}/comm") as comm:
                    names.append(comm.read().strip())
            except FileNotFoundError:
                pass
        return names


def pictures(response):
    """The JPEG pictures of a live stream, as they come."""
    assert response.readline() == b"--picture\r\n"
    while True:
        length = None
        while True:
            line = response.readline()
            if not line:
                return
            if line == b"\r\n":
                break
            if line.startswith(b"Content-Length: "):
                length = int(line[16:])
        picture = response.read(length)
        assert response.read(13) == b"\r\n--picture\r\n"
        yield picture


def wait_for(condition, what):
    end = time.monotonic() + HANG
    while not condition():
        assert time.monotonic() < end, what
        time.sleep(0.02)
