// Registers and memory as the debugger had seen them by the chosen call. What they were is told by the reads and
// writes that had ended when the call was entered; what the call itself did to them is shown as a change.
'use strict';

/**
 * A read or write of a register or of memory.
 * @typedef {object} Access
 * @property {number} entry
 * @property {number | string} number  of the call, which the page may not have
 * @property {boolean} isRegister
 * @property {boolean} wrote
 * @property {boolean} whileRunning
 * @property {0 | 1 | 2} outcome  refused, done, open
 * @property {number} runs
 * @property {number} place  which register, or which space
 * @property {string} bytes  as digits
 * @property {bigint} address
 * @property {number} size
 */

/** @typedef {{touch: Access, at: number}} Seen  a touch, and its place among those of its log */

class State {
  /** @param {Model} model */
  constructor(model) {
    this.model = model;
    /** For each log. @type {Access[][]} */
    this.touches = model.logs.map((log) => log.data.touches.map(unpackTouch));
    /** For each log and register: its touches, in their order. @type {Seen[][][]} */
    this.ofRegister = [];
    /** @type {Map<number, Seen[]>[]} */
    this.ofEntry = [];
    for (const log of model.logs) {
      /** @type {Seen[][]} */
      const registers = log.data.registers.map(() => []);
      /** @type {Map<number, Seen[]>} */
      const entries = new Map();
      for (const [i, touch] of this.touches[log.index].entries()) {
        const seen = {touch, at: i + log.data.forgotten};
        if (touch.isRegister) registers[touch.place].push(seen);
        const list = entries.get(touch.entry);
        if (list) list.push(seen);
        else entries.set(touch.entry, [seen]);
      }
      this.ofRegister.push(registers);
      this.ofEntry.push(entries);
    }
  }

  /** What the call itself read and wrote. @param {number} row @returns {Seen[]} */
  by(row) {
    return this.ofEntry[this.model.log[row]].get(this.model.entry[row]) ?? [];
  }

  /** What was known of a register before a call; null when nothing was. @param {number} row @param {number} register */
  registerBefore(row, register) {
    const seen = this.ofRegister[this.model.log[row]][register];
    for (let i = countBefore(seen, this.model.seen[row]) - 1; i >= 0; --i)
      if (seen[i].touch.outcome === 1 && seen[i].touch.bytes !== '') return seen[i];
    return null;
  }

  /** The last access, when it failed after the value came. @param {number} row @param {number} register */
  refusedBefore(row, register) {
    const seen = this.ofRegister[this.model.log[row]][register];
    const last = seen[countBefore(seen, this.model.seen[row]) - 1];
    return last && last.touch.outcome === 0 ? last : null;
  }

  /** Whether the target has run since, or ran then. @param {Access} touch @param {number} row */
  isStale(touch, row) {
    return touch.whileRunning || touch.runs !== this.model.runs[row];
  }

  /**
   * What was known of memory before a call, byte by byte.
   * @param {number} row
   * @param {number} space
   * @param {bigint} from
   * @param {number} size
   * @returns {(null | {byte: string, touch: Access})[]}
   */
  memoryBefore(row, space, from, size) {
    const log = this.model.logs[this.model.log[row]];
    const end = from + BigInt(size);
    /** @type {(null | {byte: string, touch: Access})[]} */
    const bytes = new Array(size).fill(null);
    let missing = size;
    const touches = this.touches[log.index];
    for (let i = Math.min(touches.length, this.model.seen[row] - log.data.forgotten) - 1; i >= 0 && missing; --i) {
      const touch = touches[i];
      if (touch.isRegister || touch.place !== space || touch.outcome !== 1 || touch.bytes === '') continue;
      const last = touch.address + BigInt(touch.bytes.length / 2);
      if (touch.address >= end || last <= from) continue;
      const first = Number((touch.address > from ? touch.address : from) - from);
      const stop = Number((last < end ? last : end) - from);
      for (let at = first; at < stop; ++at) {
        if (bytes[at] !== null) continue;
        const within = Number(from - touch.address) + at;
        bytes[at] = {byte: touch.bytes.slice(2 * within, 2 * within + 2), touch};
        --missing;
      }
    }
    return bytes;
  }

  /** Ranges of memory that a log's calls touched, those that lie near each other as one. @param {Log} log */
  places(log) {
    /** @type {{space: number, from: bigint, to: bigint}[]} */
    const ranges = this.touches[log.index].filter((touch) => !touch.isRegister && touch.size > 0)
      .map((touch) => ({space: touch.place, from: touch.address, to: touch.address + BigInt(Math.max(touch.size, touch.bytes.length / 2))}))
      .sort((a, b) => a.space - b.space || (a.from < b.from ? -1 : a.from > b.from ? 1 : 0));
    /** @type {typeof ranges} */
    const merged = [];
    for (const range of ranges) {
      const last = merged[merged.length - 1];
      if (last && last.space === range.space && range.from <= last.to + 64n) last.to = range.to > last.to ? range.to : last.to;
      else merged.push({...range});
    }
    return merged;
  }
}

/** @param {any[]} item @returns {Access} */
function unpackTouch([entry, number, flags, runs, place, bytes, address, size]) {
  return {
    entry, number, runs, place, bytes,
    isRegister: (flags & 1) !== 0,
    wrote: (flags & 2) !== 0,
    whileRunning: (flags & 4) !== 0,
    outcome: /** @type {0 | 1 | 2} */ (flags >> 3),
    address: address === undefined ? 0n : BigInt('0x' + address),
    size: size ?? 0,
  };
}

/**
 * The call that a value comes from.
 * @param {Model} model
 * @param {Log} log
 * @param {Access} touch
 * @param {(row: number) => void} go
 */
function sourceOf(model, log, touch, go) {
  const row = model.rowOf(log, touch.entry);
  return row < 0 ? '#' + touch.number : linkTo('#' + model.title(row), () => go(row));
}

/** How many of them had ended by then. @param {Seen[]} seen @param {number} count */
function countBefore(seen, count) {
  let low = 0, high = seen.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (seen[middle].at < count) low = middle + 1;
    else high = middle;
  }
  return low;
}

/** A register's bytes without leading zeros. @param {string} bytes */
function valueText(bytes) {
  return '0x' + (bytes.replace(/^0+/, '') || '0');
}

// ---- Registers ---------------------------------------------------------------------------------------------

class RegistersView {
  /** @param {Model} model @param {() => State} state @param {Timeline} timeline @param {(row: number) => void} go */
  constructor(model, state, timeline, go) {
    this.model = model;
    this.getState = state;
    this.timeline = timeline;
    this.go = go;
    this.place = byId('registers');
    /** For each log: the registers that are plotted. @type {Set<number>[]} */
    this.plotted = [];
    /** @type {{canvas: HTMLCanvasElement, register: number}[]} */
    this.plots = [];
    this.log = 0;
  }

  get state() {
    return this.getState();
  }

  /** The registers that a log plots at first: the program counter and those that were touched most. @param {Log} log */
  firstPlotted(log) {
    const touched = this.state.ofRegister[log.index].map((seen, i) => ({i, count: seen.length, isPc: log.data.registers[i][2]}));
    touched.sort((a, b) => Number(b.isPc) - Number(a.isPc) || b.count - a.count);
    return new Set(touched.slice(0, 3).map(({i}) => i));
  }

  /** @param {number} row */
  show(row) {
    const {model, state, place} = this;
    const log = model.logs[model.log[row]];
    this.plotted[log.index] ??= this.firstPlotted(log);
    this.row = row;
    this.log = log.index;
    const registers = state.ofRegister[log.index];
    if (registers.length === 0) {
      this.plots = [];
      fill(place, make('p', {class: 'dim'}, 'No call of this log read or wrote a register.'));
      return;
    }
    const now = new Map(state.by(row).filter(({touch}) => touch.isRegister).map(({touch}) => [touch.place, touch]));
    const table = make('table', {class: 'known'}, make('caption', {}, `Before call ${model.title(row)}, and what it did`),
      make('thead', {}, make('tr', {}, ...['plot', 'register', 'value', 'from'].map((title) => make('th', {scope: 'col'}, title)))));
    const body = make('tbody');
    table.append(body);
    const order = [...registers.keys()].sort((a, b) => Number(log.data.registers[b][2]) - Number(log.data.registers[a][2]) || registers[b].length - registers[a].length);
    for (const register of order) {
      const name = printable(clip(log.data.registers[register][0], 60));
      const before = state.registerBefore(row, register), refused = state.refusedBefore(row, register), touch = now.get(register);
      const box = /** @type {HTMLInputElement} */ (make('input', {type: 'checkbox', 'aria-label': 'plot ' + name}));
      box.checked = this.plotted[log.index].has(register);
      box.addEventListener('change', () => {
        if (box.checked) this.plotted[log.index].add(register);
        else this.plotted[log.index].delete(register);
        this.makePlots();
      });
      const value = make('td', {class: 'code'}, before ? valueText(before.touch.bytes) : '?');
      const from = make('td', {});
      if (before) {
        from.append(before.touch.wrote ? 'wrote ' : 'read ', sourceOf(model, log, before.touch, this.go));
        if (before.touch.whileRunning) from.append(make('span', {class: 'stale'}, ' target was running'));
        else if (state.isStale(before.touch, row)) from.append(make('span', {class: 'stale'}, ' target ran since'));
      }
      if (refused) from.append(make('span', {class: 'bad'}, ` ${refused.touch.wrote ? 'write' : 'read'} refused`));
      if (touch) {
        const verb = touch.wrote ? 'writes' : 'reads';
        const changed = before !== null && touch.bytes !== '' && valueText(touch.bytes) !== valueText(before.touch.bytes);
        value.append(' ', make('span', {class: changed ? 'changed' : 'same'}, `${verb} ${touch.bytes === '' ? 'nothing' : valueText(touch.bytes)}`));
        if (touch.outcome === 0) value.append(make('span', {class: 'bad'}, ' refused'));
      }
      body.append(make('tr', touch ? {class: 'now'} : {}, make('td', {}, box), make('th', {scope: 'row'}, name), value, from));
    }
    this.plotsPlace = make('div', {class: 'plots'});
    fill(place, this.plotsPlace, make('p', {class: 'hint'}, 'Over the calls that the timeline shows. ● wrote, ○ read, dashed: the target ran meanwhile.'), table);
    this.makePlots();
  }

  makePlots() {
    const {model} = this;
    const log = model.logs[this.log];
    this.plots = [...this.plotted[this.log]].sort((a, b) => a - b).map((register) => {
      const canvas = /** @type {HTMLCanvasElement} */ (make('canvas', {class: 'plot', role: 'img', 'aria-label': `values of ${printable(clip(log.data.registers[register][0], 60))} over the calls; the table below has them`}));
      canvas.addEventListener('click', (event) => {
        const entry = this.nearest(register, event.offsetX, canvas.clientWidth);
        if (entry !== null) this.go(model.rowOf(log, entry));
      });
      return {canvas, register};
    });
    if (this.plotsPlace) fill(this.plotsPlace, ...this.plots.map(({canvas}) => canvas));
    this.draw();
  }

  /** @param {number} register @param {number} x @param {number} width */
  nearest(register, x, width) {
    let best = null, distance = Infinity;
    for (const {touch} of this.state.ofRegister[this.log][register]) {
      const away = Math.abs(this.xOf(touch, width) - x);
      if (away < distance) {
        distance = away;
        best = touch.entry;
      }
    }
    return best;
  }

  /** @param {Access} touch @param {number} width */
  xOf(touch, width) {
    const {timeline} = this;
    const row = Math.min(this.model.count - 1, this.model.rowAt(this.model.logs[this.log], touch.entry));
    const middle = timeline.byTime ? timeline.begin(row) : row + 0.5;
    return 8 + (middle - timeline.from) / (timeline.to - timeline.from) * (width - 16);
  }

  draw() {
    if (this.place.hidden || this.row === undefined) return;
    for (const {canvas, register} of this.plots) this.drawPlot(canvas, register);
  }

  /** @param {HTMLCanvasElement} canvas @param {number} register */
  drawPlot(canvas, register) {
    const {model, state, timeline} = this;
    const log = model.logs[this.log];
    const width = canvas.clientWidth, height = 76;
    const context = sized(canvas, width, height);
    // Of calls that the page leaves out, one after another, the last one's value goes on.
    const values = state.ofRegister[this.log][register].filter(({touch}) => touch.outcome === 1 && touch.bytes !== '')
      .filter(({touch}, i, all) => i + 1 === all.length || model.rowOf(log, touch.entry) >= 0 || model.rowAt(log, touch.entry) !== model.rowAt(log, all[i + 1].touch.entry));
    context.font = '11px ui-monospace, monospace';
    context.textBaseline = 'middle';
    context.fillStyle = colour('text');
    context.fillText(printable(clip(log.data.registers[register][0], 40)), 8, 9);
    const numbers = values.map(({touch}) => Number(BigInt('0x' + touch.bytes)));
    const least = numbers.reduce((a, b) => Math.min(a, b), Infinity), most = numbers.reduce((a, b) => Math.max(a, b), -Infinity);
    const y = (/** @type {number} */ number) => most === least ? 44 : height - 10 - (number - least) / (most - least) * (height - 40);
    context.strokeStyle = colour('line');
    context.strokeRect(0.5, 0.5, width - 1, height - 1);
    if (this.row !== undefined && model.log[this.row] === this.log) {
      const middle = timeline.byTime ? timeline.begin(this.row) : this.row + 0.5;
      const x = 8 + (middle - timeline.from) / (timeline.to - timeline.from) * (width - 16);
      context.fillStyle = colour('select');
      context.fillRect(x - 2, 1, 4, height - 2);
    }
    context.save();
    context.beginPath();
    context.rect(1, 1, width - 2, height - 2);
    context.clip();
    const line = colour('accent');
    context.strokeStyle = line;
    let lastLabel = -Infinity;
    for (let i = 0; i < values.length; ++i) {
      const {touch} = values[i];
      const x = this.xOf(touch, width);
      const next = i + 1 < values.length ? this.xOf(values[i + 1].touch, width) : width;
      if (next < 0 || x > width) continue;
      const at = y(numbers[i]);
      context.setLineDash(i + 1 < values.length && values[i + 1].touch.runs !== touch.runs ? [3, 3] : []);
      context.lineWidth = 1.5;
      context.beginPath();
      context.moveTo(x, at);
      context.lineTo(next, at);
      if (i + 1 < values.length) context.lineTo(next, y(numbers[i + 1]));
      context.stroke();
      context.setLineDash([]);
      context.beginPath();
      context.arc(x, at, 3, 0, 2 * Math.PI);
      context.fillStyle = touch.wrote ? line : colour('back');
      context.fill();
      context.stroke();
      const text = valueText(touch.bytes);
      const room = context.measureText(text).width;
      const left = Math.max(4, Math.min(width - room - 4, x + 5));
      if (left > lastLabel + 6 && next - x > 5) {
        context.fillStyle = colour('dim');
        context.fillText(text, left, at - 9 < 16 ? at + 10 : at - 9);
        lastLabel = left + room;
      }
    }
    context.restore();
  }
}

// ---- Memory ------------------------------------------------------------------------------------------------

const mostMemoryRows = 64;

class MemoryView {
  /** @param {Model} model @param {() => State} state @param {(row: number) => void} go */
  constructor(model, state, go) {
    this.model = model;
    this.getState = state;
    this.go = go;
    this.place = byId('memory');
    /** @type {Map<number, ReturnType<State['places']>>} */
    this.places = new Map();
    /** The range that was chosen; "" follows the calls. */
    this.pinned = '';
  }

  get state() {
    return this.getState();
  }

  /** @param {Log} log */
  placesOf(log) {
    let places = this.places.get(log.index);
    if (!places) this.places.set(log.index, places = this.state.places(log));
    return places;
  }

  /** @param {number} row */
  show(row) {
    const {model, state, place} = this;
    const log = model.logs[model.log[row]];
    const places = this.placesOf(log);
    if (places.length === 0) {
      fill(place, make('p', {class: 'dim'}, 'No call of this log read or wrote memory.'));
      return;
    }
    const select = /** @type {HTMLSelectElement} */ (make('select', {id: 'place'}, make('option', {value: ''}, 'what the call touches')));
    for (const [i, {space, from, to}] of places.slice(0, 500).entries())
      select.append(make('option', {value: `${log.index} ${i}`}, `${this.spaceName(log, space)}:0x${from.toString(16)}, ${counted(Number(to - from), 'byte')}`));
    select.value = [...select.options].some((option) => option.value === this.pinned) ? this.pinned : '';
    select.addEventListener('change', () => {
      this.pinned = select.value;
      this.show(row);
      byId('place').focus();
    });
    const content = [make('p', {class: 'choose'}, make('label', {for: 'place'}, 'Show '), select)];

    const own = state.by(row).filter(({touch}) => !touch.isRegister).map(({touch}) => touch);
    /** @type {{space: number, from: bigint, size: number}[]} */
    const shown = [];
    const [pinnedLog, pinnedPlace] = select.value.split(' ').map(Number);
    if (select.value !== '' && pinnedLog === log.index) {
      const {space, from, to} = places[pinnedPlace];
      shown.push({space, from, size: Number(to - from)});
    } else if (own.length) {
      for (const touch of own.slice(0, 8)) shown.push({space: touch.place, from: touch.address, size: Math.max(1, touch.size, touch.bytes.length / 2)});
    } else {
      const before = state.touches[log.index].slice(0, Math.max(0, model.seen[row] - log.data.forgotten));
      const last = before.reverse().find((touch) => !touch.isRegister && touch.size > 0);
      content.push(make('p', {class: 'dim'}, last ? 'This call touches no memory. The last that did:' : 'Nothing was known of memory before this call.'));
      if (last) shown.push({space: last.place, from: last.address, size: Math.max(last.size, last.bytes.length / 2)});
    }
    for (const {space, from, size} of shown) content.push(...this.dump(row, log, space, from, size, own));
    if (log.data.forgotten) content.push(make('p', {class: 'warn'}, 'The earliest reads and writes of this log are not in the page: there was no room for them.'));
    fill(place, ...content);
  }

  /** @param {Log} log @param {number} space */
  spaceName(log, space) {
    return printable(clip(String(log.data.spaces[space]), 40));
  }

  /**
   * @param {number} row
   * @param {Log} log
   * @param {number} space
   * @param {bigint} from
   * @param {number} size
   * @param {Access[]} own
   */
  dump(row, log, space, from, size, own) {
    const {state, model} = this;
    const columns = dumpColumns();
    const around = 2 * columns;
    const first = from - from % BigInt(columns);
    const begin = first > BigInt(around) ? first - BigInt(around) : 0n;
    const rows = Math.min(mostMemoryRows, Math.max(1, Math.ceil((Number(from - begin) + size + around) / columns)));
    const before = state.memoryBefore(row, space, begin, columns * rows);
    /** @type {(null | {byte: string, touch: Access})[]} */
    const now = new Array(columns * rows).fill(null);
    for (const touch of own) {
      if (touch.place !== space || touch.bytes === '' || touch.outcome === 0) continue;
      for (let i = 0; i < touch.bytes.length / 2; ++i) {
        const at = Number(touch.address - begin) + i;
        if (at >= 0 && at < now.length) now[at] = {byte: touch.bytes.slice(2 * i, 2 * i + 2), touch};
      }
    }
    const dump = make('pre', {class: 'dump memory', tabindex: '0'});
    let changed = 0, stale = 0;
    const digits = Math.max(4, (begin + BigInt(columns * rows)).toString(16).length);
    for (let line = 0; line < rows; ++line) {
      // What lies around is shown as far as it is known.
      const lineBegin = begin + BigInt(columns * line), lineEnd = lineBegin + BigInt(columns);
      const isAsked = lineBegin < from + BigInt(size) && lineEnd > from;
      const at = columns * line;
      if (!isAsked && !before.slice(at, at + columns).some(Boolean) && !now.slice(at, at + columns).some(Boolean)) continue;
      dump.append(make('span', {class: 'dim'}, (begin + BigInt(columns * line)).toString(16).padStart(digits, '0')), '  ');
      let letters = '';
      for (let column = 0; column < columns; ++column) {
        const was = before[at + column], is = now[at + column];
        const byte = is?.byte ?? was?.byte ?? '··';
        letters += byte === '··' ? ' ' : letterOf(byte);
        const isChanged = is !== null && is.touch.outcome === 1 && was !== null && is.byte !== was.byte;
        const isStale = is === null && was !== null && state.isStale(was.touch, row);
        changed += isChanged ? 1 : 0;
        stale += isStale ? 1 : 0;
        const kind = isChanged ? 'changed' : is !== null ? 'now' : isStale ? 'stale' : was === null ? 'unknown' : '';
        dump.append(kind ? make('span', {class: kind}, byte) : byte, ' ');
      }
      dump.append(' ' + letters + '\n');
    }
    const title = make('h3', {}, `${this.spaceName(log, space)}:0x${from.toString(16)}`, make('span', {class: 'dim'}, `, ${counted(size, 'byte')}`));
    const notes = make('p', {class: 'hint'});
    for (const touch of own.filter((touch) => touch.place === space && touch.address >= begin && touch.address < begin + BigInt(columns * rows))) {
      notes.append(`This call ${touch.outcome === 2 ? (touch.wrote ? 'was to write' : 'was to read') : touch.wrote ? 'writes' : 'reads'} ${counted(touch.size, 'byte')} here`);
      notes.append(touch.outcome === 0 ? make('span', {class: 'bad'}, ', refused. ') : '. ');
    }
    if (changed) notes.append(make('span', {class: 'changed'}, `${counted(changed, 'byte')} changed`), '. ');
    if (stale) notes.append(make('span', {class: 'stale'}, `${counted(stale, 'byte')} may be stale`), ': the target ran since. ');
    const sources = new Map();
    for (const known of before) if (known) sources.set(known.touch.entry, known.touch);
    if (sources.size) {
      notes.append('Known from ');
      for (const touch of [...sources.values()].sort((a, b) => b.entry - a.entry).slice(0, 6)) {
        notes.append(sourceOf(model, log, touch, this.go), touch.wrote ? ' (wrote) ' : ' (read) ');
      }
    }
    if (columns * rows < size) notes.append(`${countText(size - columns * rows)} more bytes are not shown.`);
    return [title, dump, notes];
  }
}
