// The register in the browser: accounts on the left, the selected account's entries on the
// right, fetched a page at a time as they scroll into view, and a row at the bottom to add one.

const ROW_HEIGHT = 34;   // pixels; the stylesheet's .rows .row height
const PAGE = 200;        // rows fetched at a time
const POLL_MS = 3000;    // how often to ask whether the book changed

const state = {
  accounts: [],
  account: null,      // name of the account shown
  total: 0,           // rows of its register
  pages: new Map(),   // page number -> rows
  pending: new Set(), // pages being fetched
  generation: 0,      // counts fetches of the whole register, so late pages are dropped
  editing: null,      // the number of the entry being changed in the entry row
  splits: null,       // the line items given for the entry row, if any
  version: null,
  currency: '',
};

const $ = (selector) => document.querySelector(selector);

async function call(path, body) {
  const options = body === undefined ? {} : {
    method: 'POST',
    headers: { 'Content-Type': 'application/json' },
    body: JSON.stringify(body),
  };
  const response = await fetch(path, { credentials: 'same-origin', ...options });
  const data = await response.json().catch(() => ({ error: response.statusText }));
  if (!response.ok) throw new Error(data.error || response.statusText);
  return data;
}

function say(text, isError = false) {
  const message = $('#message');
  message.textContent = text;
  message.classList.toggle('error', isError);
}

function money(amount, currency) {
  if (amount === null || amount === undefined) return '–';
  try {
    return new Intl.NumberFormat(undefined, { style: 'currency', currency: currency || 'USD' })
      .format(amount);
  } catch {
    return amount.toFixed(2);
  }
}

// The day after (or before) a YYYY-MM-DD date, or the text as it was when it is no date.
function shiftDay(text, days) {
  const match = /^(\d{4})-(\d{2})-(\d{2})$/.exec(text);
  if (!match) return text;
  const d = new Date(Date.UTC(Number(match[1]), Number(match[2]) - 1, Number(match[3]) + days));
  return d.toISOString().slice(0, 10);
}

// ---- accounts ----

async function loadAccounts() {
  const data = await call('/api/accounts');
  state.accounts = data.accounts;
  const list = $('#account-list');
  list.replaceChildren();
  const byCurrency = new Map();
  for (const account of data.accounts) {
    if (!byCurrency.has(account.currency)) byCurrency.set(account.currency, []);
    byCurrency.get(account.currency).push(account);
  }
  for (const [currency, accounts] of byCurrency) {
    const group = document.createElement('section');
    group.className = 'currency-group';
    const heading = document.createElement('h2');
    heading.textContent = currency;
    group.append(heading);
    const ul = document.createElement('ul');
    let total = 0;
    for (const account of accounts) {
      const li = document.createElement('li');
      const button = document.createElement('button');
      button.type = 'button';
      button.className = 'account';
      button.dataset.name = account.name;
      if (account.name === state.account) button.setAttribute('aria-current', 'true');
      const name = document.createElement('span');
      name.className = 'name';
      name.textContent = account.name;
      const balance = document.createElement('span');
      balance.className = 'amount' + (account.balance < 0 ? ' negative' : '');
      balance.textContent = account.locked ? 'locked' : account.problem ? 'damaged'
                                                                        : money(account.balance, currency);
      const detail = document.createElement('span');
      detail.className = 'detail';
      if (account.todaysBalance !== null) {
        detail.textContent = `today ${money(account.todaysBalance, currency)} · ` +
                             `resolved ${money(account.resolvedBalance, currency)}`;
      } else if (account.locked) {
        detail.textContent = 'has a password: click to open';
      } else if (account.problem) {
        detail.textContent = account.problem;
      }
      button.append(name, balance, detail);
      button.addEventListener('click', () => (account.locked ? unlock(account.name)
                                                             : showAccount(account.name)));
      li.append(button);
      ul.append(li);
      if (account.balance !== null) total += account.balance;
    }
    group.append(ul);
    const sum = document.createElement('p');
    sum.className = 'total';
    sum.innerHTML = '<span>Total</span>';
    const amount = document.createElement('span');
    amount.className = 'amount';
    amount.textContent = money(total, currency);
    sum.append(amount);
    group.append(sum);
    list.append(group);
  }
  for (const name of ['from', 'to']) {
    const select = $(`#transfer-form select[name=${name}]`);
    const chosen = select.value;
    select.replaceChildren(...data.accounts.filter((a) => !a.problem && !a.locked).map((a) => {
      const option = new Option(a.name, a.name);
      return option;
    }));
    if (chosen) select.value = chosen;
  }
}

// Asks for a locked account's password; the server keeps it for this session.
function unlock(name) {
  const dialog = $('#unlock-dialog');
  const form = $('#unlock-form');
  $('#unlock-title').textContent = `"${name}" is locked`;
  $('#unlock-message').textContent = '';
  form.reset();
  form.onsubmit = async (event) => {
    event.preventDefault();
    try {
      await call('/api/unlock', { account: name, password: form.elements.password.value });
      dialog.close();
      await loadAccounts();
      await showAccount(name);
    } catch (error) {
      $('#unlock-message').textContent = error.message;
    }
  };
  $('#unlock-cancel').onclick = () => dialog.close();
  dialog.showModal();
  form.elements.password.focus();
}

// ---- the register ----

async function showAccount(name) {
  if (state.editing !== null) stopEditing();
  state.account = name;
  state.generation++;
  state.pages = new Map();
  state.pending = new Set();
  state.total = 0;
  $('#rows-space').replaceChildren();
  $('#register-title').textContent = name;
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
  if (!$('#summary-view').hidden) loadSummaries();
  if (!$('#schedule-view').hidden) loadSchedules();
  $('#import-review').replaceChildren();
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
  try {
    await call('/api/register/filter', { account: state.account, ...change });
    say('');
    await refreshRegister(true);
  } catch (error) {
    say(error.message, true);
  }
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
async function refreshRegister(toBottom) {
  if (!state.account) return;
  const account = state.account;
  const rows = $('#rows');
  const keepBottom = toBottom || rows.scrollTop + rows.clientHeight >= rows.scrollHeight - 2;
  const fresh = new Map();
  if (keepBottom) {
    // The newest entries and the register's size in one call.
    const query = registerQuery(account, 0);
    query.set('tail', '1');
    const data = await call(`/api/register?${query}`);
    if (account !== state.account) return;
    applyTotals(data);
    fresh.set(Math.floor(data.offset / PAGE), data.rows);
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

function drawRows() {
  const [first, last] = visibleRange();
  for (let page = Math.floor(first / PAGE); page <= Math.floor(Math.max(first, last - 1) / PAGE); page++) {
    if (page * PAGE < state.total) fetchPage(page);
  }
  const space = $('#rows-space');
  const drawn = [];
  for (let i = first; i < last; i++) {
    const page = state.pages.get(Math.floor(i / PAGE));
    const row = page ? page[i % PAGE] : null;
    drawn.push(rowElement(row, i));
  }
  space.replaceChildren(...drawn);
}

function cell(className, text, label) {
  const span = document.createElement('span');
  span.className = className;
  span.setAttribute('role', 'cell');
  span.textContent = text;
  if (label) span.title = label;
  return span;
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
  element.addEventListener('dblclick', () => startEditing(row));
  const resolved = document.createElement('button');
  resolved.type = 'button';
  resolved.className = 'resolved';
  resolved.textContent = row.resolved ? '✓' : '';
  resolved.setAttribute('aria-pressed', String(row.resolved));
  resolved.setAttribute('aria-label', row.resolved ? 'Resolved; mark unresolved' : 'Mark resolved');
  resolved.disabled = row.number === null;
  resolved.addEventListener('click', () => change('/api/entries/resolve',
    { account: state.account, numbers: [row.number], resolved: !row.resolved }));
  const actions = document.createElement('span');
  actions.className = 'actions';
  actions.setAttribute('role', 'cell');
  if (row.number !== null) {
    const voidButton = document.createElement('button');
    voidButton.type = 'button';
    voidButton.textContent = row.void ? 'Unvoid' : 'Void';
    voidButton.addEventListener('click', () => change(
      row.void ? '/api/entries/unvoid' : '/api/entries/void',
      { account: state.account, number: row.number }));
    const remove = document.createElement('button');
    remove.type = 'button';
    remove.textContent = 'Delete';
    remove.addEventListener('click', () => {
      if (confirm(`Delete entry ${row.number}?`)) {
        change('/api/entries/delete', { account: state.account, number: row.number });
      }
    });
    actions.append(voidButton, remove);
  }
  const amount = cell('amount' + (row.amount < 0 ? ' negative' : ''), money(row.amount, state.currency));
  const balance = cell('balance' + (row.balance < 0 ? ' negative' : ''), money(row.balance, state.currency));
  const resolvedCell = document.createElement('span');
  resolvedCell.className = 'resolved';
  resolvedCell.setAttribute('role', 'cell');
  resolvedCell.append(resolved);
  element.append(cell('date', row.date), cell('check', row.checkNumber ?? ''),
                 cell('tofrom', row.toFrom, row.toFrom), cell('description', row.description, row.description),
                 cell('category', row.category, row.category), resolvedCell, amount, balance, actions);
  return element;
}

async function change(path, body) {
  try {
    await call(path, body);
    say('');
    await Promise.all([refreshRegister(false), loadAccounts()]);
    state.version = (await call('/api/status')).version;
  } catch (error) {
    say(error.message, true);
  }
}

// ---- adding ----

async function loadLists() {
  const fill = (id, texts) => {
    $(id).replaceChildren(...texts.map((t) => new Option(t)));
  };
  try {
    const [to, from, description, categories] = await Promise.all([
      call(`/api/suggest?${new URLSearchParams({ account: state.account, which: 'to', prefix: '' })}`),
      call(`/api/suggest?${new URLSearchParams({ account: state.account, which: 'from', prefix: '' })}`),
      call(`/api/suggest?${new URLSearchParams({ account: state.account, which: 'description', prefix: '' })}`),
      call('/api/categories'),
    ]);
    fill('#tofrom-list', [...new Set([...to.suggestions, ...from.suggestions])]);
    fill('#description-list', description.suggestions);
    fill('#category-list', categories.categories);
  } catch (error) {
    say(error.message, true);
  }
}

// Double-clicking a row puts it into the entry row below to change; Escape leaves it as it was.
function startEditing(row) {
  if (row.number === null) return;
  const form = $('#new-entry');
  state.editing = row.number;
  form.elements.date.value = row.date;
  form.elements.checkNumber.value = row.checkNumber ?? '';
  form.elements.toFrom.value = row.toFrom;
  form.elements.description.value = row.description;
  form.elements.category.value = row.category === '(split)' ? '' : row.category;
  form.elements.category.disabled = row.category === '(split)';
  form.elements.amount.value = row.amount.toFixed(2);
  form.querySelector('button[type=submit]').textContent = 'Save';
  form.setAttribute('aria-label', `Change entry ${row.number}`);
  drawRows();
  form.elements.toFrom.focus();
}

function stopEditing() {
  const form = $('#new-entry');
  state.editing = null;
  clearSplits();
  for (const key of ['checkNumber', 'toFrom', 'description', 'category', 'amount']) {
    form.elements[key].value = '';
  }
  form.elements.category.disabled = false;
  form.elements.date.value = state.today;
  form.querySelector('button[type=submit]').textContent = 'Add';
  form.setAttribute('aria-label', 'New entry');
  drawRows();
}

async function addEntry(event) {
  event.preventDefault();
  const form = event.target;
  const data = Object.fromEntries(new FormData(form));
  if (state.editing !== null) return saveEdit(form, data);
  const body = { account: state.account, date: data.date, amount: data.amount.trim() };
  for (const key of ['toFrom', 'description', 'category']) {
    if (data[key]?.trim()) body[key] = data[key].trim();  // a disabled field is not in the form's data
  }
  if (state.splits) {
    delete body.amount;
    body.splits = state.splits;
  }
  if (data.checkNumber.trim()) {
    const number = Number(data.checkNumber.trim());
    if (!Number.isInteger(number) || number <= 0) {
      say('A check number is a whole number above 0.', true);
      return;
    }
    body.checkNumber = number;
  }
  try {
    const added = await call('/api/entries', body);
    const remembered = added.remembered && added.remembered.length
      ? ` (filled in from an earlier entry: ${added.remembered.join(', ')})` : '';
    say(`Added entry ${added.entry.number}; balance ${money(added.balance, state.currency)}${remembered}`);
    for (const key of ['checkNumber', 'toFrom', 'description', 'category', 'amount']) {
      form.elements[key].value = '';
    }
    clearSplits();
    form.elements.checkNumber.focus();  // ready for the next entry at once
    await Promise.all([refreshRegister(true), loadAccounts()]);
  } catch (error) {
    say(error.message, true);
  }
}

// ---- line items ----

function splitLine(line = {}) {
  const row = document.createElement('div');
  row.className = 'split-line';
  for (const [name, label, list] of [['category', 'Category', 'category-list'],
                                     ['description', 'Description', 'description-list'],
                                     ['amount', 'Amount', null]]) {
    const input = document.createElement('input');
    input.name = name;
    input.placeholder = label;
    input.setAttribute('aria-label', label);
    input.autocomplete = 'off';
    if (list) input.setAttribute('list', list);
    if (name === 'amount') input.inputMode = 'decimal';
    input.value = line[name] ?? '';
    input.addEventListener('input', showSplitTotal);
    row.append(input);
  }
  return row;
}

function splitLinesGiven() {
  return [...document.querySelectorAll('#split-lines .split-line')].map((row) => ({
    category: row.querySelector('[name=category]').value.trim(),
    description: row.querySelector('[name=description]').value.trim(),
    amount: row.querySelector('[name=amount]').value.trim(),
  })).filter((line) => line.amount !== '');
}

function showSplitTotal() {
  const total = splitLinesGiven().reduce((sum, line) => sum + (Number(line.amount) || 0), 0);
  $('#split-total').textContent = `Total ${money(total, state.currency)}`;
  return total;
}

function openSplits() {
  const lines = state.splits || [{}, {}];
  $('#split-lines').replaceChildren(...lines.map(splitLine));
  showSplitTotal();
  $('#split-dialog').showModal();
  $('#split-lines input').focus();
}

function useSplits(event) {
  event.preventDefault();
  const lines = splitLinesGiven();
  if (lines.length < 2 || lines.some((line) => !Number.isFinite(Number(line.amount)))) {
    say('Line items need at least two lines with amounts.', true);
    return;
  }
  state.splits = lines;
  const amount = $('#new-entry [name=amount]');
  amount.value = showSplitTotal().toFixed(2);
  amount.readOnly = true;
  $('#new-entry [name=category]').value = '';
  $('#new-entry [name=category]').placeholder = `${lines.length} line items`;
  $('#new-entry [name=category]').disabled = true;
  $('#split-dialog').close();
  $('#new-entry button[type=submit]').focus();
}

function clearSplits() {
  state.splits = null;
  const form = $('#new-entry');
  form.elements.amount.readOnly = false;
  form.elements.category.disabled = false;
  form.elements.category.placeholder = 'Category';
}

async function saveEdit(form, data) {
  const body = { account: state.account, number: state.editing, date: data.date,
                 amount: data.amount.trim(), toFrom: data.toFrom.trim(),
                 description: data.description.trim() };
  if (!form.elements.category.disabled) body.category = data.category.trim();
  if (data.checkNumber.trim()) body.checkNumber = Number(data.checkNumber.trim());
  try {
    const changed = await call('/api/entries/edit', body);
    say(`Changed entry ${changed.entry.number}; balance ${money(changed.balance, state.currency)}`);
    stopEditing();
    await Promise.all([refreshRegister(false), loadAccounts()]);
  } catch (error) {
    say(error.message, true);
  }
}

async function editAccount(event) {
  event.preventDefault();
  const data = Object.fromEntries(new FormData(event.target));
  const body = { account: state.account, name: data.name.trim() };
  if (data.startingBalance.trim()) body.startingBalance = data.startingBalance.trim();
  try {
    const edited = await call('/api/accounts/edit', body);
    state.account = edited.name;
    await loadAccounts();
    await showAccount(edited.name);
    say(`Saved "${edited.name}": starting balance ${money(edited.startingBalance, edited.currency)}.`);
  } catch (error) {
    say(error.message, true);
  }
}

async function addAccount(event) {
  event.preventDefault();
  const data = Object.fromEntries(new FormData(event.target));
  const body = { name: data.name.trim() };
  if (data.currency.trim()) body.currency = data.currency.trim();
  if (data.startingBalance.trim()) body.startingBalance = data.startingBalance.trim();
  try {
    const added = await call('/api/accounts', body);
    event.target.reset();
    await loadAccounts();
    await showAccount(added.name);
    say(`Added the account "${added.name}".`);
  } catch (error) {
    say(error.message, true);
  }
}

async function transfer(event) {
  event.preventDefault();
  const data = Object.fromEntries(new FormData(event.target));
  const body = { from: data.from, to: data.to, amount: data.amount.trim() };
  if (data.date) body.date = data.date;
  if (data.description.trim()) body.description = data.description.trim();
  try {
    const done = await call('/api/transfer', body);
    say(`Transferred: ${done.from.account} ${money(done.from.balance)}, ` +
        `${done.to.account} ${money(done.to.balance)}`);
    event.target.elements.amount.value = '';
    await Promise.all([refreshRegister(false), loadAccounts()]);
  } catch (error) {
    say(error.message, true);
  }
}

// ---- views: register, summary, import ----

function showView(id) {
  document.querySelectorAll('.views [role=tab]').forEach((tab) => {
    const selected = tab.dataset.view === id;
    tab.setAttribute('aria-selected', String(selected));
    $(`#${tab.dataset.view}`).hidden = !selected;
  });
  $('#register-tools').hidden = id !== 'register-view';
  if (id === 'summary-view') loadSummaries();
  if (id === 'schedule-view') loadSchedules();
}

// A list of labelled values: [label, value, id of the value (optional)].
function definitions(pairs) {
  const list = document.createElement('dl');
  list.className = 'totals balances';
  for (const [label, value, id] of pairs) {
    const dt = document.createElement('dt');
    dt.textContent = label;
    const dd = document.createElement('dd');
    dd.textContent = value;
    if (id) dd.id = id;
    list.append(dt, dd);
  }
  return list;
}

function table(headings, rows) {
  const element = document.createElement('table');
  const head = element.createTHead().insertRow();
  for (const [text, className] of headings) {
    const th = document.createElement('th');
    th.textContent = text;
    if (className) th.className = className;
    head.append(th);
  }
  const body = element.createTBody();
  for (const row of rows) {
    const tr = body.insertRow();
    row.forEach((value, i) => {
      const td = tr.insertCell();
      td.textContent = value;
      if (headings[i][1]) td.className = headings[i][1];
    });
  }
  return element;
}

async function loadSummaries() {
  const select = $('#summary-form [name=name]');
  try {
    const data = await call(`/api/summaries?${new URLSearchParams({ account: state.account })}`);
    select.replaceChildren(...data.summaries.map((s) => {
      const option = new Option(s.name, s.name);
      option.selected = s.selected;
      return option;
    }));
    await showSummary();
  } catch (error) {
    say(error.message, true);
  }
}

async function showSummary(event) {
  event?.preventDefault();
  const form = $('#summary-form');
  const query = new URLSearchParams({ account: state.account, name: form.elements.name.value });
  if (form.elements.range.value.trim()) query.set('range', form.elements.range.value.trim());
  if (form.elements.period.value) query.set('period', form.elements.period.value);
  const report = $('#summary-report');
  try {
    const data = await call(`/api/summary?${query}`);
    const totals = definitions([['From', data.startDate], ['To', data.endDate],
                                ['Deposits', money(data.depositsTotal, data.currency)],
                                ['Debits', money(data.debitsTotal, data.currency)],
                                ['Net', money(data.total, data.currency)],
                                ['End balance', money(data.endBalance, data.currency)]]);
    const chart = document.createElement('img');
    chart.src = `data:image/svg+xml;charset=utf-8,${encodeURIComponent(data.svg)}`;
    chart.alt = `Chart of ${data.title}: deposits and debits by period, and spending by category`;
    const categories = table([['Category'], ['Amount', 'amount']], data.categories.map(
      (c) => ['\u2003'.repeat(c.depth) + (c.name || '(none)'), money(c.amount, data.currency)]));
    report.replaceChildren(totals, chart, categories);
  } catch (error) {
    report.replaceChildren();
    say(error.message, true);
  }
}

// Compares the account with a statement; `change` resolves, unresolves or finishes on the way.
async function reconcile(event, change = {}) {
  event?.preventDefault();
  const form = $('#reconcile-form');
  const body = {
    account: state.account,
    statementDate: form.elements.statementDate.value.trim(),
    statementBalance: form.elements.statementBalance.value.trim(),
    ...change,
  };
  try {
    const data = await call('/api/reconcile', body);
    const difference = definitions([
      ['Resolved balance', money(data.resolvedBalance, state.currency)],
      ['Statement balance', money(data.statementBalance, state.currency)],
      ['Difference', money(data.difference, state.currency), 'reconcile-difference']]);
    const list = table([['Resolved'], ['Date'], ['Check'], ['To/From'], ['Description'],
                        ['Amount', 'amount']],
                       data.unresolved.map((e) => ['', e.date, e.checkNumber ?? '', e.toFrom,
                                                   e.description, money(e.amount, state.currency)]));
    list.querySelectorAll('tbody tr').forEach((tr, i) => {
      const entry = data.unresolved[i];
      const box = document.createElement('input');
      box.type = 'checkbox';
      box.setAttribute('aria-label', `Resolve entry ${entry.number}`);
      box.addEventListener('change', () => reconcile(null, { resolve: [entry.number] }));
      tr.cells[0].append(box);
    });
    const hints = document.createElement('ul');
    for (const s of data.suggestions) {
      const li = document.createElement('li');
      li.textContent = {
        oneEntry: `Entry ${s.entries[0]} is the difference and is not resolved.`,
        twoEntries: `Entries ${s.entries.join(' and ')} add up to the difference.`,
        signFlipped: `Entry ${s.entries[0]} may have been entered the other way round.`,
        transposedDigits: 'The difference divides by 9: two digits may be swapped in an amount.',
      }[s.kind];
      hints.append(li);
    }
    const parts = [difference, list];
    if (data.suggestions.length) parts.push(hints);
    if (data.finished) {
      const done = document.createElement('p');
      done.textContent = `Reconciled to ${data.finished.statementDate}: ` +
                         `${data.finished.resolved.length} entries recorded.`;
      parts.unshift(done);
      say(done.textContent);
    }
    $('#reconcile-report').replaceChildren(...parts);
    $('#reconcile-finish').disabled = data.difference !== 0 || Boolean(data.finished);
    if (change.resolve || change.finish) await Promise.all([refreshRegister(false), loadAccounts()]);
  } catch (error) {
    say(error.message, true);
  }
}

// ---- scheduled entries ----

function withButton(element, rowIndex, label, action) {
  const button = document.createElement('button');
  button.type = 'button';
  button.textContent = label;
  button.addEventListener('click', action);
  element.querySelectorAll('tbody tr')[rowIndex].lastElementChild.append(button);
}

async function loadSchedules() {
  try {
    const data = await call(`/api/schedules?${new URLSearchParams({ account: state.account })}`);
    const due = table([['Date', 'date'], ['To/From'], ['Description'], ['Amount', 'amount'], ['']],
      data.due.map((o) => [o.date, o.toFrom, o.description, money(o.amount, state.currency), '']));
    data.due.forEach((o, i) => withButton(due, i, 'Enter', () =>
      scheduleChange('/api/schedules/enter', { account: state.account, number: o.schedule, date: o.date },
                     (done) => `Entered entry ${done.entry} of ${done.date}.`)));
    const list = table([['When'], ['Next', 'date'], ['To/From'], ['Description'], ['Category'],
                        ['Amount', 'amount'], ['']],
      data.schedules.map((s) => [s.rule + (s.transferTo ? `, a transfer to ${s.transferTo}` : ''),
                                 s.next ?? '–', s.toFrom, s.description, s.category,
                                 money(s.amount, state.currency), '']));
    data.schedules.forEach((s, i) => withButton(list, i, 'Remove', () => {
      if (confirm(`Remove the schedule "${s.rule}"? Entries already entered stay.`)) {
        scheduleChange('/api/schedules/remove', { account: state.account, number: s.number },
                       () => 'Removed the schedule.');
      }
    }));
    const nothing = (text) => Object.assign(document.createElement('p'), { textContent: text });
    $('#schedule-due').replaceChildren(data.due.length ? due : nothing('Nothing is due.'));
    $('#schedule-list').replaceChildren(data.schedules.length ? list : nothing('No schedules.'));
  } catch (error) {
    say(error.message, true);
  }
}

async function scheduleChange(path, body, report) {
  try {
    const done = await call(path, body);
    say(report(done));
    await Promise.all([loadSchedules(), refreshRegister(false), loadAccounts()]);
  } catch (error) {
    say(error.message, true);
  }
}

async function addSchedule(event) {
  event.preventDefault();
  const data = Object.fromEntries(new FormData(event.target));
  const every = Number(data.every.trim() || '1');
  if (!Number.isInteger(every) || every < 1) {
    say('"Every" is a whole number above 0.', true);
    return;
  }
  const body = { account: state.account, every, unit: data.unit, start: data.start.trim(),
                 amount: data.amount.trim() };
  for (const key of ['on', 'until', 'toFrom', 'description', 'category']) {
    if (data[key].trim()) body[key] = data[key].trim();
  }
  await scheduleChange('/api/schedules/add', body, (done) =>
    `Added "${done.rule}"; next on ${done.next ?? '–'}.`);
}

const importState = { file: null };

async function reviewImport(event, apply = false) {
  event?.preventDefault();
  const file = importState.file || $('#import-form [name=file]').files[0];
  if (!file) return;
  importState.file = file;
  const query = new URLSearchParams({ account: state.account, name: file.name });
  if (apply) {
    query.set('apply', '1');
    // The rows left ticked in the review.
    query.set('lines', [...document.querySelectorAll('#import-review input[data-line]:checked')]
      .map((box) => box.dataset.line).join(','));
  }
  try {
    const response = await fetch(`/api/import?${query}`, {
      method: 'POST', credentials: 'same-origin',
      headers: { 'Content-Type': 'application/octet-stream' }, body: file,
    });
    const data = await response.json();
    if (!response.ok) throw new Error(data.error || response.statusText);
    const notes = document.createElement('p');
    notes.textContent = [
      `${data.format} file "${data.file}"`,
      data.encoding && `read as ${data.encoding}`,
      data.dateFormat && `dates ${data.dateFormat}${data.dateNote ? ` (${data.dateNote})` : ''}`,
      data.readNote,
    ].filter(Boolean).join('; ') + '.';
    const rows = data.rows.map((r) => ['', r.date ?? '–', money(r.amount, state.currency), r.toFrom,
      r.description, r.category, r.status + (r.match ? ` (entry ${r.match})` : '') +
      (r.problem ? `: ${r.problem}` : '') + (r.added ? ` → ${r.added}` : '')]);
    const list = table([['Import'], ['Date'], ['Amount', 'amount'], ['To/From'], ['Description'],
                        ['Category'], ['Status']], rows);
    list.querySelectorAll('tbody tr').forEach((tr, i) => {
      const row = data.rows[i];
      tr.className = `status-${row.status.split(' ')[0]}`;
      // New records and transfers come ticked, possible duplicates not; the rest cannot come.
      if (!apply && ['new', 'transfer', 'possible duplicate'].includes(row.status)) {
        const box = document.createElement('input');
        box.type = 'checkbox';
        box.dataset.line = String(row.line);
        box.checked = row.status !== 'possible duplicate';
        box.setAttribute('aria-label', `Import row ${row.line}`);
        tr.cells[0].append(box);
      }
    });
    const counts = document.createElement('p');
    counts.textContent = Object.entries(data.counts).map(([k, v]) => `${v} ${k}`).join(', ') + '.';
    $('#import-review').replaceChildren(notes, list, counts);
    $('#import-apply').disabled = apply || (data.counts.new + data.counts.transfer) === 0;
    if (apply) {
      say(`Imported ${data.added} entries as batch ${data.batch ?? '–'}.`);
      importState.file = null;
      await Promise.all([refreshRegister(true), loadAccounts()]);
    }
  } catch (error) {
    say(error.message, true);
  }
}

// ---- keeping up with other programs ----

async function poll() {
  try {
    const { version } = await call('/api/status');
    if (state.version !== null && version !== state.version) {
      await Promise.all([loadAccounts(), refreshRegister(false)]);
      $('#status').textContent = 'Updated with changes made elsewhere.';
    }
    state.version = version;
  } catch (error) {
    $('#status').textContent = `Cannot reach the server: ${error.message}`;
  }
  setTimeout(poll, POLL_MS);
}

async function start() {
  $('#new-entry').addEventListener('submit', addEntry);
  $('#transfer-form').addEventListener('submit', transfer);
  $('#account-form').addEventListener('submit', addAccount);
  $('#edit-account-form').addEventListener('submit', editAccount);
  $('#split-open').addEventListener('click', openSplits);
  $('#split-add').addEventListener('click', () => $('#split-lines').append(splitLine()));
  $('#split-form').addEventListener('submit', useSplits);
  $('#split-cancel').addEventListener('click', () => $('#split-dialog').close());
  $('#new-entry').addEventListener('keydown', (event) => {
    if (event.key === 'Escape' && state.editing !== null) stopEditing();
  });
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
  const status = await call('/api/status').catch(() => ({}));
  state.today = status.today || new Date().toISOString().slice(0, 10);
  const date = $('#new-entry [name=date]');
  date.value = state.today;
  // + and - move the date by a day, as paper-register programs do.
  date.addEventListener('keydown', (event) => {
    if (event.key === '+' || event.key === '=' || event.key === '-') {
      event.preventDefault();
      date.value = shiftDay(date.value, event.key === '-' ? -1 : 1);
    }
  });
  $('#rows').addEventListener('scroll', () => requestAnimationFrame(drawRows));
  window.addEventListener('resize', () => requestAnimationFrame(drawRows));
  document.querySelectorAll('.views [role=tab]').forEach((tab) => {
    tab.addEventListener('click', () => showView(tab.dataset.view));
  });
  $('#summary-form').addEventListener('submit', showSummary);
  $('#import-form').addEventListener('submit', (event) => {
    importState.file = null;
    reviewImport(event);
  });
  $('#import-apply').addEventListener('click', () => reviewImport(null, true));
  $('#reconcile-form').addEventListener('submit', reconcile);
  $('#schedule-form').addEventListener('submit', addSchedule);
  $('#schedule-form [name=start]').value = state.today;
  $('#reconcile-finish').addEventListener('click', () => reconcile(null, { finish: true }));
  $('#reconcile-form [name=statementDate]').value = state.today;
  $('#import-undo').addEventListener('click', async () => {
    try {
      const done = await call('/api/import/undo', { account: state.account });
      say(`Took back ${done.removed} entries; balance ${money(done.balance, state.currency)}.`);
      await Promise.all([refreshRegister(true), loadAccounts()]);
    } catch (error) {
      say(error.message, true);
    }
  });
  $('#menu').addEventListener('click', () => {
    const open = $('#accounts').classList.toggle('open');
    $('#menu').setAttribute('aria-expanded', String(open));
  });
  try {
    await loadAccounts();
    const first = state.accounts.find((a) => !a.problem && !a.locked);
    if (first) await showAccount(first.name);
    poll();
  } catch (error) {
    say(error.message, true);
  }
}

start();
