#!/usr/bin/env python3
"""lnav takes the library's logs by the format file: lnav_test.py FORMAT DATA-FOLDER WORK-FOLDER"""

import csv
import io
import os
import shutil
import subprocess
import sys
from pathlib import Path


def rows(work, log, query):
    """What lnav's query says of a log, read with our format alone."""
    environment = dict(os.environ, HOME=str(work), XDG_CONFIG_HOME=str(work), TERM="dumb", TZ="UTC")
    done = subprocess.run(["lnav", "-n", "-I", str(work), "-c", ";" + query,
                           "-c", ":write-csv-to -", str(log)], env=environment,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"lnav: {done.stderr}{done.stdout}")
    return list(csv.DictReader(io.StringIO(done.stdout)))


def check(what, found, expected):
    if found != expected:
        sys.exit(f"{what}: {found} instead of {expected}")


def check_log(work, log):
    lines = log.read_text(encoding="latin-1").splitlines()
    query = "SELECT log_level, category, log_time, log_body, pid, tid FROM vok_log"
    taken = rows(work, log, query)
    check(f"{log.name}: records", len(taken), len(lines))
    check(f"{log.name}: first time", taken[0]["log_time"][:23],
          lines[0][:23].replace("/", "-").replace("-", " ", 3).replace(" ", "-", 2))
    for line, row in zip(lines, taken):
        refused = "rc = NOPRINT" in line
        check(f"{log.name}: {line}", row["log_level"] == "error", refused or "ailed" in line)
        check(f"{log.name}: {line}", row["category"], "VOK")
        numbers = ("1f04", "0a3c") if " pid=1f04 tid=0a3c " in line else ("<NULL>", "<NULL>")
        check(f"{log.name}: {line}", (row["pid"], row["tid"]), numbers)


def main():
    form, data, work = map(Path, sys.argv[1:])
    shutil.rmtree(work, ignore_errors=True)
    (work / "formats" / "installed").mkdir(parents=True)
    shutil.copy(form, work / "formats" / "installed")
    logs = sorted(data.glob("*.log"))
    for log in logs:
        check_log(work, log)
        numbered = work / f"numbered-{log.name}"
        numbered.write_bytes(log.read_bytes().replace(b" VOK  ", b" pid=1f04 tid=0a3c VOK  "))
        check_log(work, numbered)
    print(f"{len(logs)} logs: lnav takes every line")


main()
