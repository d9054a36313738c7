"use strict";
// What the page shows: the jobs, their rows, and texts for both. No drawing here.

const data = JSON.parse(document.getElementById("data").textContent);
const byId = (id) => document.getElementById(id);

function grouped(number) {
  return String(number).replace(/\B(?=(\d{3})+$)/g, ",");
}

function two(number) {
  return String(number).padStart(2, "0");
}

// Times are the writer's local ones, kept as if they were UTC; without a clock they are lines.
function clock(time, withDay = true) {
  if (!data.clock) return "line " + grouped(Math.round(time));
  const date = new Date(time);
  const day = `${date.getUTCFullYear()}/${two(date.getUTCMonth() + 1)}/${two(date.getUTCDate())} `;
  return (withDay ? day : "") +
    `${two(date.getUTCHours())}:${two(date.getUTCMinutes())}:${two(date.getUTCSeconds())}.` +
    String(date.getUTCMilliseconds()).padStart(3, "0");
}

function duration(length) {
  if (length === null || length === undefined) return "–";
  if (!data.clock) return grouped(Math.round(length)) + " lines";
  if (length < 1000) return Math.round(length) + " ms";
  if (length < 60000) return (length / 1000).toFixed(1) + " s";
  if (length < 3600000) return `${Math.floor(length / 60000)} min ${Math.floor(length / 1000) % 60} s`;
  return `${Math.floor(length / 3600000)} h ${Math.floor(length / 60000) % 60} min`;
}

// Distances of the axis' marks, in milliseconds (or lines).
const clockSteps = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 1e4, 2e4, 3e4, 6e4, 12e4, 3e5, 6e5,
  18e5, 36e5, 72e5, 216e5, 432e5, 864e5, 6048e5, 2592e6, 31536e6];

function axisStep(span, marks) {
  return clockSteps.find((step) => span / step <= marks) || span / marks;
}

// Jobs that run at the same time stand in different rows.
function packRows(jobs) {
  const ends = [];
  const sorted = [...jobs].sort((a, b) => a.start - b.start || a.job - b.job);
  for (const job of sorted) {
    let row = ends.findIndex((end) => end < job.start);
    if (row < 0) row = ends.length;
    ends[row] = Math.max(job.end, job.start);
    job.row = row;
  }
  return ends.length;
}

function matches(job, text, onlyProblems) {
  if (onlyProblems && job.weight !== "problem") return false;
  if (!text) return true;
  const failure = job.failure ? job.failure.message + " " + job.failure.title : "";
  return `${job.job} ${job.printer} ${job.result} ${failure}`.toLowerCase().includes(text);
}

// How an event is painted: what became of it.
function colourOf(event) {
  if (event.delivery === "undelivered" || event.delivery === "no answer") return "--no";
  if (event.reply === "NOPRINT") return "--no";
  if (event.reply === "WAITPRINT") return "--wait";
  return event.reply === "YESPRINT" ? "--yes" : "--other";
}

function eventTitle(event) {
  const answer = event.reply || event.delivery;
  const time = event.answerMs === null ? "" : ` after ${duration(event.answerMs)}`;
  return `${event.companion} ${event.event}: ${answer}${time}`;
}

function linesOf(job, first, last) {
  return job.lines.map(([number, text]) => ({
    number, text, marked: number >= first && number <= last,
  }));
}

const model = {
  shown: [],  // in the list
  drawn: [],  // in the picture: where others have a time, jobs without one have no place
  rows: 0,
  full: { start: 0, end: 1 },
  select(text, onlyProblems) {
    this.shown = data.jobs.filter((job) => matches(job, text.trim().toLowerCase(), onlyProblems));
    const hasPlace = (job) => job.timed === data.clock;
    this.drawn = this.shown.filter(hasPlace);
    this.rows = packRows(this.drawn);
    const jobs = this.drawn.length > 0 ? this.drawn : data.jobs.filter(hasPlace);
    if (jobs.length === 0) return;
    const start = jobs.reduce((least, job) => Math.min(least, job.start), Infinity);
    const end = jobs.reduce((most, job) => Math.max(most, job.end), -Infinity);
    const margin = Math.max((end - start) * 0.01, 1);
    this.full = { start: start - margin, end: end + margin };
  },
};
