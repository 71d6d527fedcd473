#!/usr/bin/python3
"""Runs the ```python blocks of a page in order, in one namespace, in a folder with a sample photo.jpg and holiday.mp4. What a
```text block shows, the block before it must print; a line "..." stands for any lines there. The pictures that the page's code
makes in pictures/ must look like those beside the page; --write replaces these.
Usage: run_python_page.py BUILD_FOLDER PAGE [--write]"""

import contextlib
import fcntl
import io
import os
import re
import shutil
import subprocess
import sys
import tempfile

import numpy
from PIL import Image

build, page = map(os.path.realpath, sys.argv[1:3])
sources = os.path.realpath(os.path.join(os.path.dirname(__file__), "../.."))
samples = os.path.join(build, "samples")
os.makedirs(samples, exist_ok=True)
folder = os.open(samples, os.O_RDONLY)
fcntl.flock(folder, fcntl.LOCK_EX)
subprocess.run([f"{sources}/scripts/sample_media.sh", samples], check=True)
os.close(folder)
os.environ["PATH"] = f"{build}/bin:" + os.environ["PATH"]

with open(page, encoding="utf-8") as file:
    blocks = re.findall(r"^```(python|text)\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
names, printed = {"__name__": "page"}, ""
with tempfile.TemporaryDirectory() as work:
    os.chdir(work)
    os.environ["HOME"] = work
    os.mkdir("pictures")
    shutil.copy(f"{samples}/photo.jpg", "photo.jpg")
    shutil.copy(f"{samples}/clip.mp4", "holiday.mp4")
    for number, (kind, text) in enumerate(blocks):
        if kind == "python":
            with contextlib.redirect_stdout(io.StringIO()) as output:
                exec(compile(text, f"{page}, block {number}", "exec"), names)
            printed = output.getvalue()
        elif not re.fullmatch(re.escape(text).replace(re.escape("...\n"), "(.*\n)*"), printed):
            sys.exit(f"{page} shows\n{text}\nand its code prints\n{printed}")
    made = sorted(os.listdir("pictures"))
    assert made, "the page makes no pictures"
    for name in made:
        beside = os.path.join(os.path.dirname(page), "pictures", name)
        if "--write" in sys.argv:
            shutil.copy(f"pictures/{name}", beside)
        pictures = [numpy.asarray(Image.open(path)).astype(int) for path in (f"pictures/{name}", beside)]
        if pictures[0].shape != pictures[1].shape or abs(pictures[0] - pictures[1]).mean() > 3:
            sys.exit(f"{name} is not what the page makes; {sys.argv[0]} {sys.argv[1]} {sys.argv[2]} --write makes it again")
