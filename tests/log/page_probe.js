"use strict";
// Stands before the timeline page's own script: writes down what is painted, and asks the page.

const report = { errors: [] };
window.addEventListener("error", (event) => report.errors.push(event.message));

const painted = [];  // in the order of painting, of the big picture alone
const paints = CanvasRenderingContext2D.prototype;

let clip = null;  // where painting is confined to
const clips = [];

function watch(name, note) {
  const original = paints[name];
  paints[name] = function (...values) {
    if (this.canvas.id === "picture") note(this, ...values);
    return original.apply(this, values);
  };
}

function paintNote(note) {
  if (clip && note.kind === "fill") {
    const x = Math.max(note.x, clip.x);
    Object.assign(note, { x, width: Math.min(note.x + note.width, clip.x + clip.width) - x });
  }
  painted.push(note);
}

let lastRect = null;
watch("rect", (_, x, y, width, height) => { lastRect = { x, y, width, height }; });
watch("clip", () => { clip = lastRect; });
watch("save", () => { clips.push(clip); });
watch("restore", () => { clip = clips.pop(); });

watch("fillRect", (_, x, y, width, height) =>
  paintNote({ kind: "fill", x, y, width, height }));
watch("strokeRect", (paint, x, y, width, height) =>
  paintNote({ kind: "frame", x, y, width, height, line: paint.lineWidth }));
watch("fillText", (paint, text, x, y, most = Infinity) => {
  const size = paint.measureText(text);
  paintNote({ kind: "text", text, x, y: y - size.actualBoundingBoxAscent, width: Math.min(most, size.width),
    height: size.actualBoundingBoxAscent + size.actualBoundingBoxDescent });
});

function repaint() {
  painted.length = 0;
  window.dispatchEvent(new Event("resize"));
}

const apart = (a, b) => a.x + a.width <= b.x || b.x + b.width <= a.x || a.y + a.height <= b.y || b.y + b.height <= a.y;
const within = (a, b) => a.x >= b.x && a.y >= b.y && a.x + a.width <= b.x + b.width && a.y + a.height <= b.y + b.height;
const grown = (box, by) => ({ x: box.x - by, y: box.y - by, width: box.width + 2 * by, height: box.height + 2 * by });

// Texts that touch each other, are struck through, painted over, or cut off at the picture's edge.
function spoiltTexts() {
  const spoilt = [];
  const canvas = byId("picture");
  painted.forEach((text, i) => {
    if (text.kind !== "text") return;
    if (text.x < 0 || text.x + text.width > canvas.clientWidth) spoilt.push(`${text.text}: cut off`);
    painted.forEach((other, j) => {
      if (other === text || apart(text, other.kind === "frame" ? grown(other, other.line / 2) : other)) return;
      if (other.kind === "text" && i < j) spoilt.push(`${text.text}: touches ${other.text}`);
      if (other.kind === "frame" && !within(text, grown(other, -other.line / 2))) spoilt.push(`${text.text}: struck through`);
      if (other.kind === "fill" && (i < j || !within(text, other))) spoilt.push(`${text.text}: on a bar`);
    });
  });
  return spoilt;
}

function rgb(name) {
  const hex = getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();
  return [1, 3, 5].map((at) => parseInt(hex.slice(at, at + 2), 16));
}

// How tall the tallest unbroken stretch of a colour is at this place of the picture, or how much of it there is.
function coloured(x, name, whole = false) {
  const canvas = byId("picture");
  const ratio = canvas.width / canvas.clientWidth;
  const column = canvas.getContext("2d").getImageData(Math.round(x * ratio), 0, 1, canvas.height).data;
  const wanted = rgb(name);
  let run = 0, longest = 0, all = 0;
  for (let i = 0; i < column.length; i += 4) {
    const same = wanted.every((value, j) => Math.abs(column[i + j] - value) < 12);
    run = same ? run + 1 : 0;
    all += same ? 1 : 0;
    longest = Math.max(longest, run);
  }
  return whole ? all : longest;
}

const middleOf = (from, to) => xOf((from + to) / 2, byId("picture").clientWidth);
const placeOf = (time) => xOf(time, byId("picture").clientWidth);
const jobOf = (number) => model.shown.find((one) => one.job === number);

function press(key, more = {}) {
  const target = document.activeElement;
  target.dispatchEvent(new KeyboardEvent("keydown", { key, bubbles: true, cancelable: true, ...more }));
}

function point(type, x, y) {
  const box = picture.getBoundingClientRect();
  picture.setPointerCapture = () => {};
  picture.dispatchEvent(new PointerEvent(type, { clientX: box.left + x, clientY: box.top + y, pointerId: 1, bubbles: true }));
}

function type(text) {
  byId("filter").value = text;
  byId("filter").dispatchEvent(new Event("input"));
}

const rowTexts = () => [...document.querySelectorAll("#jobs tr")].map((row) => row.textContent);
const wider = () => document.documentElement.scrollWidth > document.documentElement.clientWidth;

function probing(script) {
  try {
    script();
  } catch (error) {
    report.errors.push(String(error.stack));
  }
  const out = document.createElement("pre");
  out.id = "report";
  out.textContent = JSON.stringify(report);
  document.body.append(out);
}
