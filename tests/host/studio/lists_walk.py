#!/usr/bin/env python3
"""A slideshow and a disc. usage: lists_walk.py NIFIKRAL"""
import json

from walking import walk

NAMES = "return [...document.querySelectorAll('.chain .thumb ~ .title')].filter(one => one.checkVisibility()).map(one => one.textContent)"


def written(page, name, seconds=30):
    page.wait(f"{name} is not written", "return [...document.querySelectorAll('.notice')].some(one => one.textContent.includes(arguments[0] + ' is written'))", name, seconds=seconds)


def slideshow(page, studio):
    page.job("slideshow")
    page.shown(lambda: page.take("lake", "desert"))
    page.shown(lambda: page.drop("night", ".entry .title"))
    assert page.run(NAMES) == ["desert.png", "lake.png", "night.png"], page.run(NAMES)
    page.shown(lambda: page.drag(page.place(".entry:last-child .grip"), page.place(".entry .grip"), "touch"))
    assert page.run(NAMES) == ["night.png", "desert.png", "lake.png"], page.run(NAMES)
    page.click(".entry .title", "night")
    page.shown(lambda: page.fill(".inside input[type=number]", "alone", "0.5"))
    page.panel("show")
    page.wait("transitions are shown", "return document.querySelectorAll('.tile canvas.painted').length === 8")
    page.click(".tile", "wipe", "keys")
    page.click(".tile", "crossfade")
    page.click(".chip", "none")
    page.shown(lambda: page.click(".chip", "zoomin"))
    page.shown(lambda: page.fill(".panel input[type=number]", "each picture", "0.6"))
    page.run("const size = [...document.querySelectorAll('select')].find(one => one.value === '1920x1080'); size.value = '1280x720'; size.dispatchEvent(new Event('change'))")
    page.screenshot("slideshow")
    page.click("button", "Render")
    page.dialog("show.mp4")
    written(page, "show.mp4", 60)
    line = page.command()
    assert "--transitions=wipe" in line and "zoomin" in line, line
    studio.same_bytes(line, "show.mp4")


def disc(page, studio):
    page.job("disc")
    page.panel("films")
    page.click("button", "Survey this folder")
    page.wait("the films are listed", "return document.querySelectorAll('.chain .entry').length >= 2")
    page.fill(".entry input[type=text]", "Title of film 1", "The clip")
    page.run("document.querySelector('.scrubber').focus()")
    page.key("End")
    page.click("button", "Chapter here")
    begin = "return Number(document.querySelector('li.control input[type=number]')?.value)"
    last, flag = page.wait("the chapter is listed", begin), page.place(".movable", "Chapter 1")
    page.drag(flag, (flag[0] - 60, flag[1]), "touch")
    dragged = page.run(begin)
    assert 0 < dragged < last - 0.1, (dragged, last)
    page.run("document.querySelector('.movable').focus()")
    page.key("left")
    assert 0.03 < dragged - page.run(begin) < 0.05, page.run(begin)
    page.fill("li.control input[type=text]", "Title of chapter 1", "End")
    page.wait("the room is known", "return document.querySelector('.space-bar span')", seconds=40)
    page.screenshot("disc")

    # The menus, and the way through them by the remote control: by the arrows to a film, which plays.
    page.shown(lambda: page.panel("menus"))
    heard = "return document.querySelector('.remote + p').textContent"
    assert "The clip" in page.run(heard), page.run(heard)
    page.click(".remote button", "Right")
    assert "Button 2 of" in page.run(heard), page.run(heard)
    page.click(".remote button", "Left", "touch")
    page.click(".remote button", "OK", "keys")
    page.wait("the film plays", "return document.querySelector('#panel-tab-films').ariaSelected === 'true' && find('.scrubber', 'Time in the film')?.value > 0")
    page.panel("films")
    page.click("button", "Save")
    written(page, "disc.json")
    saved = json.loads((studio.folder / "disc.json").read_text())
    assert any(film["title"] == "The clip" for film in saved["films"]), saved
    assert any(chapter == {"begin": chapter["begin"], "title": "End"} for film in saved["films"] for chapter in film.get("chapters", []) if isinstance(chapter, dict)), saved

    # Making it shows progress; cancelled, it leaves nothing.
    page.click("button", "Make")
    page.dialog("disc.iso")
    page.click(".opener")
    page.click(".queue button", "Cancel disc.iso")
    page.wait("it is cancelled", "return document.querySelector('.jobs .cancelled')", seconds=30)
    assert not (studio.folder / "disc.iso").exists()


def steps(page, studio):
    slideshow(page, studio)
    disc(page, studio)


if __name__ == "__main__":
    walk(steps, clip=1)
