#!/usr/bin/env python3
"""Measures the studio in a headless Chromium: from a slider's event to the picture on the screen, a menu's loop, and the first
frame of a 4K film. Prints a table.

usage: bench/studio.py build/release/bin/nifikral [ROUNDS]
"""
import pathlib, statistics, subprocess, sys, tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/host/studio"))
from walking import FIND, Page, Studio

# An effect, the slider that is moved, and whether it works on each point by itself.
EFFECTS = [("brightness_contrast", "contrast", True), ("colorfilter", "density", True), ("popstyle", "colors", True), ("spotlight", "brightness", True),
           ("simple_gauss_blur", "count", False), ("portrait", "radius", False), ("oilpainting", "brushsize", False), ("rotate", "scale", False),
           ("emboss", "level", False), ("radiate", "level", False)]
# The stage is as wide as the picture that is asked for: 960.
WINDOW = (264 + 344 + 16 + 960, 1000)
MOVE = """
const [label, rounds, done] = arguments, stage = document.querySelector(".stage"), times = [];
const bar = [...document.querySelectorAll(".entry input[type=range]")].find(one => one.ariaLabel === label && one.checkVisibility());
const low = Number(bar.min), high = Number(bar.max), step = Number(bar.step);
for (let round = 0; round < rounds; ++round) {
    // Every value is a new one, so that nothing is remembered from before.
    const share = 0.1 + 0.6 * ((round * 0.618034) % 1), value = Math.round((low + (high - low) * share) / step) * step;
    if (Number(bar.value) === value) continue;
    await new Promise(resolve => setTimeout(resolve, 40));
    bar.value = value;
    const begin = performance.now();
    const shown = new Promise(resolve => stage.addEventListener("shown", () => requestAnimationFrame(() => resolve(performance.now())), {once: true}));
    bar.dispatchEvent(new Event("input"));
    times.push(await shown - begin);
}
done(times);
"""
PLAY = """
const [seconds, done] = arguments, line = [...document.querySelectorAll(".timeline")].find(one => one.checkVisibility());
let count = 0, begin = 0;
line.addEventListener("frame", () => { if (++count === 12) begin = performance.now(); });
line.querySelector("button").click();
setTimeout(() => { done((count - 12) / (performance.now() - begin) * 1000); line.querySelector("button").click(); }, seconds * 1000);
"""
OPEN = """
const [name, done] = arguments, stage = document.querySelector(".stage"), begin = performance.now();
stage.addEventListener("shown", () => requestAnimationFrame(() => done(performance.now() - begin)), {once: true});
[...document.querySelectorAll(".file")].find(one => one.title === name).click();
"""


def run_async(page, script, *arguments):
    return page.call("POST", "/execute/async", {"script": FIND + "(async function() {" + script + "}).apply(null, arguments).catch(fault => arguments[arguments.length - 1](String(fault)))", "args": list(arguments)})


def media(folder):
    def ffmpeg(*arguments):
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", *arguments], check=True, cwd=folder)
    noise = "gradients=s={}:n=6:seed=3:d={}:speed=0.02,noise=alls=12:allf=t"
    ffmpeg("-f", "lavfi", "-i", noise.format("1920x1080", 1), "-frames:v", "1", "-q:v", "2", "photo.jpg")
    for i in range(8):
        ffmpeg("-f", "lavfi", "-i", f"gradients=s=1600x1000:n=5:seed={i}", "-frames:v", "1", "-q:v", "3", f"slide{i}.jpg")
    ffmpeg("-f", "lavfi", "-i", noise.format("3840x2160", 4), "-t", "4", "-r", "25", "-c:v", "libx264", "-preset", "veryfast", "-pix_fmt", "yuv420p", "uhd.mp4")


def main(program, rounds=40):
    program = str(pathlib.Path(program).absolute())
    with tempfile.TemporaryDirectory() as folder:
        media(folder)
        studio, page = Studio(program, folder), Page(*WINDOW)
        try:
            page.call("POST", "/timeouts", {"script": 300000})
            page.open(studio.address)
            page.wait("ready", "return document.documentElement.dataset.ready")
            page.shown(lambda: page.click(".file", "photo"))
            page.panel("chain")
            print("| Effect | Kind | median ms | 95 % ms |\n|---|---|---|---|")
            for effect, slider, point in EFFECTS:
                run_async(page, "const done = arguments[1]; while (find('.entry button', 'Remove')) find('.entry button', 'Remove').click(); done(0); " + FIND, effect)
                page.panel("add")
                page.shown(lambda: page.run(FIND + "find('.tile', arguments[0]).click()", effect.replace("_", " ")))
                page.wait("the tiles are done", "return true")
                times = sorted(run_async(page, MOVE, slider, int(rounds)))
                print(f"| {effect} | {'point' if point else 'neighbourhood'} | {statistics.median(times):.0f} | {times[int(len(times) * 0.95)]:.0f} |", flush=True)
            page.job("film")
            page.panel("files") if page.has("#panel-tab-files") else None
            page.wait("the film is listed", "return find('.file', 'uhd')")
            print(f"\nFirst frame of a 4K film: {run_async(page, OPEN, 'uhd.mp4'):.0f} ms")
            page.job("menu")
            page.panel("templates")
            page.shown(lambda: page.click(".tile", "menu travel"))
            print(f"Loop of menu_travel: {run_async(page, PLAY, 6):.1f} frames a second")
        finally:
            page.close()
            studio.process.kill()


if __name__ == "__main__":
    main(*sys.argv[1:])
