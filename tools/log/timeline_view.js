// What the picture shows and where: places, zooming, and what is under the pointer.

const axisHeight = 26;
const gutter = 46;
const labelHeight = 19;
const barHeight = 15;
const barGap = 4;
const bothBars = 2 * barHeight + barGap;
const least = { no: 5, open: 14, gap: 4 };  // no event is too short to be seen

const view = { start: 0, end: 1, at: null, pointers: new Map() };
const picture = byId("picture");
const strip = byId("strip");
const scroller = byId("scroller");

// A canvas of the size it is shown at, in the screen's own pixels.
function prepare(canvas, height) {
  const width = canvas.clientWidth;
  const ratio = window.devicePixelRatio || 1;
  canvas.width = Math.max(1, Math.round(width * ratio));
  canvas.height = Math.round(height * ratio);
  canvas.style.height = height + "px";
  const paint = canvas.getContext("2d");
  paint.setTransform(ratio, 0, 0, ratio, 0, 0);
  paint.font = "12px system-ui, sans-serif";
  paint.textBaseline = "middle";
  return { paint, width, height };
}

const plotWidth = () => Math.max(1, picture.clientWidth - gutter);
const xOf = (time) => gutter + (time - view.start) / (view.end - view.start) * plotWidth();
const timeAt = (x) => view.start + (x - gutter) / plotWidth() * (view.end - view.start);
const topOf = (job) => axisHeight + job.y - scroller.scrollTop + labelHeight;

// Where an item is painted, and what follows it until `until`.
function boxOf(job, item) {
  const whole = item.kind === "launch" || item.kind === "gap";
  const x = xOf(item.start);
  const taller = item.kind === "no" ? 2 : 0;
  const end = item.kind === "open" ? item.until : item.end;
  const lower = !whole && item.companion === "NEMB" ? barHeight + barGap : 0;
  return { x, y: topOf(job) + lower - taller, width: Math.max(least[item.kind] || 3, xOf(end) - x),
    height: (whole ? bothBars : barHeight) + 2 * taller };
}

function zoom(factor, centre) {
  const span = view.end - view.start;
  const full = model.full.end - model.full.start;
  const wanted = Math.min(Math.max(span * factor, data.clock ? 5 : 3), full);
  place(centre - (centre - view.start) / span * wanted, wanted);
}

// Shows `span` from `start` on, without leaving the log.
function place(start, span) {
  view.start = Math.max(model.full.start, Math.min(start, model.full.end - span));
  view.end = view.start + span;
  draw();
}

const centre = () => (view.start + view.end) / 2;
const move = (share) => place(view.start + share * (view.end - view.start), view.end - view.start);
const showAll = () => place(model.full.start, model.full.end - model.full.start);

function showJob(job) {
  const span = Math.max((job.until - job.start) * 1.2, data.clock ? 50 : 5);
  place(job.start - span * 0.08, Math.min(span, model.full.end - model.full.start));
}

// Brings what is chosen into the picture, without zooming.
function reveal({ job, item }) {
  const top = job.y - (job.row === 0 ? laneHead : 0);
  const bottom = job.y + rowHeight - (scroller.clientHeight - axisHeight);
  scroller.scrollTop = Math.min(top, Math.max(bottom, scroller.scrollTop));
  const { start, until } = item || job;
  if (until < view.start || start > view.end) {
    place(start - (view.end - view.start) / 3, view.end - view.start);
  } else {
    draw();
  }
}

// The event nearest to the pointer within a few pixels, the worst of several, or the job around it.
function hitAt(x, y) {
  const near = 4;
  const away = (from, to) => Math.max(from - x, x - to, 0);
  const job = model.order.find((one) => y >= topOf(one) - labelHeight && y < topOf(one) - labelHeight + rowHeight &&
    away(xOf(one.start), xOf(one.until)) <= near);
  if (!job) return null;
  const distance = (item) => {
    const box = boxOf(job, item);
    const inside = y >= box.y - 1 && y <= box.y + box.height + 1;
    return inside ? away(box.x, Math.max(box.x + box.width, xOf(item.until))) : Infinity;
  };
  const rank = (item) => severity.indexOf(item.kind);
  const hits = job.items.filter((item) => distance(item) <= near)
    .sort((a, b) => distance(a) - distance(b) || rank(b) - rank(a));
  return { job, item: hits[0] || null };
}
