#!/usr/bin/env python3
"""Fails when the library can write a text to its log that docs/logging.md does not explain, or when
that page explains one that no source has: log_texts_are_documented.py TREE"""

import pathlib
import re
import sys

tree = pathlib.Path(sys.argv[1])
sources = [
    path
    for folder in ("interface", "launch", "logging", "messaging", "support")
    for path in sorted((tree / "src" / folder).glob("*.cpp"))
]
page = (tree / "docs/logging.md").read_text().replace("\\|", "|")

# Texts of the sources that never reach the log: names of registry keys and windows, exceptions.
NOT_LOGGED = re.compile(
    r"^(SYSTEM\\|System\\|\\PrinterDriverData|Mutex::|InterProcessLock |SecurityEveryone::|Security::"
    r"|OsVersion::|RegistryKey64::|CriticalLog\(\)|BasicLogger::|Error getting message:|int \$| : incorrect)"
)


def literals(text):
    text = re.sub(r'^\s*(//|#include).*$', "", text, flags=re.MULTILINE)
    text = re.sub(r'"\s*\n\s*"', "", text)
    for literal in re.findall(r'"((?:[^"\\\n]|\\.)*)"', text):
        yield literal.replace("\\\\", "\\")


def is_log_text(literal):
    return " " in literal.strip() and re.search("[A-Za-z]{2}", literal) and not NOT_LOGGED.match(literal)


logged = {literal for path in sources for literal in literals(path.read_text()) if is_log_text(literal)}
explained = set(re.findall(r'"([^"\n]+)"', page))
code = "\n".join("".join(literals(path.read_text())) for path in sources)

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
