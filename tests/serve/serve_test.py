"""serve as browsers, scripts and hostile programs of the same machine meet it: serve_test.py PROGRAM"""
import json
import random
import socket
import sys
import threading
import unittest

from serve import HANG, Server, pictures, wait_for

PROGRAM = sys.argv.pop(1)


def is_jpeg(data):
    return data[:2] == b"\xff\xd8" and data[-2:] == b"\xff\xd9"


def captures(server):
    """Whether a camera delivers frames."""
    return any(name.startswith("ostrel-virtual") for name in server.threads())


class ServeTest(unittest.TestCase):
    def setUp(self):
        self.server = Server(PROGRAM, "--test-camera", "--size", "ld")
        self.addCleanup(self.server.__exit__)

    def test_says_where_it_is_and_who_can_look(self):
        self.assertEqual(self.server.said[0],
                         f"serving Test pattern at http://127.0.0.1:{self.server.port}/, Ctrl-C ends it\n")
        self.assertTrue(self.server.said[1].startswith("every user of this machine can look; "), self.server.said[1])
        self.assertEqual(self.server.end(), 0)

    def test_the_page_has_all_that_it_shows_and_the_headers_that_keep_others_out(self):
        status, headers, body = self.server.ask("/")
        self.assertEqual(status, 200)
        self.assertEqual(headers["Content-Type"], "text/html; charset=utf-8")
        self.assertEqual(headers["Cache-Control"], "no-store")
        self.assertEqual(headers["Cross-Origin-Resource-Policy"], "same-origin")
        self.assertIn("frame-ancestors 'none'", headers["Content-Security-Policy"])
        self.assertNotIn("Access-Control-Allow-Origin", headers)
        self.assertIn(b"<h1>Test pattern</h1>", body)
        for path, kind in (("/style.css", "text/css"), ("/page.js", "text/javascript")):
            self.assertIn(path[1:].encode(), body)
            status, headers, _ = self.server.ask(path)
            self.assertEqual(status, 200)
            self.assertTrue(headers["Content-Type"].startswith(kind))
        self.assertIn(b"snapshot.jpg", body)
        self.assertEqual(self.server.ask("/etc/passwd")[0], 404)
        self.assertEqual(self.server.ask("/..%2f..%2fetc/passwd")[0], 404)

    def test_the_live_picture_comes_one_jpeg_after_the_other(self):
        response = self.server.look()
        self.assertEqual(response.getheader("Content-Type"), "multipart/x-mixed-replace; boundary=picture")
        stream = pictures(response)
        seen = [next(stream) for _ in range(20)]
        self.assertTrue(all(is_jpeg(picture) for picture in seen))
        self.assertGreaterEqual(len(set(seen)), 19)
        status = json.loads(self.server.ask("/status.json")[2])
        self.assertEqual((status["width"], status["height"], status["shown"]), (320, 240, True))
        self.assertGreaterEqual(status["number"], 20)
        self.assertGreater(status["rate"], 0)
        self.assertLess(status["rate"], 61)
        self.assertGreaterEqual(status["age"], 0)
        self.assertLess(status["age"], 10000)
        response.close()

    def test_a_snapshot_is_a_new_picture(self):
        status, headers, first = self.server.ask("/snapshot.jpg")
        self.assertEqual((status, headers["Content-Type"]), (200, "image/jpeg"))
        self.assertTrue(is_jpeg(first))
        wait_for(lambda: self.server.ask("/snapshot.jpg")[2] != first, "another picture")

    def test_nothing_is_captured_while_nobody_looks(self):
        self.server.ask("/")
        self.assertFalse(json.loads(self.server.ask("/status.json")[2])["shown"])
        for path in ("/stream.mjpeg", "/snapshot.jpg"):
            self.assertEqual(self.server.ask(path, method="HEAD")[0], 200)
        self.assertFalse(captures(self.server))
        response = self.server.look()
        stream = pictures(response)
        next(stream)
        self.assertTrue(captures(self.server))
        stream.close()
        response.close()
        wait_for(lambda: not captures(self.server), "the end of the capture")
        self.assertFalse(json.loads(self.server.ask("/status.json")[2])["shown"])
        self.assertTrue(is_jpeg(self.server.ask("/snapshot.jpg")[2]))  # and it starts again

    def test_only_its_own_names_are_answered(self):
        port = self.server.port
        for host in (f"localhost:{port}", f"127.0.0.1:{port}", f"[::1]:{port}", f"LOCALHOST:{port}"):
            self.assertEqual(self.server.ask("/", {"Host": host})[0], 200, host)
        for host in ("localhost", "127.0.0.1", f"localhost:{port + 1}", f"evil.example:{port}", "", f"localhost.:{port}",
                     f"localhost:{port}@evil.example", f"127.0.0.1.evil.example:{port}", f"127.0.0.2:{port}",
                     f" localhost:{port}x", f"localhost:{port}, evil.example"):
            for path in ("/", "/stream.mjpeg", "/snapshot.jpg", "/status.json", "/nothing"):
                self.assertEqual(self.server.ask(path, {"Host": host})[0], 403, host)
        self.assertFalse(captures(self.server))

    def test_pages_of_other_sites_are_refused(self):
        for site, status in (("cross-site", 403), ("Cross-Site", 403), ("same-origin", 200), ("none", 200)):
            self.assertEqual(self.server.ask("/snapshot.jpg", {"Sec-Fetch-Site": site})[0], status, site)

    def test_nothing_can_be_changed(self):
        for method in ("POST", "PUT", "DELETE", "OPTIONS", "PATCH", "FOO"):
            status, headers, _ = self.server.ask("/", method=method)
            self.assertEqual((status, headers["Allow"]), (405, "GET, HEAD"), method)

    def test_it_listens_on_this_machine_only(self):
        with open("/proc/net/tcp") as table:
            own = [line.split()[1] for line in table if line.split()[1].endswith(f":{self.server.port:04X}")
                   and line.split()[3] == "0A"]
        self.assertEqual(own, [f"0100007F:{self.server.port:04X}"])
        with open("/proc/net/tcp6") as table:
            self.assertFalse([line for line in table if line.split()[1].endswith(f":{self.server.port:04X}")
                              and line.split()[3] == "0A"])

    def test_a_port_that_is_taken_is_said(self):
        import subprocess
        other = subprocess.run([PROGRAM, "serve", "--test-camera", "--port", str(self.server.port)],
                               capture_output=True, text=True, timeout=HANG)
        self.assertEqual(other.returncode, 5)
        self.assertEqual(other.stderr, f"ostrel-camera: cannot listen on 127.0.0.1:{self.server.port}: Address already in "
                                       "use: choose another --port\n")

    def test_who_reads_nothing_holds_nobody_up(self):
        idle = []
        for _ in range(5):
            client = self.server.connect()
            client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
            client.sendall(f"GET /stream.mjpeg HTTP/1.1\r\nHost: localhost:{self.server.port}\r\n\r\n".encode())
            idle.append(client)
        counts = [0] * 15
        failures = []

        def watch(index):
            try:
                response = self.server.look()
                stream = pictures(response)
                for picture in stream:
                    assert is_jpeg(picture)
                    counts[index] += 1
                    if counts[index] == 60:
                        break
                stream.close()
                response.close()
            except Exception as error:  # told by the thread that waits
                failures.append(error)

        threads = [threading.Thread(target=watch, args=(index,)) for index in range(15)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(HANG)
        self.assertEqual(failures, [])
        self.assertEqual(counts, [60] * 15)
        for client in idle:
            client.close()
        self.assertEqual(self.server.end(), 0)

    def test_it_ends_while_clients_look_and_do_not_read(self):
        clients = [self.server.look() for _ in range(3)]
        next(pictures(clients[0]))
        self.assertEqual(self.server.end(), 0)

    def test_malformed_requests_harm_nobody(self):
        stream = pictures(self.server.look())
        next(stream)
        before = self.server.memory()
        random.seed(20261122)
        good = f"GET / HTTP/1.1\r\nHost: localhost:{self.server.port}\r\n".encode()

        def malformed():
            kind = random.randrange(7)
            if kind == 0:
                return random.randbytes(random.randrange(1, 400)) + b"\r\n\r\n"
            if kind == 1:  # a good one with bytes that were changed
                data = bytearray(good + b"\r\n")
                for _ in range(random.randrange(1, 6)):
                    data[random.randrange(len(data))] = random.randrange(256)
                return bytes(data)
            if kind == 2:
                return good + b"X: " + b"a" * random.randrange(100000) + b"\r\n\r\n"
            if kind == 3:
                return good + b"Content-Length: " + random.choice([b"-1", b"99999999999999999999", b"x", b"5"]) + b"\r\n\r\n"
            if kind == 4:
                return good + b"Transfer-Encoding: chunked\r\n\r\n" + random.choice([b"zz\r\n", b"ffffffffffffffffff\r\n"])
            if kind == 5:
                return b"GET " + b"/" * random.randrange(1, 70000) + b" HTTP/1.1\r\n\r\n"
            return good * random.randrange(2, 20) + b"\r\n"

        for _ in range(10000):
            with self.server.connect() as client:
                try:
                    client.sendall(malformed())
                    client.shutdown(socket.SHUT_WR)
                    client.settimeout(0.05)  # what has no end is not answered
                    while client.recv(65536):
                        pass
                except OSError:
                    pass
        self.assertEqual(self.server.ask("/")[0], 200)
        self.assertTrue(is_jpeg(next(stream)))
        self.assertLess(self.server.memory() - before, 20_000_000)
        self.assertEqual(self.server.end(), 0)

    def test_half_requests_that_stay_open_are_given_up(self):
        half = []
        for at in range(100):  # more than it takes at a time
            client = self.server.connect()
            try:
                client.sendall([b"", b"GET", b"GET / HTTP/1.1\r\nHost: local", b"GET / HTTP/1.1\r\nX: y\r\n"][at % 4])
            except ConnectionError:
                pass
            half.append(client)

        def answers():
            try:
                return self.server.ask("/")[0] == 200
            except OSError:
                return False

        wait_for(answers, "an answer once the others have been given up")
        for client in half:
            client.close()


class FailingCameraTest(unittest.TestCase):
    def test_names_are_text_wherever_they_stand(self):
        import os
        import tempfile
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "<img src=x onerror='alert(1)'>&\".y4m")
            with open(path, "wb") as video:
                video.write(b"YUV4MPEG2 W16 H16 F10:1\n" + (b"FRAME\n" + bytes(16 * 16 * 3 // 2)) * 3)
            with Server(PROGRAM, "--play", path) as server:
                body = server.ask("/")[2]
                self.assertIn(b"&lt;img src=x onerror=&#39;alert(1)&#39;&gt;&amp;&quot;", body)
                self.assertNotIn(b"<img src=x", body)

    def test_a_camera_without_frames_is_said_and_tried_again(self):
        import os
        import tempfile
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "slow.y4m")
            with open(path, "wb") as video:  # its second frame comes after a hundred seconds
                video.write(b"YUV4MPEG2 W16 H16 F1:100\n" + (b"FRAME\n" + bytes(16 * 16 * 3 // 2)) * 2)
            with Server(PROGRAM, "--play", path, "--size", "16x16", "--timeout", "1") as server:
                stream = pictures(server.look())
                self.assertTrue(is_jpeg(next(stream)))
                self.assertEqual([picture for picture in stream if not is_jpeg(picture)], [])  # until it ends
                why = json.loads(server.ask("/status.json")[2])["why"]
                self.assertTrue(why.startswith("no frame from 'slow.y4m' within 1 s: "), why)
                self.assertTrue(is_jpeg(server.ask("/snapshot.jpg")[2]))
                self.assertEqual(server.end(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2, warnings="ignore")
