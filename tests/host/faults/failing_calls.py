#!/usr/bin/env python3
"""Lets calls of the command fail, one after the other: it ends with a line and a status of its own, and the output is
the former one, or all of the new one.

usage: failing_calls.py NIFIKRAL SHIM [CALLS_OF_A_KIND]
"""
import errno, json, os, pathlib, subprocess, sys, tempfile

CAUSES = {"malloc": errno.ENOMEM, "open": errno.EACCES, "read": errno.EIO, "write": errno.ENOSPC, "rename": errno.EIO, "fsync": errno.EIO}
FORMER = b"the former output"


class Trial:
    def __init__(self, program, shim, folder, words, output):
        self.words, self.folder, self.output = [program, *words], folder, output and folder / output
        self.environment = dict(os.environ, LD_PRELOAD=shim)
        self.run({})
        self.new = self.output and self.output.read_bytes()
        counts = folder / "calls"
        self.run({"NIFIKRAL_CALLS": str(counts)})
        self.counts = {name: int(count) for name, count in (line.split() for line in counts.read_text().splitlines())}
        counts.unlink()
        self.names = set(os.listdir(folder))

    def run(self, more):
        if self.output:
            self.output.write_bytes(FORMER)
        return subprocess.run(self.words, cwd=self.folder, env={**self.environment, **more}, capture_output=True, timeout=120)

    def fault(self, call, number, stays):
        """What is wrong with a run in which that call fails, or None."""
        run = self.run({"NIFIKRAL_FAILING": f"{call} {number}{'+' if stays else '.'} {CAUSES[call]}"})
        lines = run.stderr.decode(errors="replace").splitlines()
        if run.returncode not in (0, 1, 3, 4):
            return f"ends with the status {run.returncode}: {lines[-1:]}"
        if run.returncode and not any(line.startswith("nifikral: error: ") for line in lines):
            return f"fails without a line of its own: {lines}"
        left = set(os.listdir(self.folder)) - self.names
        for name in left:
            (self.folder / name).unlink()
        if left:
            return f"leaves {', '.join(left)}"
        found = self.output and self.output.read_bytes()
        # What comes after the new output has its name may still fail. A font that cannot be read is reported, and replaced.
        if not are_same(found, self.new) and not (found == FORMER if run.returncode else lines and found != FORMER):
            return f"ends with the status {run.returncode}, and an output that is neither the former nor the new one"
        return None


def are_same(output, other):
    """Images of discs hold the time of their making."""
    return output == other or (len(output) == len(other) > len(FORMER) and output[32769:32774] == b"CD001")


def chosen(count, most):
    """Some numbers of so many calls, of which one is near the end, where encoders are closed."""
    numbers = {1 + i * (count - 1) // max(most - 1, 1) for i in range(most)} | {count - 16}
    return sorted(number for number in numbers if 1 <= number <= count)


def main():
    program, shim = (os.path.abspath(path) for path in sys.argv[1:3])
    most = int(sys.argv[3]) if len(sys.argv) > 3 else 6
    faults = runs = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        def ffmpeg(*words):
            subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", *words], cwd=folder, check=True)
        ffmpeg("-i", "testsrc2=s=64x48:d=1", "-frames:v", "1", "photo.png")
        ffmpeg("-i", "testsrc2=s=64x48:d=0.4:r=25", "film.mkv")
        (folder / "menu.json").write_text('{"width": 96, "height": 64, "duration": 0.2, "additionSourcePaths": ["photo.png"], '
                                          '"textInfos": [{"text": "Title", "size": 12, "box": [4, 4, 80, 20]}]}')
        (folder / "disc.json").write_text(json.dumps({"version": 1, "title": "Disc", "profile": "pal-4:3", "menus": {"seconds": 2, "fade": 0},
                                                      "films": [{"title": "Slides", "pictures": ["photo.png"], "pictureSeconds": 0.2}]}))
        one = ["-q", "--threads", "1", "-y", "-o"]
        for words, output in [(["apply", "photo.png", "gray", *one, "out.png"], "out.png"),
                              (["apply", "film.mkv", "rotate", *one, "out.mp4"], "out.mp4"),
                              (["menu", "menu_common", "menu.json", *one, "out.mp4"], "out.mp4"),
                              (["slideshow", "photo.png", "--seconds", "0.2", "--transition-seconds", "0", "--size", "64x48", *one, "out.mp4"], "out.mp4"),
                              (["title", "Words", "photo.png", "-q", "--threads", "1", "-y", "-o", "out.png"], "out.png"),
                              (["plan", "apply", "film.mkv", "gray", "-o", "out2.mp4"], None),
                              # The films of the disc, which runs of their own have made, are there already.
                              (["disc", "disc.json", "-q", "-y", "-o", "out.iso"], "out.iso"),
                              (["plan", "disc", "disc.json", "-o", "out.iso"], None)]:
            for left in ("out.png", "out.mp4", "out.iso"):
                (folder / left).unlink(missing_ok=True)
            trial = Trial(program, shim, folder, words, output)
            for call, count in trial.counts.items():
                # The libraries that set type, and that go through folders, do not survive that.
                if call == "malloc" and {"menu", "title", "slideshow", "disc"} & set(words[:2]):
                    continue
                for number in chosen(count, 2 if "disc" in words else most):
                    for stays in (False, True):
                        runs += 1
                        if fault := trial.fault(call, number, stays):
                            faults += 1
                            print(f"{' '.join(words[:3])}: {call} {number}{'+' if stays else ''} of {count}: {fault}")
    print(f"{runs} runs, {faults} faults")
    sys.exit(faults > 0)


main()
