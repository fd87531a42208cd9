"""KDE's indexer takes designs' size, stitches and colours from the installed extractor and finds them by these."""

import json
import shutil
import time
from pathlib import Path

from desktop import SAMPLES, DesktopTest, main, need

INDEXER = next(Path("/usr/lib").glob("*/libexec/baloo_file"), Path("/usr/lib/libexec/baloo_file"))
EXTRACTOR = INDEXER.parent / "kf5/kfilemetadata/externalextractors/velamo/velamo-kfilemetadata"

LETTERS = {f"letter-f.{extension}" for extension in ("exp", "jef", "pcs", "pec", "pes")}
DST = {"heart.dst", "rose.dst", "spirograph.dst", "SUNFLOWER.DST"}

# heart 50.4 x 45.6 mm, 7724 stitches, 2 colours; letter-f 23 x 40, 207 to 211, 1; rose 38.6 x 64.0, 6872, 5;
# spirograph 79.0 x 79.0, 5927, 4; sunflower 76.0 x 76.0, 3719, 2
QUERIES = {
    "width>50": {"spirograph.dst", "SUNFLOWER.DST"},
    "width>=50": {"heart.dst", "spirograph.dst", "SUNFLOWER.DST"},
    "width=39": {"rose.dst"},
    "height>=64 height<79": {"rose.dst", "SUNFLOWER.DST"},
    "width>30 width<76": {"heart.dst", "rose.dst"},
    "type:Image width=76": {"SUNFLOWER.DST"},
    "width=23 height=40": LETTERS,
    "width>1000": set(),
    'description:"6872 stitches"': {"rose.dst"},
    'description:"2 colours"': {"heart.dst", "SUNFLOWER.DST"},
    'description:"1 colour"': LETTERS,
    'description:"50.4 x 45.6"': {"heart.dst"},
    "description:38.6": {"rose.dst"},
    "7724": {"heart.dst"},
    "stitches": LETTERS | DST,
    "poem": {"poem.dst"},
}


class Baloo(DesktopTest):
    def setUp(self):
        need("balooctl", "baloosearch", "balooshow", "dbus-daemon", str(INDEXER))
        super().setUp()
        self.environment["QT_QPA_PLATFORM"] = "offscreen"
        self.designs = self.home / "designs"
        self.designs.mkdir()
        self.start_bus()

    def index(self, files):
        """Runs the indexer until it has looked into so many files."""
        configuration = self.home / ".config"
        configuration.mkdir()
        (configuration / "baloofilerc").write_text(
            "[Basic Settings]\nIndexing-Enabled=true\n"
            f"[General]\nfolders[$e]={self.designs}/\nonly basic indexing=false\n")
        self.start(INDEXER)
        deadline = time.monotonic() + 60
        status = ""
        while f"Total files indexed: {files}\n" not in status or "content indexing: 0" not in status:
            self.assertLess(time.monotonic(), deadline, status)
            time.sleep(0.2)
            status = self.run_program("balooctl", "status", status=None).stdout

    def found(self, query):
        lines = self.run_program("baloosearch", query).stdout.splitlines()
        return {Path(line).name for line in lines if line.startswith("/")}

    def test_finds_designs_by_their_properties(self):
        for name in LETTERS | DST:
            shutil.copy(SAMPLES / name.lower(), self.designs / name)
        for name in ("heart", "letter-f", "rose", "spirograph", "SUNFLOWER"):
            shutil.copy(SAMPLES / f"{name.lower()}.threads", self.designs / f"{name}.threads")
        (self.designs / "poem.dst").write_text("Rose is a rose is a rose is a rose.\n")
        (self.designs / "empty.pes").touch()
        self.index(len(list(self.designs.iterdir())) + 1)
        for query, names in QUERIES.items():
            with self.subTest(query=query):
                self.assertEqual(self.found(query), names)
        shown = self.run_program("balooshow", "-x", self.designs / "rose.dst").stdout
        self.assertIn("38.6 x 64.0 mm, 6872 stitches, 5 colours", shown)
        self.assertNotIn(str(self.designs), self.run_program("balooctl", "failed").stdout)

    def test_knows_every_format_in_either_case(self):
        made = self.make_designs(self.home / "made")
        # Qt goes by the content first: these two would pass for a picture and a text.
        shutil.copy(SAMPLES / "letter-f.exp", made["exp"])
        made["ksm"].write_bytes(bytes(512) + made["ksm"].read_bytes()[512:])
        for file in made.values():
            shutil.copy(file, self.designs / file.name)
            shutil.copy(file, self.designs / file.name.upper())
        self.index(2 * len(made) + 1)
        expected = {file.name for file in made.values()} | {file.name.upper() for file in made.values()}
        self.assertEqual(self.found("type:Image width<1000 description:stitches"), expected)

    def test_extractor_answers_and_fails_quietly(self):
        request = json.dumps({"path": str(SAMPLES / "rose.dst"), "mimetype": "application/x-embroidery-dst"})
        answer = self.run_program(EXTRACTOR, input=request)
        self.assertEqual(json.loads(answer.stdout)["properties"]["width"], 39)
        for hostile in ("", "[" * 100000, '{"path": 7}', json.dumps({"path": "/absent.dst"}), " " * 10**7):
            answer = self.run_program(EXTRACTOR, input=hostile, status=1, timeout=5)
            self.assertEqual(json.loads(answer.stdout)["status"], "ERROR")
            self.assertEqual(answer.stderr, "")

    def test_takes_palettes_from_the_installation(self):
        rose = self.make_janome_rose()
        answer = self.run_without_sources(EXTRACTOR, input=json.dumps({"path": str(rose)}))
        self.assertIn("5 colours", json.loads(answer.stdout)["properties"]["description"])


if __name__ == "__main__":
    main()
