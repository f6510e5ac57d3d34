// The graph of the evaluation over the game.

import uPlot from "uplot";
import type { Game } from "./game";

const HEIGHT = 112;

export class Graph {
  private readonly plot: uPlot;

  /** `onPick` gets the ply of a click. */
  constructor(host: HTMLElement, onPick: (ply: number) => void) {
    const accent = (): string => getComputedStyle(host).color;
    this.plot = new uPlot(
      {
        width: host.clientWidth || 1,
        height: HEIGHT,
        legend: { show: false },
        cursor: { y: false, drag: { x: false, y: false } },
        padding: [6, 6, 6, 6],
        scales: { x: { time: false, range: (_plot, _low, high) => [0, Math.max(high, 1)] }, y: { range: [0, 100] } },
        axes: [{ show: false }, { show: false }],
        series: [
          {},
          { spanGaps: true, width: 2, stroke: accent, fill: () => accent().replace(")", ", 0.2)"), fillTo: 50 },
          { points: { size: 11, fill: accent, stroke: accent } },
        ],
      },
      [[0], [null], [null]],
      host,
    );
    host.addEventListener("click", () => onPick(this.plot.cursor.idx ?? 0));
    new ResizeObserver(() => this.plot.setSize({ width: host.clientWidth, height: HEIGHT })).observe(host);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.plot.redraw());
  }

  /** Shows White's expected share of the point in percent, and a dot at the position on the board. */
  show(game: Game): void {
    const shares = game.positions.map(({ score }) => (score ? 100 * score.share : null));
    const here = shares.map((share, ply) => (ply === game.ply ? (share ?? 50) : null));
    this.plot.setData([shares.map((_share, ply) => ply), shares, here]);
  }
}
