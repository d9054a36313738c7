#!/usr/bin/env python3
"""Opens timeline pages in a headless Chromium and checks what they show and how they answer.

page_test.py VOK_LOG LOG_GENERATOR DATA_FOLDER WORK_FOLDER
The pictures stay in WORK_FOLDER, to be looked at.
"""
import json
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--hide-scrollbars"]
DARK, LIGHT = "0", "1"
PAGE_COLOURS = {LIGHT: (0xF7, 0xF7, 0xF5), DARK: (0x16, 0x19, 0x1D)}

# Runs in the page, after its own script: every value that it reports is checked below.
PROBE = """
<script>
const report = { errors: [] };
window.addEventListener("error", (event) => report.errors.push(event.message));
function pointer(type, x, y) {
  const box = picture.getBoundingClientRect();
  picture.dispatchEvent(new PointerEvent(type, { clientX: box.left + x, clientY: box.top + y,
    pointerId: 1, bubbles: true }));
}
const span = () => view.end - view.start;
const xOfJob = (job) => xOf((job.start + job.end) / 2, picture.clientWidth);
const detail = () => byId("detail").textContent;
try {
  picture.setPointerCapture = () => {};
  const job = model.shown.find((one) => one.job === 1) || model.shown[0];
  const y = axisHeight + job.row * rowHeight + 5;
  report.rows = document.querySelectorAll("#jobs tr").length;
  report.counts = byId("counts").textContent;
  report.limit = byId("limit").textContent;
  report.findings = document.querySelectorAll("#findings code").length;
  report.overflow = document.documentElement.scrollWidth > document.documentElement.clientWidth;
  const pixels = picture.getContext("2d").getImageData(0, 0, picture.width, picture.height).data;
  report.painted = new Set(new Uint32Array(pixels.buffer)).size;
  pointer("pointermove", xOfJob(job), y);
  report.hovered = detail();
  const all = span();
  picture.dispatchEvent(new WheelEvent("wheel", { deltaY: -100, clientX: 100, clientY: 5,
    cancelable: true }));
  report.zoomed = span() / all;
  byId("zoom-all").click();
  report.back = span() / all;
  showJob(job);
  const event = job.events[0];
  const inEvent = xOf((event.start + event.end) / 2, picture.clientWidth);
  pointer("pointerdown", inEvent, y);
  pointer("pointerup", inEvent, y);
  report.kept = detail();
  report.marked = [...document.querySelectorAll("#detail mark")].map((mark) => mark.textContent);
  const before = view.start;
  picture.dispatchEvent(new KeyboardEvent("keydown", { key: "-" }));
  picture.dispatchEvent(new KeyboardEvent("keydown", { key: "ArrowRight" }));
  report.moved = view.start - before;
  byId("only-problems").checked = true;
  byId("only-problems").dispatchEvent(new Event("change"));
  report.problems = model.shown.length;
  byId("filter").value = "no such printer";
  byId("filter").dispatchEvent(new Event("input"));
  report.filtered = model.shown.length;
} catch (error) {
  report.errors.push(String(error.stack));
}
const out = document.createElement("pre");
out.id = "report";
out.textContent = JSON.stringify(report);
document.body.append(out);
</script>
"""


def chromium(page, *options):
    program = shutil.which("chromium")
    if program is None:
        sys.exit("chromium is not installed (apt-get install chromium)")
    with tempfile.TemporaryDirectory() as profile:
        done = subprocess.run(
            [program, *FLAGS, f"--user-data-dir={profile}", *options, page.as_uri()],
            capture_output=True, text=True, timeout=120, check=True)
    return done.stdout


def make_page(reader, work, name, *arguments):
    page = work / f"{name}.html"
    done = subprocess.run([reader, "--html", "-o", page, *arguments], check=False)
    assert done.returncode in (0, 1), done.returncode
    return page


def probe(page, width):
    probed = page.with_suffix(".probe.html")
    probed.write_text(page.read_text(encoding="utf-8").replace("</body>", PROBE + "</body>"),
                      encoding="utf-8")
    shown = chromium(probed, "--dump-dom", f"--window-size={width},900")
    found = re.search(r'<pre id="report">(.*?)</pre>', shown, re.S)
    assert found, "the page's script did not come to its end"
    text = found.group(1)
    for name, character in (("&lt;", "<"), ("&gt;", ">"), ("&amp;", "&")):
        text = text.replace(name, character)
    report = json.loads(text)
    assert report["errors"] == [], report["errors"]
    return report


def corner(picture):
    """The colour of a PNG's first pixel, and its width."""
    data = picture.read_bytes()
    width, _, depth, kind = struct.unpack(">IIBB", data[16:26])
    assert (depth, kind) in ((8, 2), (8, 6)), (depth, kind)
    packed, position = b"", 8
    while position < len(data):
        length, name = struct.unpack(">I4s", data[position:position + 8])
        if name == b"IDAT":
            packed += data[position + 8:position + 8 + length]
        position += 12 + length
    # The first pixel has no neighbours: every filter leaves it as it is.
    return tuple(zlib.decompress(packed)[1:4]), width


def photograph(page, name, scheme, width, height):
    picture = page.with_name(f"{name}.png")
    chromium(page, f"--screenshot={picture}", f"--window-size={width},{height}",
             f"--blink-settings=preferredColorScheme={scheme}")
    colour, taken = corner(picture)
    assert taken == width, (name, taken)
    assert colour == PAGE_COLOURS[scheme], (name, colour)


def check_real_logs(reader, data, work):
    logs = [data / f"{name}.log" for name in ("message", "pipe", "refused", "busy", "die", "nine")]
    page = make_page(reader, work, "real", *logs)
    for width in (1280, 390):
        report = probe(page, width)
        assert not report["overflow"], f"wider than a window of {width}"
        assert report["rows"] == 12, report["rows"]
        assert report["painted"] > 5, report["painted"]
        assert "12 jobs" in report["counts"] and "4 with problems" in report["counts"]
        assert report["limit"] == "", report["limit"]
        assert "Job 1, Demo Printer: printed" in report["hovered"], report["hovered"]
        assert "of " + str(logs[0]) in report["hovered"], report["hovered"]
        assert "FriendlyName = Demo Printer" in report["hovered"], report["hovered"]
        assert report["zoomed"] < 0.9 and abs(report["back"] - 1) < 1e-9, report
        assert "DRAL OPENJOB: YESPRINT" in report["kept"], report["kept"]
        assert any("SM_OPENJOB. Dral HWND" in line for line in report["marked"]), report["marked"]
        assert report["moved"] != 0
        assert report["problems"] == 4 and report["filtered"] == 0, report
    photograph(page, "real-light", LIGHT, 1280, 1000)
    photograph(page, "real-dark", DARK, 1280, 1000)
    photograph(page, "real-phone-light", LIGHT, 390, 844)
    photograph(page, "real-phone-dark", DARK, 390, 844)


def check_large_log(reader, generator, work):
    log = work / "large.log"
    with log.open("wb") as out:
        subprocess.run([generator, "300000"], stdout=out, check=True)
    page = make_page(reader, work, "large", log)
    log.unlink()
    report = probe(page, 1280)
    assert report["rows"] == 200, report["rows"]
    assert "show 1,000 of" in report["limit"], report["limit"]
    assert "jobs without a clock are in the list" in report["limit"], report["limit"]
    assert not report["overflow"]
    photograph(page, "large-light", LIGHT, 1280, 1000)
    photograph(page, "large-dark", DARK, 1280, 1000)


def check_log_without_clock(reader, data, work):
    log = work / "noclock.log"
    lines = (data / "pipe.log").read_bytes().splitlines(keepends=True)
    log.write_bytes(b"".join(line[24:] for line in lines))
    report = probe(make_page(reader, work, "noclock", log), 1280)
    assert report["rows"] == 2, report["rows"]
    assert "line" in report["hovered"], report["hovered"]


def main():
    reader, generator, data, work = sys.argv[1], sys.argv[2], Path(sys.argv[3]), Path(sys.argv[4])
    work.mkdir(parents=True, exist_ok=True)
    work = work.resolve()
    check_real_logs(reader, data, work)
    check_large_log(reader, generator, work)
    check_log_without_clock(reader, data, work)
    print(f"the pages hold; pictures in {work.name}/")


main()
