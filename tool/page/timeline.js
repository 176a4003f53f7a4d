// The timeline: a lane for each thread, calls within calls below them, calls that overlap side by side. The axis is
// calls in order of entry, where nothing is too small to be seen, or time, where idle gaps are folded.
'use strict';

const laneLeft = 74;  // the lanes' names
const laneTop = 22;   // the axis
const rowHeight = 20;
const barHeight = 18;
const laneGap = 8;
const notesHeight = 18;
const mostRows = 10;  // of one lane

/**
 * @typedef {object} Lane
 * @property {string} title
 * @property {number[]} rows  of the model, by entry
 * @property {Float64Array} reach  for each of them: the end of all up to it
 * @property {number} height  in rows
 */

/** The part of a name by which calls are coloured: CADIMemRead is Mem. @param {string} name */
function familyOf(name) {
  const words = shortName(name).match(/^[A-Z]+(?![a-z])|^[A-Z]?[a-z0-9]+/);
  return words ? words[0] : 'other';
}

class Timeline {
  /** @param {Model} model */
  constructor(model) {
    this.model = model;
    this.byTime = false;
    this.canvas = /** @type {HTMLCanvasElement} */ (byId('timeline'));
    this.overview = /** @type {HTMLCanvasElement} */ (byId('overview'));
    this.selected = -1;
    /** @type {Uint8Array | null} */
    this.chosen = null;
    /** @type {(row: number) => void} */
    this.onSelect = () => {};
    /** @type {() => void} */
    this.onView = () => {};
    /** About this number there are calls that the page leaves out. @type {(log: Log, number: number) => void} */
    this.onLeftOut = () => {};
    this.pending = false;
    /** How long each drawing took, in milliseconds. @type {number[]} */
    this.drawings = [];

    /** Where calls end when each has a place of its own; it begins at its row. */
    this.callEnd = new Float64Array(model.count);
    /** The same by time, in microseconds, with idle gaps folded. */
    this.timeBegin = new Float64Array(model.count);
    this.timeEnd = new Float64Array(model.count);
    this.timeLength = 1;
    /** Rows in the order in which they began. */
    this.order = new Uint32Array(0);
    /** @type {{at: number, length: number}[]} */
    this.folds = [];
    this.foldLength = 0;
    /** Times and their places: from each on both go on alike. @type {[number, number][]} */
    this.segments = [];
    /** @type {Lane[]} */
    this.lanes = [];
    this.rowInLane = new Uint16Array(model.count);
    /** The most frequent first. @type {string[]} */
    this.families = [];
    this.familyOfName = model.names.map(() => 0);
    this.scale = 1;
    this.colours = readColours();

    this.colourFamilies();
    this.measureCalls();
    this.makeLanes();
    this.from = 0;
    this.to = 1;
    this.fit();
    this.listen();
  }

  // ---- Axes ------------------------------------------------------------------------------------------------

  colourFamilies() {
    const counts = new Map();
    const families = this.model.names.map(familyOf);
    for (let row = 0; row < this.model.count; ++row) {
      const family = families[this.model.name[row]];
      counts.set(family, (counts.get(family) ?? 0) + 1);
    }
    const order = [...counts].sort((a, b) => b[1] - a[1]).map(([family]) => family);
    this.families = order;
    this.familyOfName = families.map((family) => Math.min(7, Math.max(0, order.indexOf(family))));
  }

  measureCalls() {
    const {model} = this;
    for (const log of model.logs) {
      for (let row = log.first; row < log.last; ++row) {
        const end = model.isOpen(row) ? log.last : model.rowAt(log, model.entry[row] + model.span[row]);
        this.callEnd[row] = Math.max(row + 1, end);
      }
    }
  }

  measureTime() {
    const {model, timeBegin: begin, timeEnd: end} = this;
    let at = 0;
    for (const log of model.logs) {
      const last = log.offset + (log.data.last ?? 0);
      for (let row = log.first; row < log.last; ++row) {
        at = Number.isNaN(model.entered[row]) ? at : log.offset + model.entered[row];
        begin[row] = at;
        end[row] = model.isOpen(row) ? Math.max(last, at) : Math.max(at, log.offset + model.returned[row]);
      }
    }
    const order = Uint32Array.from(begin.keys()).sort((a, b) => begin[a] - begin[b]);

    let busy = 0, until = -Infinity;
    for (const row of order) {
      busy += Math.max(0, end[row] - Math.max(until, begin[row]));
      until = Math.max(until, end[row]);
    }
    // A gap is shown as no longer than a share of the time in which something happened.
    const most = Math.max(20, busy / 40);
    let shift = order.length ? begin[order[0]] : 0;
    until = shift;
    for (const row of order) {
      const gap = begin[row] - until;
      if (gap > 2 * most) {
        this.folds.push({at: until - shift, length: gap});
        shift += gap - most;
      }
      until = Math.max(until, end[row]);
      begin[row] -= shift;
      end[row] -= shift;
      if (gap > 2 * most || this.segments.length === 0) this.segments.push([begin[row] + shift, begin[row]]);
    }
    this.foldLength = most;
    this.timeLength = order.length ? Math.max(1, until - shift) : 1;
    this.order = order;
  }

  /** @param {number} row */
  begin(row) {
    return this.byTime ? this.timeBegin[row] : row;
  }

  /** @param {number} row */
  end(row) {
    return this.byTime ? this.timeEnd[row] : this.callEnd[row];
  }

  get length() {
    return this.byTime ? this.timeLength : Math.max(1, this.model.count);
  }

  makeLanes() {
    const {model} = this;
    /** @type {Map<string, Lane>} */
    const lanes = new Map();
    /** @type {Map<Lane, number[]>} */
    const ends = new Map();
    for (let row = 0; row < model.count; ++row) {
      const log = model.logs[model.log[row]];
      const key = `${log.index} ${model.thread[row]}`;
      let lane = lanes.get(key);
      if (!lane) {
        const thread = model.thread[row];
        const title = thread === 0 ? (log.data.kind === 'connection log' ? 'connection' : 'no thread') : `thread ${thread}`;
        lane = {title, rows: [], reach: new Float64Array(0), height: 0};
        lanes.set(key, lane);
        ends.set(lane, []);
      }
      const taken = /** @type {number[]} */ (ends.get(lane));
      // Below the call that it was made in, else where nothing is going on.
      const parent = model.parentRow(row);
      let place = parent >= 0 && this.callEnd[parent] > row ? this.rowInLane[parent] + 1 : 0;
      while (taken[place] > row) ++place;
      if (place >= mostRows) place = taken.findIndex((end) => end <= row);
      if (place < 0) place = mostRows - 1;
      taken[place] = Math.max(taken[place] ?? 0, this.callEnd[row]);
      this.rowInLane[row] = place;
      lane.height = Math.max(lane.height, place + 1);
      lane.rows.push(row);
    }
    this.lanes = [...lanes.values()];
    this.measureReach();
  }

  measureReach() {
    for (const lane of this.lanes) {
      let reach = -Infinity;
      lane.reach = Float64Array.from(lane.rows, (row) => reach = Math.max(reach, this.end(row)));
    }
  }

  get height() {
    const lanes = this.lanes.reduce((sum, lane) => sum + lane.height * rowHeight + laneGap, 0);
    return laneTop + lanes + (this.hasNotes() ? notesHeight : 0) + 2;
  }

  hasNotes() {
    return this.model.logs.some((log) => log.data.comments.length || log.data.damages.length);
  }

  // ---- What is seen ----------------------------------------------------------------------------------------

  fit() {
    this.show(0, this.length);
  }

  /** @param {number} from @param {number} to */
  show(from, to) {
    const least = this.byTime ? Math.min(this.length, 2) : Math.min(this.length, 4);
    let size = Math.min(this.length, Math.max(least, to - from));
    from = Math.max(0, Math.min(this.length - size, from));
    this.from = from;
    this.to = from + size;
    this.draw();
  }

  /** @param {number} factor @param {number} [at] where it stays as it is, from 0 to 1 */
  zoom(factor, at = 0.5) {
    const size = this.to - this.from, middle = this.from + size * at;
    this.show(middle - size * factor * at, middle + size * factor * (1 - at));
  }

  /** @param {number} share of what is seen */
  pan(share) {
    const size = this.to - this.from;
    this.show(this.from + size * share, this.to + size * share);
  }

  restyle() {
    this.colours = readColours();
    this.draw();
  }

  /** @param {boolean} byTime */
  setAxis(byTime) {
    if (byTime === this.byTime) return;
    if (this.order.length === 0) this.measureTime();
    this.byTime = byTime;
    this.measureReach();
    this.fit();
    if (this.selected >= 0) this.reveal(this.selected);
  }

  /** Brings a call into view, as near as its neighbours can be told apart when it is far. @param {number} row */
  reveal(row) {
    const size = this.to - this.from, begin = this.begin(row);
    if (begin < this.from || begin > this.to - size * 0.02) this.show(begin - size / 2, begin + size / 2);
    else this.draw();
  }

  /** @param {number} row */
  select(row) {
    this.selected = row;
    if (row >= 0) this.reveal(row);
  }

  // ---- Drawing ---------------------------------------------------------------------------------------------

  draw() {
    if (this.pending) return;
    this.pending = true;
    requestAnimationFrame(() => {
      this.pending = false;
      const started = performance.now();
      this.drawNow();
      this.drawings.push(performance.now() - started);
      if (this.drawings.length > 10000) this.drawings.splice(0, 5000);
      this.onView();
    });
  }

  drawNow() {
    const width = this.canvas.clientWidth, height = this.height;
    const context = sized(this.canvas, width, height);
    this.scale = (width - laneLeft - 8) / (this.to - this.from);
    context.font = '11px ui-sans-serif, system-ui, sans-serif';
    context.textBaseline = 'middle';
    this.drawAxis(context, width, height);
    let top = laneTop;
    for (const lane of this.lanes) {
      context.fillStyle = this.colours.dim;
      context.fillText(this.clipped(context, lane.title, laneLeft - 12), 8, top + barHeight / 2);
      this.drawLane(context, lane, top, width);
      top += lane.height * rowHeight + laneGap;
    }
    if (this.hasNotes()) this.drawNotes(context, top, width);
    this.drawOverview();
  }

  /** @param {number} place */
  x(place) {
    return laneLeft + (place - this.from) * this.scale;
  }

  /** @param {CanvasRenderingContext2D} context @param {string} text @param {number} width */
  clipped(context, text, width) {
    let clip = printable(text.slice(0, 200));
    if (context.measureText(clip).width <= width) return clip;
    while (clip.length > 1 && context.measureText(clip + '…').width > width)
      clip = clip.slice(0, Math.floor(clip.length * 0.8));
    return clip + '…';
  }

  /** @param {CanvasRenderingContext2D} context @param {number} width @param {number} height */
  drawAxis(context, width, height) {
    const {model, colours} = this;
    const step = niceStep((this.to - this.from) / Math.max(2, (width - laneLeft) / 110), this.byTime);
    context.strokeStyle = colours.line;
    context.fillStyle = colours.dim;
    context.beginPath();
    if (this.byTime) {
      for (const fold of this.folds) {
        const left = this.x(fold.at), right = this.x(fold.at + this.foldLength);
        if (right < laneLeft || left > width) continue;
        context.fillStyle = colours.fold;
        context.fillRect(Math.max(laneLeft, left), laneTop - 4, Math.max(1, right - Math.max(laneLeft, left)), height);
        if (right - left > 46) {
          context.fillStyle = colours.dim;
          context.textAlign = 'center';
          context.fillText(`⋯ ${durationText(fold.length)}`, (left + right) / 2, height - 10);
          context.textAlign = 'left';
        }
      }
      context.fillStyle = colours.dim;
      let lastX = -Infinity;
      for (let i = 0; i < this.segments.length; ++i) {
        const [time, place] = this.segments[i];
        const end = i + 1 < this.segments.length ? this.segments[i + 1][1] - this.foldLength : this.timeLength;
        const first = Math.max(place, this.from), last = Math.min(end, this.to);
        const zero = model.logs[0]?.offset ?? 0;
        for (let tick = Math.ceil((first - place + time) / step) * step; tick <= last - place + time; tick += step) {
          const x = this.x(tick - time + place);
          if (x - lastX < 60) continue;
          lastX = x;
          context.moveTo(Math.round(x) + 0.5, 4);
          context.lineTo(Math.round(x) + 0.5, height);
          context.fillText(axisTime(tick - zero, step), x + 4, 10);
        }
      }
    } else {
      // A call whose number can be divided, so that numbers stay the same while one pans.
      for (let tick = Math.ceil(this.from / step) * step; tick < Math.min(this.to, model.count); tick += step) {
        const row = Math.floor(tick), x = this.x(row);
        if (x < laneLeft) continue;
        context.moveTo(Math.round(x) + 0.5, 4);
        context.lineTo(Math.round(x) + 0.5, height);
        context.fillText('#' + model.title(row), x + 4, 10);
      }
    }
    context.stroke();
    if (!this.byTime && this.scale > 6) {
      // Where calls are left out.
      context.setLineDash([2, 3]);
      context.strokeStyle = colours.dim;
      context.beginPath();
      for (let row = Math.max(1, Math.floor(this.from)); row < Math.min(this.to, model.count); ++row) {
        if (model.log[row] !== model.log[row - 1] || model.entry[row] === model.entry[row - 1] + 1) continue;
        context.moveTo(this.x(row), 18);
        context.lineTo(this.x(row), height);
      }
      context.stroke();
      context.setLineDash([]);
    }
    for (const log of model.logs.slice(1)) {
      if (log.first >= model.count) continue;
      const x = this.x(this.begin(log.first));
      if (x < laneLeft || x > width) continue;
      context.fillStyle = colours.dim;
      context.fillRect(Math.round(x) - 1, 0, 2, height);
    }
  }

  /** @param {CanvasRenderingContext2D} context @param {Lane} lane @param {number} top @param {number} width */
  drawLane(context, lane, top, width) {
    const {model, colours} = this;
    const {rows, reach} = lane;
    const right = width;
    // For each row of the lane: what has been drawn up to where. Calls that share a pixel are drawn once, but the
    // failed and open ones always.
    const drawn = new Float64Array(lane.height).fill(-1);
    /** @type {number[]} */
    const marked = [];
    let i = firstAbove(reach, this.from);
    for (; i < rows.length; ++i) {
      const row = rows[i];
      const begin = this.begin(row);
      if (begin > this.to) break;
      const place = this.rowInLane[row];
      const x0 = laneLeft + (begin - this.from) * this.scale;
      const x1 = Math.min(right, laneLeft + (this.end(row) - this.from) * this.scale);
      const bad = model.failed[row] !== 0 || Number.isNaN(model.returned[row]);
      if (bad || row === this.selected) marked.push(row);
      if (x1 < laneLeft || x1 <= drawn[place]) continue;
      const left = Math.max(laneLeft, x0);
      const size = Math.max(1, x1 - left);
      const isFaint = this.chosen !== null && this.chosen[row] === 0;
      if (isFaint) context.globalAlpha = 0.22;
      context.fillStyle = colours.families[this.familyOfName[model.name[row]]];
      const gap = size > 4 ? 1 : 0;
      const y = top + place * rowHeight;
      context.fillRect(left, y, size - gap, barHeight);
      if (isFaint) context.globalAlpha = 1;
      drawn[place] = size > 1 ? x1 : left + 1;
      if (size > 34) {
        context.fillStyle = colours.barText;
        context.fillText(this.clipped(context, shortName(model.names[model.name[row]]), size - 10), left + 5, y + barHeight / 2 + 1);
      }
    }
    const seen = new Float64Array(lane.height).fill(-10);
    for (const row of marked) {
      const place = this.rowInLane[row];
      const x = Math.max(laneLeft, this.x(this.begin(row)));
      if (row !== this.selected && x - seen[place] < 1.5 && !model.isOpen(row)) continue;
      seen[place] = x;
      this.drawMark(context, row, x, top + place * rowHeight, Math.min(right, this.x(this.end(row))));
    }
  }

  /**
   * What tells failed, open and chosen calls from others, also without colour.
   * @param {CanvasRenderingContext2D} context @param {number} row @param {number} left @param {number} y @param {number} right
   */
  drawMark(context, row, left, y, right) {
    const {model, colours} = this;
    const size = Math.max(3, right - left - 1);
    if (model.isOpen(row)) {
      context.save();
      context.beginPath();
      context.rect(left, y, size, barHeight);
      context.clip();
      context.fillStyle = colours.bad;
      context.fillRect(left, y, size, barHeight);
      context.strokeStyle = colours.back;
      context.globalAlpha = 0.4;
      context.lineWidth = 2;
      context.beginPath();
      for (let x = left - (left % 7) - 14; x < left + size + barHeight; x += 7) {
        context.moveTo(x, y + barHeight);
        context.lineTo(x + barHeight, y);
      }
      context.stroke();
      context.restore();
      if (size > 60) {
        const text = this.clipped(context, shortName(model.names[model.name[row]]) + ' – had not returned', size - 12);
        const width = context.measureText(text).width;
        context.fillStyle = colours.bad;
        context.fillRect(left + 2, y + 1, width + 8, barHeight - 2);
        context.fillStyle = colours.badText;
        context.fillText(text, left + 6, y + barHeight / 2 + 1);
      }
      // A torn edge.
      if (size > 8) {
        context.fillStyle = colours.back;
        context.beginPath();
        context.moveTo(left + size, y);
        for (let step = 0; step <= 6; ++step) context.lineTo(left + size - (step % 2 ? 5 : 0), y + step * barHeight / 6);
        context.closePath();
        context.fill();
      }
    } else if (model.failed[row]) {
      // A red edge, and a cross where there is room. Narrow ones leave what they are to be seen above them.
      context.fillStyle = colours.bad;
      if (size > 5) {
        context.fillRect(left, y, 4, barHeight);
        context.fillRect(left, y + barHeight - 4, size, 4);
      } else {
        context.fillRect(left, y + barHeight - 8, Math.min(size, 2.5), 8);
      }
      if (size > 11) {
        context.strokeStyle = colours.bad;
        context.lineWidth = 2;
        context.beginPath();
        const x = left + size - 8;
        context.moveTo(x, y + 4);
        context.lineTo(x + 5, y + 9);
        context.moveTo(x + 5, y + 4);
        context.lineTo(x, y + 9);
        context.stroke();
        context.lineWidth = 1;
      }
    }
    if (row === this.selected) {
      context.strokeStyle = colours.back;
      context.lineWidth = 4;
      context.strokeRect(left, y, size, barHeight);
      context.strokeStyle = colours.text;
      context.lineWidth = 2;
      context.strokeRect(left, y, size, barHeight);
      context.lineWidth = 1;
    }
  }

  /** Comments of the log and places of damage. @param {CanvasRenderingContext2D} context @param {number} top @param {number} width */
  drawNotes(context, top, width) {
    const {model, colours} = this;
    /** @type {{x: number, text: string, damage: boolean}[]} */
    const notes = [];
    for (const log of model.logs) {
      for (const damage of [true, false]) {
        for (const [entry, text] of damage ? log.data.damages : log.data.comments) {
          const row = model.rowAt(log, entry);
          const place = row < log.last ? this.begin(row) : log.last > log.first ? this.end(log.last - 1) : 0;
          if (place < this.from || place > this.to) continue;
          notes.push({x: this.x(place), text: (damage ? 'damaged, ' : '') + text.trim(), damage});
        }
      }
    }
    notes.sort((a, b) => a.x - b.x);
    const y = top + notesHeight / 2 - 2;
    let last = -20;
    for (const [i, note] of notes.entries()) {
      if (note.x - last < 3) continue;
      last = note.x;
      context.fillStyle = note.damage ? colours.bad : colours.warn;
      context.beginPath();
      context.moveTo(note.x - 5, y - 5);
      context.lineTo(note.x + 5, y - 5);
      context.lineTo(note.x, y + 4);
      context.fill();
      const room = (i + 1 < notes.length ? notes[i + 1].x - 8 : width - 6) - note.x - 9;
      if (room > 30) context.fillText(this.clipped(context, note.text, room), note.x + 9, y);
    }
  }

  /** Everything, also what the page leaves out: how many failed, how long they took, and what is seen above. */
  drawOverview() {
    const {model, colours} = this;
    const width = this.overview.clientWidth, height = 26;
    const context = sized(this.overview, width, height);
    const entries = model.logs.reduce((sum, log) => sum + log.data.entries, 0) || 1;
    const scale = (width - laneLeft - 8) / entries;
    context.font = '11px ui-sans-serif, system-ui, sans-serif';
    context.textBaseline = 'middle';
    context.fillStyle = colours.dim;
    context.fillText('all calls', 8, height / 2);
    let base = 0;
    for (const log of model.logs) {
      const {size, calls, failed, open, longest} = log.data.stretches;
      const slowest = Math.log1p(longest.reduce((/** @type {number} */ a, /** @type {number} */ b) => Math.max(a, b), 1));
      const step = Math.max(1, Math.ceil(calls.length / width));
      for (let i = 0; i < calls.length; i += step) {
        let long = 0, bad = 0;
        for (let j = i; j < Math.min(i + step, calls.length); ++j) {
          long = Math.max(long, longest[j]);
          bad += failed[j] + open[j];
        }
        const x = laneLeft + (base + i * size) * scale, w = Math.max(1, Math.min(size * step, log.data.entries - i * size) * scale - (size * step * scale > 3 ? 1 : 0));
        // What the page has of a log that it hasn't whole is darker.
        const has = !log.data.left_out || this.model.rowAt(log, (i + step) * size) - this.model.rowAt(log, i * size) > size * step / 2;
        const tall = 3 + Math.log1p(long) / slowest * (height - 8);
        context.fillStyle = has && log.data.left_out ? colours.dim : colours.line;
        context.fillRect(x, height - 2 - tall, w, tall);
        if (bad) {
          context.fillStyle = colours.bad;
          context.fillRect(x, 0, Math.max(2, w), 4);
        }
      }
      base += log.data.entries;
    }
    // What is seen.
    if (model.count === 0) return;
    const [first, last] = this.seenRows();
    const left = laneLeft + this.globalEntry(first) * scale, right = laneLeft + (this.globalEntry(last) + 1) * scale;
    context.strokeStyle = colours.accent;
    context.lineWidth = 2;
    context.strokeRect(Math.max(laneLeft, left), 1, Math.max(3, right - left), height - 2);
    context.lineWidth = 1;
  }

  /** The first row that is seen and the last one. @returns {[number, number]} */
  seenRows() {
    if (!this.byTime)
      return [Math.min(this.model.count - 1, Math.floor(this.from)), Math.min(this.model.count - 1, Math.max(0, Math.ceil(this.to) - 1))];
    const {order} = this;
    const at = (/** @type {number} */ place) => {
      let low = 0, high = order.length;
      while (low < high) {
        const middle = (low + high) >> 1;
        if (this.timeBegin[order[middle]] < place) low = middle + 1;
        else high = middle;
      }
      return low;
    };
    return [order[Math.min(order.length - 1, at(this.from - (this.to - this.from) * 1e-9))], order[Math.max(0, at(this.to) - 1)]];
  }

  /** @param {number} row */
  globalEntry(row) {
    const index = this.model.log[row];
    let base = 0;
    for (let i = 0; i < index; ++i) base += this.model.logs[i].data.entries;
    return base + this.model.entry[row];
  }

  // ---- Pointing --------------------------------------------------------------------------------------------

  /** The call at a place of the canvas, or -1. @param {number} x @param {number} y */
  rowAt(x, y) {
    let top = laneTop;
    for (const lane of this.lanes) {
      const bottom = top + lane.height * rowHeight;
      if (y >= top && y < bottom + laneGap) {
        const place = Math.min(lane.height - 1, Math.floor((y - top) / rowHeight));
        const at = this.from + (x - laneLeft) / this.scale, near = 4 / this.scale;
        let best = -1, distance = near;
        for (let i = firstAbove(lane.reach, at - near); i < lane.rows.length; ++i) {
          const row = lane.rows[i];
          if (this.begin(row) > at + near) break;
          if (this.rowInLane[row] !== place) continue;
          const away = Math.max(this.begin(row) - at, at - this.end(row), 0);
          if (away < distance || (away === 0 && best < 0)) {
            best = row;
            distance = away;
            if (away === 0) break;
          }
        }
        return best;
      }
      top = bottom + laneGap;
    }
    return -1;
  }

  listen() {
    const {canvas, overview} = this;
    canvas.addEventListener('wheel', (event) => {
      event.preventDefault();
      const rect = canvas.getBoundingClientRect();
      const at = Math.max(0, Math.min(1, (event.clientX - rect.left - laneLeft) / (rect.width - laneLeft - 8)));
      if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) this.pan((event.deltaX || event.deltaY) / 1000);
      else this.zoom(Math.exp(event.deltaY / 400), at);
    }, {passive: false});

    /** @type {Map<number, number>} */
    const pointers = new Map();
    let moved = 0;
    canvas.addEventListener('pointerdown', (event) => {
      pointers.set(event.pointerId, event.clientX);
      canvas.setPointerCapture(event.pointerId);
      moved = 0;
    });
    canvas.addEventListener('pointermove', (event) => {
      const before = pointers.get(event.pointerId);
      if (before === undefined) {
        this.tell(event);
        return;
      }
      const others = [...pointers].filter(([id]) => id !== event.pointerId);
      if (others.length === 1) {
        // Two fingers: what is between them grows.
        const other = others[0][1], middle = (event.clientX + other) / 2 - canvas.getBoundingClientRect().left;
        const factor = Math.abs(before - other) / Math.max(10, Math.abs(event.clientX - other));
        this.zoom(factor, (middle - laneLeft) / (canvas.clientWidth - laneLeft));
        moved += 10;
      } else if (before !== event.clientX) {
        moved += Math.abs(event.clientX - before);
        if (moved > 3) this.pan((before - event.clientX) / (canvas.clientWidth - laneLeft));
      }
      pointers.set(event.pointerId, event.clientX);
    });
    const release = (/** @type {PointerEvent} */ event) => {
      if (pointers.delete(event.pointerId) && event.type === 'pointerup' && moved <= 3) {
        const rect = canvas.getBoundingClientRect();
        const row = this.rowAt(event.clientX - rect.left, event.clientY - rect.top);
        if (row >= 0) this.onSelect(row);
      }
    };
    canvas.addEventListener('pointerup', release);
    canvas.addEventListener('pointercancel', release);
    canvas.addEventListener('dblclick', () => this.zoom(0.5));
    canvas.addEventListener('pointerleave', () => byId('tip').hidden = true);

    const jump = (/** @type {PointerEvent} */ event) => {
      if (event.buttons === 0) return;
      const rect = overview.getBoundingClientRect();
      const entries = this.model.logs.reduce((sum, log) => sum + log.data.entries, 0);
      let entry = (event.clientX - rect.left - laneLeft) / (rect.width - laneLeft - 8) * entries;
      for (const log of this.model.logs) {
        if (entry < log.data.entries) {
          const row = Math.max(0, Math.min(log.last - 1, this.model.rowAt(log, entry)));
          const away = Math.round(this.model.entry[row] - entry);
          if (log.data.left_out && Math.abs(away) > log.data.stretches.size) this.onLeftOut(log, Math.max(0, this.model.number[row] - away));
          const size = this.to - this.from, at = this.begin(row);
          this.show(at - size / 2, at + size / 2);
          return;
        }
        entry -= log.data.entries;
      }
    };
    overview.addEventListener('pointerdown', jump);
    overview.addEventListener('pointermove', jump);
  }

  /** What is under the pointer, in one line. @param {PointerEvent} event */
  tell(event) {
    const rect = this.canvas.getBoundingClientRect();
    const row = this.rowAt(event.clientX - rect.left, event.clientY - rect.top);
    const tip = byId('tip');
    tip.hidden = row < 0;
    this.canvas.style.cursor = row < 0 ? 'grab' : 'pointer';
    if (row < 0) return;
    const {model} = this;
    const state = model.isOpen(row) ? 'had not returned' : durationText(model.took[row]);
    const failed = model.failed[row] ? ' · ' + shortStatus(model.statuses[model.status[row]]) : '';
    tip.textContent = printable(`#${model.title(row)} ${model.names[model.name[row]].slice(0, 80)} · ${state}${failed}`);
    tip.style.left = Math.max(4, Math.min(event.clientX + 12, window.innerWidth - tip.offsetWidth - 8)) + 'px';
    tip.style.top = event.clientY + 16 + 'px';
  }
}

function readColours() {
  return {
    families: Array.from({length: 8}, (_, i) => colour('family-' + i)),
    text: colour('text'), dim: colour('dim'), line: colour('line'), bad: colour('bad'), badText: colour('on-bad'), warn: colour('warn'),
    back: colour('back'), accent: colour('accent'), barText: colour('on-family'), fold: colour('panel'),
  };
}

/** The first index whose value is above. @param {Float64Array} rising @param {number} value */
function firstAbove(rising, value) {
  let low = 0, high = rising.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (rising[middle] <= value) low = middle + 1;
    else high = middle;
  }
  return low;
}

/** 1, 2, 5, 10 ... at least as large. @param {number} least @param {boolean} mayBeSmall */
function niceStep(least, mayBeSmall) {
  if (!mayBeSmall && least <= 1) return 1;
  const power = 10 ** Math.floor(Math.log10(Math.max(least, 1e-3)));
  return power * ([1, 2, 5].find((factor) => factor * power >= least) ?? 10);
}

/** A time on the axis: 1.25 ms, with no more digits than its step needs. @param {number} time @param {number} step */
function axisTime(time, step) {
  const [unit, name] = Math.abs(time) + step >= 1e6 ? [1e6, 's'] : Math.abs(time) + step >= 1e3 ? [1e3, 'ms'] : [1, 'µs'];
  const digits = Math.max(0, Math.min(6, Math.ceil(-Math.log10(step / unit) - 1e-9)));
  return `${(time / unit).toFixed(digits)} ${name}`;
}
