"use strict";
// The page around the picture: counts, lists, details, and what the user does.

const firstRows = 200;

function element(name, text, className) {
  const made = document.createElement(name);
  if (text !== undefined) made.textContent = text;
  if (className) made.className = className;
  return made;
}

function fillHeader() {
  byId("files").textContent = data.files.join(", ");
  const summary = data.summary;
  const facts = [["jobs", summary.jobs], ["with problems", summary.jobsWithProblems],
    ["with warnings", summary.jobsWithWarnings], ["pages", summary.pages],
    ["lines", summary.lines.lines], ["torn", summary.lines.torn], ["foreign", summary.lines.foreign]];
  for (const [name, count] of facts) {
    const item = element("li");
    item.append(element("b", grouped(count)), " " + name);
    byId("counts").append(item);
  }
  const timeless = data.clock ? data.jobs.filter((job) => !job.timed).length : 0;
  const left = `${grouped(timeless)} jobs without a clock are in the list and not in the picture.`;
  byId("limit").textContent = data.limit + (timeless > 0 ? " " + left : "");
}

function fillFindings() {
  if (data.summary.findings.length === 0) byId("findings").append(element("li", "Nothing."));
  for (const found of data.summary.findings) {
    const item = element("li");
    item.append(element("strong", `${found.weight}: ${found.title}`, found.weight), " ",
      element("code", found.message));
    item.append(element("p", `${grouped(found.times)} times; first failure of ` +
      `${grouped(found.firstFailureOf)} jobs. ${found.meaning}`), element("p", found.action));
    const page = element("p");
    page.append(element("code", found.page));
    item.append(page);
    byId("findings").append(item);
  }
}

function rowOf(job) {
  const row = element("tr");
  row.tabIndex = 0;
  const took = job.durationMs === null ? "–" : duration(job.durationMs);
  const failure = job.failure ? `${job.failure.title}, line ${job.failure.line}` : "";
  const cells = [job.job, job.timed ? clock(job.start) : `line ${job.firstLine}`, took, job.printer, job.pages, job.result];
  for (const text of cells) row.append(element("td", String(text)));
  row.append(element("td", failure, job.weight));
  const open = () => {
    keep({ job, event: null });
    if (job.timed === data.clock) showJob(job);
    picture.scrollIntoView({ block: "nearest" });
  };
  row.addEventListener("click", open);
  row.addEventListener("keydown", (event) => {
    if (event.key === "Enter") open();
  });
  return row;
}

function fillJobs(limit) {
  const rows = [...model.shown].sort((a, b) => a.job - b.job);
  byId("jobs").replaceChildren(...rows.slice(0, limit).map(rowOf));
  const left = rows.length - limit;
  byId("more").replaceChildren();
  if (left > 0) {
    const button = element("button", `Show ${grouped(left)} more`);
    button.type = "button";
    button.addEventListener("click", () => fillJobs(rows.length));
    byId("more").append(button);
  }
}

function showDetail(hit) {
  const panel = byId("detail");
  if (!hit) {
    panel.replaceChildren(element("p", "Point at a job or an event to see its log lines; click to keep them.", "hint"));
    return;
  }
  const { job, event } = hit;
  const heading = `Job ${job.job}, ${job.printer || "unknown printer"}: ${job.result}`;
  const facts = `${job.timed ? clock(job.start) + ", " : ""}${duration(job.durationMs)}, DRAL ${job.dral}, NEMB ${job.nemb}, ` +
    `lines ${job.firstLine} to ${job.lastLine} of ${data.files[job.file]}`;
  panel.replaceChildren(element("h2", heading), element("p", facts, "hint"));
  if (event) panel.append(element("p", eventTitle(event)));
  if (job.failure) {
    panel.append(element("p", `${job.failure.title} (${job.failure.page}), line ${job.failure.line}`, job.weight));
  }
  const text = element("pre");
  const range = event || { firstLine: Infinity, lastLine: -Infinity };
  for (const line of linesOf(job, range.firstLine, range.lastLine)) {
    text.append(element(line.marked ? "mark" : "span", `${String(line.number).padStart(8)}  ${line.text}\n`));
  }
  panel.append(text);
  if (job.linesOmitted > 0) {
    panel.append(element("p", `${grouped(job.linesOmitted)} lines in the middle are left out.`, "hint"));
  }
  const marked = text.querySelector("mark");
  if (marked) text.scrollTop = marked.offsetTop - text.offsetTop - 40;
}

function keep(hit) {
  view.kept = hit;
  showDetail(hit);
  draw();
}

function select() {
  model.select(byId("filter").value, byId("only-problems").checked);
  view.start = model.full.start;
  view.end = model.full.end;
  fillJobs(firstRows);
  draw();
}

const positionIn = (canvas, event) => {
  const box = canvas.getBoundingClientRect();
  return { x: event.clientX - box.left, y: event.clientY - box.top };
};

function pointerMoved(event) {
  const before = view.pointers.get(event.pointerId);
  const now = positionIn(picture, event);
  if (!before) {
    if (!view.kept) showDetail(hitAt(now.x, now.y));
    return;
  }
  view.pointers.set(event.pointerId,
    { ...now, from: before.from, moved: before.moved || Math.abs(now.x - before.from) > 3 });
  if (view.pointers.size === 2) {
    const other = [...view.pointers].find(([id]) => id !== event.pointerId)[1];
    const middle = timeAt((now.x + other.x) / 2, picture.clientWidth);
    zoom(Math.abs(before.x - other.x) / Math.max(1, Math.abs(now.x - other.x)), middle);
  } else {
    move((before.x - now.x) / picture.clientWidth);
  }
}

function pointerUp(event) {
  const pointer = view.pointers.get(event.pointerId);
  view.pointers.delete(event.pointerId);
  if (pointer && !pointer.moved) keep(hitAt(pointer.x, pointer.y));
}

function connect() {
  picture.addEventListener("wheel", (event) => {
    event.preventDefault();
    if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
      move(event.deltaX / picture.clientWidth);
      return;
    }
    zoom(event.deltaY > 0 ? 1.25 : 0.8, timeAt(positionIn(picture, event).x, picture.clientWidth));
  }, { passive: false });
  picture.addEventListener("pointerdown", (event) => {
    picture.setPointerCapture(event.pointerId);
    const at = positionIn(picture, event);
    view.pointers.set(event.pointerId, { ...at, from: at.x, moved: false });
  });
  picture.addEventListener("pointermove", pointerMoved);
  picture.addEventListener("pointerup", pointerUp);
  picture.addEventListener("pointercancel", (event) => view.pointers.delete(event.pointerId));
  strip.addEventListener("click", (event) => {
    const share = positionIn(strip, event).x / strip.clientWidth;
    const time = model.full.start + share * (model.full.end - model.full.start);
    place(time - (view.end - view.start) / 2, view.end - view.start);
  });
  const keys = { "+": () => zoom(0.67, centre()), "-": () => zoom(1.5, centre()), "0": showAll,
    ArrowLeft: () => move(-0.2), ArrowRight: () => move(0.2), Escape: () => keep(null) };
  picture.addEventListener("keydown", (event) => {
    if (!keys[event.key]) return;
    event.preventDefault();
    keys[event.key]();
  });
  byId("zoom-in").addEventListener("click", keys["+"]);
  byId("zoom-out").addEventListener("click", keys["-"]);
  byId("zoom-all").addEventListener("click", showAll);
  byId("only-problems").addEventListener("change", select);
  byId("filter").addEventListener("input", select);
  scroller.addEventListener("scroll", draw);
  window.addEventListener("resize", draw);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", draw);
}

fillHeader();
fillFindings();
connect();
select();
