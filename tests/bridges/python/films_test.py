"""Frames of menus, slideshows and titles: what the command makes."""

import os
import tempfile

import numpy
import nifikral
from support import TestCase, command, photograph, read, write


class Films(TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        for n in range(3):
            write(f"{self.folder}/{n}.png", numpy.roll(photograph(90, 160), 20 * n, 1))

    def made(self):
        names = sorted(name for name in os.listdir(f"{self.folder}/made"))
        return [read(f"{self.folder}/made/{name}")[..., :3] for name in names]

    def test_menu_is_that_of_the_command(self):
        command("init", "-q", "menu_travel", "trip", folder=self.folder)
        os.mkdir(f"{self.folder}/made")
        command("menu", "-q", "menu_travel", "trip/menu.json", "-o", "made/%02d.png", "--frames", "0-3", folder=self.folder)
        menu = nifikral.menu(f"{self.folder}/trip/menu.json")
        self.assertFalse(menu.seeks)
        self.assertEqual(menu.rate, 25)
        self.assertGreater(len(menu), 25)
        for _ in range(2):
            for frame, expected in zip(menu, self.made()):
                self.assertSame(frame, expected)
        self.assertRaisesRegex(TypeError, "one after another", lambda: menu[0])
        bgra = next(iter(nifikral.menu(f"{self.folder}/trip/menu.json", channels=4, order="bgr")))
        self.assertSame(numpy.ascontiguousarray(bgra[..., 2::-1]), self.made()[0])
        frames = iter(menu)
        next(frames)
        child = os.fork()
        if child == 0:
            try:
                next(frames)
            except nifikral.Error as error:
                os._exit(0 if "another process" in str(error) else 1)
            os._exit(2)
        self.assertEqual(os.waitpid(child, 0)[1], 0)

    def test_menu_says_what_its_project_lacks(self):
        with open(f"{self.folder}/menu.json", "w", encoding="utf-8") as project:
            project.write("{}")
        self.assertRaisesRegex(ValueError, "does not name its template", nifikral.menu, f"{self.folder}/menu.json")

    def test_slideshow_is_that_of_the_command(self):
        os.mkdir(f"{self.folder}/made")
        pictures = [f"{self.folder}/{n}.png" for n in range(3)]
        command("slideshow", "-q", *pictures, "-o", "made/%03d.png", "--size", "160x90", "--seconds", "0.4", "--transition-seconds", "0.2",
                folder=self.folder)
        show = nifikral.slideshow(pictures, size=(160, 90), seconds=0.4, transition=0.2)
        expected = self.made()
        self.assertEqual((len(show), show.width, show.height, show.seeks), (len(expected), 160, 90, True))
        for frame, other in zip(show, expected):
            self.assertSame(frame, other)
        self.assertSame(show[-2], expected[-2])
        self.assertSame(show[7], expected[7])
        for frame, other in zip(show[3:12:4], expected[3:12:4]):
            self.assertSame(frame, other)
        self.assertRaises(IndexError, lambda: show[len(show)])

    def test_title_comes_and_goes(self):
        picture = photograph(90, 160)
        write(f"{self.folder}/in.png", picture)
        title = nifikral.title("Summer", over=picture, seconds=2, rate=25, place="bottom", color="#ffff00")
        self.assertEqual((len(title), title.seeks), (50, True))
        self.assertSame(title[25], list(title)[25])
        self.assertFalse((title[25] == picture).all())
        self.assertTrue((title[25][:40] == picture[:40]).all(), "it stands below")
        written = [abs(title[n].astype(int) - picture).sum() for n in (0, 5, 10, 25, 49)]
        self.assertTrue(written[0] < written[1] < written[2] < written[3] > written[4], written)
