#!/usr/bin/env python3
"""Works on and on in one process: all effects and templates, slideshows and titles, on sizes in turn. Its memory, handles and
threads have to stay what they are after the first rounds.

usage: soak.py BUILD [SECONDS]
"""
import gc, os, pathlib, subprocess, sys, tempfile, time

build, seconds = pathlib.Path(sys.argv[1]).resolve(), float(sys.argv[2]) if len(sys.argv) > 2 else 60
sys.path.insert(0, str(build / "lib"))
import nifikral, numpy

SIZES = [(48, 64), (90, 161), (144, 192), (288, 352), (1, 1), (31, 400)]
EFFECTS = [name for name, info in nifikral.effects().items() if "generator" not in info.traits]
WARM_UP, MOST_GROWTH = 3, 0.01


def kib():
    return int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * os.sysconf("SC_PAGESIZE") // 1024


def state():
    gc.collect()
    return kib(), len(os.listdir("/proc/self/fd")), len(os.listdir("/proc/self/task"))


def projects(folder):
    listed = subprocess.run([build / "bin/nifikral", "list"], capture_output=True, text=True, check=True).stdout
    for name in dict.fromkeys(word for word in listed.split() if "menu_" in word):
        if subprocess.run([build / "bin/nifikral", "init", name, folder / name, "-q"]).returncode == 0:
            yield folder / name / "menu.json"


def effects_round(random):
    for height, width in SIZES:
        for channels in (1, 3, 4):
            picture = random.integers(0, 256, (height, width, channels), numpy.uint8)
            for name in EFFECTS:
                effect = nifikral.Effect(name, duration=9)
                for position in range(3):
                    effect(picture, position=position)


def films_round(folder, menus):
    for project in menus:
        for frame, _ in zip(nifikral.menu(project), range(8)):
            pass
    pictures = sorted(menus[0].parent.glob("*.png"))
    for size in SIZES[1:4]:
        for frame in nifikral.slideshow(pictures, size=(size[1] // 2 * 2, size[0]), seconds=0.2, transition=0.1):
            pass
        for frame in nifikral.title("Words", size=(size[1], size[0]), seconds=0.4):
            pass


def main():
    random = numpy.random.default_rng(1)
    states = []
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        menus = list(projects(folder))
        begin = time.monotonic()
        while len(states) <= WARM_UP or time.monotonic() - begin < seconds:
            effects_round(random)
            films_round(folder, menus)
            states.append(state())
            memory, handles, threads = states[-1]
            print(f"round {len(states)}, {time.monotonic() - begin:.0f} s: {memory} KiB, {handles} handles, {threads} threads", flush=True)
    before, after = states[:WARM_UP], states[WARM_UP:]
    growth = max(state[0] for state in after) / max(state[0] for state in before) - 1
    steady = {state[1:] for state in states[WARM_UP - 1:]}
    print(f"{len(menus)} menus, {len(EFFECTS)} effects: after round {WARM_UP} memory grew by {100 * growth:.2f} %")
    return growth > MOST_GROWTH or len(steady) > 1


sys.exit(main())
