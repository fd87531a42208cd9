#!/usr/bin/env python3
"""Designs that change their thread with every record, or are long, take a bounded part of the memory there is: 20 bytes
for each byte of the file, and 66 MB.

    memory_test.py PROGRAM
"""

import os
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM = Path(sys.argv[1]).resolve()
MANY = 1_000_000


def dst(records):
    tags = ("LA:x", "ST:1", "CO:1", "+X:1", "-X:1", "+Y:1", "-Y:1", "AX:1", "AY:1")
    return "\r".join(tags).encode().ljust(512) + records + b"\0\0\xf3"


def jef(tensions):
    """A thread for each tension."""
    count = len(tensions)
    header = struct.pack("<iI14sHIiI", 116 + 8 * count, 10, b"0" * 14, 0, count, 0, 0).ljust(116, b"\0")
    changes = b"\x80\x01\1\1\x80\x01\xff\xff" * (count // 2) + b"\x80\x10"
    return header + struct.pack("<I", 1) * count + struct.pack(f"<{count}i", *tensions) + b"\1\1" * 4 + changes


COLORS = dst(b"\0\0\xc3" * MANY + b"\1\0\x03")
FILES = {
    "colors.dst": COLORS,
    "colors.exp": b"\x80\x01\0\0" * MANY + b"\1\1",
    "tensions.jef": jef(range(MANY // 4 + 1)),
    "long.exp": b"\x30\0\xd0\0" * 4_500_000,
    "far.exp": b"\x7f\x7f\x81\x81" * 5_000_000,
}
# The arguments, the exit status, and a word of the message.
ROWS = (
    ("info colors.dst", 0, ""),
    ("info --json colors.dst", 0, ""),
    ("convert colors.dst out.exp", 0, ""),
    ("convert colors.dst out.jef", 0, ""),
    ("convert colors.exp out.exp", 0, ""),
    ("convert colors.exp out.jef", 0, ""),
    ("edit colors.dst -e center -o out.exp", 0, ""),
    ("info --json tensions.jef", 0, ""),
    ("convert tensions.jef out.jef", 0, ""),
    ("convert tensions.jef out.exp", 0, "without its 250001 colors"),
    ("convert long.exp out.pec", 1, "out.pec: File too large"),
    ("convert far.exp out.exp", 1, "moves"),
    ("convert far.exp out.pec", 1, "out.pec: File too large"),
)


class Memory(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)
        for name, content in FILES.items():
            (self.folder / name).write_bytes(content)

    def test_is_a_part_of_the_file(self):
        for words, status, message in ROWS:
            with self.subTest(words):
                self.look_at(words.split(), status, message)

    def look_at(self, arguments, status, message):
        (source,) = (word for word in arguments if word in FILES)
        with tempfile.TemporaryFile("w+") as problems:
            program = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdout=subprocess.DEVNULL,
                                       stderr=problems)
            _, ended, used = os.wait4(program.pid, 0)
            program.returncode = os.waitstatus_to_exitcode(ended)
            problems.seek(0)
            said = problems.read()
        self.assertEqual(program.returncode, status, said)
        self.assertIn(message, said)
        # Of the program or its reader, whichever took more.
        print(f"{' '.join(arguments)}: {used.ru_maxrss >> 10} MB, {used.ru_utime:.1f} s", flush=True)
        self.assertLessEqual(used.ru_maxrss * 1024, 20 * len(FILES[source]) + (66 << 20))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
