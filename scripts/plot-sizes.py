#!/usr/bin/env python3
"""Draws what bench --sizes wrote as SVG files with logarithmic axes. usage: plot-sizes.py SIZES.json FOLDER"""
import json
import math
import pathlib
import sys
from xml.sax.saxutils import escape

WIDTH, HEIGHT = 720, 400
LEFT, RIGHT, TOP, BOTTOM = 70, 250, 40, 50
COLORS = ["#1b6ca8", "#c8553d", "#3a7d44", "#8d5a97", "#b8860b"]


class Axis:
    """Where values lie between two ends in pixels, on a logarithmic scale of whole decades or less."""

    def __init__(self, values, first, last):
        self.least, self.most = math.log10(min(values)), math.log10(max(values))
        margin = 0.03 * (self.most - self.least) or 0.1
        self.least, self.most = self.least - margin, self.most + margin
        self.first, self.last = first, last

    def place(self, value):
        share = (math.log10(value) - self.least) / (self.most - self.least)
        return self.first + share * (self.last - self.first)

    def ticks(self):
        steps = (1, 2, 5) if self.most - self.least < 3.5 else (1,)
        every = [step * 10.0**power for power in range(-6, 12) for step in steps]
        return [tick for tick in every if self.least <= math.log10(tick) <= self.most]


def text(x, y, words, anchor="middle", more=""):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}"{more}>{escape(words)}</text>'


def svg(plot):
    points = [point for series in plot["series"] for point in series["points"]]
    x = Axis([point[0] for point in points], LEFT, WIDTH - RIGHT)
    y = Axis([point[1] for point in points], HEIGHT - BOTTOM, TOP)
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">',
        f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
        text((LEFT + WIDTH - RIGHT) / 2, 22, plot["title"], more=' font-size="15"'),
        text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 12, plot["x"]),
        text(18, (TOP + HEIGHT - BOTTOM) / 2, plot["y"], more=f' transform="rotate(-90 18 {(TOP + HEIGHT - BOTTOM) / 2:.0f})"'),
    ]
    for tick in x.ticks():
        at = x.place(tick)
        parts.append(f'<path d="M{at:.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#ddd"/>')
        parts.append(text(at, HEIGHT - BOTTOM + 16, f"{tick:,.10g}"))
    for tick in y.ticks():
        at = y.place(tick)
        parts.append(f'<path d="M{LEFT} {at:.1f}H{WIDTH - RIGHT}" stroke="#ddd"/>')
        parts.append(text(LEFT - 6, at + 4, f"{tick:,.10g}", "end"))
    for number, series in enumerate(plot["series"]):
        color = COLORS[number % len(COLORS)]
        line = " ".join(f"{x.place(size):.1f},{y.place(time):.1f}" for size, time in series["points"])
        parts.append(f'<polyline points="{line}" fill="none" stroke="{color}" stroke-width="2"/>')
        at = TOP + 14 + 20 * number
        parts.append(f'<path d="M{WIDTH - RIGHT + 12} {at - 4}h18" stroke="{color}" stroke-width="2"/>')
        parts.append(text(WIDTH - RIGHT + 36, at, series["title"], "start"))
    return "\n".join(parts + ["</svg>", ""])


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    plots = json.loads(pathlib.Path(sys.argv[1]).read_text())
    for name, plot in plots.items():
        pathlib.Path(sys.argv[2], f"cost-{name}.svg").write_text(svg(plot))


main()
