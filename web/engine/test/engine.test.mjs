// The engine package under Node against the native programs, which are in BRINDLEMOTH_BUILD.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { setTimeout as sleep } from 'node:timers/promises';
import { startEngine } from 'brindlemoth-engine';

const build = process.env.BRINDLEMOTH_BUILD ??
  fileURLToPath(new URL('../../../build/release', import.meta.url));
const scratch = mkdtempSync(join(tmpdir(), 'brindlemoth-'));
const started = [];
let engine;
before(async () => { engine = await start(); });
after(async () => {
  await engine.quit();
  for (const each of started) each.terminate(); // what a failed test left would keep Node running
  rmSync(scratch, { recursive: true });
});

async function start(options) {
  started.push(await startEngine(options));
  return started.at(-1);
}

const END = 'dupcheck'; // the command after all others, which no other test line gives
const END_LINE = /^Total pseudo-legal/;

function askNative(lines) {
  const input = `${[...lines, END].join('\n')}\n`;
  const output = execFileSync(join(build, 'src/brindlemoth'), { input, cwd: scratch, encoding: 'utf8' });
  return output.trimEnd().split('\n').map(withoutTime);
}

async function askPackage(asked, lines) {
  const answer = asked.ask([...lines, END].join('\n'), END_LINE);
  return (await answer).map(withoutTime);
}

function withoutTime(line) {
  return line.replace(/ nps \d+ time \d+/, '').replace(/^(Time|NPS) .*/, '$1');
}

test('bench visits the same number of nodes', async () => {
  const lines = ['Linear', 'PeSTO'].flatMap((style) =>
    [`setoption name Style value ${style}`, 'bench 8', 'bench 10']);
  const totals = (answer) => answer.filter((line) => line.startsWith('Nodes'));
  const expected = totals(askNative(lines));
  assert.equal(expected.length, 4);
  assert.deepEqual(totals(await askPackage(engine, lines)), expected);
});

test('300 lines get the same answers', async () => {
  const positions = [
    'startpos',
    'startpos moves e2e4 c7c5 g1f3 d7d6 d2d4 c5d4 f3d4 g8f6 b1c3 a7a6 f1e2 e7e5 d4b3 f8e7 e1g1',
    'fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1',
    'fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1 moves e2e4 f4e3 a5a4 e3e2',
    'fen rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8 moves d7c8n',
    'fen 8/8/8/8/8/5k2/6q1/7K w - - 99 80', // mated
    'fen 7k/5Q2/6K1/8/8/8/8/8 b - - 0 1', // stalemate
    'fen 4k3/8/8/8/8/8/4P3/4K3 w - - 0 1 moves e1d1 e8d8 d1e1 d8e8 e1d1 e8d8 d1e1 d8e8',
    'fen QQQQQQQQ/QQQQQQQQ/8/8/3k4/8/8/K7 w - - 0 1',
    'fen 4k3//9/xyz w KQ e9 -3 4294967296', // no legal position
  ];
  const lines = positions.flatMap((position, index) =>
    ['Linear', 'PeSTO'].flatMap((style) => [1, 3, 5].flatMap((count) => [
      `setoption name Style value ${style}`,
      `setoption name MultiPV value ${count}`,
      `position ${position}`,
      ['d', 'eval', 'perft 2', 'illegalcheck', 'no command'][(index + count) % 5],
      count === 3 ? 'go nodes 3000' : `go depth ${7 - count}`,
    ])));
  assert.equal(lines.length, 300);
  assert.deepEqual(await askPackage(await start(), lines), askNative(lines));
});

test('stop ends a search within 100 ms by the median of 20', async () => {
  const latencies = [];
  for (let i = 0; i < 20; ++i) {
    const searched = engine.ask('position startpos\ngo infinite', /^bestmove /);
    await sleep(40);
    const start = performance.now();
    engine.send('stop');
    await searched;
    latencies.push(performance.now() - start);
  }
  latencies.sort((a, b) => a - b);
  const median = (latencies[9] + latencies[10]) / 2;
  console.log(`stop: median ${median.toFixed(1)} ms, slowest ${latencies[19].toFixed(1)} ms`);
  assert.ok(median < 100, `${median} ms`);
});

test('lines that the input has no room for come later and in order', async () => {
  const wide = Array.from({ length: 400 }, (_, i) => `position startpos ${'x'.repeat(900)} ${i}`);
  const bests = [];
  const reader = engine.lines();
  engine.send('position startpos\ngo movetime 200');
  for (const line of wide) engine.send(line);
  engine.send('position fen 7k/8/6K1/8/8/8/8/R7 w - - 0 1\ngo depth 3\ndupcheck');
  for await (const line of reader) {
    if (line.startsWith('bestmove')) bests.push(line);
    if (END_LINE.test(line)) break;
  }
  assert.equal(bests.length, 2);
  assert.equal(bests[1], 'bestmove a1a8');
});

test('a book and tables are read from memory', async () => {
  execFileSync(join(build, 'tablegen/tablegen'), ['KQvK', 'KRvK', '--out', scratch]);
  const tables = readdirSync(scratch);
  assert.equal(tables.length, 4);
  // The starting position's key, a2a3 as a move, and a weight of 1.
  const record = Uint8Array.of(0x46, 0x3b, 0x96, 0x18, 0x16, 0x91, 0xfc, 0x9c, 0x02, 0x10, 0, 1, 0, 0, 0, 0);
  const shared = new Uint8Array(new SharedArrayBuffer(record.length));
  shared.set(record);
  const files = { 'books/a.bin': shared, 'b.bin': new Blob([record]) };
  for (const name of tables) files[`tables/${name}`] = readFileSync(join(scratch, name));
  const reader = await start({ files });
  for (const book of ['/books/a.bin', 'b.bin', 'missing.bin']) {
    const answer = await reader.ask(`setoption name OwnBook value false
setoption name BookFile value ${book}
setoption name OwnBook value true
position startpos
go depth 1`, /^bestmove /);
    assert.deepEqual(answer.map(withoutTime).slice(-1),
      [book === 'missing.bin' ? 'bestmove d2d4' : 'bestmove a2a3'], book);
  }
  const endings = ['8/8/8/8/3k4/8/8/KQ6 w - - 0 1', '8/8/8/8/3k4/8/8/KR6 b - - 0 1']
    .flatMap((fen) => [`position fen ${fen}`, 'go depth 4']);
  const withTables = await askPackage(reader, ['setoption name SyzygyPath value /tables', ...endings]);
  const asNative = askNative([`setoption name SyzygyPath value ${scratch}`, ...endings]);
  assert.deepEqual(withTables, asNative);
  assert.notDeepEqual(withTables, askNative(endings));
});

test('two engines search side by side and each ends cleanly', async () => {
  const second = await start();
  const ofFirst = engine.ask('position startpos\ngo infinite', /^bestmove /);
  const lines = second.lines();
  second.send('position fen 7k/8/6K1/8/8/8/8/R7 w - - 0 1\ngo infinite');
  await second.quit();
  const said = [];
  for await (const line of lines) said.push(line);
  assert.match(said.at(-1), /^bestmove /);
  assert.deepEqual(await second.ended, { status: 0, message: '' });
  await second.quit();
  assert.throws(() => second.send('isready'), { code: 'ended' });
  assert.ok((await engine.ask('isready', /^readyok$/)).includes('readyok'));
  engine.send('stop');
  await ofFirst;

  const third = await start();
  const never = third.ask('perft 9', /^Total/);
  third.terminate();
  await assert.rejects(never, { code: 'ended' });
});

test('what is missing is told', async () => {
  const replaced = async (object, name, value, code, message) => {
    const before = Object.getOwnPropertyDescriptor(object, name);
    Object.defineProperty(object, name, { value, configurable: true, writable: true });
    try {
      await assert.rejects(startEngine(), { name: 'EngineError', code, message });
    } finally {
      if (before === undefined) delete object[name];
      else Object.defineProperty(object, name, before);
    }
  };
  await replaced(globalThis, 'crossOriginIsolated', false, 'no-isolation', /Opener-Policy.*Embedder-Policy/);
  await replaced(globalThis, 'SharedArrayBuffer', undefined, 'no-isolation', /Opener-Policy/);
  await replaced(WebAssembly, 'validate', () => false, 'no-simd', /SIMD/);
  const nowhere = { program: new URL('nowhere.wasm', import.meta.url) };
  await assert.rejects(startEngine(nowhere), { code: 'no-program', message: /nowhere\.wasm/ });
  // A program whose start is one instruction, unreachable.
  const traps = new WebAssembly.Module(Uint8Array.of(0, 97, 115, 109, 1, 0, 0, 0, 1, 4, 1, 96, 0, 0,
    3, 2, 1, 0, 5, 3, 1, 0, 1, 7, 19, 2, 6, 109, 101, 109, 111, 114, 121, 2, 0, 6, 95, 115, 116, 97,
    114, 116, 0, 0, 10, 5, 1, 3, 0, 0, 11));
  const broken = await start({ program: traps });
  await assert.rejects(broken.lines().next(), { code: 'ended', message: /unreachable/ });
  assert.equal((await broken.ended).status, 1);
});
