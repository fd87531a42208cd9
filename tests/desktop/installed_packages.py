"""What stands round the tests with the desktops' own programs: `install` makes the packages and installs them as a
person would, `remove` takes them away again and says what they have left behind."""

import json
import os
import subprocess
import sys

import desktop

LISTING = desktop.BUILD / "packages/before.json"
NAMES = ("libvelamo0.1", "velamo", "velamo-dev")


def as_root(*command):
    prefix = [] if os.geteuid() == 0 else ["sudo", "-n"]
    environment = {**os.environ, "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8"}
    subprocess.run([*prefix, *command], check=True, env=environment)


def apt(*arguments):
    as_root("apt-get", "-q", "-y", "-o=Dpkg::Use-Pty=0", "-o=DPkg::Lock::Timeout=300", *arguments)


def purge():
    known = [name for name in NAMES if subprocess.run(["dpkg", "-s", name], capture_output=True).returncode == 0]
    if known:
        apt("purge", *known)


def install():
    for old in desktop.PACKAGES.glob("*.deb"):
        old.unlink()
    made = subprocess.run(["cpack"], cwd=desktop.BUILD, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if made.returncode != 0:
        sys.exit(made.stdout)
    purge()
    LISTING.write_text(json.dumps(desktop.listing("/")))
    apt("install", "--no-install-recommends", *sorted(map(str, desktop.PACKAGES.glob("*.deb"))))


def remove():
    purge()
    left = desktop.left_behind("/", json.loads(LISTING.read_text()))
    if left:
        sys.exit("left behind:\n" + "\n".join(left))


if __name__ == "__main__":
    {"install": install, "remove": remove}[sys.argv[1]]()
