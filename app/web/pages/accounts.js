// The account list at the left: balances grouped by currency with their totals, a locked
// account's password, a new account, and the shown account's name and starting balance.

import { $, attempt, call, formData, money, reloadBook, say, state } from './common.js';
import { showAccount } from './register.js';

export async function loadAccounts() {
  const data = await call('/api/accounts');
  state.accounts = data.accounts;
  const byCurrency = new Map();
  for (const account of data.accounts) {
    if (!byCurrency.has(account.currency)) byCurrency.set(account.currency, []);
    byCurrency.get(account.currency).push(account);
  }
  $('#account-list').replaceChildren(...[...byCurrency].map(([currency, accounts]) =>
    currencyGroup(currency, accounts)));
  for (const name of ['from', 'to']) {
    const select = $(`#transfer-form select[name=${name}]`);
    const chosen = select.value;
    select.replaceChildren(...data.accounts.filter((a) => !a.problem && !a.locked)
      .map((a) => new Option(a.name, a.name)));
    if (chosen) select.value = chosen;
  }
  showReceived();
}

const currencyOf = (name) => state.accounts.find((a) => a.name === name)?.currency;

// Between accounts of two currencies, what the other one receives may be given.
function showReceived() {
  const form = $('#transfer-form').elements;
  const other = currencyOf(form.from.value) !== currencyOf(form.to.value);
  $('#transfer-received').hidden = !other;
  if (!other) form.toAmount.value = '';
}

function currencyGroup(currency, accounts) {
  const group = document.createElement('section');
  group.className = 'currency-group';
  const heading = document.createElement('h2');
  heading.textContent = currency;
  const ul = document.createElement('ul');
  let total = 0;
  for (const account of accounts) {
    const li = document.createElement('li');
    li.append(accountButton(account, currency));
    ul.append(li);
    if (account.balance !== null) total += account.balance;
  }
  const sum = document.createElement('p');
  sum.className = 'total';
  sum.innerHTML = '<span>Total</span>';
  const amount = document.createElement('span');
  amount.className = 'amount';
  amount.textContent = money(total, currency);
  sum.append(amount);
  group.append(heading, ul, sum);
  return group;
}

function accountButton(account, currency) {
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
  balance.textContent = account.locked ? 'locked'
    : account.problem ? 'damaged' : money(account.balance, currency);
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
  return button;
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

async function editAccount(event) {
  event.preventDefault();
  const data = formData(event.target);
  const body = { account: state.account, name: data.name };
  if (data.startingBalance) body.startingBalance = data.startingBalance;
  await attempt(async () => {
    const edited = await call('/api/accounts/edit', body);
    state.account = edited.name;
    await loadAccounts();
    await showAccount(edited.name);
    say(`Saved "${edited.name}": starting balance ${money(edited.startingBalance, edited.currency)}.`);
  });
}

// Takes the shown account out of the book; its file stays beside the book under another name.
async function removeAccount() {
  const name = state.account;
  if (!confirm(`Remove "${name}" from the book? Its file is kept beside the book under another ` +
               'name; transfers in other accounts stay there as plain entries.')) return;
  await attempt(async () => {
    const removed = await call('/api/accounts/remove', { account: name, unlink: true });
    state.account = null;
    await loadAccounts();
    const first = state.accounts.find((a) => !a.problem && !a.locked);
    if (first) await showAccount(first.name);
    say(`Removed "${removed.name}"; its file is kept as ${removed.keptAs}.`);
  });
}

// Gives the shown account a password (this session keeps it open), or takes it away.
async function setPassword(password) {
  const name = state.account;
  if (!password && !confirm(`Take the password of "${name}" away? Anyone with the book can then open it.`)) {
    return;
  }
  await attempt(async () => {
    await call('/api/accounts/password', { account: name, password });
    $('#password-form').reset();
    await loadAccounts();
    say(password ? `"${name}" is locked: it opens with its password.` : `"${name}" has no password now.`);
  });
}

async function addAccount(event) {
  event.preventDefault();
  const data = formData(event.target);
  const body = { name: data.name };
  if (data.currency) body.currency = data.currency;
  if (data.startingBalance) body.startingBalance = data.startingBalance;
  await attempt(async () => {
    const added = await call('/api/accounts', body);
    event.target.reset();
    await loadAccounts();
    await showAccount(added.name);
    say(`Added the account "${added.name}".`);
  });
}

async function transfer(event) {
  event.preventDefault();
  const data = formData(event.target);
  const body = { from: data.from, to: data.to, amount: data.amount };
  if (data.date) body.date = data.date;
  if (data.description) body.description = data.description;
  if (data.toAmount) body.toAmount = data.toAmount;
  await attempt(async () => {
    const done = await call('/api/transfer', body);
    say(`Transferred: ${done.from.account} ${money(done.from.balance, currencyOf(done.from.account))}, ` +
        `${done.to.account} ${money(done.to.balance, currencyOf(done.to.account))}`);
    event.target.elements.amount.value = '';
    event.target.elements.toAmount.value = '';
    await reloadBook();
  });
}

export function setUpAccounts() {
  $('#account-form').addEventListener('submit', addAccount);
  $('#edit-account-form').addEventListener('submit', editAccount);
  $('#remove-account').addEventListener('click', removeAccount);
  $('#password-form').addEventListener('submit', (event) => {
    event.preventDefault();
    const password = event.target.elements.password.value;
    if (password) setPassword(password);
  });
  $('#password-remove').addEventListener('click', () => setPassword(''));
  $('#transfer-form').addEventListener('submit', transfer);
  $('#transfer-form').addEventListener('change', showReceived);
  $('#menu').addEventListener('click', () => {
    const open = $('#accounts').classList.toggle('open');
    $('#menu').setAttribute('aria-expanded', String(open));
  });
}
