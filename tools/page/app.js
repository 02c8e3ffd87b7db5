// Puts the page together: one moment is chosen, and map, state, list and detail show it.

const PRINTED_ROWS = 2000; // what a page on paper takes before the browser labours

// By the last and the last but one hexadecimal digit of a box's style.
const BOX_BUTTONS = [["OK"], ["OK", "Cancel"], ["Abort", "Retry", "Ignore"], ["Yes", "No", "Cancel"],
                     ["Yes", "No"], ["Retry", "Cancel"]];
const BOX_SIGNS = ["", "×", "?", "!", "i"];

const byId = (id) => document.getElementById(id);

class App {
  constructor(recording) {
    this.recording = recording;
    this.exchanges = recording.exchanges;
    this.model = new Model(this.exchanges);
    this.map = new MapView(byId("map"), (words) => { byId("pointer").textContent = words; });
    this.timeline = new Timeline(byId("window"), byId("filler"), (index) => this.go(index));
    this.index = this.exchanges.length - 1;
    this.answered = {};    // the live navigator's last box and its button
    this.onAnswer = null;  // (box, button), on the live page
    this.head();
    this.listen();
    this.filter();
    this.go(this.index);
  }

  head() {
    const { device, recorded, lost, exchanges } = this.recording;
    const failures = exchanges.filter(failed).length;
    byId("summary").textContent = [device, recorded, `${exchanges.length} requests, ${failures} failed`]
      .filter(Boolean).join(" · ");
    byId("lost").hidden = !lost;
    byId("lost").textContent = lost ? `${lost} earlier events were overwritten: what they did is not shown.` : "";
    const calls = [...new Set(exchanges.map(callOf))].sort();
    const results = [...new Set(exchanges.map((exchange) => String(exchange.result ?? "none")))]
      .sort((a, b) => Number(a) - Number(b));
    this.options(byId("by-call"), [["", "all"], ...calls.map((call) => [call, call])]);
    this.options(byId("by-result"), [["", "all"], ["failed", "all failures"],
                                     ...results.map((result) => [result, result])]);
    byId("slider").max = Math.max(0, exchanges.length - 1);
    byId("slider").disabled = exchanges.length === 0;
  }

  // Exchanges are only ever added, so as many options are the same ones, which may be open now.
  options(select, pairs) {
    if (select.length === pairs.length)
      return;
    const chosen = select.value;
    select.replaceChildren(...pairs.map(([value, words]) => new Option(words, value)));
    select.value = pairs.some(([value]) => value === chosen) ? chosen : "";
  }

  listen() {
    byId("slider").addEventListener("input", (event) => this.go(Number(event.target.value)));
    for (const id of ["by-call", "by-result", "by-words"])
      byId(id).addEventListener("input", () => this.filter());
    byId("zoom-in").addEventListener("click", () => this.map.zoomBy(1.5));
    byId("zoom-out").addEventListener("click", () => this.map.zoomBy(1 / 1.5));
    byId("fit").addEventListener("click", () => this.map.showAll());
    addEventListener("beforeprint", () => this.timeline.drawAll(this.timeline.rows.length <= PRINTED_ROWS));
    addEventListener("afterprint", () => this.timeline.drawAll(false));
  }

  passes(exchange) {
    const call = byId("by-call").value, result = byId("by-result").value;
    const words = byId("by-words").value.toLowerCase();
    const text = `${exchange.request ?? ""} ${exchange.reply ?? ""}`.toLowerCase();
    return (call === "" || callOf(exchange) === call) && text.includes(words) &&
      (result === "" || (result === "failed" ? failed(exchange) : String(exchange.result ?? "none") === result));
  }

  filter() {
    const rows = [];
    this.exchanges.forEach((exchange, index) => this.passes(exchange) && rows.push(index));
    byId("count").textContent = `${rows.length} of ${this.exchanges.length}`;
    this.timeline.show(this.exchanges, rows);
    this.timeline.choose(this.index);
  }

  // Makes the exchange the present one.
  go(index) {
    this.index = index;
    byId("slider").value = index;
    this.timeline.choose(index);
    const exchange = this.exchanges[index];
    byId("slider").setAttribute("aria-valuetext", exchange ? this.inWords(exchange) : "nothing recorded");
    const told = this.model.after(index + 1), { now } = this.recording;
    const state = now && index === this.exchanges.length - 1 ? stateNow(now, told) : told;
    this.map.show(state);
    this.showState(state);
    this.showExchange(exchange);
  }

  // Live exchanges: shown at once when the last one was the present one.
  append(exchanges) {
    const atEnd = this.index === this.exchanges.length - 1;
    this.exchanges.push(...exchanges);
    this.head();
    this.filter();
    if (atEnd)
      this.go(this.exchanges.length - 1);
    byId("announcer").textContent = this.inWords(exchanges[exchanges.length - 1]);
  }

  inWords(exchange) {
    const result = exchange.result ?? "no result";
    return `${seconds(exchange.t)} s, ${callOf(exchange)}: ${exchange.meaning ?? result}`;
  }

  describe(list, pairs) {
    list.replaceChildren(...pairs.filter(([, value]) => value !== null && value !== undefined && value !== "")
      .flatMap(([name, value]) => {
        const term = document.createElement("dt"), text = document.createElement("dd");
        term.textContent = name;
        text.textContent = value;
        return [term, text];
      }));
  }

  showState(state) {
    const { destination, position, centre } = state;
    this.describe(byId("state"), [
      ["destination", destination && degrees(destination)],
      ["route", state.route],
      ["position", position && degrees(position)],
      ["course", position && position.course !== null ? `${position.course}°` : null],
      ["speed", position && position.knots !== null ? `${(position.knots * 1.852).toFixed(1)} km/h` : null],
      ["track", state.track.length ? `${state.track.length} positions` : null],
      ["waypoints", state.waypoints.size || null],
      ["centre", centre && degrees(centre) + (centre.metres ? `, ${centre.metres} m across` : "")],
      ["file", state.file],
      ["command", state.command],
      ["message boxes", state.boxes || null],
    ]);
    this.box = state.box;
    this.showBox();
    byId("map-words").textContent = this.mapInWords(state);
  }

  // The message box as the device shows it; its buttons work on the live page, once.
  showBox() {
    const box = this.box, answered = box && box.number === this.answered.box;
    byId("box").hidden = !box;
    if (!box)
      return;
    const sign = BOX_SIGNS[box.style >> 4 & 15];
    const part = (name) => byId("box").querySelector(`.box-${name}`);
    part("title").textContent = box.title;
    part("sign").textContent = sign ?? "";
    part("text").textContent = box.text;
    part("numbers").textContent = `style ${box.style}, ${box.seconds} s` +
      (answered ? `, answered: ${this.answered.button}` : "");
    part("buttons").replaceChildren(...(BOX_BUTTONS[box.style & 15] ?? BOX_BUTTONS[0]).map((name) => {
      const button = document.createElement("button");
      button.type = "button";
      button.textContent = name;
      button.disabled = !this.onAnswer || answered;
      button.addEventListener("click", () => this.onAnswer(box.number, name));
      return button;
    }));
  }

  mapInWords({ waypoints, destination, position, track }) {
    const parts = [waypoints.size === 1 ? "1 waypoint" : `${waypoints.size} waypoints`];
    if (destination)
      parts.push(`destination at ${degrees(destination)}`);
    if (position)
      parts.push(`position at ${degrees(position)}`);
    if (track.length > 1)
      parts.push(`a track of ${track.length} positions`);
    return parts.join(", ") + ".";
  }

  showExchange(exchange) {
    const why = [exchange?.why, exchange?.warning].filter(Boolean).join(". ");
    byId("why").hidden = !why;
    byId("why").textContent = why && `Why: ${why}.`;
    const words = exchange && Object.entries(exchange.arguments ?? {}).map(([name, value]) => `${name} = ${value}`);
    this.describe(byId("exchange"), exchange ? [
      ["call", exchange.export ?? exchange.letter],
      ["arguments", words.join(", ")],
      ["request", exchange.request],
      ["reply", exchange.reply ?? "none"],
      ["result", exchange.result === null ? null : `${exchange.result}: ${exchange.meaning ?? ""}`],
      ["took", exchange.milliseconds === null ? null : `${seconds(exchange.milliseconds)} ms`],
      ["client", exchange.by ?? exchange.pid],
    ] : []);
    const diagram = exchange && sequenceDiagram(exchange.events, this.recording.processes ?? []);
    byId("sequence").replaceChildren(...(diagram ? [diagram] : []));
    byId("events").replaceChildren(...(exchange?.events ?? []).map((event) => {
      const item = document.createElement("li");
      item.textContent = `${event.t.toFixed(6)} s, process ${event.pid}: ${event.what}${event.detail ? `, ${event.detail}` : ""}`;
      return item;
    }));
  }
}

const recording = JSON.parse(byId("recording").textContent);
const app = new App(recording);
if (recording.live)
  new Live(app, recording.live);
