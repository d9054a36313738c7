"""A headless Chromium for the tests of the timeline page: what is painted, and pictures of it."""
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
PROBE = Path(__file__).with_name("page_probe.js")


def chromium(page, *options, fragment=""):
    program = shutil.which("chromium")
    if program is None:
        sys.exit("chromium is not installed (apt-get install chromium)")
    with tempfile.TemporaryDirectory() as profile:
        done = subprocess.run(
            [program, *FLAGS, f"--user-data-dir={profile}", *options, page.as_uri() + fragment],
            capture_output=True, text=True, check=True)
    return done.stdout


def make_page(reader, work, name, *arguments):
    page = work / f"{name}.html"
    done = subprocess.run([reader, "--html", "-o", page, *arguments], check=False)
    assert done.returncode in (0, 1), done.returncode
    return page


def probe(page, width, script, scheme=LIGHT):
    """What `script` puts into `report`, run in the page behind the page's own script."""
    probed = page.with_suffix(".probe.html")
    text = page.read_text(encoding="utf-8")
    text = text.replace("<head>", f"<head><script>{PROBE.read_text(encoding='utf-8')}</script>", 1)
    run = f"<script>probing(() => {{{script}}});</script>"
    head, body_end, rest = text.rpartition("</body>")
    probed.write_text(head + run + body_end + rest, encoding="utf-8")
    shown = chromium(probed, "--dump-dom", f"--window-size={width},900",
                     f"--blink-settings=preferredColorScheme={scheme}")
    found = re.search(r'<pre id="report">(.*?)</pre>', shown, re.S)
    assert found, "the page's script did not come to its end"
    answer = found.group(1)
    for name, character in (("&lt;", "<"), ("&gt;", ">"), ("&nbsp;", " "), ("&amp;", "&")):
        answer = answer.replace(name, character)
    report = json.loads(answer)
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


def photograph(page, name, scheme, width, height=1000):
    """A picture to be looked at; gives the colour of its corner."""
    picture = page.with_name(f"{name}.png")
    chromium(page, f"--screenshot={picture}", f"--window-size={width},{height}",
             f"--blink-settings=preferredColorScheme={scheme}")
    colour, taken = corner(picture)
    assert taken == width, (name, taken)
    return colour
