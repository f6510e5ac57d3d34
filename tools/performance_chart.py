#!/usr/bin/env python3
"""Draws docs/images/performance.svg from docs/performance.csv: tools/performance_chart.py."""
import csv
import pathlib

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
# Greys and blues of middle brightness: the picture has no ground of its own, and is read on white
# and on black.
COLOURS = {"before": "#9a9a9a", "after": "#3d8fd1"}
TEXT = "#808080"
LEFT, BAR, GAP, SCALE = 150, 12, 10, 0.42  # pixels; pixels for an instruction


def bar(row, y, series):
    value = float(row[series])
    width = max(value * SCALE, 1)
    return [
        f'<rect x="{LEFT}" y="{y}" width="{width:.0f}" height="{BAR}" fill="{COLOURS[series]}"/>',
        f'<text x="{LEFT + width + 5:.0f}" y="{y + BAR - 2}">{value:.0f}</text>',
    ]


def main():
    rows = list(csv.DictReader((DOCS / "performance.csv").open()))
    lines = []
    y = 40
    for row in rows:
        lines.append(f'<text x="{LEFT - 8}" y="{y + BAR + 4}" text-anchor="end">'
                     f'{row["component"]}</text>')
        for series in COLOURS:
            lines += bar(row, y, series)
            y += BAR
        y += GAP
    for i, (series, colour) in enumerate(COLOURS.items()):
        total = sum(float(row[series]) for row in rows)
        x = LEFT + 130 * i
        lines.append(f'<rect x="{x}" y="12" width="12" height="12" fill="{colour}"/>')
        lines.append(f'<text x="{x + 18}" y="22">{series}: {total:.0f}</text>')
    picture = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 620 {y}" width="620" height="{y}" '
        f'font-family="sans-serif" font-size="12" fill="{TEXT}">',
        "<title>Instructions per node by component, before and after</title>",
        *lines,
        "</svg>",
    ]
    target = DOCS / "images" / "performance.svg"
    target.parent.mkdir(exist_ok=True)
    target.write_text("\n".join(picture) + "\n")


if __name__ == "__main__":
    main()
