"""Effects on arrays: what the command makes of the same pictures, in every layout."""

import ast
import os
import pickle
import tempfile
import warnings

import numpy
import nifikral
from support import TestCase, command, noise, photograph, read, write


class Results(TestCase):
    def test_are_those_of_the_command(self):
        picture = photograph()
        with tempfile.TemporaryDirectory() as folder:
            write(f"{folder}/in.png", picture)
            for request, effect in (
                ("rotate", nifikral.Effect("rotate")),
                ("rotate:x=20:y=12:r=15:scale=2.5", nifikral.Effect("rotate", x=20, y=12, r=15, scale=2.5)),
                ("spotlight:x=50%:color=#ff8000", nifikral.Effect("spotlight", x="50%", color="#ff8000")),
                ("popstyle:palette=lagoon", nifikral.Effect("popstyle", palette="lagoon")),
                ("reverse:mirror=1", nifikral.Effect("reverse", mirror=True)),
                ("transparency:opacity=40", nifikral.Effect("transparency", opacity=40)),
                ("invert:inside=circle,30,20,12", nifikral.Effect("invert", inside="circle,30,20,12")),
                ("@old-film", nifikral.Effect("@old-film")),
            ):
                command("apply", "-q", "-y", "in.png", "out.ppm", request, folder=folder)
                self.assertSame(nifikral.apply(picture, effect), read(f"{folder}/out.ppm"), request)

    def test_of_one_frame_after_another_are_those_of_the_command(self):
        frames = [numpy.roll(photograph(), 3 * n, 1) for n in range(4)]
        for request, effect in (
            ("directfadein", nifikral.Effect("directfadein", duration=4)),
            ("rotate:scale=0..6", nifikral.Effect("rotate", scale="0..6", duration=4)),
            ("spherize", nifikral.Effect("spherize")),
            ("addnoise:strength=20:color=1", nifikral.Effect("addnoise", strength=20, color=1)),
        ):
            with tempfile.TemporaryDirectory() as folder:
                for n, frame in enumerate(frames):
                    write(f"{folder}/in_{n}.png", frame)
                command("apply", "-q", "in_%d.png", "out_%d.png", request, folder=folder)
                made = [read(f"{folder}/{name}") for name in sorted(os.listdir(folder)) if name.startswith("out")]
            for n, frame in enumerate(frames):
                self.assertSame(effect(frame), made[n], f"{request}, frame {n}")
            self.assertSame(effect(frames[2], position=2), made[2], f"{request}, at a position")

    def test_of_planes_are_those_of_the_command(self):
        height, width = 45, 61
        chroma = (height + 1) // 2, (width + 1) // 2
        planes = tuple(noise(*shape, seed=n) // 2 + 60 for n, shape in enumerate([(height, width), chroma, chroma]))
        with tempfile.TemporaryDirectory() as folder:
            with open(f"{folder}/in.y4m", "wb") as film:
                film.write(b"YUV4MPEG2 W%d H%d F25:1 C420\n" % (width, height))
                film.write((b"FRAME\n" + b"".join(plane.tobytes() for plane in planes)) * 3)
            for request, changes in (("oilpainting", {}), ("rotate", {}), ("aged_film", {}), ("transparency:opacity=40", {}),
                                     ("directfadein", {}), ("rotate", {"scale": "0..6", "x": "@0:10%,2:80%"}),
                                     ("brightness_contrast", {"brightness": "-40..40~in-out", "inside": "circle,20%..80%,50%,9"})):
                text = ":".join([request, *map("=".join, changes.items())])
                alpha = "opacity" in request or "fade" in request
                command("apply", "-q", "-y", "--format", "35" if alpha else "0", "in.y4m", "out.y4m", text, folder=folder)
                with open(f"{folder}/out.y4m", "rb") as film:
                    made = film.read().split(b"FRAME\n")[1:]
                effect = nifikral.Effect(request, duration=3, **changes) if changes or "fade" in request else nifikral.Effect(request)
                for frame in made:
                    self.assertEqual(b"".join(plane.tobytes() for plane in effect(planes)), frame, text)


class Layouts(TestCase):
    EFFECTS = "rotate", "aged_film", "atomize:radius=3"

    def test_of_every_kind_give_the_same_picture(self):
        base = noise(40, 52, 4)
        for request in self.EFFECTS:
            for channels in 1, 3, 4:
                picture = numpy.ascontiguousarray(base[..., :channels])
                expected = nifikral.apply(picture, request)
                wide = noise(90, 180, channels)
                wide[4:84:2, 5:161:3] = picture
                read_only = picture.copy()
                read_only.flags.writeable = False
                flipped = numpy.ascontiguousarray(picture[::-1, ::-1])
                for name, same in (
                    ("steps", wide[4:84:2, 5:161:3]),
                    ("backwards", flipped[::-1, ::-1]),
                    ("columns first", numpy.asfortranarray(picture)),
                    ("channels first", numpy.moveaxis(numpy.ascontiguousarray(numpy.moveaxis(picture, -1, 0)), 0, -1)),
                    ("read-only", read_only),
                ):
                    self.assertSame(nifikral.apply(same, request), expected, f"{request} x {channels}, {name}")
                    if name != "read-only":
                        place = same.copy(order="K") if name != "steps" else same
                        nifikral.apply(place, request, out=place)
                        self.assertSame(place, expected, f"{request} x {channels}, {name}, in place")
                if channels == 1:
                    self.assertSame(nifikral.apply(picture[..., 0], request), expected[..., 0], f"{request}, without channels")

    def test_in_place_leave_the_rest_of_the_array(self):
        for channels in 3, 4:
            whole = noise(60, 80, channels)
            before, inside = whole.copy(), (slice(7, 50), slice(9, 70))
            for request in ("mosaic:x1=0:y1=0:x2=100%:y2=100%:step=4", "reverse:mirror=1"):
                self.assertIs(type(nifikral.apply(whole[inside], request, out=whole[inside])), numpy.ndarray)
            self.assertFalse((whole[inside] == before[inside]).all())
            whole[inside] = before[inside]
            self.assertSame(whole, before, f"{channels} channels")

    def test_that_overlap_are_read_before_they_are_written(self):
        for channels in 1, 3, 4:
            memory = noise(50, 64, channels)
            expected = nifikral.apply(memory[:-3].copy(), "invert")
            nifikral.apply(memory[:-3], "invert", out=memory[3:])
            self.assertSame(memory[3:], expected, f"{channels} channels")

    def test_in_place_are_the_same_object(self):
        frame = noise(20, 30, 4)
        self.assertIs(nifikral.Effect("invert")(frame, out=frame), frame)

    def test_take_red_and_blue_in_the_order_that_is_said(self):
        for channels in 3, 4:
            rgb = photograph() if channels == 3 else noise(40, 50, 4)
            bgr = rgb[..., [2, 1, 0, 3][:channels]]
            for request in "aged_film", "rotate", "colorfilter:color=#ff0000", "title:text=x:color=#ff0000:duration=9":
                expected = nifikral.apply(rgb, request)[..., [2, 1, 0, 3][:channels]]
                self.assertSame(nifikral.apply(bgr, request, order="bgr"), expected, request)
        nifikral.order = "bgr"
        try:
            self.assertSame(nifikral.apply(bgr, "aged_film"), nifikral.apply(bgr, "aged_film", order="bgr"))
        finally:
            nifikral.order = "rgb"

    def test_of_planes_follow_from_their_shapes(self):
        luma = noise(45, 62)
        for rows, columns in (45, 62), (23, 31), (45, 31), (45, 16), (12, 16):
            planes = [luma, noise(rows, columns, seed=2), noise(rows, columns, seed=3)]
            result = nifikral.apply(planes, "invert")
            for before, after in zip(planes, result):
                self.assertSame(after, 255 - before, f"chroma of {rows} x {columns}")
            views = [numpy.repeat(plane, 2, 1)[:, ::2] for plane in planes]
            nifikral.apply(tuple(views), "invert", out=views)
            for before, after in zip(planes, views):
                self.assertSame(after, 255 - before, "in place, with steps")
        stacked = noise(48 * 3 // 2, 64)
        y, u, v = stacked[:48], stacked[48:60].reshape(24, 32), stacked[60:].reshape(24, 32)
        expected = 255 - stacked
        nifikral.apply((y, u, v), "invert", out=(y, u, v))
        self.assertSame(stacked, expected, "planes of one array")


class Objects(TestCase):
    def test_chain_is_its_effects_in_turn(self):
        picture = photograph()
        swirl = nifikral.Effect("rotate", scale=2)
        expected = nifikral.apply(nifikral.apply(picture, "aged_film"), swirl)
        chain = nifikral.Chain("aged_film", swirl)
        self.assertSame(chain(picture), expected)
        self.assertSame(nifikral.Chain(chain)(picture), expected)
        self.assertEqual(repr(chain), "nifikral.Chain('aged_film', 'rotate:scale=2')")

    def test_copies_begin_anew(self):
        fade = nifikral.Effect("directfadein", duration=10)
        first = fade(photograph())
        fade(photograph())
        self.assertSame(pickle.loads(pickle.dumps(fade))(photograph()), first)

    def test_works_on_pictures_of_changing_size(self):
        swirl = nifikral.Effect("rotate")
        for height, width in (40, 50), (20, 90), (40, 50):
            picture = photograph(height, width)
            self.assertSame(swirl(picture, position=0), nifikral.apply(picture, "rotate"))

    def test_odd_values_warn(self):
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            nifikral.apply(photograph(), "rotate", x=5000)
        self.assertRegex(str(caught[0].message), "rotate_x=5000 lies outside")
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            self.assertRaises(UserWarning, nifikral.apply, photograph(), "rotate", x=5000)

    def test_stubs_name_every_effect_and_parameter(self):
        path = os.path.join(os.path.dirname(nifikral.__file__), "__init__.pyi")
        with open(path, encoding="utf-8") as file:
            tree = ast.parse(file.read())
        stubs = {}
        for node in tree.body:
            if isinstance(node, ast.FunctionDef) and node.name == "apply":
                kind = node.args.posonlyargs[1].annotation
                if ast.unparse(kind).startswith("Literal"):
                    names = {argument.arg for argument in node.args.kwonlyargs}
                    stubs[ast.literal_eval(kind.slice)] = names - {"out", "position", "order", "inside", "outside", "soft"}
        effects = {name: set(info.parameters) for name, info in nifikral.effects().items()
                   if "generator" not in info.traits or name == "title"}
        self.assertEqual(stubs, effects)
        for name in nifikral.__all__:
            self.assertTrue(any(getattr(node, "name", None) == name for node in tree.body), name)
