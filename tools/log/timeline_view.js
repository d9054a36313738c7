"use strict";
// The picture: drawing, zooming, and what is under the pointer.

const rowHeight = 40;
const axisHeight = 26;
const barHeight = 30;
const mostVisible = 440;

const view = { start: 0, end: 1, hover: null, kept: null, pointers: new Map() };
const picture = byId("picture");
const strip = byId("strip");
const scroller = byId("scroller");

function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}

// A canvas of the size it is shown at, in the screen's own pixels.
function prepare(canvas, height) {
  const width = canvas.clientWidth;
  const ratio = window.devicePixelRatio || 1;
  canvas.width = Math.max(1, Math.round(width * ratio));
  canvas.height = Math.round(height * ratio);
  canvas.style.height = height + "px";
  const paint = canvas.getContext("2d");
  paint.setTransform(ratio, 0, 0, ratio, 0, 0);
  paint.clearRect(0, 0, width, height);
  paint.font = "12px system-ui, sans-serif";
  return { paint, width, height };
}

const xOf = (time, width) => (time - view.start) / (view.end - view.start) * width;
const timeAt = (x, width) => view.start + x / width * (view.end - view.start);

function drawAxis({ paint, width, height }, colours) {
  const step = axisStep(view.end - view.start, Math.max(2, width / 110));
  paint.strokeStyle = colours.line;
  paint.fillStyle = colours.soft;
  for (let time = Math.ceil(view.start / step) * step; time <= view.end; time += step) {
    const x = Math.round(xOf(time, width)) + 0.5;
    paint.beginPath();
    paint.moveTo(x, 0);
    paint.lineTo(x, height);
    paint.stroke();
    const text = clock(time, step >= 864e5);
    paint.fillText(data.clock && step >= 1000 ? text.slice(0, -4) : text, x + 4, 16);
  }
}

function drawEvents(paint, job, y, width, colours) {
  for (const event of job.events) {
    const x = xOf(event.start, width);
    const length = Math.max(2, xOf(event.end, width) - x);
    if (x + length < 0 || x > width) continue;
    paint.fillStyle = colours[colourOf(event)];
    const half = barHeight / 2;
    paint.fillRect(x, y + (event.companion === "NEMB" ? half + 1 : 1), length, half - 2);
  }
}

function drawJob(paint, job, y, width, colours) {
  const x = xOf(job.start, width);
  const length = Math.max(3, xOf(job.end, width) - x);
  paint.fillStyle = colours.job;
  paint.fillRect(x, y, length, barHeight);
  if (job.launch) {
    const from = xOf(job.launch.start, width);
    paint.fillStyle = colours.launch;
    paint.fillRect(from, y, Math.max(1, xOf(job.launch.end, width) - from), barHeight);
  }
  drawEvents(paint, job, y, width, colours);
  if (job.weight !== "note" || job === view.kept?.job) {
    paint.lineWidth = 2;
    paint.strokeStyle = job === view.kept?.job ? colours.select : colours[job.weight];
    paint.strokeRect(x - 1, y - 1, length + 2, barHeight + 2);
    paint.lineWidth = 1;
  }
  if (length > 90) {
    paint.save();
    paint.beginPath();
    paint.rect(Math.max(x, 0), y + barHeight, length, 12);
    paint.clip();
    paint.fillStyle = colours.soft;
    paint.font = "10px system-ui, sans-serif";
    paint.fillText(`${job.job} ${job.printer} – ${job.result}`, Math.max(x, 0) + 2, y + barHeight + 9);
    paint.restore();
  }
}

function palette() {
  const colours = {};
  for (const name of ["line", "soft", "job", "launch", "select"]) colours[name] = colour("--" + name);
  for (const name of ["--yes", "--wait", "--no", "--other"]) colours[name] = colour(name);
  colours.problem = colours["--no"];
  colours.warning = colours["--wait"];
  return colours;
}

function draw() {
  const needed = axisHeight + Math.max(1, model.rows) * rowHeight + 4;
  const height = Math.min(needed, mostVisible);
  scroller.style.height = height + "px";
  byId("space").style.height = needed + "px";
  const area = prepare(picture, height);
  const colours = palette();
  drawAxis(area, colours);
  for (const job of model.drawn) {
    const y = axisHeight + job.row * rowHeight - scroller.scrollTop;
    if (y < axisHeight - rowHeight || y > height || job.end < view.start || job.start > view.end) continue;
    drawJob(area.paint, job, y, area.width, colours);
  }
  drawStrip(colours);
  byId("range").textContent = data.jobs.length === 0 ? "" :
    `${clock(view.start)} – ${clock(view.end, false)} (${duration(view.end - view.start)})`;
}

// All jobs of the log, shown or not, and the part that the picture shows.
function drawStrip(colours) {
  const { paint, width, height } = prepare(strip, 40);
  const { start, width: step, total, problems } = data.strip;
  const most = total.reduce((a, b) => Math.max(a, b), 1);
  const from = model.full.start;
  const scale = width / (model.full.end - from);
  total.forEach((count, i) => {
    if (count === 0) return;
    const x = (start + i * step - from) * scale;
    const length = Math.max(1, step * scale - (step * scale > 3 ? 1 : 0));
    const tall = (all) => all === 0 ? 0 : Math.max(2, all / most * (height - 4));
    paint.fillStyle = colours["--yes"];
    paint.fillRect(x, height - tall(count), length, tall(count));
    paint.fillStyle = colours["--no"];
    paint.fillRect(x, height - tall(problems[i]), length, tall(problems[i]));
  });
  paint.strokeStyle = colours.select;
  const x = (view.start - from) * scale;
  paint.strokeRect(x + 0.5, 0.5, Math.max(3, (view.end - view.start) * scale) - 1, height - 1);
}

function zoom(factor, centre) {
  const span = view.end - view.start;
  const full = model.full.end - model.full.start;
  const wanted = Math.min(Math.max(span * factor, data.clock ? 5 : 3), full);
  const share = (centre - view.start) / span;
  place(centre - share * wanted, wanted);
}

// Shows `span` from `start` on, without leaving the log.
function place(start, span) {
  const latest = model.full.end - span;
  view.start = Math.max(model.full.start, Math.min(start, latest));
  view.end = view.start + span;
  draw();
}

const centre = () => (view.start + view.end) / 2;
const move = (share) => place(view.start + share * (view.end - view.start), view.end - view.start);
const showAll = () => place(model.full.start, model.full.end - model.full.start);

function showJob(job) {
  const span = Math.max((job.end - job.start) * 1.2, data.clock ? 50 : 5);
  place(job.start - span * 0.08, span);
}

// The event nearest to the pointer within a few pixels, or the job around it.
function hitAt(x, y) {
  const width = picture.clientWidth;
  const row = Math.floor((y + scroller.scrollTop - axisHeight) / rowHeight);
  const inRow = (y + scroller.scrollTop - axisHeight) - row * rowHeight;
  const near = timeAt(x + 3, width) - timeAt(x, width);
  const time = timeAt(x, width);
  const job = model.drawn.find((one) =>
    one.row === row && one.start - near <= time && time <= one.end + near);
  if (!job) return null;
  const lower = inRow > barHeight / 2;
  const distance = (one) => Math.max(one.start - time, time - one.end, 0);
  const events = job.events
    .filter((one) => (one.companion === "NEMB") === lower && distance(one) <= near)
    .sort((a, b) => distance(a) - distance(b));
  return { job, event: events[0] || null };
}
