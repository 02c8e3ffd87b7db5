// What the navigator knew after each request, worked out from the requests that it accepted.

const CHECKPOINT = 256; // a state is kept every so many requests, so that going back is quick

function emptyState() {
  return {
    waypoints: new Map(), destination: null, route: "", centre: null, position: null, track: [],
    box: null, boxes: 0, file: "", files: 0, command: null, commands: 0, answer: null,
  };
}

function copyState(state) {
  return { ...state, waypoints: new Map(state.waypoints), track: state.track.slice() };
}

function inWorld(place) {
  return Number.isFinite(place.latitude) && Number.isFinite(place.longitude) &&
    Math.abs(place.latitude) <= 90 && Math.abs(place.longitude) <= 180;
}

function placeOf(latitude, longitude) {
  const place = { latitude: parseFloat(latitude), longitude: parseFloat(longitude) };
  return inWorld(place) ? place : null;
}

// "ddmm.mmmm" and its hemisphere as signed degrees.
function angle(digits, hemisphere) {
  const value = parseFloat(digits);
  const degrees = Math.floor(value / 100);
  const size = degrees + (value - degrees * 100) / 60;
  return "SW".includes(hemisphere) ? -size : size;
}

// The position in an RMC or GGA sentence: { latitude, longitude, course, speed }, null where the
// sentence is of another kind, undefined where it says that there is none.
function fixOf(sentence) {
  const fields = sentence.trim().split("*")[0].split(",");
  const kind = fields[0].length === 6 ? fields[0].slice(3) : "";
  const first = { RMC: 3, GGA: 2 }[kind];
  if (first === undefined)
    return null;
  if (kind === "RMC" ? fields[2] !== "A" : !(parseInt(fields[6], 10) > 0))
    return undefined;
  const place = { latitude: angle(fields[first], fields[first + 1]),
                  longitude: angle(fields[first + 2], fields[first + 3]) };
  if (!inWorld(place))
    return null;
  const number = (text) => (text === undefined || text === "" ? null : Number(text));
  return { ...place, course: kind === "RMC" ? number(fields[8]) : null,
           knots: kind === "RMC" ? number(fields[7]) : null };
}

// Each changes the state by the arguments of a request that was accepted.
const EFFECTS = {
  M(state, text) {
    const [name, description, latitude, longitude, altitude, ...icon] = text.split(",");
    const place = placeOf(latitude, longitude);
    if (place)
      state.waypoints.set(name, { ...place, name, description, altitude: parseFloat(altitude), icon: icon.join(",") });
  },
  N(state, text) { state.waypoints.delete(text); },
  O(state, text) {
    const [latitude, longitude, scale] = text.split(",");
    const place = placeOf(latitude, longitude);
    if (place)
      state.centre = { ...place, metres: parseFloat(scale) || (state.centre ? state.centre.metres : 0) };
  },
  S(state, text) {
    const [latitude, longitude, , , ...label] = text.split(",");
    const place = placeOf(latitude, longitude);
    if (!place)
      return;
    state.destination = { ...place, label: label.join(","), from: state.position };
    state.route = "";
  },
  f(state, text) { state.route = text; state.destination = null; },
  E(state, text) {
    const fix = fixOf(text);
    if (fix === null)
      return;
    if (fix === undefined) {
      state.position = null;
      return;
    }
    const before = state.position;
    state.position = { ...fix, course: fix.course ?? (before ? before.course : null),
                       knots: fix.knots ?? (before ? before.knots : null) };
    const last = state.track[state.track.length - 1];
    if (!last || last.latitude !== fix.latitude || last.longitude !== fix.longitude)
      state.track.push(fix);
  },
  T(state, text, exchange) {
    const fields = text.split("|");
    const [style, seconds] = fields.slice(-2);
    ++state.boxes;
    state.box = { title: fields[1], text: fields.slice(2, -2).join("|"), style: parseInt(style, 10),
                  seconds: parseInt(seconds, 10), number: exchange.boxes ?? state.boxes };
  },
  D(state, text) { state.file = text; ++state.files; },
  I(state, text) { state.command = text; ++state.commands; },
};

function accepted(exchange) {
  return exchange.result === 0 && typeof exchange.request === "string";
}

// Whether the request failed; results of calls that only look (as "not there") count too.
function failed(exchange) {
  return exchange.result !== 0 && exchange.result !== null && exchange.result !== undefined;
}

// What the navigator says of itself, over what its requests tell.
function stateNow(now, told) {
  const waypoints = new Map(now.waypoints.map((waypoint) => [waypoint.name, waypoint]));
  const { position, centre, destination } = now;
  return { ...told, waypoints, route: now.route, destination, track: now.track,
           centre: centre && { ...centre, metres: parseFloat(centre.description) || 0 },
           position: position && { ...position, course: told.position?.course ?? null,
                                   knots: told.position?.knots ?? null } };
}

class Model {
  constructor(exchanges) {
    this.exchanges = exchanges;
    this.checkpoints = [emptyState()];
    this.count = 0; // requests that `current` has seen
    this.current = emptyState();
  }

  // The state after the first `count` requests; changed by the next call.
  after(count) {
    if (count < this.count) {
      const start = Math.min(Math.floor(count / CHECKPOINT), this.checkpoints.length - 1);
      this.current = copyState(this.checkpoints[start]);
      this.count = start * CHECKPOINT;
    }
    while (this.count < count)
      this.step();
    return this.current;
  }

  step() {
    const exchange = this.exchanges[this.count++];
    const effect = accepted(exchange) && EFFECTS[exchange.request[0]];
    if (effect)
      effect(this.current, exchange.request.slice(2), exchange);
    if (this.count % CHECKPOINT === 0 && this.checkpoints.length === this.count / CHECKPOINT)
      this.checkpoints.push(copyState(this.current));
  }
}
