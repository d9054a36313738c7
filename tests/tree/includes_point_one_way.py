#!/usr/bin/env python3
"""Fails when a source of the library includes against the direction
interface -> launch, messaging -> logging -> support: includes_point_one_way.py SOURCE_DIR"""

import pathlib
import re
import sys

LAYERS = {"runtime": 0, "support": 0, "logging": 1, "launch": 2, "messaging": 3, "interface": 4}
# A loaded module reports through the log, which in turn asks the configuration library.
DOORS = {("support/module.cpp", "logging/log_line.h")}


def wrong_includes(sources):
    for path in sorted(sources.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(sources).as_posix()
        layer = LAYERS[name.split("/")[0]]
        for included in re.findall(r'#include "([^"]+)"', path.read_text()):
            if LAYERS[included.split("/")[0]] > layer and (name, included) not in DOORS:
                yield f"{name} includes {included}"


found = list(wrong_includes(pathlib.Path(sys.argv[1])))
print("\n".join(found) or "every include points one way")
sys.exit(1 if found else 0)
