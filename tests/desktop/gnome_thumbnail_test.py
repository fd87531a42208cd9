"""GNOME's factory draws designs inside its sandbox, which shows the program nothing but /usr."""

import json
import unittest
from pathlib import Path

import desktop

# Runs in a session of its own; prints an object a line.
FACTORY = """
import json, os, sys
import gi
gi.require_version('GnomeDesktop', '3.0')
from gi.repository import Gio, GLib, GnomeDesktop
sizes = GnomeDesktop.DesktopThumbnailSize
factory = GnomeDesktop.DesktopThumbnailFactory.new(getattr(sizes, sys.argv[1]))
for path in sys.argv[2:]:
    file = Gio.File.new_for_path(path)
    kind = file.query_info('standard::content-type', 0, None).get_content_type()
    time = int(os.stat(path).st_mtime)
    answer = {'path': path, 'can': factory.can_thumbnail(file.get_uri(), kind, time)}
    try:
        picture = factory.generate_thumbnail(file.get_uri(), kind, None)
        width, height, row = picture.get_width(), picture.get_height(), picture.get_rowstride()
        pixels = picture.get_pixels()
        at = lambda x, y: list(pixels[y * row + x * 4:y * row + x * 4 + 4])
        factory.save_thumbnail(picture, file.get_uri(), time, None)
        answer.update(width=width, height=height, alpha=picture.get_has_alpha(), saved=factory.lookup(file.get_uri(), time),
                      corner=at(0, 0), middle=at(width // 2, height // 2))
    except GLib.Error as error:
        factory.create_failed_thumbnail(file.get_uri(), time, None)
        answer.update(error=error.message, canAgain=factory.can_thumbnail(file.get_uri(), kind, time))
    print(json.dumps(answer))
"""


class GnomeThumbnails(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("dbus-run-session", "bwrap", "velamo-thumbnailer")
        try:
            self.run_program("/usr/bin/python3", "-c", "import gi; gi.require_version('GnomeDesktop', '3.0')")
        except AssertionError:
            raise unittest.SkipTest("not installed: gir1.2-gnomedesktop-3.0")

    def thumbnails(self, size, *files):
        printed = self.run_program("dbus-run-session", "--", "/usr/bin/python3", "-c", FACTORY, size, *files).stdout
        return [json.loads(line) for line in printed.splitlines()]

    def test_every_format_is_drawn(self):
        designs = self.make_designs(self.home / "designs")
        answers = self.thumbnails("NORMAL", *designs.values())
        self.assertEqual(len(answers), len(designs))
        for answer in answers:
            with self.subTest(Path(answer["path"]).name):
                self.assertNotIn("error", answer)
                self.assertTrue(answer["can"])
                self.assertEqual(max(answer["width"], answer["height"]), 128)
                self.assertGreater(min(answer["width"], answer["height"]), 120)
                self.assertTrue(answer["alpha"])
                self.assertEqual(answer["corner"][3], 0)
                self.assertEqual(answer["middle"][3], 255)
                self.assertTrue(answer["saved"].startswith(str(self.home / ".cache/thumbnails/normal")))

    def test_threads_have_their_colors(self):
        designs = self.make_designs(self.home / "designs")
        red, green = (answer["middle"] for answer in self.thumbnails("NORMAL", designs["vp3"], designs["sew"]))
        self.assertGreater(red[0], 3 * red[1])
        self.assertGreater(green[1], 1.3 * green[0])

    def test_larger_pictures_are_drawn_and_not_blown_up(self):
        for size, pixels in (("LARGE", 256), ("XLARGE", 512), ("XXLARGE", 1024)):
            with self.subTest(size):
                (answer,) = self.thumbnails(size, desktop.SAMPLES / "rose.dst")
                self.assertEqual(answer["height"], pixels)
                self.assertLess(abs(answer["width"] / pixels - 38.6 / 64.0), 0.01)

    def test_a_poem_fails_and_is_remembered(self):
        poem = self.home / "poem.dst"
        poem.write_text("A rose is a rose is a rose.\n")
        (answer,) = self.thumbnails("NORMAL", poem)
        self.assertTrue(answer["can"])
        self.assertIn("error", answer)
        self.assertFalse(answer["canAgain"])
        pictures = self.home / ".cache/thumbnails/normal"
        self.assertEqual(list(pictures.glob("*")) if pictures.exists() else [], [])


if __name__ == "__main__":
    desktop.main()
