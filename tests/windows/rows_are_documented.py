#!/usr/bin/env python3
"""What the tests tell for docs/windows.md are rows of its table: rows_are_documented.py TREE"""

import pathlib
import re
import sys

tree = pathlib.Path(sys.argv[1])
page = (tree / "docs/windows.md").read_text()
section = page.split("\n## What was seen under Wine only\n", 1)[1].split("\n## ", 1)[0]
rows = set(re.findall(r"^\| ([^|]+) \|", section, re.MULTILINE))
told = {row for file in (tree / "tests/windows").glob("*.cpp")
        for row in re.findall(r'seenOnWindows\(\s*"([^"]+)"', file.read_text())}
unknown = sorted(told - rows)
if unknown:
    print(f"no such row in docs/windows.md: {unknown}")
sys.exit(1 if unknown or len(told) < 4 else 0)
