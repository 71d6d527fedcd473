#!/usr/bin/env python3
"""What is edited outlives the page and the server; two pages work side by side; thousands of files scroll.
usage: keeps_walk.py NIFIKRAL"""
import os, signal, time

from walking import Page, walk

CHAIN = "return [...document.querySelectorAll('.entry .title')].map(one => one.textContent).join()"


def ready(page):
    page.wait("the page is ready", "return document.documentElement.dataset.ready")


def outlives(page, studio):
    page.shown(lambda: page.click(".file", "lake"))
    page.panel("add")
    page.shown(lambda: page.click(".tile", "emboss"))
    page.panel("add")
    page.shown(lambda: page.click(".tile", "gray"))
    # At once: what was not written yet is written as the page goes.
    page.open(studio.address)
    ready(page)
    page.wait("the chain is kept over a reload", CHAIN + " === 'emboss,gray'")
    time.sleep(0.5)
    studio.stop(signal.SIGKILL)
    studio.port = int(studio.address.split(":")[2].split("/")[0])
    studio.start()
    page.open(studio.address)
    ready(page)
    page.wait("the chain is kept over a restart", CHAIN + " === 'emboss,gray'")
    page.call("POST", "/se/log", {"type": "browser"})  # the console rightly reports the server's end


def side_by_side(page, studio):
    other = Page(900, 700)
    try:
        other.open(studio.address)
        ready(other)
        other.wait("a new page goes on with what was edited last", CHAIN + " === 'emboss,gray'")
        other.shown(lambda: other.click(".entry:last-child button", "Remove gray"))
        page.panel("add")
        page.shown(lambda: page.click(".tile", "invert"))
        time.sleep(0.6)
        studio.stop(signal.SIGKILL)
        studio.start()
        for one, chain in ((page, "emboss,gray,invert"), (other, "emboss")):
            # What the studio has kept, not the browser.
            one.run("addEventListener('pagehide', event => event.stopImmediatePropagation(), true); sessionStorage.removeItem('draft')")
            one.open(studio.address)
            ready(one)
            one.wait(chain, CHAIN + " === arguments[0]", chain)
            one.call("POST", "/se/log", {"type": "browser"})
        # A copy of a page goes on with its work under a name of its own.
        other.run("open(location.href)")
        name, handles = other.run("return sessionStorage.page"), other.call("GET", "/window/handles", None)
        other.call("POST", "/window", {"handle": handles[-1]})
        ready(other)
        other.wait("the copy", CHAIN + " === 'emboss'")
        assert other.run("return sessionStorage.page") != name
        other.calm()
    finally:
        other.close()


def scrolls(page, studio):
    """Two thousand photographs: a few nodes, however far they are scrolled."""
    many = studio.folder / "many"
    many.mkdir()
    for i in range(2000):
        os.link(studio.folder / "lake.png", many / f"photo{i}.png")
    page.click("#job-slideshow")
    page.click(".crumbs button", "Folder")
    page.click(".file", "many")
    page.wait("the folder is listed", "return document.querySelector('.file')?.getAttribute('aria-setsize') === '2000'")
    nodes = page.call("POST", "/execute/async", {"args": [], "script": """
        const done = arguments[0], grid = document.querySelector(".grid"), end = grid.scrollHeight; let nodes = 0, step = 0;
        requestAnimationFrame(function next() { nodes = Math.max(nodes, document.querySelectorAll(".file").length);
            grid.scrollTop = end * ++step / 20; if (step < 20) requestAnimationFrame(next); else done(nodes); });"""})
    assert 0 < nodes < 80, nodes
    page.run("document.querySelector('.file[tabindex=\"0\"], .file').focus()")
    page.key("End")
    page.wait("the last one has the focus", "return document.activeElement.ariaPosInSet === '2000'")

    # All of them go into the slideshow by keys, whose list is as light, and is ordered in its midst.
    for keys in (["Home"], [" "], ["End"], ["shift", " "], ["Enter"]):
        page.key(*keys)
    page.wait("all are added", "return document.querySelector('.chain > li')?.getAttribute('aria-setsize') === '2000'")
    page.run("document.querySelector('.chain').closest('.panel').scrollTop = 50000")
    page.wait("the list is drawn there", "return Number(document.querySelector('.chain > li')?.ariaPosInSet) > 900")
    assert page.run("return document.querySelectorAll('.chain > li').length") < 60
    place = "return [...document.querySelectorAll('.chain .title')].find(one => one.textContent === arguments[0]).closest('li').ariaPosInSet"
    name = page.run("const one = document.querySelectorAll('.chain .title')[9]; one.focus(); return one.textContent")
    before = int(page.run(place, name))
    page.key("alt", "down")
    assert int(page.run(place, name)) == before + 1


def steps(page, studio):
    outlives(page, studio)
    side_by_side(page, studio)
    scrolls(page, studio)


if __name__ == "__main__":
    walk(steps, clip=0.5)
