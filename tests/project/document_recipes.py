#!/usr/bin/env python3
"""Applies the recipes of a document to the sources, and makes copies of what they make and change.

    document_recipes.py DOCUMENT SOURCES FOLDER [DEPENDENCIES SOURCE...]

A ```cpp block begins with "// FILE" and is that file, without the line. A ```diff block begins with "--- FILE", which
may come again for another file; "@@" separates its changes. The lines of a change stand in the file, in this order and
once, but for those with "+", which are added; those with "-" go. What was made or changed is written below FOLDER.

For a build, DEPENDENCIES tells what was read, and the SOURCEs, below FOLDER, are what it compiles of the outcome: every
new one has to be among them.
"""

import sys
from pathlib import Path

from document_program import blocks_of


class Recipes:
    def __init__(self, document, sources):
        self.document = document
        self.sources = sources
        self.files = {}  # what was made or changed, by its name
        self.made = []
        for kind, block in blocks_of(document):
            lines = [line for _, line in block]
            if kind == "cpp":
                self.make(lines)
            elif kind == "diff":
                self.apply(lines)

    def refuse(self, problem):
        raise SystemExit(f"{self.document}: {problem}")

    def make(self, lines):
        name = lines[0].removeprefix("// ")
        if (self.sources / name).exists():
            self.refuse(f"{name} is there already")
        self.files[name] = "\n".join(lines[1:]) + "\n"
        self.made.append(name)

    def change(self, name, lines):
        before = "".join(line[1:] + "\n" for line in lines if not line.startswith("+"))
        after = "".join(line[1:] + "\n" for line in lines if not line.startswith("-"))
        if name not in self.files:
            self.files[name] = (self.sources / name).read_text(encoding="utf-8")
        text = "\n" + self.files[name]
        found = text.count("\n" + before)
        if found != 1:
            self.refuse(f"{name} has {found} places, and not one, that are\n{before}")
        self.files[name] = text.replace("\n" + before, "\n" + after)[1:]

    def apply(self, lines):
        """A ```diff block."""
        name, change = None, []
        for line in [*lines, "@@"]:
            if line == "@@" or line.startswith("--- "):
                if change:
                    self.change(name, change)
                change = []
                name = name if line == "@@" else line.removeprefix("--- ")
            else:
                change.append(line)

    def write(self, folder):
        for name, text in self.files.items():
            file = folder / name
            if file.exists() and file.read_text(encoding="utf-8") == text:
                continue  # nothing to compile again
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")

    def tell_build(self, folder, dependencies, compiled):
        for name in self.made:
            if name.endswith(".cpp") and folder / name not in compiled:
                self.refuse(f"{name} is not compiled")
        read = " ".join(str(self.sources / name) for name in self.files if name not in self.made)
        dependencies.write_text(f"{' '.join(map(str, compiled))}: {read}\n", encoding="utf-8")


if __name__ == "__main__":
    document, sources, folder, *build = map(Path, sys.argv[1:])
    recipes = Recipes(document, sources)
    recipes.write(folder)
    if build:
        recipes.tell_build(folder, build[0], build[1:])
