"""The stubs, as a type checker reads them: it takes the lines of an example, and finds the mistake in each that is marked."""

import os
import re
import subprocess
import tempfile
import unittest

EXAMPLE = '''
import numpy
import nifikral
from numpy.typing import NDArray

picture: NDArray[numpy.uint8] = numpy.zeros((9, 9, 3), numpy.uint8)
painted = nifikral.apply(picture, "oilpainting", brushsize=4)
nifikral.apply(painted, "oilpainting", brushsize="0..8", duration=9, out=painted, order="bgr", inside="circle,3,3,2")
nifikral.apply(picture, "oilpainting", brush=4)  # wrong
nifikral.apply(picture, "oilpainting", brushsize=[4])  # wrong
nifikral.apply(picture, "title", text="x", align="top")  # wrong
nifikral.apply(picture / 255, "invert")  # wrong
nifikral.apply(picture, "invert", order="gbr")  # wrong
for name in nifikral.effects("blur"):
    nifikral.apply(picture, name)
swirl = nifikral.Effect("rotate", x="50%", scale=2.5)
nifikral.Effect("rotate", z=3)  # wrong
planes = swirl((picture[..., 0], picture[..., 1], picture[..., 2]), position=3)
luma: NDArray[numpy.uint8] = planes[0]
chain = nifikral.Chain("@old-film", swirl, "invert")
print(chain(picture, out=picture).shape)
chain("photo.jpg")  # wrong
for frame in nifikral.slideshow(["a.jpg"], size=(640, 360), transitions=["pageturn"]):
    print(frame.mean())
nifikral.slideshow(["a.jpg"], size="640x360")  # wrong
menu = nifikral.menu("menu.json")
print(len(menu), menu.rate + 1, menu[0].shape, menu[1:4][0].shape)
nifikral.title("Summer", over=picture, colour="red")  # wrong
print(nifikral.effects()["rotate"].parameters["x"].range[0])
nifikral.order = "bgr"
nifikral.order = "bgra"  # wrong
try:
    nifikral.apply(picture, "gray")
except nifikral.UsageError as error:
    print(error.code + 1)
'''


class Stubs(unittest.TestCase):
    def test_take_what_is_right_and_find_what_is_wrong(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(f"{folder}/example.py", "w", encoding="utf-8") as file:
                file.write(EXAMPLE)
            environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
            checked = subprocess.run(["mypy", "--strict", "--hide-error-context", "--cache-dir=cache", "example.py"], cwd=folder,
                                     env=environment, capture_output=True, text=True).stdout
        found = sorted({int(number) for number in re.findall(r"^example\.py:(\d+): error", checked, re.MULTILINE)})
        wrong = [number for number, line in enumerate(EXAMPLE.split("\n"), 1) if line.endswith("# wrong")]
        self.assertEqual(found, wrong, checked)
