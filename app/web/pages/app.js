// The register in the browser: accounts on the left, the chosen account on the right in tabs
// (register, summary, scheduled entries, reconcile, import). Each view is a module of its own;
// this one starts them and keeps the page up to date with changes made by other programs.

import { $, attempt, call, reload, state } from './common.js';
import { loadAccounts, setUpAccounts } from './accounts.js';
import { setUpEntryRow } from './entry.js';
import { setUpImport } from './import.js';
import { setUpReconcile } from './reconcile.js';
import { drawRows, fetchEarly, refreshRegister, setUpRegister, showAccount } from './register.js';
import { loadSchedules, setUpSchedules } from './schedules.js';
import { loadSummaries, setUpSummaries } from './summaries.js';

const POLL_MS = 3000;  // how often to ask whether the book changed

// Left and right arrows, Home and End move between the tabs, as tabs do.
function tabKeys(event) {
  const tabs = [...document.querySelectorAll('.views [role=tab]')];
  const at = tabs.indexOf(event.target);
  const to = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: tabs.length - 1 }[event.key];
  if (to === undefined) return;
  event.preventDefault();
  const tab = tabs[(to + tabs.length) % tabs.length];
  tab.focus();
  showView(tab.dataset.view);
}

function showView(id) {
  document.querySelectorAll('.views [role=tab]').forEach((tab) => {
    const selected = tab.dataset.view === id;
    tab.setAttribute('aria-selected', String(selected));
    tab.tabIndex = selected ? 0 : -1;
    $(`#${tab.dataset.view}`).hidden = !selected;
  });
  $('#register-tools').hidden = id !== 'register-view';
  if (id === 'summary-view') loadSummaries();
  if (id === 'schedule-view') loadSchedules();
}

async function poll() {
  try {
    const { version } = await call('/api/status');
    if (state.version !== null && version !== state.version) {
      await Promise.all([loadAccounts(), refreshRegister(false)]);
      const status = $('#status');
      status.textContent = 'Updated with changes made elsewhere.';
      setTimeout(() => { if (status.textContent.startsWith('Updated')) status.textContent = ''; }, 8000);
    }
    state.version = version;
  } catch (error) {
    $('#status').textContent = `Cannot reach the server: ${error.message}`;
  }
  setTimeout(poll, POLL_MS);
}

function lastAccount() {
  try {
    return localStorage.getItem('folvant-account');
  } catch {
    return null;
  }
}

async function start() {
  // The account list is asked for at once, beside the book's status and the register of the
  // account shown last time: the first screen waits for them.
  const last = lastAccount();
  if (last) fetchEarly(last);
  const accounts = loadAccounts();
  accounts.catch(() => {});  // reported below
  const status = await call('/api/status').catch(() => ({}));
  state.today = status.today || new Date().toISOString().slice(0, 10);
  reload.accounts = loadAccounts;
  reload.rows = drawRows;
  setUpAccounts();
  setUpRegister();
  setUpEntryRow();
  setUpSummaries();
  setUpSchedules();
  setUpReconcile();
  setUpImport();
  document.querySelectorAll('.views [role=tab]').forEach((tab) => {
    tab.addEventListener('click', () => showView(tab.dataset.view));
    tab.addEventListener('keydown', tabKeys);
    tab.tabIndex = tab.getAttribute('aria-selected') === 'true' ? 0 : -1;
  });
  await attempt(async () => {
    await accounts;
    const open = (a) => !a.problem && !a.locked;
    const first = state.accounts.find((a) => a.name === last && open(a)) ?? state.accounts.find(open);
    if (first) await showAccount(first.name);
    poll();
  });
}

start();
