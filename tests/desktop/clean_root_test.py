"""On a fresh system, which has nothing but apt, the packages install with what they ask for, work, and leave nothing."""

import os
import shutil

import desktop

# Made once, since it takes most of a minute.
CACHE = desktop.PACKAGES / "clean-root.tar"
RELEASE = "bookworm"


class CleanRoot(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("mmdebstrap", "unshare", "chroot", "tar")
        if os.geteuid() != 0:
            self.skipTest("only root may enter another root")
        self.packages = sorted(desktop.PACKAGES.glob("*.deb"))
        self.assertEqual([package.name.partition("_")[0] for package in self.packages], ["velamo-dev", "velamo"])
        self.root = self.home / "root"
        self.root.mkdir()
        if not CACHE.exists():
            self.make_cache()
        self.run_program("tar", "-xf", CACHE, "-C", self.root)
        shutil.copytree(desktop.SAMPLES, self.root / "srv/samples")

    def make_cache(self):
        made = self.run_program("mmdebstrap", "--variant=apt", "--skip=cleanup/apt", RELEASE, CACHE, status=None,
                                timeout=280)
        if made.returncode != 0:
            CACHE.unlink(missing_ok=True)
            self.skipTest("no fresh system to be had: " + made.stderr.strip().splitlines()[-1])

    def inside(self, *command, **options):
        """Runs the command in the fresh system, which sees no other processes."""
        enter = 'mount -t proc proc "$0/proc" && exec chroot "$0" "$@"'
        return self.run_program("unshare", "--mount", "--pid", "--fork", "sh", "-c", enter, self.root, *command,
                                DEBIAN_FRONTEND="noninteractive", HOME="/root", XDG_DATA_HOME="/srv/data", **options)

    def apt(self, *arguments):
        self.inside("apt-get", "-q", "-y", "--no-install-recommends", *arguments, timeout=280)

    def asked_for(self):
        depends = [self.run_program("dpkg-deb", "-f", package, "Depends").stdout.strip() for package in self.packages]
        return ", ".join(entry for entry in ", ".join(depends).split(", ") if not entry.startswith("velamo "))

    def use(self):
        self.assertIn("10 new, 0 changed", self.inside("velamo", "index", "/srv/samples").stdout)
        found = self.inside("velamo", "search", "--print0", "--stitches", "6000..7000").stdout
        self.assertEqual(found, "/srv/samples/rose.dst\0")
        german = self.inside("velamo", "info", "/srv/samples/rose.dst", LC_ALL="de_DE.UTF-8").stdout
        self.assertIn("Größe: 38,6 mm x 64,0 mm", german)
        self.assertIn("1. Emerald Green, Brother", german)

    def test_installs_works_and_leaves_nothing(self):
        shutil.copy("/etc/resolv.conf", self.root / "etc/resolv.conf")
        self.apt("satisfy", self.asked_for())
        before = desktop.listing(self.root)
        for package in self.packages:
            shutil.copy(package, self.root / "srv")
        # Without sources only what is there already can be installed.
        self.apt("install", "-o=Dir::Etc::SourceList=/dev/null", "-o=Dir::Etc::SourceParts=/dev/null",
                 *[f"/srv/{package.name}" for package in self.packages])
        self.use()
        self.apt("purge", "velamo", "velamo-dev")
        self.assertEqual(desktop.left_behind(self.root, before), [])
        self.assertEqual(self.inside("dpkg-query", "-W", "-f=${Package}\n", "velamo*", status=None).stdout, "")


if __name__ == "__main__":
    desktop.main()
