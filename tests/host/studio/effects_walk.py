#!/usr/bin/env python3
"""A picture and a film under effects: chosen, set, ordered, compared, saved. usage: effects_walk.py NIFIKRAL"""
from walking import walk


def finished(page, output):
    page.wait(f"{output} is not written", "return [...document.querySelectorAll('.notice')].some(one => one.textContent.includes(arguments[0] + ' is written'))", output, seconds=30)


def value(page, label):
    return float(page.run("return [...document.querySelectorAll('.entry input[type=number]')].find(one => one.checkVisibility() && one.ariaLabel === arguments[0])?.value ?? 'NaN'", label + ", exact"))


def picture(page, studio):
    page.shown(lambda: page.click(".file", "lake"))
    page.panel("add")
    page.wait("tiles show the picture", "return document.querySelectorAll('.tile canvas.painted').length > 5")
    page.shown(lambda: page.click(".tile", "rotate"))
    assert page.has(".entry .title", "rotate") and value(page, "radius") == 45

    # The handles: by mouse, by finger and by keys.
    middle, edge = page.place(".handle", "place"), page.place(".handle", "radius")
    page.shown(lambda: page.drag(edge, (edge[0] - (edge[0] - middle[0]) / 2, edge[1])))
    assert abs(value(page, "radius") - 22.5) < 1, value(page, "radius")
    page.shown(lambda: page.drag(middle, (middle[0] - 60, middle[1] - 40), "touch"))
    across = value(page, "centre, across")
    assert across < 45, across
    page.run("document.querySelector('.handle').focus()")
    page.shown(lambda: page.key("right"))
    assert abs(value(page, "centre, across") - across - 1) < 0.01
    page.key("control", "z")
    page.wait("undo takes the step back", "return Math.abs(document.querySelector('.control.column input[type=number]').value - arguments[0]) < 0.011", across)
    page.key("control", "shift", "z")

    # A slider by keys, a second effect, and their order.
    page.run("[...document.querySelectorAll('.entry input[type=range]')].find(one => one.ariaLabel === 'scale').focus()")
    page.shown(lambda: page.key("right"))
    page.panel("add")
    page.click(".panel input[type=search]")
    for letter in "pixelate":
        page.key(letter)
    page.shown(lambda: page.click(".tile", "mosaic", "keys"))
    order = "return [...document.querySelectorAll('.entry .title')].map(one => one.textContent).join()"
    assert page.run(order) == "rotate,mosaic", page.run(order)
    page.shown(lambda: (page.run("[...document.querySelectorAll('.entry .title')][1].focus()"), page.key("alt", "up")))
    assert page.run(order) == "mosaic,rotate", page.run(order)
    page.shown(lambda: page.drag(page.place(".entry:last-child .grip"), page.place(".entry .grip")))
    assert page.run(order) == "rotate,mosaic", page.run(order)
    page.click(".entry:last-child button", "Switch on or off")

    # The split line shows the original on its left.
    page.click("button", "Compare with the original")
    # A handle is reached on the line as well.
    page.click(".entry .title", "rotate")
    middle = page.place(".handle", "place")
    page.drag(page.place(".split"), (middle[0], middle[1] + 90))
    page.shown(lambda: page.drag(middle, (middle[0] + 20, middle[1])))
    assert abs(page.place(".handle", "place")[0] - middle[0] - 20) < 2
    page.run("document.querySelector('.split').focus()")
    page.key("Home")
    assert page.run("return document.querySelector('.split').getAttribute('aria-valuenow')") == "0"
    page.key("c")
    page.run("document.querySelector('.stage').focus()")
    page.key("1")
    page.wait("single pixels", "return document.querySelector('.percent').textContent === '100 %'")
    page.key("0")
    page.screenshot("picture")

    page.click("button", "Save")
    page.dialog("swirl.png")
    finished(page, "swirl.png")
    line = page.command()
    studio.same_bytes(line, "swirl.png")

    page.click("button", "Save as preset")
    page.wait("the dialogue", "return document.querySelector('dialog')")
    for letter in "round-about":
        page.key(letter)
    page.key("Enter")
    finished(page, "round-about.presets")
    assert "round-about = rotate:" in (studio.folder / "round-about.presets").read_text()
    page.click(".file", "round-about")
    page.wait("the preset is added", "return document.querySelectorAll('.entry').length === 3")


def film(page, studio):
    page.job("film")
    page.shown(lambda: page.click(".file", "clip"))
    page.panel("add")
    page.shown(lambda: page.click(".tile", "gauss"))
    page.click("button", "Key points: let count change")
    assert page.run("return document.querySelectorAll('.key-point').length") == 2
    page.run("document.querySelectorAll('.key-point')[1].focus()")
    for _ in range(3):
        page.key("up")
    page.run("document.querySelector('.scrubber').focus()")
    page.shown(lambda: page.key("End"))
    at = "return Number(document.querySelector('.scrubber').value)"
    last = page.run(at)
    assert last == page.run("return Number(document.querySelector('.scrubber').max)") and last > 20
    points = lambda: page.run("return document.querySelectorAll('.key-point').length")
    page.run("document.querySelector('.scrubber').focus()")
    page.key("left", "left")
    page.click("button", "Add a key point at this time")
    assert points() == 3
    page.click("button", "Remove the chosen key point", "keys")
    assert points() == 2
    page.run("document.querySelector('.scrubber').focus()")
    page.key("Home")
    for _ in range(5):
        page.key("right")
    page.run("document.querySelector('.stage').focus()")
    page.key("i")
    page.key(" ")
    page.wait("it plays to the end", "return Number(document.querySelector('.scrubber').value) === arguments[0]", last)
    page.screenshot("film")
    page.click("button", "Render")
    page.dialog("soft.mp4")
    finished(page, "soft.mp4")
    line = page.command()
    assert "@0s:" in line, line
    studio.same_bytes(line, "soft.mp4")


def narrow(page, studio):
    """A film on a telephone, by fingers alone."""
    page.resize(390, 844, touch=True)
    page.pointer = "touch"
    page.job("film")
    page.panel("files")
    page.shown(lambda: page.click(".file", "pan"))
    page.panel("add")
    page.wait("tiles show the film", "return document.querySelectorAll('.tile canvas.painted').length > 3")
    page.shown(lambda: page.click(".tile", "rotate"))
    middle = page.place(".handle", "place")
    page.shown(lambda: page.drag(middle, (middle[0] - 40, middle[1]), "touch"))
    assert value(page, "centre, across") < 45
    page.click("button", "Key points: let radius change")
    point = page.place(".key-point:last-of-type")
    page.shown(lambda: page.drag(point, (point[0], point[1] - 20), "touch"))
    at, (x, y) = "return Number(document.querySelector('.scrubber').value)", page.place(".scrubber")
    page.shown(lambda: page.drag((x - 40, y), (x + 20, y), "touch", 12))
    there = page.run(at)
    assert there > 5, there
    page.click("button", "In")
    page.click("button", "Play")
    page.wait("it plays to the end", "return Number(document.querySelector('.scrubber').value) === Number(document.querySelector('.scrubber').max)")
    page.screenshot("film-narrow")
    page.click("button", "Render")
    page.dialog("narrow.mp4")
    finished(page, "narrow.mp4")
    line = page.command()
    assert "@0s:" in line and "--frames=" in line, line
    studio.same_bytes(line, "narrow.mp4")


def steps(page, studio):
    picture(page, studio)
    film(page, studio)
    narrow(page, studio)


if __name__ == "__main__":
    walk(steps, clip=1.2, pan=1)
