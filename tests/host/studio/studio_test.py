#!/usr/bin/env python3
"""Asks a running studio for all that its page asks for. Usage: NIFIKRAL_PROGRAM=... studio_test.py [TEST]"""
import concurrent.futures
import http.client
import json
import pathlib
import shlex
import struct
import subprocess
import tempfile
import time
import unittest

from studio import PROGRAM, Studio


def pixels(picture, *options):
    run = subprocess.run(["ffmpeg", "-v", "error", "-i", "-", *options, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"],
                         input=picture, capture_output=True, check=True)
    return run.stdout


class StudioTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.studio = Studio()

    @classmethod
    def tearDownClass(cls):
        code = cls.studio.end()
        cls.studio.remove()
        assert code == 0, code

    def command(self, *words):
        subprocess.run([PROGRAM, *words], cwd=self.studio.folder, check=True, capture_output=True)

    def wait(self, job, state):
        for _ in range(300):
            found = next(one for one in self.studio.get("api/jobs")["jobs"] if one["id"] == job)
            if found["state"] not in ("waiting", "running"):
                break
            time.sleep(0.1)
        self.assertEqual(found["state"], state, found)
        return found

    def test_lists_the_folder_as_people_count_and_says_what_is_in_it(self):
        entries = {one["name"]: one["kind"] for one in self.studio.get("api/folder")["entries"]}
        self.assertEqual(entries["a.png"], "picture")
        self.assertEqual(entries["film.mp4"], "film")
        facts = self.studio.get("api/facts?path=film.mp4")
        self.assertEqual((facts["width"], facts["height"], facts["frames"], facts["rate"]), (320, 180, 100, [25, 1]))
        # A picture that its reader does not find again once it went back to the begin.
        self.command("apply", "a.png", "gray", "-o", "a.tga")
        self.assertEqual(self.studio.get("api/facts?path=a.tga")["kind"], "picture")
        (self.studio.folder / "a.tga").unlink()
        status, picture, headers = self.studio.ask("GET", "api/thumb?path=b%202.png&size=64")
        self.assertEqual((status, headers["Content-Type"], len(pixels(picture))), (200, "image/jpeg", 64 * 48 * 3))
        again = self.studio.ask("GET", "api/thumb?path=b%202.png&size=64", If_None_Match=headers["ETag"])
        self.assertEqual(again[:2], (304, b""))
        # A photograph is decoded in a smaller size, upright and with its colours; of a film the next key frame will do.
        subprocess.run(["ffmpeg", "-v", "error", "-i", "a.png", "-vf", "scale=1600:-2", "-pix_fmt", "yuvj420p", "photo.jpg"],
                       cwd=self.studio.folder, check=True)
        small = [pixels(self.studio.ask("GET", f"api/thumb?path={name}&size=200")[1]) for name in ("a.png", "photo.jpg")]
        self.assertEqual([len(one) for one in small], [200 * 125 * 3] * 2)
        self.assertLess(sum(abs(a - b) for a, b in zip(*small)) / len(small[0]), 6)
        shown = pixels(self.studio.ask("GET", "api/thumb?path=film.mp4&size=320&at=2")[1])
        frame = pixels(self.studio.still(path="film.mp4", at=30 / 25)[0])
        self.assertLess(sum(abs(a - b) for a, b in zip(shown, frame)) / len(frame), 6)
        (self.studio.folder / "photo.jpg").unlink()
        catalogue = self.studio.get("api/catalogue")
        self.assertIn("rotate", [effect["name"] for effect in catalogue["effects"]])
        self.assertIn("crossfade", catalogue["transitions"])

    def test_shows_what_the_command_makes_of_any_frame(self):
        chain = ["rotate:x=40%:y=30%:r=25%:scale=3", "brightness_contrast:contrast=@0s:0,3s:60", "gray@2s-3s"]
        self.command("apply", "-y", "film.mp4", "all_%03d.png", *chain)
        for number in (57, 12, 13, 23, 36, 80, 11):
            made, headers = self.studio.still(path="film.mp4", at=number / 25, crop=[0, 0, 320, 180], format="png",
                                              effects=chain)
            self.assertEqual(headers["X-Frame"], str(number))
            self.assertEqual(pixels(made), pixels((self.studio.folder / f"all_{number:03}.png").read_bytes()), number)
        # A container without an index.
        subprocess.run(["ffmpeg", "-v", "error", "-i", "film.mp4", "-c", "copy", "film.ts"], cwd=self.studio.folder, check=True)
        made, _ = self.studio.still(path="film.ts", at=0, crop=[0, 0, 320, 180], format="png", effects=chain)
        self.assertEqual(pixels(made), pixels((self.studio.folder / "all_000.png").read_bytes()))
        for one in (*self.studio.folder.glob("all_*"), self.studio.folder / "film.ts"):
            one.unlink()

    def test_a_preview_of_an_opaque_picture_is_as_bright_as_the_saved_one(self):
        for effect in ("oilpainting", "gray", "transparency"):
            self.command("apply", "-y", "a.png", "saved.jpg", effect)
            saved = pixels((self.studio.folder / "saved.jpg").read_bytes())
            shown = pixels(self.studio.still(path="a.png", width=640, effects=[effect])[0])
            self.assertLess(sum(abs(a - b) for a, b in zip(shown, saved)) / len(saved), 6, effect)
        (self.studio.folder / "saved.jpg").unlink()

    def test_a_jpeg_preview_shows_what_the_exact_one_shows(self):
        for effect in self.studio.get("api/catalogue")["effects"]:
            if {"generator", "changes-alpha"} & set(effect["traits"]):
                continue
            wish = {"path": "a.png", "width": 161, "effects": effect["example"]}
            shown, exact = (pixels(self.studio.still(**wish, format=kind)[0], "-vf", "scale=23:14:flags=area")
                            for kind in ("jpeg", "png"))
            self.assertLess(sum(abs(a - b) for a, b in zip(shown, exact)) / len(exact), 8, effect["name"])

    def test_scales_places_and_lengths_with_the_preview(self):
        share, _ = self.studio.still(path="a.png", width=160, effects=["magnifier:x=50%:y=25%:r=20%:scale=3"])
        exact, _ = self.studio.still(path="a.png", width=160, effects=["magnifier:x=320:y=100:r=80:scale=3"])
        self.assertEqual(share, exact)
        share, _ = self.studio.still(path="a.png", width=160, effects=["gray:inside=circle,25%,50%,25%"])
        exact, _ = self.studio.still(path="a.png", width=160, effects=["gray:inside=circle,160,200,100"])
        self.assertEqual(share, exact)

    def test_a_change_of_a_late_effect_makes_what_a_new_view_makes(self):
        chain = ["invert", "simple_gauss_blur:count=3", {"name": "rotate", "parameters": {"scale": 2}}]
        for scale in (1, 5, 5):
            chain[2]["parameters"]["scale"] = scale
            again, _ = self.studio.still(path="a.png", effects=chain)
            fresh, _ = self.studio.still(path="a.png", effects=chain, view=f"new{scale}")
            self.assertEqual(again, fresh)
        chain[0] = "gray"
        again, _ = self.studio.still(path="a.png", effects=chain)
        self.assertEqual(again, self.studio.still(path="a.png", effects=chain, view="new")[0])

    def test_the_newest_request_of_a_view_wins(self):
        wish = {"view": "one", "path": "a.png", "effects": ["simple_gauss_blur:count=50"] * 6}

        def ask(i):
            time.sleep(i * 0.02)
            wish_i = dict(wish, effects=wish["effects"] + [f"brightness_contrast:contrast={i}"], width=600 + i)
            return self.studio.ask("POST", "api/still", wish_i)

        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            answers = list(pool.map(ask, range(8)))
        self.assertEqual(answers[-1][0], 200)
        dropped = [json.loads(body) for status, body, _ in answers if status == 409]
        self.assertTrue(dropped and all(one["superseded"] for one in dropped), [one[0] for one in answers])

    def test_two_pages_at_once_do_not_disturb_each_other(self):
        self.command("apply", "-y", "film.mp4", "other.mp4", "emboss")
        slow = ["simple_gauss_blur:count=50"] * 4
        wishes = [{"path": "film.mp4", "effects": ["rotate:r=40%:scale=3", *slow]}, {"path": "other.mp4", "effects": ["invert", *slow]}]
        places = [50, 3, 88, 4, 51, 20, 89]
        alone = [[self.studio.still(**wish, view="alone", at=place / 25)[0] for place in places] for wish in wishes]

        def scrub(page):
            return [self.studio.still(**wishes[page], view=f"page{page}/film", at=place / 25)[0] for place in places]

        def play(page):
            return self.studio.ask("POST", "api/stream", dict(wishes[page], view=f"page{page}/film", **{"from": 0.5, "to": 2}))[1]

        def hurry(page):
            return self.studio.ask("POST", "api/still", dict(wishes[page], view=f"page{page}/hurry", at=1.5))[0]

        played = [play(page) for page in range(2)]
        with concurrent.futures.ThreadPoolExecutor(16) as pool:
            scrubs, plays = ([pool.submit(work, page) for page in range(2)] for work in (scrub, play))
            hurries = [pool.submit(hurry, 0) for _ in range(8)]
            self.assertEqual([one.result() for one in scrubs], alone)
            self.assertEqual([one.result() for one in plays], played)
            self.assertLessEqual({one.result() for one in hurries}, {200, 409})
        (self.studio.folder / "other.mp4").unlink()

    def test_streams_every_frame_of_a_part(self):
        status, body, headers = self.studio.ask(
            "POST", "api/stream", {"view": "play", "path": "film.mp4", "width": 160, "effects": ["gray"], "from": 1,
                                   "to": 1.36})
        self.assertEqual((status, headers["X-Rate"]), (200, "25/1"))
        count = 0
        while body:
            length = struct.unpack(">I", body[:4])[0]
            self.assertEqual(body[4:6], b"\xff\xd8")
            body, count = body[4 + length:], count + 1
        self.assertEqual(count, 9)

    def test_a_job_makes_the_bytes_of_the_copied_command_line(self):
        job = {"kind": "apply", "input": "film.mp4", "output": "job.mp4", "in": 1, "out": 2,
               "effects": [{"name": "rotate", "parameters": {"r": "40%", "scale": "@0s:0,1s:3~in-out"}}, "@old-film"]}
        line = self.studio.post("api/command", job)
        done = self.wait(self.studio.post("api/jobs", job)["id"], "done")
        self.assertEqual(done["line"], line["line"])
        made = (self.studio.folder / "job.mp4").read_bytes()
        (self.studio.folder / "job.mp4").unlink()
        self.assertEqual(shlex.split(line["line"]), line["argv"])
        subprocess.run([PROGRAM, *line["argv"][1:]], cwd=line["folder"], check=True, capture_output=True)
        self.assertEqual(made, (self.studio.folder / "job.mp4").read_bytes())
        status, body, _ = self.studio.ask("POST", "api/jobs", job)
        self.assertEqual(status, 409)
        self.assertNotIn("superseded", json.loads(body))

    def test_reaches_nothing_but_its_folder_in_a_sandbox(self):
        if subprocess.run([PROGRAM, "apply", "a.png", "b.png", "gray", "--sandbox", "--dry-run"], cwd=self.studio.folder, capture_output=True).returncode == 1:
            self.skipTest("no Landlock")
        # Its page lies elsewhere.
        with tempfile.TemporaryDirectory() as page:
            (pathlib.Path(page) / "index.html").write_text("A page")
            for options, status in (((), 200), (("--sandbox",), 404)):
                studio = Studio("--page", page, *options)
                try:
                    self.assertEqual(studio.ask("GET", "")[0], status)
                    studio.still(path="a.png")
                    job = studio.post("api/jobs", {"kind": "apply", "input": "a.png", "output": "job.png", "effects": ["gray"]})["id"]
                    for _ in range(300):
                        if (studio.folder / "job.png").exists():
                            break
                        time.sleep(0.1)
                    self.assertTrue((studio.folder / "job.png").exists(), job)
                finally:
                    studio.end()
                    studio.remove()

    def test_a_cancelled_job_leaves_nothing(self):
        job = {"kind": "apply", "input": "film.mp4", "output": "long.mp4", "effects": ["simple_gauss_blur:count=50"] * 60}
        connection = http.client.HTTPConnection("127.0.0.1", self.studio.port, timeout=20)
        connection.request("GET", f"/{self.studio.token}/api/events")
        events = connection.getresponse()
        name = self.studio.post("api/jobs", job)["id"]
        while b'"state":"running"' not in events.readline():
            pass
        connection.close()
        self.assertEqual(self.studio.ask("DELETE", "api/jobs/" + name)[0], 200)
        self.wait(name, "cancelled")
        self.assertEqual([one.name for one in self.studio.folder.iterdir() if "long" in one.name], [])
        # At its start, somewhere in it, and about its end.
        job = {"kind": "apply", "input": "film.mp4", "output": "long.mp4", "effects": ["gray"], "overwrite": True}
        for pause in (0, 0.02, 0.06, 0.12, 0.2, 0.3, 0.4, 0.5):
            name = self.studio.post("api/jobs", job)["id"]
            time.sleep(pause)
            self.studio.ask("DELETE", "api/jobs/" + name)
            states = lambda: {one["id"]: one["state"] for one in self.studio.get("api/jobs")["jobs"]}
            while states().get(name) in ("waiting", "running"):
                time.sleep(0.02)
            left = [one for one in self.studio.folder.iterdir() if "long" in one.name]
            self.assertTrue(not left or (left == [self.studio.folder / "long.mp4"] and states().get(name) in (None, "done")), left)
            for one in left:
                subprocess.run(["ffmpeg", "-v", "error", "-xerror", "-i", one, "-f", "null", "-"], check=True)
                one.unlink()

    def test_edits_a_menu_as_the_command_makes_it(self):
        new = self.studio.post("api/menu/new", {"template": "menu_common", "title": "Ours",
                                                "pictures": ["a.png", "film.mp4"]})
        menu = {"template": "menu_common", "project": new["project"]}
        menu["project"].update(width=320, height=180, duration=1, buttons=["One", "Two"], loopStart=0.4, moveSpeeds=[2, 1],
                               additionSourceSizes=[[120, 75], [120, 68]], startPositions=[[0, 60], [160, 60]],
                               endPositions=[[40, 60], [170, 60]], startTrans=[255, 255])
        check = self.studio.post("api/menu/check", menu)
        self.assertEqual(check["faults"], [])
        self.assertEqual((check["frames"], len(check["pictures"]), [one["text"] for one in check["buttons"]]),
                         (25, 2, ["One", "Two"]))
        late = self.studio.ask("POST", "api/menu/frame", dict(menu, view="m", frame=24))[1]
        early = self.studio.ask("POST", "api/menu/frame", dict(menu, view="m", frame=3))[1]
        # Of another project, so that its frames are made anew, one after the other.
        stream = self.studio.ask("POST", "api/menu/stream", dict(menu, view="m", file="o.json", **{"from": 0, "to": 25}))[1]
        frames = []
        while stream:
            length = struct.unpack(">I", stream[:4])[0]
            frames.append(stream[4:4 + length])
            stream = stream[4 + length:]
        self.assertEqual((len(frames), frames[3], frames[24]), (25, early, late))
        self.assertNotEqual(early, late)
        menu["project"]["textInfos"][0]["size"] = "large"
        self.assertIn("textInfos[0].size", self.studio.post("api/menu/check", menu)["faults"][0])

    def test_edits_a_slideshow_and_a_disc(self):
        show = {"inputs": ["a.png", {"path": "b 2.png", "seconds": 1, "caption": "Here"}], "size": "320x180",
                "seconds": 2, "transitionSeconds": 1}
        check = self.studio.post("api/slideshow/check", show)
        self.assertEqual((check["frames"], check["slides"][1]["caption"]), (100, "Here"))
        status, picture, _ = self.studio.ask("POST", "api/slideshow/frame", {"view": "s", "show": show, "frame": 70})
        self.assertEqual((status, len(pixels(picture))), (200, 320 * 180 * 3))
        # A photograph whose damage shows once it is decoded is left out, as the command leaves it out.
        subprocess.run(["ffmpeg", "-v", "error", "-i", "a.png", "cut.jpg"], cwd=self.studio.folder, check=True)
        cut = self.studio.folder / "cut.jpg"
        cut.write_bytes(cut.read_bytes()[:-2000])
        damaged = dict(show, inputs=["cut.jpg", *show["inputs"]])
        frames = [self.studio.ask("POST", "api/slideshow/frame", {"view": "d", "show": one, "frame": 20})[:2] for one in (damaged, show)]
        self.assertEqual(frames[0], frames[1])
        check = self.studio.post("api/slideshow/check", damaged)
        self.assertEqual((check["frames"], check["missing"]), (100, ["cut.jpg"]))
        cut.unlink()
        line = self.studio.post("api/command", dict(show, kind="slideshow", output="show.mp4"))
        self.assertEqual(line["files"], [{"path": "show.txt", "text": "a.png |  | \nb 2.png | 1 | Here\n"}])
        self.wait(self.studio.post("api/jobs", dict(show, kind="slideshow", output="show.mp4"))["id"], "done")
        disc = self.studio.post("api/disc/survey", {"path": ""})
        plan = self.studio.post("api/disc/check", disc)
        self.assertEqual(plan["faults"], [])
        self.assertLess(plan["usedBytes"], plan["capacity"])

    def test_saves_files_only_over_what_was_read(self):
        put = lambda text, **headers: self.studio.ask("PUT", "api/file?path=p.json", {"text": text}, **headers)[0]
        self.assertEqual(put("{}"), 428)
        self.assertEqual(put("{}", If_None_Match="*"), 200)
        self.assertEqual(put("{}", If_None_Match="*"), 412)
        _, body, headers = self.studio.ask("GET", "api/file?path=p.json")
        self.assertEqual(body, b"{}")
        self.assertEqual(put("{", If_Match=headers["ETag"]), 400)
        self.assertEqual(put('{"a": 1} // note', If_Match=headers["ETag"]), 200)
        self.assertEqual(put("{}", If_Match=headers["ETag"]), 412)
        self.assertEqual((self.studio.folder / "p.json").read_text(), '{"a": 1} // note')

    def test_keeps_what_each_page_edits(self):
        self.assertIsNone(self.studio.get("api/draft?page=first"))
        for page in ["first", "second", *[f"page{i}" for i in range(19)]]:
            time.sleep(0.01)  # shorter than that, file times may be equal
            self.assertEqual(self.studio.ask("PUT", "api/draft?page=" + page, {"of": page})[0], 200)
        self.assertEqual(self.studio.get("api/draft?page=second"), {"of": "second"})
        self.assertEqual(self.studio.get("api/draft?page=first"), {"of": "page18"}, "the newest in place of one that went")
        for page in ("", "abc", "../../a", "x" * 17, "Upper"):
            self.assertEqual(self.studio.ask("PUT", "api/draft?page=" + page, {})[0], 400, page)

    def test_takes_requests_apart_and_reports_what_is_wrong_with_them(self):
        parts = self.studio.post("api/request", {"text": "rotate@1s-2s:x=50%:inside=circle,1,2,3"})["requests"]
        self.assertEqual(parts, [{"name": "rotate", "inside": "circle,1,2,3", "window": "1s-2s",
                                  "parameters": {"x": "50%"}}])
        status, body, _ = self.studio.ask("POST", "api/request", {"requests": ["rotat:x=1"]})
        self.assertEqual(status, 400)
        self.assertIn("rotate", json.loads(body)["error"])


if __name__ == "__main__":
    unittest.main()
