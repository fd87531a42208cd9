#!/usr/bin/env python3
"""The names that the library exports are those of two lists beside it: names.public, which callers link with, and
names.private, which velamo's own programs link with.

    exported_names_test.py LIBRARY FOLDER NM [--write]

--write makes the lists anew: a name is public where a header that is installed declares it. Look at what has changed
before you commit it: a public name that goes is a new second number of the version.
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

LIBRARY, FOLDER, NM = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
LISTS = {"public": FOLDER / "names.public", "private": FOLDER / "names.private"}


def exported_names():
    """Each name and its version node. One that a compiler may leave out, as it inlines it, is no promise."""
    listed = subprocess.run([NM, "--dynamic", "--defined-only", "--demangle", "--with-symbol-versions", LIBRARY],
                            capture_output=True, text=True, check=True).stdout
    for line in listed.splitlines():
        _, kind, name = line.split(" ", 2)
        if kind == "A":  # a node itself
            continue
        name, _, node = name.rpartition("@@")
        yield name, "private" if node == "VELAMO_PRIVATE" else "public", node


def listed_names(kind):
    return LISTS[kind].read_text().splitlines()


def public_headers():
    """Those that are installed, as the library's CMakeLists.txt lists them."""
    return re.search(r"set\(headers\n(.*?)\)", (FOLDER / "CMakeLists.txt").read_text(), re.DOTALL).group(1).split()


def included_by(header, seen):
    """The header and what it includes of the library, all the way down."""
    if header not in seen:
        seen.add(header)
        for inner in re.findall(r'#include "velamo/(.+)"', (FOLDER / header).read_text()):
            included_by(inner, seen)
    return seen


def public_words():
    """What the public headers mark."""
    text = "\n".join((FOLDER / header).read_text() for header in public_headers())
    return set(re.findall(r"\bVELAMO_API\b[^;{(]*?(operator==|\w+)(?: :|\s*[;{(])", text))


def declared_word(name):
    """The word by which a header declares an exported name: the class of a member, or the function."""
    return re.search(r"velamo::(operator==|\w+)", name).group(1)


def write_lists():
    words = public_words()
    names = {name for name, _, _ in exported_names()}
    public = {name for name in names if declared_word(name) in words}
    for kind, some in (("public", public), ("private", names - public)):
        LISTS[kind].write_text("".join(f"{name}\n" for name in sorted(some)))


class ExportedNames(unittest.TestCase):
    maxDiff = None

    def test_are_those_of_the_lists(self):
        for kind in LISTS:
            with self.subTest(kind):
                exported = sorted({name for name, node, _ in exported_names() if node == kind})
                self.assertEqual(exported, listed_names(kind))

    def test_have_a_node_of_the_version(self):
        version = re.search(r"VERSION (\d+\.\d+)", (FOLDER.parent / "CMakeLists.txt").read_text().split("project(")[1])
        nodes = {node for _, _, node in exported_names()}
        self.assertEqual(nodes, {"VELAMO_PRIVATE", f"VELAMO_{version.group(1)}"})

    def test_are_public_where_an_installed_header_declares_them(self):
        words = public_words()
        self.assertEqual([name for name in listed_names("public") if declared_word(name) not in words], [])
        self.assertEqual([name for name in listed_names("private") if declared_word(name) in words], [])

    def test_are_all_to_be_had_by_one_header(self):
        """And no public header takes one that is not installed."""
        self.assertEqual(sorted(included_by("velamo.h", set())), sorted(public_headers()))


if __name__ == "__main__":
    if "--write" in sys.argv:
        write_lists()
    else:
        unittest.main(argv=sys.argv[:1])
