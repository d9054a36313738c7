// The page around the picture: counts, lists and details.

const firstRows = 200;
const list = { column: "Job", down: false, limit: firstRows };

// Of texts and other elements.
function element(name, className, ...content) {
  const made = document.createElement(name);
  if (className) made.className = className;
  made.append(...content);
  return made;
}

function button(text, onclick) {
  return Object.assign(element("button", "", text), { type: "button", onclick });
}

// The text of the troubleshooting page is in this one: a link needs no other file.
function linkTo(message, text) {
  const onclick = (event) => event.stopPropagation();
  return Object.assign(element("a", "", text), { href: "#" + message, onclick });
}

function fillHeader() {
  byId("files").textContent = data.summary.files.join(", ");
  const summary = data.summary;
  const facts = [["jobs", summary.jobs], ["with problems", summary.jobsWithProblems],
    ["with warnings", summary.jobsWithWarnings], ["pages", summary.pages],
    ["lines", summary.lines.lines], ["torn", summary.lines.torn], ["foreign", summary.lines.foreign]];
  byId("counts").append(...facts.map(([name, count]) => element("li", "", element("b", "", grouped(count)), " " + name)));
  const timeless = data.clock ? data.jobs.filter((job) => !job.timed).length : 0;
  const left = `${grouped(timeless)} jobs without a clock are in the list and not in the picture.`;
  byId("limit").textContent = data.limit + (timeless > 0 ? " " + left : "");
}

function fillFindings() {
  const findings = data.summary.findings.map((found) => {
    const heading = element("h3", found.weight, `${found.weight}: ${found.title} `, element("code", "", found.message));
    const mixed = found.inMixedJobs > 0 ? `, ${grouped(found.inMixedJobs)} in jobs that can't be told apart` : "";
    const times = `${many(found.times, "time")}${mixed}; first failure of ${many(found.firstFailureOf, "job")}.`;
    const item = element("li", "", heading, element("p", "hint", times), element("p", "", found.meaning),
      element("p", "", element("b", "", "What to do: "), found.action));
    return Object.assign(item, { id: found.message, tabIndex: -1 });
  });
  byId("findings").append(...(findings.length > 0 ? findings : [element("li", "", "Nothing.")]));
}

function failureCell(job) {
  if (!job.failure) return "";
  const [before, title, detail] = failureParts(job);
  return element("span", job.weight, before, linkTo(job.failure.message, title),
    `${detail}, line ${grouped(job.failure.line)}`);
}

const resultCell = (job) => element("span", job.weight, markOf(job), job.resultText);

// Where the time went, in the words of the table.
const phases = { launchMs: "launch", startupMs: "start-up", dralMs: "DRAL", nembMs: "NEMB",
  waitMs: "asked to wait", pausesMs: "the library's pauses", hostMs: "between the calls" };

function splitParts(job) {
  return Object.entries(job.time || {}).filter(([name, length]) => length > 0 && phases[name])
    .map(([name, length]) => ({ name, length, text: `${phases[name]} ${duration(length)}` }));
}

function splitBar(job) {
  const parts = splitParts(job);
  const bar = element("span", "split", ...parts.map(({ name, length, text }) => {
    const part = Object.assign(element("i", name), { title: text });
    part.style.flex = `${length} 0 0`;
    return part;
  }));
  return Object.assign(bar, { role: "img", ariaLabel: parts.map((part) => part.text).join(", ") });
}

const tookCell = (job) => element("span", "", tookText(job), job.time ? splitBar(job) : "");

const splitAccount = (job) => element("p", "",
  ...splitParts(job).flatMap(({ name, text }) => [element("span", "part", element("i", name), text), " "]));

const fileName = (job) => (data.summary.files[job.file] || "").split(/[\\/]/).pop();
const began = (job) => job.timed ? clock(job.start) : `line ${job.firstLine}`;
const columns = [
  { name: "Job", key: (job) => job.job },
  { name: "Result", key: (job) => job.resultText, text: resultCell },
  { name: "What failed first", key: failureText, text: failureCell },
  { name: "Printer", key: (job) => job.printer },
  { name: "Began", key: (job) => job.timed ? job.start : job.firstLine, text: began, kind: "short" },
  { name: "Took", key: (job) => job.took, text: tookCell, kind: "number" },
  { name: "Pages", key: (job) => job.pages, text: (job) => job.result === "mixed" ? "?" : job.pages, kind: "number" },
  { name: "File", key: fileName },
].filter((column) => column.name !== "File" || data.summary.files.length > 1);

function rowOf(job) {
  const row = element("tr", "", ...columns.map((column) => {
    const content = column.text ? column.text(job) : column.key(job);
    return element("td", column.kind, column.name === "Job" ? button(content, () => {}) : content);
  }));
  row.onclick = () => choose(job, failingItem(job), true);
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
  const sortBy = ({ name }) => {
    list.down = list.column === name && !list.down;
    list.column = name;
    fillJobs(list.limit);
  };
  byId("heads").append(...columns.map((column) =>
    Object.assign(element("th", column.kind, button(column.name, () => sortBy(column))), { scope: "col" })));
}

function fillJobs(limit) {
  list.limit = limit;
  [...byId("heads").children].forEach((head, i) => {
    const sorted = columns[i].name === list.column;
    head.ariaSort = sorted ? (list.down ? "descending" : "ascending") : "none";
  });
  byId("jobs").replaceChildren(...sortedJobs().slice(0, limit).map(rowOf));
  const left = model.shown.length - limit;
  byId("more").replaceChildren(
    ...(left > 0 ? [button(`Show ${grouped(left)} more`, () => fillJobs(model.shown.length))] : []));
}

function eventRow(job, item) {
  const name = button(itemName(item), () => {
    choose(job, item);
    byId("detail").querySelector("[aria-current] button").focus();
  });
  const waited = item.until > item.end ? duration(item.until - item.end) : "";
  const row = element("tr", "", element("td", "number", data.clock ? "+" + duration(item.start - job.start) : ""),
    element("td", "", name),
    element("td", item.kind === "no" || item.kind === "open" ? "problem" : "", itemAnswer(item)),
    element("td", "number", duration(item.kind === "launch" ? item.end - item.start : item.answerMs)),
    element("td", "number", waited), element("td", "number", grouped(item.firstLine)));
  if (item === view.at.item) row.ariaCurrent = "true";
  return row;
}

function eventTable(job) {
  const heads = ["At", "Event", "Answer", "After", "Waited", "Line"]
    .map((name) => element("th", name === "Event" || name === "Answer" ? "" : "number", name));
  return element("table", "", element("thead", "", element("tr", "", ...heads)),
    element("tbody", "", ...job.items.map((item) => eventRow(job, item))));
}

function logLines(job, item) {
  const text = Object.assign(element("pre"), { tabIndex: 0, ariaLabel: "Log lines" });
  let before = job.lines.length > 0 ? job.lines[0][0] : 0;
  for (const [number, line] of job.lines) {
    const left = job.linesOmitted > 0 && number > before + 1;
    if (left) text.append(element("span", "hint", "       …  lines of other jobs, or left out here\n"));
    const marked = item && number >= item.firstLine && number <= item.lastLine;
    text.append(element(marked ? "mark" : "span", "", `${String(number).padStart(8)}  ${line}\n`));
    before = number;
  }
  return text;
}

function scrollToMark(box, selector) {
  const mark = box.querySelector(selector);
  if (mark) box.scrollTop = mark.offsetTop - box.offsetTop - 60;
}

function detailOf(job, events, lines) {
  const parts = [element("h2", "", `${jobName(job)}: ${job.resultText}`),
    element("p", "hint", `${job.timed ? clock(job.start) + ", " : ""}${tookText(job)}, DRAL ${job.dral}, ` +
      `NEMB ${job.nemb}, lines ${grouped(job.firstLine)} to ${grouped(job.lastLine)} of ${data.summary.files[job.file]}`)];
  if (job.failure) parts.push(element("p", "", "What failed first: ", failureCell(job)));
  if (job.jump) {
    parts.push(element("p", "warning", `The clock was set ${job.jump.ms < 0 ? "back" : "forward"} by ` +
      `${duration(Math.abs(job.jump.ms))} before line ${grouped(job.jump.line)}. ` +
      "The picture goes by the clock, lengths by the tick counts."));
  }
  if (job.time) parts.push(splitBar(job), splitAccount(job));
  parts.push(element("div", "parts", events, lines));
  if (job.linesOmitted > 0) {
    parts.push(element("p", "hint", `${many(job.linesOmitted, "line")} of the job are left out here.`));
  }
  return parts;
}

function showDetail() {
  const panel = byId("detail");
  panel.replaceChildren();
  panel.hidden = !view.at;
  if (!view.at) return;
  const { job, item } = view.at;
  const events = element("div", "events", eventTable(job));
  const lines = logLines(job, item);
  panel.append(...detailOf(job, events, lines));
  scrollToMark(events, "[aria-current]");
  scrollToMark(lines, "mark");
}

// One sentence of what is chosen or pointed at; it is also what a screen reader says.
function account({ job, item }) {
  if (!item) return `${jobName(job)}: ${job.resultText}, ${tookText(job)}. ${failureText(job)}`;
  const lines = item.gap ? "" : `, lines ${grouped(item.firstLine)} to ${grouped(item.lastLine)}`;
  return `${jobName(job)}, event ${job.items.indexOf(item) + 1} of ` +
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
