"""What the tests that use strace share."""

import shutil
import subprocess

CANNOT_TRACE = 77


def may_trace():
    """Whether the system lets programs be traced here; says why not."""
    if shutil.which("strace") is None:
        print("strace is not installed")
        return False
    done = subprocess.run(["strace", "-qq", "-o", "/dev/null", "-e", "inject=getppid:error=EIO", "true"],
                          capture_output=True)
    if done.returncode != 0:
        print("programs cannot be traced here: " + done.stderr.decode())
    return done.returncode == 0
