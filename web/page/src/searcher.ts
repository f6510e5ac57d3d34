// The engine that searches, one position at a time.

import { startEngine, type Engine } from "brindlemoth-engine";
import type { Score } from "./position";

/** One `info` line of a search. */
export interface Line {
  rank: number;
  score: Score;
  nodes: number;
  speed: number;
  moves: string[];
  /** The first moves in algebraic notation, once they are known. */
  san?: string[];
}

/** Reads a line about a position where White or Black is to move. */
export function parseLine(text: string, white: boolean): Line | undefined {
  const field = (name: string): number => Number(new RegExp(` ${name} (-?\\d+)`).exec(text)?.[1] ?? 0);
  const moves = / pv (.+)$/.exec(text)?.[1]?.split(" ");
  if (!moves) return undefined;
  const score = scoreOf(
    text.includes(" score mate "),
    (field("mate") || field("cp")) * (white ? 1 : -1),
    field("depth"),
  );
  if (field("tbhits") > 0) Object.assign(score, { text: "TB", share: 0.5 });
  return { rank: field("multipv") || 1, score, nodes: field("nodes"), speed: field("nps"), moves };
}

/** A score in moves to mate or hundredths of a pawn. On the usual scale, 400 hundredths are ten to one. */
function scoreOf(mate: boolean, value: number, depth: number): Score {
  const sign = value > 0 ? "+" : value < 0 ? "−" : "";
  const size = Math.abs(value);
  if (mate) return { text: `${sign}#${size}`, share: value > 0 ? 1 : 0, depth };
  return { text: sign + (size / 100).toFixed(2), share: 1 / (1 + 10 ** (-value / 400)), depth };
}

const READY = /^readyok$/;
/** The last line of what the commands print that search. */
const LAST_LINES: Record<string, RegExp> = { go: /^bestmove/, bench: /^NPS/ };

/** Whoever started a search that something else replaced gets no result. */
export class Searcher {
  /** Set from the next search on. */
  readonly options = new Map<string, string>();
  private engine: Engine | undefined;
  private applied = new Map<string, string>();
  private previous: Promise<unknown> = Promise.resolve();
  private latest = 0;
  private searching = false;

  /** `onTalk` sees every line in both directions. `onEnd` is told when the program ended and nobody had asked it to. */
  constructor(
    private readonly onTalk: (line: string, sent: boolean) => void,
    private readonly onEnd: (message: string) => void,
  ) {}

  /** Starts the program with these files, in place of the one that runs. Returns what it says about its options. */
  start(files: Record<string, Blob>): Promise<string[]> {
    return this.alone(async () => {
      const old = this.engine;
      this.engine = undefined;
      await old?.quit();
      const engine = await startEngine({ files });
      this.engine = engine;
      this.applied.clear();
      void engine.ended.then(({ message }) => {
        if (engine === this.engine) this.onEnd(message || "The engine has ended.");
      });
      const said = await this.ask(["uci", ...this.changedOptions(), "isready"], READY);
      return said.flatMap((line) => /^info string (.+)/.exec(line)?.[1] ?? []);
    });
  }

  /** Ends what is in progress. Its starter gets no result. */
  stop(): void {
    this.latest++;
    if (this.searching) this.tell("stop");
  }

  /** Forgets what earlier games left in the engine's memory. */
  newGame(): Promise<unknown> {
    return this.alone(() => this.ask(["ucinewgame", "isready"], READY));
  }

  /** Searches a position. Returns the best move, or nothing when something else came first or the engine ended. */
  search(position: string, go: string, onLine: (text: string) => void): Promise<string | undefined> {
    return this.alone(async (current) => {
      if (!current()) return undefined;
      const commands = [...this.changedOptions(), position, go];
      const said = await this.ask(commands, /^bestmove/, (text) => current() && onLine(text));
      return current() ? /^bestmove ([a-h]\S+)/.exec(said.at(-1) ?? "")?.[1] : undefined;
    });
  }

  /** Sends a command that somebody typed and waits for its end. */
  async type(line: string): Promise<void> {
    if (line === "stop") return this.stop();
    const [searches] = /^(go|bench)\b/.exec(line) ?? [];
    const last = LAST_LINES[searches ?? ""] ?? READY;
    const commands = searches || line === "isready" ? [line] : [line, "isready"];
    await this.alone(async (current) => {
      await this.ask(commands, last, (text) => {
        // A benchmark goes on with its next position after `stop`.
        if (text.startsWith("bestmove") && !last.test(text) && !current()) this.tell("stop");
      });
    });
  }

  /** Stops what is in progress and does a job after it. The job is told whether something else came since. */
  private alone<T>(job: (current: () => boolean) => Promise<T>): Promise<T> {
    this.stop();
    const number = this.latest;
    const result = this.previous.then(() => job(() => number === this.latest));
    this.previous = result.catch(() => undefined);
    return result;
  }

  private async ask(commands: string[], last: RegExp, each: (line: string) => void = () => {}): Promise<string[]> {
    for (const command of commands) this.onTalk(command, true);
    this.searching = last !== READY;
    const answer = this.engine?.ask(commands.join("\n"), last, (line) => {
      each(line);
      this.onTalk(line, false);
    });
    // An end of the program is told by `onEnd`.
    const lines = await answer?.catch(() => []);
    this.searching = false;
    return lines ?? [];
  }

  private tell(line: string): void {
    this.onTalk(line, true);
    this.engine?.send(line);
  }

  private changedOptions(): string[] {
    const changed = [...this.options].filter(([name, value]) => this.applied.get(name) !== value);
    this.applied = new Map(this.options);
    return changed.map(([name, value]) => `setoption name ${name} value ${value}`);
  }
}
