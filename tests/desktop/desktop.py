"""What the tests with the desktops' own programs share."""

import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

SOURCES = Path(os.environ["VELAMO_SOURCE_FOLDER"])
BUILD = Path(os.environ["VELAMO_BUILD_FOLDER"])
SAMPLES = SOURCES / "samples"
PACKAGES = BUILD / "packages"

HOST_IS_MISSING = 77


def need(*programs):
    """Skips the test when one of the host's programs (a name in PATH or a whole path) is not there."""
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        raise unittest.SkipTest("not installed: " + ", ".join(missing))


def built(name):
    """A program that was built for the tests, which is left out where its host's headers are not installed."""
    program = BUILD / "tests/desktop" / name
    if not program.exists():
        raise unittest.SkipTest("not built: " + name)
    return program


# Where installing any package leaves traces: the package system's own records, logs and caches.
TRACES = ("var/lib/dpkg", "var/lib/apt", "var/log", "var/cache", "var/tmp", "usr/local", "usr/src")


def listing(root):
    """All paths below /usr, /etc and /var of the system in the folder, but for the traces."""
    pruned = [word for trace in TRACES for word in ("-path", f"./{trace}", "-prune", "-o")]
    found = subprocess.run(["find", "./usr", "./etc", "./var", *pruned, "-print0"], cwd=root, capture_output=True)
    return sorted(path[1:] for path in os.fsdecode(found.stdout).split("\0") if path)


def left_behind(root, before):
    """The paths that have come since the listing and that no package owns; so others may install meanwhile."""
    known = set(before)
    new = [path for path in listing(root) if path not in known]
    lists = Path(root, "var/lib/dpkg/info").glob("*.list")
    owned = {line for file in lists for line in file.read_text().splitlines()} if new else set()
    return [path for path in new if path not in owned]


class Picture:
    """A PNG file with transparency, as all thumbnails of designs are."""

    def __init__(self, file):
        data = Path(file).read_bytes()
        self.width, self.height, *kind = struct.unpack(">IIBBBBB", data[16:33 - 4])
        if kind != [8, 6, 0, 0, 0]:
            raise ValueError(f"{file} is no picture of red, green, blue and alpha")
        self._rows = []
        packed = zlib.decompress(b"".join(self._blocks(data)))
        above = bytes(4 * self.width)
        for start in range(0, len(packed), 4 * self.width + 1):
            above = self._unfiltered(packed[start], packed[start + 1:start + 1 + 4 * self.width], above)
            self._rows.append(above)

    @staticmethod
    def _blocks(data):
        place = 8
        while place < len(data):
            size, name = struct.unpack(">I4s", data[place:place + 8])
            if name == b"IDAT":
                yield data[place + 8:place + 8 + size]
            place += size + 12

    @staticmethod
    def _unfiltered(kind, line, above):
        """The row, each byte of which was stored as the difference to a guess from those to the left and above."""
        row = bytearray(line)
        for i, byte in enumerate(line):
            left, up, corner = (row[i - 4], above[i], above[i - 4]) if i >= 4 else (0, above[i], 0)
            nearest = min((left, up, corner), key=lambda guess: abs(left + up - corner - guess))
            row[i] = byte + (0, left, up, (left + up) // 2, nearest)[kind] & 0xFF
        return bytes(row)

    def at(self, column, row):
        """Red, green, blue and alpha; rows count from the top."""
        return tuple(self._rows[row][4 * column:4 * column + 4])


class DesktopTest(unittest.TestCase):
    """A test with a home of its own, in which nothing of the person who runs it is seen or changed."""

    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="velamo-desktop-", dir="/var/tmp"))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        run = self.home / "run"
        run.mkdir(mode=0o700)
        self.environment = {
            "PATH": "/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin",
            "HOME": str(self.home),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_RUNTIME_DIR": str(run),
            "LC_ALL": "C.UTF-8",
        }

    def run_program(self, *command, input=None, status=0, timeout=120, **environment):
        """Runs the command in the test's home and gives back what it printed; its exit status is checked."""
        result = subprocess.run([str(word) for word in command], input=input, capture_output=True, timeout=timeout,
                                text=not isinstance(input, bytes), env={**self.environment, **environment})
        if status is not None:
            self.assertEqual(result.returncode, status, f"{command}: {result.stderr}")
        return result

    def start(self, *command, stdout=subprocess.DEVNULL):
        """Starts a service in the test's home, which is ended with the test."""
        service = subprocess.Popen([str(word) for word in command], env=self.environment, stdout=stdout,
                                   stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(service.wait)
        self.addCleanup(service.terminate)
        return service

    def start_bus(self):
        """Starts a session bus for all that the test runs from now on."""
        bus = self.start("dbus-daemon", "--session", "--nofork", "--print-address", stdout=subprocess.PIPE)
        with bus.stdout as address:
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = address.readline().strip()

    def run_without_sources(self, *command, **options):
        """Runs the command where there are /usr and the test's home alone, so that nothing is found in a source tree."""
        need("bwrap")
        return self.run_program("bwrap", "--ro-bind", "/usr", "/usr", "--symlink", "usr/lib", "/lib", "--symlink", "usr/lib64",
                                "/lib64", "--proc", "/proc", "--bind", self.home, self.home, *command, **options)

    def make_designs(self, folder):
        """A small design of each format by its extension, in the folder, which is made."""
        folder.mkdir(parents=True)
        self.run_program(built("velamo_make_designs"), folder)
        designs = {file.name.partition(".")[2]: file for file in folder.iterdir()}
        self.assertGreaterEqual(len(designs), 13)
        return designs

    def make_janome_rose(self):
        """A rose of five colours that are numbers in a palette."""
        rose = self.home / "rose.dst"
        shutil.copy(SAMPLES / "rose.dst", rose)
        shutil.copy(SAMPLES / "rose.threads", self.home)
        self.run_program("velamo", "convert", rose, self.home / "rose.jef")
        for file in (rose, self.home / "rose.threads"):
            file.unlink(missing_ok=True)
        return self.home / "rose.jef"


def main():
    """Runs the tests of the calling script; one that was skipped is never said to have passed. Where all hosts have to be
    there (in CI), it has failed."""
    program = unittest.main(exit=False, verbosity=2)
    if not program.result.wasSuccessful():
        sys.exit(1)
    if program.result.skipped:
        sys.exit(1 if os.environ.get("CI") else HOST_IS_MISSING)
