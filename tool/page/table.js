// The table of calls. Only the rows that are seen are elements, so a table of any length scrolls alike. It is what the
// timeline shows, for those who don't see that.
'use strict';

const mostShown = 1000;  // characters of one call's arguments, and of its results

class Table {
  /** @param {Model} model */
  constructor(model) {
    this.model = model;
    this.grid = byId('calls');
    this.body = byId('rows');
    /** Rows of the model that the filter leaves, by entry. @type {Uint32Array} */
    this.rows = new Uint32Array(0);
    this.selected = -1;
    /** @type {(row: number) => void} */
    this.onSelect = () => {};
    this.pending = false;
    this.grid.addEventListener('scroll', () => this.draw());
    new ResizeObserver(() => this.draw()).observe(this.grid);
    this.body.addEventListener('click', (event) => {
      const element = /** @type {Element} */ (event.target).closest('[data-row]');
      if (element) this.onSelect(Number(/** @type {HTMLElement} */ (element).dataset.row));
    });
    const longest = model.count ? model.title(model.count - 1).length : 1;
    this.grid.style.setProperty('--number-width', Math.max(4, longest) + 1 + 'ch');
  }

  get rowHeight() {
    return parseFloat(getComputedStyle(this.grid).getPropertyValue('--row-height')) || 24;
  }

  /** @param {Uint32Array} rows */
  setRows(rows) {
    this.rows = rows;
    this.body.style.height = rows.length * this.rowHeight + 'px';
    this.grid.setAttribute('aria-rowcount', String(rows.length + 1));
    this.draw();
  }

  /** Where a row of the model stands, or where it would. @param {number} row */
  indexOf(row) {
    let low = 0, high = this.rows.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.rows[middle] < row) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  /** @param {number} row */
  select(row) {
    this.selected = row;
    const index = this.indexOf(row), height = this.rowHeight;
    const head = 28, top = index * height, seen = this.grid.clientHeight - head;
    if (top < this.grid.scrollTop) this.grid.scrollTop = top - height;
    else if (top + height > this.grid.scrollTop + seen) this.grid.scrollTop = top + 2 * height - seen;
    this.draw();
  }

  /** Steps up or down from what is chosen. @param {number} steps */
  move(steps) {
    if (this.rows.length === 0) return;
    const at = this.indexOf(Math.max(0, this.selected));
    const isThere = this.rows[at] === this.selected;
    const next = this.selected < 0 ? (steps > 0 ? 0 : this.rows.length - 1) : at + steps - (!isThere && steps > 0 ? 1 : 0);
    this.onSelect(this.rows[Math.max(0, Math.min(this.rows.length - 1, next))]);
  }

  draw() {
    if (this.pending) return;
    this.pending = true;
    requestAnimationFrame(() => {
      this.pending = false;
      this.drawNow();
    });
  }

  drawNow() {
    const height = this.rowHeight;
    if (Math.abs(parseFloat(this.body.style.height) - this.rows.length * height) > 1)
      this.body.style.height = this.rows.length * height + 'px';
    const first = Math.max(0, Math.floor(this.grid.scrollTop / height) - 4);
    const last = Math.min(this.rows.length, first + Math.ceil(this.grid.clientHeight / height) + 10);
    const elements = [];
    for (let i = first; i < last; ++i) {
      const element = this.rowElement(this.rows[i], i);
      element.style.top = i * height + 'px';
      elements.push(element);
    }
    fill(this.body, ...elements);
    const isSeen = elements.some((element) => element.id === 'call-' + this.selected);
    if (isSeen) this.grid.setAttribute('aria-activedescendant', 'call-' + this.selected);
    else this.grid.removeAttribute('aria-activedescendant');
  }

  /** @param {number} row @param {number} index */
  rowElement(row, index) {
    const {model} = this;
    const odd = model.odd.get(row);
    const isOpen = model.isOpen(row), failed = model.failed[row] !== 0;
    const details = model.details(row);
    const status = isOpen ? 'had not returned' : shortStatus(model.statuses[model.status[row]]);
    const depth = Math.min(6, model.depth[row]);
    const name = make('span', {class: 'name', role: 'gridcell'}, (depth ? '  '.repeat(depth - 1) + '└ ' : '') + printable(clip(model.names[model.name[row]], 200)));
    const what = make('span', {class: 'what', role: 'gridcell'}, printable(clip(details.given, mostShown)));
    if (details.gave) what.append(make('span', {class: 'gave'}, (details.given ? ' → ' : '→ ') + printable(clip(details.gave, mostShown))));
    const element = make('div', {
      class: 'row' + (failed ? ' failed' : '') + (isOpen ? ' open' : '') + (row === this.selected ? ' selected' : '') +
        (row > 0 && row === model.logs[model.log[row]].first ? ' begins' : ''),
      role: 'row', id: 'call-' + row, 'data-row': String(row), 'aria-rowindex': String(index + 2),
      'aria-selected': String(row === this.selected),
    },
    make('span', {class: 'number', role: 'gridcell'}, model.title(row)),
    make('span', {class: 'time', role: 'gridcell'}, timeText(model.entered[row], odd?.wrapped)),
    make('span', {class: 'took', role: 'gridcell'}, durationText(model.took[row])),
    make('span', {class: 'thread', role: 'gridcell'}, model.thread[row] ? 'T' + model.thread[row] : ''),
    name, what,
    make('span', {class: 'status', role: 'gridcell'}, (failed ? '✕ ' : isOpen ? '◼ ' : '') + printable(clip(status, 200))));
    return element;
  }
}

/** @param {string} text @param {number} most */
function clip(text, most) {
  return text.length > most ? text.slice(0, most) + '…' : text;
}
