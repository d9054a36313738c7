// What the user does: pointer, wheel and keys.

const positionIn = (canvas, event) => {
  const box = canvas.getBoundingClientRect();
  return { x: event.clientX - box.left, y: event.clientY - box.top };
};

function pointerMoved(event) {
  const before = view.pointers.get(event.pointerId);
  const now = positionIn(picture, event);
  if (!before) {
    const hit = hitAt(now.x, now.y) || view.at;
    byId("account").textContent = hit ? account(hit) : byId("account").dataset.hint;
    return;
  }
  view.pointers.set(event.pointerId,
    { ...now, from: before.from, moved: before.moved || Math.abs(now.x - before.from) > 3 });
  if (view.pointers.size === 2) {
    const other = [...view.pointers].find(([id]) => id !== event.pointerId)[1];
    zoom(Math.abs(before.x - other.x) / Math.max(1, Math.abs(now.x - other.x)), timeAt((now.x + other.x) / 2));
  } else {
    move((before.x - now.x) / plotWidth());
  }
}

function pointerUp(event) {
  const pointer = view.pointers.get(event.pointerId);
  view.pointers.delete(event.pointerId);
  if (!pointer || pointer.moved) return;
  const hit = hitAt(pointer.x, pointer.y);
  choose(hit && hit.job, hit && hit.item);
}

// The wheel alone scrolls, as everywhere.
function wheel(event) {
  const across = event.shiftKey ? event.deltaY : event.deltaX;
  if (!event.ctrlKey && Math.abs(across) <= Math.abs(event.shiftKey ? 0 : event.deltaY)) return;
  event.preventDefault();
  if (event.ctrlKey) {
    zoom(event.deltaY > 0 ? 1.25 : 0.8, timeAt(positionIn(picture, event).x));
  } else {
    move(across / plotWidth());
  }
}

// From event to event, and from a job's last one to the next job.
function stepEvent(way) {
  const { job, item } = view.at || { job: null, item: null };
  const next = job ? job.items[job.items.indexOf(item) + way] : undefined;
  if (next && (item || way > 0)) {
    choose(job, next);
  } else {
    stepJob(way, (one) => one.items.at(way > 0 ? 0 : -1) || null);
  }
}

function stepJob(way, itemOf = () => null, wanted = () => true) {
  const jobs = model.order;
  let at = view.at ? jobs.indexOf(view.at.job) : -1;
  if (at < 0) at = way > 0 ? -1 : jobs.length;
  for (at += way; jobs[at] && !wanted(jobs[at]);) at += way;
  if (jobs[at]) choose(jobs[at], itemOf(jobs[at]));
}

const isProblem = (job) => job.weight === "problem";

const keys = {
  ArrowRight: () => stepEvent(1),
  ArrowLeft: () => stepEvent(-1),
  ArrowDown: () => stepJob(1),
  ArrowUp: () => stepJob(-1),
  Home: () => choose(model.order.at(0), null),
  End: () => choose(model.order.at(-1), null),
  n: () => stepJob(1, failingItem, isProblem),
  p: () => stepJob(-1, failingItem, isProblem),
  Enter: () => view.at && choose(view.at.job, view.at.item, true),
  Escape: () => choose(null),
  "+": () => zoom(0.67, centre()),
  "-": () => zoom(1.5, centre()),
  0: showAll,
};
const shiftKeys = { ArrowRight: () => move(0.2), ArrowLeft: () => move(-0.2) };

function keyDown(event) {
  const action = (event.shiftKey && shiftKeys[event.key]) || keys[event.key];
  if (!action || event.ctrlKey || event.altKey || event.metaKey) return;
  event.preventDefault();
  action();
}

function connect() {
  picture.addEventListener("wheel", wheel, { passive: false });
  picture.addEventListener("pointerdown", (event) => {
    picture.setPointerCapture(event.pointerId);
    const at = positionIn(picture, event);
    view.pointers.set(event.pointerId, { ...at, from: at.x, moved: false });
  });
  picture.addEventListener("pointermove", pointerMoved);
  picture.addEventListener("pointerup", pointerUp);
  picture.addEventListener("pointercancel", (event) => view.pointers.delete(event.pointerId));
  picture.addEventListener("dblclick", keys.Enter);
  picture.addEventListener("keydown", keyDown);
  strip.addEventListener("click", (event) => {
    const share = (positionIn(strip, event).x - gutter) / plotWidth();
    const time = model.full.start + share * (model.full.end - model.full.start);
    place(time - (view.end - view.start) / 2, view.end - view.start);
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

byId("account").textContent = byId("account").dataset.hint;
fillHeader();
fillFindings();
fillHeads();
connect();
select();
