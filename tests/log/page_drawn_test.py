#!/usr/bin/env python3
"""What the timeline page paints, and what it says of it: places, colours, keys, list and links.

page_drawn_test.py VOK_LOG WORK_FOLDER
"""
import sys
from itertools import combinations
from pathlib import Path

import page_logs
from browser import DARK, LIGHT, make_page, probe


def texts_have_room(pages):
    """No text touches another, is struck through, painted over, or cut off; at any width and zoom."""
    for name, page in pages.items():
        for width in (420, 800, 1280, 2560):
            report = probe(page, width, """
              repaint();
              report.spoilt = spoiltTexts();
              report.texts = painted.filter((one) => one.kind === "text").map((one) => one.text);
              for (const job of model.shown.slice(0, 3)) {
                showJob(job);
                repaint();
                report.spoilt.push(...spoiltTexts());
              }
              report.wider = wider();""")
            assert report["spoilt"] == [], (name, width, report["spoilt"])
            assert len(report["texts"]) > 4, (name, report["texts"])
            assert not report["wider"], (name, width)


def lanes_stand_apart(pages):
    """Every printer has a lane of its own, named in it, and no two jobs are painted over each other."""
    report = probe(pages["crowd"], 1280, """
      repaint();
      report.names = painted.filter((one) => one.kind === "text").map((one) => one.text)
        .filter((text) => text.startsWith("Printer"));
      const boxes = model.shown.map((job) => ({ printer: job.printer, x: xOf(job.start), y: topOf(job),
        width: xOf(job.end) - xOf(job.start), height: bothBars }));
      report.overlaps = boxes.flatMap((a, i) => boxes.slice(i + 1).filter((b) => !apart(a, b))).length;
      report.shared = boxes.flatMap((a) => boxes.filter((b) => a.y === b.y && a.printer !== b.printer)).length;""")
    assert len(report["names"]) == 3, report
    assert report["overlaps"] == 0 and report["shared"] == 0, report


def refusals_are_red(pages):
    """A NOPRINT between other answers is seen, however many lie upon each other."""
    for name, width, count in (("crowd", 420, 3), ("crowd", 1280, 3), ("dense", 1280, 1)):
        report = probe(pages[name], width, """
          repaint();
          report.red = model.shown.filter((job) => job.weight === "problem").map((job) => {
            const event = job.events.find((one) => one.reply === "NOPRINT");
            return coloured(placeOf(event.start) + 2, "no");
          });""")
        assert len(report["red"]) == count and min(report["red"]) >= 12, (name, width, report)


def waits_are_waits(pages):
    """What WAITPRINT asked for is marked until the companion is asked again, and told."""
    report = probe(pages["waits"], 1280, """
      const job = jobOf(1);
      repaint();
      const event = job.events.find((one) => one.reply === "WAITPRINT");
      const marked = [];
      for (let share = 0.1; share < 0.95; share += 0.1) {
        const x = placeOf(event.end + share * 1990);
        marked.push(Math.max(...[0, 1, 2, 3, 4, 5, 6, 7].map((more) => coloured(x + more, "wait", true))));
      }
      report.marked = marked;
      report.after = coloured(placeOf(event.start + 2300), "wait", true);
      report.title = itemTitle(event, job);""")
    assert min(report["marked"]) >= 2, report
    assert "waited 2.0 s" in report["title"], report


def silence_has_width(pages):
    """An event without an answer is painted as long as nothing came."""
    report = probe(pages["hang"], 1280, """
      const job = jobOf(1);
      repaint();
      const event = job.events.find((one) => one.event === "CLOSEJOB");
      report.red = [2, 5, 8, 11].map((more) => coloured(placeOf(event.start) + more, "no", true));
      report.text = failureText(job);""")
    assert min(report["red"]) >= 2, report
    assert "DRAL CLOSEJOB" in report["text"], report


def silence_goes_on(pages):
    """A job without an end is told and painted as open until the log ends, its last call in red."""
    report = probe(pages["hang"], 1280, """
      const job = jobOf(1);
      repaint();
      report.late = Math.max(...[0, 1, 2, 3, 4, 5, 6, 7].map((more) => coloured(placeOf(job.start + 40000) + more, "no", true)));
      report.arrow = coloured(placeOf(job.until) - 4, "ink");
      report.label = painted.some((one) => one.text?.startsWith("✕\\u00a01 open: silent for 1 min"));
      report.row = document.querySelector("#jobs tr").textContent;""")
    assert report["late"] >= 2 and report["arrow"] >= 3 and report["label"], report
    assert "open: silent for 1 min" in report["row"] and "1 min 1 s+" in report["row"], report


def mixed_jobs_are_marked(pages):
    """A job that the reader can't tell from others says so in picture and list, and is no problem."""
    report = probe(pages["mixed"], 2560, """
      repaint();
      report.label = painted.filter((one) => one.text?.startsWith("≈")).map((one) => one.text);
      report.rows = rowTexts();""")
    assert len(report["label"]) == 2 and "2 mixed" in report["label"][1], report
    for row in report["rows"]:
        # What is said of the job as a whole is not said of what stands in the finding's line.
        assert "launch: " not in row, report
        assert "≈" in row and "mixed: 2 jobs can't be told apart" in row and "?" in row, report


def gaps_say_how_much(pages):
    """What is left out of a long job stands in its place with its number; the refusal in it does not."""
    report = probe(pages["refusal"], 1280, """
      repaint();
      report.texts = painted.filter((one) => one.kind === "text").map((one) => one.text)
        .filter((text) => text.includes("left out"));
      const gaps = jobOf(1).events.filter((one) => one.gap);
      report.wanted = gaps.map((one) => `${one.events} events left out`);
      report.grey = gaps.map((one) => [0, 3, 6, 9].map((more) => coloured(placeOf(one.start) + 20 + more, "other", true)));
      const refused = jobOf(1).events.find((one) => one.reply === "NOPRINT");
      report.red = coloured(placeOf(refused.start) + 2, "no");
      report.all = jobOf(1).events.reduce((sum, one) => sum + (one.gap ? one.events : 1), 0);""")
    assert report["texts"] == report["wanted"] and len(report["texts"]) == 2, report
    assert all(max(grey) >= 2 for grey in report["grey"]) and report["red"] >= 12, report
    assert report["all"] == 2 * 167, report


def time_is_split(pages):
    """A bar of the list is as long in its parts as the phases were, in the table's words."""
    report = probe(pages["waits"], 1280, """
      report.time = jobOf(1).time;
      report.duration = jobOf(1).durationMs;
      const bar = document.querySelector("#jobs tr .split");
      report.shares = [...bar.children].map((part) =>
        [part.className, part.getBoundingClientRect().width / bar.getBoundingClientRect().width]);
      document.querySelector("#jobs tr").click();
      report.account = byId("detail").textContent;""")
    assert sum(report["time"].values()) == report["duration"], report
    for name, share in report["shares"]:
        wanted = report["time"][name] / report["duration"]
        assert wanted > 0 and abs(share - wanted) < 0.06, (name, share, wanted)
    assert len(report["shares"]) == sum(1 for length in report["time"].values() if length > 0)
    assert "asked to wait 2.0 s" in report["account"], report["account"]


def jumps_are_told(pages):
    """Where the clock was set, the length is the true one and the page says why it looks longer."""
    report = probe(pages["jump"], 1280, """
      report.row = document.querySelector("#jobs tr").textContent;
      document.querySelector("#jobs tr").click();
      report.told = byId("detail").textContent;""")
    assert "4.9 s" in report["row"], report
    assert "The clock was set forward by " in report["told"], report


def failures_are_named(pages):
    """What failed first names companion and event, is a link, and a click opens the failing lines."""
    report = probe(pages["refusal"], 1280, """
      const row = document.querySelector("#jobs tr");
      report.row = row.textContent;
      row.click();
      report.marked = document.querySelector("#detail mark")?.textContent;
      report.heading = byId("detail").textContent;
      report.account = byId("account").textContent;
      report.current = document.querySelector("#detail [aria-current]")?.textContent;
      const lines = document.querySelector("#detail pre");
      const mark = lines.querySelector("mark");
      report.seen = mark.offsetTop - lines.offsetTop - lines.scrollTop;
      report.height = lines.clientHeight;""")
    told = "DRAL PAGE: The companion stopped the job (PAGE 81 answered NOPRINT), line "
    assert told in report["row"], report["row"]
    assert "VOKSendDralMsg" in report["marked"], report["marked"]
    assert "NOPRINT" in report["account"] and "NOPRINT" in report["current"], report
    assert 0 <= report["seen"] < report["height"], report


def links_lead_somewhere(pages):
    """Every reference is a link to a text in the page itself."""
    for page in pages.values():
        report = probe(page, 1280, """
          document.querySelectorAll("#jobs tr").forEach((row) => row.click());
          const links = [...document.querySelectorAll("a")];
          report.links = links.length;
          report.dead = links.filter((link) => !link.getAttribute("href").startsWith("#")
            || !byId(link.getAttribute("href").slice(1))).map((link) => link.href);
          report.unlinked = document.body.innerText.includes("troubleshooting.md#");
          report.failed = data.jobs.filter((job) => job.failure).length;
          const text = links[0] && byId(links[0].getAttribute("href").slice(1)).textContent;
          report.cure = text === undefined || text.includes("What to do:");""")
        assert report["dead"] == [] and not report["unlinked"] and report["cure"], report
        assert report["links"] >= report["failed"], report


def keys_reach_every_event(pages):
    """From the first event to the last by the keyboard, each told and framed where it is painted."""
    report = probe(pages["crowd"], 1280, """
      report.focusable = picture.tabIndex === 0;
      picture.focus();
      const events = model.order.flatMap((job) => job.items);
      report.wanted = events.length;
      const told = new Set();
      report.unframed = 0;
      for (let i = 0; i < events.length; ++i) {
        press("ArrowRight");
        told.add(byId("account").textContent);
        repaint();
        const box = boxOf(view.at.job, view.at.item);
        if (!painted.some((one) => one.kind === "frame" && within(box, one))) ++report.unframed;
        if (view.at.item !== events[i]) report.errors.push("not in order at " + i);
      }
      report.told = told.size;
      const last = byId("account").textContent;
      press("ArrowRight");
      report.stays = byId("account").textContent === last;
      press("Home");
      press("ArrowDown");
      report.second = byId("account").textContent;
      press("n");
      report.problem = byId("account").textContent;
      press("Enter");
      report.zoomed = (view.end - view.start) / (view.at.job.until - view.at.job.start);
      press("Escape");
      report.closed = byId("detail").hidden;
      document.querySelector("#jobs button").focus();
      report.inList = document.activeElement.tagName;
      document.activeElement.click();
      report.events = document.querySelectorAll("#detail tbody button").length;
      document.querySelectorAll("#detail tbody button")[2].click();
      report.stillThere = document.activeElement === document.querySelectorAll("#detail tbody button")[2];""")
    assert report["focusable"] and report["told"] == report["wanted"] > 100, report
    assert report["unframed"] == 0 and report["stays"] and report["closed"], report
    assert report["second"].startswith("Job 4, Printer 0") and "NOPRINT" in report["problem"], report
    assert report["zoomed"] < 1.5 and report["events"] == 11 and report["stillThere"], report


def list_is_sorted(pages):
    """By each column, both ways, and the column says so."""
    report = probe(pages["crowd"], 1280, """
      report.sorted = {};
      for (const name of ["Job", "Result", "What failed first", "Printer", "Began", "Took", "Pages"]) {
        const find = () => [...document.querySelectorAll("th")].find((head) => head.textContent === name);
        const index = [...find().parentNode.children].indexOf(find());
        const column = () => [...document.querySelectorAll("#jobs tr")].map((row) => row.children[index].textContent);
        find().querySelector("button").click();
        const first = [find().ariaSort, column()];
        find().querySelector("button").click();
        report.sorted[name] = [first, [find().ariaSort, column()]];
      }
      report.one = [...document.querySelectorAll("th")].filter((head) => head.ariaSort !== "none").length;""")
    assert report["one"] == 1, report
    for name, ways in report["sorted"].items():
        assert {way[0] for way in ways} == {"ascending", "descending"}, (name, ways)
        for direction, texts in ways:
            keys = [int(text) if name in ("Job", "Pages") else text.removeprefix("✕ ").partition(", line")[0] for text in texts]
            filled = [key for key in keys if key != ""]
            assert keys[:len(filled)] == filled, (name, "what is empty comes last")
            if name == "Took":
                continue
            assert filled == sorted(filled, reverse=direction == "descending"), (name, direction, texts)
    assert report["sorted"]["Printer"][0][1] != report["sorted"]["Printer"][1][1], report


def filter_finds_and_tells(pages):
    """Answers and log lines are found, and it is said when nothing is."""
    report = probe(pages["crowd"], 1280, """
      report.counts = {};
      for (const text of ["NOPRINT", "closejob", "tid=0005", "no such thing", ""]) {
        type(text);
        report.counts[text] = [model.shown.length, byId("found").textContent];
      }""")
    assert report["counts"] == {
        "NOPRINT": [3, "3 of 12 jobs with “NOPRINT”."],
        "closejob": [12, "12 of 12 jobs with “closejob”."],
        "tid=0005": [1, "1 of 12 jobs with “tid=0005”."],
        "no such thing": [0, "No job with “no such thing”. Clear the filter to see all 12."],
        "": [12, ""]}, report


def linear(value):
    value /= 255
    return value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4


def luminance(colour):
    return sum(part * linear(value) for part, value in zip((0.2126, 0.7152, 0.0722), colour))


def contrast(one, other):
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


# Of all eyes, those without one kind of cones, in linear light (Viénot and others, 1999).
DEUTERANOPIA = ((0.29275, 0.70725, 0), (0.29275, 0.70725, 0), (-0.02234, 0.02234, 1))
PROTANOPIA = ((0.11238, 0.88762, 0), (0.11238, 0.88762, 0), (0.00401, -0.00401, 1))


def seen_by(eye, colour):
    parts = [linear(value) for value in colour]
    seen = [max(0, sum(a * b for a, b in zip(row, parts))) for row in eye]
    return [value ** (1 / 2.2) for value in seen]


def colours_are_told_apart(pages):
    """Texts and marks stand out from their ground, answers from each other for every eye."""
    for scheme in (LIGHT, DARK):
        names = ["page", "panel", "ink", "soft", "job", "launch", "yes", "wait", "wait-text", "no"]
        colours = probe(pages["crowd"], 420, f"""
          for (const name of {names}) report[name] = rgb(name);""", scheme)
        for text in ("ink", "soft", "no", "wait-text"):
            for ground in ("panel", "page"):
                assert contrast(colours[text], colours[ground]) >= 4.5, (scheme, text, ground)
        for mark in ("launch", "yes", "no"):
            assert contrast(colours[mark], colours["job"]) >= 3, (scheme, mark)
        for eye in (DEUTERANOPIA, PROTANOPIA):
            for one, other in combinations(("yes", "wait", "no"), 2):
                seen = (seen_by(eye, colours[one]), seen_by(eye, colours[other]))
                distance = sum((a - b) ** 2 for a, b in zip(*seen)) ** 0.5
                assert distance > 0.25, (scheme, one, other, distance)


def main():
    reader, work = sys.argv[1], Path(sys.argv[2])
    work.mkdir(parents=True, exist_ok=True)
    work = work.resolve()
    pages = {make.__name__: make_page(reader, work, make.__name__,
                                      make(work / f"{make.__name__}.log"))
             for make in (page_logs.crowd, page_logs.waits, page_logs.hang, page_logs.mixed, page_logs.refusal,
                          page_logs.jump, page_logs.dense)}
    failures = 0
    for check in (texts_have_room, lanes_stand_apart, refusals_are_red, waits_are_waits,
                  silence_has_width, silence_goes_on, gaps_say_how_much, mixed_jobs_are_marked,
                  time_is_split, jumps_are_told, failures_are_named, links_lead_somewhere,
                  keys_reach_every_event, list_is_sorted, filter_finds_and_tells,
                  colours_are_told_apart):
        try:
            check(pages)
            print(f"ok      {check.__name__}")
        except AssertionError as error:
            failures += 1
            print(f"FAILED  {check.__name__}: {str(error)[:2000]}")
    sys.exit(1 if failures else 0)


main()
