"""A studio on a folder of its own, and a browser on its page, for the walks through it."""
import pathlib, shlex, signal, subprocess, sys, tempfile, time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))
from browser import Browser, installed

# The node that is asked for: by a selector, and a part of what it is called or says.
FIND = """
function find(selector, text) {
    return [...document.querySelectorAll(selector)].find(node => node.checkVisibility() && !node.disabled
        && (!text || [node.ariaLabel, node.title, node.textContent, node.value].some(say => say?.includes?.(text))));
}
"""


class Page(Browser):
    """The page of a studio: things are found by what they say, as people do it."""
    pointer = "mouse"  # what a click is made with, if nothing else is said
    STATE = """return [...document.querySelectorAll(".notice")].map(one => one.textContent)"""

    def has(self, selector, text=""):
        return self.run(FIND + "return Boolean(find(...arguments))", selector, text)

    def wait(self, what, script, *arguments, seconds=15):
        """Waits for a script to return something; returns it."""
        end = time.monotonic() + seconds
        while True:
            value = self.run(FIND + script, *arguments)
            if value:
                return value
            if time.monotonic() > end:
                self.screenshot("fault")
                raise AssertionError(f"{what}; messages: {self.state()}")
            time.sleep(0.03)

    def place(self, selector, text=""):
        self.wait(f"no {selector} {text}", "return Boolean(find(...arguments))", selector, text)
        return self.run(FIND + """const node = find(...arguments); node.scrollIntoView({block: "nearest", inline: "nearest"});
            const box = node.getBoundingClientRect(); return [box.x + box.width / 2, box.y + box.height / 2]""", selector, text)

    def click(self, selector, text="", how=None):
        """By mouse or touch where the thing is, or by Enter where the focus is put on it."""
        how = how or self.pointer
        if how == "keys":
            self.place(selector, text)
            self.run(FIND + "find(...arguments).focus()", selector, text)
            self.key("Enter")
            return
        self.run("window.clicked = false; addEventListener('click', () => { window.clicked = true; }, {capture: true, once: true})")
        for _ in range(5):
            self.point(*self.place(selector, text), how)
            # A finger that a busy machine lets rest too long does not click.
            end = time.monotonic() + 1
            while how == "touch" and not self.run("return window.clicked") and time.monotonic() < end:
                time.sleep(0.03)
            if how != "touch" or self.run("return window.clicked"):
                return

    def fill(self, selector, label, value):
        """Types a value in place of what a field holds."""
        self.click(selector, label)
        self.key("control", "a")
        for letter in value:
            self.key(letter)
        self.key("Tab")

    def shown(self, act):
        """Does something and waits until the picture on the stage has changed for it."""
        self.run("""window.shown = 0; for (const stage of document.querySelectorAll(".stage")) stage.addEventListener("shown", () => ++window.shown)""")
        act()
        self.wait("the stage shows nothing new", "return window.shown")

    def dialog(self, output, overwrite=False):
        """Fills in the name of an output and confirms it."""
        self.wait("no dialogue", "return document.querySelector('dialog input[name=output]')")
        self.run("document.querySelector('dialog input[name=output]').select()")
        for letter in output:
            self.key(letter)
        if overwrite:
            self.click("dialog input[type=checkbox]")
        self.key("Enter")

    def command(self):
        """The command line that the page copies."""
        self.run("for (const one of document.querySelectorAll('.notice')) one.remove()")
        self.click("button", "Copy the command line")
        return self.wait("no command line", "return document.querySelector('.notice code')?.textContent")

    def job(self, name):
        self.click("#job-" + name)
        self.wait(name, "return document.querySelector('#job-' + arguments[0]).ariaSelected === 'true'", name)

    def panel(self, name):
        self.click("#panel-tab-" + name)

    def take(self, *names):
        """Adds files of the folder to a list."""
        for name in names:
            self.click(".file", name)
        self.click(".foot button", "Add")

    def drop(self, name, selector):
        """Drags a file of the folder onto a list, as far as that goes without a hand on the mouse."""
        self.run(FIND + """const [file, onto, data] = [find(".file", arguments[0]), find(arguments[1]), new DataTransfer()];
            for (const [node, type] of [[file, "dragstart"], [onto, "dragover"], [onto, "drop"]])
                node.dispatchEvent(new DragEvent(type, {dataTransfer: data, bubbles: true, cancelable: true}))""", name, selector)

    def calm(self):
        """No fault is on the page, and none in the console."""
        faults = self.run("return [...document.querySelectorAll('.notice.fault')].map(one => one.textContent)")
        assert not faults, f"the page says {faults}"
        self.check_console()


class Studio:
    """The server on a folder; its address is on the first line that it prints."""

    def __init__(self, program, folder):
        self.program, self.folder, self.port = program, pathlib.Path(folder), 0
        self.start()

    def start(self):
        self.process = subprocess.Popen([self.program, "studio", str(self.folder), "--port", str(self.port)], stdout=subprocess.PIPE, text=True)
        for line in self.process.stdout:
            if "http://" in line:
                self.address = next(word for word in line.split() if word.startswith("http://"))
                return
        raise AssertionError("the studio does not start")

    def stop(self, how=signal.SIGINT):
        self.process.send_signal(how)
        code = self.process.wait(timeout=10)
        assert how != signal.SIGINT or code in (0, 130), f"the studio ends with {code}"

    def same_bytes(self, line, output):
        """Runs a copied command line for another output beside; the bytes are those that the studio wrote."""
        made, words = self.folder / output, shlex.split(line)
        named = [word for word in words[2:] if word.endswith(made.suffix) and not word.startswith("-") and not (self.folder / word).exists()]
        assert len(named) == 1, f"the output is not to be found in {line}"
        other = made.with_name("again-" + made.name)
        subprocess.run([self.program, *[str(other) if word == named[0] else word for word in words[1:]]], cwd=self.folder, check=True, capture_output=True)
        assert made.read_bytes() == other.read_bytes(), f"{output} differs from what this makes: {line}"


def folder_of(program, **films):
    """A folder with pictures, and films of some of them."""
    temporary = tempfile.TemporaryDirectory()
    folder = pathlib.Path(temporary.name)
    subprocess.run([program, "init", "menu_common", str(folder / "example")], check=True, capture_output=True)
    for name in ("lake", "desert", "forest", "night"):
        (folder / "example" / f"{name}.png").rename(folder / f"{name}.png")
    for name, seconds in films.items():
        subprocess.run([program, "slideshow", folder / "lake.png", folder / "night.png", "-o", folder / f"{name}.mp4", "--size", "320x180",
                        "--seconds", str(seconds), "--transition-seconds", "0.4", "-q"], check=True)
    for rest in (folder / "example").iterdir():
        rest.unlink()
    (folder / "example").rmdir()
    return temporary


def walk(steps, **films):
    """Runs steps(page, studio) on a new folder; the exit code says how it went, 77 that no browser is installed."""
    if not installed():
        print("Chromium is not installed")
        sys.exit(77)
    program = str(pathlib.Path(sys.argv[1]).absolute())
    with folder_of(program, **films) as folder:
        studio, page = Studio(program, folder), Page(1280, 900)
        try:
            page.open(studio.address)
            page.wait("the page is not ready", "return document.documentElement.dataset.ready")
            steps(page, studio)
            page.calm()
            studio.stop()
        finally:
            page.close()
            studio.process.kill()
