#!/usr/bin/env python3
"""An installed bundle has the libraries that its module needs, and looks for them in itself.

    carried_libraries_test.py CMAKE SCRIPT

The script that carries them works on files of Apple's systems alone: small ones are made here, by LLVM's tools. Where
these are missing the test is skipped (77).
"""

import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CMAKE, SCRIPT = sys.argv[1], sys.argv[2]
NAMES = ("clang", "ld64.lld", "llvm-otool", "llvm-install-name-tool")
TOOLS = {name: shutil.which(name) or shutil.which(name + "-14") for name in NAMES}

SYSTEM = """--- !tapi-tbd
tbd-version: 4
targets: [ x86_64-macos ]
install-name: '/usr/lib/libSystem.B.dylib'
exports:
  - targets: [ x86_64-macos ]
    symbols: [ dyld_stub_binder ]
...
"""


def run(tool, *words):
    return subprocess.run([TOOLS.get(tool, tool), *map(str, words)], capture_output=True, text=True, check=True).stdout


def needs(binary):
    """What a binary asks the loader for, its own name included, and where it lets it look."""
    return set(re.findall(r" (?:name|path) (.+) \(offset", run("llvm-otool", "-l", binary)))


class Bundle:
    """One whose module needs a library that needs another one, and one that is found by the folders it is told."""

    def __init__(self, folder):
        self.folder = folder
        self.others = folder / "others"
        self.contents = folder / "Velamo.mdimporter" / "Contents"
        self.others.mkdir()
        (self.contents / "MacOS").mkdir(parents=True)
        (folder / "libSystem.tbd").write_text(SYSTEM)
        data = self.library("libdata.1.2.dylib", self.others / "libdata.1.dylib", "int data(void) { return 1; }")
        (self.others / "libdata.1.dylib").symlink_to(data.name)
        words = self.library("libwords.1.dylib", self.others / "libwords.1.dylib",
                             "int data(void); int words(void) { return data(); }", data, "-rpath", "/nowhere")
        lists = self.library("liblists.dylib", "@rpath/liblists.dylib", "int lists(void) { return 1; }")
        lists.chmod(0o444)
        self.link(self.contents / "MacOS" / "Velamo",
                  "int words(void); int lists(void); int module(void) { return words() + lists(); }",
                  "-bundle", words, lists, "-rpath", self.others)

    def library(self, file, name, code, *words):
        library = self.others / file
        self.link(library, code, "-dylib", "-install_name", name, *words)
        return library

    def link(self, binary, code, *words):
        source, made = self.folder / "code.c", self.folder / "code.o"
        source.write_text(code)
        run("clang", "-target", "x86_64-apple-macos13.3", "-c", source, "-o", made)
        run("ld64.lld", "-arch", "x86_64", "-platform_version", "macos", "13.3", "13.3", "-headerpad_max_install_names",
            made, self.folder / "libSystem.tbd", *words, "-o", binary)

    def carry(self):
        # The three are Apple's own where there is an Apple.
        run(CMAKE, f"-Dbundle={self.contents.parent}", f"-Dotool={TOOLS['llvm-otool']}",
            f"-Dinstall_name_tool={TOOLS['llvm-install-name-tool']}",
            "-DCMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM=macos+macho", "-DCMAKE_GET_RUNTIME_DEPENDENCIES_TOOL=otool",
            f"-DCMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND={TOOLS['llvm-otool']}", "-P", SCRIPT)


class CarriedLibraries(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.bundle = Bundle(Path(folder.name).resolve())
        self.frameworks = self.bundle.contents / "Frameworks"

    def test_are_found_in_the_bundle_alone(self):
        system = "/usr/lib/libSystem.B.dylib"
        self.bundle.carry()
        self.assertEqual({file.name for file in self.frameworks.iterdir()},
                         {"libdata.1.dylib", "libwords.1.dylib", "liblists.dylib"})
        self.assertEqual(needs(self.bundle.contents / "MacOS" / "Velamo"),
                         {system, "@loader_path/../Frameworks/libwords.1.dylib",
                          "@loader_path/../Frameworks/liblists.dylib"})
        self.assertEqual(needs(self.frameworks / "libwords.1.dylib"),
                         {system, "@rpath/libwords.1.dylib", "@loader_path/libdata.1.dylib"})
        self.assertEqual(needs(self.frameworks / "libdata.1.dylib"), {system, "@rpath/libdata.1.dylib"})
        self.assertEqual(needs(self.frameworks / "liblists.dylib"), {system, "@rpath/liblists.dylib"})

    def test_are_files_of_their_own(self):
        before = {file.name: file.read_bytes() for file in self.bundle.others.iterdir()}
        self.bundle.carry()
        for file in self.frameworks.iterdir():
            self.assertFalse(file.is_symlink())
        self.assertEqual({file.name: file.read_bytes() for file in self.bundle.others.iterdir()}, before)

    def test_have_to_be_there(self):
        (self.bundle.others / "liblists.dylib").unlink()
        with self.assertRaises(subprocess.CalledProcessError) as failure:
            self.bundle.carry()
        self.assertIn("liblists.dylib", failure.exception.stderr)


if __name__ == "__main__":
    missing = [name for name, tool in TOOLS.items() if tool is None]
    if missing:
        print("no " + ", ".join(missing))
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])
