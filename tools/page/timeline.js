// The list of requests: only the rows in sight are in the document, so its length costs nothing.

const SPARE_ROWS = 8; // above and below those in sight

function seconds(value) {
  return value === undefined || value === null ? "" : value.toFixed(3);
}

function callOf(exchange) {
  return exchange.export ? exchange.export.replace("ZeltoNavPort_", "") : exchange.letter || "?";
}

class Timeline {
  constructor(element, filler, onChoice) {
    this.element = element;
    this.filler = filler;
    this.onChoice = onChoice;
    this.rows = []; // indices of the exchanges that pass the filters
    this.exchanges = [];
    this.current = -1;
    this.drawn = new Map(); // position among the rows -> element
    this.all = false;       // on paper every row is wanted
    element.addEventListener("scroll", () => this.draw());
    element.addEventListener("keydown", (event) => this.onKey(event));
    new ResizeObserver(() => this.draw()).observe(element);
  }

  rowHeight() {
    return parseFloat(getComputedStyle(document.documentElement).fontSize) * 1.9;
  }

  show(exchanges, rows) {
    this.exchanges = exchanges;
    this.rows = rows;
    this.filler.style.height = `${rows.length * this.rowHeight()}px`;
    this.element.setAttribute("aria-rowcount", rows.length);
    this.clear();
    this.draw();
  }

  clear() {
    for (const element of this.drawn.values())
      element.remove();
    this.drawn.clear();
  }

  range() {
    if (this.all)
      return [0, this.rows.length];
    const height = this.rowHeight();
    const first = Math.floor(this.element.scrollTop / height) - SPARE_ROWS;
    const last = Math.ceil((this.element.scrollTop + this.element.clientHeight) / height) + SPARE_ROWS;
    return [Math.max(0, first), Math.min(this.rows.length, last)];
  }

  draw() {
    const [first, last] = this.range();
    for (const [position, element] of this.drawn) {
      if (position < first || position >= last) {
        element.remove();
        this.drawn.delete(position);
      }
    }
    for (let position = first; position < last; ++position) {
      if (!this.drawn.has(position)) {
        const element = this.row(position);
        this.drawn.set(position, element);
        this.element.append(element);
      }
    }
    this.mark();
  }

  row(position) {
    const exchange = this.exchanges[this.rows[position]];
    const element = document.createElement("div");
    element.className = failed(exchange) ? "row bad" : "row";
    element.setAttribute("role", "row");
    element.setAttribute("aria-rowindex", position + 1);
    element.style.top = `${position * this.rowHeight()}px`;
    const cells = [seconds(exchange.t), callOf(exchange), exchange.request ?? "",
                   exchange.reply ?? "no reply", exchange.result ?? "", seconds(exchange.milliseconds)];
    for (const words of cells) {
      const cell = document.createElement("span");
      cell.setAttribute("role", "cell");
      cell.textContent = words;
      cell.title = words;
      element.append(cell);
    }
    element.addEventListener("click", () => this.onChoice(this.rows[position]));
    return element;
  }

  mark() {
    for (const [position, element] of this.drawn) {
      const index = this.rows[position];
      element.classList.toggle("later", index > this.current);
      if (index === this.current)
        element.setAttribute("aria-current", "true");
      else
        element.removeAttribute("aria-current");
    }
  }

  // Marks an exchange as the present one, and brings it into sight.
  choose(index) {
    this.current = index;
    const position = this.rows.indexOf(index);
    const height = this.rowHeight();
    if (position >= 0) {
      const top = position * height;
      if (top < this.element.scrollTop)
        this.element.scrollTop = top;
      else if (top + height > this.element.scrollTop + this.element.clientHeight)
        this.element.scrollTop = top + height - this.element.clientHeight;
    }
    this.draw();
  }

  onKey(event) {
    const step = { ArrowDown: 1, ArrowUp: -1, PageDown: 10, PageUp: -10,
                   Home: -this.rows.length, End: this.rows.length }[event.key];
    if (step === undefined || this.rows.length === 0)
      return;
    event.preventDefault();
    const position = Math.max(0, this.rows.indexOf(this.current)) + step;
    this.onChoice(this.rows[Math.max(0, Math.min(this.rows.length - 1, position))]);
  }

  // Every row in the document, or those in sight alone.
  drawAll(all) {
    this.all = all;
    this.draw();
  }
}
