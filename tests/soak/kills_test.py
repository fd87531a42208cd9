"""Whenever a process is killed, what it was to write is the old file or the new one, whole, and nothing else is left."""

import random
import shutil
import signal
import time
import unittest

import soak

ROUNDS = 400
DESIGNS = 600


class Kills(soak.SoakTest):
    def setUp(self):
        super().setUp()
        self.chance = random.Random(1)

    def seconds_of(self, *arguments):
        start = time.monotonic()
        self.run_program(*arguments)
        return time.monotonic() - start

    def kill_within(self, seconds, *arguments):
        """Whether the program was killed before it ended by itself."""
        program = self.start(*arguments)
        time.sleep(self.chance.uniform(0, seconds))
        program.send_signal(signal.SIGKILL)
        program.communicate()
        return program.returncode == -signal.SIGKILL

    def test_index(self):
        designs = self.folder / "designs"
        designs.mkdir()
        samples = sorted(soak.SAMPLES.glob("*.dst"))
        for number in range(DESIGNS):
            shutil.copy(samples[number % len(samples)], designs / f"{number}.dst")
        whole = self.seconds_of("index", "--catalogue", self.catalogue, designs)
        expected = self.search()
        self.assertEqual(len(expected), DESIGNS)
        killed = 0
        for _ in range(ROUNDS):
            shutil.rmtree(self.catalogue.parent)
            self.catalogue.parent.mkdir()
            killed += self.kill_within(whole, "index", "--catalogue", self.catalogue, designs)
            if self.catalogue.exists():
                self.assertIn("designs:", self.index(designs))
                self.assertEqual(self.search(), expected)
        self.assertGreater(killed, ROUNDS / 4)

    def check_target(self, target, former, seconds, *arguments):
        """Kills the program that replaces the target again and again."""
        self.run_program(*arguments)
        new = target.read_bytes()
        others = sorted(path for path in target.parent.iterdir())
        killed = 0
        seen = set()
        for _ in range(ROUNDS):
            target.write_bytes(former)
            killed += self.kill_within(seconds, *arguments)
            content = target.read_bytes()
            self.assertTrue(content in (former, new), f"neither the old file nor the new one: {len(content)} bytes")
            seen.add(content)
            # The name that a file has for an instant may be left, once; the next run takes it away.
            left = [path.name for path in target.parent.iterdir() if path not in others]
            self.assertLessEqual(set(left), {f".{target.name}.velamo"})
        self.run_program(*arguments)
        self.assertEqual(sorted(target.parent.iterdir()), others)
        self.assertGreater(killed, ROUNDS / 4)
        self.assertEqual(seen, {former, new})

    def check_writing(self, extension, *arguments):
        place = self.folder / "place"
        place.mkdir()
        target = place / f"rose.{extension}"
        target.write_bytes(b"former")
        self.check_target(target, b"former", 2 * self.seconds_of(*arguments, target), *arguments, target)

    def test_convert(self):
        self.check_writing("pes", "convert", soak.SAMPLES / "spirograph.dst")

    def test_edit(self):
        self.check_writing("exp", "edit", soak.SAMPLES / "heart.dst", "-e", "center", "-o")

    def test_render(self):
        self.check_writing("png", "render", soak.SAMPLES / "letter-f.dst")


unittest.main(verbosity=2)
