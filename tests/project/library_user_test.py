#!/usr/bin/env python3
"""What is installed, below any prefix, is all that somebody else's program needs, found by CMake or by pkg-config; and
velamo's own programs start there. The other program has folders of the names that the library's folders have.

    library_user_test.py SOURCES BUILD COMPILER LIBRARIES [COMPILER'S FLAG...]

LIBRARIES is the folder of libraries below the prefix.
"""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES, BUILD, COMPILER = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
LIBRARIES, FLAGS = sys.argv[4], sys.argv[5:]
USER = SOURCES / "tests/library_user"
ROSE = SOURCES / "samples/rose.dst"
TOLD = "Rose: 38.6 64 6872 1\n128 78\n"


def run(*command, **environment):
    done = subprocess.run([*map(str, command)], capture_output=True, text=True, env={**os.environ, **environment})
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


class LibraryUser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.prefix = Path(cls.folder.name).resolve() / "some where"
        for component in ("libvelamo", "velamo", "velamo-dev"):
            run("cmake", "--install", BUILD, "--prefix", cls.prefix, "--component", component)

    def check(self, program):
        target = self.prefix / "rose.pes"
        self.assertEqual(run(program, ROSE, target, LD_LIBRARY_PATH=str(self.prefix / LIBRARIES)), TOLD)
        self.assertEqual(target.read_bytes()[:4], b"#PES")

    def test_cmake_finds_it(self):
        build = self.prefix / "build"
        run("cmake", "-S", USER, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_COMPILER={COMPILER}",
            f"-DCMAKE_CXX_FLAGS={' '.join(FLAGS)}")
        run("cmake", "--build", build)
        self.check(build / "library_user")

    def test_pkg_config_finds_it(self):
        pkg_config = ("pkg-config", f"--define-variable=prefix={self.prefix.parent / 'link'}", "--cflags", "--libs", "velamo")
        (self.prefix.parent / "link").symlink_to(self.prefix)  # pkg-config and shells have their own rules for spaces
        flags = run(*pkg_config, PKG_CONFIG_PATH=str(self.prefix / LIBRARIES / "pkgconfig")).split()
        program = self.prefix / "library_user"
        run(COMPILER, "-std=c++20", "-Wall", "-Wextra", "-Werror", *FLAGS, f"-I{USER}", USER / "library_user.cpp", *flags,
            "-o", program)
        self.check(program)

    def test_programs_start(self):
        velamo = self.prefix / "bin/velamo"
        self.assertIn("Brother", run(velamo, "palettes", LC_ALL="C"))
        found = run(velamo, "index", ROSE.parent, LC_ALL="C", XDG_DATA_HOME=str(self.prefix / "data"))
        self.assertIn("10 new, 0 changed", found)
        picture = self.prefix / "rose.png"
        run(self.prefix / "bin/velamo-thumbnailer", ROSE, picture, "64")
        self.assertEqual(picture.read_bytes()[:4], b"\x89PNG")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
