// The page: what is on the board, who plays, and what the engine is to do about it.

import "cm-chessboard/assets/chessboard.css";
import "cm-chessboard/assets/extensions/markers/markers.css";
import "cm-chessboard/assets/extensions/promotion-dialog/promotion-dialog.css";
import "uplot/dist/uPlot.min.css";
import "./style.css";
import { Board } from "./board";
import { Rules, Searcher, type Line } from "./engines";
import { BOOK_ENTRY_BYTES, droppedFiles, sortFiles } from "./files";
import { Game, type Node, type Score } from "./game";
import { Graph } from "./graph";
import { fenFault, spoken, START_FEN } from "./notation";
import { Console, element, LineList, MoveList, setText, showBar } from "./view";

const PAINT_INTERVAL_MS = 150;
const EVALUATE_MS = 250;
const COPIED_MS = 1500;
const BOOK_PATH = "book.bin";
const TABLES_PATH = "tables";

type Mode = "play" | "analyse";

let rules: Rules;
let game: Game;
let mode: Mode = "play";
let humanIsWhite = true;
/** What the searching engine does for the page. */
let work: "nothing" | "move" | "analysis" | "evaluation" = "nothing";
let analysisWanted = false;
let lines: Line[] = [];
/** What the board said about the last move that it refused, until something else changes. */
let refusal = "";
/** Counts the changes of what the engine is to do. A result that belongs to an earlier one is dropped. */
let changes = 0;
const files: Record<string, Blob> = {};

const searcher = new Searcher();
const board = new Board(element("board"), (node, move) => void play(node, move), refuse);
const moveList = new MoveList(element("moves"), walkTo);
const lineList = new LineList(element("lines"), (rank) => {
  const move = lines[rank - 1]?.moves[0];
  if (move && game.node.legal.includes(move)) void play(game.node, move);
});
const graph = new Graph(element("graph"), walkTo);
const log = new Console(element("log"), element<HTMLDetailsElement>("console"));

const input = (id: string): HTMLInputElement => element<HTMLInputElement>(id);
const chosen = (id: string): string => element<HTMLSelectElement>(id).value;
const on = (id: string, event: string, action: (event: Event) => unknown): void =>
  element(id).addEventListener(event, (happened) => void action(happened));

function begin(): () => boolean {
  const mine = ++changes;
  return () => mine === changes;
}

// What is shown

function announce(text: string): void {
  setText("live", text);
}

function fail(message: string): void {
  setText("failure-text", message);
  element("failure").hidden = false;
  work = "nothing";
  if (game) render();
}

function engineToMove(): boolean {
  return mode === "play" && !game.outcome(game.nodes.length - 1) && game.final.white !== humanIsWhite;
}

function statusText(): string {
  const over = game.outcome();
  if (over) return over;
  const check = game.node.check ? " Check." : "";
  if (mode === "analyse") return `${game.node.white ? "White" : "Black"} to move.${check}`;
  if (!game.atEnd) return `Move ${game.ply} of ${game.nodes.length - 1}. Go to the last to play on.`;
  if (game.node.white === humanIsWhite) return `Your move.${check}`;
  const depth = lines[0]?.score.depth;
  return work === "move" ? `Brindlemoth is thinking…${depth ? ` depth ${depth}` : ""}` : "Brindlemoth is to move.";
}

function renderStatus(): void {
  setText("status-text", refusal || statusText());
  element("turn").className = `turn${game.node.white ? "" : " black"}${work === "nothing" ? "" : " busy"}`;
}

/** The score of the position on the board: from the search that runs, or what an earlier one left. */
function currentScore(): Score | undefined {
  const { node } = game;
  if (node.legal.length > 0) return (work === "analysis" ? lines[0]?.score : undefined) ?? node.score;
  return node.check ? { kind: "mate", value: node.white ? -1 : 1, depth: 0 } : { kind: "cp", value: 0, depth: 0 };
}

function render(): void {
  const { node } = game;
  const over = game.outcome() !== undefined;
  refusal = "";
  document.body.dataset.mode = mode;
  for (const which of ["play", "analyse"]) element(`mode-${which}`).setAttribute("aria-pressed", String(mode === which));
  board.show(node, node.legal.length > 0 && (mode === "analyse" || (game.atEnd && !over && node.white === humanIsWhite)));
  board.showArrow(work === "analysis" ? lines[0]?.moves[0] : undefined);
  moveList.show(game);
  element("graph").hidden = game.nodes.length === 1;
  graph.show(game);
  showBar(currentScore(), board.whiteBelow);
  renderStatus();
  const disable = (id: string, off: boolean): void => void (element<HTMLButtonElement>(id).disabled = off);
  for (const id of ["first", "back"]) disable(id, game.ply === 0);
  for (const id of ["forward", "last"]) disable(id, game.atEnd);
  disable("take-back", !game.nodes.slice(1).some((later) => later.white !== humanIsWhite));
  disable("copy-moves", game.nodes.length === 1);
  disable("evaluate", game.nodes.length === 1);
  setText("evaluate", work === "evaluation" ? "Stop" : "Evaluate game");
  setText("analyse", analysisWanted ? "Stop" : "Start");
  element("analyse").setAttribute("aria-pressed", String(analysisWanted));
  if (document.activeElement !== input("fen")) input("fen").value = node.fen;
}

let painting = false;
let outdated = false;

/** Brings the analysis up to date, not more often than a reader can follow and the machine can draw. */
async function paint(): Promise<void> {
  outdated = true;
  if (painting) return;
  painting = true;
  try {
    while (outdated) {
      outdated = false;
      await draw();
      await new Promise((done) => setTimeout(done, PAINT_INTERVAL_MS));
    }
  } finally {
    painting = false;
  }
}

async function draw(): Promise<void> {
  renderStatus();
  if (work === "evaluation") render();
  if (work !== "analysis") return;
  const { node } = game;
  const shown = [...lines];
  const [best] = shown;
  const variations = await Promise.all(shown.map((line) => rules.variation(node, line.moves)));
  if (!best || game.node !== node || work !== "analysis") return;
  for (const [at, line] of shown.entries()) lineList.show(at + 1, line.score, variations[at] ?? []);
  const number = new Intl.NumberFormat("en", { notation: "compact", maximumFractionDigits: 1 });
  setText("depth", String(best.score.depth));
  setText("nodes", number.format(Math.max(...shown.map((line) => line.nodes))));
  setText("speed", best.speed > 0 ? number.format(best.speed) : "–");
  showBar(currentScore(), board.whiteBelow);
  board.showArrow(best.moves[0]);
  moveList.show(game);
  graph.show(game);
}

// What the engine does

function take(node: Node, line: Line): void {
  // A line that rose from a lower rank leaves that rank, so that no first move stands in the list twice.
  const before = lines.findIndex((other) => other.moves[0] === line.moves[0]);
  if (before >= 0) lines.splice(before, 1);
  lines.splice(line.rank - 1, 0, line);
  lines.splice(lineList.count);
  if (line.rank === 1 && line.score.kind !== "table") node.score = line.score;
  void paint();
}

/** Gives the engine what the state of the page asks for, in place of what it did before. */
async function think(): Promise<void> {
  const current = begin();
  lines = [];
  work = engineToMove() ? "move" : mode === "analyse" && analysisWanted && game.node.legal.length > 0 ? "analysis" : "nothing";
  rules.forget();
  render();
  if (work === "nothing") return searcher.stop();
  if (work === "analysis") lineList.clear();
  const node = work === "move" ? game.final : game.node;
  const ply = game.nodes.indexOf(node);
  const limit = chosen("limit-kind") === "depth" ? `depth ${input("limit").value}` : `movetime ${1000 * Number(input("limit").value)}`;
  searcher.set("MultiPV", work === "analysis" ? chosen("lines-count") : "1");
  const go = work === "analysis" ? "go infinite" : `go ${limit}`;
  const best = await searcher.search(game.positionCommand(ply), go, node.white, (line) => current() && take(node, line));
  if (!current()) return;
  if (work === "move" && best) return play(node, best);
  // An analysis ends by itself at the last depth, at a move from the tables, or with the engine.
  await draw();
  if (!current()) return;
  work = "nothing";
  renderStatus();
}

async function play(node: Node, move: string): Promise<void> {
  const current = begin();
  searcher.stop();
  const next = await rules.after(node, move);
  if (!current()) return;
  if (mode === "play") game.append(next);
  else if (game.nodes[game.ply + 1]?.move === move) game.ply++;
  else game.branch(next);
  announce(`${node.white ? "White" : "Black"}: ${spoken(next.san ?? "")}. ${game.outcome(game.nodes.indexOf(next)) ?? ""}`);
  return think();
}

function refuse(from: string, to: string): void {
  refusal = `${from}–${to} is not a legal move.`;
  renderStatus();
  announce(`${from} to ${to} is not a legal move.`);
}

function walkTo(ply: number): void {
  game.ply = Math.max(0, Math.min(ply, game.nodes.length - 1));
  const { san, white } = game.node;
  announce(san ? `${white ? "Black" : "White"}: ${spoken(san)}` : "First position");
  if (mode === "analyse" && analysisWanted) void think();
  else render();
}

async function evaluateGame(): Promise<void> {
  analysisWanted = false;
  if (work === "evaluation") return think();
  const current = begin();
  lines = [];
  work = "evaluation";
  render();
  searcher.set("MultiPV", "1");
  for (const [ply, node] of [...game.nodes.entries()]) {
    if (node.legal.length === 0 || node.score) continue;
    await searcher.search(game.positionCommand(ply), `go movetime ${EVALUATE_MS}`, node.white, (line) => current() && take(node, line));
    if (!current()) return;
  }
  return think();
}

// What the user does

function setMode(next: Mode): void {
  mode = next;
  analysisWanted = false;
  void think();
}

function toggleAnalysis(): void {
  if (mode !== "analyse") setMode("analyse");
  analysisWanted = !analysisWanted;
  void think();
}

async function startGame(fen: string): Promise<string | undefined> {
  const start = await rules.setUp(fen);
  if (typeof start === "string") return start;
  game = new Game(start);
  void think();
  return undefined;
}

async function newGame(event: Event): Promise<void> {
  event.preventDefault();
  const colour = chosen("colour");
  humanIsWhite = colour === "Random" ? Math.random() < 0.5 : colour === "White";
  begin();
  await searcher.newGame();
  await startGame(START_FEN);
  if (board.whiteBelow !== humanIsWhite) await turnBoard();
  announce(`New game. You play ${humanIsWhite ? "White" : "Black"}.`);
}

function takeBack(): void {
  do game.drop();
  while (game.nodes.length > 1 && game.final.white !== humanIsWhite);
  announce("Taken back.");
  void think();
}

async function setFen(event: Event): Promise<void> {
  event.preventDefault();
  const typed = input("fen").value.trim().replace(/\s+/g, " ");
  const fen = typed.split(" ").length === 4 ? `${typed} 0 1` : typed;
  const fault = fenFault(fen) ?? (await startGame(fen));
  setText("fen-fault", fault ?? "");
  input("fen").setAttribute("aria-invalid", String(fault !== undefined));
  if (fault) return;
  input("fen").blur();
  announce("Position set up.");
}

async function turnBoard(): Promise<void> {
  await board.turn(!board.whiteBelow);
  render();
}

async function copy(id: string, text: string): Promise<void> {
  const done = await navigator.clipboard.writeText(text).then(() => "Copied", () => "Not allowed");
  setText(id, done);
  announce(done);
  setTimeout(() => setText(id, "Copy"), COPIED_MS);
}

async function giveFiles(list: File[]): Promise<void> {
  if (list.length === 0) return;
  const progress = element<HTMLProgressElement>("progress");
  const frame = progress.closest("details");
  if (frame) frame.open = true;
  progress.hidden = false;
  progress.max = list.length;
  const given = await sortFiles(list, (done) => {
    progress.value = done;
    setText("loaded", `Reading file ${done} of ${list.length}…`);
  });
  if (given.book) files[BOOK_PATH] = given.book;
  for (const table of given.tables) files[`${TABLES_PATH}/${table.name}`] = table;
  const remarks = given.book || given.tables.length > 0 ? await startSearcher(true) : [];
  progress.hidden = true;
  const tables = Object.keys(files).filter((path) => path.endsWith(".rtbw")).length;
  const book = files[BOOK_PATH];
  const counted = (count: number, what: string): string => `${count} ${count === 1 ? what : what.replace(/y$/, "ie") + "s"}`;
  const has = `${book ? `Book of ${counted(book.size / BOOK_ENTRY_BYTES, "entry")}` : "No book"}, ${tables > 0 ? `tables of ${counted(tables, "endgame")}` : "no tables"}.`;
  setText("loaded", [has, ...given.faults, ...remarks].join(" "));
}

/** Starts the searching engine with the files that were given. Returns what it says about them. */
async function startSearcher(withFiles: boolean): Promise<string[]> {
  const current = begin();
  work = "nothing";
  element("failure").hidden = true;
  if (withFiles && files[BOOK_PATH]) {
    searcher.set("BookFile", BOOK_PATH);
    searcher.set("OwnBook", "true");
    input("own-book").disabled = false;
    input("own-book").checked = true;
  }
  if (Object.keys(files).some((path) => path.startsWith(TABLES_PATH))) searcher.set("SyzygyPath", TABLES_PATH);
  const remarks = await searcher.start(files);
  if (current()) void think();
  return remarks;
}

/** Starts both engines after a failure, or the whole page when it had not come as far as a game. */
async function restart(): Promise<void> {
  if (!game) return location.reload();
  rules = await Rules.start();
  await startSearcher(false);
}

function setOption(name: string, value: string): void {
  searcher.set(name, value);
  if (work === "analysis") void think();
}

async function typeCommand(event: Event): Promise<void> {
  event.preventDefault();
  const line = input("command").value.trim();
  input("command").value = "";
  if (line === "") return;
  // The page leaves the engine to the one who types.
  begin();
  analysisWanted = false;
  work = "nothing";
  render();
  await searcher.type(line);
}

function takeKey(event: KeyboardEvent): void {
  const typing = (event.target as Element).closest("input, select, .log");
  if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey || typing || !game) return;
  const actions: Record<string, () => void> = {
    ArrowLeft: () => walkTo(game.ply - 1),
    ArrowRight: () => walkTo(game.ply + 1),
    Home: () => walkTo(0),
    End: () => walkTo(Infinity),
    f: () => void turnBoard(),
    a: toggleAnalysis,
  };
  const action = actions[event.key];
  if (!action) return;
  event.preventDefault();
  action();
}

function listen(): void {
  on("mode-play", "click", () => setMode("play"));
  on("mode-analyse", "click", () => setMode("analyse"));
  on("first", "click", () => walkTo(0));
  on("back", "click", () => walkTo(game.ply - 1));
  on("forward", "click", () => walkTo(game.ply + 1));
  on("last", "click", () => walkTo(Infinity));
  on("flip", "click", turnBoard);
  on("play", "submit", newGame);
  on("take-back", "click", takeBack);
  on("limit-kind", "change", () => {
    const depth = chosen("limit-kind") === "depth";
    setText("limit-unit", depth ? "Half-moves" : "Seconds");
    Object.assign(input("limit"), depth ? { min: "1", max: "60", step: "1", value: "8" } : { min: "0.1", max: "600", step: "0.1", value: "1" });
  });
  on("analyse", "click", toggleAnalysis);
  on("lines-count", "change", () => {
    lineList.setCount(Number(chosen("lines-count")));
    if (work === "analysis") void think();
  });
  on("evaluate", "click", evaluateGame);
  on("copy-moves", "click", () => copy("copy-moves", game.moveText(START_FEN)));
  on("copy-fen", "click", () => copy("copy-fen", game.node.fen));
  on("initial", "click", () => startGame(START_FEN));
  on("position", "submit", setFen);
  on("hash", "change", () => setOption("Hash", chosen("hash")));
  on("style", "change", () => setOption("Style", chosen("style")));
  on("own-book", "change", () => setOption("OwnBook", String(input("own-book").checked)));
  on("choose", "click", () => input("files").click());
  on("files", "change", () => giveFiles([...(input("files").files ?? [])]));
  on("command-form", "submit", typeCommand);
  document.addEventListener("keydown", takeKey);
  // A press on the board leaves the focus where it is, so that the arrow keys go on walking through the game.
  on("board", "mousedown", (event) => event.preventDefault());
  const hint = element("drop-hint");
  document.addEventListener("dragover", (event) => {
    if (!event.dataTransfer?.types.includes("Files")) return;
    event.preventDefault();
    hint.hidden = false;
  });
  document.addEventListener("dragleave", (event) => void (event.relatedTarget ?? (hint.hidden = true)));
  document.addEventListener("drop", (event) => {
    hint.hidden = true;
    if (!event.dataTransfer?.types.includes("Files")) return;
    event.preventDefault();
    void droppedFiles(event.dataTransfer).then(giveFiles);
  });
  addEventListener("unhandledrejection", (event) => fail(event.reason instanceof Error ? event.reason.message : String(event.reason)));
}

async function start(): Promise<void> {
  searcher.onTalk = (line, sent) => log.add(line, sent);
  searcher.onEnd = fail;
  on("restart", "click", restart);
  lineList.setCount(Number(chosen("lines-count")));
  const started = searcher.start(files);
  rules = await Rules.start();
  await startGame(START_FEN);
  listen();
  await started;
}

start().catch((error: Error) => fail(error.message));
