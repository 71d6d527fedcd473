#!/usr/bin/env python3
"""A menu: template, pictures, texts, buttons, its loop, its file and its film. usage: menu_walk.py NIFIKRAL"""
import json

from walking import FIND, walk


def steps(page, studio):
    page.job("menu")
    page.panel("templates")
    page.wait("templates of one's own pictures", "return document.querySelectorAll('.tile canvas.painted').length > 3", seconds=30)
    first = "return document.querySelector('.tile canvas').toDataURL()"
    page.wait("templates move", first + " !== arguments[0]", page.run(first))
    page.shown(lambda: page.click(".tile", "menu stacking"))
    # What follows is seen at the menu's begin: the frames of a menu are made one after another.
    page.run("document.querySelector('.scrubber').focus()")
    page.shown(lambda: page.key("Home"))
    page.panel("content")
    names = "return [...document.querySelectorAll('.chain .thumb + .title')].map(one => one.textContent)"
    assert page.run(names) == ["desert.png", "forest.png", "lake.png", "night.png"], page.run(names)
    page.shown(lambda: page.drag(page.place(".chain .entry:nth-child(3) .grip"), page.place(".chain .entry:nth-child(1) .grip")))
    assert page.run(names)[0] == "lake.png", page.run(names)
    page.shown(lambda: page.take("clip"))
    assert page.run(names)[-1] == "clip.mp4", page.run(names)

    # Texts: their words, size, colour and place, by keys, mouse and on the picture.
    page.shown(lambda: page.fill(".entry input[type=text]", "Text 1", "The lake"))
    page.click("button", "Text 1: font")
    page.click(".chip", "outline")
    page.run("[...document.querySelectorAll('.entry input[type=range]')].find(one => one.ariaLabel === 'size').focus()")
    page.shown(lambda: page.key("right"))
    handle = page.place(".handle", "The lake")
    page.shown(lambda: page.drag(handle, (handle[0] + 50, handle[1] + 30), "touch"))
    page.fill("textarea", "Buttons", "Play all")
    page.fill("input[type=number]", "length, exact", "2")
    page.click("button", "Safe areas")
    page.wait("the buttons are marked", "return document.querySelectorAll('.safe').length === 2 && document.querySelector('.press')")
    page.screenshot("menu")

    # The loop plays, and the remote control goes from button to button.
    page.run("document.querySelector('.stage').focus()")
    before = page.run("return Number(document.querySelector('.scrubber').value)")
    page.key(" ")
    page.wait("the menu plays", "return Number(document.querySelector('.scrubber').value) > arguments[0] + 5", before)
    page.key(" ")
    page.panel("remote")
    page.click(".remote button", "OK")
    page.wait("the remote works", "return document.querySelector('.remote + p').textContent.includes('Play')")

    page.click("button", "Save")
    page.wait("it is saved", "return [...document.querySelectorAll('.notice')].some(one => one.textContent.includes('menu.json is written'))")
    saved = json.loads((studio.folder / "menu.json").read_text())
    assert saved["template"] == "menu_stacking" and saved["additionSourcePaths"][0] == "lake.png", saved
    assert saved["textInfos"][0]["text"] == "The lake" and "outline" in saved["textInfos"][0]["fontstyle"], saved["textInfos"][0]
    assert saved["duration"] == 2, saved
    line = page.command()
    assert "menu menu_stacking menu.json" in line, line
    page.click("button", "Render")
    page.dialog("film.mp4")
    page.wait("the menu is rendered", "return [...document.querySelectorAll('.notice')].some(one => one.textContent.includes('film.mp4 is written'))", seconds=60)
    studio.same_bytes(line, "film.mp4")

    # A template that leaves its pictures' places open: one is dragged.
    page.panel("templates")
    page.shown(lambda: page.click(".tile", "menu common"))
    place = page.place(".handle", "picture 1")
    page.shown(lambda: page.drag(place, (place[0] - 40, place[1] + 30), steps=40))
    there = page.place(".handle", "picture 1")
    assert abs(there[0] - place[0] + 40) < 2 and abs(there[1] - place[1] - 30) < 2, (place, there)
    page.run(FIND + "find('.handle', 'picture 1').focus()")
    for _ in range(2):
        page.shown(lambda: page.key("down"))
    assert page.place(".handle", "picture 1")[1] > there[1] + 5, there


if __name__ == "__main__":
    walk(steps, clip=0.5)
