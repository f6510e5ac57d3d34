// The state of the page and what changes it. `page.ts` draws it.

import { Game } from "./game";
import { fenFault, START_FEN, type Position } from "./position";
import { Rules } from "./rules";
import { parseLine, Searcher, type Line } from "./searcher";

const DRAW_INTERVAL_MS = 150;
const EVALUATE_MS = 250;
const LOG_MAX_LINES = 600;
/** Moves of a line that are written in algebraic notation. */
const LINE_MAX_MOVES = 8;
const BOOK_PATH = "book.bin";
const BOOK_ENTRY_BYTES = 16;
const TABLES_PATH = "tables";
const TABLE_NAME = /^K[QRBNP]*vK[QRBNP]*\.rtb[wz]$/;

const sleep = (ms: number): Promise<void> => new Promise((done) => setTimeout(done, ms));
const counted = (count: number, what: string): string =>
  `${count} ${count === 1 ? what : `${what.replace(/y$/, "ie")}s`}`;

export class App {
  mode: "play" | "analyse" = "play";
  game!: Game;
  /** The colour that the human plays in the next game, and in this one. */
  colour = "White";
  humanIsWhite = true;
  whiteBelow = true;
  /** What the engine may spend on a move, as `go` has it. */
  limit = "movetime 1000";
  lineCount = 3;
  analysisWanted = false;
  /** What the searching engine does for the page. */
  work: "nothing" | "move" | "analysis" | "evaluation" = "nothing";
  /** What happened just now, until something else changes. */
  notice = "";
  fenFault = "";
  failure = "";
  /** What a screen reader is to say. */
  news = "";
  loaded = "No book and no tables.";
  /** The part of the given files that was read, while they are. */
  loading = 0;
  readonly log: string[] = [];

  /** The lines that a search found, the best first: all, and those that are written. */
  private found: { position?: Position; lines: Line[] } = { lines: [] };
  private written = this.found;
  private outdated = false;
  private drawing = false;
  /** Counts the changes of what the engine is to do. A result that belongs to an earlier one is dropped. */
  private changes = 0;
  private readonly files: Record<string, File> = {};
  private readonly rules = new Rules();
  private readonly searcher = new Searcher(
    (line, sent) => this.talk(line, sent),
    (message) => this.fail(message),
  );

  /** `draw` shows the state as it is. */
  constructor(private readonly draw: () => void) {}

  /** Starts both engines, and a game unless there is one. */
  async start(): Promise<void> {
    const started = this.startSearcher();
    await this.rules.start();
    if (!this.game) await this.setUp(START_FEN);
    await started;
  }

  private begin(): () => boolean {
    const mine = ++this.changes;
    return () => mine === this.changes;
  }

  /** Draws the state after a change, and tells what happened. */
  changed(news = this.news, notice = ""): void {
    this.news = news;
    this.notice = notice;
    this.draw();
  }

  get options(): Map<string, string> {
    return this.searcher.options;
  }

  /** The lines of the position on the board. */
  get lines(): Line[] {
    return this.written.position === this.game?.position ? this.written.lines : [];
  }

  get bestMove(): string | undefined {
    return this.work === "analysis" ? this.lines[0]?.moves[0] : undefined;
  }

  /** Whether moves can be made on the board. */
  get takesMoves(): boolean {
    const { legal, white } = this.game.position;
    if (this.mode === "analyse") return legal.length > 0;
    return this.game.atEnd && !this.game.outcome() && white === this.humanIsWhite;
  }

  get canTakeBack(): boolean {
    return this.game?.positions.slice(1).some(({ white }) => white !== this.humanIsWhite);
  }

  fail(message: string): void {
    this.failure = message;
    this.work = "nothing";
    this.changed();
  }

  private talk(line: string, sent: boolean): void {
    this.log.push((sent ? "› " : "") + line);
    this.log.splice(0, this.log.length - LOG_MAX_LINES);
    if (!sent) void this.drawSoon();
  }

  /** Draws what the engine says, not more often than a reader can follow and the machine can draw. */
  private async drawSoon(): Promise<void> {
    this.outdated = true;
    if (this.drawing) return;
    this.drawing = true;
    while (this.outdated) {
      this.outdated = false;
      await this.writeLines().catch((error: Error) => this.fail(error.message));
      this.draw();
      await sleep(DRAW_INTERVAL_MS);
    }
    this.drawing = false;
  }

  private async writeLines(): Promise<void> {
    const { found } = this;
    const lines = [...found.lines];
    for (const line of lines) line.san ??= await this.write(found.position, line.moves);
    if (found === this.found) this.written = { ...found, lines };
  }

  private async write(position: Position | undefined, moves: string[]): Promise<string[]> {
    const san: string[] = [];
    for (const move of moves.slice(0, LINE_MAX_MOVES)) {
      if (!position?.legal.includes(move)) break;
      position = await this.rules.after(position, move);
      san.push(position.san);
    }
    return san;
  }

  // What the engine does

  /** Gives the engine what the state of the page asks for, in place of what it did before. */
  private async think(): Promise<void> {
    const current = this.begin();
    const { game } = this;
    const humansTurn = game.final.white === this.humanIsWhite;
    this.work = "nothing";
    if (this.mode === "play" && !humansTurn && !game.outcome(game.positions.length - 1)) this.work = "move";
    if (this.mode === "analyse" && this.analysisWanted && game.position.legal.length > 0) this.work = "analysis";
    this.changed();
    if (this.work === "nothing") return this.searcher.stop();
    const position = this.work === "move" ? game.final : game.position;
    const best = await this.search(position, this.work === "move" ? this.limit : "infinite", current);
    if (!current()) return;
    if (this.work === "move" && best) return this.play(position, best);
    // An analysis ends by itself at the last depth, at a move from the tables, or with the engine.
    this.work = "nothing";
    this.changed();
  }

  private search(position: Position, limit: string, current: () => boolean): Promise<string | undefined> {
    this.found = { position, lines: [] };
    this.options.set("MultiPV", String(this.work === "analysis" ? this.lineCount : 1));
    const command = this.game.positionCommand(this.game.positions.indexOf(position));
    return this.searcher.search(command, `go ${limit}`, (text) => {
      const line = parseLine(text, position.white);
      if (line && current()) this.take(position, line);
    });
  }

  private take(position: Position, line: Line): void {
    // A line that rose from a lower rank leaves that rank, so that no first move stands in the list twice.
    const lines = this.found.lines.filter((other) => other.moves[0] !== line.moves[0]);
    lines.splice(line.rank - 1, 0, line);
    this.found.lines = lines.slice(0, this.lineCount);
    if (line.rank === 1 && line.score.text !== "TB") position.score = line.score;
  }

  async evaluateGame(): Promise<void> {
    this.analysisWanted = false;
    if (this.work === "evaluation") return this.think();
    const current = this.begin();
    this.work = "evaluation";
    this.changed();
    for (const position of [...this.game.positions].filter(({ score }) => !score)) {
      await this.search(position, `movetime ${EVALUATE_MS}`, current);
      if (!current()) return;
    }
    return this.think();
  }

  // What the user does

  async play(position: Position, move: string): Promise<void> {
    const current = this.begin();
    this.searcher.stop();
    const next = await this.rules.after(position, move);
    if (!current()) return;
    if (this.mode === "play") this.game.append(next);
    else this.game.branch(next);
    const outcome = this.game.outcome(this.game.positions.indexOf(next));
    this.news = `${position.white ? "White" : "Black"}: ${next.san}. ${outcome}`;
    return this.think();
  }

  playLine(rank: number): void {
    const move = this.lines[rank]?.moves[0];
    if (move) void this.play(this.game.position, move);
  }

  refuse(from: string, to: string): void {
    const text = `${from}–${to} is not a legal move.`;
    this.changed(text, text);
  }

  walkTo(ply: number): void {
    this.game.ply = Math.max(0, Math.min(ply, this.game.positions.length - 1));
    const { san, white } = this.game.position;
    this.changed(san ? `${white ? "Black" : "White"}: ${san}` : "First position");
    if (this.mode === "analyse" && this.analysisWanted) void this.think();
  }

  setMode(mode: "play" | "analyse"): void {
    this.mode = mode;
    this.analysisWanted = false;
    void this.think();
  }

  toggleAnalysis(): void {
    this.mode = "analyse";
    this.analysisWanted = !this.analysisWanted;
    void this.think();
  }

  async newGame(): Promise<void> {
    this.humanIsWhite = this.colour === "Random" ? Math.random() < 0.5 : this.colour === "White";
    this.whiteBelow = this.humanIsWhite;
    this.begin();
    await this.searcher.newGame();
    await this.setUp(START_FEN);
    this.changed(`New game. You play ${this.humanIsWhite ? "White" : "Black"}.`);
  }

  takeBack(): void {
    do this.game.drop();
    while (this.game.positions.length > 1 && this.game.final.white !== this.humanIsWhite);
    this.news = "Taken back.";
    void this.think();
  }

  /** Begins a game at a position. What is wrong with it is told. */
  async setUp(typed: string): Promise<void> {
    const fields = typed.trim().split(/\s+/);
    const fen = [...fields, ...(fields.length === 4 ? ["0", "1"] : [])].join(" ");
    const start = fenFault(fen) ?? (await this.rules.setUp(fen));
    if (typeof start === "string") {
      this.fenFault = start;
      return this.changed();
    }
    this.fenFault = "";
    this.game = new Game(start);
    this.news = "Position set up.";
    void this.think();
  }

  flip(): void {
    this.whiteBelow = !this.whiteBelow;
    this.changed();
  }

  async copy(text: string): Promise<void> {
    const copied = await navigator.clipboard.writeText(text).then(
      () => "Copied.",
      () => "Copying is not allowed.",
    );
    this.changed(copied, copied);
  }

  setLineCount(count: number): void {
    this.lineCount = count;
    if (this.work === "analysis") void this.think();
    else this.changed();
  }

  setOption(name: string, value: string): void {
    this.options.set(name, value);
    if (this.work === "analysis") void this.think();
  }

  /** Sends a command that somebody typed. The page leaves the engine to the one who types. */
  async type(line: string): Promise<void> {
    this.begin();
    this.analysisWanted = false;
    this.work = "nothing";
    this.changed();
    if (line !== "") await this.searcher.type(line);
  }

  // The files of the engine

  /** Gives the engine a book and tables, each of which is read once to see that it can be. */
  async giveFiles(files: File[]): Promise<void> {
    const faults: string[] = [];
    for (const [at, file] of files.entries()) {
      this.loading = (at + 1) / files.length;
      this.loaded = `Reading file ${at + 1} of ${files.length}…`;
      this.changed();
      const fault = await this.takeFile(file);
      if (fault) faults.push(`${file.name} ${fault}.`);
    }
    const remarks = faults.length < files.length ? await this.startSearcher() : [];
    const tables = Object.keys(this.files).filter((path) => path.endsWith(".rtbw")).length;
    const book = this.files[BOOK_PATH];
    const hasBook = book ? `Book of ${counted(book.size / BOOK_ENTRY_BYTES, "entry")}` : "No book";
    const hasTables = tables > 0 ? `tables of ${counted(tables, "endgame")}` : "no tables";
    this.loading = 0;
    this.loaded = [`${hasBook}, ${hasTables}.`, ...faults, ...remarks].join(" ");
    this.changed();
  }

  /** Keeps a file for the engine's next start, or returns what is wrong with it. */
  private async takeFile(file: File): Promise<string | undefined> {
    const reading = file.slice(0, BOOK_ENTRY_BYTES).arrayBuffer();
    const start = await reading.catch(() => undefined);
    const isTable = TABLE_NAME.test(file.name);
    if (!start?.byteLength) return "is empty or cannot be read";
    if (!isTable && !file.name.endsWith(".bin")) return "is neither a book nor an endgame table";
    if (!isTable && file.size % BOOK_ENTRY_BYTES !== 0) return "is no Polyglot book";
    this.files[isTable ? `${TABLES_PATH}/${file.name}` : BOOK_PATH] = file;
    if (isTable) this.options.set("SyzygyPath", TABLES_PATH);
    else this.options.set("BookFile", BOOK_PATH).set("OwnBook", "true");
    return undefined;
  }

  /** Starts the searching engine with the files that were given. Returns what it says about them. */
  private async startSearcher(): Promise<string[]> {
    const current = this.begin();
    this.work = "nothing";
    this.failure = "";
    const remarks = await this.searcher.start(this.files);
    if (current() && this.game) void this.think();
    return remarks;
  }
}
