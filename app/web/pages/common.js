// What every view of the page shares: the state of the account shown, calls to the server,
// the message line, amounts, and small builders of tables and lists.

export const ROW_HEIGHT = 34;  // pixels; the stylesheet's .rows .row height
export const PAGE = 200;       // rows fetched at a time

export const state = {
  accounts: [],
  account: null,       // name of the account shown
  total: 0,            // rows of its register
  pages: new Map(),    // page number -> rows
  pending: new Set(),  // pages being fetched
  generation: 0,       // counts fetches of the whole register, so late pages are dropped
  editing: null,       // the number of the entry being changed in the entry row
  cursor: null,        // the index of the row the keyboard is on
  splits: null,        // the line items given for the entry row, if any
  details: null,       // the type, notes and tax-deductible mark given for it, if any
  version: null,
  currency: '',
  today: '',
};

// What the views fetch again after a change; app.js fills these in.
export const reload = {
  accounts: async () => {},
  register: async (/* toBottom */) => {},
  rows: () => {},  // draws the register's rows again from what was fetched
};

// The account list and the register, after a change that may touch both.
export async function reloadBook(toBottom = false) {
  await Promise.all([reload.register(toBottom), reload.accounts()]);
}

export const $ = (selector) => document.querySelector(selector);

export async function call(path, body) {
  const options = body === undefined ? {} : {
    method: 'POST',
    headers: { 'Content-Type': 'application/json' },
    body: JSON.stringify(body),
  };
  const response = await fetch(path, { credentials: 'same-origin', ...options });
  const data = await response.json().catch(() => ({ error: response.statusText }));
  if (!response.ok) {
    // The book's kind of refusal ("exists", "notFound", ...) goes with the message.
    throw Object.assign(new Error(data.error || response.statusText), { kind: data.kind });
  }
  return data;
}

export function say(text, isError = false) {
  const message = $('#message');
  message.textContent = text;
  message.classList.toggle('error', isError);
}

// Runs a change and reports its failure on the message line.
export async function attempt(action) {
  try {
    return await action();
  } catch (error) {
    say(error.message, true);
    return undefined;
  }
}

export function money(amount, currency = state.currency) {
  if (amount === null || amount === undefined) return '–';
  try {
    return new Intl.NumberFormat(undefined, { style: 'currency', currency: currency || 'USD' })
      .format(amount);
  } catch {
    return amount.toFixed(2);
  }
}

// The day after (or before) a YYYY-MM-DD date, or the text as it was when it is no date.
export function shiftDay(text, days) {
  const match = /^(\d{4})-(\d{2})-(\d{2})$/.exec(text);
  if (!match) return text;
  const d = new Date(Date.UTC(Number(match[1]), Number(match[2]) - 1, Number(match[3]) + days));
  return d.toISOString().slice(0, 10);
}

// A form's fields as an object, each text trimmed.
export function formData(form) {
  return Object.fromEntries([...new FormData(form)].map(
    ([key, value]) => [key, typeof value === 'string' ? value.trim() : value]));
}

// A list of labelled values: [label, value, id of the value (optional)].
export function definitions(pairs) {
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

// A table of [heading, class] columns and rows of texts.
export function table(headings, rows) {
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

// Puts a button into the last cell of a table's row.
export function withButton(element, rowIndex, label, action) {
  const button = document.createElement('button');
  button.type = 'button';
  button.textContent = label;
  button.addEventListener('click', action);
  element.querySelectorAll('tbody tr')[rowIndex].lastElementChild.append(button);
  return button;
}

export function paragraph(text) {
  return Object.assign(document.createElement('p'), { textContent: text });
}

// Whether the categories named may be used: those the book does not have yet are made if the
// person agrees. {ok: false} when they do not; {create: true} when some are new.
export function newCategoriesAllowed(names) {
  const known = new Set([...document.querySelectorAll('#category-list option')]
    .map((o) => o.value.toLowerCase()));
  const fresh = [...new Set(names.filter((n) => n && !known.has(n.toLowerCase())))];
  if (!fresh.length) return { ok: true, create: false };
  const list = fresh.map((n) => `"${n}"`).join(', ');
  return { ok: confirm(`Make the new ${fresh.length > 1 ? 'categories' : 'category'} ${list}?`),
           create: true };
}
