// How long calls took: a row for each name with a histogram whose axis is logarithmic, and the slowest calls.
'use strict';

const binsPerDecade = 5;  // [1, 1.6) us, [1.6, 2.5) us ...; below 1 us is one bin of its own, -1

/** Where a bin begins, in microseconds. @param {number} bin */
function binBegin(bin) {
  return bin < 0 ? 0 : 10 ** (bin / binsPerDecade);
}

class DurationsView {
  /** @param {Model} model @param {(row: number) => void} go @param {(filter: string) => void} filter */
  constructor(model, go, filter) {
    this.model = model;
    this.go = go;
    this.filter = filter;
    this.place = byId('durations');
    this.isMade = false;
  }

  show() {
    if (this.isMade) return;
    this.isMade = true;
    const content = [];
    for (const log of this.model.logs) {
      if (this.model.logs.length > 1) content.push(make('h3', {}, printable(log.data.log)));
      content.push(this.tableOf(log.data.durations));
    }
    content.push(make('h3', {}, 'The slowest'), this.slowest());
    fill(this.place, ...content);
  }

  /** @param {Duration[]} durations */
  tableOf(durations) {
    const bins = durations.flatMap((one) => one.bins.map(([bin]) => bin));
    const first = Math.min(...bins, 0), last = Math.max(...bins, first + 4);
    const most = durations.reduce((sum, one) => one.bins.reduce((a, [, count]) => Math.max(a, count), sum), 1);
    const table = make('table', {class: 'durations'},
      make('caption', {}, `From ${durationText(binBegin(first))} to ${durationText(binBegin(last + 1))}, five columns a decade; heights are logarithmic, too.`),
      make('thead', {}, make('tr', {}, ...['calls', 'median', '95 %', 'max', 'total'].map((title) => make('th', {scope: 'col'}, title)))));
    const body = make('tbody');
    table.append(body);
    for (const one of [...durations].sort((a, b) => b.total - a.total)) {
      const name = one.name === '' ? '(other names)' : printable(clip(one.name, 80));
      const counts = new Map(one.bins);
      const columns = [];
      for (let bin = first; bin <= last; ++bin) {
        const count = counts.get(bin) ?? 0;
        const range = bin < 0 ? 'less than 1 µs' : `${durationText(binBegin(bin))} to ${durationText(binBegin(bin + 1))}`;
        const column = count
          ? make('button', {type: 'button', class: 'bin', title: `${countText(count)}: ${range}`, 'aria-label': `${counted(count, 'call')} of ${range}`, onclick: () => this.filter(binFilter(one.name, bin))})
          : make('span', {class: 'bin'});
        column.style.setProperty('--height', count ? String(0.12 + 0.88 * Math.log1p(count) / Math.log1p(most)) : '0');
        columns.push(column);
      }
      const numbers = [one.median, one.p95, one.max, one.total].map((time) => make('td', {}, one.timed ? (one.exact ? '' : '≈ ') + durationText(time) : ''));
      const calls = make('td', {}, countText(one.calls));
      if (one.failed) calls.append(make('span', {class: 'bad'}, ` ✕${countText(one.failed)}`));
      if (one.open) calls.append(make('span', {class: 'bad'}, ` ◼${countText(one.open)}`));
      body.append(
        make('tr', {class: 'of'}, make('th', {scope: 'rowgroup', colspan: '5'}, linkTo(name, () => this.filter(`name = ${quoted(one.name)}`)))),
        make('tr', {}, calls, ...numbers),
        make('tr', {class: 'bins'}, make('td', {colspan: '5'}, make('div', {class: 'histogram'}, ...columns), axisOf(first, last))));
    }
    return table;
  }

  slowest() {
    const {model} = this;
    const rows = [];
    for (let row = 0; row < model.count; ++row) if (!Number.isNaN(model.took[row])) rows.push(row);
    rows.sort((a, b) => model.took[b] - model.took[a]);
    const list = make('ol', {class: 'slowest'});
    for (const row of rows.slice(0, 20))
      list.append(make('li', {}, make('span', {class: 'code'}, durationText(model.took[row])), ' ',
        linkTo(`#${model.title(row)} ${printable(clip(model.names[model.name[row]], 80))}`, () => this.go(row))));
    return list;
  }
}

/** The decades under a histogram. @param {number} first @param {number} last */
function axisOf(first, last) {
  const axis = make('div', {class: 'axis', 'aria-hidden': 'true'});
  for (let bin = Math.ceil(first / binsPerDecade) * binsPerDecade; bin <= last; bin += binsPerDecade) {
    const label = make('span', {}, decadeText(binBegin(bin)));
    label.style.left = (bin - first) / (last + 1 - first) * 100 + '%';
    axis.append(label);
  }
  return axis;
}

/** 10 µs, 1 ms @param {number} microseconds */
function decadeText(microseconds) {
  const number = Math.round(microseconds);
  return number < 1e3 ? `${number} µs` : number < 1e6 ? `${number / 1e3} ms` : `${number / 1e6} s`;
}

/** @param {string} name @param {number} bin */
function binFilter(name, bin) {
  const from = (/** @type {number} */ at) => `${Math.ceil(binBegin(at) * 1000 - 1e-6)}ns`;
  return `name = ${quoted(name)}` + (bin < 0 ? '' : ` and took >= ${from(bin)}`) + ` and took < ${from(bin + 1)}`;
}

/** A value as an expression takes it. @param {string} value */
function quoted(value) {
  if (/^[^ ()=!<>~"']+$/.test(value)) return value;
  return value.includes('"') ? `'${value}'` : `"${value}"`;
}
