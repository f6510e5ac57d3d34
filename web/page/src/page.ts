// What the page shows, as a function of its state.

import { html, noChange, nothing, type TemplateResult } from "lit-html";
import { live } from "lit-html/directives/live.js";
import type { App } from "./app";
import mothUrl from "./moth.svg";
import { moveNumber, START_FEN } from "./position";

type Part = TemplateResult | typeof nothing;

const LIMITS = {
  "movetime 500": "½ second a move",
  "movetime 1000": "1 second a move",
  "movetime 5000": "5 seconds a move",
  "movetime 20000": "20 seconds a move",
  "depth 3": "depth 3",
  "depth 6": "depth 6",
  "depth 10": "depth 10",
  "depth 15": "depth 15",
};
const HASH_SIZES = { 16: "16 MB", 64: "64 MB", 128: "128 MB", 256: "256 MB", 512: "512 MB" };

const compact = new Intl.NumberFormat("en", { notation: "compact", maximumFractionDigits: 1 });

function select(id: string, label: string, options: object, chosen: unknown, take: (value: string) => void): Part {
  const change = (event: Event): void => take((event.target as HTMLSelectElement).value);
  const option = ([value, text]: [string, string]): Part =>
    html`<option value=${value} ?selected=${value === String(chosen)}>${text}</option>`;
  const choices = Object.entries(options).map(option);
  return html`<label>${label} <select id=${id} @change=${change}>${choices}</select></label>`;
}

function button(id: string, text: string, act: () => void, off = false, label?: string): Part {
  const name = label ?? nothing;
  return html`<button id=${id} title=${name} aria-label=${name} ?disabled=${off} @click=${act}>${text}</button>`;
}

/** A form of one field, which is handed over. */
function field(id: string, label: string, text: string, value: unknown, take: (field: HTMLInputElement) => void): Part {
  const submit = (event: SubmitEvent): void => {
    event.preventDefault();
    take(document.getElementById(id) as HTMLInputElement);
  };
  return html`<form class="row" @submit=${submit}>
    <input id=${id} aria-label=${label} spellcheck="false" autocomplete="off" autocapitalize="off" .value=${value} />
    <button>${text}</button>
  </form>`;
}

function statusOf(app: App): string {
  const { game, lines } = app;
  if (!game) return "Starting the engine…";
  const told = app.notice || game.outcome();
  if (told) return told;
  const check = game.position.check ? " Check." : "";
  if (app.mode === "analyse") return `${game.position.white ? "White" : "Black"} to move.${check}`;
  if (!game.atEnd) return `Move ${game.ply} of ${game.positions.length - 1}. Go to the last to play on.`;
  if (game.position.white === app.humanIsWhite) return `Your move.${check}`;
  if (app.work !== "move") return "Brindlemoth is to move.";
  return `Brindlemoth is thinking…${lines[0] ? ` depth ${lines[0].score.depth}` : ""}`;
}

function evaluationBar({ mode, game, whiteBelow }: App): Part {
  if (mode === "play") return nothing;
  const { text = "", share = 0.5 } = game?.position.score ?? {};
  const classes = `bar ${whiteBelow ? "" : "turned"} ${share < 0.5 ? "behind" : ""}`;
  return html`<div class=${classes} role="img" aria-label="Evaluation ${text}">
    <div style="height: ${100 * share}%"></div>
    <span>${text.replace(/^[+−]|(?<=\.\d)\d$/g, "")}</span>
  </div>`;
}

function stage(app: App): Part {
  const { game } = app;
  const atStart = !game?.ply;
  const atEnd = !game || game.atEnd;
  return html`<section class="stage" aria-label="Board">
    <div class="table">
      ${evaluationBar(app)}
      <div id="board"></div>
    </div>
    <p class="row">
      <span id="status-text" class=${app.work === "nothing" ? "" : "busy"}>${statusOf(app)}</span>
      ${button("first", "«", () => app.walkTo(0), atStart, "First position (Home)")}
      ${button("back", "‹", () => app.walkTo(game.ply - 1), atStart, "One move back (←)")}
      ${button("forward", "›", () => app.walkTo(game.ply + 1), atEnd, "One move forward (→)")}
      ${button("last", "»", () => app.walkTo(Infinity), atEnd, "Last position (End)")}
      ${button("flip", "⇅", () => app.flip(), false, "Flip the board (F)")}
    </p>
  </section>`;
}

function playCard(app: App): Part {
  const colours = { White: "White", Black: "Black", Random: "either colour" };
  return html`<section class="card fields" aria-label="Play">
    ${select("colour", "You play", colours, app.colour, (colour) => (app.colour = colour))}
    ${select("limit", "Engine plays by", LIMITS, app.limit, (limit) => (app.limit = limit))}
    ${button("new-game", "New game", () => void app.newGame())}
    ${button("take-back", "Take back", () => app.takeBack(), !app.canTakeBack)}
  </section>`;
}

function analysisCard(app: App): Part {
  const [best] = app.lines;
  const start = app.analysisWanted ? "Stop" : "Start";
  const counts = { 1: "1", 2: "2", 3: "3", 4: "4", 5: "5" };
  return html`<section class="card" aria-label="Analysis">
    <div class="row">
      <h2>Analysis</h2>
      ${select("lines-count", "Lines", counts, app.lineCount, (count) => app.setLineCount(Number(count)))}
      ${button("analyse", start, () => app.toggleAnalysis(), false, `${start} (A)`)}
    </div>
    <dl class="row">
      <dt>Depth</dt>
      <dd id="depth">${best?.score.depth ?? "–"}</dd>
      <dt>Nodes</dt>
      <dd id="nodes">${best ? compact.format(Math.max(...app.lines.map(({ nodes }) => nodes))) : "–"}</dd>
      <dt>Nodes/s</dt>
      <dd id="speed">${best?.speed ? compact.format(best.speed) : "–"}</dd>
    </dl>
    <ol id="lines" class="lines" aria-label="Best lines">
      ${Array.from({ length: app.lineCount }, (_, rank) => lineRow(app, rank))}
    </ol>
  </section>`;
}

function lineRow(app: App, rank: number): Part {
  const line = app.lines[rank];
  const [move = "", ...others] = line?.san ?? [];
  return html`<li>
    <button ?disabled=${!move} title="Play ${move}" @click=${() => app.playLine(rank)}>
      <b class=${line && line.score.share < 0.5 ? "black" : ""}>${line?.score.text ?? "–"}</b>
      <span><strong>${move}</strong> ${others.join(" ")}</span>
    </button>
  </li>`;
}

function gameCard(app: App): Part {
  const moves = app.game?.positions.slice(1) ?? [];
  const evaluate = app.work === "evaluation" ? "Stop" : "Evaluate game";
  return html`<section class="card" aria-label="Moves">
    <div class="row">
      <h2>Moves</h2>
      ${app.mode === "play" ? nothing : button("evaluate", evaluate, () => void app.evaluateGame(), moves.length === 0)}
      ${button("copy-moves", "Copy", () => void app.copy(app.game.text), moves.length === 0)}
    </div>
    <ol class="moves">
      ${moves.map(
        (position, at) => html`<li>
          ${at > 0 && position.white ? nothing : html`<i>${moveNumber(position)}</i>`}
          <button aria-current=${at + 1 === app.game.ply ? "step" : nothing} @click=${() => app.walkTo(at + 1)}>
            <span>${position.san}</span>
            ${app.mode === "play" ? nothing : html`<small>${position.score?.text}</small>`}
          </button>
        </li>`,
      )}
    </ol>
    <div
      id="graph"
      ?hidden=${app.mode === "play" || moves.length === 0}
      role="img"
      aria-label="Evaluation over the game; the move list leads to the same positions"
    ></div>
  </section>`;
}

function positionCard(app: App): Part {
  const fen = app.game?.position.fen ?? "";
  const typing = document.activeElement?.id === "fen" || app.fenFault !== "";
  const setUp = async (input: HTMLInputElement): Promise<void> => {
    await app.setUp(input.value);
    if (app.fenFault === "") input.blur();
    app.changed();
  };
  return html`<section class="card" aria-label="Position">
    <div class="row">
      <h2>Position</h2>
      ${button("initial", "Initial", () => void app.setUp(START_FEN))}
      ${button("copy-fen", "Copy", () => void app.copy(fen))}
    </div>
    ${field("fen", "FEN", "Set", typing ? noChange : live(fen), setUp)}
    <p id="fen-fault" class="fault" role="alert">${app.fenFault}</p>
  </section>`;
}

function engineCard(app: App): Part {
  const { options, loading } = app;
  const ownBook = options.get("OwnBook") === "true";
  const own = (event: Event): void => app.setOption("OwnBook", String((event.target as HTMLInputElement).checked));
  const choose = ({ target }: Event): void => void app.giveFiles([...((target as HTMLInputElement).files ?? [])]);
  return html`<details id="engine" class="card">
    <summary>Engine</summary>
    <div class="fields">
      ${select("hash", "Hash", HASH_SIZES, 64, (size) => app.setOption("Hash", size))}
      ${select("style", "Style", { PeSTO: "PeSTO", Linear: "Linear" }, "PeSTO", (style) => app.setOption("Style", style))}
    </div>
    <p class="drop">
      <label>
        Drop a book (<code>.bin</code>) or endgame tables (<code>.rtbw</code>, <code>.rtbz</code>) on this page, or
        <input id="files" type="file" multiple accept=".bin,.rtbw,.rtbz" @change=${choose} />
      </label>
      <label>
        <input type="checkbox" ?disabled=${!options.has("BookFile")} .checked=${ownBook} @change=${own} />
        Play from the book
      </label>
    </p>
    <p id="loaded" role="status">${app.loaded}</p>
    <progress aria-label="Loading files" ?hidden=${!loading} value=${loading}></progress>
  </details>`;
}

function consoleCard(app: App): Part {
  const send = (input: HTMLInputElement): void => {
    void app.type(input.value.trim());
    input.value = "";
  };
  return html`<details id="console" class="card">
    <summary>Console</summary>
    <pre id="log" tabindex="0" aria-label="What the engine was told and said">${app.log.join("\n")}</pre>
    ${field("command", "UCI command", "Send", noChange, send)}
  </details>`;
}

export function page(app: App): Part {
  const mode = (id: "play" | "analyse", text: string): Part =>
    html`<button id="mode-${id}" aria-pressed=${app.mode === id} @click=${() => app.setMode(id)}>${text}</button>`;
  return html`
    <header class="row">
      <h1><img src=${mothUrl} alt="" width="30" height="30" /> Brindlemoth</h1>
      ${mode("play", "Play")} ${mode("analyse", "Analyse")}
    </header>
    <p class="fault card" role="alert" ?hidden=${!app.failure}>
      ${app.failure} ${button("restart", "Start it again", () => void app.start())}
    </p>
    <main>
      ${stage(app)}
      <div class="side">
        ${app.mode === "play" ? playCard(app) : analysisCard(app)} ${gameCard(app)} ${positionCard(app)}
        ${engineCard(app)} ${consoleCard(app)}
      </div>
    </main>
    <footer>
      Brindlemoth runs on this device. Nothing is stored or sent. Keys: ← → Home End to walk, F to flip, A to analyse.
      Pieces by Cburnett and Rfc1394,
      <a href="https://creativecommons.org/licenses/by-sa/3.0/" rel="noreferrer">CC BY-SA 3.0</a>.
      <a href="./licences.txt">All licences</a>.
    </footer>
    <p id="live" aria-live="polite">${app.news}</p>
  `;
}
