#!/usr/bin/env python3
"""Attacks a running studio: every attack is refused or bounded, and the studio goes on. Usage: as studio_test.py"""
import concurrent.futures
import json
import os
import resource
import shutil
import socket
import subprocess
import threading
import time
import unittest

from jsonschema import Draft202012Validator
from studio import SCHEMA, Studio, fits


class AttackTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.studio = Studio()
        (cls.studio.outside / "secret.json").write_text('"SECRET"')
        (cls.studio.outside / "secret.png").write_bytes((cls.studio.folder / "a.png").read_bytes())
        os.symlink("../secret.json", cls.studio.folder / "link.json")
        os.symlink("..", cls.studio.folder / "up")

    @classmethod
    def tearDownClass(cls):
        cls.studio.end()
        cls.studio.remove()

    def tearDown(self):
        self.assertEqual(self.studio.ask("GET", "api/studio")[0], 200)

    def test_refuses_whoever_is_not_its_page(self):
        host = f"127.0.0.1:{self.studio.port}"
        target = f"/{self.studio.token}/api/studio"
        self.assertEqual(self.studio.raw("GET", target, headers={"Origin": "http://" + host})[0], 200)
        for wrong in ("/api/studio", "/", "", "/" + "0" * 32 + "/api/studio", target[:30] + "/api/studio"):
            self.assertEqual(self.studio.raw("GET", wrong or "/x")[0], 403, wrong)
        for headers in ({"Origin": "http://example.org"}, {"Origin": "null"}, {"Host": "example.org"},
                        {"Host": f"evil.example:{self.studio.port}"}, {"Host": "127.0.0.1"},
                        {"Sec-Fetch-Site": "cross-site"}, {"Origin": f"https://{host}"}):
            status, body, answer = self.studio.raw("GET", target, headers=headers)
            self.assertEqual(status, 403, headers)
            self.assertEqual(answer["X-Content-Type-Options"], "nosniff")
            self.assertIn("default-src 'none'", answer["Content-Security-Policy"])
        # A page elsewhere can send forms and texts, but no JSON, without being asked who it is.
        status = self.studio.raw("POST", f"/{self.studio.token}/api/jobs", "{}", {"Content-Type": "text/plain"})[0]
        self.assertEqual(status, 415)

    def test_stays_within_its_folder(self):
        outside = self.studio.outside
        paths = ["../secret.json", "%2e%2e/secret.json", "%2e%2e%2fsecret.json", "%252e%252e%252fsecret.json",
                 "..%5csecret.json", "own/../../secret.json", f"{outside}/secret.json", f"%2f{outside}/secret.json",
                 "link.json", "up/secret.json", "a.png%00.json", "%00", "..%00/secret.json", "file:../secret.json",
                 "concat:../secret.json", "%c0%ae%c0%ae/secret.json", "a/" * 3000 + "x.json"]
        for path in paths:
            for what in ("file", "facts", "thumb", "folder"):
                for name in (path, path.replace(".json", ".png")):
                    status, body, _ = self.studio.ask("GET", f"api/{what}?path={name}")
                    self.assertGreaterEqual(status, 400, (what, name, body[:80]))
                    self.assertNotIn(b"SECRET", body)
            self.studio.ask("PUT", f"api/file?path={path}", {"text": '"WRITTEN"'}, If_None_Match="*")
            self.assertGreaterEqual(self.studio.raw("GET", f"/{self.studio.token}/{path}")[0], 400, path)
        for path in ("../secret.png", f"{outside}/secret.png", "up/secret.png"):
            for body in ({"path": path, "view": "v", "effects": []},
                         {"path": "a.png", "view": "v", "effects": ["gray:inside=" + path]},
                         {"path": "a.png", "view": "v", "effects": [{"name": "gray", "outside": path}]}):
                self.assertGreaterEqual(self.studio.ask("POST", "api/still", body)[0], 400, body)
            for output in ("../out.png", f"{outside}/out.png", "up/out.png"):
                job = {"kind": "apply", "input": "a.png", "output": output, "effects": ["gray"]}
                self.assertGreaterEqual(self.studio.ask("POST", "api/jobs", job)[0], 400, output)
            menu = {"template": "menu_travel", "project": {"width": 64, "height": 64, "additionSourcePaths": [path]}}
            self.assertEqual(self.studio.ask("POST", "api/menu/frame", dict(menu, view="v", frame=0))[0], 403)
            disc = {"project": {"films": [{"title": "x", "path": path}]}}
            self.assertEqual(self.studio.ask("POST", "api/disc/check", disc)[0], 403)
        self.assertEqual(sorted(os.listdir(outside)), ["own", "secret.json", "secret.png"])

    def test_no_word_of_a_job_becomes_an_option(self):
        (self.studio.folder / "-y").write_bytes((self.studio.folder / "a.png").read_bytes())
        for name in ("-y", "-o.png"):
            line = self.studio.post("api/command", {"kind": "apply", "input": "-y", "output": name, "effects": ["gray"]})
            self.assertEqual(line["argv"][2:4], ["./-y", "./" + name])
        line = self.studio.post("api/command", {"kind": "title", "text": "--help", "input": "a.png", "output": "t.png",
                                                "face": "-q; touch x"})
        self.assertEqual(line["argv"][-4:], ["--", "--help", "a.png", "t.png"])
        self.assertIn("'--face=-q; touch x'", line["line"])

    def test_refuses_what_is_no_request(self):
        for body in ("", "{", "[]", "null", '{"view": 5}', '{"view":"v","path":{}}', "\0", "[" * 100000,
                     '{"a":' * 40 + "1" + "}" * 40, '{"view":"v","path":"a.png","effects":"gray"}',
                     '{"view":"v","path":"a.png","width":1e9}', '{"view":"v","path":"a.png","crop":[0,0,9999,1]}',
                     '{"view":"v","path":"a.png","crop":[0,0,1e300,1]}',
                     '{"view":"v","path":"a.png","effects":["gray:inside=circle,1"]}', '{"view":"' + "v" * 100 + '"}'):
            status, answer, _ = self.studio.raw("POST", f"/{self.studio.token}/api/still", body,
                                                {"Content-Type": "application/json"})
            self.assertEqual(status, 400, (body[:60], answer))
            self.assertTrue(json.loads(answer)["error"])
        Draft202012Validator.check_schema(SCHEMA)
        for path, body in (("still", {"view": "v"}), ("still", {"view": "v" * 65, "path": "a.png"}), ("still", []),
                           ("still", {"view": "v", "path": "../a.png"}), ("stream", {"view": "v", "path": "/a"}),
                           ("still", {"view": "v", "path": "a.png", "effects": "gray"}),
                           ("still", {"view": "v", "path": "a.png", "width": 1e9}),
                           ("jobs", {"kind": "erase", "output": "a.png"}), ("slideshow/check", {"inputs": []}),
                           ("jobs", {"kind": "slideshow", "inputs": ["a.png"]}), ("file", {"text": 5})):
            method = "PUT" if path == "file" else "POST"
            self.assertFalse(fits(method, "api/" + path, body), (path, body))
            self.assertGreaterEqual(self.studio.ask(method, "api/" + path, body)[0], 400, (path, body))
        try:
            status = self.studio.raw("PUT", f"/{self.studio.token}/api/draft?page=large", '"' + "x" * (5 << 20) + '"',
                                     {"Content-Type": "application/json"})[0]
        except OSError:
            status = 413  # it hung up in the middle
        self.assertEqual(status, 413)

    def test_bears_a_thousand_requests_at_once(self):
        wish = {"path": "a.png", "width": 64, "effects": ["gray"]}
        with concurrent.futures.ThreadPoolExecutor(200) as pool:
            answers = list(pool.map(
                lambda i: self.studio.ask("POST", "api/still", dict(wish, view=f"v{i % 50}"))[0], range(1000)))
        self.assertTrue(set(answers) <= {200, 409}, set(answers))
        self.assertIn(200, answers)

    def test_outlives_readers_and_writers_that_are_slow(self):
        slow = []
        for i in range(60):
            one = socket.create_connection(("127.0.0.1", self.studio.port))
            one.send(b"GET / HTTP/1.1\r\nHo" if i % 2 else b"P")
            slow.append(one)
        greedy = socket.create_connection(("127.0.0.1", self.studio.port))
        body = json.dumps({"view": "v", "path": "film.mp4", "effects": []})
        greedy.sendall((f"POST /{self.studio.token}/api/stream HTTP/1.1\r\nHost: 127.0.0.1:{self.studio.port}\r\n"
                        f"Content-Type: application/json\r\nContent-Length: {len(body)}\r\n\r\n{body}").encode())
        begin = time.time()
        self.assertEqual(self.studio.ask("GET", "api/studio")[0], 200)
        self.assertLess(time.time() - begin, 20)
        for one in (*slow, greedy):
            one.close()

    def test_ends_cleanly_in_the_middle_of_anything(self):
        studio = Studio()
        job = {"kind": "apply", "input": "film.mp4", "output": "long.mp4", "effects": ["simple_gauss_blur:count=50"] * 60}
        for name in ("long.mp4", "long2.mp4"):
            studio.post("api/jobs", dict(job, output=name))
        greedy = socket.create_connection(("127.0.0.1", studio.port))
        greedy.sendall((f"GET /{studio.token}/api/events HTTP/1.1\r\nHost: 127.0.0.1:{studio.port}\r\n\r\n").encode())
        while studio.get("api/jobs")["jobs"][1]["state"] != "running":
            time.sleep(0.05)
        # An upload that stops half way, and a preview that takes its time.
        begun = [socket.create_connection(("127.0.0.1", studio.port)) for _ in range(2)]
        for one, body in zip(begun, ("{", json.dumps({"view": "v", "path": "a.png", "effects": job["effects"]}))):
            length = len(body) + (body == "{") * 1000
            one.sendall((f"POST /{studio.token}/api/still HTTP/1.1\r\nHost: 127.0.0.1:{studio.port}\r\n"
                         f"Content-Type: application/json\r\nContent-Length: {length}\r\n\r\n{body}").encode())
        time.sleep(0.5)
        begin = time.time()
        self.assertEqual(studio.end(), 0)
        self.assertLess(time.time() - begin, 10)
        self.assertEqual([one.name for one in studio.folder.iterdir() if "long" in one.name], [])
        processes = subprocess.run(["ps", "-eo", "args"], capture_output=True, text=True, check=True).stdout
        self.assertNotIn(str(studio.folder), processes)
        for one in (greedy, *begun):
            one.close()
        studio.remove()

    def test_reports_a_lost_folder_and_a_full_disk_and_loses_nothing(self):
        full = Studio(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000)))
        self.addCleanup(full.remove)
        self.addCleanup(full.run.kill)
        self.assertEqual(full.ask("PUT", "api/draft?page=test", {"kept": 1})[0], 200)
        status, body, _ = full.ask("PUT", "api/draft?page=test", {"large": "x" * 30000})
        self.assertEqual(status, 507)
        self.assertIn("test.json cannot be written", json.loads(body)["error"])
        self.assertNotIn("/proc/", json.loads(body)["error"])
        self.assertEqual(full.get("api/draft?page=test"), {"kept": 1})
        full.post("api/jobs", {"kind": "apply", "input": "film.mp4", "output": "o.mkv", "effects": ["gray"]})
        while (job := full.get("api/jobs")["jobs"][0])["state"] in ("waiting", "running"):
            time.sleep(0.05)
        self.assertEqual(job["state"], "failed")
        self.assertIn("o.mkv cannot be written", job["message"])
        self.assertEqual(sorted(os.listdir(full.folder)), [".nifikral-studio", "a.png", "b 2.png", "film.mp4"])
        # One that is moved goes on; one that is gone is named.
        moved = full.folder.rename(full.outside / "moved")
        self.assertEqual(full.get("api/draft?page=test"), {"kept": 1})
        shutil.rmtree(moved)
        for method, path, body in (("GET", "folder", None), ("GET", "facts?path=a.png", None), ("PUT", "draft?page=test", {}),
                                   ("POST", "jobs", {"kind": "apply", "input": "a.png", "output": "x.png", "effects": []})):
            status, answer, _ = full.ask(method, "api/" + path, body)
            self.assertEqual(status, 404, path)
            self.assertIn(f"{full.folder} is gone", json.loads(answer)["error"])
        self.assertEqual(full.end(), 0)

    def test_a_link_that_is_swapped_meanwhile_leads_nowhere(self):
        inside, outside = self.studio.folder / "swap", self.studio.outside
        (self.studio.folder / "real").mkdir()
        (self.studio.folder / "real" / "secret.json").write_text('"OWN"')
        inside.symlink_to("real")
        ends = threading.Event()

        def swap():
            while not ends.is_set():
                for target in ("..", "real"):
                    os.symlink(target, inside.with_name("next"))
                    os.replace(inside.with_name("next"), inside)

        thread = threading.Thread(target=swap)
        thread.start()
        try:
            for i in range(400):
                self.assertNotIn(b"SECRET", self.studio.ask("GET", "api/file?path=swap/secret.json")[1])
                self.studio.ask("PUT", f"api/file?path=swap/new{i}.json", {"text": "1"}, If_None_Match="*")
        finally:
            ends.set()
            thread.join()
            inside.unlink()
            shutil.rmtree(self.studio.folder / "real")
        self.assertEqual(sorted(os.listdir(outside)), ["own", "secret.json", "secret.png"])


if __name__ == "__main__":
    unittest.main()
