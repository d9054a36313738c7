#!/usr/bin/env python3
"""A trace viewer takes the traces, by its own parser: trace_viewer_test.py READER DATA-FOLDER WORK-FOLDER VIEWER-FOLDER

speedscope, in Chromium: its list of all slices with their times is compared with the trace.
"""
import base64
import html
import json
import re
import subprocess
import sys
from pathlib import Path

from browser import chromium

ROW = re.compile(r"<tr[^>]*><td[^>]*>([\d.]+)(ns|µs|ms|s) .*?</td>.*?<span[^>]*></span>(.*?)</td></tr>")
MICROSECONDS = {"ns": 0.001, "µs": 1, "ms": 1000, "s": 1000000}


def slices_of(trace):
    """The trace's slices as the viewer names them, with the time of all that share a name."""
    times = {}
    for event in trace["traceEvents"]:
        if event["ph"] == "X":
            name = event["name"] + " " + json.dumps(event["args"], separators=(",", ":"), ensure_ascii=False)
            times[name] = times.get(name, 0) + event["dur"]
    return times


def listed_by(viewer, trace, work):
    """What the viewer lists of a trace."""
    profile = work / "profile.js"
    content = base64.b64encode(trace.read_bytes()).decode()
    # The list is drawn when the window's size is known, which a browser without a window may not tell.
    profile.write_text(f"speedscope.loadFileFromBase64('{trace.name}', '{content}');"
                       "setInterval(() => dispatchEvent(new Event('resize')), 50)")
    # It may also end before the list is drawn, and is asked again then. Tall enough for the whole list.
    for _ in range(10):
        shown = chromium(viewer / "index.html", "--dump-dom", "--window-size=1600,8000", "--virtual-time-budget=20000",
                         fragment=f"#localProfilePath={profile}&view=sandwich")
        rows = ROW.findall(shown)
        if rows:
            return {html.unescape(name): float(number) * MICROSECONDS[unit] for number, unit, name in rows}
    sys.exit(f"{trace.name}: the viewer lists nothing: {shown[-2000:]}")


def check_log(reader, log, viewer, work):
    trace = work / f"{log.stem}.json"
    done = subprocess.run([reader, "--trace", "-o", trace, log], check=False)
    assert done.returncode in (0, 1), done.returncode
    slices = slices_of(json.loads(trace.read_text(encoding="utf-8")))
    listed = listed_by(viewer, trace, work)
    assert slices and listed.keys() == slices.keys(), (log.name, listed.keys() ^ slices.keys())
    for name, time in slices.items():
        # Three digits are shown.
        assert abs(listed[name] - time) <= 0.01 * time, (log.name, listed[name], time, name)
    return len(slices)


def main():
    reader, data, work, viewer = sys.argv[1], *map(Path, sys.argv[2:5])
    if not viewer.is_dir():
        sys.exit("the trace viewer is not there: ./test installs it by npm, see build/npm.log")
    work.mkdir(parents=True, exist_ok=True)
    for log in sorted(data.glob("*.log")):
        print(f"{log.name}: {check_log(reader, log, viewer, work)} slices")


main()
