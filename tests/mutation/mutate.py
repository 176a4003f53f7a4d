#!/usr/bin/env python3
"""Seeds single faults into src/, one at a time, and tells which test catches each.

    scripts/mutate             all faults of tests/mutation/faults.txt
    scripts/mutate 3 20-29     some of them, by number
    scripts/mutate --list      the faults and their numbers
    scripts/mutate -j 2        two at a time

The tree itself stays as it is: faults are built and tried in copies of it. Ends with status 1 when a
fault is missed or no longer fits the sources.
"""

import argparse
import concurrent.futures
import contextlib
import json
import os
import queue
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent.parent
FAULTS = TREE / "tests" / "mutation" / "faults.txt"
NOT_COPIED = {".git", ".cache", "build"}
# Tests that are about other things than the behaviour of src/.
OTHER_LABELS = re.compile(r"^(package|mutation|scripts|support)$")

# A fault may loop or grow for ever.
SECONDS_A_PROGRAM = 120
BYTES_A_PROGRAM = 8 << 30


@dataclass
class Fault:
    number: int
    file: str
    what: str
    old: str
    new: str


def read_faults():
    """The blocks of the list; ends the script when one doesn't fit the sources."""
    faults, wrong = [], []
    blocks = re.split(r"\n(?:[ \t]*\n)+", FAULTS.read_text())
    for block in blocks:
        lines = [line for line in block.strip("\n").split("\n") if line and not line.startswith("#")]
        if not lines:
            continue
        file, separator, what = lines[0].partition(": ")
        old = "\n".join(line[1:] for line in lines[1:] if line.startswith("-"))
        new = "\n".join(line[1:] for line in lines[1:] if line.startswith("+"))
        fault = Fault(len(faults) + 1, file, what, old, new)
        faults.append(fault)
        if not separator or not old or any(line[0] not in "-+" for line in lines[1:]):
            wrong.append(f"{fault.number:4}  not a fault: {lines[0]}")
            continue
        source = TREE / "src" / file
        found = source.read_text().count(old) if source.is_file() else 0
        if found != 1:
            wrong.append(f"{fault.number:4}  {file}: {what}: the text occurs {found} times")
    if wrong:
        print("Faults that don't fit the sources:", *wrong, sep="\n", file=sys.stderr)
        sys.exit(1)
    return faults


def chosen(faults, selection):
    numbers = set()
    for part in selection:
        first, _, last = part.partition("-")
        numbers.update(range(int(first), int(last or first) + 1))
    return [fault for fault in faults if not numbers or fault.number in numbers]


# What runs now. Each leads a process group of its own, which nothing ends unless this script does.
running = set()


def limited(seconds):
    """Limits that hold for a program and all that it starts, also when this script is gone."""
    def limit():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))
        resource.setrlimit(resource.RLIMIT_AS, (BYTES_A_PROGRAM, BYTES_A_PROGRAM))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    return limit


def kill(process):
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)


def run(command, folder, seconds=SECONDS_A_PROGRAM):
    """Status and output of a command; null status when it had to be ended."""
    process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, text=True, errors="replace",
                               start_new_session=True, preexec_fn=limited(seconds))
    running.add(process)
    try:
        output, _ = process.communicate(timeout=seconds)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        kill(process)
        process.communicate()
        return None, ""
    finally:
        running.discard(process)


def end_when_told(scratch):
    """Lets a signal that ends this script end what it has started, and clear away its copies."""
    def end(number, _):
        for process in list(running):
            kill(process)
        shutil.rmtree(scratch, ignore_errors=True)
        os._exit(128 + number)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, end)


class DoesNotBuild(Exception):
    pass


class Workplace:
    """A copy of the tree with a build of its own."""

    def __init__(self, root, excluded):
        self.root = root
        self.build = root / "build"
        shutil.copytree(TREE, root, ignore=lambda folder, names: NOT_COPIED & set(names))
        self.must("cmake", "-G", "Ninja", "-S", str(root), "-B", str(self.build),
                  "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O0 -D_GLIBCXX_ASSERTIONS")
        self.must("cmake", "--build", str(self.build))
        self.programs, self.others = self.find_tests(excluded)

    def must(self, *command):
        status, output = run(command, self.root, seconds=3600)
        if status != 0:
            sys.exit(output + "\nThe sources don't build without a fault.")

    def find_tests(self, excluded):
        """The executables of GoogleTest, by folder, and the names of all other tests."""
        status, output = run(["ctest", "--show-only=json-v1"], self.build, seconds=3600)
        if status != 0:
            sys.exit(output + "\nCTest doesn't tell which tests there are.")
        programs, others = {}, []
        for test in json.loads(output)["tests"]:
            properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
            labels = properties.get("LABELS", [])
            if any(OTHER_LABELS.match(label) for label in labels):
                continue
            if excluded and re.search(excluded, test["name"]):
                continue
            command = test.get("command", [])
            named = [word.startswith("--gtest_filter=") for word in command]
            if any(named):
                program = Path(command[named.index(True) - 1]).relative_to(self.build)
                programs.setdefault(program, []).append(test["name"])
            else:
                others.append(test["name"])
        return programs, others

    def make(self, target):
        status, output = run(["ninja", str(target)], self.build, seconds=3600)
        if status != 0:
            raise DoesNotBuild(output)

    def catching_test(self, fault=None):
        """What notices that something is wrong: the nearest tests are tried first."""
        folder = fault.file.split("/")[0] if fault else ""
        for program in sorted(self.programs, key=lambda path: (path.parent.name != folder, str(path))):
            self.make(program)
            names = self.programs[program]
            filters = ["--gtest_filter=" + ":".join(names)] if len(names) < 500 else []
            status, output = run([str(self.build / program), "--gtest_fail_fast", "--gtest_brief=1",
                                  *filters], self.build / program.parent)
            if status is None:
                return f"{program.name} (doesn't end)"
            if status != 0:
                return self.name_of_failure(program, output, status)
        self.make("all")
        for name in self.others:
            status, output = run(["ctest", "--test-dir", str(self.build), "-R", f"^{re.escape(name)}$"],
                                 self.build)
            if status != 0:
                return name
        return None

    @staticmethod
    def name_of_failure(program, output, status):
        failed = re.search(r"^\[  FAILED  \] (\S+?)(?:,| \()", output, re.MULTILINE)
        if failed:
            return failed.group(1)
        return f"{program.name} (ends with status {status})"

    def try_fault(self, fault):
        source = self.root / "src" / fault.file
        true_text = source.read_text()
        source.write_text(true_text.replace(fault.old, fault.new))
        try:
            return self.catching_test(fault)
        finally:
            source.write_text(true_text)


def main():
    parser = argparse.ArgumentParser(prog="scripts/mutate",
                                     description="Seeds single faults into src/ and tells which test "
                                                 "catches each.")
    parser.add_argument("faults", nargs="*", metavar="NUMBER", help="a number or a range of numbers")
    parser.add_argument("--list", action="store_true", help="print the faults; check that they fit")
    parser.add_argument("-j", type=int, default=1, metavar="JOBS", help="how many at a time")
    parser.add_argument("-E", metavar="REGEX", help="leave tests of such names out")
    options = parser.parse_args()

    faults = chosen(read_faults(), options.faults)
    if options.list:
        for fault in faults:
            print(f"{fault.number:4}  {fault.file}: {fault.what}")
        return 0

    missed = []
    with tempfile.TemporaryDirectory(prefix="scrivel-mutate-") as scratch:
        end_when_told(scratch)
        places = queue.Queue()
        for i in range(min(options.j, len(faults))):
            places.put(Workplace(Path(scratch) / str(i), options.E))
        place = places.get()
        red = place.catching_test()
        if red is not None:
            sys.exit(f"Without a fault this fails already: {red}")
        places.put(place)

        def attempt(fault):
            place = places.get()
            try:
                test = place.try_fault(fault)
                return fault, f"caught by {test}" if test else "MISSED"
            except DoesNotBuild:
                return fault, "DOESN'T BUILD"
            finally:
                places.put(place)

        with concurrent.futures.ThreadPoolExecutor(options.j) as pool:
            for fault, verdict in pool.map(attempt, faults):
                print(f"{fault.number:4}  {fault.file}: {fault.what}\n        {verdict}", flush=True)
                if not verdict.startswith("caught"):
                    missed.append(fault.number)
    print(f"{len(faults) - len(missed)} of {len(faults)} faults caught")
    if missed:
        print("not caught:", *missed)
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
