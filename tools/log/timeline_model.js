"use strict";  // of all parts, of which this one comes first
// What the page shows: the jobs, their lanes, and texts for both. No drawing here.

const data = JSON.parse(document.getElementById("data").textContent);
const byId = (id) => document.getElementById(id);
const laneHead = 24;
const rowHeight = 62;

const grouped = (number) => String(number).replace(/\B(?=(\d{3})+$)/g, ",");
const many = (count, noun) => `${grouped(count)} ${noun}${count === 1 ? "" : "s"}`;

// Times are the writer's local ones, kept as if they were UTC; without a clock they are lines.
function clock(time, withDay = true) {
  if (!data.clock) return "line " + grouped(Math.round(time));
  const text = new Date(Math.round(time)).toISOString();
  return (withDay ? text.slice(0, 10).replaceAll("-", "/") + " " : "") + text.slice(11, 23);
}

function duration(length) {
  if (length === null || length === undefined) return "–";
  if (!data.clock) return many(Math.round(length), "line");
  if (length < 1000) return Math.round(length) + " ms";
  if (length < 60000) return (length / 1000).toFixed(1) + " s";
  const seconds = Math.round(length / 1000);
  if (seconds < 3600) return `${Math.floor(seconds / 60)} min ${seconds % 60} s`;
  return `${Math.floor(seconds / 3600)} h ${Math.floor(seconds / 60) % 60} min`;
}

// Distances of the axis' marks, in milliseconds (or lines).
const clockSteps = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 1e4, 2e4, 3e4, 6e4, 12e4, 3e5, 6e5,
  18e5, 36e5, 72e5, 216e5, 432e5, 864e5, 6048e5, 2592e6, 31536e6];
const axisStep = (span, marks) => clockSteps.find((step) => span / step <= marks) || span / marks;

// From what may be painted over to what may not.
const severity = ["launch", "gap", "other", "yes", "wait", "open", "no"];

function kindOf(event) {
  if (event.gap) return "gap";
  if (event.delivery === "no answer" || event.delivery === "open") return "open";
  if (event.delivery === "undelivered" || event.reply === "NOPRINT") return "no";
  if (event.reply === "WAITPRINT") return "wait";
  return event.reply === "YESPRINT" ? "yes" : "other";
}

// A wait lasts until the next call, and so does a call without an answer.
function prepareJob(job) {
  const defaults = { printer: "", pages: 0, file: 0, durationMs: null, failure: null, launch: null, resultText: job.result };
  for (const [name, value] of Object.entries(defaults)) job[name] ??= value;
  job.until = job.end + (data.clock && job.silentMs || 0);
  job.took = job.durationMs === null ? null : job.durationMs + (job.silentMs || 0);
  job.items = job.launch ? [job.launch, ...job.events] : job.events;
  let next = job.until;
  for (const item of [...job.items].reverse()) {
    const [start, end] = [item.start + job.start, item.end + job.start];
    const kind = item === job.launch ? "launch" : kindOf(item);
    const lasts = kind === "wait" || kind === "open";
    Object.assign(item, { start, end, kind, until: lasts ? Math.max(next, end) : end });
    next = start;
  }
  const line = job.failure ? job.failure.line : -1;
  job.failing = job.items.findIndex((item) => !item.gap && item.firstLine <= line && line <= item.lastLine);
}

const jobName = (job) => `Job ${job.job}, ${job.printer || "unknown printer"}`;

const failingItem = (job) => job.items[job.failing] || null;

function itemName(item) {
  if (item.kind === "launch") return "launch";
  if (item.kind === "gap") return many(item.events, "event") + " left out";
  return `${item.companion} ${item.event}`;
}

function itemAnswer(item) {
  if (item.kind === "launch") return item.result;
  if (item.kind === "gap") return item.waits > 0 ? many(item.waits, "WAITPRINT") : "";
  return item.reply || item.delivery;
}

function itemTitle(item, job) {
  const time = item.answerMs === null || item.answerMs === undefined ? "" : " after " + duration(item.answerMs);
  const rest = item.until > item.end ? duration(item.until - item.end) : "";
  const then = { wait: ", then waited ", open: " for " }[item.kind];
  const last = item.until === job.until && item.kind === "open" ? ", until the log tells no more" : "";
  const answer = itemAnswer(item);
  return itemName(item) + (answer ? ": " + answer : "") + time + (rest ? then + rest + last : "");
}

// Before, in and behind the link to its explanation. What no companion did is named after none.
function failureParts(job) {
  if (!job.failure) return ["", "", ""];
  const { companion, title, detail } = job.failure;
  const where = companion && failingItem(job) ? itemName(failingItem(job)) : companion;
  return [where ? where + ": " : "", title, detail ? ` (${detail})` : ""];
}

const failureText = (job) => failureParts(job).join("");

const tookText = (job) => duration(job.took) + (job.result === "open" && job.took !== null ? "+" : "");

// Told apart by more than their colour; no blank is a place to break the line.
const markOf = (job) => job.result === "mixed" ? "≈\u00a0" : { problem: "✕\u00a0", warning: "!\u00a0" }[job.weight] || "";

// The jobs of a printer that run at the same time stand in different rows.
function packRows(jobs) {
  const last = [];
  for (const job of jobs) {
    let row = last.findIndex((one) => one.until < job.start);
    if (row < 0) row = last.length;
    if (last[row]) last[row].next = job;
    last[row] = job;
    Object.assign(job, { row, next: null });
  }
  return last.length;
}

// A lane for each printer, in the order of their first jobs.
function packLanes(jobs) {
  const lanes = new Map();
  for (const job of [...jobs].sort((a, b) => a.start - b.start || a.job - b.job)) {
    if (!lanes.has(job.printer)) lanes.set(job.printer, { printer: job.printer || "unknown printer", jobs: [] });
    lanes.get(job.printer).jobs.push(job);
  }
  let y = 0;
  for (const lane of lanes.values()) {
    lane.rows = packRows(lane.jobs);
    lane.y = y;
    for (const job of lane.jobs) job.y = y + laneHead + job.row * rowHeight;
    y += laneHead + lane.rows * rowHeight;
  }
  return { lanes: [...lanes.values()], height: y };
}

function searchable(job) {
  job.text ??= [job.job, job.printer, job.resultText, job.failure ? job.failure.message : "", failureText(job),
    ...job.items.map((item) => itemTitle(item, job)), ...job.lines.map((line) => line[1])].join("\n").toLowerCase();
  return job.text;
}

const matches = (job, text, onlyProblems) =>
  (!onlyProblems || job.weight === "problem") && (!text || searchable(job).includes(text));

const model = {
  shown: [],  // in the list
  order: [],  // in the picture, as the keys go; where others have a time, jobs without one have no place
  lanes: [],
  height: 0,
  full: { start: 0, end: 1 },
  select(text, onlyProblems) {
    this.shown = data.jobs.filter((job) => matches(job, text.trim().toLowerCase(), onlyProblems));
    const hasPlace = (job) => job.timed === data.clock;
    Object.assign(this, packLanes(this.shown.filter(hasPlace)));
    this.order = this.lanes.flatMap((lane) => lane.jobs);
    const jobs = this.order.length > 0 ? this.order : data.jobs.filter(hasPlace);
    if (jobs.length === 0) return;
    const start = jobs.reduce((least, job) => Math.min(least, job.start), Infinity);
    const end = jobs.reduce((most, job) => Math.max(most, job.until), -Infinity);
    const margin = Math.max((end - start) * 0.01, 1);
    this.full = { start: start - margin, end: end + margin };
  },
};

data.jobs.forEach(prepareJob);
