// The grammar by which calls are chosen, as reader/CallFilter.cpp has it: an expression as after --where, or the
// options of the command line when the text begins with "-". A filter is a function of a row.
'use strict';

/** @typedef {(row: number) => boolean} Test */

class FilterError extends Error {}

/**
 * @param {Model} model
 * @param {string} text
 * @returns {Test}
 */
function makeFilter(model, text) {
  const trimmed = text.trim();
  if (trimmed === '') return () => true;
  return trimmed.startsWith('-') ? optionsFilter(model, trimmed) : new Expression(model, text).parse();
}

// ---- Values ------------------------------------------------------------------------------------------------

const mostNumber = (1n << 64n) - 1n;

/** @param {string} text @param {RegExp} digits @param {string} prefix */
function wholeNumber(text, digits, prefix) {
  if (!digits.test(text)) return null;
  const number = BigInt(prefix + text);
  return number <= mostNumber ? number : null;
}

/**
 * A whole number in any form that a log has: 4, 0x40000000, or the 16 bytes of a register.
 * @param {string} text
 */
function parseLogNumber(text) {
  if (text.length > 2 && text.startsWith('0x')) return wholeNumber(text.slice(2), /^[0-9a-fA-F]+$/, '0x');
  if (text.length === 36) {
    const groups = /^(.{8}) (.{8}) (.{8}) (.{8}) $/s.exec(text);
    return groups ? wholeNumber(groups.slice(1).join(''), /^[0-9a-fA-F]+$/, '0x') : null;
  }
  return wholeNumber(text, /^[0-9]+$/, '');
}

const timeUnits = new Map([['ns', 1], ['us', 1e3], ['ms', 1e6], ['s', 1e9], ['', 1e9]]);

/** 1ms, 20us, 1.5s, 0.001 -> nanoseconds. @param {string} text */
function parseDuration(text) {
  const parts = /^(-?)([.0-9]*)(.*)$/s.exec(text);
  if (!parts || !timeUnits.has(parts[3]) || !/^[0-9]*\.?[0-9]*$/.test(parts[2]) || !/[0-9]/.test(parts[2])) return null;
  const unit = /** @type {number} */ (timeUnits.get(parts[3]));
  const [whole, fraction = ''] = parts[2].split('.');
  let value = 0;
  for (const digit of whole + fraction) value = value * 10 + Number(digit);
  const nanoseconds = value / 10 ** fraction.length * unit;
  if (!(nanoseconds < 2 ** 63)) return null;
  return (parts[1] ? -1 : 1) * Math.round(nanoseconds);
}

/** Whether a name matches a glob of * and ?. @param {string} name @param {string} glob */
function matchesGlob(name, glob) {
  let at = 0, within = 0, star = -1, starAt = 0;
  while (at < name.length) {
    if (within < glob.length && (glob[within] === '?' || (glob[within] === name[at] && glob[within] !== '*'))) {
      ++at;
      ++within;
    } else if (glob[within] === '*') {
      star = within++;
      starAt = at;
    } else if (star >= 0) {
      within = star + 1;
      at = ++starAt;
    } else {
      return false;
    }
  }
  while (glob[within] === '*') ++within;
  return within === glob.length;
}

/** As bytes of UTF-8 compare. @param {string} a @param {string} b */
function compareTexts(a, b) {
  if (a === b) return 0;
  const left = [...a], right = [...b];
  for (let i = 0; i < Math.min(left.length, right.length); ++i) {
    const difference = /** @type {number} */ (left[i].codePointAt(0)) - /** @type {number} */ (right[i].codePointAt(0));
    if (difference !== 0) return difference;
  }
  return left.length - right.length;
}

/** @type {Record<string, (difference: number) => boolean>} */
const comparisons = {
  '=': (difference) => difference === 0,
  '==': (difference) => difference === 0,
  '!=': (difference) => difference !== 0,
  '<': (difference) => difference < 0,
  '<=': (difference) => difference <= 0,
  '>': (difference) => difference > 0,
  '>=': (difference) => difference >= 0,
};
const allComparisons = new Set([...Object.keys(comparisons), '~', '!~']);

/** @param {bigint | number} a @param {bigint | number} b */
function difference(a, b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

/** How a text compares with a value. @param {string} comparison @param {string} value @returns {(text: string) => boolean} */
function textTest(comparison, value) {
  if (comparison === '~') return (text) => text.includes(value);
  if (comparison === '!~') return (text) => !text.includes(value);
  const number = parseLogNumber(value);
  const holds = comparisons[comparison];
  return (text) => {
    const own = number === null ? null : parseLogNumber(text);
    return holds(own !== null && number !== null ? difference(own, number) : compareTexts(text, value));
  };
}

// ---- Expressions -------------------------------------------------------------------------------------------

/** Recursive descent: or: and ("or" and)*  and: not ("and" not)*  not: "not" not | "(" or ")" | comparison */
class Expression {
  /** @param {Model} model @param {string} text */
  constructor(model, text) {
    this.model = model;
    this.text = text;
    this.rest = text;
    this.word = '';
    this.quoted = false;
    this.depth = 0;
    this.next();
  }

  /** @returns {Test} */
  parse() {
    const test = this.or();
    if (this.word !== '') this.fail(`unexpected "${this.word}"`);
    return test;
  }

  /** @param {string} what @returns {never} */
  fail(what) {
    throw new FilterError(what);
  }

  next() {
    this.quoted = false;
    this.word = '';
    this.rest = this.rest.replace(/^ +/, '');
    if (this.rest === '') return;
    const first = this.rest[0];
    if (first === '"' || first === "'") {
      const end = this.rest.indexOf(first, 1);
      if (end < 0) this.fail('a quote is not closed');
      this.quoted = true;
      this.word = this.rest.slice(1, end);
      this.rest = this.rest.slice(end + 1);
      return;
    }
    const word = /** @type {RegExpExecArray} */ (/^(?:!~|[=!<>~]=|[=!<>~()]|[^ ()=!<>~]+)/.exec(this.rest))[0];
    this.word = word;
    this.rest = this.rest.slice(word.length);
  }

  /** @param {string} expected */
  take(expected) {
    if (this.quoted || this.word !== expected) return false;
    this.next();
    return true;
  }

  /** @returns {Test} */
  or() {
    let left = this.and();
    while (this.take('or')) {
      const before = left, right = this.and();
      left = (row) => before(row) || right(row);
    }
    return left;
  }

  /** @returns {Test} */
  and() {
    let left = this.not();
    while (this.take('and')) {
      const before = left, right = this.not();
      left = (row) => before(row) && right(row);
    }
    return left;
  }

  /** @returns {Test} */
  not() {
    if (++this.depth > 100) this.fail('nested too deeply');
    /** @type {Test} */
    let test;
    if (this.take('not')) {
      const inner = this.not();
      test = (row) => !inner(row);
    } else if (this.take('(')) {
      test = this.or();
      if (!this.take(')')) this.fail('a ) is missing');
    } else {
      test = this.comparing();
    }
    --this.depth;
    return test;
  }

  /** @returns {Test} */
  comparing() {
    const model = this.model;
    if (this.word === '' && !this.quoted) this.fail('a field is missing at the end');
    if (this.take('failed')) return (row) => model.failed[row] !== 0;
    if (this.take('open')) return (row) => model.isOpen(row);
    if (this.take('returned')) return (row) => !model.isOpen(row);
    const field = this.word;
    this.next();
    if (this.quoted || !allComparisons.has(this.word)) this.fail(`a comparison is missing after "${field}"`);
    const comparison = this.word;
    this.next();
    if (this.word === '' && !this.quoted) this.fail(`a value is missing after "${field}"`);
    const value = this.word;
    this.next();
    return this.field(field, comparison, value);
  }

  /** @param {string} field @param {string} comparison @param {string} value @returns {Test} */
  field(field, comparison, value) {
    const model = this.model;
    switch (field) {
      case 'name':
      case 'status': {
        // There are few names and statuses: each is compared once. A call may have no status.
        const holds = textTest(comparison, value);
        const found = (field === 'name' ? model.names : model.statuses).map((text) => text !== '' && holds(text));
        const column = field === 'name' ? model.name : model.status;
        return (row) => found[column[row]];
      }
      case 'address': {
        const holds = textTest(comparison, value);
        return (row) => model.details(row).address !== '' && holds(model.details(row).address);
      }
      case 'number':
      case 'call':
        return this.number(comparison, value, (row) => model.numberText(row));
      case 'parent':
        return this.number(comparison, value, (row) => model.parent[row]);
      case 'thread':
        if (value.startsWith('T'))
          return this.number(comparison, value.slice(1), (row) => model.thread[row] || null);
        return this.number(comparison, value, (row) => model.threadId(row) || null);
      case 'took':
        return this.duration(comparison, value, model.took);
      case 'time':
        return this.duration(comparison, value, model.entered);
      case 'return':
        return this.duration(comparison, value, model.returned);
    }
    for (const kind of ['arg', 'result']) {
      if (!field.startsWith(kind + '.') || field.length === kind.length + 1) continue;
      const path = field.slice(kind.length + 1).split('.');
      const holds = textTest(comparison, value);
      return (row) => {
        const {args, results} = model.details(row);
        return anyAt(kind === 'arg' ? args : results, model.elements(row), path, [], holds);
      };
    }
    return this.fail(`there is no field "${field}"`);
  }

  /** @param {string} comparison @param {string} value @param {(row: number) => string | number | null} get @returns {Test} */
  number(comparison, value, get) {
    const number = parseLogNumber(value);
    const holds = comparisons[comparison];
    if (number === null || !holds) return this.fail(`"${value}" is no number to compare with`);
    return (row) => {
      const own = get(row);
      return own !== null && holds(difference(BigInt(own), number));
    };
  }

  /** @param {string} comparison @param {string} value @param {Float64Array} column @returns {Test} */
  duration(comparison, value, column) {
    const duration = parseDuration(value);
    const holds = comparisons[comparison];
    if (duration === null || !holds) return this.fail(`"${value}" is no time to compare with: 1ms, 20us, 0.5`);
    return (row) => !Number.isNaN(column[row]) && holds(difference(Math.round(column[row] * 1000), duration));
  }
}

/**
 * Whether any element whose path ends with the names has a text for which the test holds.
 * @param {Item[]} elements
 * @param {string[]} names
 * @param {string[]} path
 * @param {string[]} above
 * @param {(text: string) => boolean} holds
 * @returns {boolean}
 */
function anyAt(elements, names, path, above, holds) {
  for (const [name, value] of elements) {
    above.push(names[name]);
    const ends = above.length >= path.length && path.every((part, i) => part === above[above.length - path.length + i]);
    if (Array.isArray(value) ? anyAt(value, names, path, above, holds) : ends && holds(value)) return true;
    above.pop();
  }
  return false;
}

/** @param {Item[]} elements @param {string[]} names @param {string} text @returns {boolean} */
function containsText(elements, names, text) {
  return elements.some(([name, value]) => names[name].includes(text) ||
    (Array.isArray(value) ? containsText(value, names, text) : value.includes(text)));
}

// ---- Options -----------------------------------------------------------------------------------------------

/** What one types between "scrivel calls" and the log, in words. @param {string} line */
function shellWords(line) {
  const words = [];
  for (const match of line.matchAll(/(?:[^\s'"]+|'[^']*'|"[^"]*")+/g))
    words.push(match[0].replace(/'([^']*)'|"([^"]*)"/g, (_, single, double) => single ?? double));
  if ((line.match(/'[^']*'|"[^"]*"|['"]/g) ?? []).some((part) => part.length === 1)) throw new FilterError('a quote is not closed');
  return words;
}

/** @param {Model} model @param {string} line @returns {Test} */
function optionsFilter(model, line) {
  const words = shellWords(line);
  /** @type {Test[]} */
  const tests = [];
  while (words.length) {
    let option = /** @type {string} */ (words.shift());
    const joined = /^(--[a-z]+)=(.*)$/s.exec(option);
    if (joined) {
      option = joined[1];
      words.unshift(joined[2]);
    }
    if (option === '-f' || option === '--failed') {
      tests.push((row) => model.failed[row] !== 0);
    } else if (option === '--open') {
      tests.push((row) => model.isOpen(row));
    } else {
      const make = optionTests[option];
      if (!make) throw new FilterError(`there is no option ${option}`);
      const value = words.shift();
      if (value === undefined) throw new FilterError(`${option} needs a value`);
      if (value !== '') tests.push(make(model, value));
    }
  }
  return (row) => tests.every((test) => test(row));
}

/** @param {string} text @param {string} error */
function decimal(text, error) {
  const number = wholeNumber(text, /^[0-9]+$/, '');
  if (number === null) throw new FilterError(error);
  return number;
}

/** @param {string} text @param {string} error */
function durationOr(text, error) {
  const duration = parseDuration(text);
  if (duration === null) throw new FilterError(error);
  return duration;
}

/** @type {(model: Model, value: string) => Test} */
const byName = (model, value) => {
  const globs = value.split(',');
  const found = model.names.map((name) => globs.some((glob) => matchesGlob(name, glob)));
  return (row) => found[model.name[row]];
};
/** @type {(model: Model, value: string) => Test} */
const byThread = (model, value) => {
  const threads = value.split(',').map((text) => ({
    byOrder: /^[Tt]/.test(text),
    number: decimal(text.replace(/^[Tt]/, ''), `"${text}" is no thread: T1, T2 or a threadId`),
  }));
  return (row) => threads.some(({byOrder, number}) => byOrder
    ? model.thread[row] !== 0 && BigInt(model.thread[row]) === number
    : model.threadId(row) !== '' && BigInt(model.threadId(row)) === number);
};
/** @type {(model: Model, value: string) => Test} */
const byWhere = (model, value) => new Expression(model, value).parse();

/** @type {Record<string, (model: Model, value: string) => Test>} */
const optionTests = {
  '-n': byName,
  '--name': byName,
  '-t': byThread,
  '--thread': byThread,
  '-w': byWhere,
  '--where': byWhere,
  '--calls': (model, value) => {
    const ranges = value.split(',').map((range) => {
      const error = `"${range}" is no range of calls: 55..68, 55.. or 68`;
      if (range === '') throw new FilterError(error);
      const at = range.indexOf('..');
      const [first, last] = at < 0 ? [range, range] : [range.slice(0, at), range.slice(at + 2)];
      return [first === '' ? 0n : decimal(first, error), last === '' ? mostNumber : decimal(last, error)];
    });
    return (row) => {
      const number = BigInt(model.numberText(row));
      return ranges.some(([first, last]) => first <= number && number <= last);
    };
  },
  '--from': (model, value) => {
    const from = durationOr(value, `"${value}" is no time: 1.5 or 200ms`);
    return (row) => Math.round(model.entered[row] * 1000) >= from;
  },
  '--to': (model, value) => {
    const to = durationOr(value, `"${value}" is no time: 1.5 or 200ms`);
    return (row) => Math.round(model.entered[row] * 1000) <= to;
  },
  '--slower': (model, value) => {
    const limit = durationOr(value, `"${value}" is no duration: 1ms, 20us or 0.5`);
    return (row) => Math.round(model.took[row] * 1000) > limit;
  },
  '--inside': (model, value) => {
    const number = String(decimal(value, `"${value}" is no number of a call`));
    return (row) => {
      for (let at = row; at >= 0; at = model.parentRow(at))
        if (String(model.parent[at]) === number) return true;
      return false;
    };
  },
  '--grep': (model, value) => (row) => {
    if (model.names[model.name[row]].includes(value) || model.statuses[model.status[row]].includes(value)) return true;
    const {args, results} = model.details(row);
    return containsText(args, model.elements(row), value) || containsText(results, model.elements(row), value);
  },
};
