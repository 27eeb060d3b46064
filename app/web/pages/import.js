// Importing a bank's file: the review of every record (new, duplicate, possible duplicate,
// transfer) with a tick for each one that can come in, the ticked ones imported, and the last
// import taken back.

import { $, attempt, call, money, reloadBook, say, state, table } from './common.js';

let chosenFile = null;

async function reviewImport(event, apply = false) {
  event?.preventDefault();
  const file = chosenFile || $('#import-form [name=file]').files[0];
  if (!file) return;
  chosenFile = file;
  const query = new URLSearchParams({ account: state.account, name: file.name });
  const settings = $('#import-form').elements;
  for (const key of ['dateFormat', 'from', 'columns']) {
    if (settings[key].value.trim()) query.set(key, settings[key].value.trim());
  }
  if (apply && settings.saveSettings.checked) query.set('saveSettings', '1');
  if (apply) {
    query.set('apply', '1');
    // The rows left ticked in the review.
    query.set('lines', [...document.querySelectorAll('#import-review input[data-line]:checked')]
      .map((box) => box.dataset.line).join(','));
  }
  await attempt(async () => {
    const response = await fetch(`/api/import?${query}`, {
      method: 'POST', credentials: 'same-origin',
      headers: { 'Content-Type': 'application/octet-stream' }, body: file,
    });
    const data = await response.json();
    if (!response.ok && data.fileAccounts) {
      showFileAccounts({ fileAccounts: data.fileAccounts, fileAccount: null });
      $('#import-form .import-settings').open = true;
      $('#import-review').replaceChildren();
      throw new Error(`The file holds ${data.fileAccounts.length} accounts: choose the one to import ` +
                      'under Settings.');
    }
    if (!response.ok) throw new Error(data.error || response.statusText);
    const notes = document.createElement('p');
    notes.textContent = [
      `${data.format} file "${data.file}"`,
      data.encoding && `read as ${data.encoding}`,
      data.dateFormat && `dates ${data.dateFormat}${data.dateNote ? ` (${data.dateNote}` +
        `${data.dateFormatGuessed ? '; Settings › Dates changes it' : ''})` : ''}`,
      data.readNote,
    ].filter(Boolean).join('; ') + '.';
    const rows = data.rows.map((r) => ['', r.date ?? '–', money(r.amount), r.toFrom,
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
    showFileAccounts(data);
    const counts = document.createElement('p');
    counts.textContent = Object.entries(data.counts).map(([k, v]) => `${v} ${k}`).join(', ') + '.';
    $('#import-review').replaceChildren(notes, list, counts);
    $('#import-apply').disabled = apply || (data.counts.new + data.counts.transfer) === 0;
    if (apply) {
      say(`Imported ${data.added} entries as batch ${data.batch ?? '–'}.`);
      chosenFile = null;
      await reloadBook(true);
    }
  });
}

// A file of several accounts (QIF) imports one of them: the review says which, and the
// choice is offered.
function showFileAccounts(data) {
  const select = $('#import-form [name=from]');
  $('#import-from').hidden = data.fileAccounts.length < 2;
  const choices = data.fileAccounts.map((name) => new Option(name, name));
  if (!data.fileAccount) choices.unshift(new Option('choose one', ''));
  select.replaceChildren(...choices);
  select.value = data.fileAccount ?? '';
}

async function undoImport() {
  await attempt(async () => {
    const done = await call('/api/import/undo', { account: state.account });
    say(`Took back ${done.removed} entries; balance ${money(done.balance)}.`);
    await reloadBook(true);
  });
}

export function setUpImport() {
  $('#import-form').addEventListener('submit', (event) => {
    chosenFile = null;
    reviewImport(event);
  });
  // A new file starts from the account's own settings; a changed setting shows its review.
  $('#import-form [name=file]').addEventListener('change', () => {
    $('#import-form [name=from]').replaceChildren();
    $('#import-from').hidden = true;
  });
  for (const key of ['dateFormat', 'from']) {
    $(`#import-form [name=${key}]`).addEventListener('change', () => reviewImport(null));
  }
  $('#import-apply').addEventListener('click', () => reviewImport(null, true));
  $('#import-undo').addEventListener('click', undoImport);
  document.addEventListener('account-shown', () => $('#import-review').replaceChildren());
}
