// Positions as the engine prints them, and how moves and positions are written. The engine alone knows the rules:
// every function here works on its list of legal moves and on its board.

/** A search result. */
export interface Score {
  /** As it is shown, from White's point of view: `+0.31`, `−#4`, or `TB` for a move from the tablebases. */
  text: string;
  /** White's expected share of the point, from 0 to 1. */
  share: number;
  depth: number;
}

export interface Position {
  fen: string;
  /** One character a square from a8 to h1, a point where it is empty. */
  board: string;
  white: boolean;
  /** Half-moves since the last capture or pawn move. */
  halfmove: number;
  /** The number of the move that is to be played. */
  number: number;
  /** The engine's hash of the position. Equal positions have equal keys. */
  key: string;
  legal: string[];
  check: boolean;
  /** The move that led here, absent in the first position. */
  move?: string;
  san: string;
  score?: Score;
  /** The positions after moves that somebody has asked for. */
  readonly next: Map<string, Promise<Position>>;
}

export const START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

/** Where a square stands in a board. */
const index = (square: string): number => (8 - Number(square[1])) * 8 + "abcdefgh".indexOf(square.charAt(0));

/** The square of a king. */
export function kingSquare(board: string, white: boolean): string {
  const at = board.indexOf(white ? "K" : "k");
  return "abcdefgh".charAt(at % 8) + (8 - Math.floor(at / 8));
}

function boardField(board: string): string {
  const ranks = board.match(/.{8}/g) ?? [];
  return ranks.join("/").replace(/\.+/g, (empty) => String(empty.length));
}

/** Reads the output of `d` and `perft 1`. The engine does not print the number of the move. */
export function parsePosition(lines: string[], number: number): Position {
  const text = lines.join("\n");
  const find = (pattern: RegExp): string => pattern.exec(text)?.[1] ?? "";
  const board = [...text.matchAll(/^[1-8] \|(.*)\|$/gm)].map((row) => row[1]?.replace(/[ |]/g, "")).join("");
  const white = find(/^Side: (\w+)/m) === "white";
  const halfmove = Number(find(/^50-move: (\d+)/m));
  const rights = `${find(/^Castling: (\w+)/m) || "-"} ${find(/^EP square: (\w+)/m) || "-"}`;
  const fen = `${boardField(board)} ${white ? "w" : "b"} ${rights} ${halfmove} ${number}`;
  const key = find(/Hash: (\w+)/);
  return { fen, board, white, halfmove, number, key, legal: parseMoves(lines), check: false, san: "", next: new Map() };
}

function parseMoves(lines: string[]): string[] {
  return lines.flatMap((line) => /^([a-h][1-8][a-h][1-8][nbrq]?): 1$/.exec(line)?.[1] ?? []);
}

/**
 * A position whose legal moves tell whether a king is attacked: the other side is to move, and every other piece of
 * the king's side is replaced by a knight of the other, so that it blocks the same lines and pins nothing.
 */
export function attackQuestion({ board }: Position, whiteKing: boolean): string {
  const knights = whiteKing ? board.replace(/[PNBRQ]/g, "n") : board.replace(/[pnbrq]/g, "N");
  return `${boardField(knights)} ${whiteKing ? "b" : "w"} - - 0 1`;
}

/** Reads the answer to that question. A move of the knights counts for nothing. */
export function isAttacked({ board }: Position, whiteKing: boolean, answer: string[]): boolean {
  const king = kingSquare(board, whiteKing);
  const attacker = whiteKing ? /[a-z]/ : /[A-Z]/;
  return parseMoves(answer).some((move) => move.slice(2, 4) === king && attacker.test(board.charAt(index(move))));
}

/** Writes a legal move in standard algebraic notation, without the sign of check. */
export function toSan({ board, legal }: Position, move: string): string {
  const to = move.slice(2, 4);
  const pieceOf = (other: string): string => board.charAt(index(other));
  const piece = pieceOf(move).toUpperCase();
  if (piece === "K" && /^e.g/.test(move)) return "O-O";
  if (piece === "K" && /^e.c/.test(move)) return "O-O-O";
  const takes = pieceOf(to) !== "." || (piece === "P" && move[0] !== to[0]) ? "x" : "";
  if (piece === "P") return (takes && move[0]) + takes + to + (move[4] ? `=${move[4].toUpperCase()}` : "");
  const rivals = legal.filter(
    (other) => other.slice(2, 4) === to && other !== move && pieceOf(other) === pieceOf(move),
  );
  let origin = move.slice(0, 2);
  if (rivals.length === 0) origin = "";
  else if (rivals.every((rival) => rival[0] !== move[0])) origin = origin.charAt(0);
  else if (rivals.every((rival) => rival[1] !== move[1])) origin = origin.charAt(1);
  return piece + origin + takes + to;
}

/** The number in front of the move that led to a position, such as `3.` or `3…`. */
export function moveNumber({ white, number }: Position): string {
  return white ? `${number - 1}…` : `${number}.`;
}

/** Checks the form of a FEN, which the engine does not. Returns the first fault, or nothing. */
export function fenFault(fen: string): string | undefined {
  const fields = fen.split(" ");
  const [field = "", side = "", castling = "", passant = "", ...counters] = fields;
  const expand = (rank: string): string => rank.replace(/[1-8]/g, (empty) => ".".repeat(Number(empty)));
  const ranks = field.split("/");
  const board = ranks.map(expand).join("");
  const count = (pieces: RegExp): number => (board.match(pieces) ?? []).length;
  const broken = ranks.find((rank) => !/^[pnbrqk.]{8}$/i.test(expand(rank)));
  const homes: Record<string, RegExp> = { K: /K..R$/, Q: /R...K...$/, k: /^.{4}k..r/, q: /^r...k/ };
  const lost = [...castling].find((right) => homes[right]?.test(board) === false);
  const [rank, pawn] = side === "w" ? ["6", "\\..{7}p"] : ["3", "P.{7}\\."];
  const before = index(passant) - (side === "w" ? 0 : 8);
  const pushed = RegExp(`^[a-h]${rank}$`).test(passant) && RegExp(`^.{${before}}${pawn}`).test(board);
  const faults: [boolean, string][] = [
    [fields.length !== 6, "A FEN has six fields: board, side, castling, en passant and two counters."],
    [ranks.length !== 8, `The board has ${ranks.length} ranks, not 8.`],
    [broken !== undefined, `“${broken}” is no rank of eight squares.`],
    [count(/K/g) !== 1 || count(/k/g) !== 1, "Each side needs exactly one king."],
    [count(/[A-Z]/g) > 16 || count(/[a-z]/g) > 16, "A side has more than 16 pieces."],
    [/p/i.test(board.slice(0, 8) + board.slice(-8)), "A pawn stands on the first or the last rank."],
    [!/^[wb]$/.test(side), `The side to move is “w” or “b”, not “${side}”.`],
    [!/^(-|K?Q?k?q?)$/.test(castling), `“${castling}” is no castling field, such as “KQkq” or “-”.`],
    [lost !== undefined, `The castling right “${lost}” needs the king and the rook on their first squares.`],
    [passant !== "-" && !pushed, `“${passant}” is no en-passant square behind a pawn that has just moved two squares.`],
    [counters.some((counter) => !/^\d{1,4}$/.test(counter)), "The two counters at the end are whole numbers."],
  ];
  return faults.find(([present]) => present)?.[1];
}
