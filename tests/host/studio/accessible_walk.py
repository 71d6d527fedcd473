#!/usr/bin/env python3
"""Every view with something in it, light and dark, wide and narrow: axe-core finds nothing serious, and nothing is cut off.
usage: accessible_walk.py NIFIKRAL FOLDER, into which npm installs axe-core."""
import contextlib, pathlib, shutil, subprocess, sys

from walking import walk

VERSION = "4.14.1"
VIEWS = [("picture", "add"), ("picture", "chain"), ("film", "chain"), ("menu", "templates"), ("menu", "content"), ("menu", "remote"), ("slideshow", "slides"),
         ("slideshow", "show"), ("disc", "films"), ("disc", "disc"), ("disc", "menus")]
# What reaches beyond the page, or its panel, cannot be reached.
CUT = """return [...document.querySelectorAll("button, input, select, textarea, .handle, h1, h2, .control")].filter(node => {
    const box = node.getBoundingClientRect(), room = node.closest(".panel")?.getBoundingClientRect() ?? {left: 0, right: innerWidth};
    return node.checkVisibility() && box.width > 1 && !node.closest(".space") && (box.left < room.left - 1 || box.right > room.right + 1);
}).map(node => node.ariaLabel || node.textContent || node.id)"""


def axe(folder):
    script = pathlib.Path(folder, "node_modules/axe-core/axe.min.js")
    if not script.exists() and shutil.which("npm"):
        with contextlib.suppress(subprocess.TimeoutExpired):
            subprocess.run(["npm", "install", "--prefix", folder, "--no-save", "--ignore-scripts", "--silent", "--fetch-retries=0", "axe-core@" + VERSION], timeout=60)
    if not script.exists():
        print(f"axe-core {VERSION} is not there, and npm does not fetch it: accessibility is not checked")
        sys.exit(77)
    return script.read_text()


def fill(page):
    """Something in each view."""
    page.shown(lambda: page.click(".file", "lake"))
    page.panel("add")
    page.shown(lambda: page.click(".tile", "spotlight"))
    page.click("button", "Compare with the original")
    page.job("film")
    page.shown(lambda: page.click(".file", "clip"))
    page.panel("add")
    page.shown(lambda: page.click(".tile", "rotate"))
    page.click("button", "Key points: let radius change")
    page.job("menu")
    page.panel("templates")
    page.shown(lambda: page.click(".tile", "menu push"))
    page.panel("content")
    page.fill("textarea", "Buttons", "Play all")
    page.click("button", "Text 1: font")
    page.click("button", "Safe areas")
    page.job("slideshow")
    page.shown(lambda: page.take("lake", "night"))
    page.click(".entry .title", "lake")
    page.panel("show")
    page.click(".chip", "zoomin")
    page.job("disc")
    page.panel("films")
    page.click("button", "Survey this folder")
    page.click("button", "Chapter here")
    page.wait("the room is known", "return document.querySelector('.space-bar span')", seconds=40)


def check(page, where, *rules):
    found = page.call("POST", "/execute/async", {"args": [rules], "script": """const [rules, done] = arguments;
        axe.run(document, {resultTypes: ["violations"], ...(rules.length && {runOnly: rules})}).then(result => done(
        result.violations.map(({id, impact, nodes}) => [id, impact, nodes[0].target.join(" "), nodes[0].failureSummary])))"""})
    serious = [one for one in found if one[1] in ("serious", "critical")]
    assert not serious, f"{where}: {serious}"
    cut = page.run(CUT)
    assert not cut, f"{where}: cut off: {cut}"
    page.screenshot(where.replace(", ", "-"))


def steps(page, studio):
    fill(page)
    page.run(SCRIPT + "; return 0")
    for width, height, touch in ((1280, 860, False), (390, 844, True)):
        page.resize(width, height, touch)
        for job, panel in VIEWS:
            page.job(job)
            page.panel(panel)
            # All that a theme changes is colours.
            for theme, rules in (("light", []), ("dark", ["color-contrast"])):
                page.run("document.documentElement.dataset.theme = arguments[0]", theme)
                check(page, f"{job}, {panel}, {width}, {theme}", *rules)
    page.click(".opener")
    check(page, "queue, 390, dark")


if __name__ == "__main__":
    SCRIPT = axe(sys.argv[2])
    walk(steps, clip=0.5)
