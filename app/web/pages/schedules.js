// Scheduled entries: what is due, entered with one click, and the account's schedules in words
// ("every 2 weeks on Friday, until 2027-06-30"), added, changed and removed.

import {
  $, attempt, call, formData, money, newCategoriesAllowed, paragraph, reloadBook, say, state, table,
  withButton,
} from './common.js';
import { loadLists } from './entry.js';

let editing = null;  // the schedule being changed in the form, or null to add one

export async function loadSchedules() {
  await attempt(async () => {
    const data = await call(`/api/schedules?${new URLSearchParams({ account: state.account })}`);
    const due = table([['Date', 'date'], ['To/From'], ['Description'], ['Amount', 'amount'], ['']],
      data.due.map((o) => [o.date, o.toFrom, o.description, money(o.amount), '']));
    data.due.forEach((o, i) => withButton(due, i, 'Enter', () =>
      scheduleChange('/api/schedules/enter', { account: state.account, number: o.schedule, date: o.date },
                     (done) => `Entered entry ${done.entry} of ${done.date}.`)));
    const list = table([['When'], ['Next', 'date'], ['To/From'], ['Description'], ['Category'],
                        ['Amount', 'amount'], ['']],
      data.schedules.map((s) => [s.rule + (s.transferTo ? `, a transfer to ${s.transferTo}` : ''),
                                 s.next ?? '–', s.toFrom, s.description, s.category,
                                 money(s.amount), '']));
    data.schedules.forEach((s, i) => {
      withButton(list, i, 'Change', () => startEditing(s));
      withButton(list, i, 'Remove', () => {
        if (confirm(`Remove the schedule "${s.rule}"? Entries already entered stay.`)) {
          scheduleChange('/api/schedules/remove', { account: state.account, number: s.number },
                         () => 'Removed the schedule.');
        }
      });
    });
    $('#schedule-due').replaceChildren(data.due.length ? due : paragraph('Nothing is due.'));
    $('#schedule-list').replaceChildren(data.schedules.length ? list : paragraph('No schedules.'));
  });
}

async function scheduleChange(path, body, report) {
  await attempt(async () => {
    const done = await call(path, body);
    say(report(done));
    if (body.newCategory) loadLists();
    if (path.endsWith('/edit') || path.endsWith('/add')) stopEditing();
    await Promise.all([loadSchedules(), reloadBook()]);
  });
}

// A day to fall on is not a daily or one-time schedule's, nor moving off weekends a weekly or
// one-time schedule's.
function fitUnit() {
  const form = $('#schedule-form').elements;
  const unit = form.unit.value;
  form.on.disabled = unit === 'day' || unit === 'once';
  form.weekendsBefore.disabled = unit === 'week' || unit === 'once';
  if (form.on.disabled) form.on.value = '';
  if (form.weekendsBefore.disabled) form.weekendsBefore.checked = false;
}

// The form takes the schedule's recurrence and entry fields, to change them.
function startEditing(schedule) {
  editing = schedule;
  const form = $('#schedule-form');
  const r = schedule.recurrence;
  form.elements.every.value = r.every;
  form.elements.unit.value = r.unit;
  form.elements.on.value = r.on;
  form.elements.start.value = r.start;
  form.elements.until.value = r.until ?? '';
  form.elements.times.value = r.times || '';
  form.elements.weekendsBefore.checked = r.weekendsBefore;
  fitUnit();
  for (const key of ['toFrom', 'description', 'category']) form.elements[key].value = schedule[key];
  form.elements.category.disabled = schedule.splits.length > 0;
  form.elements.amount.value = schedule.amount.toFixed(2);
  $('#schedule-form-title').textContent = `Change the schedule "${schedule.rule}"`;
  form.querySelector('button[type=submit]').textContent = 'Save';
  $('#schedule-cancel').hidden = false;
  form.elements.every.focus();
}

function stopEditing() {
  editing = null;
  const form = $('#schedule-form');
  form.reset();
  form.elements.start.value = state.today;
  form.elements.category.disabled = false;
  fitUnit();
  $('#schedule-form-title').textContent = 'A new schedule';
  form.querySelector('button[type=submit]').textContent = 'Add';
  $('#schedule-cancel').hidden = true;
}

async function saveSchedule(event) {
  event.preventDefault();
  const form = event.target;
  const data = formData(form);
  const every = Number(data.every || '1');
  const times = Number(data.times || '0');
  if (!Number.isInteger(every) || every < 1) {
    say('"Every" is a whole number above 0.', true);
    return;
  }
  if (!Number.isInteger(times) || times < 0) {
    say('"Times" is a whole number, or empty for no end.', true);
    return;
  }
  const body = { account: state.account, every, unit: data.unit, on: data.on ?? '', start: data.start,
                 until: data.until || null, times, weekendsBefore: form.elements.weekendsBefore.checked,
                 toFrom: data.toFrom, description: data.description, amount: data.amount };
  if (!form.elements.category.disabled) body.category = data.category;
  const categories = newCategoriesAllowed([body.category]);
  if (!categories.ok) return;
  if (categories.create) body.newCategory = true;
  if (editing) {
    body.number = editing.number;
    await scheduleChange('/api/schedules/edit', body, (done) =>
      `Saved "${done.rule}"; next on ${done.next ?? '–'}.`);
  } else {
    for (const key of ['on', 'toFrom', 'description', 'category']) {
      if (!body[key]) delete body[key];  // a new schedule's defaults
    }
    await scheduleChange('/api/schedules/add', body, (done) =>
      `Added "${done.rule}"; next on ${done.next ?? '–'}.`);
  }
}

export function setUpSchedules() {
  $('#schedule-form').addEventListener('submit', saveSchedule);
  $('#schedule-cancel').addEventListener('click', stopEditing);
  $('#schedule-form [name=unit]').addEventListener('change', fitUnit);
  $('#schedule-form [name=start]').value = state.today;
  document.addEventListener('account-shown', () => {
    stopEditing();
    if (!$('#schedule-view').hidden) loadSchedules();
  });
}
