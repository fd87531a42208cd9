#!/usr/bin/env python3
"""Lets each system call of the program fail in turn, and looks at what is left.

Whatever call fails, with whatever error: each file is the old one or the new one, whole; nothing is left beside it; and
the program ends with a status other than 0, or has done and printed all that it was asked for. strace makes the calls
fail, since only it sees those that the C library and SQLite make by themselves.

    system_calls_test.py PROGRAM SAMPLES          a sample of the calls, within a minute
    system_calls_test.py PROGRAM SAMPLES --long   all of them with all of the errors
    system_calls_test.py PROGRAM SAMPLES --only edit:fsync:1:EIO    one of them

Exit status 77 where the system does not let a program be traced.
"""

import argparse
import concurrent.futures
import itertools
import json
import os
import random
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from tracing import CANNOT_TRACE, may_trace

ERRORS = ("EIO", "ENOSPC", "ESTALE", "EPERM", "EINTR")
SECONDS_OF_A_RUN = 120
SECONDS_OF_A_SAMPLE = 35
# Some failures make one process wait until another one's time is over.
RUNS_AT_ONCE = 4 * os.cpu_count()

# Calls that a kernel lets fail for no reason of a disk, or never.
LEFT_OUT = {
    "brk": "gives no error but the place of the memory's end, for which strace's number would be taken",
    "execve": "the first is strace's own, and a program that cannot be started does nothing",
    "exit": "cannot fail",
    "exit_group": "cannot fail",
    "rt_sigreturn": "cannot fail; it gives what the interrupted call gave",
    "restart_syscall": "made by the kernel",
    "futex": "gives none of these errors, and the C library ends a program that gets one",
    "set_robust_list": "cannot fail; the C library does not ask",
    "set_tid_address": "cannot fail",
    "rseq": "fails for programs that have it already, and the C library goes on without",
    "arch_prctl": "sets the thread's own memory, before which there is no program",
    "close_range": "closes what is open; without it, the reader's processes only keep more open",
    "getpid": "cannot fail",
    "gettid": "cannot fail",
    "getuid": "cannot fail",
    "geteuid": "cannot fail",
    "getgid": "cannot fail",
    "getegid": "cannot fail",
}


class Case:
    """A command, in a folder that is made anew for each run."""

    def __init__(self, name, arguments, prepare):
        self.name = name
        self.arguments = arguments
        self.prepare = prepare


def copy_designs(folder):
    """Three designs, one of them with threads of its own."""
    for name in ("rose.dst", "rose.threads", "letter-f.jef", "letter-f.pcs"):
        shutil.copy2(SAMPLES / name, folder / name)


def prepare_conversion(folder):
    copy_designs(folder)
    (folder / "out").mkdir()
    shutil.copy2(SAMPLES / "letter-f.pes", folder / "out" / "rose.pes")


def prepare_picture(folder):
    copy_designs(folder)
    (folder / "rose.png").write_bytes(b"the old picture")


def prepare_script(folder):
    copy_designs(folder)
    (folder / "script").write_text("center\n# a long way to the last command\n" + "# \n" * 5000 + "flip V\n")


def prepare_catalogue(folder):
    copy_designs(folder)
    run(folder, "index", ".", "--catalogue", "c.sqlite")


def prepare_changes(folder):
    """A catalogue of three designs, one of which has changed since, one has gone and one come."""
    prepare_catalogue(folder)
    shutil.copy2(SAMPLES / "heart.dst", folder / "rose.dst")
    (folder / "letter-f.pcs").unlink()
    shutil.copy2(SAMPLES / "sunflower.dst", folder / "sunflower.dst")


CASES = [
    Case("info", ["info", "--json", "rose.dst", "letter-f.jef"], copy_designs),
    Case("convert", ["convert", "rose.dst", "out/rose.pes"], prepare_conversion),
    Case("edit", ["edit", "letter-f.pcs", "-e", "center", "-o", "letter-f.pcs"], copy_designs),
    Case("edit-threads", ["edit", "rose.dst", "-e", "center", "-o", "rose.dst"], copy_designs),
    Case("edit-script", ["edit", "letter-f.pcs", "-f", "script", "-o", "new.exp"], prepare_script),
    Case("render", ["render", "rose.dst", "rose.png", "--size", "40"], prepare_picture),
    Case("search", ["search", "--json", "--catalogue", "c.sqlite"], prepare_catalogue),
    Case("index", ["index", ".", "--catalogue", "c.sqlite", "--jobs", "1"], prepare_changes),
    Case("index-new", ["index", ".", "--catalogue", "c.sqlite", "--jobs", "1"], copy_designs),
]


def command(*arguments):
    return [str(PROGRAM), *arguments]


def environment(folder):
    """Nobody's own: no preferences, English texts."""
    return {"PATH": os.environ["PATH"], "HOME": str(folder / "home"), "LC_ALL": "C.UTF-8", "TZ": "UTC"}


def run(folder, *arguments, before=()):
    """The outcome of the program in the folder; strace's own words stay out of it."""
    return subprocess.run([*before, *command(*arguments)], cwd=folder, env=environment(folder), capture_output=True,
                          stdin=subprocess.DEVNULL, timeout=SECONDS_OF_A_RUN)


def is_catalogue(path):
    return path.name.startswith("c.sqlite")


def files_in(folder):
    """What stands in the folder's files, by name, without those of the catalogue."""
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in sorted(folder.rglob("*")) if path.is_file() and not is_catalogue(path)}


def designs_in(folder):
    """What the catalogue says of each design, by name, as any program reads it that comes later."""
    catalogue = folder / "c.sqlite"
    if not catalogue.exists() or catalogue.stat().st_size == 0:
        return {}
    database = sqlite3.connect(catalogue)
    try:
        (verdict,) = database.execute("pragma integrity_check").fetchone()
        if verdict != "ok":
            raise AssertionError("the catalogue is damaged: " + verdict)
        if not database.execute("select 1 from sqlite_master where name = 'designs'").fetchone():
            return {}
    finally:
        database.close()
    found = run(folder, "search", "--json", "--catalogue", "c.sqlite")
    if found.returncode != 0:
        raise AssertionError("the catalogue cannot be searched: " + found.stderr.decode())
    return {entry["file"].rsplit("/", 1)[-1]: {key: value for key, value in entry.items() if key != "file"}
            for entry in json.loads(found.stdout)}


class State:
    """What a folder holds, the catalogue apart."""

    def __init__(self, folder):
        self.files = files_in(folder)
        self.designs = designs_in(folder)

    def differences(self, *others):
        """What is as in none of the others."""
        found = []
        for part in ("files", "designs"):
            mine = getattr(self, part)
            theirs = [getattr(other, part) for other in others]
            for name in set(mine).union(*theirs):
                if all(mine.get(name) != other.get(name) for other in theirs):
                    found.append(name + (" is left" if name in mine else " is gone"))
        return sorted(found)


def without_time(text):
    """How long it took is different each time, and where it was done."""
    return re.sub(rb"[0-9]+\.[0-9] s$|\"file\": *\"[^\"]*/", b"", text, flags=re.MULTILINE)


class Plan:
    """A case, what it does when nothing fails, and which calls it makes."""

    def __init__(self, case):
        self.case = case
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            case.prepare(folder)
            self.old = State(folder)
            done = run(folder, *case.arguments)
            if done.returncode != 0:
                raise SystemExit(f"{case.name} fails by itself: {done.stderr.decode()}")
            self.printed = without_time(done.stdout)
            self.new = State(folder)
        with tempfile.TemporaryDirectory() as name, tempfile.NamedTemporaryFile("r") as log:
            folder = Path(name)
            case.prepare(folder)
            run(folder, *case.arguments, before=["strace", "-f", "-qq", "-o", log.name])
            self.calls = calls_in(log.read())

    def all_failures(self):
        return [(self, name, number, error) for name, count in sorted(self.calls.items())
                for number in range(1, count + 1) for error in ERRORS]


def calls_in(log):
    """How often each call is made at most by one thread: each counts its own."""
    counts = {}
    for line in log.splitlines():
        match = re.match(r"(\d+) +(\w+)\(", line)
        if match:
            counts[match.groups()] = counts.get(match.groups(), 0) + 1
    most = {}
    for (_, name), count in counts.items():
        if name not in LEFT_OUT:
            most[name] = max(most.get(name, 0), count)
    return most


def problems_after(failure):
    """Lets one call fail, and says what is wrong afterwards."""
    plan, name, number, error = failure
    with tempfile.TemporaryDirectory() as folder_name:
        folder = Path(folder_name)
        plan.case.prepare(folder)
        inject = ["strace", "-f", "-qq", "-o", "/dev/null", "-e", "trace=" + name,
                  "-e", f"inject={name}:error={error}:when={number}"]
        try:
            done = run(folder, *plan.case.arguments, before=inject)
        except subprocess.TimeoutExpired:
            return ["it does not end"]
        return problems_of(plan, folder, done)


def problems_of(plan, folder, done):
    try:
        state = State(folder)
    except AssertionError as problem:
        return [str(problem)]
    problems = state.differences(plan.old, plan.new)
    if done.returncode == 0:
        problems += [text + ", and the status is 0" for text in state.differences(plan.new)]
        if without_time(done.stdout) != plan.printed:
            problems.append("it prints something else, and the status is 0: " + done.stderr.decode(errors="replace"))
    if plan.case.name.startswith("index"):
        problems += problems_of_next_run(plan, folder)
    return problems


def problems_of_next_run(plan, folder):
    """What failed once must not stay so."""
    again = run(folder, *plan.case.arguments)
    if again.returncode != 0:
        return ["the next run fails: " + again.stderr.decode(errors="replace")]
    return [text + " after the next run" for text in State(folder).differences(plan.new)]


# After these something was wrong once.
MENDED = ("convert:access:3:ENOSPC", "index-new:recvfrom:4:EIO")


def sample_of(plans):
    """What was mended; each kind of call of each command once, with one error after the other; then whatever comes, for
    as long as there is time. It is the same each time, but for its end."""
    chance = random.Random(20)
    kinds = [(plan, name, count) for plan in plans for name, count in sorted(plan.calls.items())]
    errors = itertools.cycle(ERRORS)
    first = [(plan, name, count, next(errors)) for plan, name, count in kinds]
    chance.shuffle(first)
    rest = [failure for plan in plans for failure in plan.all_failures()]
    chance.shuffle(rest)
    return [failure_named(name, plans) for name in MENDED] + first + rest


def try_out(failures, seconds):
    """Prints what is wrong after each failure; how many were tried and how many went wrong."""
    end = time.monotonic() + seconds
    tried = wrong = 0
    with concurrent.futures.ThreadPoolExecutor(RUNS_AT_ONCE) as threads:
        waiting = iter(failures)
        running = {}
        while True:
            while len(running) < RUNS_AT_ONCE and time.monotonic() < end:
                failure = next(waiting, None)
                if failure is None:
                    break
                running[threads.submit(problems_after, failure)] = failure
            if not running:
                return tried, wrong
            done, _ = concurrent.futures.wait(running, return_when=concurrent.futures.FIRST_COMPLETED)
            for future in done:
                plan, name, number, error = running.pop(future)
                tried += 1
                problems = future.result()
                wrong += bool(problems)
                for problem in problems:
                    print(f"{plan.case.name}:{name}:{number}:{error}: {problem}", flush=True)


def failure_named(text, plans):
    case_name, name, number, error = text.split(":")
    return next(plan for plan in plans if plan.case.name == case_name), name, int(number), error


def failures_of(options):
    if options.only:
        plan = Plan(next(case for case in CASES if options.only.startswith(case.name + ":")))
        return [failure_named(options.only, [plan])], float("inf")
    plans = [Plan(case) for case in CASES if options.case in (None, case.name)]
    if options.long or options.case:
        return [failure for plan in plans for failure in plan.all_failures()], float("inf")
    return sample_of(plans), SECONDS_OF_A_SAMPLE


def main():
    global PROGRAM, SAMPLES
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=Path)
    parser.add_argument("samples", type=Path)
    parser.add_argument("--long", action="store_true", help="every call, with every error")
    parser.add_argument("--case", help="all calls of one command: " + ", ".join(case.name for case in CASES))
    parser.add_argument("--only", help="one failure, as it is printed")
    options = parser.parse_args()
    PROGRAM, SAMPLES = options.program.resolve(), options.samples.resolve()
    if not may_trace():
        return CANNOT_TRACE
    failures, seconds = failures_of(options)
    tried, wrong = try_out(failures, seconds)
    print(f"{tried} calls failed, of {len(failures)} that might; after {wrong} of them something was wrong")
    return 1 if wrong or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
