#!/usr/bin/env python3
"""Ends the program by signals while it writes files: each is the old one or the new one, and nothing lies beside it.

    signals_test.py PROGRAM SAMPLES

Exit status 77 where the system does not let a program be traced.
"""

import os
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from tracing import CANNOT_TRACE, may_trace

PROGRAM, SAMPLES = (Path(word).resolve() for word in sys.argv[1:3])
OLD = b"an old file"
ONE = ["convert", "designs/1.dst", "out/1.exp"]
SEVERAL = ["convert", "--all", "designs", "--to", "exp", "--out", "out", "--jobs", "4"]
# A file that replaces another gets its second name by this call, which now takes its time.
SLOWLY = ["strace", "-f", "-qq", "-o", "/dev/null", "-e", "trace=linkat", "-e", "inject=linkat:delay_exit=300000"]


class Signals(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)
        (self.folder / "designs").mkdir()
        (self.folder / "out").mkdir()
        for number in range(8):
            shutil.copy2(SAMPLES / "rose.dst", self.folder / "designs" / f"{number}.dst")
            (self.folder / "out" / f"{number}.exp").write_bytes(OLD)

    def out(self):
        return {path.name: path.read_bytes() for path in (self.folder / "out").iterdir()}

    def end_in_the_middle(self, arguments, number):
        """Sends the signal as soon as a file has its second name."""
        tracer = subprocess.Popen([*SLOWLY, PROGRAM, *arguments], cwd=self.folder, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        end = time.monotonic() + 60
        while not any(name.startswith(".") for name in self.out()):
            self.assertLess(time.monotonic(), end)
            self.assertIsNone(tracer.poll())
        (program,) = Path(f"/proc/{tracer.pid}/task/{tracer.pid}/children").read_text().split()
        signal.pidfd_send_signal(self.descriptor_of(int(program)), number)
        return tracer.wait(timeout=60)  # strace ends as its program did

    def descriptor_of(self, process):
        descriptor = os.pidfd_open(process)
        self.addCleanup(os.close, descriptor)
        return descriptor

    def test_no_file_is_left_half_named(self):
        new = self.new_file()
        for arguments in (ONE, SEVERAL):
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                with self.subTest(arguments=arguments, signal=number):
                    self.assertEqual(self.end_in_the_middle(arguments, number), -number)
                    out = self.out()
                    self.assertEqual(sorted(out), [f"{number}.exp" for number in range(8)])
                    self.assertLessEqual(set(out.values()), {OLD, new})

    def new_file(self):
        subprocess.run([PROGRAM, "convert", "designs/0.dst", "new.exp"], cwd=self.folder, check=True)
        return (self.folder / "new.exp").read_bytes()

    def test_a_file_that_may_not_become_so_large_is_an_error(self):
        # A limit that may be lifted is lifted where designs are handed over in memory; one that may not, is said.
        unlimited = resource.getrlimit(resource.RLIMIT_FSIZE)[1]
        for most, problem in ((unlimited, "out/1.exp: File too large"),
                              (4096, "designs/1.dst: what was read cannot be handed over: File too large")):
            limited = subprocess.run([PROGRAM, *ONE], cwd=self.folder, capture_output=True, text=True,
                                     preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, most)))
            self.assertEqual(limited.returncode, 1)
            self.assertIn(problem, limited.stderr)
        self.assertEqual(self.out(), {f"{number}.exp": OLD for number in range(8)})


if __name__ == "__main__":
    if not may_trace():
        sys.exit(CANNOT_TRACE)
    unittest.main(argv=sys.argv[:1])
