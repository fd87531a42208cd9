"""Xfce's thumbnail service draws designs, as its file manager asks it to over D-Bus."""

import hashlib
import json
import unittest
from pathlib import Path

import desktop

# Asks the service for the pictures of files and prints, as one object, of which ones it says that they are ready or that
# they failed. The word behind the size, "default", is the order in which it works.
ASK = """
import json, sys
from gi.repository import Gio, GLib
size, kinds, *uris = sys.argv[1:]
name = 'org.freedesktop.thumbnails.Thumbnailer1'
service = Gio.DBusProxy.new_for_bus_sync(Gio.BusType.SESSION, Gio.DBusProxyFlags.NONE, None, name,
                                         '/' + name.replace('.', '/'), name, None)
told = {'ready': [], 'failed': []}
loop = GLib.MainLoop()
def tell(proxy, sender, signal, values):
    values = values.unpack()
    if signal == 'Ready': told['ready'] += values[1]
    if signal == 'Error': told['failed'] += values[1]
    if signal == 'Finished': loop.quit()
service.connect('g-signal', tell)
service.call_sync('Queue', GLib.Variant('(asasssu)', (uris, json.loads(kinds), size, 'default', 0)), 0, -1, None)
GLib.timeout_add_seconds(60, loop.quit)
loop.run()
print(json.dumps(told))
"""
KIND = "application/x-embroidery-"
SIZES = {"normal": 128, "large": 256, "x-large": 512, "xx-large": 1024}


class XfceThumbnails(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("dbus-run-session", "velamo-thumbnailer")
        service = "/usr/share/dbus-1/services/org.xfce.Tumbler.Thumbnailer1.service"
        if not Path(service).exists():
            raise unittest.SkipTest("not installed: tumbler")

    def thumbnails(self, size, kinds):
        """The pictures by file that the service makes of the files, whose types are given, and the files that failed."""
        uris = {file.as_uri(): file for file in kinds}
        temporary = self.home / "tmp"
        temporary.mkdir(exist_ok=True)
        printed = self.run_program("dbus-run-session", "--", "/usr/bin/python3", "-c", ASK, size,
                                   json.dumps(list(kinds.values())), *uris, TMPDIR=str(temporary)).stdout
        told = json.loads(printed.splitlines()[-1])
        self.assertEqual(list(temporary.glob("*.png")), [])
        folder = self.home / ".cache/thumbnails" / size
        pictures = {file: folder / (hashlib.md5(uri.encode()).hexdigest() + ".png") for uri, file in uris.items()}
        made = {file: desktop.Picture(picture) for file, picture in pictures.items() if picture.exists()}
        self.assertEqual(set(made), {uris[uri] for uri in told["ready"]})
        return made, {uris[uri] for uri in told["failed"]}

    def test_every_format_is_drawn(self):
        shared = {"jef+": "jef", "pcd": "pcs", "pcq": "pcs"}
        designs = self.make_designs(self.home / "designs")
        pictures, failed = self.thumbnails("normal", {file: KIND + shared.get(extension, extension)
                                                      for extension, file in designs.items()})
        self.assertEqual(failed, set())
        self.assertEqual(len(pictures), len(designs))
        for file, picture in pictures.items():
            with self.subTest(file.name):
                self.assertEqual(max(picture.width, picture.height), 128)
                self.assertGreater(min(picture.width, picture.height), 120)
                self.assertEqual(picture.at(0, 0)[3], 0)
                self.assertEqual(picture.at(picture.width // 2, picture.height // 2)[3], 255)
        red, green = (pictures[designs[name]] for name in ("vp3", "sew"))
        self.assertGreater(red.at(64, 64)[0], 3 * red.at(64, 64)[1])
        self.assertGreater(green.at(64, 64)[1], 1.3 * green.at(64, 64)[0])

    def test_pictures_of_all_sizes_have_the_designs_proportions(self):
        rose = desktop.SAMPLES / "rose.dst"
        for size, pixels in SIZES.items():
            with self.subTest(size):
                pictures, _ = self.thumbnails(size, {rose: KIND + "dst"})
                self.assertEqual(pictures[rose].height, pixels)
                self.assertLess(abs(pictures[rose].width / pixels - 38.6 / 64.0), 0.01)

    def test_a_poem_fails_and_leaves_no_picture(self):
        poem = self.home / "poem.dst"
        poem.write_text("A rose is a rose is a rose.\n")
        rose = desktop.SAMPLES / "rose.dst"
        pictures, failed = self.thumbnails("normal", {poem: KIND + "dst", rose: KIND + "dst"})
        self.assertEqual(set(pictures), {rose})
        self.assertEqual(failed, {poem})


if __name__ == "__main__":
    desktop.main()
