// The row at the bottom of the register, to add an entry or change one: keyboard first (Tab
// through date, check, to/from, description, category, amount; Enter saves; + and - move the
// date), with suggestions from the account's lists, and a small form of line items.

import {
  $, attempt, call, formData, money, newCategoriesAllowed, reload, reloadBook, say, shiftDay, state,
} from './common.js';

const TEXT_FIELDS = ['checkNumber', 'toFrom', 'description', 'category', 'amount'];
// The fetch of the entry being changed, for its line items and details: their forms wait for it.
let loadingEntry = Promise.resolve();

export async function loadLists() {
  const fill = (id, texts) => $(id).replaceChildren(...texts.map((t) => new Option(t)));
  const suggest = (which) =>
    call(`/api/suggest?${new URLSearchParams({ account: state.account, which, prefix: '' })}`);
  await attempt(async () => {
    const [to, from, description, categories] = await Promise.all([
      suggest('to'), suggest('from'), suggest('description'), call('/api/categories')]);
    fill('#tofrom-list', [...new Set([...to.suggestions, ...from.suggestions])]);
    fill('#description-list', description.suggestions);
    fill('#category-list', categories.categories);
    const { types } = await call(`/api/types?${new URLSearchParams({ account: state.account })}`);
    fill('#type-list', [...new Set(types.map((t) => t.name))]);
  });
}

// Double-clicking a row puts it into the entry row to change; Escape leaves it as it was. An
// entry of line items brings them along, to change in the line items' form.
export async function startEditing(row) {
  if (row.number === null) return;
  const form = $('#new-entry');
  clearSplits();
  state.editing = row.number;
  form.elements.date.value = row.date;
  form.elements.checkNumber.value = row.checkNumber ?? '';
  form.elements.toFrom.value = row.toFrom;
  form.elements.description.value = row.description;
  form.elements.category.value = row.category;
  form.elements.amount.value = row.amount.toFixed(2);
  form.querySelector('button[type=submit]').textContent = 'Save';
  form.setAttribute('aria-label', `Change entry ${row.number}`);
  reload.rows();
  form.elements.toFrom.focus();
  loadingEntry = (async () => {
    const { entry } = await call(`/api/entry?${new URLSearchParams({ account: state.account, number: row.number })}`)
      .catch(() => ({ entry: { splits: [] } }));
    if (state.editing !== row.number) return;
    if (entry.splits.length) {
      useLines(entry.splits.map((line) => ({ ...line, amount: line.amount.toFixed(2) })));
    }
    if (entry.type !== undefined) {
      useDetails({ type: entry.type, notes: entry.notes, taxDeductible: entry.taxDeductible });
    }
  })();
  await loadingEntry;
}

export function stopEditing() {
  const form = $('#new-entry');
  state.editing = null;
  clearSplits();
  useDetails(null);
  for (const key of TEXT_FIELDS) form.elements[key].value = '';
  form.elements.date.value = state.today;
  form.querySelector('button[type=submit]').textContent = 'Add';
  form.setAttribute('aria-label', 'New entry');
  reload.rows();
}

// Asks before a category the book does not have is made; false when the person says no.
function allowCategories(body) {
  const { ok, create } = newCategoriesAllowed(
    [body.category, ...(body.splits ?? []).map((line) => line.category)]);
  if (create) body.newCategory = true;
  return ok;
}

// A check number the account has already is entered again only when the person says so;
// undefined when they do not.
async function callAskingAboutCheck(path, body) {
  try {
    return await call(path, body);
  } catch (error) {
    if (error.kind !== 'exists' || body.checkNumber === undefined) throw error;
    if (!confirm(`Check ${body.checkNumber} is in the register already. Enter it again?`)) {
      return undefined;
    }
    return call(path, { ...body, allowDuplicateCheck: true });
  }
}

async function addEntry(event) {
  event.preventDefault();
  const form = event.target;
  const data = formData(form);
  if (state.editing !== null) return saveEdit(data);
  const body = { account: state.account, date: data.date, amount: data.amount };
  for (const key of ['toFrom', 'description', 'category']) {
    if (data[key]) body[key] = data[key];  // a disabled field is not in the form's data
  }
  if (state.splits) {
    delete body.amount;
    body.splits = state.splits;
  }
  if (state.detailsGiven) Object.assign(body, state.details);
  if (data.checkNumber) {
    const number = Number(data.checkNumber);
    if (!Number.isInteger(number) || number <= 0) {
      say('A check number is a whole number above 0.', true);
      return;
    }
    body.checkNumber = number;
  }
  if (!allowCategories(body)) return;
  await attempt(async () => {
    const added = await callAskingAboutCheck('/api/entries', body);
    if (!added) return;
    const remembered = added.remembered && added.remembered.length
      ? ` (filled in from an earlier entry: ${added.remembered.join(', ')})` : '';
    say(`Added entry ${added.entry.number}; balance ${money(added.balance)}${remembered}`);
    for (const key of TEXT_FIELDS) form.elements[key].value = '';
    clearSplits();
    useDetails(null);
    form.elements.checkNumber.focus();  // ready for the next entry at once
    await reloadBook(true);
    if (body.newCategory) loadLists();
  });
}

async function saveEdit(data) {
  const body = { account: state.account, number: state.editing, date: data.date,
                 toFrom: data.toFrom, description: data.description };
  if (state.splits) {
    body.splits = state.splits;
  } else {
    body.amount = data.amount;
    body.category = data.category;
  }
  if (state.detailsGiven) Object.assign(body, state.details);
  if (data.checkNumber) body.checkNumber = Number(data.checkNumber);
  if (!allowCategories(body)) return;
  await attempt(async () => {
    const changed = await callAskingAboutCheck('/api/entries/edit', body);
    if (!changed) return;
    say(`Changed entry ${changed.entry.number}; balance ${money(changed.balance)}`);
    stopEditing();
    await reloadBook();
    if (body.newCategory) loadLists();
  });
}

// ---- type, notes, tax-deductible ----

// The entry row takes them (or, with null, the account's defaults again); an entry being
// changed shows its own, sent back only when they were changed (`given`).
function useDetails(details, given = false) {
  state.details = details;
  state.detailsGiven = given;
  const button = $('#details-open');
  button.textContent = given ? 'More ✓' : 'More…';
  button.title = details ? [details.type, details.taxDeductible ? 'tax-deductible' : '', details.notes]
    .filter(Boolean).join(' · ') : 'Type, notes, tax-deductible';
}

async function openDetails() {
  await loadingEntry;
  const form = $('#details-form').elements;
  const details = state.details ?? { type: '', notes: '', taxDeductible: false };
  form.type.value = details.type ?? '';
  form.notes.value = details.notes;
  form.taxDeductible.checked = details.taxDeductible;
  $('#details-dialog').showModal();
  form.type.focus();
}

function takeDetails(event) {
  event.preventDefault();
  const form = $('#details-form').elements;
  const details = { notes: form.notes.value.trim(), taxDeductible: form.taxDeductible.checked };
  if (form.type.value.trim()) details.type = form.type.value.trim();  // none: the usual one
  useDetails(details, true);
  $('#details-dialog').close();
  $('#new-entry button[type=submit]').focus();
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

function splitTotal(lines) {
  return lines.reduce((sum, line) => sum + (Number(line.amount) || 0), 0);
}

function showSplitTotal() {
  $('#split-total').textContent = `Total ${money(splitTotal(splitLinesGiven()))}`;
}

async function openSplits() {
  await loadingEntry;
  const lines = state.splits || [{}, {}];
  $('#split-lines').replaceChildren(...lines.map(splitLine));
  showSplitTotal();
  $('#split-dialog').showModal();
  $('#split-lines input').focus();
}

// The entry row takes the line items: its amount is their total, its category theirs.
function useLines(lines) {
  state.splits = lines;
  const form = $('#new-entry');
  form.elements.amount.value = splitTotal(lines).toFixed(2);
  form.elements.amount.readOnly = true;
  form.elements.category.value = '';
  form.elements.category.placeholder = `${lines.length} line items`;
  form.elements.category.disabled = true;
}

function useSplits(event) {
  event.preventDefault();
  const lines = splitLinesGiven();
  if (lines.length < 2 || lines.some((line) => !Number.isFinite(Number(line.amount)))) {
    say('Line items need at least two lines with amounts.', true);
    return;
  }
  useLines(lines);
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

export function setUpEntryRow() {
  const form = $('#new-entry');
  form.addEventListener('submit', addEntry);
  form.addEventListener('keydown', (event) => {
    if (event.key === 'Escape' && state.editing !== null) stopEditing();
  });
  $('#split-open').addEventListener('click', openSplits);
  $('#split-add').addEventListener('click', () => $('#split-lines').append(splitLine()));
  $('#split-form').addEventListener('submit', useSplits);
  $('#split-cancel').addEventListener('click', () => $('#split-dialog').close());
  $('#details-open').addEventListener('click', openDetails);
  $('#details-form').addEventListener('submit', takeDetails);
  $('#details-cancel').addEventListener('click', () => $('#details-dialog').close());
  useDetails(null);
  const date = form.elements.date;
  date.value = state.today;
  // + and - move the date by a day, as paper-register programs do.
  date.addEventListener('keydown', (event) => {
    if (event.key === '+' || event.key === '=' || event.key === '-') {
      event.preventDefault();
      date.value = shiftDay(date.value, event.key === '-' ? -1 : 1);
    }
  });
}
