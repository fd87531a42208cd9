"""Files of all formats have their types, whatever the case of their names, and other files keep theirs."""

from pathlib import Path

import desktop

PACKAGE = Path("/usr/share/mime/packages/velamo.xml")
KIND = "application/x-embroidery-"

# Formats that share a reader share a type.
NAMES_OF_TYPES = {"jef+": "jef", "pcd": "pcs", "pcq": "pcs"}

JPEG_2000 = b"\0\0\0\x0cjP  \r\n\x87\n" + b"\0\0\0\x14ftypjpx \0\0\0\0jpx "
NOTE = b"LA: a city on a coast\nNY: another one\n"
OTHERS = {
    "note": (NOTE, "text/plain"),
    "note.txt": (NOTE, "text/plain"),
    "poem": (b"A rose is a rose is a rose.\n", "text/plain"),
    "picture.jpx": (JPEG_2000, "image/jpx"),
}

class FileTypes(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        designs = self.make_designs(self.home / "lower")
        upper = self.home / "upper"
        upper.mkdir()
        self.expected = {}
        for extension, file in designs.items():
            twin = upper / file.name.upper()
            twin.write_bytes(file.read_bytes())
            self.expected[file] = self.expected[twin] = KIND + NAMES_OF_TYPES.get(extension, extension)
        for name, (content, kind) in OTHERS.items():
            file = self.home / name
            file.write_bytes(content)
            self.expected[file] = kind

    def check(self, types):
        self.assertEqual(list(zip(map(str, self.expected), types)),
                         [(str(file), kind) for file, kind in self.expected.items()])

    def test_package_is_well_formed_and_installed(self):
        desktop.need("xmllint")
        self.run_program("xmllint", "--noout", PACKAGE)
        source = desktop.SOURCES / "integrations/file-types/velamo.xml"
        self.assertEqual(PACKAGE.read_bytes(), source.read_bytes())

    def test_gio(self):
        desktop.need("gio")
        marker = "standard::content-type: "
        self.check(line.strip().removeprefix(marker)
                   for file in self.expected
                   for line in self.run_program("gio", "info", "-a", "standard::content-type", file).stdout.splitlines()
                   if marker in line)

    def types_of_xdg_mime(self, **environment):
        return [self.run_program("xdg-mime", "query", "filetype", file, **environment).stdout.strip()
                for file in self.expected]

    def test_xdg_mime(self):
        desktop.need("xdg-mime", "gio")
        for name in ("GNOME", "XFCE"):
            with self.subTest(name):
                self.check(self.types_of_xdg_mime(XDG_CURRENT_DESKTOP=name))

    def test_xdg_mime_outside_a_desktop(self):
        """Then names decide alone, which is well for all but a Photo CD's and a JPEG 2000 picture's."""
        desktop.need("xdg-mime", "mimetype")
        self.expected.update({file: "image/x-photo-cd" for file in self.expected if file.suffix.lower() == ".pcd"})
        self.expected[self.home / "picture.jpx"] = KIND + "jpx"
        self.check(self.types_of_xdg_mime())

    def test_qt(self):
        program = desktop.built("velamo_qt_types")
        self.check(self.run_program(program, *self.expected).stdout.splitlines())

    def test_designs_with_marks_are_known_without_their_names(self):
        desktop.need("mimetype")
        for extension in ("dst", "pes", "pec", "vp3", "pcs"):
            content = next(f for f in self.expected if f.name == "sample." + extension).read_bytes()
            nameless = self.home / extension
            nameless.write_bytes(content)
            kind = self.run_program("mimetype", "--brief", "--magic-only", nameless).stdout.strip()
            self.assertEqual(kind, KIND + extension)

if __name__ == "__main__":
    desktop.main()
