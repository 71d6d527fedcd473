"""What Kdenlive shows of the frei0r plug-ins: theirs, in the ranges of the catalogue."""

import ctypes
import os
import subprocess
import tempfile
import unittest
from xml.etree import ElementTree

import nifikral
import numpy
from support import TestCase, photograph, read

BUILD = os.environ["NIFIKRAL_BUILD"]
PLUGINS = f"{BUILD}/lib/frei0r-1"
DESCRIPTIONS = f"{BUILD}/share/kdenlive/effects"


class PluginInfo(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("author", ctypes.c_char_p), ("kind", ctypes.c_int), ("model", ctypes.c_int),
                ("interface", ctypes.c_int), ("major", ctypes.c_int), ("minor", ctypes.c_int), ("parameters", ctypes.c_int),
                ("explanation", ctypes.c_char_p)]


class ParameterInfo(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("type", ctypes.c_int), ("explanation", ctypes.c_char_p)]


class Plugin:
    def __init__(self, name):
        self.library = ctypes.CDLL(f"{PLUGINS}/{name}.so")
        self.library.f0r_construct.restype = ctypes.c_void_p
        self.info = PluginInfo()
        self.library.f0r_get_plugin_info(ctypes.byref(self.info))
        self.parameters = []
        for index in range(self.info.parameters):
            parameter = ParameterInfo()
            self.library.f0r_get_param_info(ctypes.byref(parameter), index)
            self.parameters.append(parameter.name.decode())

    def applied(self, picture, settings):
        """Settings are taken in the order given, as programs set them."""
        height, width = picture.shape[:2]
        instance = ctypes.c_void_p(self.library.f0r_construct(width, height))
        for name, value in settings:
            self.library.f0r_set_param_value(instance, ctypes.byref(ctypes.c_double(value)), self.parameters.index(name))
        result = numpy.empty_like(picture)
        pointers = (ctypes.c_void_p(array.ctypes.data) for array in (picture, result))
        self.library.f0r_update(instance, ctypes.c_double(0), *pointers)
        self.library.f0r_destruct(instance)
        return result


def descriptions():
    for name in sorted(os.listdir(DESCRIPTIONS)):
        yield name.removeprefix("frei0r_").removesuffix(".xml"), ElementTree.parse(f"{DESCRIPTIONS}/{name}").getroot()


class Descriptions(TestCase):
    def test_are_those_of_the_plugins(self):
        filters = {name[:-3] for name in os.listdir(PLUGINS) if Plugin(name[:-3]).info.kind == 0}
        self.assertEqual({name for name, _ in descriptions()}, filters)
        for name, root in descriptions():
            self.assertEqual((root.get("id"), root.get("tag")), (f"frei0r.{name}", f"frei0r.{name}"))
            self.assertEqual([parameter.get("name") for parameter in root.iter("parameter")], Plugin(name).parameters)

    def test_have_the_ranges_of_the_catalogue(self):
        ranges = 0
        for name, root in descriptions():
            info = nifikral.effects()[name.removeprefix("nifikral_")]
            self.assertIn(info.category, root.findtext("name"))
            for parameter in root.iter("parameter"):
                row = info.parameters.get(parameter.get("name"))
                if row is None or parameter.get("type") not in ("animated", "constant") or row.name == "duration":
                    continue
                low, high, default = (float(parameter.get(key)) for key in ("min", "max", "default"))
                self.assertTrue(low <= default * float(parameter.get("factor", 1)) <= high, f"{name} {row.name}")
                self.assertEqual(parameter.get("type") == "animated", row.keyframable, f"{name} {row.name}")
                if parameter.get("factor"):
                    self.assertEqual((low, high, parameter.get("suffix")), (0, 100, "%"))
                elif "seed" not in row.name:
                    self.assertEqual((low, high), row.range, f"{name} {row.name}")
                    ranges += 1
                for value, _ in row.choices.items():
                    self.assertIn(str(value), parameter.get("paramlist").split(";"))
        self.assertGreater(ranges, 30)


class TrueValues(TestCase):
    def test_are_taken_before_and_behind_their_switch(self):
        bgra = numpy.ascontiguousarray(numpy.dstack([photograph(), numpy.full((46, 61), 255, numpy.uint8)]))
        for effect, values in (("brightness_contrast", {"brightness": -30, "contrast": 45, "saturation": 10}),
                               ("relief", {"angle": -120}), ("oilpainting", {"brushsize": 2, "coarseness": 20})):
            expected = nifikral.apply(bgra, effect, order="bgr", **values)
            for settings in ([*values.items(), ("true_values", 1)], [("true_values", 1), *values.items()]):
                self.assertSame(Plugin(f"nifikral_{effect}").applied(bgra, settings), expected, effect)

    @unittest.skipIf("LD_PRELOAD" in os.environ, "melt is built without the sanitizers")
    def test_are_rendered_by_melt(self):
        made = []
        with tempfile.TemporaryDirectory() as folder:
            for settings in (["true_values=1", "scale=4"], ["scale=0.6"], ["scale=0.5"]):
                subprocess.run(["melt", "-silent", "noise:", "out=0", "-filter", "frei0r.nifikral_rotate", "x=0.5", "y=0.5", "r=0.25",
                                *settings, "-consumer", "avformat:picture.png", "vcodec=png", "s=320x180"], cwd=folder, check=True,
                               env={**os.environ, "FREI0R_PATH": PLUGINS}, capture_output=True)
                made.append(read(f"{folder}/picture.png"))
        self.assertSame(made[0], made[1])
        self.assertFalse((made[0] == made[2]).all())
