#!/usr/bin/env python3
"""What tools/on-debian says, passes on and leaves behind: on_debian_test.py TREE

Without root, which it needs, only its arguments are tested."""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

TREE = pathlib.Path(sys.argv.pop())
PROGRAMS = ["bash", "env", "cat", "mkdir", "sleep", "touch", "setsid"]
NOBODY = 65534
SECONDS = 600


def libraries(program):
    listed = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
    return [word for word in listed.split() if word.startswith("/")]


def make_base(folder):
    """As much of a system as the commands of these tests need."""
    for name in ["proc", "dev", "etc", "root", "tmp", "usr/bin"]:
        (folder / name).mkdir(parents=True)
    (folder / "bin").symlink_to("usr/bin")
    for name in PROGRAMS:
        program = shutil.which(name)
        shutil.copy(program, folder / "usr/bin")
        for library in libraries(program):
            place = folder / library[1:]
            place.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(library, place)


def git(tree, *words):
    who = ["-c", "user.name=test", "-c", "user.email=test@example.org"]
    subprocess.run(["git", "-C", tree, *who, *words], check=True, stdout=subprocess.DEVNULL)


def processes_with(text):
    for entry in pathlib.Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and text in (entry / "cmdline").read_bytes().decode(errors="replace"):
                yield entry.name
        except OSError:
            pass  # it has ended meanwhile


def until(condition):
    end = time.monotonic() + SECONDS
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("it did not happen in time")
        time.sleep(0.05)


class OnDebian(unittest.TestCase):
    def setUp(self):
        # Its processes are known by this folder's name.
        folder = tempfile.TemporaryDirectory(prefix="on-debian-")
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        self.tree.chmod(0o755)
        shutil.copytree(TREE / "tools", self.tree / "tools")
        (self.tree / ".gitignore").write_text("/build/\n")
        git(self.tree, "init", "--quiet")
        git(self.tree, "add", ".")
        git(self.tree, "commit", "--quiet", "-m", "tools")

    def start(self, *words, **how):
        return subprocess.Popen([self.tree / "tools/on-debian", *words], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True, **how)

    def call(self, *words, **how):
        process = self.start(*words, **how)
        output, _ = process.communicate(timeout=SECONDS)
        return process.returncode, output


class Arguments(OnDebian):
    def test_are_refused_with_the_reason(self):
        for words, reason in [([], "which release"), (["11", "true"], "unknown release 11"),
                              (["12"], "no command"), (["--bring"], "no value for --bring"),
                              (["--fast", "12", "true"], "unknown option --fast")]:
            with self.subTest(words):
                status, output = self.call(*words)
                self.assertEqual(status, 2)
                self.assertIn(reason, output)

    def test_are_explained(self):
        status, output = self.call("--help")
        self.assertEqual(status, 0)
        self.assertIn("12|13 COMMAND", output)

    def test_need_root(self):
        how = {}
        if os.geteuid() == 0:
            how = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
            for path in [self.tree, *self.tree.rglob("*")]:
                os.lchown(path, NOBODY, NOBODY)
        status, output = self.call("12", "true", **how)
        self.assertEqual(status, 1)
        self.assertIn("needs root", output)
        self.assertEqual(len(output.splitlines()), 1, output)


@unittest.skipUnless(os.geteuid() == 0, "needs root")
class Run(OnDebian):
    def setUp(self):
        super().setUp()
        self.place = self.tree / "build/debian/12"
        make_base(self.place / "base")
        # A test that fails must not leave to the machine what it is about.
        self.addCleanup(self.end_all)
        self.marker = f"60{os.getpid()}"  # seconds; no other process sleeps as long

    def end_all(self):
        for pid in processes_with(self.marker):
            os.kill(int(pid), signal.SIGKILL)

    def expect_nothing_left(self):
        until(lambda: not list(processes_with(self.marker)))
        self.assertNotIn(str(self.tree), pathlib.Path("/proc/mounts").read_text())

    def started(self, *options):
        """A call whose command has started another process and goes on for ever."""
        process = self.start(*options, "12", "bash", "-c",
                             f"setsid sleep {self.marker} & echo ready; sleep {self.marker}")
        for line in process.stdout:
            if line == "ready\n":
                return process
        raise AssertionError("it has ended")

    def test_is_in_a_clone_of_head_and_passes_output_and_status_on(self):
        (self.tree / "new").touch()
        (self.tree / "tools/check").write_text("changed\n")
        status, output = self.call("12", "bash", "-c", "pwd; cat tools/check; [ ! -e new ]; echo $?; exit 7")
        self.assertEqual(status, 7)
        self.assertIn("/srv/vok\n#!/usr/bin/env bash\n", output)
        self.assertTrue(output.endswith("\n0\n"), output)
        self.assertIn("not committed", output)

    def test_is_in_a_clone_of_a_tree_of_somebody_else(self):
        for path in [self.tree, *self.tree.rglob("*")]:
            os.lchown(path, NOBODY, NOBODY)
        status, output = self.call("12", "cat", "tools/check")
        self.assertEqual(status, 0, output)

    def test_takes_interrupts_itself(self):
        status, output = self.call("12", "bash", "-c", "trap 'exit 5' INT; kill -INT $$; exit 6")
        self.assertEqual(status, 5, output)

    def test_knows_nothing_of_an_earlier_one(self):
        self.assertEqual(self.call("12", "touch", "/left", "left")[0], 0)
        status, output = self.call("12", "bash", "-c", "[ ! -e /left ] && [ ! -e left ]")
        self.assertEqual(status, 0, output)

    def test_that_fails_leaves_nothing(self):
        status, _ = self.call("12", "bash", "-c", f"setsid sleep {self.marker} & exit 3")
        self.assertEqual(status, 3)
        self.expect_nothing_left()
        self.assertFalse((self.place / "system").exists())

    def test_that_is_not_there_is_told(self):
        status, output = self.call("12", "nonsense")
        self.assertEqual(status, 127)
        self.assertIn("nonsense", output)

    def test_that_is_ended_by_a_signal_leaves_nothing(self):
        for number, expected in [(signal.SIGTERM, 143), (signal.SIGINT, 130), (signal.SIGHUP, 129)]:
            with self.subTest(number.name):
                process = self.started()
                process.send_signal(number)
                process.communicate(timeout=SECONDS)
                self.assertEqual(process.returncode, expected)
                self.expect_nothing_left()
                self.assertFalse((self.place / "system").exists())

    def test_that_is_killed_leaves_only_files_which_the_next_call_removes(self):
        process = self.started()
        process.kill()
        process.communicate(timeout=SECONDS)
        self.expect_nothing_left()
        (self.place / "system/left").touch()
        status, output = self.call("12", "bash", "-c", "[ ! -e /left ]")
        self.assertEqual(status, 0, output)
        self.assertFalse((self.place / "system").exists())

    def test_waits_for_the_one_before(self):
        process = self.started()
        second = self.start("12", "true")
        self.assertIn("waiting for another call", second.stdout.readline())
        process.terminate()
        process.communicate(timeout=SECONDS)
        second.communicate(timeout=SECONDS)
        self.assertEqual(second.returncode, 127)  # this system has no true

    def test_brings_out_what_it_is_told(self):
        make = ["bash", "-c", "mkdir -p build/bench && echo figures >build/bench/results"]
        status, output = self.call("--bring", "build/bench", "12", *make)
        self.assertEqual(status, 0, output)
        self.assertEqual((self.place / "brought/bench/results").read_text(), "figures\n")
        self.assertEqual(self.call("--bring", "nothing", "12", *make)[0], 1)

    def test_keeps_its_system_where_it_is_told(self):
        status, output = self.call("--keep", "12", "touch", "/left", "here")
        self.assertEqual(status, 0, output)
        self.assertTrue((self.place / "system/left").exists())
        self.assertTrue((self.place / "system/srv/vok/here").exists())


if __name__ == "__main__":
    unittest.main()
