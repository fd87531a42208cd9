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
        self.assertEqual([package.name.partition("_")[0] for package in self.packages], ["libvelamo0.1", "velamo-dev", "velamo"])
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
        return ", ".join(entry for entry in ", ".join(depends).split(", ") if not entry.startswith("libvelamo"))

    def use(self, told):
        self.assertIn(told, self.inside("velamo", "index", "/srv/samples").stdout)
        found = self.inside("velamo", "search", "--print0", "--stitches", "6000..7000").stdout
        self.assertEqual(found, "/srv/samples/rose.dst\0")
        german = self.inside("velamo", "info", "/srv/samples/rose.dst", LC_ALL="de_DE.UTF-8").stdout
        self.assertIn("Größe: 38,6 mm x 64,0 mm", german)
        self.assertIn("1. Emerald Green, Brother", german)

    def install(self, packages):
        """Without sources only what is there already can be installed."""
        for package in packages:
            shutil.copy(package, self.root / "srv")
        self.apt("install", "-o=Dir::Etc::SourceList=/dev/null", "-o=Dir::Etc::SourceParts=/dev/null",
                 *[f"/srv/{package.name}" for package in packages])

    def make_older(self):
        """Packages of the version 0.1.0, which were two: `velamo` had the library and its texts."""
        folders = {name: self.home / "older" / name for name in ("velamo", "velamo-dev")}
        for package in self.packages:
            target = folders["velamo-dev" if package.name.startswith("velamo-dev") else "velamo"]
            target.mkdir(parents=True, exist_ok=True)
            self.run_program("dpkg-deb", "-x", package, target)
        for library in (folders["velamo"] / "usr/lib").glob("*/libvelamo.so.0.1*"):
            library.rename(library.with_name(library.name.replace(".so.0.1", ".so.0", 1)))
        shutil.rmtree(folders["velamo"] / "usr/share/doc/libvelamo0.1")
        for name, depends in (("velamo", self.asked_for()), ("velamo-dev", "velamo (= 0.1.0)")):
            control = folders[name] / "DEBIAN/control"
            control.parent.mkdir()
            control.write_text(f"Package: {name}\nVersion: 0.1.0\nArchitecture: amd64\nDepends: {depends}\n"
                               "Maintainer: nobody <nobody@velamo.invalid>\nDescription: older\n")
            made = self.home / "older" / f"{name}_0.1.0.deb"
            self.run_program("dpkg-deb", "--root-owner-group", "-b", folders[name], made)
            yield made

    def check_nothing_is_left(self, before):
        self.apt("purge", "libvelamo0.1", "velamo", "velamo-dev")
        self.assertEqual(desktop.left_behind(self.root, before), [])
        self.assertEqual(self.inside("dpkg-query", "-W", "-f=${Package}\n", "*velamo*", status=None).stdout, "")

    def test_installs_and_upgrades_and_leaves_nothing(self):
        shutil.copy("/etc/resolv.conf", self.root / "etc/resolv.conf")
        self.apt("satisfy", self.asked_for())
        before = desktop.listing(self.root)
        self.install(self.packages)
        self.use(told="10 new, 0 changed, 0 unchanged")
        self.check_nothing_is_left(before)

        self.install(list(self.make_older()))
        self.install(self.packages)
        for package in ("libvelamo0.1", "velamo", "velamo-dev"):
            self.assertEqual(self.inside("dpkg", "--verify", package).stdout, "", package)
        older = [path for path in desktop.listing(self.root) if "libvelamo.so.0" in path and ".so.0.1" not in path]
        self.assertEqual(older, [])
        self.use(told="0 new, 0 changed, 10 unchanged")
        self.check_nothing_is_left(before)


if __name__ == "__main__":
    desktop.main()
