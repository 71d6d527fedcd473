"""A studio that runs for a test, in a folder with a few files, and what a page would ask of it."""
import http.client
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile

from jsonschema import Draft202012Validator

SCHEMA = json.loads((pathlib.Path(__file__).resolve().parents[3] / "docs/studio.schema.json").read_text())
PROGRAM = os.environ["NIFIKRAL_PROGRAM"]


def make_samples(folder):
    make = ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i"]
    subprocess.run([*make, "testsrc2=s=320x180:r=25:d=4", "-g", "30", "-pix_fmt", "yuv420p", "-c:v", "libx264",
                    str(folder / "film.mp4")], check=True)
    for name, source in (("a.png", "testsrc=s=640x400"), ("b 2.png", "smptebars=s=400x300")):
        subprocess.run([*make, source, "-frames:v", "1", str(folder / name)], check=True)


def fits(method, path, body):
    """Whether a body is what the published schema says of its request."""
    own = {"$defs": SCHEMA["$defs"], **SCHEMA["properties"][f"{method} {path.split('?')[0]}"]}
    return Draft202012Validator(own).is_valid(body)


class Studio:
    def __init__(self, *options, **running):
        self.outside = pathlib.Path(tempfile.mkdtemp())
        self.folder = self.outside / "own"
        self.folder.mkdir()
        make_samples(self.folder)
        self.run = subprocess.Popen([PROGRAM, "studio", str(self.folder), *options], stdout=subprocess.PIPE, text=True, **running)
        line = self.run.stdout.readline()
        self.port, self.token = re.search(r"http://127\.0\.0\.1:(\d+)/([0-9a-f]{32})/", line).groups()
        self.port = int(self.port)

    def end(self):
        if self.run.poll() is None:
            self.run.send_signal(signal.SIGINT)
        code = self.run.wait(timeout=20)
        self.run.stdout.close()
        return code

    def remove(self):
        shutil.rmtree(self.outside, ignore_errors=True)

    def raw(self, method, target, body=None, headers=None, timeout=60):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=timeout)
        try:
            connection.request(method, target, body, headers or {})
            answer = connection.getresponse()
            return answer.status, answer.read(), answer.headers
        finally:
            connection.close()

    def ask(self, method, path, body=None, **headers):
        headers = {name.replace("_", "-"): value for name, value in headers.items()}
        if body is not None:
            headers["Content-Type"] = "application/json"
        answer = self.raw(method, f"/{self.token}/{path}", None if body is None else json.dumps(body), headers)
        assert body is None or answer[0] >= 300 or fits(method, path, body), ("no such request is published", path, body)
        return answer

    def get(self, path):
        status, body, _ = self.ask("GET", path)
        assert status == 200, (path, status, body)
        return json.loads(body)

    def post(self, path, body):
        status, answer, _ = self.ask("POST", path, body)
        assert status in (200, 201), (path, status, answer)
        return json.loads(answer)

    def still(self, **wish):
        wish.setdefault("view", "test")
        wish.setdefault("effects", [])
        status, body, headers = self.ask("POST", "api/still", wish)
        assert status == 200, (wish, status, body)
        return body, headers
