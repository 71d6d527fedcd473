#!/usr/bin/env python3
"""Walks a disc for browsers in a headless Chromium: every button by mouse, keys and touch, films to their ends.

usage: browser_walk.py FOLDER EXPECTED.json

The second file says what the disc is to do. With NIFIKRAL_SCREENSHOTS naming a folder, pictures of it go there. Ends
with 77 where Chromium is not installed.
"""
import collections, json, pathlib, sys, time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))
from browser import Browser, installed

DIRECTIONS = ["up", "down", "left", "right"]
# Where the viewer is: the page and the button that has the focus, or the film that plays.
STATE = """
const menus = [...document.querySelectorAll("#menus > section")];
const page = menus.findIndex(menu => menu.checkVisibility());
const film = document.getElementById("film"), movie = document.getElementById("movie");
const menu = menus[page]?.querySelector("video");
return {page, button: page < 0 ? -1 : [...menus[page].querySelectorAll("button")].indexOf(document.activeElement),
    film: film.checkVisibility() ? movie.currentSrc.split("/").pop() : "", time: movie.currentTime,
    ready: movie.readyState, paused: movie.paused, menuTime: menu?.currentTime, menuPaused: menu?.paused,
    message: document.getElementById("message").hidden ? "" : document.getElementById("message").textContent,
    cue: [...movie.textTracks].flatMap(t => t.mode === "showing" ? [...t.activeCues ?? []].map(c => c.text) : []),
    chapter: document.getElementById("chapters").selectedIndex};
"""


class DiscBrowser(Browser):
    STATE = STATE


class Walk:
    def __init__(self, browser, folder, expected):
        self.browser, self.expected = browser, expected
        self.page = pathlib.Path(folder, "index.html").absolute().as_uri()

    def place(self, page, button):
        """The middle of a button on the screen, and its box in shares of the menu's picture."""
        return self.browser.run("""
            const menu = document.querySelectorAll("#menus > section")[arguments[0]];
            const box = menu.querySelectorAll("button")[arguments[1]].getBoundingClientRect();
            const whole = menu.querySelector("video").getBoundingClientRect();
            return {x: box.x + box.width / 2, y: box.y + box.height / 2, ratio: whole.width / whole.height,
                inside: whole.x >= 0 && whole.right <= innerWidth + 1 && whole.bottom <= innerHeight + 1,
                share: [(box.x - whole.x) / whole.width, (box.y - whole.y) / whole.height,
                    box.width / whole.width, box.height / whole.height]};""", page, button)

    def keys_between(self, page, begin, end):
        """The shortest way from one button to another, as arrows with the button that each leads to."""
        ways, line = {begin: []}, collections.deque([begin])
        while line and end not in ways:
            at = line.popleft()
            for direction, to in zip(DIRECTIONS, self.expected["pages"][page]["buttons"][at]["links"]):
                if to not in ways:
                    ways[to] = ways[at] + [(direction, to)]
                    line.append(to)
        return ways[end]

    def press(self, page, button, how):
        self.chosen[page] = button
        if how == "keys":
            for key, to in self.keys_between(page, self.browser.state()["button"], button):
                self.browser.key(key)
                state = self.browser.state()
                assert state["button"] == to, f"{key} on page {page} leads to {state['button']} and not {to}"
            self.browser.key("Enter")
        else:
            at = self.place(page, button)
            self.browser.point(at["x"], at["y"], how)

    def enter(self, page):
        """Opens the disc and goes to a page by its buttons."""
        pages = self.expected["pages"]
        ways, line = {0: []}, collections.deque([0])
        while line:
            at = line.popleft()
            for number, button in enumerate(pages[at]["buttons"]):
                to = button["page"]
                if button["kind"] == "page" and to not in ways:
                    ways[to] = ways[at] + [(at, number)]
                    line.append(to)
        self.browser.open(self.page)
        self.chosen = {}
        for at, number in ways[page]:
            self.press(at, number, "keys")
        state = self.browser.state()
        assert state["page"] == page and state["button"] >= 0, f"page {page} is not entered: {state}"

    def check_target(self, button, what):
        films = self.expected["films"]
        if button["kind"] == "page":
            self.browser.until(what, lambda s: s["page"] == button["page"]
                               and s["button"] == self.chosen.get(button["page"], 0))
            return
        film = 0 if button["kind"] == "all" else button["film"]
        begin = films[film]["chapters"][button["chapter"]] if button["kind"] == "chapter" else 0
        state = self.browser.until(what, lambda s: s["film"] == films[film]["files"][0] and s["page"] < 0
                                   and s["ready"] >= 2 and not s["paused"])
        assert begin <= state["time"] < begin + 0.9, f"{what}: {state}"

    def every_button(self):
        for page, data in enumerate(self.expected["pages"]):
            for number, button in enumerate(data["buttons"]):
                for how in ("mouse", "keys", "touch"):
                    self.enter(page)
                    self.press(page, number, how)
                    self.check_target(button, f"button {number} of page {page} by {how}")

    def names(self):
        """What a screen reader says of the buttons."""
        for page, data in enumerate(self.expected["pages"]):
            self.enter(page)
            for number, button in enumerate(data["buttons"]):
                found = self.browser.run("""return document.querySelectorAll("#menus > section")[arguments[0]]
                    .querySelectorAll("button")[arguments[1]]""", page, number)
                name = self.browser.call("GET", f"/element/{list(found.values())[0]}/computedlabel", None)
                assert button["caption"] and button["caption"] in name, f"{name!r} has no {button['caption']!r}"

    def places(self, size):
        for page, data in enumerate(self.expected["pages"]):
            self.enter(page)
            for number, button in enumerate(data["buttons"]):
                at = self.place(page, number)
                assert at["inside"] and abs(at["ratio"] - self.expected["aspect"]) < 0.02, f"{size}: {at}"
                for has, wanted in zip(at["share"], button["place"]):
                    assert abs(has - wanted) < 0.004, f"{size}: button {number} of page {page}: {at}, {button}"

    def back_from_film(self):
        page, number = self.expected["chapterButton"]
        button = self.expected["pages"][page]["buttons"][number]
        for key in ("Escape", "Backspace"):
            self.enter(page)
            self.press(page, number, "keys")
            self.check_target(button, "the chapter")
            self.browser.key(key)
            state = self.browser.state()
            assert (state["page"], state["button"], state["film"]) == (page, number, ""), f"{key}: {state}"
        # It goes on where it was left; and from the chapters one comes to the film's button.
        self.browser.key("m")
        self.browser.until("the film goes on", lambda s: s["film"] and s["time"] >= state["time"] and not s["paused"])
        self.browser.key("Escape")
        self.browser.key("Backspace")
        state, place = self.browser.state(), self.expected["films"][button["film"]]["place"]
        assert [state["page"], state["button"]] == place, f"back from chapters: {state}"

    def after_films(self):
        films = self.expected["films"]
        for film, data in enumerate(films):
            page, number = data["place"]
            self.enter(page)
            self.press(page, number, "keys")
            after = films[(film + 1) % len(films)]["place"]
            self.browser.until(f"after film {film}", lambda s: [s["page"], s["button"]] == after)

    def play_all(self):
        page, number = self.expected["playAll"]
        self.enter(page)
        self.press(page, number, "keys")
        for data in self.expected["films"]:
            self.browser.until("playing all", lambda s: s["film"] == data["files"][0])
        self.browser.until("after all", lambda s: [s["page"], s["button"]] == self.expected["films"][0]["place"])

    def keys_in_film(self):
        """Of the film that has chapters, two sounds and subtitles."""
        film = self.expected["films"][0]
        self.enter(film["place"][0])
        self.press(*film["place"], "keys")
        self.browser.until("it plays", lambda s: s["ready"] >= 2 and not s["paused"])
        self.browser.key(" ")
        self.browser.until("it pauses", lambda s: s["paused"])
        # A slow machine may have played on into a later chapter.
        for _ in film["chapters"]:
            self.browser.key("PageUp")
        self.browser.until("the first chapter", lambda s: s["chapter"] == 0 and s["ready"] >= 2)
        self.browser.key("PageDown")
        state = self.browser.until("the next chapter", lambda s: s["chapter"] == 1 and s["ready"] >= 2)
        assert state["time"] == film["chapters"][1], state
        self.browser.key("s")
        self.browser.until("subtitles", lambda s: s["cue"] == [film["subtitle"]])
        self.browser.screenshot("film")
        self.browser.key("a")
        state = self.browser.until("the other sound", lambda s: s["film"] == film["files"][1] and s["ready"] >= 2
                                   and s["time"] == film["chapters"][1])
        assert state["paused"], state
        self.browser.key(" ")
        self.browser.until("it plays on", lambda s: not s["paused"] and s["time"] > film["chapters"][1])
        self.browser.key("left")
        self.browser.until("it goes back", lambda s: s["time"] < 0.9)

    def loops(self):
        """A page that has a part before its loop plays that once."""
        page, start = self.expected["loop"]
        self.enter(page)
        self.browser.until("the loop begins", lambda s: s["menuTime"] >= start)
        last = rounds = 0
        end = time.monotonic() + 20
        while rounds < 2:
            now = self.browser.state()["menuTime"]
            assert now >= start - 0.001, f"the menu went back to {now}"
            rounds += now < last
            last = now
            assert time.monotonic() < end, "the menu does not repeat"
        self.browser.screenshot("page")

    def holds_still(self):
        self.enter(0)
        time.sleep(1)
        state = self.browser.state()
        assert state["menuPaused"] and state["menuTime"] == 0, f"the menu moves: {state}"
        self.browser.screenshot("still")
        self.press(0, 0, "keys")
        self.check_target(self.expected["pages"][0]["buttons"][0], "a film of a menu that holds still")

    def fails_well(self, folder):
        """A film that is gone leads back to the menu, with a message."""
        film = self.expected["films"][1]
        path = pathlib.Path(folder, "films", film["files"][0])
        path.rename(path.with_suffix(".away"))
        self.enter(film["place"][0])
        self.press(*film["place"], "keys")
        state = self.browser.until("a message", lambda s: film["files"][0] in s["message"])
        path.with_suffix(".away").rename(path)
        assert [state["page"], state["button"]] == film["place"], state


def main(folder, expected):
    if not installed():
        print("Chromium is not installed")
        return 77
    expected = json.loads(pathlib.Path(expected).read_text())
    for size, arguments in (((1280, 800), []), ((500, 900), []), ((1000, 700), ["--force-prefers-reduced-motion"])):
        browser = DiscBrowser(*size, *arguments)
        try:
            walk = Walk(browser, folder, expected)
            if arguments:
                walk.holds_still()
            else:
                walk.places(size)
                walk.enter(0)
                browser.until("the menu plays", lambda s: s["menuTime"] > 0.2 and not s["menuPaused"])
                browser.screenshot(f"menu-{size[0]}")
            if size == (1280, 800):
                walk.names()
                walk.every_button()
                walk.back_from_film()
                walk.after_films()
                walk.play_all()
                walk.keys_in_film()
                walk.loops()
            browser.check_console()
            if size == (500, 900):
                walk.fails_well(folder)
        finally:
            browser.close()
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
