// The map: Mercator, in metres around the first place shown, drawn as SVG.

const EARTH = 6378137; // metres
const SVG = "http://www.w3.org/2000/svg";
const MAX_ZOOM = 40; // pixels a metre

function svg(name, attributes = {}, ...children) {
  const element = document.createElementNS(SVG, name);
  for (const [key, value] of Object.entries(attributes))
    element.setAttribute(key, value);
  element.append(...children);
  return element;
}

function degrees(place) {
  return `${place.latitude.toFixed(6)}, ${place.longitude.toFixed(6)}`;
}

function mercator(place) {
  const latitude = Math.max(-85, Math.min(85, place.latitude)) * Math.PI / 180;
  return { x: EARTH * place.longitude * Math.PI / 180,
           y: -EARTH * Math.log(Math.tan(Math.PI / 4 + latitude / 2)) };
}

function unproject(point) {
  return { latitude: (2 * Math.atan(Math.exp(-point.y / EARTH)) - Math.PI / 2) * 180 / Math.PI,
           longitude: point.x / EARTH * 180 / Math.PI };
}

// The shapes differ, so that colour is never the only sign.
const SHAPES = {
  waypoint: () => svg("path", { class: "mark", d: "M0 0 L-7 -12 A7 7 0 1 1 7 -12 Z" }),
  destination: () => svg("path", { class: "mark", d: "M0 0 V-24 L16 -18 L0 -12" }),
  position: () => svg("path", { class: "strong", d: "M0 -13 L9 10 L0 5 L-9 10 Z" }),
  centre: () => svg("path", { class: "mark", d: "M-9 0 H9 M0 -9 V9 M-5 0 A5 5 0 1 0 5 0 A5 5 0 1 0 -5 0" }),
};

class MapView {
  constructor(element, onPoint) {
    this.element = element;
    this.onPoint = onPoint;
    this.lines = svg("g");
    this.points = svg("g");
    this.drawn = svg("g"); // by the user, not yet driven to its end
    this.notes = svg("g"); // what has no place
    this.world = svg("g", {}, this.lines, this.drawn, this.points);
    this.pointer = svg("g", { "data-kind": "pointer", visibility: "hidden" }, svg("title"),
                       svg("path", { class: "scale", d: "M-6 0 H6 M0 -6 V6" }));
    this.scale = svg("g", { "data-kind": "scale" });
    element.append(this.world, this.notes, this.scale, this.pointer);
    this.origin = null;
    this.x = 0; // metres from the origin at the middle of the picture
    this.y = 0;
    this.zoom = 0.1; // pixels a metre
    this.places = [];
    this.spots = new WeakMap(); // what local() found, since a track has thousands of places
    this.tool = null;     // takes what is held on the map: begin(target, place), drag(place), end()
    this.touched = false; // moved by the user, so it no longer follows what is shown
    this.listen();
  }

  size() {
    const box = this.element.getBoundingClientRect();
    return { width: box.width || 600, height: box.height || 400 };
  }

  // Metres from the origin, and the same as a step of a path.
  local(place) {
    let spot = this.spots.get(place);
    if (!spot) {
      const point = mercator(place);
      this.origin ??= point;
      const x = point.x - this.origin.x, y = point.y - this.origin.y;
      spot = { x, y, step: `${x.toFixed(2)} ${y.toFixed(2)}` };
      this.spots.set(place, spot);
    }
    return spot;
  }

  // Shows a state of the model.
  show(state) {
    this.places = [];
    const points = [];
    for (const waypoint of state.waypoints.values())
      points.push(this.point("waypoint", waypoint, waypoint.name, waypoint.icon));
    if (state.centre)
      points.push(this.point("centre", state.centre, "centre of the map"));
    if (state.destination)
      points.push(this.point("destination", state.destination, "destination"));
    if (state.position)
      points.push(this.point("position", state.position, "position"));
    this.points.replaceChildren(...points);
    this.lines.replaceChildren(...this.linesOf(state));
    this.notes.replaceChildren(...(state.route ? [this.routeNote(state.route)] : []));
    if (!this.touched)
      this.fit();
    this.place();
  }

  // A route is known by its name alone.
  routeNote(name) {
    const title = svg("title"), text = svg("text", { x: 16, y: 24 });
    title.textContent = `route: ${name}; the navigator has no map of it`;
    text.textContent = `route: ${name}`;
    return svg("g", { "data-kind": "route" }, title, text);
  }

  showDrawn(places) {
    const d = "M" + places.map((place) => this.local(place).step).join("L");
    this.drawn.replaceChildren(...(places.length > 1 ? [svg("path", { class: "line drawn", d })] : []));
  }

  linesOf(state) {
    const lines = [];
    if (state.track.length > 1)
      lines.push(this.line("track", state.track, `track of ${state.track.length} positions, from ` +
        `${degrees(state.track[0])} to ${degrees(state.track[state.track.length - 1])}`, "line"));
    const from = state.destination && (state.position || state.destination.from);
    if (from)
      lines.push(this.line("route", [from, state.destination],
                           `straight line to the destination, ${degrees(state.destination)}`, "line dashed"));
    return lines;
  }

  point(kind, place, name, icon) {
    const spot = this.local(place);
    this.places.push(spot);
    const shape = SHAPES[kind]();
    if (kind === "position" && place.course !== null)
      shape.setAttribute("transform", `rotate(${place.course})`);
    const title = svg("title");
    title.textContent = `${name}: ${degrees(place)}` + (icon ? ` (${icon})` : "");
    const group = svg("g", { "data-kind": kind, class: "at", role: "img",
                             "data-latitude": place.latitude, "data-longitude": place.longitude },
                      title, shape);
    group.style.setProperty("--x", `${spot.x}px`);
    group.style.setProperty("--y", `${spot.y}px`);
    if (kind === "waypoint" || kind === "destination") {
      const label = svg("text", { x: 10, y: kind === "waypoint" ? -12 : -24 });
      label.textContent = icon ? `${name} · ${icon}` : name;
      group.append(label);
    }
    return group;
  }

  line(kind, places, name, look) {
    const spots = places.map((place) => this.local(place));
    for (const spot of spots)
      this.places.push(spot);
    const title = svg("title");
    title.textContent = name;
    const d = "M" + spots.map((spot) => spot.step).join("L");
    return svg("g", { "data-kind": kind }, title, svg("path", { class: look, d }));
  }

  // Chooses middle and zoom so that everything can be seen.
  fit() {
    if (this.places.length === 0)
      return;
    let left = Infinity, right = -Infinity, top = Infinity, bottom = -Infinity;
    for (const { x, y } of this.places) {
      left = Math.min(left, x);
      right = Math.max(right, x);
      top = Math.min(top, y);
      bottom = Math.max(bottom, y);
    }
    const { width, height } = this.size();
    this.x = (left + right) / 2;
    this.y = (top + bottom) / 2;
    this.zoom = Math.min(2, 0.8 * width / Math.max(right - left, 1), 0.8 * height / Math.max(bottom - top, 1));
  }

  // Puts the world where the middle and the zoom say.
  place() {
    const { width, height } = this.size();
    this.element.setAttribute("viewBox", `0 0 ${width} ${height}`);
    this.world.setAttribute("transform",
      `translate(${width / 2 - this.x * this.zoom} ${height / 2 - this.y * this.zoom}) scale(${this.zoom})`);
    this.element.style.setProperty("--unzoom", 1 / this.zoom);
    this.drawScale(height);
  }

  // Metres on the ground for a pixel: the projection stretches towards the poles.
  metresPerPixel() {
    const middle = this.placeAt(this.size().width / 2, this.size().height / 2);
    return Math.cos(middle.latitude * Math.PI / 180) / this.zoom;
  }

  drawScale(height) {
    const wanted = this.metresPerPixel() * 120;
    const power = 10 ** Math.floor(Math.log10(wanted));
    const metres = [5, 2, 1].map((n) => n * power).find((n) => n <= wanted) || power;
    const pixels = metres / this.metresPerPixel();
    const words = metres >= 1000 ? `${metres / 1000} km` : `${metres} m`;
    const title = svg("title");
    title.textContent = `scale: the bar is ${words} long`;
    const text = svg("text", { x: 16, y: height - 24 });
    text.textContent = words;
    this.scale.replaceChildren(title, svg("path", { class: "scale", d: `M12 ${height - 18} v6 h${pixels} v-6` }), text);
  }

  placeAt(px, py) {
    const { width, height } = this.size();
    const origin = this.origin || { x: 0, y: 0 };
    return unproject({ x: origin.x + this.x + (px - width / 2) / this.zoom,
                       y: origin.y + this.y + (py - height / 2) / this.zoom });
  }

  // Zooms by a factor, the place at the pixel staying where it is.
  zoomBy(factor, px = this.size().width / 2, py = this.size().height / 2) {
    const { width, height } = this.size();
    const zoom = Math.max(1e-5, Math.min(MAX_ZOOM, this.zoom * factor));
    this.x += (px - width / 2) * (1 / this.zoom - 1 / zoom);
    this.y += (py - height / 2) * (1 / this.zoom - 1 / zoom);
    this.zoom = zoom;
    this.touched = true;
    this.place();
  }

  panBy(dx, dy) {
    this.x -= dx / this.zoom;
    this.y -= dy / this.zoom;
    this.touched = true;
    this.place();
  }

  showAll() {
    this.touched = false;
    this.fit();
    this.place();
  }

  listen() {
    const keys = { ArrowLeft: [60, 0], ArrowRight: [-60, 0], ArrowUp: [0, 60], ArrowDown: [0, -60] };
    this.element.addEventListener("keydown", (event) => {
      if (event.key in keys)
        this.panBy(...keys[event.key]);
      else if (event.key === "+" || event.key === "=")
        this.zoomBy(1.5);
      else if (event.key === "-")
        this.zoomBy(1 / 1.5);
      else if (event.key === "0")
        this.showAll();
      else
        return;
      event.preventDefault();
    });
    this.element.addEventListener("wheel", (event) => {
      event.preventDefault();
      this.zoomBy(event.deltaY < 0 ? 1.2 : 1 / 1.2, event.offsetX, event.offsetY);
    }, { passive: false });
    this.listenToPointers();
    new ResizeObserver(() => this.place()).observe(this.element);
  }

  // One pointer drags, two pinch.
  listenToPointers() {
    const held = new Map();
    const spot = (event) => {
      const box = this.element.getBoundingClientRect();
      return { x: event.clientX - box.left, y: event.clientY - box.top };
    };
    const placeOf = ({ x, y }) => this.placeAt(x, y);
    let tooled = false; // the tool has it
    const span = ([a, b]) => Math.hypot(a.x - b.x, a.y - b.y);
    this.element.addEventListener("pointerdown", (event) => {
      this.element.setPointerCapture(event.pointerId);
      tooled = held.size === 0 && Boolean(this.tool?.begin(event.target, placeOf(spot(event))));
      this.touched ||= tooled; // it must not move under what is held
      held.set(event.pointerId, spot(event));
    });
    this.element.addEventListener("pointermove", (event) => {
      const now = spot(event);
      this.showPointer(now);
      if (!held.has(event.pointerId))
        return;
      const before = held.get(event.pointerId);
      const spread = held.size === 2 ? span([...held.values()]) : 0;
      held.set(event.pointerId, now);
      if (tooled)
        this.tool.drag(placeOf(now));
      else if (held.size === 1)
        this.panBy(now.x - before.x, now.y - before.y);
      else if (held.size === 2 && spread > 0)
        this.zoomBy(span([...held.values()]) / spread, now.x, now.y);
    });
    for (const end of ["pointerup", "pointercancel"])
      this.element.addEventListener(end, (event) => {
        held.delete(event.pointerId);
        if (tooled)
          this.tool.end();
        tooled = false;
      });
    this.element.addEventListener("pointerleave", () => this.showPointer(null));
  }

  showPointer(spot) {
    this.pointer.setAttribute("visibility", spot ? "visible" : "hidden");
    if (!spot) {
      this.onPoint("");
      return;
    }
    const words = degrees(this.placeAt(spot.x, spot.y));
    this.pointer.setAttribute("transform", `translate(${spot.x} ${spot.y})`);
    this.pointer.firstChild.textContent = `pointer: ${words}`;
    this.onPoint(words);
  }
}
