// The events below a request, as a small sequence diagram.

const LANE = 110, STEP = 30, MARGIN = 110;

// Which event of one side begins the arrow that an event of the other ends.
const ARROWS = { taken: "announced", read: "written" };

function laneOf(events, processes) {
  const pids = [...new Set(events.map((event) => event.pid))];
  const role = (pid) => processes.find((process) => process.pid === pid)?.role ?? "process";
  pids.sort((a, b) => (role(a) === "client" ? -1 : 0) - (role(b) === "client" ? -1 : 0));
  return { pids, name: (pid) => `${role(pid)} ${pid}`, x: (pid) => MARGIN + pids.indexOf(pid) * LANE };
}

function milliseconds(from, to) {
  return `${((to - from) * 1000).toFixed(3)} ms`;
}

// The diagram; null without events.
function sequenceDiagram(events, processes) {
  if (!events || events.length === 0)
    return null;
  const lanes = laneOf(events, processes);
  const height = 50 + events.length * STEP, width = MARGIN * 2 + (lanes.pids.length - 1) * LANE;
  const picture = svg("svg", { viewBox: `0 0 ${width} ${height}`, width, role: "img",
                               "aria-label": "Sequence of events; the list below tells the same in words" });
  picture.append(svg("defs", {}, svg("marker", { id: "tip", markerWidth: 8, markerHeight: 8, refX: 7, refY: 4, orient: "auto" },
                                     svg("path", { d: "M0 0 L7 4 L0 8" }))));
  for (const pid of lanes.pids) {
    const name = svg("text", { x: lanes.x(pid), y: 16, "text-anchor": "middle" });
    name.textContent = lanes.name(pid);
    picture.append(name, svg("line", { class: "life", x1: lanes.x(pid), x2: lanes.x(pid), y1: 24, y2: height }));
  }
  const begins = beginnings(events);
  events.forEach((event, i) => picture.append(...eventMarks(events, i, lanes, begins[i])));
  return picture;
}

// For each event the index of the one that its arrow comes from, -1 for none. One arrow each.
function beginnings(events) {
  const taken = new Set();
  return events.map((event, i) => {
    const begin = events.findIndex((other, j) => j < i && !taken.has(j) && other.pid !== event.pid &&
                                                 other.what === ARROWS[event.what]);
    taken.add(begin);
    return begin;
  });
}

function eventMarks(events, i, lanes, begin) {
  const event = events[i];
  const x = lanes.x(event.pid), y = 42 + i * STEP;
  const marks = [svg("path", { d: `M${x - 4} ${y} h8` })];
  if (begin >= 0)
    marks.push(svg("path", { d: `M${lanes.x(events[begin].pid)} ${42 + begin * STEP} L${x} ${y}`, "marker-end": "url(#tip)" }));
  // Beside the arrows: the first lane's words to its left, those of the others to their right.
  const beside = x === MARGIN ? { x: x - 10, "text-anchor": "end" } : { x: x + 10 };
  const words = svg("text", { ...beside, y: y - 4 });
  words.textContent = event.what;
  const time = svg("text", { ...beside, class: "quiet", y: y + 10 });
  time.textContent = i === 0 ? "" : `+ ${milliseconds(events[i - 1].t, event.t)}`;
  return [...marks, words, time];
}
