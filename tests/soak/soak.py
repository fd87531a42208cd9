"""What the long tests share: the program, the samples and a folder that is gone afterwards."""

import json
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

PROGRAM = os.environ["VELAMO_PROGRAM"]
SAMPLES = Path(os.environ["VELAMO_SOURCE_FOLDER"]) / "samples"
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}


class SoakTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="velamo-soak-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.catalogue = self.folder / "data/catalogue.sqlite"
        self.catalogue.parent.mkdir()

    def start(self, *arguments):
        words = [PROGRAM, *map(str, arguments)]
        return subprocess.Popen(words, env=ENVIRONMENT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def run_program(self, *arguments, status=0):
        program = self.start(*arguments)
        out, problems = program.communicate(timeout=1200)
        self.assertEqual(program.returncode, status, problems[-2000:])
        return out

    def index(self, *arguments):
        return self.run_program("index", "--catalogue", self.catalogue, *arguments)

    def search(self, *arguments):
        return json.loads(self.run_program("search", "--catalogue", self.catalogue, "--json", *arguments))
