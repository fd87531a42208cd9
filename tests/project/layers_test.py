#!/usr/bin/env python3
"""Each layer's files took only headers of its own and of the layers below it, as the compiler noted.

    layers_test.py SOURCES BUILD LAYERS NINJA

LAYERS has a line for each layer: its target, its folder, and the targets below it.
"""

import re
import subprocess
import sys
import unittest
from pathlib import Path

SOURCES, BUILD, LAYERS, NINJA = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3]), sys.argv[4]
DOCUMENT = SOURCES / "docs/architecture.md"

# How a name is marked as visible is every layer's.
MARKS = {Path("velamo/api.h"), Path("velamo/private_api.h")}


class Layer:
    def __init__(self, line):
        self.name, folder, *self.below = line.split()
        self.folder = Path(folder)


def read_layers():
    return {layer.name: layer for layer in map(Layer, LAYERS.read_text().splitlines())}


def all_below(layer, layers):
    """The layer itself and whatever lies below it."""
    found, waiting = set(), [layer.name]
    while waiting:
        name = waiting.pop()
        if name in layers and name not in found:
            found.add(name)
            waiting += layers[name].below
    return {layers[name].folder for name in found}


def headers_by_object():
    """What each object was made of, by the names that ninja gives them."""
    noted = subprocess.run([NINJA, "-C", BUILD, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    for entry in noted.split("\n\n"):
        target, *lines = entry.splitlines() or [""]
        if ": #deps" in target:
            yield target.split(":")[0], [(BUILD / line.strip()).resolve() for line in lines]


def layer_of(target, layers):
    """The layer that an object belongs to: its folder in the build tree names the target."""
    folders = [part.removesuffix(".dir") for part in Path(target).parts if part.endswith(".dir")]
    return layers.get(folders[0]) if folders else None


class Layers(unittest.TestCase):
    def test_take_headers_from_below_alone(self):
        layers = read_layers()
        seen = set()
        for target, headers in headers_by_object():
            layer = layer_of(target, layers)
            if layer is None:
                continue
            seen.add(layer.name)
            allowed = all_below(layer, layers)
            for header in headers:
                # What others made, and what the build itself made.
                if not header.is_relative_to(SOURCES) or header.is_relative_to(BUILD):
                    continue
                place = header.relative_to(SOURCES)
                with self.subTest(target):
                    self.assertTrue(place in MARKS or any(place.is_relative_to(folder) for folder in allowed),
                                    f"{layer.name} took {place}")
        self.assertEqual(seen, set(layers))

    def test_stand_in_their_document(self):
        """The table says "| `formats` | `velamo/formats` | `editing` |"."""
        rows = re.findall(r"^\| `(\w+)` \| `([\w/]+)` \|(.*)\|$", DOCUMENT.read_text(encoding="utf-8"), re.M)
        shown = {name: (folder, set(re.findall(r"`(\w+)`", below))) for name, folder, below in rows}
        self.assertEqual(shown, {layer.name.removeprefix("velamo_"):
                                 (str(layer.folder), {name.removeprefix("velamo_") for name in layer.below})
                                 for layer in read_layers().values()})

    def test_point_downward(self):
        layers = read_layers()
        for layer in layers.values():
            for name in layer.below:
                if name in layers:
                    self.assertNotIn(layer.folder, all_below(layers[name], layers) - {layers[name].folder}, name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
