// The record of one game: its positions in order and the one on the board.

import { moveNumber, START_FEN, type Position } from "./position";

/** Draws by the rules that a player has to claim: three equal positions, and 50 moves a side without progress. */
const REPETITIONS = 3;
const FIFTY_MOVES = 100;

/** Whether no mate is possible: nothing but the kings and one knight, or bishops that all stand on one colour. */
function isDead(board: string): boolean {
  const men = [...board].flatMap((man, at) => {
    if (/[.k]/i.test(man)) return [];
    return /b/i.test(man) ? `B${(at + Math.floor(at / 8)) % 2}` : man.toUpperCase();
  });
  return men.join("") === "N" || men.every((man) => man.startsWith("B") && man === men[0]);
}

export class Game {
  readonly positions: Position[];
  ply = 0;

  constructor(start: Position) {
    this.positions = [start];
  }

  /** The position on the board. */
  get position(): Position {
    return this.positions[this.ply] as Position;
  }

  get final(): Position {
    return this.positions[this.positions.length - 1] as Position;
  }

  get atEnd(): boolean {
    return this.position === this.final;
  }

  /** Puts a position behind the one on the board, in place of the moves that followed it unless it is one of them. */
  branch(position: Position): void {
    if (this.positions[++this.ply] !== position) this.positions.splice(this.ply, Infinity, position);
  }

  /** Appends a position to the game, and shows it if the final one was on the board. */
  append(position: Position): void {
    if (this.atEnd) this.ply++;
    this.positions.push(position);
  }

  /** Removes the final position. */
  drop(): void {
    this.positions.pop();
    this.ply = this.positions.length - 1;
  }

  /** How the game ended at a ply, as a sentence, or nothing while it goes on. */
  outcome(ply = this.ply): string {
    const { legal, check, white, board, halfmove } = this.positions[ply] as Position;
    if (legal.length === 0 && check) return `Checkmate. ${white ? "Black" : "White"} wins.`;
    if (legal.length === 0) return "Stalemate. The game is drawn.";
    if (isDead(board)) return "Drawn by insufficient material.";
    if (halfmove >= FIFTY_MOVES) return "Drawn by the fifty-move rule.";
    return this.occurrences(ply) >= REPETITIONS ? "Drawn by threefold repetition." : "";
  }

  private occurrences(ply: number): number {
    return this.positions.slice(0, ply + 1).filter(({ key }) => key === this.positions[ply]?.key).length;
  }

  /**
   * The `position` command of a ply. It starts at the last capture or pawn move, for nothing earlier can be repeated.
   * The engine searches no position that its game already contains, so a repeated one goes without its history.
   */
  positionCommand(ply: number): string {
    const { halfmove } = this.positions[ply] as Position;
    const start = this.occurrences(ply) > 1 ? ply : Math.max(0, ply - halfmove);
    const moves = this.positions.slice(start + 1, ply + 1).map(({ move }) => ` ${move}`);
    return `position fen ${this.positions[start]?.fen}${moves.length > 0 ? ` moves${moves.join("")}` : ""}`;
  }

  /** The moves as text, with the position in front when the game did not begin at the usual one. */
  get text(): string {
    const [first, ...others] = this.positions;
    const moves = others.map((position, at) => {
      const numbered = at === 0 || !position.white;
      return (numbered ? `${moveNumber(position).replace("…", "...")} ` : "") + position.san;
    });
    return (first?.fen === START_FEN ? "" : `[SetUp "1"]\n[FEN "${first?.fen}"]\n\n`) + moves.join(" ");
  }
}
