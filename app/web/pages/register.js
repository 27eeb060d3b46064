// The register: the shown account's entries with running balances, fetched a page at a time as
// they scroll into view (a 100,000-entry register is never sent whole), its filter and order,
// and a click to resolve, void or delete an entry.

import { $, PAGE, ROW_HEIGHT, attempt, call, money, reload, reloadBook, say, state } from './common.js';
import { loadLists, startEditing, stopEditing } from './entry.js';

// The newest rows of an account asked for before the page knows its accounts: the account
// shown last time, so that the page reopens on it one call sooner.
let early = null;

export function fetchEarly(account) {
  const query = tailQuery(account);
  early = { key: query.toString(), data: call(`/api/register?${query}`) };
  early.data.catch(() => {});  // the page asks again if it is not that account's
}

function tailQuery(account) {
  const query = registerQuery(account, 0);
  query.set('tail', '1');
  return query;
}

export async function showAccount(name) {
  if (state.editing !== null) stopEditing();
  state.account = name;
  try {
    localStorage.setItem('folvant-account', name);
  } catch {
    // a browser that keeps nothing opens on the first account
  }
  state.cursor = null;
  state.generation++;
  state.pages = new Map();
  state.pending = new Set();
  state.total = 0;
  $('#rows-space').replaceChildren();
  $('#register-title').textContent = name;
  document.title = `${name} · Folvant`;
  const editing = $('#edit-account-form').elements;
  editing.name.value = name;
  editing.startingBalance.value = '';
  editing.startingBalance.placeholder = 'as it is';
  document.querySelectorAll('.account').forEach((b) => {
    b.toggleAttribute('aria-current', b.dataset.name === name);
  });
  $('#accounts').classList.remove('open');
  $('#menu').setAttribute('aria-expanded', 'false');
  await refreshRegister(true);
  loadLists();
  document.dispatchEvent(new CustomEvent('account-shown', { detail: name }));
  $('#new-entry [name=date]').focus();
}

async function fetchPage(page) {
  if (state.pages.has(page) || state.pending.has(page)) return;
  const { account, generation } = state;
  state.pending.add(page);
  try {
    const data = await call(`/api/register?${registerQuery(account, page)}`);
    if (generation !== state.generation) return;  // the register was fetched again meanwhile
    state.pages.set(page, data.rows);
    applyTotals(data);
  } catch (error) {
    say(error.message, true);
  } finally {
    if (generation === state.generation) state.pending.delete(page);
  }
  drawRows();
}

function registerQuery(account, page, limit = PAGE) {
  const query = new URLSearchParams({ account, offset: page * PAGE, limit });
  const tools = $('#register-tools').elements;
  query.set('sort', tools.sort.value);
  if (tools.descending.checked) query.set('descending', '1');
  const folder = tools.folder.value;
  if (folder.startsWith('folder:')) query.set('folder', folder.slice(7));
  if (folder.startsWith('smart:')) query.set('smartFolder', folder.slice(6));
  return query;
}

// The tools above the register show what the account's stored filter is.
function showFilter(data) {
  const tools = $('#register-tools').elements;
  if (document.activeElement !== tools.search && !state.searchPending) {
    tools.search.value = data.filter.search;
  }
  tools.dates.value = [...tools.dates.options].some((o) => o.value === data.filter.dates)
    ? data.filter.dates : 'all';
  tools.resolved.value = { resolved: 'only', unresolved: 'not' }[data.filter.resolved] || 'all';
  tools.taxDeductible.value =
    { 'tax-deductible': 'only', 'not-tax-deductible': 'not' }[data.filter.taxDeductible] || 'all';
  const chosen = tools.folder.value;
  tools.folder.replaceChildren(new Option('the register', ''),
    ...data.folders.map((f) => new Option(`folder: ${f}`, `folder:${f}`)),
    ...data.smartFolders.map((f) => new Option(`smart folder: ${f}`, `smart:${f}`)));
  tools.folder.value = [...tools.folder.options].some((o) => o.value === chosen) ? chosen : '';
  for (const link of document.querySelectorAll('.downloads a')) {
    link.href = `/api/export?${new URLSearchParams({ account: state.account, format: link.dataset.format })}`;
    link.download = `${state.account}.${link.dataset.format}`;
  }
}

async function changeFilter(change) {
  await attempt(async () => {
    await call('/api/register/filter', { account: state.account, ...change });
    say('');
    await refreshRegister(true);
  });
}

function applyTotals(data) {
  state.currency = data.currency;
  if (data.filter) showFilter(data);
  if (data.total !== state.total) {
    state.total = data.total;
    $('#rows-space').style.height = `${state.total * ROW_HEIGHT}px`;
  }
  const balances = $('#balances');
  balances.replaceChildren();
  for (const [label, value] of [['Current', data.balances.current],
                                ['Today', data.balances.today],
                                ['Resolved', data.balances.resolved]]) {
    const dt = document.createElement('dt');
    dt.textContent = label;
    const dd = document.createElement('dd');
    dd.textContent = money(value, data.currency);
    dd.className = value < 0 ? 'negative' : '';
    balances.append(dt, dd);
  }
}

// Fetches what the register shows again; `toBottom` scrolls to the newest entries. The rows on
// screen stay until their new contents have come, so nothing flickers.
export async function refreshRegister(toBottom) {
  if (!state.account) return;
  const account = state.account;
  const rows = $('#rows');
  const keepBottom = toBottom || rows.scrollTop + rows.clientHeight >= rows.scrollHeight - 2;
  const fresh = new Map();
  if (keepBottom) {
    // The newest entries and the register's size in one call: a last page of a few rows comes
    // with the page above it.
    const query = tailQuery(account);
    const asked = early?.key === query.toString() ? early.data : null;
    early = null;
    const data = await (asked ? asked.catch(() => call(`/api/register?${query}`))
                              : call(`/api/register?${query}`));
    if (account !== state.account) return;
    applyTotals(data);
    for (let at = 0; at < data.rows.length; at += PAGE) {
      fresh.set(Math.floor((data.offset + at) / PAGE), data.rows.slice(at, at + PAGE));
    }
    rows.scrollTop = rows.scrollHeight;
  } else {
    const head = await call(`/api/register?${registerQuery(account, 0, 0)}`);
    if (account !== state.account) return;
    applyTotals(head);
  }
  const [first, last] = visibleRange();
  for (let page = Math.floor(first / PAGE); page * PAGE < Math.max(last, 1) && page * PAGE < state.total; page++) {
    if (fresh.has(page)) continue;
    const data = await call(`/api/register?${registerQuery(account, page)}`);
    fresh.set(page, data.rows);
  }
  if (account !== state.account) return;
  state.generation++;
  state.pages = fresh;
  state.pending = new Set();
  drawRows();
}

// The first and last (excluded) rows that the scrolled area shows, with a few beyond.
function visibleRange() {
  const rows = $('#rows');
  const first = Math.max(0, Math.floor(rows.scrollTop / ROW_HEIGHT) - 5);
  const last = Math.min(state.total, Math.ceil((rows.scrollTop + rows.clientHeight) / ROW_HEIGHT) + 5);
  return [first, last];
}

export function drawRows() {
  const [first, last] = visibleRange();
  for (let page = Math.floor(first / PAGE); page <= Math.floor(Math.max(first, last - 1) / PAGE); page++) {
    if (page * PAGE < state.total) fetchPage(page);
  }
  const drawn = [];
  for (let i = first; i < last; i++) drawn.push(rowElement(rowAt(i), i));
  const focused = document.activeElement?.id === 'current-row';
  $('#rows-space').replaceChildren(...drawn);
  if (focused) $('#current-row')?.focus({ preventScroll: true });
}

function cell(className, text, label) {
  const span = document.createElement('span');
  span.className = className;
  span.setAttribute('role', 'gridcell');
  span.textContent = text;
  if (label) span.title = label;
  return span;
}

function button(label, action) {
  const element = document.createElement('button');
  element.type = 'button';
  element.textContent = label;
  element.addEventListener('click', action);
  return element;
}

function rowElement(row, index) {
  const element = document.createElement('div');
  element.className = 'row';
  element.setAttribute('role', 'row');
  element.style.top = `${index * ROW_HEIGHT}px`;
  element.setAttribute('aria-rowindex', String(index + 2));
  if (!row) {
    element.classList.add('loading');
    element.append(cell('date', '…'));
    return element;
  }
  if (row.void) element.classList.add('void');
  if (row.number === state.editing) element.classList.add('editing');
  if (index === state.cursor) {
    element.classList.add('current');
    element.id = 'current-row';
    element.tabIndex = -1;  // focused while the keyboard is on it
  }
  element.addEventListener('dblclick', () => startEditing(row));
  const entry = { account: state.account, number: row.number };
  const resolved = button(row.resolved ? '✓' : '', () => toggleResolved(row));
  resolved.className = 'resolved';
  resolved.setAttribute('aria-pressed', String(row.resolved));
  resolved.setAttribute('aria-label', row.resolved ? 'Resolved; mark unresolved' : 'Mark resolved');
  resolved.disabled = row.number === null;
  const actions = cell('actions', '');
  if (row.number !== null) {
    actions.append(
      button(row.void ? 'Unvoid' : 'Void',
             () => change(row.void ? '/api/entries/unvoid' : '/api/entries/void', entry)),
      button('Delete', () => deleteEntry(row)));
  }
  const resolvedCell = cell('resolved', '');
  resolvedCell.append(resolved);
  element.append(cell('date', row.date), cell('check', row.checkNumber ?? ''),
                 cell('tofrom', row.toFrom, row.toFrom),
                 cell('description', row.description, row.description),
                 cell('category', row.category, row.category), resolvedCell,
                 cell('amount' + (row.amount < 0 ? ' negative' : ''), money(row.amount)),
                 cell('balance' + (row.balance < 0 ? ' negative' : ''), money(row.balance)),
                 actions);
  return element;
}

function toggleResolved(row) {
  return change('/api/entries/resolve',
                { account: state.account, numbers: [row.number], resolved: !row.resolved });
}

function deleteEntry(row) {
  if (confirm(`Delete entry ${row.number}?`)) {
    change('/api/entries/delete', { account: state.account, number: row.number });
  }
}

async function change(path, body) {
  await attempt(async () => {
    await call(path, body);
    say('');
    await reloadBook();
    state.version = (await call('/api/status')).version;
  });
}

// The row the keyboard is on: the rows' area keeps it, moved by the arrow keys.
function rowAt(index) {
  const page = state.pages.get(Math.floor(index / PAGE));
  return page ? page[index % PAGE] : null;
}

function moveCursor(index) {
  if (state.total === 0) return;
  state.cursor = Math.max(0, Math.min(state.total - 1, index));
  const rows = $('#rows');
  const top = state.cursor * ROW_HEIGHT;
  if (top < rows.scrollTop) rows.scrollTop = top;
  if (top + ROW_HEIGHT > rows.scrollTop + rows.clientHeight) {
    rows.scrollTop = top + ROW_HEIGHT - rows.clientHeight;
  }
  drawRows();
  $('#current-row')?.focus({ preventScroll: true });
}

// Arrows, Page Up/Down, Home and End move between entries; Enter changes the entry, Space
// resolves it or takes the mark away, Delete deletes it.
function registerKeys(event) {
  if (event.target.closest('button')) return;  // a row's buttons take their own keys
  const rows = $('#rows');
  const screen = Math.max(1, Math.floor(rows.clientHeight / ROW_HEIGHT) - 1);
  const cursor = state.cursor ?? state.total;
  const moves = { ArrowDown: cursor + 1, ArrowUp: cursor - 1, PageDown: cursor + screen,
                  PageUp: cursor - screen, Home: 0, End: state.total - 1 };
  if (event.key in moves) {
    event.preventDefault();
    moveCursor(moves[event.key]);
    return;
  }
  const row = state.cursor === null ? null : rowAt(state.cursor);
  if (!row || row.number === null) return;
  if (event.key === 'Enter') {
    event.preventDefault();
    startEditing(row);
  } else if (event.key === ' ') {
    event.preventDefault();
    toggleResolved(row);
  } else if (event.key === 'Delete') {
    deleteEntry(row);
  }
}

export function setUpRegister() {
  reload.register = refreshRegister;
  const tools = $('#register-tools');
  tools.addEventListener('submit', (event) => event.preventDefault());
  let searching = null;
  tools.elements.search.addEventListener('input', () => {
    clearTimeout(searching);
    const text = tools.elements.search.value;
    state.searchPending = true;  // the box keeps what was typed until the filter has it
    searching = setTimeout(async () => {
      await changeFilter({ search: text });
      state.searchPending = false;
    }, 300);
  });
  for (const name of ['dates', 'resolved', 'taxDeductible']) {
    tools.elements[name].addEventListener('change', () => changeFilter({ [name]: tools.elements[name].value }));
  }
  for (const name of ['folder', 'sort', 'descending']) {
    tools.elements[name].addEventListener('change', () => refreshRegister(!tools.elements.descending.checked));
  }
  $('#rows').addEventListener('scroll', () => requestAnimationFrame(drawRows));
  $('#rows').addEventListener('keydown', registerKeys);
  // Tabbing into the rows puts the keyboard on the newest entry shown (or the one it was on).
  $('#rows').addEventListener('focus', (event) => {
    if (event.target !== $('#rows') || state.total === 0) return;
    const rows = $('#rows');
    const lastShown = Math.floor((rows.scrollTop + rows.clientHeight) / ROW_HEIGHT) - 1;
    moveCursor(state.cursor ?? lastShown);
  });
  window.addEventListener('resize', () => requestAnimationFrame(drawRows));
}
