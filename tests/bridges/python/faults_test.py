"""Bad input, and what goes on beside a call: threads, forks, the end of the interpreter."""

import os
import subprocess
import sys
import threading
import time

import numpy
import nifikral
from support import TestCase, noise, photograph


class BadInput(TestCase):
    def test_says_what_was_expected(self):
        good = noise(10, 12, 3)
        read_only = noise(10, 12, 3)
        read_only.flags.writeable = False
        apply = nifikral.apply
        for kind, message, call in (
            (TypeError, "expected a numpy array of uint8, got list_iterator; numpy.asarray", lambda: apply(iter([1]), "gray")),
            (TypeError, "uint8, got one of float64; .*astype", lambda: apply(good / 255, "gray")),
            (TypeError, "got one of >u2", lambda: apply(good.astype(">u2"), "gray")),
            (TypeError, "got one of object", lambda: apply(good.astype(object), "gray")),
            (TypeError, "got one of bool", lambda: apply(good > 3, "gray")),
            (ValueError, "got 5$", lambda: apply(good[0, :5, 0], "gray")),
            (ValueError, "got a single number", lambda: apply(numpy.zeros((), numpy.uint8), "gray")),
            (ValueError, "x 1, 3 or 4, got 10 x 12 x 2", lambda: apply(good[..., :2], "gray")),
            (ValueError, "moveaxis", lambda: apply(numpy.moveaxis(good, -1, 0), "gray")),
            (ValueError, "empty, 0 x 12 x 3", lambda: apply(good[:0], "gray")),
            (ValueError, "empty, 10 x 0", lambda: apply(good[:, :0, 0], "gray")),
            (ValueError, "too large; sides go up to 16384",
             lambda: apply(numpy.broadcast_to(numpy.uint8(1), (2, 20000)), "gray")),
            (ValueError, "out is read-only", lambda: apply(good, "gray", out=read_only)),
            (ValueError, "out is not of the picture's shape", lambda: apply(good, "gray", out=good[:5])),
            (TypeError, "out: expected a numpy array", lambda: apply(good, "gray", out=3)),
            (ValueError, "3 planes, or 4", lambda: apply([good[..., 0]], "gray")),
            (ValueError, "11 x 12, 5 x 5 and 5 x 5 are no layout .* 6 x 6 in 4:2:0",
             lambda: apply((noise(11, 12), noise(5, 5), noise(5, 5)), "gray")),
            (ValueError, "alpha is not as large", lambda: apply([noise(4, 4)] * 3 + [noise(4, 3)], "gray")),
            (ValueError, "opacity, which planes of this layout have none",
             lambda: apply((noise(4, 4), noise(4, 2), noise(4, 2)), "transparency")),
            (ValueError, "out is not of as many planes", lambda: apply([noise(4, 4)] * 3, "gray", out=good)),
            (TypeError, "named by a text", lambda: apply(good, None)),
            (nifikral.UsageError, 'no effect "oilpaintin"; did you mean oilpainting', lambda: apply(good, "oilpaintin")),
            (ValueError, 'no parameter "scal"; did you mean .*scale', lambda: apply(good, "rotate", scal=2)),
            (ValueError, "rotate_x: .*no whole number", lambda: apply(good, "rotate", x=1.5)),
            (ValueError, '"nan" is no number', lambda: apply(good, "rotate", scale=float("nan"))),
            (TypeError, "x is a number or a text, and not list", lambda: apply(good, "rotate", x=[1])),
            (ValueError, "is refused; use 1 or more", lambda: apply(good, "tilereflect", size=0)),
            (ValueError, "fadein depends on the number of frames .* duration=N", lambda: apply(good, "fadein")),
            (ValueError, "position is -1", lambda: apply(good, "gray", position=-1)),
            (ValueError, '"rgb" and "bgr"', lambda: apply(good, "gray", order="brg")),
            (ValueError, "call nifikral.menu", lambda: apply(good, "menu_travel")),
            (ValueError, "a preset, which takes no parameters", lambda: apply(good, "@old-film", x=1)),
            (TypeError, "made already", lambda: apply(good, nifikral.Effect("gray"), x=1)),
            (nifikral.FileError, "missing.json", lambda: nifikral.menu("missing.json", "menu_travel")),
            (OSError, "missing.png", lambda: nifikral.slideshow(["missing.png"])),
            (ValueError, "menu_travl", lambda: nifikral.menu("missing.json", "menu_travl")),
            (ValueError, "place nowhere", lambda: nifikral.title("x", place="nowhere")),
        ):
            with self.subTest(message):
                self.assertRaisesRegex(kind, message, call)

    def test_refused_by_the_module_carries_its_code(self):
        with self.assertRaises(nifikral.Error) as raised:
            nifikral.Effect("title", text="x", align="nowhere")
        self.assertEqual(raised.exception.code, 10021008)
        self.assertIsInstance(raised.exception, ValueError)

    def test_objects_that_were_never_made_do_nothing(self):
        bare = nifikral.Effect.__new__(nifikral.Effect)
        self.assertRaises(TypeError, lambda: bare(noise(4, 4)))


class Threads(TestCase):
    def test_share_an_object_without_tearing(self):
        frames = [numpy.roll(photograph(60, 80), n, 1) for n in range(8)]
        chain = nifikral.Chain("spherize", "oilpainting:brushsize=2")
        expected = [chain(frame, position=1) for frame in frames]
        wrong = []

        def work(own):
            for n in range(40):
                wrong.extend([n] if (chain(frames[own], position=1) != expected[own]).any() else [])
                chain(frames[own][: 20 + own])  # another size, another plan

        threads = [threading.Thread(target=work, args=(own,)) for own in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])

    def test_go_on_while_an_effect_works(self):
        picture = noise(1200, 1200, 4)
        thread = threading.Thread(target=nifikral.apply, args=(picture, "oilpainting:brushsize=20"))
        thread.start()
        turns = 0
        while thread.is_alive():
            time.sleep(0.001)
            turns += 1
        self.assertGreater(turns, 20)

    def test_cannot_resize_an_array_that_is_worked_on(self):
        picture = noise(1200, 1200, 3)
        view = picture[::-1]
        for argument in picture, view:
            thread = threading.Thread(target=nifikral.apply, args=(argument, "oilpainting:brushsize=20"))
            thread.start()
            refused = 0
            time.sleep(0.02)
            if thread.is_alive():
                with self.assertRaisesRegex(ValueError, "cannot resize"):
                    picture.resize((10, 10, 3), refcheck=False)
                refused += 1
            thread.join()
            self.assertEqual(refused, 1)
        del argument, view, thread
        picture.resize((10, 10, 3), refcheck=False)


class Processes(TestCase):
    def test_that_are_forked_off_begin_anew(self):
        picture = noise(800, 800, 4)
        effect = nifikral.Effect("oilpainting", brushsize=15)
        small = photograph()
        expected = nifikral.apply(small, "oilpainting", brushsize=15)
        thread = threading.Thread(target=effect, args=(picture,))
        thread.start()
        time.sleep(0.02)
        child = os.fork()
        if child == 0:
            os._exit(0 if (effect(small) == expected).all() else 1)  # while the other process holds it
        self.assertTrue(thread.is_alive())
        thread.join()
        self.assertEqual(os.waitpid(child, 0)[1], 0)

    def run_python(self, program):
        done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=120)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_end_with_objects_alive(self):
        self.run_python("import numpy, nifikral\n"
                        "effect, title = nifikral.Effect('rotate'), nifikral.title('x', size=(64, 36))\n"
                        "frames = iter(title)\n"
                        "kept = effect, next(frames), effect(numpy.zeros((9, 9, 3), numpy.uint8))\n"
                        "kept += (kept,)\n")

    def test_end_while_a_thread_is_at_work(self):
        self.run_python("import threading, time, numpy, nifikral\n"
                        "effect = nifikral.Effect('oilpainting', brushsize=12)\n"
                        "def work():\n"
                        "    while True: effect(numpy.zeros((300, 300, 3), numpy.uint8))\n"
                        "for _ in range(3): threading.Thread(target=work, daemon=True).start()\n"
                        "time.sleep(0.2)\n")
