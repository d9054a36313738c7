#!/usr/bin/env python3
"""What tests that run together are told to have done, and what ./test --quick remembers."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent


class WithStub(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)
        self.program = self.folder / "stub"
        shutil.copy(HERE / "stub_program", self.program)

    def tests(self, **kinds):
        (self.folder / "tests.txt").write_text("".join(f"{name} {kind}\n" for name, kind in kinds.items()))

    def starts(self):
        """What was run since the last time, a line for each process."""
        file = self.folder / "starts.txt"
        lines = file.read_text().splitlines() if file.exists() else []
        file.unlink(missing_ok=True)
        return lines

    def call(self, *words, **environment):
        done = subprocess.run([sys.executable, "-B", *map(str, words)], env=os.environ | environment,
                              capture_output=True, text=True, check=False)
        self.output = done.stdout + done.stderr
        return done.returncode


class Together(WithStub):
    def run_all(self, *options):
        return self.call(HERE / "together.py", *options, self.folder / "results", self.program)

    def outcomes(self):
        return {file.name for file in (self.folder / "results").iterdir() if file.suffix in (".passed", ".failed")}

    def test_one_process_for_all_but_those_that_need_their_own(self):
        self.tests(A="passes", B="alone", C="passes", D="alone")
        self.assertEqual(self.run_all(), 0)
        self.assertEqual(self.starts(), ["A C", "B", "D"])
        self.assertEqual(self.outcomes(), {f"Stub.{name}.passed" for name in "ABCD"})

    def test_a_failure_is_named_and_shown(self):
        self.tests(A="passes", B="fails", C="passes")
        self.assertEqual(self.run_all(), 1)
        self.assertEqual(self.outcomes(), {"Stub.A.passed", "Stub.B.failed", "Stub.C.passed"})
        self.assertIn("printed by B", self.output)
        self.assertNotIn("printed by A", self.output)
        self.assertIn("3 tests, 1 failed: Stub.B", self.output)

    def test_an_ended_process_drops_no_test(self):
        self.tests(A="passes", B="ends", C="passes", D="ends", E="passes", F="alone")
        self.assertEqual(self.run_all(), 1)
        self.assertEqual(self.starts(), ["A B C D E", "C D E", "E", "F"])
        self.assertEqual(self.outcomes(), {"Stub.A.passed", "Stub.B.failed", "Stub.C.passed", "Stub.D.failed",
                                           "Stub.E.passed", "Stub.F.passed"})
        self.assertIn("ended with status 41 in this test", self.output)

    def test_the_lines_of_a_test_that_runs_itself_are_its_own(self):
        self.tests(A="passes", B="nests", C="passes")
        self.assertEqual(self.run_all(), 0)
        self.assertEqual(self.outcomes(), {f"Stub.{name}.passed" for name in "ABC"})

    def test_parts_run_each_test_once(self):
        self.tests(A="passes", B="ends", C="passes", D="passes", E="passes")
        run = []
        for part in (1, 2, 3):
            self.run_all("--part", f"{part}/3")
            run += self.outcomes()
        self.assertEqual(sorted(run), ["Stub.A.passed", "Stub.B.failed", "Stub.C.passed", "Stub.D.passed", "Stub.E.passed"])

    def test_a_program_without_tests_is_a_failure(self):
        self.tests()
        self.assertNotEqual(self.run_all(), 0)

    def run_one(self, test):
        return subprocess.run([HERE / "run_one", self.program, f"--gtest_filter={test}"], check=False, capture_output=True,
                              text=True, env=os.environ | {"VOK_TEST_RUN": str(self.folder / "run")})

    def test_each_test_is_told_what_became_of_it(self):
        self.tests(A="passes", B="fails", C="ends", D="passes")
        (self.folder / "run").mkdir()
        done = {name: self.run_one(f"Stub.{name}") for name in "ABCDX"}
        self.assertEqual({name: each.returncode for name, each in done.items()}, {"A": 0, "B": 1, "C": 1, "D": 0, "X": 1})
        self.assertEqual(self.starts(), ["A B C D", "D"])
        self.assertIn("printed by B", done["B"].stdout)
        self.assertIn("not run with the others", done["X"].stdout)


class Quick(WithStub):
    def setUp(self):
        super().setUp()
        self.tests(A="passes")
        self.product = self.folder / "product.dll"
        self.product.write_text("one")
        self.list = self.folder / "quick.jsonl"
        self.write_list(self.program)

    def write_list(self, *files):
        self.list.write_text(json.dumps({"name": "stub", "program": str(self.program), "parts": "", "seconds": "",
                                         "directory": "", "command": [], "files": list(map(str, files))}) + "\n")

    def quick(self):
        """Plans and runs, as ./test --quick; the status of the run, or None when there was nothing to run."""
        self.assertEqual(self.call(HERE / "quick.py", "plan", self.folder / "quick", self.product, self.list), 0)
        if "add_test" not in (self.folder / "quick/CTestTestfile.cmake").read_text():
            return None
        return self.call(HERE / "quick.py", "run", self.folder / "quick", "stub")

    def test_an_unchanged_program_is_not_run_again(self):
        self.assertEqual(self.quick(), 0)
        self.assertIsNone(self.quick())
        self.assertIn("1 unchanged", self.output)

    def test_a_changed_program_is(self):
        self.quick()
        self.program.write_text(self.program.read_text() + "# changed\n")
        self.assertEqual(self.quick(), 0)

    def test_a_changed_product_concerns_who_loads_it(self):
        self.quick()
        self.product.write_text("two")
        self.assertIsNone(self.quick())
        self.program.write_text(self.program.read_text() + f"# loads {self.product}\n")
        self.assertEqual(self.quick(), 0)
        self.product.write_text("three")
        self.assertEqual(self.quick(), 0)
        self.assertIsNone(self.quick())

    def test_a_failure_is_not_remembered_as_passed(self):
        self.tests(A="fails")
        self.assertEqual(self.quick(), 1)
        self.assertEqual(self.quick(), 1)
        self.tests(A="passes")
        self.assertEqual(self.quick(), 0)

    def test_what_passed_before_a_failure_is_forgotten(self):
        self.assertEqual(self.quick(), 0)
        original = self.program.read_text()
        self.program.write_text(original + "# changed\n")
        self.tests(A="ends")
        self.assertEqual(self.quick(), 1)
        self.program.write_text(original)
        self.assertEqual(self.quick(), 1)

    def test_what_is_asked_for_besides_counts(self):
        self.quick()
        os.environ["VOK_TEST_LONG"] = "1"
        self.addCleanup(os.environ.pop, "VOK_TEST_LONG")
        self.assertEqual(self.quick(), 0)

    def test_without_files_it_is_run_every_time(self):
        self.write_list()
        self.assertEqual(self.quick(), 0)
        self.assertEqual(self.quick(), 0)


if __name__ == "__main__":
    unittest.main()
