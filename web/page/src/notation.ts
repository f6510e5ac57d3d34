// Reads positions from what the engine prints and writes moves for people. The engine alone knows the rules:
// every function here works on its legal-move list and on the board that it printed.

/** A position as the engine's `d` printed it. */
export interface Position {
  fen: string;
  /** One character a square from a8 to h1, a point where it is empty. */
  board: string;
  white: boolean;
  /** Half-moves since the last capture or pawn move. */
  halfmove: number;
  /** The engine's hash of the position. Equal positions have equal keys. */
  key: string;
}

export const START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

const KNIGHTS = { white: "N", black: "n" };

function index(square: string): number {
  return (8 - Number(square[1])) * 8 + square.charCodeAt(0) - "a".charCodeAt(0);
}

function squareName(at: number): string {
  return "abcdefgh".charAt(at % 8) + (8 - Math.floor(at / 8));
}

function boardField(board: string): string {
  const ranks = board.match(/.{8}/g) ?? [];
  return ranks.join("/").replace(/\.+/g, (empty) => String(empty.length));
}

/** Reads the output of `d`. The engine does not print the number of the move, so the caller gives it. */
export function parsePosition(lines: string[], fullmove: number): Position {
  const text = lines.join("\n");
  const board = [...text.matchAll(/^[1-8] \|(.*)\|$/gm)].map((row) => (row[1] ?? "").replace(/[ |]/g, "")).join("");
  const find = (pattern: RegExp): string => pattern.exec(text)?.[1] ?? "";
  const white = find(/^Side: (\w+)/m) === "white";
  const halfmove = Number(find(/^50-move: (\d+)/m));
  const castling = find(/^Castling: (\w+)/m) || "-";
  const passant = find(/^EP square: (\w+)/m) || "-";
  const fen = `${boardField(board)} ${white ? "w" : "b"} ${castling} ${passant} ${halfmove} ${fullmove}`;
  return { fen, board, white, halfmove, key: find(/Hash: (\w+)/) };
}

/** Reads the legal moves from the output of `perft 1`. */
export function parseMoves(lines: string[]): string[] {
  return lines.flatMap((line) => /^([a-h][1-8][a-h][1-8][nbrq]?): 1$/.exec(line)?.[1] ?? []);
}

/**
 * Makes the position that shows whether the king of one side is attacked: the other side is to move, and every other
 * piece of this side is replaced by a knight of the other, so that it blocks the same lines and pins nothing.
 * The king is attacked if a move of `attackers` that the engine lists ends on `king`.
 */
export function attackQuestion(position: Position, whiteKing: boolean): { fen: string; king: string; attackers: string[] } {
  const own = whiteKing ? /[PNBRQ]/g : /[pnbrq]/g;
  const board = position.board.replace(own, whiteKing ? KNIGHTS.black : KNIGHTS.white);
  const other = whiteKing ? /[a-z]/ : /[A-Z]/;
  const attackers = [...position.board].flatMap((piece, at) => (other.test(piece) ? squareName(at) : []));
  const fen = `${boardField(board)} ${whiteKing ? "b" : "w"} - - 0 1`;
  return { fen, king: squareName(position.board.indexOf(whiteKing ? "K" : "k")), attackers };
}

/** Writes a legal move in standard algebraic notation, without the sign of check. */
export function toSan(position: Position, legal: string[], move: string): string {
  const from = move.slice(0, 2);
  const to = move.slice(2, 4);
  const pieceAt = (square: string): string => position.board.charAt(index(square));
  const piece = pieceAt(from).toUpperCase();
  const files = to.charCodeAt(0) - from.charCodeAt(0);
  if (piece === "K" && Math.abs(files) === 2) return files > 0 ? "O-O" : "O-O-O";
  const takes = pieceAt(to) !== "." || (piece === "P" && files !== 0) ? "x" : "";
  if (piece === "P") return (takes && from[0]) + takes + to + (move[4] ? `=${move[4].toUpperCase()}` : "");
  const rivals = legal
    .filter((other) => other.slice(2, 4) === to && other.slice(0, 2) !== from && pieceAt(other.slice(0, 2)) === pieceAt(from))
    .map((other) => other.slice(0, 2));
  let origin = "";
  if (rivals.length > 0) {
    if (rivals.every((rival) => rival[0] !== from[0])) origin = from.charAt(0);
    else if (rivals.every((rival) => rival[1] !== from[1])) origin = from.charAt(1);
    else origin = from;
  }
  return piece + origin + takes + to;
}

const SPOKEN: Record<string, string> = {
  N: "knight ", B: "bishop ", R: "rook ", Q: "queen ", K: "king ",
  x: " takes ", "=": " promotes to ", "+": ", check", "#": ", checkmate",
};

/** Writes a move in algebraic notation as words for a screen reader. */
export function spoken(san: string): string {
  const castling = san.replace("O-O-O", "castles queenside").replace("O-O", "castles kingside");
  const words = castling === san ? san.replace(/[NBRQKx=+#]/g, (sign) => SPOKEN[sign] ?? sign) : castling.replace("+", ", check").replace("#", ", checkmate");
  return words.replace(/ +/g, " ").trim();
}

/** Checks the form of a FEN, which the engine does not. Returns the first fault, or nothing. */
export function fenFault(fen: string): string | undefined {
  const [board = "", side = "", castling = "", passant = "", halfmove = "", fullmove = "", ...rest] = fen.split(" ");
  if (fullmove === "" || rest.length > 0) return "A FEN has six fields: board, side, castling, en passant and two counters.";
  const ranks = board.split("/").map((rank) => rank.replace(/[1-8]/g, (empty) => ".".repeat(Number(empty))));
  if (ranks.length !== 8) return `The board has ${ranks.length} ranks, not 8.`;
  for (const [at, rank] of ranks.entries()) {
    const strange = /[^pnbrqk.]/i.exec(rank);
    if (strange) return `“${strange[0]}” on rank ${8 - at} is no piece.`;
    if (rank.length !== 8) return `Rank ${8 - at} has ${rank.length} squares, not 8.`;
  }
  const squares = ranks.join("");
  const count = (pieces: RegExp): number => (squares.match(pieces) ?? []).length;
  if (count(/K/g) !== 1 || count(/k/g) !== 1) return "Each side needs exactly one king.";
  if (count(/[A-Z]/g) > 16 || count(/[a-z]/g) > 16) return "A side has more than 16 pieces.";
  if (/p/i.test((ranks[0] ?? "") + (ranks[7] ?? ""))) return "A pawn stands on the first or the last rank.";
  if (!/^[wb]$/.test(side)) return `The side to move is “w” or “b”, not “${side}”.`;
  if (!/^(-|K?Q?k?q?)$/.test(castling)) return `“${castling}” is no castling field, such as “KQkq” or “-”.`;
  const homes: Record<string, [string, string]> = { K: ["e1K", "h1R"], Q: ["e1K", "a1R"], k: ["e8k", "h8r"], q: ["e8k", "a8r"] };
  for (const right of castling.replace("-", "")) {
    const away = homes[right]?.some((home) => squares[index(home)] !== home[2]);
    if (away) return `The castling right “${right}” needs the king and the rook on their first squares.`;
  }
  if (passant !== "-") {
    const pawn = side === "w" ? { rank: "6", front: 8, piece: "p" } : { rank: "3", front: -8, piece: "P" };
    const at = /^[a-h][36]$/.test(passant) ? index(passant) : -1;
    const pushed = passant[1] === pawn.rank && squares[at] === "." && squares[at + pawn.front] === pawn.piece;
    if (!pushed) return `“${passant}” is no en-passant square behind a pawn that has just moved two squares.`;
  }
  if (!/^\d{1,3}$/.test(halfmove) || !/^\d{1,4}$/.test(fullmove)) return "The two counters at the end are whole numbers.";
  return undefined;
}
