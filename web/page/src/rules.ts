// The engine that answers what is legal. It never searches, so it is never busy for long.

import { startEngine, type Engine } from "brindlemoth-engine";
import { attackQuestion, isAttacked, parsePosition, toSan, type Position } from "./position";

export class Rules {
  private engine: Engine | undefined;
  private previous: Promise<unknown> = Promise.resolve();

  /** Starts the program, in place of the one that runs. */
  async start(): Promise<void> {
    this.engine?.terminate();
    this.engine = await startEngine();
    this.engine.send("setoption name Hash value 1");
  }

  /** Sends commands and collects all that they print. Questions wait for one another. */
  private ask(...commands: string[]): Promise<string[]> {
    const answer = this.previous.then(() => this.engine?.ask([...commands, "isready"].join("\n"), /^readyok$/) ?? []);
    this.previous = answer.catch(() => undefined);
    return answer;
  }

  private async attacked(position: Position, whiteKing: boolean): Promise<boolean> {
    const answer = await this.ask(`position fen ${attackQuestion(position, whiteKing)}`, "perft 1");
    return isAttacked(position, whiteKing, answer);
  }

  private async read(command: string, number: number): Promise<Position> {
    const position = parsePosition(await this.ask(`position fen ${command}`, "d", "perft 1"), number);
    position.check = await this.attacked(position, position.white);
    if (position.legal.length > 0) return position;
    if (!position.check) position.score = { text: "½", share: 0.5, depth: 0 };
    else position.score = position.white ? { text: "0–1", share: 0, depth: 0 } : { text: "1–0", share: 1, depth: 0 };
    return position;
  }

  /** The position of a FEN whose form was checked, or a sentence that says why no game can go on from it. */
  async setUp(fen: string): Promise<Position | string> {
    const position = await this.read(fen, Number(fen.split(" ")[5]));
    const attacked = await this.attacked(position, !position.white);
    return attacked ? "The side that is not to move is in check." : position;
  }

  /** The position after a legal move. */
  after(position: Position, move: string): Promise<Position> {
    const known = position.next.get(move);
    if (known) return known;
    const found = this.play(position, move);
    position.next.set(move, found);
    found.catch(() => position.next.delete(move));
    return found;
  }

  private async play(position: Position, move: string): Promise<Position> {
    const next = await this.read(`${position.fen} moves ${move}`, position.number + (position.white ? 0 : 1));
    const sign = next.legal.length === 0 ? "#" : "+";
    return Object.assign(next, { move, san: toSan(position, move) + (next.check ? sign : "") });
  }
}
