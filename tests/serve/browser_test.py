"""The page of serve in a browser: browser_test.py PROGRAM CHROMIUM COUNTER SCREENSHOT

The live picture moves, the lines under it say what is shown, and the page is kept as a picture."""
import base64
import json
import os
import subprocess
import sys
import tempfile
import time

from serve import HANG, Server

PROGRAM, CHROMIUM, COUNTER, SCREENSHOT = sys.argv[1:]

# What the live picture shows now, as PNG.
SHOWN = """(() => {
    const picture = document.querySelector('img');
    const canvas = document.createElement('canvas');
    canvas.width = picture.naturalWidth;
    canvas.height = picture.naturalHeight;
    if (!canvas.width)
        return '';
    canvas.getContext('2d').drawImage(picture, 0, 0);
    return canvas.toDataURL('image/png');
})()"""


class Browser:
    """Spoken to in JSON with a NUL behind each message, by the descriptors 3 and 4."""

    def __init__(self, folder):
        commands, self.commands = os.pipe()
        self.answers, answers = os.pipe()
        # As a shell does, so that the two have these numbers whatever else is open.
        script = f'exec 3<&{commands} 4>&{answers}; exec "$@"'
        self.process = subprocess.Popen(
            ["bash", "-c", script, "bash", CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu",
             "--disable-dev-shm-usage", "--remote-debugging-pipe", f"--user-data-dir={folder}", "--window-size=672,690",
             "about:blank"], pass_fds=(commands, answers), stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self.number = 0
        self.rest = b""
        self.session = None

    def ask(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        while True:
            while b"\0" not in self.rest:
                more = os.read(self.answers, 1 << 20)
                if not more:
                    raise RuntimeError("the browser has ended")
                self.rest += more
            answer, _, self.rest = self.rest.partition(b"\0")
            answer = json.loads(answer)
            if answer.get("id") == self.number:
                return answer["result"]

    def open(self, url):
        target = self.ask("Target.createTarget", url=url)["targetId"]
        self.session = self.ask("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]

    def run(self, script):
        return self.ask("Runtime.evaluate", expression=script)["result"].get("value")

    def end(self):
        self.session = None
        try:
            self.ask("Browser.close")
            self.process.wait(HANG)
        finally:
            self.process.kill()
            self.process.wait()


def counter(browser, folder):
    shown = browser.run(SHOWN)
    if not shown:
        return 0
    path = os.path.join(folder, "shown.png")
    with open(path, "wb") as file:
        file.write(base64.b64decode(shown.partition(",")[2]))
    return int(subprocess.check_output([COUNTER, path]))


def until(condition, what):
    end = time.monotonic() + HANG
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"not within {HANG} s: {what}")
        time.sleep(0.2)


with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder, Server(PROGRAM, "--test-camera") as server:
    browser = Browser(os.path.join(folder, "profile"))
    try:
        browser.open(f"http://127.0.0.1:{server.port}/")
        until(lambda: counter(browser, folder) > 0, "a picture")
        first = counter(browser, folder)
        until(lambda: counter(browser, folder) > first + 30, "a picture that moves")
        until(lambda: "frames a second" in (browser.run("document.getElementById('rate').textContent") or ""), "the rate")
        assert browser.run("document.getElementById('size').textContent") == "640 × 480"
        assert browser.run("document.querySelector('h1').textContent") == "Test pattern"
        age = browser.run("document.getElementById('age').textContent")
        assert age.endswith(" ms old"), age
        with open(SCREENSHOT, "wb") as file:
            file.write(base64.b64decode(browser.ask("Page.captureScreenshot", format="png")["data"]))
        print(f"the counter went from {first} to {counter(browser, folder)}; the page is in {SCREENSHOT}")
    finally:
        browser.end()
