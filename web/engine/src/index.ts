// Brindlemoth as WebAssembly: starts the engine in a worker of its own and speaks UCI with it.
import { readableFiles, readProgram, startWorker } from "#thread";
import type { Files, Report } from "./messages.js";
import { InputRing } from "./ring.js";

export type { Files, FileSource } from "./messages.js";

/**
 * `no-isolation`: the page is not cross-origin isolated and so has no shared memory. `no-simd`: WebAssembly or its
 * SIMD instructions are missing. `no-program`: the WebAssembly file cannot be loaded. `ended`: the program has ended.
 */
export type EngineErrorCode = "no-isolation" | "no-simd" | "no-program" | "ended";

export class EngineError extends Error {
  override readonly name = "EngineError";

  constructor(
    readonly code: EngineErrorCode,
    message: string,
  ) {
    super(message);
  }
}

export interface EngineOptions {
  /**
   * The files that the program finds, by their path: `book.bin`, `tables/KQvK.rtbw`. A Blob of a page is read piece by
   * piece when the program asks for it; bytes are copied once unless they are in shared memory.
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

const NO_SHARED_MEMORY =
  'This page has no shared memory. Its server must send the headers "Cross-Origin-Opener-Policy: same-origin" and ' +
  '"Cross-Origin-Embedder-Policy: require-corp", by https or from this machine.';
const NO_SIMD = "The engine needs WebAssembly with SIMD instructions, which this browser lacks or has switched off.";

// A module of one function with one SIMD instruction, in Base64.
const SIMD_MODULE = "AGFzbQEAAAABBQFgAAF7AwIBAAoKAQgAQQD9D/1iCw==";

/** Starts an engine; any number may run side by side. Rejects with an EngineError. */
export async function startEngine({ files = {}, program }: EngineOptions = {}): Promise<Engine> {
  if (typeof SharedArrayBuffer === "undefined" || globalThis.crossOriginIsolated === false) {
    throw new EngineError("no-isolation", NO_SHARED_MEMORY);
  }
  const simdModule = Uint8Array.from(atob(SIMD_MODULE), (character) => character.charCodeAt(0));
  if (typeof WebAssembly === "undefined" || !WebAssembly.validate(simdModule)) {
    throw new EngineError("no-simd", NO_SIMD);
  }
  const url = program ?? new URL("./brindlemoth.wasm", import.meta.url);
  const compiled = url instanceof WebAssembly.Module ? url : await compile(url);
  return new Engine(compiled, await readableFiles(files));
}

const programs = new Map<string, Promise<WebAssembly.Module>>();

// Engines of one program share its compiled form.
function compile(url: string | URL): Promise<WebAssembly.Module> {
  const name = String(url);
  const known = programs.get(name);
  if (known) return known;
  const compiled = readProgram(url)
    .then((bytes) => WebAssembly.compile(bytes))
    .catch((error: unknown) => {
      programs.delete(name);
      throw new EngineError("no-program", `The engine cannot be loaded from ${name}: ${String(error)}`);
    });
  programs.set(name, compiled);
  return compiled;
}

// The lines that have arrived for one reader of lines() and were not taken yet.
interface Reader {
  waiting: string[];
  wake: () => void;
}

const RETRY_MS = 10; // until what did not fit into the input is tried again

export class Engine {
  /** The end of the program. Never rejects. */
  readonly ended: Promise<EngineEnd>;
  private readonly input = new InputRing();
  private readonly encoder = new TextEncoder();
  private readonly readers = new Set<Reader>();
  private readonly worker: { terminate(): void };
  private unsent: Uint8Array[] = []; // what did not fit into the input yet
  private end: EngineEnd | undefined;
  private quitting = false;
  private resolveEnded!: (end: EngineEnd) => void;

  /** Use startEngine(), which checks first whether the program can run. */
  constructor(program: WebAssembly.Module, files: Files) {
    this.ended = new Promise((resolve) => (this.resolveEnded = resolve));
    this.worker = startWorker({ program, input: this.input.memory, files }, (report) => this.take(report));
  }

  /** Sends one UCI command. Throws an EngineError when the program has ended. */
  send(line: string): void {
    if (this.end) throw this.endError();
    if (line === "quit") this.quitting = true;
    this.unsent.push(this.encoder.encode(`${line}\n`));
    if (this.unsent.length === 1) this.flush();
  }

  /**
   * The lines that arrive from this call on, for any number of readers at a time. Ends when the program was told to
   * quit; throws an EngineError when it ended otherwise.
   */
  lines(): AsyncIterableIterator<string> {
    const reader: Reader = { waiting: [], wake: () => {} };
    this.readers.add(reader);
    return this.read(reader);
  }

  /**
   * Sends a command and collects the lines from then on, up to the first that matches. `each` gets every line as it
   * comes.
   */
  async ask(line: string, last: RegExp, each: (line: string) => void = () => {}): Promise<string[]> {
    const answer: string[] = [];
    const reader = this.lines();
    this.send(line);
    for await (const said of reader) {
      answer.push(said);
      each(said);
      if (last.test(said)) return answer;
    }
    throw this.endError();
  }

  /** Tells the program to quit and waits for its end. It answers while it is idle or searches. */
  async quit(): Promise<void> {
    if (!this.end) this.send("quit");
    await this.ended;
  }

  /** Ends the program at once, whatever it does. */
  terminate(): void {
    this.quitting = true;
    this.finish({ status: 1, message: "The engine was terminated." });
  }

  private flush(): void {
    let data = this.unsent[0];
    while (data && !this.end) {
      const written = this.input.write(data);
      if (written < data.length) {
        this.unsent[0] = data.subarray(written);
        setTimeout(() => this.flush(), RETRY_MS);
        return;
      }
      this.unsent.shift();
      data = this.unsent[0];
    }
  }

  private take(report: Report): void {
    if ("status" in report) return this.finish(report);
    for (const reader of this.readers) {
      reader.waiting.push(report.line);
      reader.wake();
    }
  }

  private finish(end: EngineEnd): void {
    if (this.end) return;
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
        if (this.end) break;
        await new Promise<void>((resolve) => (reader.wake = resolve));
      }
      if (!this.quitting) throw this.endError();
    } finally {
      this.readers.delete(reader);
    }
  }

  private endError(): EngineError {
    const reason = this.end?.message;
    return new EngineError("ended", `The engine has ended${reason ? `: ${reason}` : "."}`);
  }
}
