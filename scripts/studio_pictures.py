#!/usr/bin/env python3
"""Makes the documentation's pictures of the studio: does some of each job on photographs of the package lomiri-wallpapers-16.04.

usage: scripts/studio_pictures.py build/release/bin/nifikral FOLDER
Writes studio-picture.jpg, studio-film.jpg and so on into the folder.
"""
import os, pathlib, subprocess, sys, tempfile, time

root = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(root / "tests/host/studio"))
from walking import FIND, Page, Studio

PHOTOGRAPHS = pathlib.Path("/usr/share/backgrounds")
NAMES = ("aitzgorri", "Bridge", "Dragonfly", "friends", "greentock", "life", "Picture_0B", "Picture_1A", "picosdeeuropa", "seeding", "sunset", "Wine")
WIDE, NARROW = (1280, 760), (390, 844)
PANEL = "[...document.querySelectorAll('.panel')].find(one => one.checkVisibility())"
SCRUB = FIND + "const bar = find('.scrubber'); bar.value = arguments[0]; bar.dispatchEvent(new Event('input'))"


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, arguments)], check=True)


def holiday(folder):
    """A person's folder: photographs, a film and a song."""
    for name in NAMES:
        photograph = next(PHOTOGRAPHS.glob(name + "_by_*.jpg"))
        ffmpeg("-i", photograph, "-vf", "scale=1600:-2:flags=area", "-q:v", "3", folder / f"{name.lower()}.jpg")
    with tempfile.TemporaryDirectory() as media:
        subprocess.run([root / "scripts/sample_media.sh", media], check=True)
        pathlib.Path(media, "clip.mp4").rename(folder / "mountains.mp4")
    ffmpeg("-f", "lavfi", "-i", "sine=261.63:duration=30", folder / "song.mp3")


class Pictures:
    def __init__(self, page, screenshots, folder):
        self.page, self.screenshots, self.folder = page, pathlib.Path(screenshots), pathlib.Path(folder)

    def take(self, name, theme="light", size=WIDE):
        self.page.run("document.documentElement.dataset.theme = arguments[0]", theme)
        self.page.resize(*size, touch=size == NARROW)
        time.sleep(2)  # transitions, and tiles that come into view
        self.page.screenshot(name)
        self.page.resize(*WIDE)
        width = ["-vf", "scale=1120:-2:flags=lanczos"] if size == WIDE else []
        ffmpeg("-i", self.screenshots / f"{name}.png", *width, "-q:v", "4", self.folder / f"studio-{name}.jpg")


def picture(page, pictures):
    page.shown(lambda: page.click(".file", "picosdeeuropa"))
    page.panel("add")
    page.wait("the tiles are not painted", "return document.querySelectorAll('.tile canvas.painted').length > 16", seconds=60)
    page.shown(lambda: page.click(".tile", "rotate"))
    page.panel("add")
    x, y = page.place(".handle", "radius")
    page.shown(lambda: page.drag((x, y), (x - 70, y)))
    x, y = page.place(".handle", "place")
    page.shown(lambda: page.drag((x, y), (x + 60, y - 20)))
    page.click("button", "Compare with")
    page.run(PANEL + ".scrollTop = 0")
    pictures.take("picture")


def film(page, pictures):
    page.job("film")
    page.shown(lambda: page.click(".file", "mountains"))
    page.panel("add")
    page.shown(lambda: page.click(".tile", "spotlight"))
    for name, shifts in (("radius", (-18, 30)), ("centre, across", (25, -20))):
        page.click("button", "Key points: let " + name)
        points = page.run("""const curve = [...document.querySelectorAll(".curve")].find(one => one.ariaLabel === arguments[0]);
            curve.scrollIntoView({block: "center"});
            return [...curve.querySelectorAll(".key-point")].map(one => one.getBoundingClientRect()).map(box => [box.x + box.width / 2, box.y + box.height / 2])""",
                          "Key points of " + name)
        for (x, y), across, down in zip(points, (0, -60), shifts):
            page.drag((x, y), (x + across, y + down))
    page.shown(lambda: page.run(SCRUB, 40))
    page.run(PANEL + ".scrollTop = 0")
    pictures.take("film", "dark")
    pictures.take("narrow", size=NARROW)


def menu(page, pictures):
    page.job("menu")
    page.panel("templates")
    page.shown(lambda: page.click(".tile", "menu travel"))
    page.panel("content")
    page.run("const lines = document.querySelector('textarea[aria-label^=Buttons]'); lines.value = 'Play all\\nChapters'; lines.dispatchEvent(new Event('change'))")
    page.click("button", "Text 1: font")
    page.fill(".entry input[type=text]", "Text 1", "Our summer")
    page.click("button", "Safe areas")
    page.panel("templates")
    page.run(PANEL + ".scrollTop = 0")
    page.wait("the templates are not painted", "return [...document.querySelectorAll('.tile canvas')].slice(0, 12).every(one => one.classList.contains('painted'))", seconds=120)
    page.shown(lambda: page.run(SCRUB, 125))
    pictures.take("menu")


def slideshow(page, pictures):
    page.job("slideshow")
    page.shown(lambda: page.take("aitzgorri", "bridge", "dragonfly", "life", "seeding", "sunset"))
    page.take("song")
    page.panel("show")
    for selector, name in ((".tile", "pageturn"), (".tile", "iris"), (".chip", "zoomin")):
        page.click(selector, name)
    time.sleep(2)
    page.shown(lambda: page.run(SCRUB, 312))
    pictures.take("slideshow")


def disc(page, pictures):
    page.job("disc")
    page.panel("films")
    page.click("button", "Survey this folder")
    page.wait("no room", "return document.querySelector('.space-bar span')", seconds=60)
    for frame in (40, 75):
        page.run(SCRUB, frame)
        page.click("button", "Chapter here")
    pictures.take("disc")


def main(program, output):
    pathlib.Path(output).mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary, "holiday")
        folder.mkdir()
        os.environ["NIFIKRAL_SCREENSHOTS"] = temporary
        holiday(folder)
        studio, page = Studio(str(pathlib.Path(program).absolute()), folder), Page(*WIDE)
        try:
            page.resize(*WIDE)
            page.open(studio.address)
            page.wait("the page is not ready", "return document.documentElement.dataset.ready")
            for job in (picture, film, menu, slideshow, disc):
                job(page, Pictures(page, temporary, output))
            page.calm()
        finally:
            page.close()
            studio.process.kill()


if len(sys.argv) != 3:
    sys.exit(__doc__)
main(*sys.argv[1:])
