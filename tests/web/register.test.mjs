// Drives the pages of `folvant serve` in Debian's Chromium, as a person would: open the book,
// add a check with the keyboard, make a transfer, see a change made elsewhere, show a summary
// with its chart, import a bank's OFX file, reconcile to a zero difference, enter what a
// schedule has due, change an entry in place, search the register, open a locked account,
// enter and change an entry of line items, change a schedule in words, keep a summary of one's
// own, work the register by keyboard, give an entry notes, a tax-deductible mark and a new
// category, reopen on the account shown last, take a password away and give one. A failing
// test leaves a screenshot in
// $FOLVANT_SCREENSHOTS (default: the system's temporary folder).
//
//   FOLVANT_BINARY=build/dev/folvant node --test tests/web/

import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { cpSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import puppeteer from 'puppeteer-core';

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');
const binary = process.env.FOLVANT_BINARY || path.join(root, 'build/dev/folvant');
const chromium = process.env.CHROMIUM || '/usr/bin/chromium';
const shots = process.env.FOLVANT_SCREENSHOTS || tmpdir();

let scratch, server, browser, page, address;

// Starts the server on a copy of the sample book and reads the address it prints.
function serve(book) {
  return new Promise((resolve, reject) => {
    const child = spawn(binary, ['serve', '--book', book, '--port', '0'], {
      env: { ...process.env, TZ: 'America/New_York', FOLVANT_TODAY: '2026-07-15' },
      stdio: ['ignore', 'pipe', 'inherit'],
    });
    let out = '';
    child.stdout.on('data', (chunk) => {
      out += chunk;
      const found = out.match(/Open (http:\/\/\S+)/);
      if (found) resolve({ child, address: found[1] });
    });
    child.on('exit', (code) => reject(new Error(`folvant serve ended with ${code}: ${out}`)));
  });
}

before(async () => {
  scratch = mkdtempSync(path.join(tmpdir(), 'folvant-browser-'));
  cpSync(path.join(root, 'data/sample-book'), path.join(scratch, 'book'), { recursive: true });
  ({ child: server, address } = await serve(path.join(scratch, 'book')));
  browser = await puppeteer.launch({
    executablePath: chromium,
    headless: true,
    args: ['--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage'],
  });
  page = await browser.newPage();
  page.setDefaultTimeout(60000);  // a loaded machine (a sanitizer build, tests beside) is slow
  await page.setViewport({ width: 1280, height: 800 });
  await page.goto(address, { waitUntil: 'networkidle0' });
});

after(async () => {
  await browser?.close();
  server?.kill('SIGTERM');
  if (scratch) rmSync(scratch, { recursive: true, force: true });
});

// Runs a step; on failure keeps a picture of the page.
async function step(name, body) {
  try {
    await body();
  } catch (error) {
    const file = path.join(shots, `folvant-${name.replace(/\W+/g, '-')}.png`);
    await page?.screenshot({ path: file }).catch(() => {});
    error.message += ` (screenshot: ${file})`;
    throw error;
  }
}

const text = (selector) => page.$eval(selector, (e) => e.textContent.trim());
const balanceOf = (name) => page.$eval(`.account[data-name="${name}"] .amount`,
                                       (e) => e.textContent.trim());

test('the book opens on its first account, scrolled to the newest entry', () =>
  step('open', async () => {
    assert.equal(await text('#register-title'), 'Checking');
    await page.waitForSelector('.rows .row:not(.loading)');
    assert.equal(await balanceOf('Checking'), '$25,258.04');
    const last = await page.$$eval('.rows .row .tofrom', (cells) => cells.at(-1).textContent);
    assert.equal(last, 'Safeway');
  }));

test('a check entered with the keyboard changes the balance', () =>
  step('add-check', async () => {
    await page.focus('#new-entry [name=date]');
    await page.keyboard.press('Tab');
    await page.keyboard.type('5001');
    await page.keyboard.press('Tab');
    await page.keyboard.type('Corner Books');
    await page.keyboard.press('Tab');
    await page.keyboard.type('Atlas');
    await page.keyboard.press('Tab');
    await page.keyboard.press('Tab');
    await page.keyboard.type('-42.50');
    await page.keyboard.press('Enter');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Added entry'));
    await page.waitForFunction(() => document.querySelector('.account[data-name="Checking"] .amount')
      .textContent.trim() === '$25,215.54');
    const lastRow = () => page.$$eval('.rows .row', (rows) => {
      const row = rows.at(-1);
      return ['.check', '.tofrom', '.amount'].map((c) => row?.querySelector(c)?.textContent);
    });
    await page.waitForFunction(() => {
      const row = [...document.querySelectorAll('.rows .row')].at(-1);
      return row?.querySelector('.tofrom')?.textContent === 'Corner Books';
    }, { timeout: 20000 }).catch(() => {});
    assert.deepEqual(await lastRow(), ['5001', 'Corner Books', '-$42.50']);
    // The fields are cleared for the next entry and the cursor waits in the check number.
    assert.equal(await page.$eval('#new-entry [name=amount]', (e) => e.value), '');
    assert.equal(await page.evaluate(() => document.activeElement.name), 'checkNumber');
  }));

test('a transfer changes both accounts', () =>
  step('transfer', async () => {
    await page.click('#transfer summary');
    await page.select('#transfer-form [name=from]', 'Checking');
    await page.select('#transfer-form [name=to]', 'Savings');
    await page.type('#transfer-form [name=amount]', '100');
    await page.click('#transfer-form button[type=submit]');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Transferred'));
    await page.waitForFunction(() => document.querySelector('.account[data-name="Savings"] .amount')
      .textContent.trim() === '$15,024.53');
    assert.equal(await balanceOf('Checking'), '$25,115.54');
    assert.ok(await page.$eval('#transfer-received', (e) => e.hidden), 'one currency: no second amount');
  }));

test('a change made by another program shows without a reload', () =>
  step('poll', async () => {
    const changed = spawn(binary, ['--book', path.join(scratch, 'book'), 'entry', 'add', 'Savings',
                                   '--deposit', '5', '--date', '2026-07-15'],
                          { env: { ...process.env, FOLVANT_TODAY: '2026-07-15' } });
    await new Promise((resolve) => changed.on('exit', resolve));
    await page.waitForFunction(() => document.querySelector('.account[data-name="Savings"] .amount')
      .textContent.trim() === '$15,029.53', { timeout: 30000 });
  }));

test('a summary shows its chart and its categories', () =>
  step('summary', async () => {
    await page.click('.views [data-view=summary-view]');
    await page.waitForSelector('#summary-report img');
    const alt = await page.$eval('#summary-report img', (img) => img.alt);
    assert.match(alt, /^Chart of /);
    const loaded = await page.$eval('#summary-report img', (img) => img.complete && img.naturalWidth > 0);
    assert.ok(loaded, 'the chart is a picture the browser can draw');
    const categories = await page.$$eval('#summary-report tbody tr', (rows) => rows.length);
    assert.ok(categories > 0);
  }));

test('an OFX download is reviewed, then imported', () =>
  step('import', async () => {
    const file = path.join(scratch, 'statement.ofx');
    writeFileSync(file, [
      'OFXHEADER:100', 'DATA:OFXSGML', 'VERSION:102', 'ENCODING:USASCII', 'CHARSET:1252', '',
      '<OFX><BANKMSGSRSV1><STMTTRNRS><STMTRS><CURDEF>USD',
      '<BANKACCTFROM><BANKID>1<ACCTID>77</BANKACCTFROM><BANKTRANLIST>',
      '<STMTTRN><TRNTYPE>DEBIT<DTPOSTED>20260714<TRNAMT>-12.34<FITID>X1<NAME>Hardware store</STMTTRN>',
      '<STMTTRN><TRNTYPE>CREDIT<DTPOSTED>20260715<TRNAMT>50.00<FITID>X2<NAME>Refund</STMTTRN>',
      '<STMTTRN><TRNTYPE>DEBIT<DTPOSTED>20260715<TRNAMT>-999.00<FITID>X3<NAME>Not mine</STMTTRN>',
      '</BANKTRANLIST></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>', ''].join('\r\n'));
    await page.click('.views [data-view=import-view]');
    const input = await page.$('#import-form [name=file]');
    await input.uploadFile(file);
    await page.click('#import-form button[type=submit]');
    await page.waitForSelector('#import-review tbody tr');
    const statuses = await page.$$eval('#import-review tbody tr td:last-child',
                                       (cells) => cells.map((c) => c.textContent));
    assert.deepEqual(statuses, ['new', 'new', 'new']);
    // The third row is unticked: it stays out.
    await page.click('#import-review input[data-line="3"]');
    const before = await balanceOf('Checking');
    await page.click('#import-apply');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Imported 2 entries'));
    await page.waitForFunction((old) => document.querySelector('.account[data-name="Checking"] .amount')
      .textContent.trim() !== old, {}, before);
    assert.equal(await balanceOf('Checking'), '$25,153.20');
  }));

test('a statement is reconciled to a zero difference', () =>
  step('reconcile', async () => {
    await page.click('.views [data-view=reconcile-view]');
    // The statement shows the resolved balance (the imported entries came resolved) and the
    // check of 42.50 entered above.
    await page.$eval('#reconcile-form [name=statementBalance]', (e) => { e.value = '26244.03'; });
    await page.click('#reconcile-form button[type=submit]');
    await page.waitForSelector('#reconcile-report tbody tr');
    assert.equal(await text('#reconcile-difference'), '-$42.50');
    const box = await page.evaluateHandle(() => [...document.querySelectorAll('#reconcile-report tbody tr')]
      .find((tr) => tr.cells[5].textContent === '-$42.50').querySelector('input'));
    await box.click();
    await page.waitForFunction(() => document.querySelector('#reconcile-difference')?.textContent === '$0.00');
    await page.waitForFunction(() => !document.querySelector('#reconcile-finish').disabled);
    await page.click('#reconcile-finish');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Reconciled to'));
  }));

test('a scheduled entry that is due is entered with one click', () =>
  step('schedule', async () => {
    await page.click('.views [data-view=schedule-view]');
    await page.waitForSelector('#schedule-due tbody tr');
    const before = await page.$$eval('#schedule-due tbody tr', (rows) => rows.length);
    const balance = await balanceOf('Checking');
    await page.click('#schedule-due tbody tr:first-child button');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Entered entry'));
    await page.waitForFunction((n) => document.querySelectorAll('#schedule-due tbody tr').length === n - 1,
                               {}, before);
    await page.waitForFunction((old) => document.querySelector('.account[data-name="Checking"] .amount')
      .textContent.trim() !== old, {}, balance);
  }));

test('an entry is changed in place and the register searched', () =>
  step('edit', async () => {
    await page.click('.views [data-view=register-view]');
    await page.waitForSelector('.rows .row:not(.loading)');
    const row = await page.waitForFunction(() => [...document.querySelectorAll('.rows .row')]
      .find((r) => r.querySelector('.tofrom')?.textContent === 'Corner Books'));
    await row.evaluate((r) => r.dispatchEvent(new MouseEvent('dblclick', { bubbles: true })));
    assert.equal(await page.$eval('#new-entry [name=amount]', (e) => e.value), '-42.50');
    await page.$eval('#new-entry [name=amount]', (e) => { e.value = ''; });
    await page.type('#new-entry [name=amount]', '-40');
    await page.keyboard.press('Enter');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Changed entry'));
    await page.type('#register-tools [name=search]', 'Corner Books');
    await page.waitForFunction(() => {
      const rows = [...document.querySelectorAll('.rows .row:not(.loading)')];
      return rows.length === 1 && rows[0].querySelector('.amount').textContent === '-$40.00';
    });
  }));

test('a locked account opens with its password, for this session', () =>
  step('unlock', async () => {
    const locked = spawn(binary, ['--book', path.join(scratch, 'book'), '--password-stdin',
                                  'account', 'lock', 'Visa Card'], { stdio: ['pipe', 'ignore', 'inherit'] });
    locked.stdin.end('secret\n');
    await new Promise((resolve) => locked.on('exit', resolve));
    await page.waitForFunction(() => document.querySelector('.account[data-name="Visa Card"] .amount')
      .textContent.trim() === 'locked', { timeout: 30000 });
    await page.click('.account[data-name="Visa Card"]');
    await page.waitForSelector('#unlock-dialog[open]');
    await page.type('#unlock-form [name=password]', 'wrong');
    await page.keyboard.press('Enter');
    await page.waitForFunction(() => document.querySelector('#unlock-message').textContent.includes('not the password'));
    await page.$eval('#unlock-form [name=password]', (e) => { e.value = ''; });
    await page.type('#unlock-form [name=password]', 'secret');
    await page.keyboard.press('Enter');
    await page.waitForFunction(() => document.querySelector('#register-title').textContent === 'Visa Card');
    assert.equal(await balanceOf('Visa Card'), '-$52.49');
  }));

test('an entry of line items is entered through the split form', () =>
  step('split', async () => {
    await page.click('.account[data-name="Checking"]');
    await page.waitForFunction(() => document.querySelector('#register-title').textContent === 'Checking');
    await page.$eval('#register-tools [name=search]', (e) => {
      e.value = 'Hardware';
      e.dispatchEvent(new Event('input'));
    });
    await page.$eval('#new-entry [name=toFrom]', (e) => { e.value = 'Hardware store'; });
    await page.click('#split-open');
    await page.waitForSelector('#split-dialog[open]');
    const lines = await page.$$('#split-lines .split-line');
    await lines[0].$eval('[name=category]', (e) => { e.value = 'Food:Groceries'; });
    await lines[0].$eval('[name=amount]', (e) => { e.value = '-30'; });
    await lines[1].$eval('[name=category]', (e) => { e.value = 'Auto:Fuel'; });
    await lines[1].$eval('[name=amount]', (e) => { e.value = '-12.5'; });
    await page.click('#split-form button[type=submit]');
    assert.equal(await page.$eval('#new-entry [name=amount]', (e) => e.value), '-42.50');
    await page.click('#new-entry button[type=submit]');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Added entry'));
    await page.waitForFunction(() => [...document.querySelectorAll('.rows .row')].some((r) =>
      r.querySelector('.tofrom')?.textContent === 'Hardware store' &&
      r.querySelector('.category')?.textContent === '(split)' &&
      r.querySelector('.amount')?.textContent === '-$42.50'));
  }));

test("a split entry's line items are changed in the entry row", () =>
  step('split-edit', async () => {
    const row = await page.waitForFunction(() => [...document.querySelectorAll('.rows .row')]
      .find((r) => r.querySelector('.tofrom')?.textContent === 'Hardware store'));
    await row.evaluate((r) => r.dispatchEvent(new MouseEvent('dblclick', { bubbles: true })));
    await page.waitForFunction(
      () => document.querySelector('#new-entry [name=category]').placeholder === '2 line items');
    await page.click('#split-open');
    await page.waitForSelector('#split-dialog[open]');
    const lines = await page.$$('#split-lines .split-line');
    assert.equal(await lines[1].$eval('[name=category]', (e) => e.value), 'Auto:Fuel');
    await lines[1].$eval('[name=amount]', (e) => { e.value = '-20'; });
    await page.click('#split-form button[type=submit]');
    await page.click('#new-entry button[type=submit]');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Changed entry'));
    await page.waitForFunction(() => [...document.querySelectorAll('.rows .row')].some((r) =>
      r.querySelector('.tofrom')?.textContent === 'Hardware store' &&
      r.querySelector('.amount')?.textContent === '-$50.00'));
  }));

test('a schedule is changed in words', () =>
  step('schedule-edit', async () => {
    await page.click('.views [data-view=schedule-view]');
    await page.waitForSelector('#schedule-list tbody tr');
    // Clicked in the page at once: the list may be drawn again meanwhile.
    await page.waitForFunction(() => {
      const change = [...document.querySelectorAll('#schedule-list button')]
        .find((b) => b.textContent === 'Change');
      change?.click();
      return change;
    });
    assert.match(await text('#schedule-form-title'), /^Change the schedule/);
    for (const [name, value] of [['every', '2'], ['on', 'friday'], ['until', '2027-06-30']]) {
      await page.$eval(`#schedule-form [name=${name}]`, (e, v) => { e.value = v; }, value);
    }
    await page.select('#schedule-form [name=unit]', 'week');
    await page.click('#schedule-form button[type=submit]');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Saved "every 2 weeks on Friday'));
    await page.waitForFunction(() => [...document.querySelectorAll('#schedule-list tbody tr')]
      .some((r) => r.cells[0].textContent.startsWith('every 2 weeks on Friday, until 2027-06-30')));
    assert.equal(await text('#schedule-form-title'), 'A new schedule');
  }));

test("a summary's options are saved as a new summary, shown, and removed", () =>
  step('summary-options', async () => {
    await page.click('.views [data-view=summary-view]');
    // The report shown earlier stays until the fresh one comes: wait for the summaries' calls.
    await page.waitForNetworkIdle({ idleTime: 300 });
    await page.waitForSelector('#summary-report img');
    await page.click('#summary-settings summary');
    await page.$eval('#summary-options [name=newName]', (e) => { e.value = 'Fuel only'; });
    await page.select('#summary-options [name=filterField]', 'category');
    await page.$eval('#summary-options [name=filterText]', (e) => { e.value = 'Fuel'; });
    await page.click('#summary-add');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent === 'Added the summary "Fuel only".');
    await page.waitForFunction(() => document.querySelector('#summary-form [name=name]').value === 'Fuel only');
    await page.waitForFunction(() => [...document.querySelectorAll('#summary-report tbody tr')]
      .every((r) => /Auto|Fuel/.test(r.cells[0].textContent)));
    page.once('dialog', (dialog) => dialog.accept());
    await page.click('#summary-remove');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent === 'Removed the summary "Fuel only".');
    await page.waitForFunction(() => ![...document.querySelectorAll('#summary-form [name=name] option')]
      .some((o) => o.value === 'Fuel only'));
  }));

test('the register is worked by keyboard: arrows move, Enter changes, Space resolves', () =>
  step('keyboard', async () => {
    await page.click('.views [data-view=register-view]');
    await page.click('.account[data-name="Checking"]');
    await page.waitForSelector('.rows .row:not(.loading)');
    await page.focus('#rows');
    await page.waitForSelector('#current-row');
    await page.keyboard.press('ArrowUp');
    const current = () => page.$eval('#current-row', (r) => ({
      toFrom: r.querySelector('.tofrom').textContent,
      resolved: r.querySelector('button.resolved').getAttribute('aria-pressed'),
      index: Number(r.getAttribute('aria-rowindex')),
    }));
    const before = await current();
    assert.equal(await page.evaluate(() => document.activeElement.id), 'current-row');
    await page.keyboard.press(' ');
    await page.waitForFunction((was) => document.querySelector('#current-row button.resolved')
      ?.getAttribute('aria-pressed') !== was, {}, before.resolved);
    assert.equal((await current()).index, before.index, 'the keyboard stays on its row');
    await page.keyboard.press('Enter');
    await page.waitForFunction((name) =>
      document.querySelector('#new-entry [name=toFrom]').value === name &&
      document.querySelector('#new-entry button[type=submit]').textContent === 'Save', {}, before.toFrom);
    await page.keyboard.press('Escape');
    assert.equal(await text('#new-entry button[type=submit]'), 'Add');
  }));

test('an entry takes a type, notes and a tax-deductible mark from the More form', () =>
  step('details', async () => {
    await page.$eval('#register-tools [name=search]', (e) => {
      e.value = 'Pharmacy';
      e.dispatchEvent(new Event('input'));
    });
    await page.$eval('#new-entry [name=toFrom]', (e) => { e.value = 'Pharmacy'; });
    await page.$eval('#new-entry [name=amount]', (e) => { e.value = '-18.20'; });
    await page.$eval('#new-entry [name=category]', (e) => { e.value = 'Health:Vitamins'; });
    let asked = '';
    page.once('dialog', (dialog) => { asked = dialog.message(); dialog.accept(); });
    await page.click('#details-open');
    await page.waitForSelector('#details-dialog[open]');
    await page.type('#details-form [name=notes]', 'prescription');
    await page.click('#details-form [name=taxDeductible]');
    await page.click('#details-form button[type=submit]');
    assert.equal(await text('#details-open'), 'More ✓');
    await page.click('#new-entry button[type=submit]');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('Added entry'));
    assert.equal(await text('#details-open'), 'More…');
    assert.equal(asked, 'Make the new category "Health:Vitamins"?');
    await page.waitForFunction(() => [...document.querySelectorAll('#category-list option')]
      .some((o) => o.value === 'Health:Vitamins'));
    await page.select('#register-tools [name=taxDeductible]', 'only');
    await page.waitForFunction(() => {
      const rows = [...document.querySelectorAll('.rows .row:not(.loading)')];
      return rows.length === 1 && rows[0].querySelector('.tofrom').textContent === 'Pharmacy';
    });
    const row = await page.$('.rows .row:not(.loading)');
    await row.evaluate((r) => r.dispatchEvent(new MouseEvent('dblclick', { bubbles: true })));
    await page.click('#details-open');
    await page.waitForFunction(() => document.querySelector('#details-form [name=notes]').value === 'prescription');
    assert.ok(await page.$eval('#details-form [name=taxDeductible]', (e) => e.checked));
    await page.$eval('#details-cancel', (button) => button.click());  // the type's suggestions may cover it
    await page.focus('#new-entry [name=toFrom]');
    await page.keyboard.press('Escape');
    await page.select('#register-tools [name=taxDeductible]', 'all');
  }));

test('a transfer between currencies takes what the other account receives', () =>
  step('transfer-currencies', async () => {
    await page.select('#transfer-form [name=from]', 'Checking');
    await page.select('#transfer-form [name=to]', 'Euro Travel');
    assert.ok(!(await page.$eval('#transfer-received', (e) => e.hidden)));
    await page.type('#transfer-form [name=amount]', '50');
    await page.type('#transfer-form [name=toAmount]', '45');
    await page.click('#transfer-form button[type=submit]');
    await page.waitForFunction(() => document.querySelector('.account[data-name="Euro Travel"] .amount')
      .textContent.trim() === '€1,793.68');
  }));

test("a file of two accounts is imported from the one chosen in the import's settings", () =>
  step('import-from', async () => {
    const file = path.join(scratch, 'two.qif');
    writeFileSync(file, '!Account\nNJoint Checking\nTBank\n^\n!Type:Bank\nD07/01/2026\nT-10.00\n' +
                        'PCafe\n^\n!Account\nNHoliday Fund\nTBank\n^\n!Type:Bank\nD07/02/2026\n' +
                        'T50.00\nPGift\n^\n');
    await page.click('.views [data-view=import-view]');
    const input = await page.$('#import-form [name=file]');
    await input.uploadFile(file);
    await page.click('#import-form button[type=submit]');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent.startsWith('The file holds 2 accounts'));
    assert.ok(await page.$eval('.import-settings', (d) => d.open));
    await page.select('#import-form [name=from]', 'Holiday Fund');
    await page.waitForFunction(() => [...document.querySelectorAll('#import-review tbody tr')]
      .some((r) => r.textContent.includes('Gift')));
    const rows = await page.$$eval('#import-review tbody tr', (r) => r.length);
    assert.equal(rows, 1);
  }));

test('the page reopens on the account shown last', () =>
  step('reopen', async () => {
    await page.click('.account[data-name="Savings"]');
    await page.waitForFunction(() => document.querySelector('#register-title').textContent === 'Savings');
    await page.reload({ waitUntil: 'domcontentloaded' });
    await page.waitForFunction(() => document.querySelector('#register-title').textContent === 'Savings' &&
      document.querySelectorAll('.rows .row:not(.loading)').length > 0);
    assert.equal(await page.title(), 'Savings · Folvant');
  }));

test("an account's password is taken away and given from the page", () =>
  step('password', async () => {
    await page.click('.account[data-name="Visa Card"]');
    await page.waitForFunction(() => document.querySelector('#register-title').textContent === 'Visa Card');
    await page.click('#edit-account summary');
    page.once('dialog', (dialog) => dialog.accept());
    await page.click('#password-remove');
    await page.waitForFunction(
      () => document.querySelector('#message').textContent === '"Visa Card" has no password now.');
    await page.type('#password-form [name=password]', 'another');
    await page.click('#password-form button[type=submit]');
    await page.waitForFunction(() => document.querySelector('#message').textContent.startsWith('"Visa Card" is locked'));
    // This session gave it, so the account stays open here.
    assert.equal(await balanceOf('Visa Card'), '-$52.49');
  }));
