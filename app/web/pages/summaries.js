// Summaries: the account's saved summaries and their options (added, changed, removed, the
// one shown first chosen), and a report with the chart the summary command draws and the
// category tree.

import { $, attempt, call, definitions, formData, money, say, state, table } from './common.js';

let summaries = [];

export async function loadSummaries(chosen) {
  const select = $('#summary-form [name=name]');
  await attempt(async () => {
    const data = await call(`/api/summaries?${new URLSearchParams({ account: state.account })}`);
    summaries = data.summaries;
    select.replaceChildren(...summaries.map((s) => {
      const option = new Option(s.name, s.name);
      option.selected = chosen ? s.name === chosen : s.selected;
      return option;
    }));
    showOptions();
    await showSummary();
  });
}

// The options form shows the chosen summary's own options.
function showOptions() {
  const summary = summaries.find((s) => s.name === $('#summary-form [name=name]').value);
  const form = $('#summary-options').elements;
  if (!summary) return;
  form.newName.value = summary.name;
  form.range.value = summary.range;
  form.period.value = summary.period;
  form.debits.checked = summary.debits;
  form.deposits.checked = summary.deposits;
  for (const key of ['resolved', 'taxDeductible', 'checks']) form[key].value = summary[key];
  form.filterField.value = summary.filterField ?? 'any';
  form.filterText.value = summary.filterText ?? '';
  form.subcategoriesInParents.checked = summary.subcategoriesInParents;
  $('#summary-options-title').textContent = `Options of "${summary.name}"`
    + (summary.selected ? ' (shown first)' : '');
}

function optionsGiven() {
  const form = $('#summary-options');
  const data = formData(form);
  const options = { range: data.range, period: data.period, resolved: data.resolved,
                    taxDeductible: data.taxDeductible, checks: data.checks,
                    filterField: data.filterField, filterText: data.filterText };
  for (const key of ['debits', 'deposits', 'subcategoriesInParents']) {
    options[key] = form.elements[key].checked;
  }
  return { options, newName: data.newName };
}

// Adds, changes, removes or picks a summary: `what` is add, edit, remove or select.
async function changeSummary(what) {
  const name = $('#summary-form [name=name]').value;
  const { options, newName } = optionsGiven();
  let body = { account: state.account, name };
  if (what === 'add') body = { ...body, ...options, name: newName };
  if (what === 'edit') body = { ...body, ...options, newName };
  if (what === 'remove' && !confirm(`Remove the summary "${name}"?`)) return;
  await attempt(async () => {
    const done = await call(`/api/summaries/${what}`, body);
    say({ add: `Added the summary "${done.summary.name}".`,
          edit: `Saved the summary "${done.summary.name}".`,
          remove: `Removed the summary "${name}".`,
          select: `"${done.summary.name}" is shown first now.` }[what]);
    await loadSummaries(what === 'remove' ? undefined : done.summary.name);
  });
}

async function showSummary(event) {
  event?.preventDefault();
  const form = $('#summary-form');
  const query = new URLSearchParams({ account: state.account, name: form.elements.name.value });
  if (form.elements.range.value.trim()) query.set('range', form.elements.range.value.trim());
  if (form.elements.period.value) query.set('period', form.elements.period.value);
  const report = $('#summary-report');
  await attempt(async () => {
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
      throw error;
    }
  });
}

export function setUpSummaries() {
  $('#summary-form').addEventListener('submit', showSummary);
  $('#summary-form [name=name]').addEventListener('change', () => {
    showOptions();
    showSummary();
  });
  $('#summary-options').addEventListener('submit', (event) => {
    event.preventDefault();
    changeSummary('edit');
  });
  for (const what of ['add', 'select', 'remove']) {
    $(`#summary-${what}`).addEventListener('click', () => changeSummary(what));
  }
  document.addEventListener('account-shown', () => {
    if (!$('#summary-view').hidden) loadSummaries();
  });
}
