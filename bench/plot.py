#!/usr/bin/env python3
"""plot.py RUNS.json: an SVG of the growth from 100 to 1,000,000 keys, ours and the others, on standard output.

plot.py --ratios RUNS.json: instead, the ratio of each row of the table as a bar to the left or right of 1."""
import math
import sys

from table import limit_of, medians, ratio

# Panel: its title, and the number of operations in one run of the task; None means one for each key.
TASKS = {"load": ("load, per key", None), "look-up-10000": ("look up, per look-up", 10000),
         "change-to-text": ("change one key, text of the file, per key", None),
         "change-and-save": ("change one key and save, per key", None),
         "walk-by-index": ("walk over all, per key", None), "build": ("build from nothing, per key", None)}
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


def growth(measured):
    width, height = 2 * (LEFT + WIDTH) + GAP, 3 * (TOP + HEIGHT + GAP) + 20
    out = []
    for i, (task, (title, count)) in enumerate(TASKS.items()):
        lines = {}
        for (name, size), whos in measured.items():
            for who, (time, _) in whos.items() if name == task else ():
                lines.setdefault(who, []).append((int(size), time / (count or int(size))))
        if lines:
            panel(out, LEFT + i % 2 * (LEFT + WIDTH), TOP + i // 2 * (TOP + HEIGHT + GAP), title, lines)
    for i, (who, colour) in enumerate(COLOURS.items()):
        out.append(f'<text x="{LEFT + i * 110}" y="{height - 8}" fill="{colour}">&#9644; {who}</text>')
    return width, height, out


def ratios(measured):
    """Draws one bar for each row, on a logarithmic axis from 1/100 to 10. A tick marks the limit, red if missed."""
    found = [(task, size, ratio(whos), limit_of(task, size)) for (task, size), whos in measured.items()]
    rows = [row for row in found if row[2] is not None]
    name, bar, line, top = 210, 420, 15, 30
    width, height = name + bar + 110, top + line * len(rows) + 30
    x = lambda value: name + (math.log10(min(max(value, 0.01), 10)) + 2) / 3 * bar
    out = [f'<text x="{name}" y="14" font-weight="bold">Time or memory beside the best other: left of 1 is faster or '
           'smaller</text>']
    for mark in (0.01, 0.03, 0.1, 0.3, 1, 3, 10):
        out.append(f'<path d="M{x(mark):.1f} {top - 4}V{height - 24}" stroke="{"#555" if mark == 1 else "#ddd"}"/>'
                   f'<text x="{x(mark):.1f}" y="{height - 10}" text-anchor="middle">{mark:g}</text>')
    for i, (task, size, value, limit) in enumerate(rows):
        y = top + i * line
        left, right = sorted((x(value), x(1)))
        colour = "#aaa" if limit is None else "#c0392b" if value > limit else "#3a8f5d"
        out.append(f'<text x="{name - 8}" y="{y + 10}" text-anchor="end">{task} {size}</text>'
                   f'<rect x="{left:.1f}" y="{y + 1}" width="{max(right - left, 1):.1f}" height="10" fill="{colour}"/>'
                   f'<text x="{name + bar + 8}" y="{y + 10}">{value:.2f}'
                   f'{"" if limit is None else f" of {limit:.2f}"}</text>')
        if limit is not None:
            out.append(f'<path d="M{x(limit):.1f} {y}v12" stroke="black"/>')
    return width, height, out


def main():
    wanted = sys.argv[1:2] == ["--ratios"]
    width, height, out = (ratios if wanted else growth)(medians(sys.argv[1 + wanted:]))
    print("\n".join([f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
                     'font-size="11">', f'<rect width="{width}" height="{height}" fill="white"/>', *out, "</svg>"]))


if __name__ == "__main__":
    main()
