"""A million designs: the catalogue takes them, knows them again and finds them, with memory that does not grow with them."""

import os
import resource
import shutil
import time
import unittest

import soak

FOLDERS = 1000
DESIGNS_OF_FOLDER = 1000
MOST_MEMORY = 600 << 20  # bytes, with the names of one folder, and the rows that a search hands over


class ManyDesigns(soak.SoakTest):
    def setUp(self):
        super().setUp()
        self.designs = self.folder / "designs"
        sources = [soak.SAMPLES / name for name in ("letter-f.dst", "letter-f.exp", "letter-f.jef", "letter-f.pcs")]
        for folder in range(FOLDERS):
            place = self.designs / f"{folder:04}"
            place.mkdir(parents=True)
            own = [shutil.copy(source, place / f"0{source.suffix}") for source in sources]  # a file has few names
            for number in range(len(own), DESIGNS_OF_FOLDER):
                source = own[number % len(own)]
                os.link(source, place / f"{number}{os.path.splitext(source)[1]}")

    def timed(self, name, action, *arguments):
        start = time.monotonic()
        result = action(*arguments)
        print(f"{name}: {time.monotonic() - start:.1f} s", flush=True)
        return result

    def test_are_taken_known_again_and_found(self):
        everything = FOLDERS * DESIGNS_OF_FOLDER
        self.assertIn(f"{everything} new", self.timed("index", self.index, self.designs))
        self.assertIn(f"0 new, 0 changed, {everything} unchanged", self.timed("index again", self.index))
        found = self.timed("search", self.search, "--folder", self.designs / "0007", "--width", "..23")
        self.assertEqual(len(found), DESIGNS_OF_FOLDER)
        last = self.timed("search a word", self.search, "999.pcs")
        self.assertEqual(len(last), FOLDERS)
        shutil.rmtree(self.designs / "0007")
        self.assertIn(f"{DESIGNS_OF_FOLDER} removed", self.timed("index fewer", self.index))
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024, MOST_MEMORY)


unittest.main(verbosity=2)
