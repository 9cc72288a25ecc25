"""A page in Chromium without a window, over the pipes of its debugging
protocol: nothing but the standard library is needed."""
import base64
import json
import os
import shutil
import subprocess
import tempfile


def find():
    return shutil.which("chromium") or shutil.which("chromium-browser")


class Page:
    """Open at one address; `errors` and `requests` collect what it does."""

    def __init__(self, url, width=1280, height=900, setup=()):
        self.errors, self.requests, self.number = [], [], 0
        self.rest = b""
        self.home = tempfile.mkdtemp()
        to_read, self.to = os.pipe()
        self.out, to_write = os.pipe()
        # As root there is no sandbox, and in containers little shared memory.
        command = (f"exec {find()} --headless --no-sandbox --disable-gpu "
                   "--disable-dev-shm-usage --no-first-run "
                   f"--user-data-dir={self.home} "
                   f"--remote-debugging-pipe about:blank 3<&{to_read} 4>&{to_write}")
        self.process = subprocess.Popen(
            ["sh", "-c", command], pass_fds=(to_read, to_write),
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            env={**os.environ, "HOME": self.home})
        os.close(to_read)
        os.close(to_write)
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")
        self.session = self.call("Target.attachToTarget", flatten=True,
                                 targetId=target["targetId"])["sessionId"]
        for domain in "Page", "Runtime", "Log", "Network":
            self.call(domain + ".enable")
        for method, values in setup:
            self.call(method, **values)
        self.call("Emulation.setDeviceMetricsOverride", width=width,
                  height=height, deviceScaleFactor=1, mobile=False)
        self.loaded = False
        self.call("Page.navigate", url=url)
        while not self.loaded:
            self.receive()

    def call(self, method, **params):
        self.number += 1
        message = {"id": self.number, "method": method, "params": params}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.to, json.dumps(message).encode() + b"\0")
        number = self.number
        while True:
            answer = self.receive()
            if answer.get("id") == number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def receive(self):
        while b"\0" not in self.rest:
            read = os.read(self.out, 1 << 20)
            if not read:
                raise RuntimeError("the browser has ended")
            self.rest += read
        text, self.rest = self.rest.split(b"\0", 1)
        message = json.loads(text)
        method, params = message.get("method"), message.get("params", {})
        if method == "Page.loadEventFired":
            self.loaded = True
        elif method == "Runtime.exceptionThrown":
            details = params["exceptionDetails"]
            self.errors.append(details.get("exception", {}).get(
                "description", details["text"]))
        elif method == "Runtime.consoleAPICalled":
            self.errors.append(str(params["args"]))
        elif method == "Log.entryAdded":
            self.errors.append(params["entry"]["text"])
        elif method == "Network.requestWillBeSent":
            self.requests.append(params["request"]["url"])
        return message

    def run(self, script):
        """The value of an expression in the page."""
        result = self.call("Runtime.evaluate", expression=script,
                           returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"]
                               ["description"] + "\nin " + script)
        return result["result"].get("value")

    def key(self, name, code, text=""):
        for kind in "keyDown", "keyUp":
            self.call("Input.dispatchKeyEvent", type=kind, key=name, code=name,
                      windowsVirtualKeyCode=code,
                      text=text if kind == "keyDown" else "")

    def screenshot(self, file, whole=False):
        data = self.call("Page.captureScreenshot", captureBeyondViewport=whole)
        with open(file, "wb") as out:
            out.write(base64.b64decode(data["data"]))

    def close(self):
        self.session = None
        try:
            self.call("Browser.close")
        except (RuntimeError, OSError):
            pass
        self.process.wait()
        os.close(self.to)
        os.close(self.out)
        shutil.rmtree(self.home, ignore_errors=True)
