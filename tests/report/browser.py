"""A headless browser, driven over two pipes, with nothing but Python's own library."""

import base64
import json
import os
import shutil
import subprocess
import tempfile


class Browser:
    """Chromium with a profile of its own, gone when this is closed."""

    def __init__(self, program):
        self._profile = tempfile.mkdtemp(prefix="kshmi-browser-")
        to_browser, self._out = os.pipe()
        self._in, from_browser = os.pipe()
        options = ["--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--remote-debugging-pipe",
                   "--no-first-run", "--disable-dev-shm-usage", "--disable-extensions", "--disable-background-networking",
                   "--user-data-dir=" + self._profile]
        # The browser reads from descriptor 3 and writes to 4.
        self._process = subprocess.Popen(
            ["sh", "-c", f'exec "$0" "$@" 3<&{to_browser} 4>&{from_browser}', program, *options, "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            pass_fds=(to_browser, from_browser))
        os.close(to_browser)
        os.close(from_browser)
        self._rest = b""
        self._number = 0
        self.events = []

    def close(self):
        try:
            self.call("Browser.close")
            self._process.wait(10)
        except (OSError, EOFError, subprocess.TimeoutExpired):
            self._process.kill()
            self._process.wait()
        os.close(self._out)
        os.close(self._in)
        shutil.rmtree(self._profile, ignore_errors=True)

    def _receive(self):
        while b"\0" not in self._rest:
            piece = os.read(self._in, 1 << 20)
            if not piece:
                raise EOFError("the browser is gone")
            self._rest += piece
        message, self._rest = self._rest.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, session=None, **parameters):
        """What the browser answers; events in between are kept."""
        self._number += 1
        request = {"id": self._number, "method": method, "params": parameters}
        if session:
            request["sessionId"] = session
        data = json.dumps(request).encode() + b"\0"
        while data:
            data = data[os.write(self._out, data):]
        while True:
            message = self._receive()
            if message.get("id") == self._number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            self.events.append(message)

    def wait_for(self, method):
        while not any(event.get("method") == method for event in self.events):
            self.events.append(self._receive())

    def open(self, path, width, height, dark):
        """A page of that size, in CSS pixels, once it is loaded."""
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        page = Page(self, target, session)
        self.events = []
        for domain in ("Page", "Runtime", "Log", "Network"):
            page.call(domain + ".enable")
        page.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                  mobile=width < 600)
        page.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        answer = page.call("Page.navigate", url="file://" + os.path.abspath(path))
        if "errorText" in answer:
            raise RuntimeError(f"{path}: {answer['errorText']}")
        self.wait_for("Page.loadEventFired")
        return page


class Page:
    def __init__(self, browser, target, session):
        self._browser = browser
        self._target = target
        self._session = session

    def call(self, method, **parameters):
        return self._browser.call(method, self._session, **parameters)

    def evaluate(self, script):
        result = self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"].get("description", "failed"))
        return result["result"].get("value")

    def press(self, key):
        for kind in ("keyDown", "keyUp"):
            text = key if len(key) == 1 and kind == "keyDown" else ""
            self.call("Input.dispatchKeyEvent", type=kind, key=key, text=text,
                      windowsVirtualKeyCode={"Tab": 9, "Escape": 27, "Enter": 13}.get(key, 0))

    def screenshot(self, path, whole=False):
        picture = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)
        with open(path, "wb") as file:
            file.write(base64.b64decode(picture["data"]))

    def said(self):
        """What the console has been told, and what was asked of the network."""
        lines = []
        for event in self._browser.events:
            method, what = event.get("method"), event.get("params", {})
            if method == "Log.entryAdded":
                lines.append(what["entry"]["text"])
            elif method == "Runtime.consoleAPICalled":
                lines.append(str(what["args"]))
            elif method == "Runtime.exceptionThrown":
                lines.append(str(what["exceptionDetails"]))
            elif method == "Network.requestWillBeSent" and not what["request"]["url"].startswith(("file:", "data:")):
                lines.append("asks for " + what["request"]["url"])
        return lines

    def close(self):
        self._browser.call("Target.closeTarget", targetId=self._target)
