// Reconciling with a bank statement: its date and balance, the unresolved entries to tick, the
// difference with suggestions where it comes from, and finishing at a zero difference.

import { $, attempt, call, definitions, money, reloadBook, say, state, table } from './common.js';

const HINTS = {
  oneEntry: (s) => `Entry ${s.entries[0]} is the difference and is not resolved.`,
  twoEntries: (s) => `Entries ${s.entries.join(' and ')} add up to the difference.`,
  signFlipped: (s) => `Entry ${s.entries[0]} may have been entered the other way round.`,
  transposedDigits: () => 'The difference divides by 9: two digits may be swapped in an amount.',
};

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
  await attempt(async () => {
    const data = await call('/api/reconcile', body);
    const difference = definitions([
      ['Resolved balance', money(data.resolvedBalance)],
      ['Statement balance', money(data.statementBalance)],
      ['Difference', money(data.difference), 'reconcile-difference']]);
    const list = table([['Resolved'], ['Date'], ['Check'], ['To/From'], ['Description'],
                        ['Amount', 'amount']],
                       data.unresolved.map((e) => ['', e.date, e.checkNumber ?? '', e.toFrom,
                                                   e.description, money(e.amount)]));
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
      li.textContent = HINTS[s.kind](s);
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
    if (change.resolve || change.finish) await reloadBook();
  });
}

export function setUpReconcile() {
  $('#reconcile-form').addEventListener('submit', reconcile);
  $('#reconcile-finish').addEventListener('click', () => reconcile(null, { finish: true }));
  $('#reconcile-form [name=statementDate]').value = state.today;
}
