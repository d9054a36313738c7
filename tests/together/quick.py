#!/usr/bin/env python3
"""What ./test --quick runs: test programs as a whole, and of them those alone whose bytes, or those of the
product that they load, are not the ones with which they last passed.

quick.py plan FOLDER PRODUCT_FILE LIST…   writes FOLDER/CTestTestfile.cmake, with what the LISTs name
quick.py run FOLDER NAME                  runs one of it; it is remembered when it passes"""

import dataclasses
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
# What they are told to do besides.
ENVIRONMENT = ("VOK_TEST_LONG", "VOK_FUZZ_SECONDS", "VOK_TEST_DLL")


@dataclasses.dataclass
class Entry:
    name: str
    words: list  # of the command
    files: list  # and folders; none: it is run every time
    product: str
    directory: str
    seconds: int
    cost: int = 0

    def key(self):
        """Changes with whatever decides about the outcome."""
        parts = hashlib.sha256(repr((self.words, self.directory, [os.environ.get(name) for name in ENVIRONMENT])).encode())
        for file in self.all_files():
            content = file.read_bytes()
            parts.update(f"{file}\0{len(content)}\0".encode() + content)
            # A program loads the product by this path, which stands in it.
            if self.product.encode() in content:
                parts.update(pathlib.Path(self.product).read_bytes())
        return parts.hexdigest()

    def all_files(self):
        yield HERE / "together.py"
        for file in map(pathlib.Path, self.files):
            if file.is_dir():
                yield from sorted(inner for inner in file.rglob("*") if inner.is_file())
            else:
                yield file


def entries(folder, product, lists):
    for file in lists:
        for line in pathlib.Path(file).read_text().splitlines():
            given = json.loads(line)
            seconds = int(given["seconds"] or 600)
            for part in range(1, int(given["parts"] or 1) + 1):
                name, words = given["name"], given["command"]
                if given["parts"]:
                    name += f".{part}_of_{given['parts']}"
                if given["program"]:
                    words = [sys.executable, "-B", str(HERE / "together.py"), "--part", f"{part}/{given['parts'] or 1}",
                             str(folder / "results" / name), given["program"]]
                yield Entry(name, words, given["files"], product, given["directory"], seconds, int(given["parts"] or 0))


def plan(folder, product, *lists):
    folder = pathlib.Path(folder).resolve()
    (folder / "passed").mkdir(parents=True, exist_ok=True)
    shutil.rmtree(folder / "entries", ignore_errors=True)
    (folder / "entries").mkdir()
    text, unchanged = "", []
    for entry in entries(folder, product, lists):
        passed = folder / "passed" / entry.name
        if entry.files and passed.exists() and passed.read_text() == entry.key():
            unchanged.append(entry.name)
            continue
        (folder / "entries" / entry.name).write_text(json.dumps(dataclasses.asdict(entry)))
        text += f'add_test([=[{entry.name}]=] "{sys.executable}" -B "{__file__}" run "{folder}" "{entry.name}")\n'
        # All tests of a program together; its own watchdog ends one that hangs.
        text += (f"set_tests_properties([=[{entry.name}]=] PROPERTIES TIMEOUT {entry.seconds + 1200} COST {entry.cost}"
                 f" ENVIRONMENT VOK_TEST_TIMEOUT={entry.seconds})\n")
    (folder / "CTestTestfile.cmake").write_text(text)
    print(f"== {text.count('add_test')} to run; {len(unchanged)} unchanged since they passed")


def run(folder, name):
    folder = pathlib.Path(folder)
    entry = Entry(**json.loads((folder / "entries" / name).read_text()))
    passed = folder / "passed" / name
    passed.unlink(missing_ok=True)
    before = entry.key()
    status = subprocess.run(entry.words, cwd=entry.directory or None, stdin=subprocess.DEVNULL).returncode
    # What changed under it is run again, whatever came of it.
    if status == 0 and entry.key() == before:
        passed.write_text(before)
    return status


if __name__ == "__main__":
    sys.exit({"plan": plan, "run": run}[sys.argv[1]](*sys.argv[2:]))
