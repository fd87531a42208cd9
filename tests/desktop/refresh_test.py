"""`velamo desktop refresh` pushes designs into the indexes of hosts that had seen them before."""

import os
import shutil
import time
from pathlib import Path
from urllib.parse import unquote

import desktop

BALOO = next(Path("/usr/lib").glob("*/libexec/baloo_file"), Path("/usr/lib/libexec/baloo_file"))


class Refresh(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("velamo")
        self.designs = self.home / "my designs"
        self.designs.mkdir()
        self.rose = self.designs / "rose.dst"
        shutil.copy(desktop.SAMPLES / "rose.dst", self.rose)
        self.run_program("velamo", "index", self.designs)

    def refresh(self):
        return self.run_program("velamo", "desktop", "refresh").stdout.splitlines()

    def test_recoll_learns_of_designs_that_it_had_indexed_by_name(self):
        desktop.need("recollindex", "recollq")
        folder = self.home / ".recoll"
        folder.mkdir()
        (folder / "recoll.conf").write_text(f'topdirs = "{self.designs}"\n')
        self.run_program("recollindex", "-z")
        self.environment["RECOLL_CONFMID"] = "/usr/share/velamo/recoll"
        self.run_program("recollindex")  # looks at no file that has not changed

        def found():
            lines = self.run_program("recollq", "-b", "-q", "stitches:6872").stdout.splitlines()
            return [Path(unquote(line)).name for line in lines]

        self.assertEqual(found(), [])
        self.assertIn("Recoll: 1 design refreshed", self.refresh())
        self.assertEqual(found(), ["rose.dst"])

    def test_kde_reads_a_design_again_that_seems_unchanged(self):
        desktop.need("balooctl", "baloosearch", "dbus-daemon", str(BALOO))
        self.environment["QT_QPA_PLATFORM"] = "offscreen"
        self.start_bus()
        configuration = self.home / ".config"
        configuration.mkdir()
        (configuration / "baloofilerc").write_text("[Basic Settings]\nIndexing-Enabled=true\n[General]\n"
                                                   f"folders[$e]={self.designs}/\nonly basic indexing=false\n")
        self.start(BALOO)
        self.wait_for("width=39")
        self.run_program("balooctl", "suspend")
        dates = self.rose.stat()
        self.rose.write_bytes((desktop.SAMPLES / "heart.dst").read_bytes())
        os.utime(self.rose, ns=(dates.st_atime_ns, dates.st_mtime_ns))
        self.assertEqual(self.found("width=50"), [])
        self.assertIn("KDE: 1 design refreshed", self.refresh())
        self.assertEqual((self.found("width=39"), self.found("width=50")), ([], [str(self.rose)]))

    def found(self, query):
        lines = self.run_program("baloosearch", query, status=None).stdout.splitlines()
        return [line for line in lines if line.startswith("/")]

    def wait_for(self, query):
        deadline = time.monotonic() + 60
        while not self.found(query):
            self.assertLess(time.monotonic(), deadline, query)
            time.sleep(0.2)


if __name__ == "__main__":
    desktop.main()
