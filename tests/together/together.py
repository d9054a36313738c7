#!/usr/bin/env python3
"""Runs all tests of a test program: in one process, but for those that need one of their own, which are
marked where they are defined. A test that ends the process fails, and the others go on in another one.

together.py [--part K/N] FOLDER PROGRAM…
What each test printed is left in FOLDER, as NAME.passed or NAME.failed with commas for slashes. Shows the
output of what failed and ends with a count; exit status 0 if tests were run and all of them passed."""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parents[2]
TOGETHER = "VOK_TEST_TOGETHER"

RUN = re.compile(r"^\[ RUN      \] (\S+)$", re.MULTILINE)
COUNT = re.compile(r"^\[=+\] Running (\d+) tests? from", re.MULTILINE)
ALONE = re.compile(r"^\[  ALONE   \] ([^\s:]+): ", re.MULTILINE)


def outcomes(output):
    """(test, passed or None for one that did not end, its output) of each test that was begun."""
    begun = []
    for line in RUN.finditer(output):
        # A test that runs itself in another process shows that one's lines, too.
        if not begun or begun[-1].group(1) != line.group(1):
            begun.append(line)
    for test, after in zip(begun, [*begun[1:], None]):
        name, text = test.group(1), output[test.start() : after.start() if after else len(output)]
        ends = re.findall(rf"\[(       OK|  SKIPPED|  FAILED ) \] {re.escape(name)}(?:, where .*)? \(", text)
        yield name, ends[-1] != "  FAILED " if ends else None, text


class Program:
    def __init__(self, words, folder):
        self.words = [str(TOP / "tools/run-under-wine"), *words] if words[0].endswith(".exe") else words
        self.folder = folder
        self.results = {}

    def start(self, arguments, together=False):
        """The program's status and output. In a file, since what it starts may hold a pipe open."""
        environment = {name: value for name, value in os.environ.items() if name != TOGETHER}
        if together:
            environment[TOGETHER] = "1"
        shown = self.folder / "output.txt"
        with open(shown, "wb") as out:
            status = subprocess.run([*self.words, *arguments], env=environment, stdin=subprocess.DEVNULL, stdout=out,
                                    stderr=subprocess.STDOUT).returncode
        return status, shown.read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")

    def listed(self):
        """Every test: a suite's name is at the margin, its tests are indented; # begins a parameter."""
        status, output = self.start(["--gtest_list_tests"])
        names, suite = [], ""
        for line in output.split("\n"):
            word = line.split("#")[0].strip()
            if line.startswith("  ") and suite:
                names.append(suite + word)
            elif re.fullmatch(r"\S+\.", word):
                suite = word
        if status != 0 or not names:
            sys.exit(f"{self.words[-1]} lists no tests (status {status}):\n{output}")
        return names

    def keep(self, name, passed, text):
        self.results[name] = passed
        ending = "passed" if passed else "failed"
        (self.folder / f"{name.replace('/', ',')}.{ending}").write_text(text, encoding="utf-8")
        if not passed:
            print(text, flush=True)

    def run(self, names, together):
        """Runs these tests, or all for None, in one process. Tells which of them need one of their own; False
        when not every test was ended."""
        arguments = []
        if names is not None:
            flags = self.folder / "tests.txt"
            flags.write_text("--gtest_filter=" + ":".join(names) + "\n")
            drive = "Z:" if self.words[0].endswith("run-under-wine") else ""
            arguments = [f"--gtest_flagfile={drive}{flags}"]
        status, output = self.start(arguments, together)
        found = list(outcomes(output))
        for number, (name, passed, text) in enumerate(found, 1):
            wrong_end = number == len(found) and status != 0 and all(each[1] for each in found)
            if passed is None or wrong_end:
                text += f"\nThe program ended with status {status} in this test, or behind it.\n"
            self.keep(name, bool(passed) and not wrong_end, text)
        if not found and status != 0:
            print(output)
        count = COUNT.search(output)
        whole = count is not None and int(count.group(1)) == len(found) and all(each[1] is not None for each in found)
        return ALONE.findall(output), whole

    def run_all(self, part, parts):
        wanted = self.listed()[part - 1 :: parts] if parts > 1 else None
        alone, whole = self.run(wanted, together=True)
        while not whole:
            wanted = wanted or self.listed()
            rest = [name for name in wanted if name not in self.results and name not in alone]
            if not rest:
                break
            before = len(self.results)
            more, whole = self.run(rest, together=True)
            alone = alone or more
            if len(self.results) == before:
                self.keep(rest[0], False, f"{rest[0]} was not run: its program did not begin with it.\n")
        for name in alone:
            if wanted is None or name in wanted:
                _, whole = self.run([name], together=False)
                if name not in self.results:
                    self.keep(name, False, f"{name} was not run: its program did not begin with it.\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--part", default="1/1")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("program", nargs="+")
    given = parser.parse_args()
    shutil.rmtree(given.folder, ignore_errors=True)
    given.folder.mkdir(parents=True)
    program = Program(given.program, given.folder.resolve())
    program.run_all(*map(int, given.part.split("/")))
    failed = [name for name, passed in program.results.items() if not passed]
    print(f"{len(program.results)} tests, {len(failed)} failed{': ' if failed else ''}{', '.join(failed)}")
    (given.folder / "complete").touch()
    sys.exit(1 if failed or not program.results else 0)


if __name__ == "__main__":
    main()
