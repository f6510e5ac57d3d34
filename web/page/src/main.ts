// Puts the page together: its state, its text, the board and the graph.

import "cm-chessboard/assets/chessboard.css";
import "cm-chessboard/assets/extensions/markers/markers.css";
import "cm-chessboard/assets/extensions/promotion-dialog/promotion-dialog.css";
import "uplot/dist/uPlot.min.css";
import "./style.css";
import { render } from "lit-html";
import { App } from "./app";
import { Board } from "./board";
import { Graph } from "./graph";
import { page } from "./page";
import type { Position } from "./position";

const app = new App(draw);
render(page(app), document.body);
const find = (selector: string): HTMLElement => document.querySelector(selector) as HTMLElement;
const board = new Board(
  find("#board"),
  (position, move) => void app.play(position, move),
  (from, to) => app.refuse(from, to),
);
let listed: Position | undefined;
const graph = new Graph(find("#graph"), (ply) => app.walkTo(ply));

function draw(): void {
  const log = find("#log");
  const atEnd = log.scrollTop + log.clientHeight > log.scrollHeight - 30;
  render(page(app), document.body);
  if (atEnd) log.scrollTop = log.scrollHeight;
  const { game } = app;
  if (!game) return;
  board.show(game.position, app.takesMoves, app.whiteBelow, app.bestMove);
  graph.show(game);
  if (listed !== game.position) scrollMoves();
  listed = game.position;
}

/** Brings the current move into the list's view, without a scroll of the page. */
function scrollMoves(): void {
  const list = find(".moves");
  const current = find(".moves [aria-current]");
  list.scrollTop = current ? current.offsetTop - list.clientHeight / 2 : 0;
}

function takeKey(event: KeyboardEvent): void {
  const typing = (event.target as Element).closest("input, select, #log");
  if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey || typing || !app.game) return;
  const actions: Record<string, () => void> = {
    ArrowLeft: () => app.walkTo(app.game.ply - 1),
    ArrowRight: () => app.walkTo(app.game.ply + 1),
    Home: () => app.walkTo(0),
    End: () => app.walkTo(Infinity),
    f: () => app.flip(),
    a: () => app.toggleAnalysis(),
  };
  const action = actions[event.key];
  if (!action) return;
  event.preventDefault();
  action();
}

function takeDrag(event: DragEvent): void {
  if (!event.dataTransfer?.types.includes("Files")) return;
  event.preventDefault();
  document.body.classList.toggle("dropping", event.type === "dragover");
  if (event.type !== "drop") return;
  find("#engine").setAttribute("open", "");
  void app.giveFiles([...event.dataTransfer.files]);
}

document.addEventListener("keydown", takeKey);
// A press on the board leaves the focus where it is, so that the arrow keys go on walking through the game.
find("#board").addEventListener("mousedown", (event) => event.preventDefault());
for (const type of ["dragover", "dragleave", "drop"] as const) document.addEventListener(type, takeDrag);
addEventListener("unhandledrejection", ({ reason }) =>
  app.fail(reason instanceof Error ? reason.message : String(reason)),
);
void app.start();
