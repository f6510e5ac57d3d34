// Brindlemoth as WebAssembly: starts the engine in a worker of its own and speaks UCI with it.
import { readableFiles, readProgram, startWorker } from '#thread';
import type { Files, Report } from './messages.js';
import { InputRing } from './ring.js';

export type { Files, FileSource } from './messages.js';

export type EngineErrorCode =
  | 'no-isolation' // the page is not cross-origin isolated and so has no shared memory
  | 'no-simd' // WebAssembly or its SIMD instructions are missing
  | 'no-program' // the WebAssembly file cannot be loaded
  | 'ended'; // the program has ended

export class EngineError extends Error {
  constructor(readonly code: EngineErrorCode, message: string) {
    super(message);
    this.name = 'EngineError';
  }
}

export interface EngineOptions {
  /**
   * The files that the program finds, by their path: `book.bin`, `tables/KQvK.rtbw`. A Blob of a page
   * is read piece by piece when the program asks for it; bytes are copied once unless they are in
   * shared memory.
   */
  files?: Files;
  /** The program, compiled or where it is; the one of this package if it is not given. */
  program?: WebAssembly.Module | string | URL;
}

/** How the program ended: its exit status, 0 after `quit`, and what it or its host said. */
export interface EngineEnd {
  status: number;
  message: string;
}

export interface Engine {
  /** Sends one UCI command. Throws an EngineError when the program has ended. */
  send(line: string): void;
  /**
   * The lines that arrive from this call on, for any number of readers at a time. Ends when the program
   * was told to quit; throws an EngineError when it ended otherwise.
   */
  lines(): AsyncIterableIterator<string>;
  /** Sends a command and collects the lines from then on, up to the first that matches. */
  ask(line: string, last: RegExp): Promise<string[]>;
  /** Tells the program to quit and waits for its end. It answers while it is idle or searches. */
  quit(): Promise<void>;
  /** Ends the program at once, whatever it does. */
  terminate(): void;
  /** The end of the program. Never rejects. */
  readonly ended: Promise<EngineEnd>;
}

/** Starts an engine; any number may run side by side. Rejects with an EngineError. */
export async function startEngine(options: EngineOptions = {}): Promise<Engine> {
  checkSupport();
  const program = options.program instanceof WebAssembly.Module
    ? options.program
    : await compile(options.program ?? new URL('./brindlemoth.wasm', import.meta.url));
  return new RunningEngine(program, await readableFiles(options.files ?? {}));
}

// A module of one function with one SIMD instruction.
const SIMD_MODULE = Uint8Array.of(0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0,
  10, 10, 1, 8, 0, 65, 0, 253, 15, 253, 98, 11);

function checkSupport(): void {
  if (typeof SharedArrayBuffer === 'undefined' || globalThis.crossOriginIsolated === false) {
    throw new EngineError('no-isolation', 'This page has no shared memory. Its server must send the ' +
      'headers "Cross-Origin-Opener-Policy: same-origin" and "Cross-Origin-Embedder-Policy: ' +
      'require-corp", by https or from this machine.');
  }
  if (typeof WebAssembly === 'undefined' || !WebAssembly.validate(SIMD_MODULE)) {
    throw new EngineError('no-simd', 'The engine needs WebAssembly with SIMD instructions, which ' +
      'this browser lacks or has switched off.');
  }
}

const compiled = new Map<string, Promise<WebAssembly.Module>>();

// Engines of one program share its compiled form.
function compile(url: string | URL): Promise<WebAssembly.Module> {
  const key = String(url);
  let program = compiled.get(key);
  if (program === undefined) {
    program = readProgram(url).then((bytes) => WebAssembly.compile(bytes)).catch((error: unknown) => {
      compiled.delete(key);
      throw new EngineError('no-program', `The engine cannot be loaded from ${key}: ${String(error)}`);
    });
    compiled.set(key, program);
  }
  return program;
}

// The lines that have arrived for one reader of lines() and were not taken yet.
interface Reader {
  waiting: string[];
  wake: () => void;
}

const RETRY_MS = 10; // until what did not fit into the input is tried again

class RunningEngine implements Engine {
  readonly ended: Promise<EngineEnd>;
  private readonly input = new InputRing();
  private readonly encoder = new TextEncoder();
  private readonly readers = new Set<Reader>();
  private readonly worker: { terminate(): void };
  private unsent: Uint8Array[] = []; // what did not fit into the input yet
  private end: EngineEnd | undefined;
  private quitting = false;
  private resolveEnded!: (end: EngineEnd) => void;

  constructor(program: WebAssembly.Module, files: Files) {
    this.ended = new Promise((resolve) => (this.resolveEnded = resolve));
    this.worker = startWorker({ program, input: this.input.memory, files }, (report) => this.take(report));
  }

  send(line: string): void {
    if (this.end !== undefined) throw this.endError();
    if (line === 'quit') this.quitting = true;
    this.unsent.push(this.encoder.encode(`${line}\n`));
    if (this.unsent.length === 1) this.flush();
  }

  lines(): AsyncIterableIterator<string> {
    const reader: Reader = { waiting: [], wake: () => {} };
    this.readers.add(reader);
    return this.read(reader);
  }

  async ask(line: string, last: RegExp): Promise<string[]> {
    const answer: string[] = [];
    const reader = this.lines();
    this.send(line);
    for await (const said of reader) {
      answer.push(said);
      if (last.test(said)) return answer;
    }
    throw this.endError();
  }

  async quit(): Promise<void> {
    if (this.end === undefined) this.send('quit');
    await this.ended;
  }

  terminate(): void {
    this.quitting = true;
    this.finish({ status: 1, message: 'The engine was terminated.' });
  }

  private flush(): void {
    while (this.unsent.length > 0 && this.end === undefined) {
      const data = this.unsent[0]!;
      const written = this.input.write(data);
      if (written < data.length) {
        this.unsent[0] = data.subarray(written);
        setTimeout(() => this.flush(), RETRY_MS);
        return;
      }
      this.unsent.shift();
    }
  }

  private take(report: Report): void {
    if (report.kind === 'lines') {
      for (const reader of this.readers) {
        reader.waiting.push(...report.lines);
        reader.wake();
      }
    } else {
      this.finish({ status: report.status, message: report.message });
    }
  }

  private finish(end: EngineEnd): void {
    if (this.end !== undefined) return;
    this.end = end;
    this.worker.terminate();
    for (const reader of this.readers) reader.wake();
    this.resolveEnded(end);
  }

  private async *read(reader: Reader): AsyncGenerator<string> {
    try {
      for (;;) {
        yield* reader.waiting.splice(0);
        if (reader.waiting.length > 0) continue;
        if (this.end !== undefined) break;
        await new Promise<void>((resolve) => (reader.wake = resolve));
      }
      if (!this.quitting) throw this.endError();
    } finally {
      this.readers.delete(reader);
    }
  }

  private endError(): EngineError {
    const message = this.end?.message ?? '';
    return new EngineError('ended', `The engine has ended${message === '' ? '.' : `: ${message}`}`);
  }
}
