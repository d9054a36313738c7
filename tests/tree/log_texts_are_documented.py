#!/usr/bin/env python3
"""Fails when the library can write a text to its log that docs/logging.md does not explain, or when
that page explains one that no source has: log_texts_are_documented.py TREE"""

import pathlib
import re
import sys

from log_texts import literals, log_texts, sources

tree = pathlib.Path(sys.argv[1])
page = (tree / "docs/logging.md").read_text().replace("\\|", "|")

logged = log_texts(tree)
explained = set(re.findall(r'"([^"\n]+)"', page))
code = "\n".join("".join(literals(path.read_text())) for path in sources(tree))

missing = sorted(text for text in logged if text not in explained and f'"{text.strip()}"' not in page)
invented = sorted(
    text for text in explained if " " in text.strip() and text not in code and text != "Printer Prefix"
)
for text in missing:
    print(f'docs/logging.md does not explain "{text}"')
for text in invented:
    print(f'no source writes "{text}"')
print(f"{len(logged)} texts checked")
sys.exit(1 if missing or invented or len(logged) < 80 else 0)
