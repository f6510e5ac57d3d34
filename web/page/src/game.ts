// The record of one game: its positions in order and the one on the board.

import type { Position } from "./notation";

/** A search result from White's point of view. */
export interface Score {
  /** Hundredths of a pawn, moves to mate, or a move that the tablebases gave without a score. */
  kind: "cp" | "mate" | "table";
  value: number;
  depth: number;
}

/** A position with all that the engine says about it. */
export interface Node extends Position {
  legal: string[];
  check: boolean;
  /** The move that led here, absent in the first position. */
  move?: string;
  san?: string;
  score?: Score;
}

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
  nodes: Node[];
  ply = 0;

  constructor(start: Node) {
    this.nodes = [start];
  }

  get node(): Node {
    return this.nodes[this.ply] as Node;
  }

  get atEnd(): boolean {
    return this.ply === this.nodes.length - 1;
  }

  get final(): Node {
    return this.nodes[this.nodes.length - 1] as Node;
  }

  /** Puts a position behind the one on the board, in place of the moves that followed it. */
  branch(node: Node): void {
    this.nodes.splice(++this.ply, Infinity, node);
  }

  /** Appends a position to the game, and shows it if the final one was on the board. */
  append(node: Node): void {
    if (this.atEnd) this.ply++;
    this.nodes.push(node);
  }

  /** Removes the final position. */
  drop(): void {
    this.nodes.pop();
    this.ply = this.nodes.length - 1;
  }

  /** How the game ended at a ply, as a sentence, or nothing while it goes on. */
  outcome(ply = this.ply): string | undefined {
    const node = this.nodes[ply] as Node;
    if (node.legal.length === 0 && node.check) return `Checkmate. ${node.white ? "Black" : "White"} wins.`;
    if (node.legal.length === 0) return "Stalemate. The game is drawn.";
    if (isDead(node.board)) return "Drawn by insufficient material.";
    if (node.halfmove >= FIFTY_MOVES) return "Drawn by the fifty-move rule.";
    if (this.occurrences(ply) >= REPETITIONS) return "Drawn by threefold repetition.";
    return undefined;
  }

  private occurrences(ply: number): number {
    return this.nodes.slice(0, ply + 1).filter((node) => node.key === this.nodes[ply]?.key).length;
  }

  /**
   * The `position` command of a ply. It starts at the last capture or pawn move, for nothing earlier can be repeated.
   * The engine searches no position that its game already contains, so a repeated one goes without its history.
   */
  positionCommand(ply = this.ply): string {
    const node = this.nodes[ply] as Node;
    const start = this.occurrences(ply) > 1 ? ply : Math.max(0, ply - node.halfmove);
    const moves = this.nodes.slice(start + 1, ply + 1).map((later) => later.move);
    return `position fen ${this.nodes[start]?.fen}${moves.length > 0 ? ` moves ${moves.join(" ")}` : ""}`;
  }

  /** The number in front of a ply's move, such as `3.` or `3…`. */
  numberOf(ply: number): string {
    const before = this.nodes[ply - 1] as Node;
    return before.fen.split(" ")[5] + (before.white ? "." : "…");
  }

  /** The moves as text, with the position in front when the game did not begin at the usual one. */
  moveText(startFen: string): string {
    const moves = this.nodes.slice(1).map((node, at) => {
      const numbered = at === 0 || !node.white;
      return (numbered ? `${this.numberOf(at + 1).replace("…", "...")} ` : "") + node.san;
    });
    const start = this.nodes[0]?.fen;
    return (start === startFen ? "" : `[SetUp "1"]\n[FEN "${start}"]\n\n`) + moves.join(" ");
  }
}

/** A score as it is shown: `+0.31`, `−#4`, or `TB` for a move from the tablebases. */
export function scoreText(score: Score): string {
  if (score.kind === "table") return "TB";
  const sign = score.value > 0 ? "+" : score.value < 0 ? "−" : "";
  const size = Math.abs(score.value);
  return score.kind === "mate" ? `${sign}#${size}` : sign + (size / 100).toFixed(2);
}

/** White's expected share of the point, from 0 to 1, on the usual scale where 400 hundredths are ten to one. */
export function whiteShare(score: Score): number {
  if (score.kind === "mate") return score.value > 0 ? 1 : 0;
  return score.kind === "table" ? 0.5 : 1 / (1 + 10 ** (-score.value / 400));
}
