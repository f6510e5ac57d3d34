// The graph of the evaluation over the game.

import uPlot from "uplot";
import { whiteShare, type Game } from "./game";

const HEIGHT = 112;

/** The value drawn for a position: White's expected share of the point in percent. */
function percentOf(game: Game, ply: number): number | null {
  const score = game.nodes[ply]?.score;
  return score ? 100 * whiteShare(score) : null;
}

export class Graph {
  private readonly plot: uPlot;
  private game: Game | undefined;

  constructor(host: HTMLElement, onPick: (ply: number) => void) {
    const color = (name: string): string => {
      host.style.color = `var(${name})`;
      return getComputedStyle(host).color;
    };
    const line = (self: uPlot, x0: number, y0: number, x1: number, y1: number, name: string): void => {
      self.ctx.save();
      self.ctx.strokeStyle = color(name);
      self.ctx.lineWidth = devicePixelRatio;
      self.ctx.beginPath();
      self.ctx.moveTo(x0, y0);
      self.ctx.lineTo(x1, y1);
      self.ctx.stroke();
      self.ctx.restore();
    };
    this.plot = new uPlot(
      {
        width: host.clientWidth || 300,
        height: HEIGHT,
        legend: { show: false },
        cursor: { y: false, drag: { x: false, y: false }, points: { size: 7 } },
        padding: [6, 6, 6, 6],
        scales: { x: { time: false, range: (_self, _low, high) => [0, Math.max(high, 1)] }, y: { range: [0, 100] } },
        axes: [{ show: false }, { show: false }],
        series: [
          {},
          {
            spanGaps: true,
            width: 2,
            stroke: () => color("--accent"),
            fill: () => color("--graph-fill"),
            fillTo: 50,
            points: { size: 4, fill: () => color("--accent") },
          },
        ],
        hooks: {
          draw: [
            (self): void => {
              const { left, top, width, height } = self.bbox;
              line(self, left, top + height / 2, left + width, top + height / 2, "--line-strong");
              const now = self.valToPos(this.game?.ply ?? 0, "x", true);
              line(self, now, top, now, top + height, "--ink-soft");
            },
          ],
        },
      },
      [[0], [null]],
      host,
    );
    host.addEventListener("click", () => {
      const { idx } = this.plot.cursor;
      if (typeof idx === "number") onPick(idx);
    });
    new ResizeObserver(() => this.plot.setSize({ width: host.clientWidth, height: HEIGHT })).observe(host);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.plot.redraw());
  }

  show(game: Game): void {
    this.game = game;
    const plies = game.nodes.map((_node, ply) => ply);
    this.plot.setData([plies, plies.map((ply) => percentOf(game, ply))]);
  }
}
