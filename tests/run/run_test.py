#!/usr/bin/env python3
"""./run, called as it is called in earnest, with programs that stand in: run_test.py [CLASS…]"""

import fcntl
import os
import pathlib
import pty
import re
import signal
import socket
import subprocess
import unittest

from scratch import SECONDS, Scratch, sleepers, wait_until

CONTROL = re.compile(r"[\x00-\x09\x0b-\x1f\x7f]")


class Base(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def refused(self, status, text, *words, **told):
        self.assertEqual(self.scratch.call(*words, **told), status, self.scratch.output)
        self.assertRegex(self.scratch.output, text)

    def holds(self, *words, **told):
        self.assertEqual(self.scratch.call(*words, **told), 0, self.scratch.output)
        self.assertIn("== all of it held\n", self.scratch.output)


class Words(Base):
    def test_help(self):
        for option in ("-h", "--help"):
            self.assertEqual(self.scratch.call(option), 0)
            self.assertTrue(self.scratch.output.startswith("./run [FILE]"), self.scratch.output)

    def test_a_value_follows_a_blank_or_an_equals_sign(self):
        for words in (["--windows", "nt40", "--printer", "X"], ["--windows=nt40", "--printer=X"]):
            self.holds(*words)
            self.assertIn("on nt40, message route", self.scratch.output)
        self.refused(2, "no value for --printer", "--printer=")
        self.refused(2, "no value for --printer", "--printer")

    def test_behind_two_dashes_stands_the_file(self):
        self.scratch.file("-x.txt")
        os.chdir(self.scratch.folder)
        self.refused(2, "unknown option -x.txt", "-x.txt")
        (self.scratch.folder / "-x.txt").write_bytes(b"x")
        self.holds("--", "-x.txt")
        self.refused(2, "one file at a time: b", "--", "-x.txt", "b")

    def test_a_port_is_a_file_on_drive_c(self):
        for port in ("LPT1:", r"Z:\x", r"C:\..\..\x", r"C:\windows\win.ini", r"C:\demo\document", "C:\\", "C:\\a\nb"):
            self.refused(2, "a port is a file|has a character", "--port", port)

    def test_a_printer_that_windows_cannot_name(self):
        self.refused(2, "'日本' has a character", "--printer", "日本")
        self.holds("--printer", "Büro")


class Documents(Base):
    def test_what_is_no_file_is_called_what_it_is(self):
        folder = self.scratch.folder
        os.mkfifo(folder / "fifo")
        (folder / "broken").symlink_to("nowhere")
        with socket.socket(socket.AF_UNIX) as bound:
            bound.bind(str(folder / "socket"))
            self.refused(2, "is a device or socket", "socket")
        self.refused(2, "is a directory", ".")
        self.refused(2, "is a pipe", "fifo")
        self.refused(2, "leads nowhere", "broken")
        self.refused(2, "no such file: .*/missing", "missing")

    def test_an_unreadable_one(self):
        path = self.scratch.file("secret")
        os.chmod(path, 0)
        as_nobody = {}
        if os.getuid() == 0:
            (self.scratch.tree / "build").mkdir()
            for place in (self.scratch.folder, self.scratch.tree, self.scratch.tree / "build"):
                os.chmod(place, 0o755)
            os.chown(self.scratch.tree / "build", 65534, 65534)
            as_nobody = {"user": 65534}
        done = subprocess.run([self.scratch.tree / "run", path], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env=self.scratch.environment({}), timeout=SECONDS, cwd="/", text=True, **as_nobody)
        self.assertEqual(done.returncode, 2, done.stdout)
        self.assertRegex(done.stdout, "secret can't be read by")

    def test_names_that_mean_something_inside(self):
        for name in ("port.prn", "trace.txt", "console.txt", "con", "nul", "setup.reg", "end.", "two\nlines", "-"):
            path = self.scratch.file(name, b"the document " + name.encode())
            self.holds(path)
            self.assertEqual(self.scratch.port(), b"the document " + name.encode())
            self.assertIn(f"'{name}'".replace("\n", "?"), self.scratch.account())

    def test_one_below_build_is_copied_before_anything_is_deleted(self):
        self.holds()
        for name in ("build/wine/run/drive_c/demo/port.prn", "build/wine/run/drive_c/DEMOVok.log", "build/run.log",
                     "build/product.log"):
            path = self.scratch.file(name, b"what was there")
            self.holds(path)
            self.assertEqual(self.scratch.port(), b"what was there")

    def test_links_and_nothing(self):
        (self.scratch.folder / "link").symlink_to(self.scratch.file("pointed at", b"1"))
        self.holds("link")
        self.assertEqual(self.scratch.port(), b"1")
        self.holds(self.scratch.file("empty", b""))
        self.assertIn("the port has 0 bytes", self.scratch.output)

    def test_a_link_to_the_command(self):
        link = self.scratch.folder / "elsewhere"
        link.symlink_to(self.scratch.tree / "run")
        done = subprocess.run([link], env=self.scratch.environment({}), capture_output=True, timeout=SECONDS, cwd="/")
        self.assertEqual(done.returncode, 0, done)

    def test_the_second_job_is_not_called_the_first(self):
        self.holds()
        self.assertRegex(self.scratch.output, r"(?s)job 1: .*job 1 printed.*job 2: .*job 2 printed")


class Places(Base):
    COMMANDS = ("run", "test", "bench", "tools/check")

    def test_a_folder_that_can_not_be_built_in(self):
        for odd in "'()$;#\"\n\\=,":
            scratch = Scratch(f"a{odd}b")
            self.addCleanup(scratch.close)
            for command in self.COMMANDS:
                self.assertEqual(scratch.call(command), 2, scratch.output)
                self.assertRegex(scratch.output, "can not be built in, because of .* in its name")

    def test_a_folder_with_blank_and_accent(self):
        self.scratch = Scratch("bü ro%&!")
        self.addCleanup(self.scratch.close)
        self.holds()

    def test_files_of_another_owner(self):
        self.holds()
        for command in self.COMMANDS:
            self.refused(1, r"belongs to .*Mend it with: sudo chown -R", command, STAND_IN_USER="12345")

    def test_a_prefix_of_another_owner(self):
        self.holds()
        stat = self.scratch.folder / "bin/stat"
        stat.write_text('#!/bin/sh\ncase "$*" in *%u*) echo 12345 ;; *) exec /usr/bin/stat "$@" ;; esac\n')
        stat.chmod(0o755)
        self.refused(1, "build/wine/run belongs to .*rm -rf")

    def test_a_copied_build_folder_is_made_anew(self):
        self.holds()
        old = pathlib.Path(self.scratch.file("build/product/old", b""))
        self.scratch.file("build/product/CMakeCache.txt", b"CMAKE_HOME_DIRECTORY:INTERNAL=/elsewhere\n")
        self.holds()
        self.assertFalse(old.exists())
        self.assertIn("build/product was made in another folder", self.scratch.output)

    def test_only_its_own_parts_are_built_and_configured_once(self):
        self.holds()
        self.holds()
        calls = self.scratch.calls()
        self.assertEqual(calls.count("--preset product -DVOK_WERROR=OFF -DVOK_TOOLS=OFF"), 1, calls)
        self.assertEqual(len(re.findall("--build --preset product --target vok vok_companion .*vok_drive\n", calls)), 2)


class Failures(Base):
    def test_packages(self):
        for says, told in (("E: Temporary failure resolving 'deb.example'", "is there a network"),
                           ("E: You don't have enough free space", "no space left"),
                           ("dpkg: error processing package cmake (--configure):", "a package is broken"),
                           ("E: dpkg was interrupted", "dpkg --configure -a"),
                           ("E: Could not get lock /var/lib/dpkg/lock", "another program"),
                           ("E: something new", "could not install cmake; see build/apt.log")):
            self.refused(1, told, STAND_IN_MISSING="cmake", STAND_IN_APT_SAYS=says)
            self.assertIn("could not install cmake", self.scratch.output)
            self.assertIn("see build/apt.log", self.scratch.output)
        self.holds()

    def test_nobody_may_install(self):
        self.holds()
        build = self.scratch.tree / "build"
        subprocess.run(["rm", "-rf", build], check=True)
        told = {"STAND_IN_MISSING": "cmake", "STAND_IN_USER": "12345"}
        find = self.scratch.folder / "bin/find"
        find.write_text("#!/bin/sh\n")
        find.chmod(0o755)
        self.refused(1, "sudo refuses.* call, as root, apt-get install .*cmake", STAND_IN_SUDO_REFUSES="1", **told)
        (self.scratch.folder / "bin/sudo").unlink()
        path = self.scratch.folder / "without sudo"
        path.mkdir()
        for folder in ("/bin", "/usr/bin"):
            for file in pathlib.Path(folder).iterdir():
                if file.name != "sudo" and not (path / file.name).exists():
                    (path / file.name).symlink_to(file)
        told["PATH"] = f"{self.scratch.folder / 'bin'}:{path}"
        self.refused(1, "needs root, and there is no sudo", **told)

    def test_the_build(self):
        for says, told in (("x.cpp:1: error: expected ';'", r"(?s)expected ';'.*the build of product failed; see"),
                           ("cc1plus: error: No space left on device", r"failed \(there is no space left")):
            self.refused(1, told, STAND_IN_BUILD_SAYS=says)
        self.holds()


class Signals(Base):
    """Whatever is under way when a signal comes, nothing goes on, and the next call works."""

    def ended(self, reached, doing, **told):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            run = self.scratch.start(**told)
            wait_until(reached, f"{doing} was not reached")
            # As a terminal does it: to all that belong together.
            os.killpg(run.pid, number)
            output = run.communicate(timeout=SECONDS)[0].decode()
            self.assertEqual(run.returncode, status, output)
            self.assertRegex(output, f"interrupted while {doing}")
            wait_until(lambda: not sleepers(self.scratch.folder), f"something goes on after {doing}")
            self.scratch.forget()
        self.holds()

    def test_while_installing(self):
        self.ended(lambda: "install" in self.scratch.calls(), "installing packages", STAND_IN_MISSING="cmake",
                   STAND_IN_HANGS="apt-get")
        self.refused(0, "all of it held", STAND_IN_MISSING="cmake")
        self.assertIn("dpkg --configure -a", self.scratch.calls())

    def test_while_configuring(self):
        self.ended(lambda: "--preset" in self.scratch.calls(), "building", STAND_IN_HANGS="configure")

    def test_while_building(self):
        self.ended(lambda: "--build" in self.scratch.calls(), "building", STAND_IN_HANGS="build")

    def test_while_preparing_wine(self):
        prefix = self.scratch.tree / "build/wine/run"
        self.ended(lambda: "wineboot" in self.scratch.calls(), "preparing Wine", STAND_IN_HANGS="wineboot")
        self.assertTrue((prefix / "ready").exists())

    def test_while_printing(self):
        self.ended(lambda: "vok-print" in self.scratch.calls(), "printing", STAND_IN_HANGS="print")


class Turns(Base):
    def test_a_second_run_waits(self):
        self.holds()
        with open(self.scratch.tree / "build/run.lock", "a") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            run = self.scratch.start()
            first = run.stdout.readline().decode()
            self.assertIn("another ./run is at work in this tree", first)
            fcntl.flock(lock, fcntl.LOCK_UN)
        output = run.communicate(timeout=SECONDS)[0].decode()
        self.assertEqual(run.returncode, 0, output)

    def test_two_at_once_both_hold(self):
        runs = [self.scratch.start() for _ in range(2)]
        for run in runs:
            output = run.communicate(timeout=SECONDS)[0].decode()
            self.assertEqual(run.returncode, 0, output)


class Terminal(Base):
    def test_a_pipe_sees_plain_lines(self):
        self.holds(STAND_IN_MISSING="cmake", STAND_IN_PAUSE="0.5")
        self.assertIsNone(CONTROL.search(self.scratch.output), repr(self.scratch.output))

    def test_a_terminal_sees_how_far_it_is(self):
        ours, theirs = pty.openpty()
        run = subprocess.Popen([self.scratch.tree / "run"], stdin=subprocess.DEVNULL, stdout=theirs, stderr=theirs,
                               env=self.scratch.environment({"STAND_IN_PAUSE": "2"}), start_new_session=True)
        os.close(theirs)
        output = b""
        try:
            while chunk := os.read(ours, 65536):
                output += chunk
        except OSError:  # the other end is closed
            pass
        self.assertEqual(run.wait(SECONDS), 0, output)
        for part in (1, 2, 3):
            self.assertRegex(output, rb"\r\x1b\[K   \d+ s  \[%d/3\] Building part %d" % (part, part))


if __name__ == "__main__":
    unittest.main(verbosity=2)
