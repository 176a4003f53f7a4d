// The data of the logs as scrivel writes them, unpacked: a column of numbers for each thing that is known of
// every call. What a call holds is parsed when somebody looks at it.
'use strict';

/**
 * An element of a call: its name's number, and its text, its elements, or its bytes as digits. The count that may
 * follow is that of bytes, or tells that something was cut.
 * @typedef {[number, string | Item[], number?]} Item
 */

/**
 * @typedef {object} Details
 * @property {string} given  its arguments in one line
 * @property {string} gave   its results in one line
 * @property {Item[]} args
 * @property {Item[]} results
 * @property {Item[]} before
 * @property {string} address
 * @property {boolean} lost
 * @property {number[]} parts
 */

/**
 * @typedef {object} Duration
 * @property {string} name
 * @property {number} calls
 * @property {number} failed
 * @property {number} open
 * @property {number} timed
 * @property {number} total
 * @property {number} median
 * @property {number} p95
 * @property {number} max
 * @property {boolean} exact
 * @property {[number, number][]} bins
 */

/**
 * One log. Its calls are the rows from first up to last of the model.
 * @typedef {object} Log
 * @property {number} index
 * @property {string} file  as a shell takes it
 * @property {any} data     as it was written
 * @property {number} first
 * @property {number} last
 * @property {number} offset  microseconds after the first log
 * @property {boolean} exact  whether that is known to a millisecond
 * @property {string} text    what the calls hold
 * @property {Float64Array} lines  where each call's line begins in that
 */

const OPEN = NaN;

class Model {
  constructor() {
    /** @type {Log[]} */
    this.logs = [];
    /** @type {string[]} */
    this.names = [];
    /** @type {string[]} */
    this.statuses = [];
    /** @type {Map<string, number>} */
    const nameNumbers = new Map();
    /** @type {Map<string, number>} */
    const statusNumbers = new Map();

    const blocks = [...document.querySelectorAll('script.log')];
    const texts = [...document.querySelectorAll('script.details')];
    const parsed = blocks.map((block) => JSON.parse(block.textContent || ''));
    const count = parsed.reduce((sum, data) => sum + data.rows.number.length, 0);

    this.count = count;
    this.log = new Uint16Array(count);
    this.entry = new Float64Array(count);
    this.number = new Float64Array(count);
    this.name = new Uint32Array(count);
    this.thread = new Uint32Array(count);
    this.depth = new Uint32Array(count);
    this.status = new Uint32Array(count);
    /** Microseconds since its log's start; NaN when the beginning is lost. */
    this.entered = new Float64Array(count);
    /** The same, NaN when it has not returned. */
    this.returned = new Float64Array(count);
    /** Microseconds; NaN when that isn't known. */
    this.took = new Float64Array(count);
    this.span = new Float64Array(count);
    this.seen = new Float64Array(count);
    this.runs = new Float64Array(count);
    this.failed = new Uint8Array(count);
    /** @type {(number | string | null)[]} */
    this.parent = [];
    /** What few calls have. @type {Map<number, {occurrence: number, wrapped: boolean, returnWrapped: boolean, clockSetBack: boolean, number: string}>} */
    this.odd = new Map();
    /** @type {Map<number, Details>} */
    this.parsedDetails = new Map();

    let row = 0;
    let firstStart = NaN;
    let earlierEnd = 0;
    for (const [index, data] of parsed.entries()) {
      const start = Number(/** @type {HTMLElement} */ (blocks[index]).dataset.start ?? NaN);
      if (Number.isNaN(firstStart)) firstStart = start;
      // Where only the second is known in which a log began, it stands after the one before it.
      const exact = /** @type {HTMLElement} */ (blocks[index]).dataset.exact === '1';
      const since = Number.isNaN(start) ? 0 : Math.max(0, start - firstStart);
      const offset = exact || index === 0 ? since : Math.max(since, earlierEnd);
      earlierEnd = Math.max(earlierEnd, offset + (data.last ?? 0));
      /** @type {Log} */
      const log = {
        index, file: data.file, data, first: row, last: row, offset, exact,
        text: texts[index].textContent || '', lines: new Float64Array(0),
      };
      this.logs.push(log);
      row = this.addRows(log, nameNumbers, statusNumbers);
      log.last = row;
      log.lines = lineStarts(log.text, log.last - log.first);
      blocks[index].remove();
      texts[index].remove();
      data.rows = null;
    }
  }

  /**
   * @param {Log} log
   * @param {Map<string, number>} nameNumbers
   * @param {Map<string, number>} statusNumbers
   */
  addRows(log, nameNumbers, statusNumbers) {
    const {rows, names, statuses, exceptions} = log.data;
    const nameOf = names.map((/** @type {string} */ name) => numberOf(name, this.names, nameNumbers));
    const statusOf = statuses.map((/** @type {string} */ text) => numberOf(text, this.statuses, statusNumbers));
    let entry = 0, number = 0, entered = 0, seen = 0, runs = 0;
    const begin = log.first;
    for (let i = 0; i < rows.number.length; ++i) {
      const row = begin + i;
      this.log[row] = log.index;
      this.entry[row] = entry += rows.entry[i];
      this.number[row] = number += rows.number[i];
      this.name[row] = nameOf[rows.name[i]];
      this.thread[row] = rows.thread[i];
      this.depth[row] = rows.depth[i];
      this.status[row] = statusOf[rows.status[i]];
      const status = statuses[rows.status[i]];
      this.failed[row] = status !== '' && status !== 'CADI_STATUS_OK' ? 1 : 0;
      const hasBegun = rows.entered[i] !== null;
      if (hasBegun) entered += rows.entered[i];
      this.entered[row] = hasBegun ? entered : NaN;
      const took = rows.took[i];
      this.took[row] = hasBegun && took !== null ? took : NaN;
      this.returned[row] = took === null ? OPEN : (hasBegun ? entered : 0) + took;
      this.span[row] = rows.span[i];
      this.seen[row] = seen += rows.seen[i];
      this.runs[row] = runs += rows.runs[i];
      this.parent.push(rows.parent[i]);
    }
    for (const [i, occurrence, wrapped, returnWrapped, clockSetBack, exact] of exceptions) {
      this.odd.set(begin + i, {occurrence, wrapped, returnWrapped, clockSetBack, number: String(exact)});
      if (wrapped !== returnWrapped || clockSetBack) this.took[begin + i] = NaN;
    }
    return begin + rows.number.length;
  }

  /** @param {number} row */
  isOpen(row) {
    return Number.isNaN(this.returned[row]);
  }

  /** The number as the log has it. @param {number} row */
  numberText(row) {
    return this.odd.get(row)?.number ?? String(this.number[row]);
  }

  /** 68, or 68#2 for the second call of that number. @param {number} row */
  title(row) {
    const occurrence = this.odd.get(row)?.occurrence ?? 1;
    return this.numberText(row) + (occurrence > 1 ? '#' + occurrence : '');
  }

  /** The number in threadId; empty without one. @param {number} row */
  threadId(row) {
    const thread = this.thread[row];
    return thread === 0 ? '' : this.logs[this.log[row]].data.threads[thread - 1] ?? '';
  }

  /** The row of the call that it was made in, or -1. @param {number} row */
  parentRow(row) {
    const parent = this.parent[row];
    if (parent === null) return -1;
    const log = this.logs[this.log[row]];
    for (let other = row - 1; other >= log.first; --other)
      if (this.number[other] === Number(parent) && this.numberText(other) === String(parent)) return other;
    return -1;
  }

  /** The first row with a number, in one log or in any; -1 without one. @param {string} number @param {number} [log] */
  find(number, log) {
    // The run of a session is more likely meant than its connection.
    for (const {index, first, last} of [...this.logs].reverse()) {
      if (log !== undefined && log !== index) continue;
      for (let row = first; row < last; ++row)
        if (this.title(row) === number) return row;
    }
    return -1;
  }

  /** The row of an entry of a log, or the next one that is there. @param {Log} log @param {number} entry */
  rowAt(log, entry) {
    let low = log.first, high = log.last;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.entry[middle] < entry) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  /** The row of an entry of a log, or -1 when the page leaves it out. @param {Log} log @param {number} entry */
  rowOf(log, entry) {
    const row = this.rowAt(log, entry);
    return row < log.last && this.entry[row] === entry ? row : -1;
  }

  /** @param {number} row @returns {Details} */
  details(row) {
    const known = this.parsedDetails.get(row);
    if (known) return known;
    const log = this.logs[this.log[row]];
    const i = row - log.first;
    const [given, gave, args, results, parts, rest] = JSON.parse(log.text.slice(log.lines[i], log.lines[i + 1] - 1));
    const details = {given, gave, args, results, parts, before: rest?.before ?? [], address: rest?.address ?? '', lost: rest?.lost ?? false};
    if (this.parsedDetails.size > 5000) this.parsedDetails.clear();
    this.parsedDetails.set(row, details);
    return details;
  }

  /** @param {number} row */
  elements(row) {
    return /** @type {string[]} */ (this.logs[this.log[row]].data.elements);
  }
}

/** @param {string} word @param {string[]} words @param {Map<string, number>} numbers */
function numberOf(word, words, numbers) {
  let number = numbers.get(word);
  if (number === undefined) {
    number = words.push(word) - 1;
    numbers.set(word, number);
  }
  return number;
}

/** @param {string} text @param {number} count */
function lineStarts(text, count) {
  const starts = new Float64Array(count + 1);
  let at = 0;
  for (let i = 1; i <= count; ++i) starts[i] = at = text.indexOf('\n', at) + 1;
  return starts;
}
