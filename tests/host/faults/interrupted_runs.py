#!/usr/bin/env python3
"""Kills runs of the command at random moments, and lets the disk fill up under them: the output is the former one or all
of the new one, and the same command finishes the work and leaves nothing beside it.

usage: interrupted_runs.py NIFIKRAL [KILLS_OF_EACH [STEP_IN_KIB]]
"""
import json, os, pathlib, shutil, random, signal, subprocess, sys, tempfile, time

FORMER = b"the former output"
CASES = [
    (["apply", "film.mkv", "rotate:scale=2", "-q", "-y", "-o"], "out.mp4"),
    (["menu", "menu_common", "menu.json", "-q", "-y", "-o"], "out.mp4"),
    (["slideshow", "photo.png", "film.mkv", "-q", "--seconds", "0.5", "--transition-seconds", "0.2", "--size", "192x144", "-y", "-o"], "out.mp4"),
    (["title", "Words", "film.mkv", "-q", "-y", "-o"], "out.mp4"),
]
# With a folder of its parts beside it, and the time of its making in it.
DISC = (["disc", "disc.json", "-q", "-y", "-o"], "out.iso")
PLANNED = ["apply", "film.mkv", "out.mp4", "invert", "-q"]
# What it makes fills a disk quickly.
LARGE = (["apply", "film.mkv", "rotate:scale=2", "-q", "-y", "--encoder", "ffv1", "-o"], "out.avi")


class Folder:
    def __init__(self, program, path):
        self.program, self.path, self.faults, self.runs = program, path, 0, 0
        self.names = set(os.listdir(path))

    def start(self, command):
        return subprocess.Popen(command, cwd=self.path, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, start_new_session=True)

    def finish(self, command):
        self.runs += 1
        process = self.start(command)
        lines = process.communicate(timeout=120)[1].decode(errors="replace").splitlines()
        return process.returncode, lines

    def report(self, command, fault):
        self.faults += 1
        print(f"{' '.join(map(str, command))[:200]}: {fault}")

    def check_clean(self, command, output):
        left = set(os.listdir(self.path)) - self.names - {output}
        if left:
            self.report(command, f"leaves {', '.join(sorted(left))}")

    def kill(self, command, output, kills, chance, beside=None, is_same=bytes.__eq__):
        """Each is killed at a moment up to the end of a whole run, and finished by the same command."""
        place = self.path / output
        if beside:
            self.names.add(beside)
        begin = time.monotonic()
        status, lines = self.finish(command)
        length, whole = time.monotonic() - begin, place.read_bytes()
        if status:
            self.report(command, lines)
        for _ in range(kills):
            place.write_bytes(FORMER) if "-y" in command else place.unlink()
            if beside:
                shutil.rmtree(self.path / beside)
            process = self.start(command)
            time.sleep(chance.uniform(0, length))
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            found = place.read_bytes() if place.exists() else FORMER
            if found != FORMER and not is_same(found, whole):
                self.report(command, f"killed, leaves {len(found)} of {len(whole)} bytes as its output")
            if "-y" not in command and place.exists():
                place.unlink()
            status, lines = self.finish(command)
            if status or not is_same(place.read_bytes(), whole):
                self.report(command, f"after a kill ends with the status {status}: {lines}")
            self.check_clean(command, output)
        place.unlink()

    def fill(self, words, output, step):
        """On disks of all sizes, up to one that is large enough."""
        disk = self.path / "disk"
        disk.mkdir()
        self.names.add("disk")
        command = [self.program, *words, f"disk/{output}"]
        size = 0
        while True:
            size += step
            if subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}k", "none", disk], capture_output=True).returncode:
                return print("no right to mount a small disk: left out")
            try:
                (disk / output).write_bytes(FORMER)
                status, lines = self.finish(command)
                found, left = (disk / output).read_bytes(), os.listdir(disk)
            finally:
                subprocess.run(["umount", disk], check=True)
            if status == 0 and len(found) > 1024 * step:
                return print(f"{size // step} disks of up to {size} KiB")
            if status != 4 or len(lines) != 1 or "disk/" not in lines[0] or found != FORMER or left != [output]:
                return self.report(command, f"on a disk of {size} KiB ends with the status {status}, {lines}, {left}")


def main():
    program = os.path.abspath(sys.argv[1])
    kills = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    step = int(sys.argv[3]) if len(sys.argv) > 3 else 64
    with tempfile.TemporaryDirectory() as name:
        path = pathlib.Path(name)
        def ffmpeg(*words):
            subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", *words], cwd=path, check=True)
        ffmpeg("-i", "testsrc2=s=192x144:d=1", "-frames:v", "1", "photo.png")
        ffmpeg("-i", "testsrc2=s=192x144:d=1:r=25", "-f", "lavfi", "-i", "sine=d=1", "film.mkv")
        (path / "menu.json").write_text('{"width": 192, "height": 144, "duration": 1, "additionSourcePaths": ["photo.png"], '
                                        '"textInfos": [{"text": "Title", "size": 12, "box": [4, 4, 80, 20]}]}')
        (path / "disc.json").write_text(json.dumps({"version": 1, "title": "Disc", "profile": "pal-4:3", "menus": {"seconds": 2, "fade": 0},
                                                    "films": [{"title": "Slides", "pictures": ["photo.png"], "pictureSeconds": 0.2}]}))
        folder = Folder(program, path)
        seed = int(os.environ.get("SEED", time.time()))
        print(f"SEED={seed}")
        chance = random.Random(seed)
        for words, output in CASES:
            folder.kill([program, *words, output], output, kills, chance)
        words, output = DISC
        folder.kill([program, *words, output], output, max(1, kills // 3), chance, "out.iso.work", lambda one, other: len(one) == len(other))
        plan = subprocess.run([program, "plan", "--chunks", "3", *PLANNED], cwd=path, capture_output=True, text=True, check=True).stdout
        folder.kill(["sh", "-e", "-c", plan], "out.mp4", kills, chance)
        folder.fill(*LARGE, step)
        print(f"{folder.runs} runs, {folder.faults} faults")
    sys.exit(folder.faults > 0)


main()
