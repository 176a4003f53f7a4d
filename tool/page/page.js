// Puts the page together: what happened, the timeline, the table and the panels, and the keys that reach all of it.
'use strict';

const mostPrinted = 2000;

class Page {
  constructor() {
    const model = this.model = new Model();
    document.title = model.logs.map((log) => printable(log.data.name || log.data.log)).join(', ') + ' – scrivel';
    this.selected = -1;
    this.timeline = new Timeline(model);
    this.table = new Table(model);
    const go = (/** @type {number} */ row) => this.select(row);
    /** Made when somebody asks for it. @type {State | null} */
    this.madeState = null;
    this.registers = new RegistersView(model, () => this.state, this.timeline, go);
    this.memory = new MemoryView(model, () => this.state, go);
    this.durations = new DurationsView(model, go, (text) => this.setFilter(text));
    this.tab = 'call';
    this.timeline.onSelect = go;
    this.table.onSelect = go;
    this.timeline.onView = () => {
      if (this.tab === 'registers') this.registers.draw();
    };
    this.timeline.onLeftOut = (log, number) => {
      byId('others-' + log.index).textContent = printable(`scrivel view --around ${number} ${log.file} -o page.html`);
    };
    this.makeHeader();
    this.makeCard();
    this.tellLeftOut();
    this.makeLegend();
    this.listen();
    this.applyFilter();
    if (!this.goToHash()) this.select(this.firstCall(), true);
  }

  get state() {
    return this.madeState ??= new State(this.model);
  }

  /** The call that one wants to see first: that which never returned, else the first that failed, else the first. */
  firstCall() {
    const {model} = this;
    for (const log of model.logs) {
      const ending = log.data.ending[0];
      if (ending) return Math.min(model.count - 1, model.rowAt(log, ending.entry));
    }
    const failed = model.failed.indexOf(1);
    return failed >= 0 ? failed : model.count ? 0 : -1;
  }

  // ---- What happened ---------------------------------------------------------------------------------------

  makeHeader() {
    for (const {data} of this.model.logs) {
      const [ending] = data.ending;
      const facts = data.facts.slice(0, -1).join(' · ');
      const counts = [counted(data.calls, 'call')];
      if (data.failed) counts.push(`${countText(data.failed)} failed`);
      if (data.open) counts.push(`${countText(data.open)} not returned`);
      if (data.threads.length) counts.push(counted(data.threads.length, 'thread'));
      if (data.last !== null) counts.push(durationText(data.last));
      const line = make('div', {class: 'log'}, make('h1', {}, printable(clip(data.name || data.log, 120))),
        make('span', {class: ending && !ending.running ? 'badge bad' : 'badge'}, ending ? `call ${ending.number} ${ending.word}` : printable(data.end)));
      if (!data.whole) line.append(make('span', {class: 'badge damage'}, printable(data.damage)));
      line.append(make('span', {}, counts.join(' · ')), make('span', {class: 'dim'}, printable(clip(facts, 300))));
      byId('logs').append(line);
    }
  }

  /** The card of the call that everything ended in; none when every call returned. */
  makeCard() {
    const {model} = this;
    const log = model.logs.find(({data}) => data.ending.length);
    if (!log) return;
    const card = byId('card'), {data} = log;
    card.hidden = false;
    const call = make('div', {}, make('h2', {class: 'bad'}, printable(data.ending[0].heading)));
    for (const [i, ending] of data.ending.entries()) {
      const row = model.rowOf(log, ending.entry);
      const open = ending.text.indexOf('(');
      if (i > 0) call.append(make('p', {class: 'dim'}, `Call ${ending.number} ${ending.word} either:`));
      const name = `#${ending.number} ${printable(clip(ending.text.slice(0, open), 200))}`;
      call.append(make('p', {class: 'call'}, row < 0 ? name : linkTo(name, () => this.select(row)), printable(ending.text.slice(open))));
      const at = row < 0 ? 'its details are not in the page' : `entered at ${timeText(model.entered[row])} s` + (model.thread[row] ? ` in thread T${model.thread[row]}` : '');
      const before = row > log.first && model.entry[row - 1] === model.entry[row] - 1 && !Number.isNaN(model.entered[row - 1]) ? `, ${durationText(model.entered[row] - model.entered[row - 1])} after the call before it` : '';
      call.append(
        make('p', {class: 'dim'}, at + before + (ending.within.length ? `; within ${printable(ending.within.join(', '))}` : '; no call was open around it')),
        ...ending.about.map((/** @type {string} */ text) => make('p', {}, printable(text))));
    }
    const known = make('div', {}, make('h2', {}, 'Last known state'));
    if (data.known.length) known.append(make('ul', {}, ...data.known.map((/** @type {string} */ text) => make('li', {}, this.withLinks(log, text)))));
    else known.append(make('p', {class: 'dim'}, 'Nothing was known of registers.'));
    const earlier = make('div', {}, make('h2', {}, 'Before it'));
    const list = make('ul');
    for (const [entry, number, text, failed] of data.before) {
      const row = model.rowOf(log, entry);
      list.append(make('li', failed ? {class: 'bad'} : {}, row < 0 ? '#' + number : linkTo('#' + number, () => this.select(row)), ' ' + printable(clip(text, 300))));
    }
    for (let row = model.rowAt(log, data.ending[0].entry) - 1; row >= log.first; --row) {
      if (!model.failed[row]) continue;
      list.append(make('li', {}, 'last failure ', linkTo('#' + model.title(row), () => this.select(row)), ' ' + printable(clip(model.names[model.name[row]], 100) + ' ' + shortStatus(model.statuses[model.status[row]]))));
      break;
    }
    earlier.append(list);
    fill(card, call, known, earlier);
  }

  /** A text in which #61 goes to that call. @param {Log} log @param {string} text */
  withLinks(log, text) {
    const span = make('span');
    for (const part of printable(text).split(/(#\d+)/)) {
      const row = /^#\d+$/.test(part) ? this.model.find(part.slice(1), log.index) : -1;
      span.append(row < 0 ? part : linkTo(part, () => this.select(row)));
    }
    return span;
  }

  tellLeftOut() {
    for (const log of this.model.logs) {
      const left = log.data.left_out;
      const place = byId('left-out');
      if (log.data.entered > log.data.calls) {
        place.hidden = false;
        place.append(make('span', {}, `Of the ${counted(log.data.entered, 'call')} of ${printable(log.data.name)} a filter left ${countText(log.data.calls)} to this page. `));
      }
      if (!left) continue;
      place.hidden = false;
      const kept = [];
      if (log.data.failed) kept.push(left.failed ? 'the last of those that failed' : `all ${countText(log.data.failed)} that failed`);
      if (log.data.open) kept.push('those that had not returned');
      if (left.slower !== null) kept.push(`those that took longer than ${durationText(left.slower)}`);
      if (left.from !== null) kept.push(`calls ${countText(left.from)} to ${countText(left.to)}`);
      place.append(make('span', {}, `${printable(log.data.name)} has ${counted(log.data.calls, 'call')}; this page has ${countText(log.last - log.first)} of them: ${kept.join(', ')}. ` +
        'The strip under the timeline and the durations tell of all. Others: '), make('code', {id: 'others-' + log.index}, printable(`scrivel view --around N ${log.file} -o page.html`)), ' ');
    }
  }

  makeLegend() {
    const shown = this.timeline.families.slice(0, 8);
    for (const [i, family] of shown.entries()) {
      const swatch = make('i');
      swatch.style.background = `var(--family-${i})`;
      const rest = i === 7 && this.timeline.families.length > 8;
      byId('legend').append(make('li', {}, swatch, rest ? 'others' : printable(clip(family, 20))));
    }
    if (this.model.failed.includes(1)) byId('legend').append(make('li', {class: 'bad'}, '✕ failed'));
    if (this.model.logs.some(({data}) => data.open)) byId('legend').append(make('li', {class: 'bad'}, '▨ had not returned'));
  }

  // ---- Choosing --------------------------------------------------------------------------------------------

  /** @param {number} row @param {boolean} [isFirst] the address stays as it is */
  select(row, isFirst) {
    if (row < 0 || row >= this.model.count) return;
    this.selected = row;
    this.timeline.select(row);
    this.table.select(row);
    this.showPanel();
    if (!isFirst) this.setHash(row);
  }

  showPanel() {
    const row = this.selected;
    if (row < 0) return;
    if (this.tab === 'call') {
      fill(byId('call'), ...detailsOf(this.model, row, (other) => this.select(other)));
      byId('call').scrollTop = 0;
    } else if (this.tab === 'registers') {
      this.registers.show(row);
    } else if (this.tab === 'memory') {
      this.memory.show(row);
    } else {
      this.durations.show();
    }
  }

  /** @param {string} tab @param {boolean} [toFocus] */
  setTab(tab, toFocus) {
    this.tab = tab;
    for (const button of document.querySelectorAll('[role=tab]')) {
      const isChosen = button.id === 'tab-' + tab;
      button.setAttribute('aria-selected', String(isChosen));
      button.setAttribute('tabindex', isChosen ? '0' : '-1');
      byId(button.id.slice(4)).hidden = !isChosen;
      if (isChosen && toFocus) /** @type {HTMLElement} */ (button).focus();
    }
    this.showPanel();
  }

  /** #call=68, and #log=1&call=68 when there are several logs. @param {number} row */
  setHash(row) {
    const log = this.model.logs.length > 1 ? `log=${this.model.log[row]}&` : '';
    history.replaceState(null, '', `#${log}call=${encodeURIComponent(this.model.title(row))}`);
  }

  goToHash() {
    const asked = new URLSearchParams(location.hash.slice(1));
    const call = asked.get('call');
    if (call === null) return false;
    const log = asked.get('log');
    const row = this.model.find(call, log === null ? undefined : Number(log));
    if (row < 0) return false;
    this.select(row, true);
    return true;
  }

  /** The next call that failed or never returned. @param {number} step */
  nextFailure(step) {
    const {rows} = this.table, {model} = this;
    const at = this.table.indexOf(Math.max(0, this.selected));
    for (let i = 1; i <= rows.length; ++i) {
      const row = rows[(at + step * i + rows.length * 2) % rows.length];
      if (model.failed[row] || model.isOpen(row)) {
        this.select(row);
        return;
      }
    }
  }

  // ---- Filter ----------------------------------------------------------------------------------------------

  /** @param {string} text */
  setFilter(text) {
    /** @type {HTMLInputElement} */ (byId('filter')).value = text;
    this.applyFilter();
  }

  applyFilter() {
    const input = /** @type {HTMLInputElement} */ (byId('filter'));
    const {model} = this;
    let test = null;
    try {
      test = makeFilter(model, input.value);
      byId('filter-error').textContent = '';
    } catch (error) {
      if (!(error instanceof FilterError)) throw error;
      byId('filter-error').textContent = printable(error.message);
    }
    input.setAttribute('aria-invalid', String(test === null));
    if (test === null) return;
    const onlyFailed = byId('failed').getAttribute('aria-pressed') === 'true';
    const onlyOpen = byId('open').getAttribute('aria-pressed') === 'true';
    const rows = new Uint32Array(model.count);
    const chosen = new Uint8Array(model.count);
    let count = 0;
    for (let row = 0; row < model.count; ++row) {
      const isIn = (!onlyFailed && !onlyOpen) || (onlyFailed && model.failed[row] !== 0) || (onlyOpen && model.isOpen(row));
      if (!isIn || !test(row)) continue;
      rows[count++] = row;
      chosen[row] = 1;
    }
    this.table.setRows(rows.slice(0, count));
    this.timeline.chosen = count === model.count ? null : chosen;
    this.timeline.draw();
    byId('count').textContent = `${countText(count)} of ${countText(model.count)}`;
    if (this.selected >= 0) this.table.select(this.selected);
  }

  // ---- Keys and buttons ------------------------------------------------------------------------------------

  listen() {
    const {timeline, table} = this;
    const press = (/** @type {string} */ id, /** @type {() => void} */ action) => byId(id).addEventListener('click', action);
    press('by-call', () => this.setAxis(false));
    press('by-time', () => this.setAxis(true));
    press('zoom-in', () => timeline.zoom(0.6));
    press('zoom-out', () => timeline.zoom(1 / 0.6));
    press('fit', () => timeline.fit());
    press('help-button', () => this.help());
    press('theme', () => this.toggleTheme());
    for (const id of ['failed', 'open'])
      press(id, () => {
        byId(id).setAttribute('aria-pressed', String(byId(id).getAttribute('aria-pressed') !== 'true'));
        this.applyFilter();
      });
    press('skip', () => byId('calls').focus());
    byId('skip').addEventListener('click', (event) => event.preventDefault());
    for (const tab of ['call', 'registers', 'memory', 'durations']) press('tab-' + tab, () => this.setTab(tab));
    let waiting = 0;
    byId('filter').addEventListener('input', () => {
      clearTimeout(waiting);
      waiting = setTimeout(() => this.applyFilter(), this.model.count > 5000 ? 200 : 0);
    });
    document.addEventListener('keydown', (event) => this.key(event));
    window.addEventListener('hashchange', () => this.goToHash());
    window.addEventListener('resize', () => {
      timeline.draw();
      table.draw();
    });
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => timeline.restyle());
    window.addEventListener('beforeprint', () => this.preparePrint());
    window.addEventListener('afterprint', () => fill(byId('printed')));
  }

  /** @param {boolean} byTime */
  setAxis(byTime) {
    byId('by-call').setAttribute('aria-pressed', String(!byTime));
    byId('by-time').setAttribute('aria-pressed', String(byTime));
    this.timeline.setAxis(byTime);
  }

  toggleTheme() {
    const root = document.documentElement;
    const isDark = root.dataset.theme ? root.dataset.theme === 'dark' : matchMedia('(prefers-color-scheme: dark)').matches;
    root.dataset.theme = isDark ? 'light' : 'dark';
    this.timeline.restyle();
    this.registers.draw();
  }

  help() {
    /** @type {HTMLDialogElement} */ (byId('help')).showModal();
  }

  /** @param {KeyboardEvent} event */
  key(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || /** @type {HTMLDialogElement} */ (byId('help')).open) return;
    const target = /** @type {HTMLElement} */ (event.target);
    if (target.id === 'filter') {
      if (event.key === 'Escape' || event.key === 'Enter' || event.key === 'ArrowDown') {
        if (event.key === 'Escape' && /** @type {HTMLInputElement} */ (target).value !== '') this.setFilter('');
        else byId('calls').focus();
        event.preventDefault();
      }
      return;
    }
    if (target.tagName === 'SELECT') return;
    const {timeline, table, model} = this;
    if (target.getAttribute('role') === 'tab' && (event.key === 'ArrowLeft' || event.key === 'ArrowRight')) {
      const tabs = ['call', 'registers', 'memory', 'durations'];
      this.setTab(tabs[(tabs.indexOf(this.tab) + (event.key === 'ArrowRight' ? 1 : 3)) % 4], true);
      event.preventDefault();
      return;
    }
    // Panels that scroll keep their arrows.
    const scrolls = target.closest('.panel') !== null && target.closest('button, input') === null;
    if (scrolls && /^(Arrow|Page|Home|End)/.test(event.key)) return;
    const screen = Math.max(1, Math.floor(table.grid.clientHeight / table.rowHeight) - 2);
    /** @type {Record<string, () => void>} */
    const actions = {
      '/': () => byId('filter').focus(),
      'j': () => table.move(1), 'k': () => table.move(-1),
      'ArrowDown': () => table.move(1), 'ArrowUp': () => table.move(-1),
      'PageDown': () => table.move(screen), 'PageUp': () => table.move(-screen),
      'Home': () => table.move(-model.count), 'End': () => table.move(model.count),
      'e': () => this.nextFailure(1), 'E': () => this.nextFailure(-1),
      'p': () => this.select(this.selected < 0 ? -1 : model.parentRow(this.selected)),
      'a': () => timeline.pan(-0.15), 'd': () => timeline.pan(0.15),
      'ArrowLeft': () => timeline.pan(-0.15), 'ArrowRight': () => timeline.pan(0.15),
      'w': () => timeline.zoom(0.6), 's': () => timeline.zoom(1 / 0.6),
      '+': () => timeline.zoom(0.6), '=': () => timeline.zoom(0.6), '-': () => timeline.zoom(1 / 0.6),
      '0': () => timeline.fit(),
      't': () => this.setAxis(!timeline.byTime),
      '1': () => this.setTab('call'), '2': () => this.setTab('registers'), '3': () => this.setTab('memory'), '4': () => this.setTab('durations'),
      'c': () => this.toggleTheme(),
      '?': () => this.help(),
      'Escape': () => this.setFilter(''),
    };
    const action = actions[event.key];
    if (!action) return;
    action();
    event.preventDefault();
  }

  // ---- Paper -----------------------------------------------------------------------------------------------

  /** On paper the calls stand in a plain table: those that the filter leaves, as many as one would print. */
  preparePrint() {
    const {model} = this, {rows} = this.table;
    const at = this.table.indexOf(Math.max(0, this.selected));
    const first = Math.max(0, Math.min(at - mostPrinted / 2, rows.length - mostPrinted));
    const printed = rows.slice(first, first + mostPrinted);
    const body = make('tbody');
    for (const row of printed) {
      const {given, gave} = model.details(row);
      const cells = [model.title(row), timeText(model.entered[row]), durationText(model.took[row]), model.thread[row] ? 'T' + model.thread[row] : '',
        clip(model.names[model.name[row]], 200), given + (gave ? ' → ' + gave : ''), model.isOpen(row) ? 'had not returned' : shortStatus(model.statuses[model.status[row]])];
      body.append(make('tr', {class: (model.failed[row] ? 'failed ' : '') + (model.isOpen(row) ? 'open' : '')}, ...cells.map((cell) => make('td', {}, printable(cell)))));
    }
    const left = rows.length - printed.length;
    fill(byId('printed'), make('table', {}, make('caption', {}, left ? `${counted(printed.length, 'call')} of ${countText(rows.length)}` : counted(rows.length, 'call')),
      make('thead', {}, make('tr', {}, ...['call', 'at', 'took', 'thr', 'name', 'arguments → results', 'status'].map((title) => make('th', {scope: 'col'}, title)))), body));
  }
}

const page = new Page();
