"use strict";
// The page around the picture: counts, lists and details.

const firstRows = 200;
const list = { column: "Job", down: false, limit: firstRows };

function element(name, text, className) {
  const made = document.createElement(name);
  if (text !== undefined) made.textContent = text;
  if (className) made.className = className;
  return made;
}

function button(text, action) {
  const made = element("button", text);
  made.type = "button";
  made.addEventListener("click", action);
  return made;
}

// The text of the troubleshooting page is in this one: a link needs no other file.
function linkTo(message, text) {
  const link = element("a", text);
  link.href = "#" + message;
  link.addEventListener("click", (event) => event.stopPropagation());
  return link;
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
    item.id = found.message;
    item.tabIndex = -1;
    const heading = element("h3", `${found.weight}: ${found.title} `, found.weight);
    heading.append(element("code", found.message));
    item.append(heading, element("p", `${many(found.times, "time")}; first failure of ` +
      `${many(found.firstFailureOf, "job")}.`, "hint"), element("p", found.meaning));
    const action = element("p", found.action);
    action.prepend(element("b", "What to do: "));
    item.append(action);
    byId("findings").append(item);
  }
}

const fileName = (job) => (data.files[job.file] || "").split(/[\\/]/).pop();
const began = (job) => job.timed ? clock(job.start) : `line ${job.firstLine}`;
const columns = [
  { name: "Job", key: (job) => job.job },
  { name: "Result", key: (job) => job.resultText, text: resultCell },
  { name: "What failed first", key: failureText, text: failureCell },
  { name: "Printer", key: (job) => job.printer },
  { name: "Began", key: (job) => job.timed ? job.start : job.firstLine, text: began, kind: "short" },
  { name: "Took", key: (job) => job.took, text: tookCell, kind: "number" },
  { name: "Pages", key: (job) => job.pages, kind: "number" },
  { name: "File", key: fileName },
].filter((column) => column.name !== "File" || data.files.length > 1);

function failureCell(job) {
  if (!job.failure) return "";
  const text = failureText(job);
  const cell = element("span", text.slice(0, text.length - job.failure.title.length), job.weight);
  cell.append(linkTo(job.failure.message, job.failure.title), `, line ${grouped(job.failure.line)}`);
  return cell;
}

function resultCell(job) {
  const cell = element("span", markOf(job), job.weight);
  cell.append(job.resultText);
  return cell;
}

// Where the time went, in the words of the table.
const phases = { launchMs: "launch", startupMs: "start-up", dralMs: "DRAL", nembMs: "NEMB",
  waitMs: "asked to wait", pausesMs: "the library's pauses", hostMs: "between the calls" };

function splitParts(job) {
  return Object.entries(job.time || {}).filter(([name, length]) => length > 0 && phases[name])
    .map(([name, length]) => ({ name, length, text: `${phases[name]} ${duration(length)}` }));
}

function splitBar(job) {
  const bar = element("span", undefined, "split");
  const parts = splitParts(job);
  Object.assign(bar, { role: "img", ariaLabel: parts.map((part) => part.text).join(", ") });
  for (const { name, length, text } of parts) {
    const part = element("i", undefined, name);
    part.style.flex = `${length} 0 0`;
    part.title = text;
    bar.append(part);
  }
  return bar;
}

function tookCell(job) {
  const cell = element("span", tookText(job));
  if (job.time) cell.append(splitBar(job));
  return cell;
}

function splitAccount(job) {
  const account = element("p");
  for (const { name, text } of splitParts(job)) {
    const part = element("span", undefined, "part");
    part.append(element("i", undefined, name), text);
    account.append(part, " ");
  }
  return account;
}

function rowOf(job) {
  const row = element("tr");
  for (const column of columns) {
    const cell = element("td", undefined, column.kind);
    const content = column.text ? column.text(job) : column.key(job);
    cell.append(column.name === "Job" ? button(content, () => {}) : content);
    row.append(cell);
  }
  row.addEventListener("click", () => choose(job, failingItem(job), true));
  return row;
}

function compare(a, b) {
  if (a === null || b === null || a === "" || b === "") return (a === null || a === "") - (b === null || b === "");
  const order = typeof a === "string" ? a.localeCompare(b, "en", { numeric: true }) : a - b;
  return list.down ? -order : order;
}

// What has no value comes last, whichever way is sorted.
function sortedJobs() {
  const { key } = columns.find((column) => column.name === list.column);
  return model.shown.map((job) => ({ job, value: key(job) }))
    .sort((a, b) => compare(a.value, b.value) || a.job.job - b.job.job).map((one) => one.job);
}

function fillHeads() {
  for (const column of columns) {
    const head = element("th", undefined, column.kind);
    head.scope = "col";
    head.append(button(column.name, () => {
      list.down = list.column === column.name && !list.down;
      list.column = column.name;
      fillJobs(list.limit);
    }));
    byId("heads").append(head);
  }
}

function fillJobs(limit) {
  list.limit = limit;
  [...byId("heads").children].forEach((head, i) => {
    const sorted = columns[i].name === list.column;
    head.ariaSort = sorted ? (list.down ? "descending" : "ascending") : "none";
  });
  byId("jobs").replaceChildren(...sortedJobs().slice(0, limit).map(rowOf));
  const left = model.shown.length - limit;
  byId("more").replaceChildren();
  if (left > 0) byId("more").append(button(`Show ${grouped(left)} more`, () => fillJobs(model.shown.length)));
}

function eventRow(job, item) {
  const row = element("tr");
  const chosen = item === view.at.item;
  if (chosen) row.ariaCurrent = "true";
  const first = element("td");
  first.append(button(itemName(item), () => {
    choose(job, item);
    byId("detail").querySelector("[aria-current] button").focus();
  }));
  const waited = item.until > item.end ? duration(item.until - item.end) : "";
  row.append(element("td", data.clock ? "+" + duration(item.start - job.start) : "", "number"), first,
    element("td", itemAnswer(item), item.kind === "no" || item.kind === "open" ? "problem" : ""),
    element("td", duration(item.kind === "launch" ? item.end - item.start : item.answerMs), "number"),
    element("td", waited, "number"), element("td", grouped(item.firstLine), "number"));
  return row;
}

function eventTable(job) {
  const table = element("table");
  const head = element("tr");
  for (const name of ["At", "Event", "Answer", "After", "Waited", "Line"]) {
    head.append(element("th", name, name === "Event" || name === "Answer" ? "" : "number"));
  }
  const body = element("tbody");
  body.append(...job.items.map((item) => eventRow(job, item)));
  table.createTHead().append(head);
  table.append(body);
  return table;
}

function logLines(job, item) {
  const text = element("pre");
  text.tabIndex = 0;
  text.ariaLabel = "Log lines";
  let before = job.lines.length > 0 ? job.lines[0][0] : 0;
  for (const [number, line] of job.lines) {
    const left = job.linesOmitted > 0 && number > before + 1;
    if (left) text.append(element("span", "       …  lines of other jobs, or left out here\n", "hint"));
    const marked = item && number >= item.firstLine && number <= item.lastLine;
    text.append(element(marked ? "mark" : "span", `${String(number).padStart(8)}  ${line}\n`));
    before = number;
  }
  return text;
}

function scrollToMark(box, selector) {
  const mark = box.querySelector(selector);
  if (mark) box.scrollTop = mark.offsetTop - box.offsetTop - 60;
}

function showDetail() {
  const panel = byId("detail");
  panel.replaceChildren();
  panel.hidden = !view.at;
  if (!view.at) return;
  const { job, item } = view.at;
  panel.append(element("h2", `Job ${job.job}, ${job.printer || "unknown printer"}: ${job.resultText}`));
  panel.append(element("p", `${job.timed ? clock(job.start) + ", " : ""}${tookText(job)}, DRAL ${job.dral}, ` +
    `NEMB ${job.nemb}, lines ${grouped(job.firstLine)} to ${grouped(job.lastLine)} of ${data.files[job.file]}`, "hint"));
  const failure = element("p", "What failed first: ");
  failure.append(failureCell(job));
  if (job.failure) panel.append(failure);
  if (job.jump) {
    panel.append(element("p", `The clock was set ${job.jump.ms < 0 ? "back" : "forward"} by ` +
      `${duration(Math.abs(job.jump.ms))} before line ${grouped(job.jump.line)}. ` +
      "The picture goes by the clock, lengths by the tick counts.", "warning"));
  }
  if (job.time) panel.append(splitBar(job), splitAccount(job));
  const parts = element("div", undefined, "parts");
  const events = element("div", undefined, "events");
  events.append(eventTable(job));
  const lines = logLines(job, item);
  parts.append(events, lines);
  panel.append(parts);
  if (job.linesOmitted > 0) {
    panel.append(element("p", `${many(job.linesOmitted, "line")} of the job are left out here.`, "hint"));
  }
  scrollToMark(events, "[aria-current]");
  scrollToMark(lines, "mark");
}

// One sentence of what is chosen or pointed at; it is also what a screen reader says.
function account({ job, item }) {
  const whole = `Job ${job.job}, ${job.printer || "unknown printer"}: ${job.resultText}, ${tookText(job)}`;
  if (!item) return `${whole}. ${failureText(job)}`;
  const lines = item.gap ? "" : `, lines ${grouped(item.firstLine)} to ${grouped(item.lastLine)}`;
  return `Job ${job.job}, ${job.printer || "unknown printer"}, event ${job.items.indexOf(item) + 1} of ` +
    `${job.items.length}. ${itemTitle(item, job)}. ${clock(item.start, false)}${data.clock ? lines : ""}`;
}

function choose(job, item, zoomed = false) {
  view.at = job ? { job, item } : null;
  byId("account").textContent = job ? account(view.at) : byId("account").dataset.hint;
  showDetail();
  if (job && job.timed === data.clock) {
    if (zoomed) showJob(job);
    reveal(view.at);
  } else {
    draw();
  }
}

function found() {
  const text = byId("filter").value.trim();
  if (!text && !byId("only-problems").checked) return "";
  const count = model.shown.length;
  const which = text ? ` with “${text}”` : "";
  const left = text && data.jobs.some((job) => job.linesOmitted > 0) ? " Lines that are not in this page are not searched." : "";
  return (count === 0 ? `No job${which}. Clear the filter to see all ${grouped(data.jobs.length)}.`
    : `${grouped(count)} of ${many(data.jobs.length, "job")}${which}.`) + left;
}

function select() {
  model.select(byId("filter").value, byId("only-problems").checked);
  Object.assign(view, { start: model.full.start, end: model.full.end });
  byId("found").textContent = found();
  fillJobs(firstRows);
  draw();
}
