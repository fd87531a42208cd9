"""The packages hold what they should, and what is installed from them works: the program, and the library for others."""

import json
import os
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import desktop

USER = desktop.SOURCES / "tests/library_user"
HEADERS = Path("/usr/include/velamo")
LIBRARY = "libvelamo0.1"
PACKAGES = (LIBRARY, "velamo", "velamo-dev")
COMPILER = ("g++", "-std=c++20", "-Wall", "-Wextra", "-Werror")

# What the library's user prints of the rose.
ROSE = "Rose: 38.6 64 6872 1\n128 78\n"


class PackageTest(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("velamo")
        self.machine = self.run_program("dpkg-architecture", "-qDEB_HOST_MULTIARCH").stdout.strip()
        self.libraries = Path("/usr/lib") / self.machine

    def field(self, package, field):
        return self.run_program("dpkg-query", "-W", f"-f=${{{field}}}", package).stdout

    def files(self, package):
        paths = map(Path, self.run_program("dpkg", "-L", package).stdout.splitlines())
        return {path for path in paths if path.is_symlink() or not path.is_dir()}


class Contents(PackageTest):
    def test_lintian_finds_no_error_and_no_warning(self):
        desktop.need("lintian")
        found = self.run_program("lintian", "--allow-root", "--fail-on", "error,warning",
                                 *desktop.PACKAGES.glob("*.deb"), status=None)
        self.assertEqual((found.returncode, found.stdout), (0, ""))

    def test_programs_of_all_kinds_get_the_library_and_its_texts(self):
        files = self.files(LIBRARY)
        for path in (self.libraries / "libvelamo.so.0.1", "/usr/share/doc/libvelamo0.1/copyright",
                     "/usr/share/velamo/resources/de.lproj/VLMDesign.strings",
                     "/usr/share/velamo/resources/Janome.clr/Janome.clr"):
            self.assertIn(Path(path), files)

    def test_people_get_programs_manuals_and_plug_in(self):
        files = self.files("velamo")
        for path in ("/usr/bin/velamo", "/usr/share/man/man1/velamo.1.gz", "/usr/share/mime/packages/velamo.xml",
                     "/usr/share/doc/velamo/copyright", self.libraries / "velamo/velamo_importer.so",
                     self.libraries / "velamo/libvelamo_corefoundation.so"):
            self.assertIn(Path(path), files)
        for program in (path for path in files if path.parent == Path("/usr/bin")):
            self.assertIn(Path("/usr/share/man/man1", program.name + ".1.gz"), files)

    def test_programmers_get_headers_and_what_finds_them(self):
        files = self.files("velamo-dev")
        for path in (HEADERS / "formats/import.h", self.libraries / "cmake/velamo/velamo-config.cmake",
                     self.libraries / "pkgconfig/velamo.pc", self.libraries / "libvelamo.so"):
            self.assertIn(path, files)

    def test_no_file_is_in_two_packages(self):
        lists = [self.files(package) for package in PACKAGES]
        self.assertEqual(len(set.union(*lists)), sum(map(len, lists)))

    def test_nothing_names_the_tree_it_was_built_from(self):
        """A folder that is not the system's could be anybody's."""
        tree = str(desktop.SOURCES).encode()
        naming = [path for package in PACKAGES for path in self.files(package)
                  if path.is_file() and tree in path.read_bytes()]
        self.assertEqual(naming, [])

    def test_dependencies_are_those_of_the_libraries_used(self):
        for package, libraries in ((LIBRARY, ("libc6 ", "libcairo2 ", "libicu", "libplist", "libstdc++6 ", "zlib1g ")),
                                   ("velamo", ("libarchive13 ", "libc6 ", "libseccomp2 ", "libsqlite3-0 ", "libstdc++6 "))):
            depends = self.field(package, "Depends")
            for library in libraries:
                self.assertIn(library, depends)
        self.assertNotIn("cairo", self.field("velamo", "Depends"))

    def test_each_asks_for_the_very_same_version(self):
        version = self.field(LIBRARY, "Version")
        self.assertIn(f"{LIBRARY} (= {version})", self.field("velamo", "Depends").split(", "))
        self.assertEqual(self.field("velamo-dev", "Depends"), f"{LIBRARY} (= {version})")


class Library(PackageTest):
    def check_user(self, program):
        target = self.home / "rose.pes"
        result = self.run_program(program, desktop.SAMPLES / "rose.dst", target)
        self.assertEqual(result.stdout, ROSE)
        self.assertEqual(target.read_bytes()[:4], b"#PES")
        loaded = self.run_program("ldd", program).stdout
        self.assertIn(f"libvelamo.so.0.1 => /lib/{self.machine}/libvelamo.so.0.1 ", loaded)

    def test_cmake_finds_it(self):
        desktop.need("cmake", "g++")
        self.run_program("cmake", "-S", USER, "-B", self.home / "build")
        self.run_program("cmake", "--build", self.home / "build")
        self.check_user(self.home / "build/library_user")

    def test_pkg_config_finds_it(self):
        desktop.need("pkg-config", "g++")
        flags = self.run_program("pkg-config", "--cflags", "--libs", "velamo").stdout.split()
        self.assertEqual(flags, ["-lvelamo"])
        self.assertEqual(self.run_program("pkg-config", "--modversion", "velamo").stdout.strip(),
                         self.field("velamo-dev", "Version"))
        self.run_program(*COMPILER, f"-I{USER}", USER / "library_user.cpp", *flags, "-o", self.home / "library_user")
        self.check_user(self.home / "library_user")

    def test_every_header_stands_alone(self):
        desktop.need("g++")
        headers = sorted(HEADERS.rglob("*.h"))
        self.assertGreater(len(headers), 30)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            for result in pool.map(self.compile_alone, headers):
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def compile_alone(self, header):
        return self.run_program(*COMPILER, "-fsyntax-only", "-x", "c++", "-",
                                input=f"#include <{header.relative_to(HEADERS.parent)}>\n", status=None)


class Program(PackageTest):
    def test_indexes_and_searches(self):
        self.assertIn("10 new, 0 changed", self.run_program("velamo", "index", desktop.SAMPLES).stdout)
        found = json.loads(self.run_program("velamo", "search", "--json", "--width", "..60", "--colors", "3..").stdout)
        self.assertEqual([(Path(design["file"]).name, design["stitches"]) for design in found], [("rose.dst", 6872)])

    def test_asks_its_own_plug_in(self):
        rose = desktop.SAMPLES / "rose.dst"
        told = json.loads(self.run_program("velamo", "info", "--plugin", "--json", rose).stdout)
        self.assertEqual(told, [{"file": str(rose), "width": 38.6, "height": 64.0, "stitches": 6872, "colors": 5}])
        other = self.home / "other.so"
        other.write_text("no plug-in")
        refused = self.run_program("velamo", "info", "--plugin", rose, status=1, VELAMO_IMPORTER=str(other))
        self.assertIn(str(other), refused.stderr)

    def test_speaks_german(self):
        unknown = self.home / "rose.abc"
        unknown.touch()
        problem = self.run_program("velamo", "info", unknown, status=1, LC_ALL="de_DE.UTF-8").stderr
        self.assertEqual(problem, f"velamo: {unknown}: Unbekanntes Dateiformat (UTI). (error 10)\n")
        rose = self.run_program("velamo", "info", desktop.SAMPLES / "rose.dst", LC_ALL="de_DE.UTF-8").stdout
        self.assertIn("Größe: 38,6 mm x 64,0 mm", rose)


if __name__ == "__main__":
    desktop.main()
