#!/usr/bin/env python3
"""Fails when the library can write a text to its log that no test expects letter by letter:
log_texts_are_tested.py TREE

A text that is a line by itself has to stand in a test as a whole; one that is put together with
values has to be part of a text there."""

import pathlib
import re
import sys

from log_texts import literals, log_texts, whole_lines

# The tests that compare whole lines; those of the models and of the tools only know the texts.
FOLDERS = ("dll", "launch", "logging", "messaging", "support")

RAW = re.compile(r'R"\(([^\n]*?)\)"')


def expected_texts(text):
    """All string literals of a test, raw ones among them, neighbours joined."""
    plain = RAW.sub(lambda raw: '"' + raw[1].replace("\\", "\\\\").replace('"', '\\"') + '"', text)
    for literal in literals(plain):
        yield literal.replace('\\"', '"')


tree = pathlib.Path(sys.argv[1])
expected = {
    text
    for folder in FOLDERS
    for path in sorted((tree / "tests" / folder).glob("*.[ch]*"))
    for text in expected_texts(path.read_text())
}

lines = whole_lines(tree)
parts = log_texts(tree) - lines
everything = "\n".join(sorted(expected))
missing = sorted(text for text in lines if text not in expected)
missing += sorted(text for text in parts if text not in everything)
for text in missing:
    print(f'no test expects "{text}"')
print(f"{len(lines)} lines and {len(parts)} parts of lines checked")
sys.exit(1 if missing or len(lines) < 40 or len(parts) < 80 else 0)
