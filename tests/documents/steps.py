"""How the commands of the documents are run, each as its page has it, and what has to come of it."""

import dataclasses
import os
import pathlib
import re
import subprocess
import typing


@dataclasses.dataclass
class Step:
    command: str  # letter by letter as on the page
    shows: typing.Sequence[str] = ()  # patterns that its output has
    status: int = 0
    # Words that the page leaves to its reader, and what stands for them here.
    words: typing.Mapping[str, str] = dataclasses.field(default_factory=dict)
    before: typing.Callable = None  # both are called with the place
    after: typing.Callable = None


@dataclasses.dataclass
class Place:
    """Where commands are run: a folder, and for those of Windows the programs that are in the path."""

    tree: pathlib.Path
    folder: pathlib.Path
    windows: bool = False
    programs: str = ""
    output: str = ""

    @property
    def drive(self):
        return pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c"

    def words(self, command):
        if not self.windows:
            return ["bash", "-c", command]
        # By a batch file, so that its quotes and backslashes arrive as they are.
        batch = self.drive / "step.bat"
        folder = str(self.folder).replace("/", "\\")
        batch.write_bytes(f"@echo off\r\nZ:\r\ncd {folder}\r\n{command}\r\n".encode())
        return [str(self.tree / "tools" / "wine"), "cmd", "/c", r"C:\step.bat"]

    def run(self, command):
        """Runs it and returns its status; the output is in `output`."""
        path = self.programs + os.pathsep + os.environ["PATH"]
        environment = os.environ | ({"WINEPATH": self.programs} if self.windows else {"PATH": path})
        # A file and not a pipe: companions outlive the command that started them.
        shown = self.tree / f"build/documents-{os.getpid()}.txt"
        with open(shown, "wb") as out:
            done = subprocess.run(self.words(command), cwd=self.folder, env=environment, stdin=subprocess.DEVNULL,
                                  stdout=out, stderr=subprocess.STDOUT)
        self.output = shown.read_text(encoding="utf-8", errors="replace").replace("\r\n", "\n")
        shown.unlink()
        return done.returncode

    def prepare(self, command):
        """Runs what no page has, and expects it to work."""
        status = self.run(command)
        assert status == 0, f"{command}: exit status {status}\n{self.output}"


def take(step, place):
    """Runs the step; returns what was wrong, or None."""
    if step.before:
        step.before(place)
    command = step.command
    for word, value in step.words.items():
        assert word in command, f"{command} has no {word}"
        command = command.replace(word, value)
    status = place.run(command)
    print(f"$ {command}\n  exit status {status}, {len(place.output.splitlines())} lines", flush=True)
    if status != step.status:
        return f"exit status {status}, not {step.status}:\n{place.output}"
    for pattern in step.shows:
        if not re.search(pattern, place.output, re.MULTILINE):
            return f"its output has no '{pattern}':\n{place.output}"
    if step.after:
        step.after(place)
    return None
