"""Recoll indexes designs with the installed handler and finds them by their size, stitches and colours."""

import shutil
from pathlib import Path
from urllib.parse import unquote

from desktop import SAMPLES, DesktopTest, main, need

CONFIGURATION = Path("/usr/share/velamo/recoll")
ALL = {"heart.dst", "letter-f.exp", "letter-f.jef", "letter-f.pcs", "letter-f.pec", "letter-f.pes", "rose.dst",
       "spirograph.dst", "SUNFLOWER.DST"}
LETTERS = {name for name in ALL if name.startswith("letter-f")}

# heart 50.4 x 45.6 mm, 7724 stitches, 2 colours; letter-f 23 x 40, 207 to 211, 1; rose 38.6 x 64.0, 6872, 5;
# spirograph 79.0 x 79.0, 5927, 4; sunflower 76.0 x 76.0, 3719, 2
QUERIES = {
    "stitches:1000..40000 colours:..4": {"heart.dst", "spirograph.dst", "SUNFLOWER.DST"},
    "stitches:1000..40000": {"heart.dst", "rose.dst", "spirograph.dst", "SUNFLOWER.DST"},
    "stitches:7724": {"heart.dst"},
    "stitches:..1000": LETTERS,
    "stitches:7000..": {"heart.dst"},
    "stitches>6000": {"heart.dst", "rose.dst"},
    "stitches>=5927": {"heart.dst", "rose.dst", "spirograph.dst"},
    "width:50..76": {"heart.dst", "SUNFLOWER.DST"},
    "width>77": {"spirograph.dst"},
    "width>76": {"spirograph.dst", "SUNFLOWER.DST"},  # to Recoll ">" says ">="
    "height:..46": LETTERS | {"heart.dst"},
    "designheight:64": {"rose.dst"},
    "colours:5": {"rose.dst"},
    "colors:4": {"spirograph.dst"},
    "threadcolors:1": LETTERS,
    "rclcat:embroidery stitches:..209": {"letter-f.pcs", "letter-f.pec", "letter-f.pes"},
    "ext:dst stitches>0": {"heart.dst", "rose.dst", "spirograph.dst", "SUNFLOWER.DST"},
    "stitches:200000..": set(),
    '"6872 stitches"': {"rose.dst"},
    "rclcat:embroidery": ALL | {"poem.dst"},
    "filename:poem": {"poem.dst"},
    "filename:empty": {"empty.pes"},
}


class Recoll(DesktopTest):
    def setUp(self):
        need("recollindex", "recollq")
        super().setUp()
        self.designs = self.home / "My designs"
        self.designs.mkdir()
        for name in ALL:
            shutil.copy(SAMPLES / name.lower(), self.designs / name)
        for name in ("heart", "letter-f", "rose", "spirograph", "SUNFLOWER"):
            shutil.copy(SAMPLES / f"{name.lower()}.threads", self.designs / f"{name}.threads")
        (self.designs / "poem.dst").write_text("Rose is a rose is a rose is a rose.\n")
        (self.designs / "empty.pes").touch()
        self.configuration = self.home / "recoll"
        self.configuration.mkdir()
        (self.configuration / "recoll.conf").write_text(f"topdirs = \"{self.designs}\"\nloglevel = 3\n")

    def index(self, **environment):
        return self.run_program("recollindex", "-c", self.configuration, "-z", **environment).stderr

    def found(self, query, **environment):
        lines = self.run_program("recollq", "-c", self.configuration, "-b", "-q", query, **environment).stdout
        return {Path(unquote(line)).name for line in lines.splitlines()}

    def check_queries(self, **environment):
        for query, names in QUERIES.items():
            with self.subTest(query=query):
                self.assertEqual(self.found(query, **environment), names)

    def test_with_the_installed_configuration_beneath_the_personal_one(self):
        environment = {"RECOLL_CONFMID": str(CONFIGURATION)}
        self.index(**environment)
        self.check_queries(**environment)

    def test_with_the_configuration_copied_into_the_personal_one(self):
        for file in CONFIGURATION.iterdir():
            shutil.copy(file, self.configuration)
        self.index()
        self.check_queries()

    def test_shows_all_four_attributes(self):
        environment = {"RECOLL_CONFMID": str(CONFIGURATION)}
        self.index(**environment)
        fields = self.run_program("recollq", "-c", self.configuration, "-m", "-q", "stitches:6872", **environment).stdout
        for line in ("designwidth = 39", "designheight = 64", "stitches = 6872", "threadcolors = 5"):
            self.assertIn(line, fields.splitlines())

    def test_knows_every_format_in_either_case(self):
        environment = {"RECOLL_CONFMID": str(CONFIGURATION)}
        made = self.make_designs(self.home / "made")
        for file in made.values():
            shutil.copy(file, self.designs / file.name)
            shutil.copy(file, self.designs / file.name.upper())
        self.index(**environment)
        expected = {file.name for file in made.values()} | {file.name.upper() for file in made.values()}
        self.assertEqual(self.found("rclcat:embroidery filename:sample* stitches:40..50 colours:1..9", **environment),
                         expected)

    def test_leaves_the_filters_and_categories_of_recoll(self):
        def section(file, name):
            """Its lines, without comments."""
            text = file.read_text().partition(f"[{name}]\n")[2].partition("\n[")[0]
            return {line for line in text.splitlines() if "=" in line and not line.startswith("#")}

        own = section(Path("/usr/share/recoll/examples/mimeconf"), "guifilters")
        self.assertGreaterEqual(len(own), 6)
        self.assertEqual(section(CONFIGURATION / "mimeconf", "guifilters"), own | {"embroidery = rclcat:embroidery"})
        environment = {"RECOLL_CONFMID": str(CONFIGURATION)}
        (self.designs / "notes.txt").write_text("Rose is a rose is a rose is a rose.\n")
        self.index(**environment)
        self.assertEqual(self.found("rclcat:text filename:notes*", **environment), {"notes.txt"})

    def test_handler_for_one_file(self):
        page = self.run_program("velamo-recoll", self.designs / "rose.dst").stdout
        self.assertIn('<meta name="stitches" content="6872">', page)
        refused = self.run_program("velamo-recoll", self.designs / "poem.dst", status=1)
        self.assertEqual(refused.stdout, "")
        self.assertIn("poem.dst: Unable to import DST file (missing header). (error 123)", refused.stderr)

    def test_takes_palettes_from_the_installation(self):
        rose = self.make_janome_rose()
        self.assertIn("5 colours", self.run_without_sources("velamo-recoll", rose).stdout)


if __name__ == "__main__":
    main()
