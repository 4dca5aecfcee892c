// Drives the page in headless Chromium (puppeteer-core): serves SITE_DIR on
// a local port, feeds MOVIE through the file input, plays it up to FRAME and
// writes the canvas pixels to OUT (straight RGBA rows); then feeds BAD_MOVIE,
// which must show an error while the page goes on working.
//   node browser.mjs SITE_DIR MOVIE FRAME OUT BAD_MOVIE [SCREENSHOT.png]
// Prints "key value" lines: width, height, frame, one textBox line per
// device-text box, the error shown, the frame reached by Step after the
// error (frameAfterError) and one pageError line per page error.
import fs from 'node:fs';
import http from 'node:http';
import os from 'node:os';
import path from 'node:path';
import puppeteer from 'puppeteer-core';

const [site, movie, frameArg, out, badMovie, screenshot] = process.argv.slice(2);
const frame = Number(frameArg);
const types = { '.html': 'text/html', '.js': 'text/javascript', '.wasm': 'application/wasm', '.swf': 'application/x-shockwave-flash' };

const server = http.createServer((req, res) => {
  const name = path.normalize(decodeURIComponent(new URL(req.url, 'http://x').pathname)).replace(/^[/\\]+/, '');
  const file = path.join(site, name || 'index.html');
  if (!file.startsWith(path.resolve(site)) || !fs.existsSync(file) || !fs.statSync(file).isFile()) {
    res.writeHead(404).end();
    return;
  }
  res.writeHead(200, { 'Content-Type': types[path.extname(file)] || 'application/octet-stream' });
  fs.createReadStream(file).pipe(res);
});
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));

const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'zelweb-chromium-'));
const browser = await puppeteer.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
  userDataDir: profile,
  // The machine has no network: Chromium's own background connections stay off.
  args: ['--headless=new', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
         '--disable-background-networking', '--disable-component-update', '--disable-sync'],
});
try {
  const page = await browser.newPage();
  const problems = [];
  page.on('pageerror', (e) => problems.push(String(e)));
  await page.setViewport({ width: 1000, height: 700, deviceScaleFactor: 1 });
  await page.goto(`http://127.0.0.1:${server.address().port}/index.html`);
  await page.waitForFunction(() => window.player !== undefined);
  await page.evaluate((n) => {
    window.textBoxes = [];
    player.ontext = (record) => { if (record.kind === 'text') textBoxes.push(record.box); };
    const shown = player.onframe;
    window.reached = new Promise((resolve) => {
      player.onframe = (f) => {
        if (f === n) player.pause();
        shown(f);
        if (f === n) resolve();
      };
    });
  }, frame);
  await (await page.$('#file')).uploadFile(movie);
  await page.waitForFunction(() => player.frame >= 1);
  if (frame > 1) await page.click('#play');
  await page.evaluate(() => window.reached);

  const result = await page.evaluate(() => {
    const canvas = document.getElementById('canvas');
    const data = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
    let binary = '';
    for (let i = 0; i < data.length; i += 0x8000) binary += String.fromCharCode(...data.subarray(i, i + 0x8000));
    return { width: canvas.width, height: canvas.height, pixels: btoa(binary), textBoxes, frame: player.frame };
  });
  fs.writeFileSync(out, Buffer.from(result.pixels, 'base64'));
  delete result.pixels;
  if (screenshot) await page.screenshot({ path: screenshot });

  await (await page.$('#file')).uploadFile(badMovie);
  await page.waitForFunction(() => document.getElementById('error').textContent !== '');
  result.error = await page.$eval('#error', (e) => e.textContent);
  await page.click('#step');
  result.frameAfterError = await page.evaluate(() => player.frame);
  console.log([`width ${result.width}`, `height ${result.height}`, `frame ${result.frame}`,
    ...result.textBoxes.map((b) => `textBox ${b.join(' ')}`), `error ${result.error}`,
    `frameAfterError ${result.frameAfterError}`, ...problems.map((p) => `pageError ${p}`)].join('\n'));
} finally {
  await browser.close();
  server.close();
  fs.rmSync(profile, { recursive: true, force: true });
}
