// Times the register page of a large book, as scripts/bench-web runs it: from the start of
// loading the page to its first rows on screen, with the server's reading of the book warm, and
// after a change by the command-line program (the server reads the book again), and how long
// rows take to come after a jump to the middle of the register.
//
//   node tests/web/first-screen.mjs FOLVANT BOOK
import { spawn, execFileSync } from 'node:child_process';
import puppeteer from 'puppeteer-core';

const [folvant, book] = process.argv.slice(2);
const server = spawn(folvant, ['--book', book, 'serve', '--port', '0'], { stdio: ['ignore', 'pipe', 'inherit'] });
const address = await new Promise((resolve, reject) => {
  let out = '';
  server.stdout.on('data', (chunk) => {
    out += chunk;
    const found = out.match(/Open (\S+)/);
    if (found) resolve(found[1]);
  });
  server.on('exit', () => reject(new Error(`folvant serve ended: ${out}`)));
});
const browser = await puppeteer.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium', headless: true, args: ['--no-sandbox'],
});
try {
  const page = await browser.newPage();
  await page.setViewport({ width: 1400, height: 900 });
  await page.goto(address, { waitUntil: 'networkidle0' });  // the token, for the cookie
  const rowsShown = () => page.waitForFunction(
    () => document.querySelectorAll('.rows .row:not(.loading)').length > 10 &&
          !document.querySelector('.rows .row.loading'), { polling: 'raf' });
  const times = { warm: [], changed: [] };
  for (let i = 0; i < 5; i++) {
    for (const kind of ['warm', 'changed']) {
      if (kind === 'changed') {
        execFileSync(folvant, ['--book', book, 'entry', 'add', 'Checking', '--debit', '1']);
      }
      await page.goto(address.replace(/\?token=.*/, ''), { waitUntil: 'domcontentloaded' });
      await rowsShown();
      times[kind].push(await page.evaluate(() => performance.now()));
    }
  }
  const jumps = [];
  for (const at of [0.5, 0.25, 0.75]) {
    await page.$eval('#rows', (e, f) => { e.scrollTop = e.scrollHeight * f; }, at);
    const start = Date.now();
    await page.waitForFunction(() => document.querySelector('.rows .row.loading'), { polling: 'raf' })
      .catch(() => {});
    await rowsShown();
    jumps.push(Date.now() - start);
  }
  const median = (xs) => [...xs].sort((a, b) => a - b)[Math.floor(xs.length / 2)];
  const entries = await page.$eval('#rows-space', (e) => Math.round(e.offsetHeight / 34));
  console.log(`register of ${entries} entries: first screen ${Math.round(median(times.warm))} ms ` +
              `(median of 5), ${Math.round(median(times.changed))} ms after a change made elsewhere; ` +
              `rows after a jump ${median(jumps)} ms`);
} finally {
  await browser.close();
  server.kill('SIGTERM');
}
