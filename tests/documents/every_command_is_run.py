#!/usr/bin/env python3
"""Fails when a document has a command that no test runs, or when a test runs a command that no
document has any more: every_command_is_run.py TREE BUILD"""

import pathlib
import re
import sys

from pages import commands
from scenarios import BY_HAND, ELSEWHERE, SCENARIOS


def test_names(build):
    """Of the tests that are registered by name."""
    for file in build.rglob("CTestTestfile.cmake"):
        yield from re.findall(r"^add_test\(\[*=*\[?([^\s\]]+)", file.read_text(), re.MULTILINE)


def faults(tree, build):
    found = commands(tree)
    run = {step.command for scenario in SCENARIOS.values() for step in scenario.STEPS}
    covered = run | set(ELSEWHERE) | set(BY_HAND)
    for command in sorted(set(found) - covered):
        yield f"{', '.join(sorted(found[command]))}: no test runs '{command}'"
    for command in sorted(covered - set(found)):
        yield f"no document has the command '{command}'"
    names = set(test_names(build))
    for name in [*ELSEWHERE.values(), *(f"documents.commands_of_{name}" for name in SCENARIOS)]:
        if name not in names:
            yield f"no such test: {name}"
    print(f"{len(found)} commands: {len(run)} run by scenarios, {len(ELSEWHERE)} by other tests, {len(BY_HAND)} by hand")
    if len(found) < 40:
        yield "there were more commands once"


problems = list(faults(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])))
print("\n".join(problems))
sys.exit(1 if problems else 0)
