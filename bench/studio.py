#!/usr/bin/env python3
"""Measures the studio in a headless Chromium: from a slider's event to the picture on the screen, the loops of all menus, scrubbing,
and the first frame of a 4K film. Prints tables. Each picture that was timed is compared with the server's for the slider's value.

usage: bench/studio.py build/release/bin/nifikral [ROUNDS]
"""
import os, pathlib, statistics, subprocess, sys, tempfile, time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "tests/host/studio"))
from walking import FIND, Page, Studio

# An effect, the slider that is moved, and whether it works on each point by itself.
EFFECTS = [("brightness_contrast", "contrast", True), ("colorfilter", "density", True), ("popstyle", "colors", True), ("spotlight", "brightness", True),
           ("simple_gauss_blur", "count", False), ("portrait", "radius", False), ("oilpainting", "brushsize", False), ("rotate", "scale", False),
           ("emboss", "level", False), ("radiate", "level", False)]
UHD = [f"uhd{i}.mp4" for i in range(5)]
# The stage is as wide as the picture that is asked for: 960.
WINDOW = (264 + 344 + 16 + 960, 1000)
# Picks up what the page asks for, waits until nothing is on its way, and compares the picture on the stage with what the server makes of
# the same request in another view.
PROVE = """
const visible = selector => [...document.querySelectorAll(selector)].find(one => one.checkVisibility()), stage = visible(".stage");
if (!window.asked) {
    const fetched = window.fetch;
    window.asked = null;
    window.underway = 0;
    window.fetch = async (path, options) => {
        if (!/still|frame/.test(path)) return fetched(path, options);
        if (!/tile/.test(options.body)) window.asked = {path, options};
        ++window.underway;
        try { return await fetched(path, options); } finally { --window.underway; }
    };
    window.calm = async () => { do await new Promise(resolve => setTimeout(resolve, 60)); while (window.underway); };
    window.prove = async canvas => {
        await calm();
        const {path, options} = window.asked, reply = await fetched(path, {...options, signal: null, body: JSON.stringify({...JSON.parse(options.body), view: "proof"})});
        const picture = await createImageBitmap(await reply.blob()), {width, height} = canvas;
        const other = Object.assign(document.createElement("canvas"), {width, height}).getContext("2d"), all = canvas.getContext("2d").getImageData(0, 0, width, height).data;
        let left = width, top = height, right = 0, bottom = 0;
        for (let y = 0; y < height; ++y) for (let x = 0; x < width; ++x) if (all[(y * width + x) * 4 + 3])
            left = Math.min(left, x), right = Math.max(right, x + 1), top = Math.min(top, y), bottom = Math.max(bottom, y + 1);
        other.imageSmoothingQuality = "high";
        other.drawImage(picture, left, top, right - left, bottom - top);
        const made = other.getImageData(0, 0, width, height).data;
        let differ = 0;
        for (let i = 0; i < all.length; ++i) if (Math.abs(all[i] - made[i]) > 1) ++differ;
        if (differ) throw new Error(`${differ} samples on the stage differ from the server's picture`);
    };
}
"""
MOVE = PROVE + """
const [name, label, rounds, done] = arguments, times = [];
const bar = [...document.querySelectorAll(".entry input[type=range]")].find(one => one.ariaLabel === label && one.checkVisibility());
const low = Number(bar.min), high = Number(bar.max), step = Number(bar.step);
for (let round = 0; times.length < rounds; ++round) {
    // Every value is a new one, so that nothing is remembered from before.
    const share = 0.1 + 0.6 * ((round * 0.618034) % 1), value = Math.round((low + (high - low) * share) / step) * step;
    if (Number(bar.value) === value) continue;
    await calm();
    bar.value = value;
    const begin = performance.now();
    const shown = new Promise(resolve => {
        const look = event => {
            // Only the picture of this value counts.
            const effect = event.detail.at(-1);
            if (effect?.name !== name || !Object.entries(effect.parameters).some(([key, text]) => key.endsWith(label) && Math.abs(Number(text) - Number(bar.value)) < 1e-6)) return;
            stage.removeEventListener("shown", look);
            // The frame with it is drawn; the next one has begun.
            requestAnimationFrame(() => resolve(performance.now()));
        };
        stage.addEventListener("shown", look);
    });
    bar.dispatchEvent(new Event("input"));
    times.push(await shown - begin);
    await prove(stage.querySelector("canvas"));
}
done(times);
"""
PLAY = """
const [seconds, done] = arguments, line = [...document.querySelectorAll(".timeline")].find(one => one.checkVisibility());
let count = 0, begin = 0;
const look = () => { if (++count === 12) begin = performance.now(); };
line.addEventListener("frame", look);
line.querySelector("button").click();
setTimeout(() => { line.removeEventListener("frame", look); done((count - 12) / (performance.now() - begin) * 1000); line.querySelector("button").click(); }, seconds * 1000);
"""
# Goes to places all over the film.
SCRUB = PROVE + """
const [rounds, done] = arguments, bar = visible(".scrubber"), times = [];
for (let round = 1; round <= rounds; ++round) {
    await calm();
    const begin = performance.now(), shown = new Promise(resolve => stage.addEventListener("shown", () => requestAnimationFrame(() => resolve(performance.now())), {once: true}));
    bar.value = Math.round(Number(bar.max) * ((round * 0.618034) % 1));
    bar.dispatchEvent(new Event("input"));
    times.push(await shown - begin);
    await prove(stage.querySelector("canvas"));
}
done(times);
"""
PAINTED = "return performance.getEntriesByName('first-contentful-paint')[0].startTime"
OPEN = """
const [name, done] = arguments, stage = [...document.querySelectorAll(".stage")].find(one => one.checkVisibility()), begin = performance.now();
stage.addEventListener("shown", () => requestAnimationFrame(() => done(performance.now() - begin)), {once: true});
[...document.querySelectorAll(".file")].find(one => one.title === name && one.checkVisibility()).click();
"""


def run_async(page, script, *arguments):
    value = page.call("POST", "/execute/async", {"script": FIND + "(async function() {" + script + "}).apply(null, arguments).catch(fault => arguments[arguments.length - 1](String(fault)))", "args": list(arguments)})
    if isinstance(value, str):
        raise RuntimeError(value)
    return value


def media(folder):
    def ffmpeg(*arguments):
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", *arguments], check=True, cwd=folder)
    noise = "gradients=s={}:n=6:seed=3:d={}:speed=0.02,noise=alls={}:allf=t"
    ffmpeg("-f", "lavfi", "-i", noise.format("1920x1080", 1, 12), "-frames:v", "1", "-q:v", "2", "photo.jpg")
    for i in range(8):
        ffmpeg("-f", "lavfi", "-i", f"gradients=s=1600x1000:n=5:seed={i}", "-frames:v", "1", "-q:v", "3", f"slide{i}.jpg")
    # As cameras write them.
    for name, size, rate in (("uhd", "3840x2160", "60M"), ("hd", "1920x1080", "16M")):
        ffmpeg("-f", "lavfi", "-i", noise.format(size, 6, 6), "-t", "6", "-r", "25", "-c:v", "libx264", "-preset", "veryfast", "-g", "25", "-b:v", rate, "-maxrate", rate,
               "-bufsize", rate, "-pix_fmt", "yuv420p", f"{name}.mp4")
    for name in UHD:
        os.link(pathlib.Path(folder, "uhd.mp4"), pathlib.Path(folder, name))


def late(times):
    return sorted(times)[int(len(times) * 0.95)]


def sliders(page, effects, rounds):
    for effect, slider, point in effects:
        run_async(page, "const done = arguments[0]; while (find('.entry button', 'Remove')) find('.entry button', 'Remove').click(); done(0)")
        page.panel("add")
        page.shown(lambda: page.run(FIND + "find('.tile', arguments[0]).click()", effect.replace("_", " ")))
        moved = run_async(page, MOVE, effect, slider, rounds)
        print(f"| {effect} | {'point' if point else 'neighbourhood'} | {statistics.median(moved):.0f} | {late(moved):.0f} |", flush=True)


def main(program, rounds=40):
    program, rounds = str(pathlib.Path(program).absolute()), int(rounds)
    with tempfile.TemporaryDirectory() as folder:
        media(folder)
        studio, page = Studio(program, folder), Page(*WINDOW)
        try:
            page.call("POST", "/timeouts", {"script": 300000})
            page.open(studio.address)
            page.wait("ready", "return document.documentElement.dataset.ready")
            print(f"Load at the begin: {os.getloadavg()[0]:.1f}\n")
            print(f"First paint of the page: {page.run(PAINTED):.0f} ms")
            page.job("film")
            page.panel("files") if page.has("#panel-tab-files") else None
            page.wait("the films are listed, and small", "return document.querySelectorAll('.file img.painted').length > arguments[0]", len(UHD), seconds=200)
            # Each name is a film that the studio has not opened yet.
            opened = []
            for name in UHD:
                time.sleep(1)  # what the film before it has left to do
                opened.append(run_async(page, OPEN, name))
            print(f"First frame of a 4K film: {statistics.median(opened):.0f} ms (each: {', '.join(f'{one:.0f}' for one in opened)})")
            times = run_async(page, SCRUB, rounds)
            print(f"Another frame of it: {statistics.median(times):.0f} ms, 95 %: {late(times):.0f} ms")
            page.shown(lambda: page.click(".file", "hd.mp4"))
            print("\n| Effect on a film | Kind | median ms | 95 % ms |\n|---|---|---|---|")
            sliders(page, EFFECTS[:2] + EFFECTS[4:6], rounds)
            page.job("picture")
            page.panel("files") if page.has("#panel-tab-files") else None
            page.shown(lambda: page.click(".file", "photo"))
            print("\n| Effect on a picture | Kind | median ms | 95 % ms |\n|---|---|---|---|")
            sliders(page, EFFECTS, rounds)
            page.job("menu")
            page.panel("templates")
            names = page.run("return [...document.querySelectorAll('.tile')].filter(one => one.checkVisibility()).map(one => one.textContent)")
            print("\n| Loop | frames a second | another frame, median ms | 95 % ms |\n|---|---|---|---|")
            for name in names:
                page.panel("templates")
                page.shown(lambda: page.click(".tile", name))
                times = run_async(page, SCRUB, max(5, rounds // 2))
                print(f"| {name} | {run_async(page, PLAY, 5):.1f} | {statistics.median(times):.0f} | {late(times):.0f} |", flush=True)
        finally:
            page.close()
            studio.process.kill()


if __name__ == "__main__":
    main(*sys.argv[1:])
