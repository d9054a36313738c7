"""A copy of the commands in a folder of its own, where programs that stand in are called instead of
the system's: what they do takes no time, and fails as it is told."""

import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
TREE = HERE.parent.parent
COMMANDS = ["run", "test", "bench", "tools/check", "tools/common.sh"]
SECONDS = 600


class Scratch:
    def __init__(self, name="tree"):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="vok-run-"))
        self.tree = self.folder / name
        for command in COMMANDS:
            (self.tree / command).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(TREE / command, self.tree / command)
        for folder in ("tools/shell", "tools/run"):
            shutil.copytree(TREE / folder, self.tree / folder)
        shutil.copytree(HERE / "stand_ins", self.folder / "bin")
        (self.folder / "bin/wine").rename(self.tree / "tools/wine")
        (self.tree / "samples").mkdir()
        shutil.copy(TREE / "samples/document.txt", self.tree / "samples")
        self.calls_file = self.folder / "calls"

    def close(self):
        shutil.rmtree(self.folder)

    def environment(self, told):
        path = f"{self.folder / 'bin'}{os.pathsep}{os.environ['PATH']}"
        own = {name: value for name, value in os.environ.items() if name != "VOK_WERROR"}
        return own | {"PATH": path, "STAND_IN_CALLS": str(self.calls_file), "TERM": "xterm"} | told

    def call(self, *words, **told):
        """Calls a command, ./run if it is an option or a document; the output has both streams."""
        done = subprocess.run(self.words(words), cwd=self.folder, env=self.environment(told), timeout=SECONDS,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.output = done.stdout.decode(errors="surrogateescape")
        return done.returncode

    def start(self, *words, **told):
        # Whoever starts this may ignore the signal.
        signal.signal(signal.SIGINT, signal.default_int_handler)
        return subprocess.Popen(self.words(words), cwd=self.folder, env=self.environment(told),
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                start_new_session=True)

    def words(self, words):
        return [self.tree / "run", *words] if not words or words[0] not in COMMANDS else [self.tree / words[0], *words[1:]]

    def calls(self):
        return self.calls_file.read_text() if self.calls_file.exists() else ""

    def forget(self):
        self.calls_file.unlink(missing_ok=True)

    def file(self, name, content=b"one\f two\f"):
        path = self.tree / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return str(path)

    def account(self):
        return (self.tree / "build/wine/run/drive_c/demo/trace.txt").read_text()

    def port(self):
        return (self.tree / "build/wine/run/drive_c/demo/port.prn").read_bytes()


def sleepers(folder):
    """The processes that are still running in a folder; they stand in for what takes long."""
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            inside = pathlib.Path(os.readlink(process / "cwd")).is_relative_to(folder.resolve())
            words = (process / "cmdline").read_bytes()
        except OSError:  # it has ended, or is somebody else's
            continue
        if inside and words:
            found.append(words.replace(b"\0", b" ").decode())
    return found


def wait_until(condition, what):
    until = time.monotonic() + SECONDS
    while not condition():
        assert time.monotonic() < until, what
        time.sleep(0.05)
