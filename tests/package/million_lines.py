#!/usr/bin/env python3
"""The package's log reader under Wine reads a log of a million lines: its counts are those of a
plain search, its picture is of the whole log, and its memory does not grow with the log.

million_lines.py VOK_LOG_EXE LOG_GENERATOR WORK_FOLDER"""

import json
import os
import pathlib
import re
import subprocess
import sys

WINE = pathlib.Path(__file__).resolve().parents[2] / "tools" / "wine"
MILLION = 1_000_000
FEWER = 200_000
# KiB; Wine's own part is in both figures.
GROWTH = 16 * 1024

PATTERNS = {
    "lines": r"",
    "torn": r"^2024/03/07-09:\r$",
    "foreign": r"^disk check",
    "unknownTexts": r"a text of another version",
    "withoutClock": r"^pid=",
    "jobs": r"FriendlyName = ",
    "refused": r"OPENJOB WriteDralPipe\. rc = NOPRINT",
    "dralPages": r" STARTPAGE WriteDralPipe\. rc = ",
    "nembPages": r"STARTPAGE/ENDPAGE WriteNembPipe rc = ",
    "dralClosings": r"CLOSEJOB WriteDralPipe rc = ",
    "cancels": r"CANCELJOB WriteNembPipe rc = ",
}


def searched(log):
    """How many lines of the log have each pattern."""
    patterns = {name: re.compile(pattern) for name, pattern in PATTERNS.items()}
    counts = dict.fromkeys(patterns, 0)
    with open(log, encoding="latin-1", newline="\n") as lines:
        for line in lines:
            text = line.rstrip("\n")
            for name, pattern in patterns.items():
                counts[name] += pattern.search(text) is not None
    return counts


def told(summary):
    """The same counts out of the reader's account."""
    events = summary["events"]
    return {
        **{name: summary["lines"][name] for name in ("lines", "torn", "foreign", "unknownTexts", "withoutClock")},
        "jobs": summary["jobs"],
        "refused": summary["results"]["refused"],
        "dralPages": events["DRAL"]["PAGE"]["calls"],
        "nembPages": events["NEMB"]["PAGE"]["calls"],
        "dralClosings": events["DRAL"]["CLOSEJOB"]["calls"],
        "cancels": events["NEMB"]["CANCELJOB"]["calls"],
    }


class Reader:
    def __init__(self, program, work):
        self.program, self.work = program, work

    def read(self, log, form):
        """Has the log read into a file; returns the file and the peak memory in KiB."""
        out = self.work / f"{log.stem}.{form}"
        words = [WINE, self.program, f"--{form}", "--output", f"Z:{out}", f"Z:{log}"]
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        assert process.returncode == 1, f"{form}: exit status {process.returncode}"
        return out, usage.ru_maxrss


def generate(generator, lines, work):
    log = work / f"lines-{lines}.log"
    with open(log, "wb") as out:
        subprocess.run([generator, str(lines)], stdout=out, check=True)
    return log


def slices(trace):
    """How many events of the trace are an OPENJOB of DRAL."""
    return sum(event["name"].startswith("DRAL OPENJOB") for event in json.load(open(trace))["traceEvents"])


def main():
    program, generator, work = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    work.mkdir(parents=True, exist_ok=True)
    reader = Reader(program, work)
    log, shorter = generate(generator, MILLION, work), generate(generator, FEWER, work)
    expected = searched(log)
    assert expected["lines"] >= MILLION and expected["jobs"] > 5000, expected

    account, _ = reader.read(log, "json")
    summary = json.load(open(account))["summary"]
    assert told(summary) == expected, (told(summary), expected)

    page, memory = reader.read(log, "html")
    data = re.search(r'<script id="data" type="application/json">(.*?)</script>', page.read_text(), re.DOTALL)
    assert told(json.loads(data[1])["summary"]) == expected
    trace, _ = reader.read(log, "trace")
    assert slices(trace) == expected["jobs"], slices(trace)

    _, before = reader.read(shorter, "html")
    assert memory - before < GROWTH, f"{before} KiB for {FEWER} lines, {memory} KiB for {MILLION}"
    print(f"{expected['lines']} lines, {expected['jobs']} jobs: {memory} KiB; {FEWER} lines: {before} KiB")
    for left in work.iterdir():
        left.unlink()


main()
