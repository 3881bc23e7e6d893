#!/usr/bin/env python3
"""plot.py bench_cfg.json: an SVG of the cost per key, from 100 to 1,000,000 keys, ours and the peers, on standard output."""
import math
import sys

from table import medians

TASKS = {"load": "load", "change-to-text": "change one key, text of the file", "walk-by-index": "walk over all",
         "build": "build from nothing"}
COLOURS = {"ours": "#c0392b", "gkeyfile": "#2c6fbb", "simpleini": "#3a8f5d", "inih": "#8e6bbf"}
WIDTH, HEIGHT, LEFT, TOP, GAP = 330, 220, 60, 40, 50


def panel(out, x0, y0, title, lines):
    times = [time for points in lines.values() for _, time in points]
    low, high = math.floor(math.log10(min(times))), math.ceil(math.log10(max(times)))
    x = lambda keys: x0 + (math.log10(keys) - 2) / 4 * WIDTH
    y = lambda time: y0 + HEIGHT - (math.log10(time) - low) / (high - low) * HEIGHT
    out.append(f'<text x="{x0}" y="{y0 - 10}" font-weight="bold">{title}</text>')
    for power in range(low, high + 1):
        out.append(f'<path d="M{x0} {y(10**power):.1f}h{WIDTH}" stroke="#ddd"/>'
                   f'<text x="{x0 - 6}" y="{y(10**power) + 4:.1f}" text-anchor="end">{10**power:g} ns</text>')
    for power in range(2, 7):
        out.append(f'<text x="{x(10**power):.1f}" y="{y0 + HEIGHT + 16}" text-anchor="middle">{10**power:,}</text>')
    for who, points in lines.items():
        path = " ".join(f"{x(keys):.1f},{y(time):.1f}" for keys, time in points)
        out.append(f'<polyline points="{path}" fill="none" stroke="{COLOURS[who]}" stroke-width="2"/>')


def main():
    measured = medians(sys.argv[1:])
    width, height = 2 * (LEFT + WIDTH) + GAP, 2 * (TOP + HEIGHT + GAP) + 20
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
           'font-size="11">', f'<rect width="{width}" height="{height}" fill="white"/>']
    for i, (task, title) in enumerate(TASKS.items()):
        lines = {}
        for (name, size), whos in measured.items():
            for who, (time, _) in whos.items() if name == task else ():
                lines.setdefault(who, []).append((int(size), time / int(size)))
        panel(out, LEFT + i % 2 * (LEFT + WIDTH), TOP + i // 2 * (TOP + HEIGHT + GAP), title + ", per key", lines)
    for i, (who, colour) in enumerate(COLOURS.items()):
        out.append(f'<text x="{LEFT + i * 110}" y="{height - 8}" fill="{colour}">&#9644; {who}</text>')
    print("\n".join(out + ["</svg>"]))


if __name__ == "__main__":
    main()
