// The parts of the page beside the board: moves, analysis lines, evaluation bar and console.

import { scoreText, whiteShare, type Game, type Node, type Score } from "./game";

const LOG_MAX_LINES = 600;

export function element<T extends HTMLElement = HTMLElement>(id: string): T {
  const found = document.getElementById(id);
  if (!found) throw new Error(`The page has no element “${id}”.`);
  return found as T;
}

export function setText(id: string, text: string): void {
  const target = element(id);
  if (target.textContent !== text) target.textContent = text;
}

function make<K extends keyof HTMLElementTagNameMap>(tag: K, text = ""): HTMLElementTagNameMap[K] {
  const made = document.createElement(tag);
  made.textContent = text;
  return made;
}

/** Lists the moves of a game, two to a row. A button of the list leads to its position. */
export class MoveList {
  private shown: Node[] = [];
  private buttons: HTMLButtonElement[] = [];

  constructor(
    private readonly list: HTMLElement,
    private readonly onPick: (ply: number) => void,
  ) {}

  show(game: Game): void {
    const same = this.shown.length === game.nodes.length && this.shown.every((node, ply) => node === game.nodes[ply]);
    if (!same) this.build(game);
    for (const [at, button] of this.buttons.entries()) {
      const score = game.nodes[at + 1]?.score;
      const small = button.querySelector("small");
      if (small) small.textContent = score ? scoreText(score) : "";
      if (at + 1 === game.ply) button.setAttribute("aria-current", "step");
      else button.removeAttribute("aria-current");
    }
    const current = this.buttons[game.ply - 1];
    if (!current) this.list.scrollTop = 0;
    else if (current.offsetTop < this.list.scrollTop) this.list.scrollTop = current.offsetTop;
    else this.list.scrollTop = Math.max(this.list.scrollTop, current.offsetTop + current.offsetHeight - this.list.clientHeight);
  }

  private build(game: Game): void {
    this.shown = [...game.nodes];
    this.buttons = [];
    this.list.replaceChildren();
    let row: HTMLElement | undefined;
    for (let ply = 1; ply < game.nodes.length; ply++) {
      const number = game.numberOf(ply);
      if (!row || number.endsWith(".")) {
        row = make("li");
        row.append(make("span", number.replace("…", ".")));
        if (number.endsWith("…")) row.append(make("span", "…"));
        this.list.append(row);
      }
      const button = make("button", game.nodes[ply]?.san);
      button.type = "button";
      button.append(make("small"));
      button.addEventListener("click", () => this.onPick(ply));
      this.buttons.push(button);
      row.append(button);
    }
  }
}

/** The rows of the analysis. Their elements stay while the text changes, so that a click always meets one. */
export class LineList {
  constructor(
    private readonly list: HTMLElement,
    private readonly onPick: (rank: number) => void,
  ) {}

  get count(): number {
    return this.list.children.length;
  }

  setCount(count: number): void {
    while (this.list.children.length > count) this.list.lastElementChild?.remove();
    while (this.list.children.length < count) {
      const rank = this.list.children.length + 1;
      const row = make("li");
      const button = make("button");
      button.type = "button";
      button.disabled = true;
      button.append(make("b", "–"), make("span"));
      button.addEventListener("click", () => this.onPick(rank));
      row.append(button);
      this.list.append(row);
    }
  }

  clear(): void {
    const { count } = this;
    this.setCount(0);
    this.setCount(count);
  }

  show(rank: number, score: Score, moves: string[]): void {
    const button = this.list.children[rank - 1]?.querySelector("button");
    const [badge, line] = button?.children ?? [];
    if (!button || !badge || !line) return;
    const first = moves[0] ?? "";
    badge.textContent = scoreText(score);
    badge.className = score.value < 0 ? "black" : "";
    line.replaceChildren(make("strong", first), ` ${moves.slice(1).join(" ")}`);
    button.disabled = false;
    button.title = `Play ${first} (${moves.join(" ")})`;
  }
}

/** Shows a score on the evaluation bar, or an even one when there is none. */
export function showBar(score: Score | undefined, whiteBelow: boolean): void {
  const share = score ? whiteShare(score) : 0.5;
  const text = score ? scoreText(score).replace(/(\.\d)\d$/, "$1") : "";
  const bar = element("bar");
  element("bar-fill").style.height = `${100 * share}%`;
  setText("bar-text", text.replace(/^[+−]/, ""));
  bar.classList.toggle("turned", !whiteBelow);
  bar.classList.toggle("behind", share < 0.5);
  bar.setAttribute("aria-label", text ? `Evaluation ${text}` : "Evaluation");
}

/** The console: what the engine was told and what it said. Its text is brought up to date only while it is open. */
export class Console {
  private waiting: HTMLElement[] = [];
  private scheduled = false;

  constructor(
    private readonly log: HTMLElement,
    private readonly frame: HTMLDetailsElement,
  ) {
    frame.addEventListener("toggle", () => this.schedule());
  }

  add(line: string, sent: boolean): void {
    this.waiting.push(make(sent ? "i" : "span", `${sent ? "› " : ""}${line}\n`));
    this.waiting.splice(0, this.waiting.length - LOG_MAX_LINES);
    this.schedule();
  }

  private schedule(): void {
    if (this.scheduled || !this.frame.open) return;
    this.scheduled = true;
    requestAnimationFrame(() => {
      this.scheduled = false;
      const atEnd = this.log.scrollTop + this.log.clientHeight > this.log.scrollHeight - 30;
      this.log.append(...this.waiting.splice(0));
      while (this.log.children.length > LOG_MAX_LINES) this.log.firstElementChild?.remove();
      if (atEnd) this.log.scrollTop = this.log.scrollHeight;
    });
  }
}
