#!/usr/bin/env python3
"""No shell script pipes into grep -q: pipes_are_read_to_their_end.py ROOT

grep -q ends at the first match. What still writes then gets SIGPIPE, and with pipefail the whole
pipe has failed though the text is there, once in a few hundred runs.
"""

import pathlib
import re
import subprocess
import sys

EARLY_READER = re.compile(r"\|\s*(?:\w+=\S*\s+)*grep\s+-[a-zA-Z]*q")


def shell_scripts(root):
    listed = subprocess.run(["git", "-C", root, "ls-files", "-z"], check=True, capture_output=True, text=True)
    for name in filter(None, listed.stdout.split("\0")):
        path = root / name
        if path.is_file() and (path.suffix == ".sh" or path.read_bytes().startswith(b"#!/usr/bin/env bash")):
            yield path


def main():
    root = pathlib.Path(sys.argv[1])
    scripts = list(shell_scripts(root))
    assert len(scripts) > 10, f"only {len(scripts)} shell scripts below {root}"
    found = [f"{path.relative_to(root)}: {match[0]!r}" for path in scripts
             for match in EARLY_READER.finditer(path.read_text())]
    if found:
        sys.exit("a pipe into grep -q; give it the text by <<<\"$(...)\":\n" + "\n".join(found))


main()
