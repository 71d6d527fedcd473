"""Drives a headless Chromium by the WebDriver protocol, for the tests of pages."""
import base64, contextlib, json, os, pathlib, shutil, subprocess, tempfile, time, urllib.request

KEYS = {"Enter": "\ue007", "Backspace": "\ue003", "Escape": "\ue00c", "PageUp": "\ue00e", "PageDown": "\ue00f", "End": "\ue010", "Home": "\ue011",
        "Delete": "\ue017", "Tab": "\ue004", "shift": "\ue008", "control": "\ue009", "alt": "\ue00a", "up": "\ue013", "down": "\ue015", "left": "\ue012", "right": "\ue014"}


def installed():
    return bool(shutil.which("chromium") and shutil.which("chromedriver"))


class Browser:
    """A Chromium of its own. STATE is a script that returns what state() is to be of the page."""

    STATE = "return document.readyState"


    def __init__(self, width, height, *arguments):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL, text=True)
        for line in self.driver.stdout:
            if "started successfully on port" in line:
                self.address = "http://127.0.0.1:" + line.split()[-1].rstrip(".")
                break
        options = {"args": ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--remote-debugging-pipe",
                            f"--user-data-dir={self.profile.name}", f"--window-size={width},{height}", *arguments],
                   "binary": shutil.which("chromium")}
        self.session = ""
        made = self.call("POST", "/session", {"capabilities": {"alwaysMatch": {
            "goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}}})
        self.session = "/session/" + made["sessionId"]

    def close(self):
        with contextlib.suppress(OSError):
            self.call("DELETE", "", None)
        self.driver.terminate()
        self.driver.wait()
        self.profile.cleanup()

    def call(self, method, path, body):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.address + self.session + path, data, method=method,
                                         headers={"Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=60) as reply:
                return json.load(reply)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(f"{path}: {error.read().decode()[:400]}") from None

    def open(self, page):
        self.call("POST", "/url", {"url": page})

    def resize(self, width, height, touch=False):
        """The page as wide as this, narrower than a window can be; with fingers in place of a mouse."""
        for command, values in (("setDeviceMetricsOverride", {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": touch}),
                                ("setTouchEmulationEnabled", {"enabled": touch})):
            self.call("POST", "/goog/cdp/execute", {"cmd": "Emulation." + command, "params": values})

    def run(self, script, *arguments):
        return self.call("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def state(self):
        return self.run(self.STATE)

    def act(self, kind, actions, name="keys", **source):
        self.call("POST", "/actions", {"actions": [{"type": kind, "id": name, "actions": actions, **source}]})

    def key(self, *names):
        """Presses a key, the last one, while the others are held."""
        keys = [KEYS.get(name, name) for name in names]
        self.act("key", [{"type": "keyDown", "value": key} for key in keys] + [{"type": "keyUp", "value": key} for key in reversed(keys)])

    def drag(self, begin, end, pointer="mouse", steps=4):
        """Moves from one place of the page to another with the button or the finger down."""
        def at(share):
            return {"type": "pointerMove", "duration": 10, "x": round(begin[0] + (end[0] - begin[0]) * share),
                    "y": round(begin[1] + (end[1] - begin[1]) * share)}
        self.act("pointer", [at(0), {"type": "pointerDown", "button": 0}, *[at((i + 1) / steps) for i in range(steps)],
                             {"type": "pointerUp", "button": 0}], pointer, parameters={"pointerType": pointer})

    def point(self, x, y, pointer):
        self.act("pointer", [{"type": "pointerMove", "x": round(x), "y": round(y), "duration": 0},
                             {"type": "pointerDown", "button": 0}, {"type": "pointerUp", "button": 0}],
                 pointer, parameters={"pointerType": pointer})

    def until(self, what, holds, seconds=15):
        """Waits until a condition on the state holds."""
        end = time.monotonic() + seconds
        while True:
            state = self.state()
            if holds(state):
                return state
            assert time.monotonic() < end, f"{what}: {state}"
            time.sleep(0.05)

    def screenshot(self, name):
        folder = os.environ.get("NIFIKRAL_SCREENSHOTS")
        if folder:
            picture = base64.b64decode(self.call("GET", "/screenshot", None))
            pathlib.Path(folder, name + ".png").write_bytes(picture)

    def check_console(self):
        entries = self.call("POST", "/se/log", {"type": "browser"})
        assert not entries, f"the console says {entries}"
