// The chosen call: when, how it ended, what it was given and gave back.
'use strict';

const mostItems = 100;       // of one element, until one asks for more
const mostCharacters = 2000; // of one text, likewise
const mostDumped = 1024;     // bytes of one array, likewise

/** @param {Model} model @param {number} row @param {(row: number) => void} go */
function detailsOf(model, row, go) {
  const log = model.logs[model.log[row]], details = model.details(row), odd = model.odd.get(row);
  const isOpen = model.isOpen(row), failed = model.failed[row] !== 0;
  const status = model.statuses[model.status[row]];
  const names = model.elements(row);
  const facts = make('dl', {class: 'facts'});
  /** @param {string} term @param {(Node | string)[]} what */
  const fact = (term, ...what) => facts.append(make('dt', {}, term), make('dd', {}, ...what));

  const ending = log.data.ending.find((/** @type {any} */ one) => one.entry === model.entry[row]);
  if (isOpen) fact('status', make('span', {class: 'bad'}, '◼ ' + (ending?.word ?? 'had not returned')));
  else if (status !== '') fact('status', make('span', {class: failed ? 'bad' : 'ok'}, (failed ? '✕ ' : '') + printable(clip(status, mostCharacters))));
  fact('entered', Number.isNaN(model.entered[row]) ? 'its beginning is lost' : timeText(model.entered[row], odd?.wrapped) + ' s');
  if (!isOpen) fact('returned', timeText(model.returned[row], odd?.returnWrapped) + ' s');
  if (!Number.isNaN(model.took[row])) fact('took', durationText(model.took[row]));
  if (odd?.clockSetBack) fact('clock', 'was set back meanwhile');
  if (odd?.wrapped || odd?.returnWrapped) fact('clock', 'had been set back: times with ! are before the log’s start');
  if (model.thread[row]) fact('thread', `T${model.thread[row]}, ${model.threadId(row)}`);
  const parent = model.parent[row];
  if (parent !== null) {
    const parentRow = model.parentRow(row);
    const text = parentRow < 0 ? '#' + parent : `#${model.title(parentRow)} ${printable(clip(model.names[model.name[parentRow]], 80))}`;
    fact('within', parentRow < 0 ? text : linkTo(text, () => go(parentRow)));
  }
  const within = [];
  for (let other = row + 1; other < log.last && model.depth[other] > model.depth[row] && within.length < 20; ++other)
    if (model.parent[other] !== null && String(model.parent[other]) === model.numberText(row)) {
      const child = other;
      within.push(linkTo('#' + model.title(child), () => go(child)), ' ');
    }
  if (within.length) fact('made', ...within);
  if (details.address) fact('address', printable(details.address));
  if (model.logs.length > 1) fact('log', printable(log.data.log));
  const [begin, , line] = details.parts;
  if (begin !== undefined) fact('place', `line ${countText(line)}, byte ${countText(begin)}` + (details.parts.length > 3 ? `, in ${details.parts.length / 3} parts` : ''));

  const content = [
    make('h2', {class: 'title'}, make('span', {class: 'name'}, printable(clip(model.names[model.name[row]], mostCharacters))), ' ', make('span', {class: 'dim'}, '#' + model.title(row))),
    facts,
  ];
  for (const [title, elements] of /** @type {[string, Item[]][]} */ ([
    ['Before it', details.before], ['Arguments', details.args], ['Results', details.results]]))
    if (elements.length) content.push(make('h3', {}, title), treeOf(elements, names));
  content.push(make('h3', {}, 'In a shell'), make('pre', {class: 'shell', tabindex: '0'}, printable(`scrivel show ${model.numberText(row)} ${log.file}`)));
  return content;
}

/** @param {Item[]} elements @param {string[]} names */
function treeOf(elements, names) {
  const list = make('ul', {class: 'tree'});
  addItems(list, elements, names, 0);
  return list;
}

/** @param {Element} list @param {Item[]} elements @param {string[]} names @param {number} from */
function addItems(list, elements, names, from) {
  for (const [name, value, count] of elements.slice(from, from + mostItems)) {
    const item = make('li', {}, make('span', {class: 'key'}, printable(clip(names[name], mostCharacters))));
    if (Array.isArray(value)) {
      if (value.length) item.append(treeOf(value, names));
      else item.append(' ', make('span', {class: 'dim'}, '(none)'));
      if (count !== undefined && count > value.length) item.append(make('span', {class: 'dim'}, `cut: ${countText(value.length)} of ${countText(count)}`));
    } else if (count !== undefined && count >= 0) {
      item.append(' ', make('span', {class: 'dim'}, counted(count, 'byte')));
      item.append(...expanding(value, 2 * mostDumped, (digits) => make('pre', {class: 'dump', tabindex: '0'}, dumpText(digits)), 'bytes'));
      if (value.length / 2 < count) item.append(make('span', {class: 'dim'}, `cut: ${countText(value.length / 2)} of ${countText(count)} bytes`));
    } else {
      item.append(' ', ...expanding(value, mostCharacters, (text) => make('span', {class: 'value'}, printable(text)), 'characters'));
      if (count === -1) item.append(make('span', {class: 'dim'}, ' (cut)'));
    }
    list.append(item);
  }
  const rest = elements.length - from - mostItems;
  if (rest > 0) {
    const more = make('li', {}, linkTo(`${countText(rest)} more`, () => {
      more.remove();
      addItems(list, elements, names, from + mostItems);
    }));
    list.append(more);
  }
}

/**
 * The beginning of a long text, and a button that shows the rest.
 * @param {string} text
 * @param {number} most
 * @param {(text: string) => HTMLElement} show
 * @param {string} what
 */
function expanding(text, most, show, what) {
  if (text.length <= most) return [show(text)];
  const begin = show(text.slice(0, most));
  const count = what === 'bytes' ? text.length / 2 : text.length;
  const more = linkTo(`… all ${countText(count)} ${what}`, () => {
    begin.replaceWith(show(text));
    more.remove();
  });
  return [begin, more];
}

/** 0000  e8 03 00 00              .... @param {string} digits */
function dumpText(digits) {
  const lines = [], columns = dumpColumns();
  for (let at = 0; at < digits.length; at += 2 * columns) {
    const bytes = digits.slice(at, at + 2 * columns).match(/../g) ?? [];
    lines.push((at / 2).toString(16).padStart(4, '0') + '  ' + bytes.join(' ').padEnd(3 * columns - 1) + '  ' + bytes.map(letterOf).join(''));
  }
  return lines.join('\n');
}

/** How many bytes a line of the panel has room for. */
function dumpColumns() {
  return byId('right').clientWidth > 620 ? 16 : 8;
}

/** @param {string} byte */
function letterOf(byte) {
  const value = parseInt(byte, 16);
  return value >= 0x20 && value < 0x7f ? String.fromCharCode(value) : '.';
}
