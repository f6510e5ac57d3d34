// The built page in Chromium. CHROMIUM names the browser, BRINDLEMOTH_BUILD the native build whose tablegen makes the
// tables; with WEB_PICTURES the pictures of the documentation are written to that folder.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';
import { preview } from 'vite';

const root = fileURLToPath(new URL('..', import.meta.url));
const build = process.env.BRINDLEMOTH_BUILD ?? join(root, '../../build/release');
const pictures = process.env.WEB_PICTURES;
// The longest wait for something that a quick machine shows in a second.
const PATIENCE = 90000;
const ROOK_ENDING = '8/8/8/8/8/2k5/8/R3K3 w - - 0 1';
const FLAGS = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
  '--disable-component-update', '--disable-sync'];

let server, browser, page, address, foreign, faults;
before(async () => {
  server = await preview({ root, logLevel: 'error', preview: { port: 0 } });
  address = server.resolvedUrls.local[0];
  browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: FLAGS });
});
after(async () => {
  await browser.close();
  await new Promise((done) => server.httpServer.close(done));
});
beforeEach(() => open());
afterEach(async () => {
  const kept = await page.evaluate(async () => localStorage.length + sessionStorage.length + document.cookie.length +
    (await indexedDB.databases()).length + (await caches.keys()).length);
  await page.context().close();
  assert.deepEqual({ foreign, faults, kept }, { foreign: [], faults: [], kept: 0 });
});

async function open(options = {}) {
  await page?.context().close();
  foreign = [];
  faults = [];
  const context = await browser.newContext({ viewport: { width: 1280, height: 860 }, deviceScaleFactor: 1, ...options });
  context.setDefaultTimeout(PATIENCE);
  page = await context.newPage();
  page.on('request', (request) => /^(data|blob):/.test(request.url()) || request.url().startsWith(address) || foreign.push(request.url()));
  page.on('pageerror', (error) => faults.push(error.message));
  await page.goto(address);
  await waitText('#status-text', /Your move/);
}

const text = (selector) => page.locator(selector).innerText();
const waitText = (selector, pattern) => page.waitForFunction(
  ([at, source]) => new RegExp(source).test(document.querySelector(at)?.textContent ?? ''), [selector, pattern.source]);
const fen = () => page.inputValue('#fen');
const moves = async () => (await page.locator('.moves button').evaluateAll((all) => all.map((one) => one.querySelector('span').textContent))).join(' ');
const waitMoves = (count) => page.waitForFunction((n) => document.querySelectorAll('.moves button').length === n, count);

async function squareAt(square) {
  const box = await page.locator(`#board rect[data-square="${square}"]`).boundingBox();
  return [box.x + box.width / 2, box.y + box.height / 2];
}

async function drag(from, to) {
  await page.waitForSelector('#board[data-ready]');
  await page.locator('#board').scrollIntoViewIfNeeded();
  await page.mouse.move(...await squareAt(from));
  await page.mouse.down();
  await page.mouse.move(...await squareAt(to), { steps: 4 });
  await page.mouse.up();
}

async function setUp(position) {
  await page.fill('#fen', position);
  await page.press('#fen', 'Enter');
  await page.waitForFunction((wanted) => document.activeElement.id !== 'fen' && document.querySelector('#fen').value === wanted, position);
}

async function drop(paths) {
  const files = paths.map((path) => ({ name: path.split('/').at(-1), bytes: readFileSync(path).toString('base64') }));
  await page.evaluate((given) => {
    const dataTransfer = new DataTransfer();
    for (const { name, bytes } of given) dataTransfer.items.add(new File([Uint8Array.from(atob(bytes), (byte) => byte.charCodeAt(0))], name));
    document.body.dispatchEvent(new DragEvent('drop', { dataTransfer, bubbles: true, cancelable: true }));
  }, files);
}

test('a game of six moves, an illegal drop and a move taken back', async () => {
  await page.selectOption('#limit', 'depth 6');
  await drag('e2', 'e5');
  await waitText('#status-text', /e2–e5 is not a legal move/);
  assert.equal(await moves(), '');
  for (const [at, [from, to]] of [['d2', 'd4'], ['g1', 'f3'], ['e2', 'e3']].entries()) {
    await drag(from, to);
    await waitMoves(2 * at + 2);
    await waitText('#status-text', /Your move/);
  }
  assert.match(await moves(), /^d4 \S+ Nf3 \S+ e3 \S+$/);
  assert.match(await fen(), / w [KQkq-]+ \S+ \d+ 4$/);
  if (pictures) {
    await page.click('h1');
    await page.waitForTimeout(500); // the animation of the move
    await page.screenshot({ path: join(pictures, 'web-play.png') });
  }
  await page.selectOption('#limit', 'movetime 1000');
  await drag('b1', 'd2');
  await waitText('#status-text', /thinking… depth/);
  await page.click('#take-back');
  await waitText('#status-text', /Your move/);
  assert.match(await moves(), /^d4 \S+ Nf3 \S+ e3 \S+$/);
  await page.selectOption('#colour', 'Black');
  await page.selectOption('#limit', 'depth 3');
  await page.click('#new-game');
  await waitMoves(1);
  await waitText('#status-text', /Your move/);
  await page.waitForFunction(() => {
    const top = (square) => document.querySelector(`#board rect[data-square="${square}"]`)?.getBoundingClientRect().top;
    return top('a8') > top('a1');
  });
});

test('moves are written as the rules of notation ask, and none is lost while pieces still move', async () => {
  await page.click('#mode-analyse');
  await page.evaluate(() => {
    const frame = window.requestAnimationFrame;
    window.requestAnimationFrame = (step) => frame(() => setTimeout(() => step(performance.now()), 500));
  });
  for (const [position, from, to, san] of [
    ['r3k3/8/8/8/8/8/8/R3K2R w KQq - 0 1', 'e1', 'c1', 'O-O-O'],
    ['5k2/8/8/8/8/8/8/4K2R w K - 0 1', 'e1', 'g1', 'O-O+'],
    ['4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2', 'e5', 'd6', 'exd6'],
    ['4k3/8/8/8/8/5N2/8/1N2K3 w - - 0 1', 'b1', 'd2', 'Nbd2'],
    ['R7/7k/8/8/8/8/8/R3K3 w - - 0 1', 'a1', 'a4', 'R1a4'],
    ['8/k7/8/8/4Q2Q/8/8/K6Q w - - 0 1', 'h4', 'e1', 'Qh4e1'],
    ['4r3/8/8/8/k7/8/4Q3/4K3 w - - 0 1', 'e2', 'e4', 'Qe4+'],
    ['6k1/5ppp/8/8/8/8/8/R3K3 w - - 0 1', 'a1', 'a8', 'Ra8#'],
    ['4k3/4b3/8/8/8/8/8/4R1K1 b - - 0 1', 'e7', 'b4', ''],
  ]) {
    await setUp(position);
    await drag(from, to);
    if (san) await waitMoves(1);
    assert.equal(await moves(), san, position);
  }
  await setUp('8/P6k/8/8/8/8/7K/8 w - - 0 1');
  await drag('a7', 'a8');
  await page.locator('.promotion-dialog-button[data-piece="wn"]').click();
  await waitMoves(1);
  assert.equal(await moves(), 'a8=N');
  await setUp('7k/8/5KQ1/8/8/8/8/8 w - - 0 1');
  await drag('g6', 'f7');
  await waitText('#status-text', /Stalemate/);
  for (const [position, drawn] of [
    ['8/8/8/3k4/8/8/8/4K3 w - - 0 1', true],
    ['8/8/8/3k4/8/8/8/4KN2 w - - 0 1', true],
    ['2b5/8/8/3k4/8/8/8/4KB2 w - - 0 1', true],
    ['2b5/8/8/3k4/8/8/8/2B1K3 w - - 0 1', false],
    ['1n6/8/8/3k4/8/8/8/4KN2 w - - 0 1', false],
    ['8/8/8/3k4/8/8/8/4KR2 w - - 0 1', false],
  ]) {
    await setUp(position);
    assert.equal(/insufficient material/.test(await text('#status-text')), drawn, position);
  }
});

test('analysis starts, shows its lines, plays one and stops', async () => {
  await page.click('#mode-analyse');
  await page.selectOption('#lines-count', '5');
  await page.click('#analyse');
  await page.waitForFunction(() => Number(document.querySelector('#depth').textContent) >= 6 && document.querySelectorAll('.lines strong').length === 5);
  const firsts = await page.locator('.lines strong').allInnerTexts();
  assert.equal(new Set(firsts).size, 5);
  const second = await page.locator('.lines li:nth-child(2) strong').innerText();
  await page.click('.lines li:nth-child(2) button');
  await waitMoves(1);
  assert.ok(firsts.includes(await moves()), `${await moves()} was offered, as ${second}`);
  for (const [at, [from, to]] of [['a7', 'a6'], ['h2', 'h3'], ['h7', 'h6']].entries()) {
    await drag(from, to);
    await waitMoves(at + 2);
  }
  await waitText('#depth', /^([6-9]|\d\d)$/);
  await page.keyboard.press('ArrowLeft');
  await page.click('#console summary');
  await page.click('#analyse');
  await waitText('#analyse', /Start/);
  await page.waitForFunction(() => /^bestmove/.test(document.querySelector('#log').textContent.trimEnd().split('\n').at(-1)));
  const said = await text('#log');
  const commands = said.split('\n').filter((line) => /^(› (go|position)|bestmove)/.test(line)).map((line) => line.replace(/^› /, '').split(' ')[0]);
  assert.match(commands.join(' '), /^(position go bestmove ?)+$/);
  await page.click('#evaluate');
  await page.waitForFunction(() => [...document.querySelectorAll('.moves small')].every((score) => /\d/.test(score.textContent)));
  await waitText('#evaluate', /Evaluate/);
  const plot = await page.locator('#graph .u-over').boundingBox();
  await page.mouse.click(plot.x + 2, plot.y + 20);
  assert.equal(await page.locator('.moves [aria-current]').count(), 0);
  if (pictures) await takeAnalysisPicture();
});

async function takeAnalysisPicture() {
  const game = 'e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 b5a4 g8f6 e1g1 f6e4 d2d4 e5d4 f1e1 d7d5 f3d4 f8d6 d4c6 d6h2 g1h1';
  await page.click('#console summary');
  await page.selectOption('#lines-count', '3');
  await page.click('#initial');
  await waitMoves(0);
  for (const [at, move] of game.split(' ').entries()) {
    await drag(move.slice(0, 2), move.slice(2));
    await waitMoves(at + 1);
  }
  await page.click('#evaluate');
  await waitText('#evaluate', /Stop/);
  await waitText('#evaluate', /Evaluate/);
  await page.click('#analyse');
  await waitText('#depth', /^1[3-9]$/);
  await page.mouse.move(5, 5);
  await page.screenshot({ path: join(pictures, 'web-analyse.png') });
}

test('a FEN is set up, and what is none is told', async () => {
  const good = 'r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/2NP1N2/PPP2PPP/R1BQK2R b KQkq - 0 5';
  await page.click('#mode-analyse');
  await setUp(good);
  assert.equal(await page.locator('#board [data-piece="bb"]').count(), 2);
  for (const [bad, fault] of [
    ['hello', /six fields/],
    ['8/8/8/8/8/8/8 w - - 0 1', /7 ranks/],
    ['4k3/8/8/9/8/8/8/4K3 w - - 0 1', /“9”/],
    ['4k3/8/8/8/8/8/8/8 w - - 0 1', /one king/],
    ['4k2P/8/8/8/8/8/8/4K3 w - - 0 1', /pawn/],
    ['4k3/8/8/8/8/8/8/4K3 w K - 0 1', /castling right “K”/],
    ['4k3/8/8/8/8/8/8/4K3 w - e6 0 1', /en-passant/],
    ['4k3/4R3/8/8/8/8/8/4K3 w - - 0 1', /not to move is in check/],
    ['4k3/4R3/8/8/8/8/8/4r2K w - - 0 1', /not to move is in check/],
  ]) {
    await page.fill('#fen', bad);
    await page.press('#fen', 'Enter');
    await waitText('#fen-fault', fault);
    assert.equal(await page.locator('#board [data-piece="bb"]').count(), 2, bad);
  }
  await page.locator('#console').evaluate((frame) => { frame.open = true; });
  await page.fill('#command', 'quit');
  await page.press('#command', 'Enter');
  await page.click('#restart');
  await setUp(good);
  await page.click('#analyse');
  await waitText('#depth', /\d/);
});

test('a book, tables and a file of no use are dropped', async () => {
  const scratch = mkdtempSync(join(tmpdir(), 'brindlemoth-'));
  execFileSync(join(build, 'tablegen/tablegen'), ['KRvK', '--out', scratch], { stdio: 'ignore' });
  // A book with one entry: a2a3 in the initial position.
  writeFileSync(join(scratch, 'a.bin'), Buffer.from('463b96181691fc9c0210000100000000', 'hex'));
  await page.click('#mode-analyse');
  await setUp(ROOK_ENDING);
  await page.click('#analyse');
  await waitText('.lines b', /\d/);
  await page.locator('.card:has(#hash)').evaluate((frame) => { frame.open = true; });
  await drop([...readdirSync(scratch).map((name) => join(scratch, name)), fileURLToPath(import.meta.url)]);
  await waitText('#loaded', /Book of 1 entry, tables of 1 endgame\..*page\.test\.mjs is neither/);
  await waitText('.lines b', /TB/);
  await page.click('#mode-play');
  await page.selectOption('#colour', 'Black');
  await page.click('#new-game');
  await waitMoves(1);
  assert.equal(await moves(), 'a3');
  rmSync(scratch, { recursive: true });
});

test('the page is used by keyboard', async () => {
  await page.selectOption('#limit', 'depth 3');
  await page.waitForSelector('#board[data-ready]');
  await page.locator('#board svg.cm-chessboard').focus();
  for (const key of [...Array(4).fill('ArrowRight'), 'ArrowUp', 'Enter', 'ArrowUp', 'ArrowUp', 'Enter']) await page.keyboard.press(key);
  await waitMoves(2);
  await waitText('#live', /Black: /);
  await page.locator('#board svg.cm-chessboard').blur();
  await page.keyboard.press('ArrowLeft');
  await waitText('#live', /^White: e4$/);
  await page.keyboard.press('a');
  await waitText('#depth', /\d/);
});

test('a narrow screen holds the page', async () => {
  await open({ viewport: { width: 360, height: 720 }, hasTouch: true, isMobile: true, colorScheme: 'dark' });
  await page.selectOption('#limit', 'depth 3');
  await page.waitForSelector('#board[data-ready]');
  for (const square of ['e2', 'e4']) await page.touchscreen.tap(...await squareAt(square));
  await waitMoves(2);
  await page.click('#mode-analyse');
  await page.click('#analyse');
  await waitText('#depth', /\d/);
  const widths = await page.evaluate(() => [document.documentElement.scrollWidth, document.querySelector('#board').clientWidth]);
  assert.equal(widths[0], 360);
  assert.ok(widths[1] >= 300, `the board is ${widths[1]} wide`);
});
