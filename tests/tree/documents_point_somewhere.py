#!/usr/bin/env python3
"""Fails when a document links to a file or an anchor that isn't there, or names a path of the tree
that doesn't exist: documents_point_somewhere.py TREE"""

import pathlib
import re
import sys

tree = pathlib.Path(sys.argv[1]).resolve()
documents = sorted([*tree.glob("*.md"), *(tree / "docs").glob("*.md")])
# What the commands make, not what is checked in.
MADE = re.compile(r"^(build|bin|lib|symbols)/")


def anchors(path):
    text = path.read_text()
    explicit = re.findall(r'<a (?:id|name)="([^"]+)"', text)
    titles = re.findall(r"^#+ +(.+)$", text, flags=re.MULTILINE)
    made = [re.sub(r"[^\w\- ]", "", title.lower()).strip().replace(" ", "-") for title in titles]
    return {*explicit, *made}


def faults(document):
    text = document.read_text()
    prose = re.sub(r"```.*?```", "", text, flags=re.DOTALL)
    for target in re.findall(r"\]\(([^)]+)\)", prose):
        if re.match(r"[a-z]+:", target):
            yield f"leads outside the tree: {target}"
            continue
        name, _, anchor = target.partition("#")
        path = (document.parent / name).resolve() if name else document
        if not path.exists():
            yield f"no such file: {target}"
        elif anchor and path.suffix == ".md" and anchor not in anchors(path):
            yield f"no such anchor: {target}"
    for path in re.findall(r"`((?:src|samples|tests|tools|docs|include|bench|cmake)/[\w./-]*\w)`", prose):
        if not MADE.match(path) and not (tree / path).exists():
            yield f"no such path: {path}"
    for command in re.findall(r"`?(?:^|[ `])((?:\./|tools/)[a-z-]+)", text, flags=re.MULTILINE):
        if not (tree / command).exists():
            yield f"no such command: {command}"


found = [f"{document.relative_to(tree)}: {fault}" for document in documents for fault in faults(document)]
print("\n".join(found) or f"{len(documents)} documents point at what is there")
sys.exit(1 if found or len(documents) < 5 else 0)
