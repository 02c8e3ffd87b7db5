// The live page: the navigator's news, and what the user does at its screen.

const STEP_MS = 200;     // between two positions of a line that is driven
const MAX_HELD = 20000;  // exchanges; then the page begins anew with those that the navigator keeps
const EARTH_RADIUS = 6371008.8; // metres

function radians(degrees) {
  return degrees * Math.PI / 180;
}

function metresBetween(a, b) {
  const half = (angle) => Math.sin(radians(angle) / 2) ** 2;
  const h = half(b.latitude - a.latitude) +
    Math.cos(radians(a.latitude)) * Math.cos(radians(b.latitude)) * half(b.longitude - a.longitude);
  return 2 * EARTH_RADIUS * Math.asin(Math.sqrt(Math.min(1, h)));
}

// Degrees, 0 to 360, of a short way.
function courseBetween(a, b) {
  const east = (b.longitude - a.longitude) * Math.cos(radians(a.latitude));
  return (Math.atan2(east, b.latitude - a.latitude) * 180 / Math.PI + 360) % 360;
}

// A line of places, driven at a speed: where one is after so many metres.
class Way {
  constructor(places) {
    this.places = places;
    this.next = 1;
    this.passed = 0; // metres up to the place before the next one
  }

  // { latitude, longitude, course, end }
  at(metres) {
    for (;;) {
      const a = this.places[this.next - 1], b = this.places[this.next];
      const length = metresBetween(a, b);
      const end = metres >= this.passed + length;
      if (end && this.next + 1 < this.places.length) {
        this.passed += length;
        ++this.next;
        continue;
      }
      const part = end ? 1 : (metres - this.passed) / length;
      return { latitude: a.latitude + (b.latitude - a.latitude) * part,
               longitude: a.longitude + (b.longitude - a.longitude) * part,
               course: courseBetween(a, b), end };
    }
  }
}

class Live {
  constructor(app, { next, state }) {
    this.app = app;
    this.token = new URLSearchParams(location.search).get("token");
    this.news = [];
    this.move = null;   // where to go next, while a move is on its way
    this.moving = false;
    this.line = null;   // places drawn so far
    this.driving = null;
    byId("live").hidden = false;
    this.showState(state);
    this.listenToNews(next);
    this.listenToUser();
    app.map.tool = this;
  }

  listenToNews(next) {
    const source = new EventSource(`/news?token=${this.token}&from=${next}`);
    source.addEventListener("exchange", (event) => {
      this.news.push(JSON.parse(event.data));
      this.timer ??= setTimeout(() => this.takeNews(), 0);
    });
    source.addEventListener("state", (event) => this.showState(JSON.parse(event.data)));
    source.onopen = () => { byId("live-status").textContent = "Connected to the navigator."; };
    source.onerror = () => { byId("live-status").textContent = "The navigator does not answer; it may have ended."; };
  }

  takeNews() {
    this.timer = undefined;
    this.app.append(this.news.splice(0));
    if (this.app.exchanges.length > MAX_HELD)
      location.reload();
  }

  showState(state) {
    this.app.answered = { box: state.answered, button: state.button };
    this.app.showBox();
    if (!state.faults || byId("faults").contains(document.activeElement))
      return;
    const { silent, delay, reply, letters } = state.faults;
    byId("fault-silent").checked = silent;
    byId("fault-delay").value = delay;
    byId("fault-wrong").checked = reply !== null;
    byId("fault-reply").value = reply ?? byId("fault-reply").value;
    byId("fault-letters").value = letters;
  }

  async post(act) {
    try {
      const answer = await fetch(`/acts?token=${this.token}`,
                                 { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(act) });
      if (!answer.ok)
        byId("live-status").textContent = `The navigator did not take it: ${await answer.text()}`;
    } catch {
      byId("live-status").textContent = "The navigator does not answer; it may have ended.";
    }
  }

  listenToUser() {
    byId("faults").addEventListener("change", () => this.post({ act: "faults", faults: {
      silent: byId("fault-silent").checked, delay: Number(byId("fault-delay").value),
      reply: byId("fault-wrong").checked ? byId("fault-reply").value : null,
      letters: byId("fault-letters").value } }));
    byId("place").addEventListener("submit", (event) => {
      event.preventDefault();
      this.moveTo({ latitude: Number(byId("latitude").value), longitude: Number(byId("longitude").value) });
    });
    byId("draw").addEventListener("click", () => this.setDrawing(byId("draw").getAttribute("aria-pressed") !== "true"));
    byId("halt").addEventListener("click", () => this.halt());
    this.app.onAnswer = (box, button) => this.post({ act: "answer", box, button });
  }

  // The last place wins while another is on its way.
  async moveTo(place) {
    this.move = place;
    if (this.moving)
      return;
    this.moving = true;
    while (this.move) {
      const { latitude, longitude, speed = 0, course = 0 } = this.move;
      this.move = null;
      await this.post({ act: "move", latitude, longitude, speed, course });
    }
    this.moving = false;
  }

  setDrawing(on) {
    byId("draw").setAttribute("aria-pressed", on);
  }

  // A tool of the map: whether what is held now is for it, where it goes, and that it is let go.
  begin(target, place) {
    if (byId("draw").getAttribute("aria-pressed") === "true")
      this.line = [place];
    else if (!target.closest("[data-kind=position]"))
      return false;
    this.halt();
    return true;
  }

  drag(place) {
    if (!this.line)
      this.moveTo(place);
    else if (metresBetween(this.line[this.line.length - 1], place) > 0)
      this.line.push(place);
    this.app.map.showDrawn(this.line ?? []);
  }

  end() {
    const line = this.line;
    this.line = null;
    if (line?.length > 1)
      this.drive(line);
    this.setDrawing(false);
  }

  drive(line) {
    const way = new Way(line), begin = performance.now();
    const speed = Math.max(1, Number(byId("kmh").value)) / 3.6;
    this.driving = setInterval(() => {
      const here = way.at((performance.now() - begin) / 1000 * speed);
      this.moveTo({ ...here, speed: here.end ? 0 : speed });
      if (here.end)
        this.halt();
    }, STEP_MS);
    byId("halt").disabled = false;
  }

  halt() {
    clearInterval(this.driving);
    byId("halt").disabled = true;
    this.app.map.showDrawn([]);
  }
}
