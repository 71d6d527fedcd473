"""Pictures, and the command that the package has to agree with."""

import os
import subprocess
import unittest

import numpy
from PIL import Image

COMMAND = os.environ.get("NIFIKRAL_COMMAND", "nifikral")


def noise(*shape, seed=1):
    return numpy.random.default_rng(seed).integers(0, 256, shape, numpy.uint8)


def photograph(height=46, width=61):
    """Smooth, with an edge, and other values in each channel."""
    y, x = numpy.mgrid[:height, :width]
    planes = x * 4, y * 5, 255 * ((x - width / 2) ** 2 + (y - height / 2) ** 2 < height * 5)
    return numpy.dstack(planes).clip(0, 255).astype(numpy.uint8)


def command(*arguments, folder):
    done = subprocess.run([COMMAND, *arguments], cwd=folder, capture_output=True, text=True)
    if done.returncode:
        raise AssertionError(done.stderr)


def write(path, array):
    Image.fromarray(array).save(path)


def read(path):
    return numpy.asarray(Image.open(path))


class TestCase(unittest.TestCase):
    def assertSame(self, first, second, message=""):
        self.assertEqual(first.shape, second.shape, message)
        self.assertEqual(first.dtype, second.dtype, message)
        different = numpy.argwhere(first != second)
        self.assertEqual(len(different), 0, f"{message}: differs first at {different[:1]}")
