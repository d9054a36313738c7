#!/usr/bin/env python3
"""Runs the commands of one scenario as the documents have them: run_commands.py SCENARIO TREE"""

import pathlib
import shutil
import sys

from scenarios import SCENARIOS
from steps import Place, take


def main():
    scenario, tree = SCENARIOS[sys.argv[1]], pathlib.Path(sys.argv[2])
    folder = tree / scenario.FOLDER
    if folder != tree:
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
    programs = getattr(scenario, "PROGRAMS", "")
    place = Place(tree, folder, scenario.WINDOWS, str(tree / programs) if programs else "")
    if hasattr(scenario, "prepare"):
        scenario.prepare(place)
    for step in scenario.STEPS:
        wrong = take(step, place)
        if wrong:
            print(f"'{step.command}' of the documents: {wrong}")
            return 1
    return 0


sys.exit(main())
