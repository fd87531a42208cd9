"""KDE's previews of designs, made by the plug-in of the build folder."""

import os
import unittest

import desktop

PLUGINS = desktop.BUILD / "integrations/kde-thumbnails/plugins"
PROGRAMS = desktop.BUILD / "integrations/thumbnails"


class KdeThumbnails(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("dbus-run-session", "/usr/lib/x86_64-linux-gnu/libexec/kf5/kioslave5")
        self.program = desktop.built("velamo_kde_previews")
        if not PLUGINS.exists():
            raise unittest.SkipTest("not built: the plug-in; see VELAMO_KDE_THUMBNAILS")

    def previews(self, pixels, *files):
        """The pictures by the file's name, and the names of the files of which there is none."""
        folder = self.home / f"previews-{pixels}"
        folder.mkdir()
        failed = self.run_program("dbus-run-session", "--", self.program, folder, pixels, *files,
                                  QT_QPA_PLATFORM="offscreen", QT_PLUGIN_PATH=str(PLUGINS),
                                  PATH=f"{PROGRAMS}:{os.environ['PATH']}").stdout
        return {file.stem: desktop.Picture(file) for file in folder.iterdir()}, failed.split()

    def test_every_format_is_drawn(self):
        designs = self.make_designs(self.home / "designs")
        pictures, failed = self.previews(128, *designs.values())
        self.assertEqual(failed, [])
        self.assertEqual(set(pictures), {file.name for file in designs.values()})
        for name, picture in pictures.items():
            with self.subTest(name):
                self.assertEqual(max(picture.width, picture.height), 128)
                self.assertGreater(min(picture.width, picture.height), 120)
                self.assertEqual(picture.at(0, 0)[3], 0)
                self.assertEqual(picture.at(picture.width // 2, picture.height // 2)[3], 255)
        red, green = (pictures["sample." + name] for name in ("vp3", "sew"))
        self.assertGreater(red.at(64, 64)[0], 3 * red.at(64, 64)[1])
        self.assertGreater(green.at(64, 64)[1], 1.3 * green.at(64, 64)[0])

    def test_pictures_have_the_designs_proportions(self):
        for pixels in (128, 256, 512):
            with self.subTest(pixels):
                pictures, _ = self.previews(pixels, desktop.SAMPLES / "rose.dst")
                self.assertEqual(pictures["rose.dst"].height, pixels)
                self.assertLess(abs(pictures["rose.dst"].width / pixels - 38.6 / 64.0), 0.01)

    def test_a_poem_has_no_picture(self):
        poem = self.home / "poem.dst"
        poem.write_text("A rose is a rose is a rose.\n")
        pictures, failed = self.previews(128, poem, desktop.SAMPLES / "rose.dst")
        self.assertEqual(set(pictures), {"rose.dst"})
        self.assertEqual(failed, ["poem.dst"])


if __name__ == "__main__":
    desktop.main()
