// How the picture is painted.

function fill(paint, colour, ...box) {
  paint.fillStyle = colour;
  paint.fillRect(...box);
}

// Slanted lines: what lasts without anything happening. Told apart by more than their colour.
function hatch(ink, ground, rising, distance) {
  const tile = document.createElement("canvas");
  tile.width = tile.height = distance;
  const paint = tile.getContext("2d");
  fill(paint, ground, 0, 0, distance, distance);
  paint.strokeStyle = ink;
  paint.lineWidth = 2;
  for (const x of [-distance, 0, distance]) {
    paint.moveTo(x - 1, rising ? distance + 1 : -1);
    paint.lineTo(x + distance + 1, rising ? -1 : distance + 1);
  }
  paint.stroke();
  return paint.createPattern(tile, "repeat");
}

function palette() {
  const style = getComputedStyle(document.documentElement);
  const colours = {};
  for (const name of ["page", "panel", "ink", "soft", "line", "job", "launch", "yes", "wait", "no", "other"]) {
    colours[name] = style.getPropertyValue("--" + name).trim();
  }
  colours.waiting = hatch(colours.wait, colours.job, true, 8);
  colours.open = hatch(colours.no, colours.panel, false, 6);
  colours.gap = hatch(colours.other, colours.job, false, 10);
  return Object.assign(colours, { problem: colours.no, warning: colours.wait, note: colours.yes });
}

function drawAxis({ paint, width, height }, colours) {
  const written = (time, step) => {
    const text = clock(time, step >= 864e5);
    return data.clock && step >= 1000 ? text.slice(0, -4) : text;
  };
  const room = paint.measureText(written(view.end, 1)).width + 24;
  const step = axisStep(view.end - view.start, Math.max(1.5, plotWidth() / room));
  paint.strokeStyle = colours.line;
  paint.fillStyle = colours.soft;
  for (let time = Math.ceil(view.start / step) * step; time <= view.end; time += step) {
    const x = Math.round(xOf(time)) + 0.5;
    paint.stroke(new Path2D(`M ${x} 4 V ${height}`));
    const text = written(time, step);
    if (x + 5 + paint.measureText(text).width <= width) paint.fillText(text, x + 5, axisHeight / 2);
  }
}

function drawGapText(paint, job, item, box, colours) {
  const from = Math.max(box.x, gutter);
  const room = Math.min(box.x + box.width, gutter + plotWidth()) - from - 16;
  const text = [itemTitle(item, job), grouped(item.events)].find((one) => paint.measureText(one).width <= room);
  if (!text) return;
  const width = paint.measureText(text).width;
  const x = from + (room - width) / 2 + 8;
  fill(paint, colours.panel, x - 5, box.y + bothBars / 2 - 9, width + 10, 18);
  paint.fillStyle = colours.ink;
  paint.fillText(text, x, box.y + bothBars / 2);
}

function drawItem(paint, job, item, colours) {
  const box = boxOf(job, item);
  if (box.x > gutter + plotWidth() || Math.max(box.x + box.width, xOf(item.until)) < gutter) return;
  if (item.kind === "wait") {
    fill(paint, colours.waiting, box.x, box.y, Math.max(box.width, xOf(item.until) - box.x), box.height);
  }
  fill(paint, colours[item.kind], box.x, box.y, box.width, box.height);
  if (item.kind === "open") fill(paint, colours.no, box.x, box.y, 3, box.height);
  if (item.kind === "gap") drawGapText(paint, job, item, box, colours);
}

// A job whose end the log doesn't tell goes on as points, with an arrow instead of an end.
function drawOpenEnd(paint, job, colours) {
  const y = topOf(job) + bothBars - barHeight / 2;
  const end = Math.max(xOf(job.until), xOf(job.end) + 10);
  paint.fillStyle = paint.strokeStyle = colours.ink;
  paint.setLineDash([2, 4]);
  paint.stroke(new Path2D(`M ${xOf(job.end)} ${y} H ${end - 6}`));
  paint.setLineDash([]);
  paint.fill(new Path2D(`M ${end} ${y} l -7 -5 v 10`));
}

function drawJob(paint, job, colours) {
  const x = xOf(job.start);
  const y = topOf(job);
  const width = Math.max(3, xOf(job.end) - x);
  if (xOf(job.until) - x < 6) {  // no room for its events
    return fill(paint, colours[job.weight], x, y, width, bothBars);
  }
  fill(paint, colours.job, x, y, width, bothBars);
  for (const kind of severity) {
    for (const item of job.items) {
      if (item.kind === kind) drawItem(paint, job, item, colours);
    }
  }
  if (job.result === "open") drawOpenEnd(paint, job, colours);
  if (job.weight !== "note") fill(paint, colours[job.weight], x, y + bothBars + 2, width, 3);
}

// Above the job, up to the next one: never on another's place.
function drawLabel(paint, job, colours) {
  const x = Math.max(xOf(job.start), gutter);
  const end = Math.min(job.next ? xOf(job.next.start) - 6 : Infinity, gutter + plotWidth());
  if (end - x < 8) return;
  const short = markOf(job) + job.job;
  const texts = [`${short} ${job.resultText} · ${tookText(job)}`, `${short} ${job.result}`, short];
  const text = texts.find((one) => paint.measureText(one).width <= end - x);
  if (!text) return;
  const y = topOf(job) - labelHeight;
  fill(paint, colours.panel, x, y + 1, paint.measureText(text).width, labelHeight - 4);
  paint.fillStyle = job.weight === "problem" ? colours.no : colours.ink;
  paint.fillText(text, x, y + labelHeight / 2 - 1);
}

function drawLane(paint, lane, width, colours) {
  const y = axisHeight + lane.y - scroller.scrollTop;
  const problems = lane.jobs.filter((job) => job.weight === "problem").length;
  const name = `${lane.printer} – ${many(lane.jobs.length, "job")}${problems ? `, ${grouped(problems)} with problems` : ""}`;
  fill(paint, colours.page, 0, y, width, laneHead - 4);
  paint.fillStyle = colours.ink;
  paint.font = "600 12px system-ui, sans-serif";
  paint.fillText(name, 6, y + laneHead / 2 - 1, width - 12);
  paint.font = "10px system-ui, sans-serif";
  paint.fillStyle = colours.soft;
  for (let row = 0; row < lane.rows; ++row) {
    const bars = y + laneHead + row * rowHeight + labelHeight;
    paint.fillText("DRAL", 6, bars + barHeight / 2 + 1);
    paint.fillText("NEMB", 6, bars + barHeight * 1.5 + barGap + 1);
  }
  paint.font = "12px system-ui, sans-serif";
}

function clipTo(paint, x, y, width, height, paintIt) {
  paint.save();
  paint.beginPath();
  paint.rect(x, y, width, height);
  paint.clip();
  paintIt();
  paint.restore();
}

function drawChosen(paint, colours) {
  if (!view.at || !model.order.includes(view.at.job)) return;
  const { job, item } = view.at;
  const width = Math.max(3, xOf(job.until) - xOf(job.start));
  const box = item ? boxOf(job, item) : { x: xOf(job.start), y: topOf(job), width, height: bothBars };
  for (const [colour, wide] of [[colours.panel, 5], [colours.ink, 2]]) {
    paint.strokeStyle = colour;
    paint.lineWidth = wide;
    paint.strokeRect(box.x - 2, box.y - 2, box.width + 4, box.height + 4);
  }
  paint.lineWidth = 1;
}

function drawJobs(paint, height, colours) {
  const jobs = model.order.filter((job) => job.until >= view.start && job.start <= view.end &&
    topOf(job) - labelHeight < height && topOf(job) + rowHeight > axisHeight);
  jobs.sort((a, b) => (a.weight === "problem") - (b.weight === "problem"));
  for (const job of jobs) drawJob(paint, job, colours);
  for (const job of jobs) drawLabel(paint, job, colours);
}

function draw() {
  const needed = axisHeight + Math.max(rowHeight, model.height) + 4;
  const height = Math.min(needed, Math.max(320, window.innerHeight * 0.6));
  scroller.style.height = height + "px";
  byId("space").style.height = needed + "px";
  const area = prepare(picture, height);
  const { paint, width } = area;
  const colours = palette();
  drawAxis(area, colours);
  const below = height - axisHeight;
  clipTo(paint, 0, axisHeight, width, below, () => {
    for (const lane of model.lanes) {
      const y = axisHeight + lane.y - scroller.scrollTop;
      if (y < height && y + laneHead + lane.rows * rowHeight > axisHeight) drawLane(paint, lane, width, colours);
    }
  });
  clipTo(paint, gutter - 5, axisHeight, plotWidth() + 5, below, () => {
    drawJobs(paint, height, colours);
    drawChosen(paint, colours);
  });
  drawStrip(colours);
  byId("range").textContent = data.jobs.length === 0 ? "" :
    `${clock(view.start)} – ${clock(view.end, false)} (${duration(view.end - view.start)})`;
}

// All jobs that are shown, and the part that the picture shows.
function drawStrip(colours) {
  const { paint, width, height } = prepare(strip, 40);
  const scale = (width - gutter) / (model.full.end - model.full.start);
  const at = (time) => gutter + (time - model.full.start) * scale;
  const total = [];
  const problems = [];
  for (const job of model.order) {
    const column = Math.floor(at(job.start) / 4);
    total[column] = (total[column] || 0) + 1;
    if (job.weight === "problem") problems[column] = (problems[column] || 0) + 1;
  }
  const most = total.reduce((a, b) => Math.max(a, b), 1);
  const column = (count, i) => {
    const tall = Math.max(4, count / most * (height - 4));
    paint.fillRect(i * 4, height - tall, 3, tall);
  };
  paint.fillStyle = colours.yes;
  total.forEach(column);
  paint.fillStyle = colours.no;
  problems.forEach(column);
  paint.strokeStyle = colours.ink;
  paint.strokeRect(at(view.start) + 0.5, 0.5, Math.max(3, (view.end - view.start) * scale) - 1, height - 1);
}
