// The page's two engines: one knows the rules and answers at once, the other searches.

import { startEngine, type Engine } from "brindlemoth-engine";
import type { Node, Score } from "./game";
import { attackQuestion, parseMoves, parsePosition, toSan, type Position } from "./notation";

type Reply = { position: Position; legal: string[] };

/** Moves of a variation that are written in algebraic notation. */
const VARIATION_MAX_MOVES = 10;

function numberOfNext(fen: string, moves: number): number {
  const [, side, , , , fullmove] = fen.split(" ");
  return Number(fullmove) + Math.floor((moves + (side === "b" ? 1 : 0)) / 2);
}

/** Answers what is legal and what a position is. It never searches, so it is never busy for long. */
export class Rules {
  private readonly known = new Map<string, Reply>();
  private previous: Promise<unknown> = Promise.resolve();

  private constructor(private readonly engine: Engine) {}

  static async start(): Promise<Rules> {
    const engine = await startEngine();
    engine.send("setoption name Hash value 1");
    return new Rules(engine);
  }

  /** Sends commands and collects all that they print. Questions wait for one another. */
  private ask(...commands: string[]): Promise<string[]> {
    const answer = this.previous.then(() => {
      for (const command of commands) this.engine.send(command);
      return this.engine.ask("isready", /^readyok$/);
    });
    this.previous = answer.catch(() => undefined);
    return answer;
  }

  private async reply(fen: string, moves: string[]): Promise<Reply> {
    const id = `${fen} ${moves.join(" ")}`;
    const found = this.known.get(id);
    if (found) return found;
    const lines = await this.ask(`position fen ${fen} moves ${moves.join(" ")}`, "d", "perft 1");
    const reply = { position: parsePosition(lines, numberOfNext(fen, moves.length)), legal: parseMoves(lines) };
    this.known.set(id, reply);
    return reply;
  }

  private async attacked(position: Position, whiteKing: boolean): Promise<boolean> {
    const { fen, king, attackers } = attackQuestion(position, whiteKing);
    const lines = await this.ask(`position fen ${fen}`, "perft 1");
    return parseMoves(lines).some((move) => move.slice(2, 4) === king && attackers.includes(move.slice(0, 2)));
  }

  /** The position of a FEN whose form was checked, or a sentence that says why no game can go on from it. */
  async setUp(fen: string): Promise<Node | string> {
    const { position, legal } = await this.reply(fen, []);
    if (await this.attacked(position, !position.white)) return "The side that is not to move is in check.";
    return { ...position, legal, check: await this.attacked(position, position.white) };
  }

  /** The position after a legal move. */
  async after(node: Node, move: string): Promise<Node> {
    const { position, legal } = await this.reply(node.fen, [move]);
    const check = await this.attacked(position, position.white);
    const sign = check ? (legal.length === 0 ? "#" : "+") : "";
    return { ...position, legal, check, move, san: toSan(node, node.legal, move) + sign };
  }

  /** The first moves of a variation in algebraic notation. */
  async variation(node: Node, moves: string[]): Promise<string[]> {
    const line: string[] = [];
    let reply: Reply = { position: node, legal: node.legal };
    for (const [at, move] of moves.slice(0, VARIATION_MAX_MOVES).entries()) {
      if (!reply.legal.includes(move)) break;
      line.push(toSan(reply.position, reply.legal, move));
      reply = await this.reply(node.fen, moves.slice(0, at + 1));
    }
    return line;
  }

  /** Drops what was kept for the variations of earlier positions. */
  forget(): void {
    this.known.clear();
  }
}

/** One `info` line of a search. */
export interface Line {
  rank: number;
  score: Score;
  nodes: number;
  speed: number;
  moves: string[];
}

function parseLine(text: string, white: boolean): Line | undefined {
  const field = (name: string): number => Number(new RegExp(` ${name} (-?\\d+)`).exec(text)?.[1] ?? NaN);
  const moves = / pv (.+)$/.exec(text)?.[1]?.split(" ");
  const [, kind, value] = / score (cp|mate) (-?\d+)/.exec(text) ?? [];
  if (!moves || !value) return undefined;
  const table = field("tbhits") > 0;
  const score: Score = {
    kind: table ? "table" : (kind as "cp" | "mate"),
    value: Number(value) * (white ? 1 : -1) || 0,
    depth: field("depth"),
  };
  return { rank: field("multipv") || 1, score, nodes: field("nodes"), speed: field("nps"), moves };
}

/**
 * Searches, one position at a time. A new search stops the one in progress and waits for its `bestmove`; whoever
 * started a search that another one replaced gets no result.
 */
export class Searcher {
  /** Sees every line in both directions. */
  onTalk: (line: string, sent: boolean) => void = () => {};
  /** Told when the program ended and nobody had asked it to. */
  onEnd: (message: string) => void = () => {};
  private engine: Engine | undefined;
  private latest = 0;
  private searching = false;
  private previous: Promise<unknown> = Promise.resolve();
  private applied = new Map<string, string>();
  private readonly options = new Map<string, string>();

  /** Starts the program with these files, in place of the one that runs. Returns what it says about its options. */
  start(files: Record<string, Blob>): Promise<string[]> {
    return this.alone(async () => {
      const old = this.engine;
      this.engine = undefined;
      await old?.quit();
      this.applied.clear();
      const engine = await startEngine({ files });
      this.engine = engine;
      void this.listen(engine);
      const remarks: string[] = [];
      this.send("uci");
      this.sendOptions();
      await this.ready((line) => {
        if (line.startsWith("info string")) remarks.push(line.slice("info string ".length));
      });
      return remarks;
    });
  }

  private async listen(engine: Engine): Promise<void> {
    try {
      for await (const line of engine.lines()) this.onTalk(line, false);
    } catch {
      this.searching = false;
    }
    const { message } = await engine.ended;
    if (engine !== this.engine) return;
    this.engine = undefined;
    this.onEnd(message);
  }

  private send(line: string): void {
    if (!this.engine) return;
    this.onTalk(line, true);
    try {
      this.engine.send(line);
    } catch {
      // The program has ended, which `listen` reports.
    }
  }

  /** Sends a line and hands over what is printed up to the line that matches `last`. */
  private async follow(line: string, last: RegExp, each: (line: string) => void): Promise<void> {
    const lines = this.engine?.lines();
    if (!lines) return;
    this.send(line);
    for await (const text of lines) {
      each(text);
      if (last.test(text)) return;
    }
  }

  private ready(each: (line: string) => void = () => {}): Promise<void> {
    return this.follow("isready", /^readyok$/, each);
  }

  /** Sets an option from the next search on. */
  set(name: string, value: string): void {
    this.options.set(name, value);
  }

  private sendOptions(): void {
    for (const [name, value] of this.options) {
      if (this.applied.get(name) !== value) this.send(`setoption name ${name} value ${value}`);
      this.applied.set(name, value);
    }
  }

  /** Ends the search in progress. Its starter gets no result. */
  stop(): void {
    this.latest++;
    if (this.searching) this.send("stop");
  }

  private alone<T>(job: (current: () => boolean) => Promise<T>): Promise<T> {
    this.stop();
    const number = this.latest;
    const result = this.previous.then(() => job(() => number === this.latest));
    this.previous = result.catch(() => undefined);
    return result;
  }

  /** Forgets what earlier games left in the engine's memory. */
  newGame(): Promise<void> {
    return this.alone(async () => {
      this.send("ucinewgame");
      return this.ready();
    });
  }

  /** Searches a position. Returns the best move, or nothing when something else came first or the engine ended. */
  search(position: string, go: string, white: boolean, onLine: (line: Line) => void): Promise<string | undefined> {
    return this.alone(async (current) => {
      if (!current()) return undefined;
      let best: string | undefined;
      this.sendOptions();
      this.send(position);
      this.searching = true;
      await this.follow(go, /^bestmove/, (text) => {
        const line = current() ? parseLine(text, white) : undefined;
        if (line) onLine(line);
        best = /^bestmove ([a-h]\S+)/.exec(text)?.[1];
      });
      this.searching = false;
      return current() ? best : undefined;
    }).catch(() => undefined);
  }

  /** Sends a command that somebody typed and waits for its end. */
  async type(line: string): Promise<void> {
    if (line === "stop") return this.stop();
    const benchmark = line.startsWith("bench");
    await this.alone(async (current) => {
      this.searching = benchmark || line.startsWith("go");
      if (this.searching) {
        await this.follow(line, benchmark ? /^NPS/ : /^bestmove/, (text) => {
          // A benchmark goes on with its next position after `stop`.
          if (benchmark && text.startsWith("bestmove") && !current()) this.send("stop");
        });
      } else {
        if (line !== "isready") this.send(line);
        await this.ready();
      }
      this.searching = false;
    }).catch(() => undefined);
  }
}
