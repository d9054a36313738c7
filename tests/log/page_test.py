#!/usr/bin/env python3
"""Opens timeline pages in a headless Chromium and checks what they show and how they answer.

page_test.py VOK_LOG LOG_GENERATOR DATA_FOLDER WORK_FOLDER
The pictures stay in WORK_FOLDER, to be looked at.
"""
import subprocess
import sys
from pathlib import Path

import page_logs
from browser import DARK, LIGHT, make_page, photograph, probe

PAGE_COLOURS = {LIGHT: (0xF3, 0xF4, 0xF2), DARK: (0x14, 0x17, 0x1A)}
WIDTHS = (420, 1280, 2560)

BASICS = """
  const job = jobOf(1) || model.shown[0];
  const y = picture.clientHeight > 0 ? axisHeight + job.y + labelHeight + 5 : 0;
  const span = () => view.end - view.start;
  Object.assign(report, { rows: rowTexts().length, counts: byId("counts").textContent,
    limit: byId("limit").textContent, wider: wider() });
  point("pointermove", middleOf(job.start, job.end), y);
  report.hovered = byId("account").textContent;
  const all = span();
  picture.dispatchEvent(new WheelEvent("wheel", { deltaY: -100, ctrlKey: true, clientX: 100, clientY: 5,
    cancelable: true }));
  report.zoomed = span() / all;
  const scrolls = new WheelEvent("wheel", { deltaY: 100, cancelable: true });
  picture.dispatchEvent(scrolls);
  report.wheelTaken = scrolls.defaultPrevented;
  byId("zoom-all").click();
  report.back = span() / all;
  showJob(job);
  const event = job.events[0];
  point("pointerdown", middleOf(event.start, event.end), y);
  point("pointerup", middleOf(event.start, event.end), y);
  report.kept = byId("detail").textContent;
  report.account = byId("account").textContent;
  report.marked = [...document.querySelectorAll("#detail mark")].map((mark) => mark.textContent);
  const before = view.start;
  picture.focus();
  press("-");
  press("ArrowRight", { shiftKey: true });
  report.moved = view.start - before;
  byId("only-problems").click();
  report.problems = model.shown.length;
"""


def check_real_logs(reader, data, work):
    logs = [data / f"{name}.log" for name in ("message", "pipe", "refused", "busy", "die", "nine")]
    page = make_page(reader, work, "real", *logs)
    for width in WIDTHS:
        report = probe(page, width, BASICS)
        assert not report["wider"], f"wider than a window of {width}"
        assert report["rows"] == 12, report["rows"]
        assert "12 jobs" in report["counts"] and "4 with problems" in report["counts"]
        assert report["limit"] == "", report["limit"]
        assert "Job 1, Demo Printer" in report["hovered"], report["hovered"]
        assert report["zoomed"] < 0.9 and abs(report["back"] - 1) < 1e-9, report
        assert not report["wheelTaken"], "the wheel alone does not scroll the page"
        assert "of " + str(logs[0]) in report["kept"], report["kept"]
        assert "FriendlyName = Demo Printer" in report["kept"], report["kept"]
        assert "DRAL OPENJOB: YESPRINT" in report["account"], report["account"]
        assert any("SM_OPENJOB. Dral HWND" in line for line in report["marked"]), report["marked"]
        assert report["moved"] != 0 and report["problems"] == 4, report
    return page


def check_large_log(reader, generator, work):
    log = work / "large.log"
    with log.open("wb") as out:
        subprocess.run([generator, "300000"], stdout=out, check=True)
    page = make_page(reader, work, "large", "--jobs", "1000", log)
    log.unlink()
    report = probe(page, 1280, BASICS)
    assert report["rows"] == 200, report["rows"]
    assert "show 1,000 of" in report["limit"], report["limit"]
    assert "jobs without a clock are in the list" in report["limit"], report["limit"]
    assert not report["wider"]
    return page


def check_log_without_clock(reader, data, work):
    log = work / "noclock.log"
    lines = (data / "pipe.log").read_bytes().splitlines(keepends=True)
    log.write_bytes(b"".join(line[24:] for line in lines))
    report = probe(make_page(reader, work, "noclock", log), 1280, BASICS)
    assert report["rows"] == 2, report["rows"]
    assert "line" in report["hovered"], report["hovered"]


def check_many_jobs(reader, work):
    """Ten thousand jobs: told how long they take; no test depends on speed."""
    log = page_logs.many(work / "many.log", 10000)
    page = make_page(reader, work, "many", "--jobs", "10000", log)
    log.unlink()
    report = probe(page, 1280, """
      picture.getContext("2d").getImageData(0, 0, 1, 1);
      report.ready = performance.now();
      report.limit = byId("limit").textContent;
      report.jobs = data.jobs.length;
      const began = performance.now();
      type("noprint");
      picture.getContext("2d").getImageData(0, 0, 1, 1);
      report.filtered = performance.now() - began;
      report.found = model.shown.length;""")
    size = page.stat().st_size / 1e6
    print(f"10,000 jobs, {size:.1f} MB: shown after {report['ready'] / 1000:.2f} s, "
          f"filtered after {report['filtered'] / 1000:.2f} s")
    assert report["jobs"] == 10000, (report["jobs"], report["limit"])
    assert "shown without their log lines" in report["limit"], report["limit"]
    assert " of 10,000 jobs" not in report["limit"] and report["found"] == 200, report
    assert report["ready"] < 60000, report
    return page


def main():
    reader, generator, data, work = sys.argv[1], sys.argv[2], Path(sys.argv[3]), Path(sys.argv[4])
    work.mkdir(parents=True, exist_ok=True)
    work = work.resolve()
    pages = {"real": check_real_logs(reader, data, work),
             "large": check_large_log(reader, generator, work),
             "many": check_many_jobs(reader, work)}
    check_log_without_clock(reader, data, work)
    for name, page in pages.items():
        for scheme, light in ((LIGHT, "light"), (DARK, "dark")):
            for width in WIDTHS if name == "real" else (1280,):
                colour = photograph(page, f"{name}-{light}-{width}", scheme, width)
                assert colour == PAGE_COLOURS[scheme], (name, colour)
    print(f"the pages hold; pictures in {work.name}/")


main()
