"""GNOME's indexer takes designs for pictures by the installed rule."""

import shutil
import time
from pathlib import Path
from urllib.parse import unquote

from desktop import SAMPLES, SOURCES, DesktopTest, main, need

RULES = Path("/usr/share/tracker3-miners/extract-rules")
MINER = "/usr/libexec/tracker-miner-fs-3"
EXTRACTOR = "/usr/libexec/tracker-extract-3"


class GnomeSearch(DesktopTest):
    def setUp(self):
        need("tracker3", "gsettings", "dbus-daemon", MINER, EXTRACTOR)
        super().setUp()
        self.environment["GSETTINGS_BACKEND"] = "keyfile"
        self.start_bus()

    def stored(self, kind):
        """The names of the files that the index holds as things of this kind."""
        query = f"SELECT ?f {{ ?u a {kind} ; nie:isStoredAs ?f }}"
        lines = self.run_program("tracker3", "sparql", "-b", "org.freedesktop.Tracker3.Miner.Files", "-q", query,
                                 status=None).stdout.splitlines()
        return {Path(unquote(line)).name for line in lines if line.startswith("  file:")}

    def test_rule_is_loaded_and_the_type_known(self):
        said = self.run_program(EXTRACTOR, "-f", SAMPLES / "rose.dst", "-o", "turtle", TRACKER_EXTRACTOR_RULES_DIR=str(RULES),
                                TRACKER_DEBUG="all", G_MESSAGES_DEBUG="all")
        self.assertIn("Loaded rule '10-velamo.rule'", said.stdout + said.stderr)
        self.assertIn("MIME type guessed as 'application/x-embroidery-dst'", said.stdout + said.stderr)

    def test_designs_are_pictures(self):
        designs = self.home / "designs"
        made = self.make_designs(designs)
        expected = {file.name for file in made.values()}
        shutil.copy(SAMPLES / "rose.dst", designs / "ROSE.DST")
        shutil.copy(SAMPLES / "rose.threads", designs)
        shutil.copy(SOURCES / "docs/rose.png", designs)
        (designs / "notes.txt").write_text("Rose is a rose is a rose is a rose.\n")
        expected.add("ROSE.DST")
        schema = "org.freedesktop.Tracker3.Miner.Files"
        self.run_program("gsettings", "set", schema, "index-recursive-directories", f"['{designs}']")
        self.run_program("gsettings", "set", schema, "index-single-directories", "[]")
        self.start(MINER, "-s", "0")
        deadline = time.monotonic() + 60
        while not (expected <= self.stored("nfo:VectorImage") and "notes.txt" in self.stored("nfo:PlainTextDocument")):
            self.assertLess(time.monotonic(), deadline, self.stored("nfo:VectorImage"))
            time.sleep(0.2)
        self.assertEqual(self.stored("nfo:VectorImage"), expected)
        self.assertEqual(self.stored("nfo:Image") - {"rose.png"}, expected)
        self.assertEqual(self.stored("nfo:VectorImage ; nie:mimeType 'application/x-embroidery-pcs'"),
                         {"sample.pcs", "sample.pcd", "sample.pcq"})


if __name__ == "__main__":
    main()
