#!/usr/bin/env python3
"""Prints the medians of benchmark runs (Google Benchmark's JSON): ours, the best other, their ratio and its limit.

Ratios below 1 are faster. `lower-bound` is the same work with bare system calls or a bare loop. Rows that miss
their limit are marked. --markdown prints the table of docs/performance.md."""
import collections
import json
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}

# The largest ratio per task, for the sizes in the order of the run, or for all sizes.
LIMITS = {
    "load": {"100": 0.4, "10000": 0.3, "1000000": 0.45},
    "read-ten-keys": {"100": 0.6, "10000": 0.4},
    "look-up-10000": {"100": 0.8, "10000": 0.8, "1000000": 0.9},
    "look-up-10000-strings": {"100": 0.8, "10000": 0.8, "1000000": 0.9},
    "change-to-text": {"100": 0.35, "10000": 0.35, "1000000": 0.6},
    "walk-by-index": {"100": 0.4, "10000": 0.5, "1000000": 0.7},
    "build": {"100": 0.7, "10000": 0.6, "1000000": 0.65},
    "memory-after-load": 1.1,
    "memory-after-walk": 1.6,
    "browse-walk": 1.0,
    "browse-add-100": 1.0,
    "browse-remove-group": 1.0,
    "base64-encode-1MiB": 0.5,
    "base64-decode-1MiB": 0.4,
    "ripemd256": 1.1,
    "safer": 1.15,
    "tokenize-lines": 0.8,
    "tokenize-long-line": 0.8,
    "trim": 1.1,
    "upper-case": 1.1,
    "int-to-text": 1.0,
    "text-to-int": 1.0,
    "float-to-text": 1.0,
    "text-to-float": 1.0,
    "date-encode": 1.0,
    "date-decode": 1.0,
    "date-to-text": 0.9,
    "text-to-date": 0.8,
    "log-append": 1.1,
    "durable-append": 1.1,
    "durable-append-at-bound": 1.5,
    "durable-save": 1.25,
    "log-open": 1.2,
    "log-read-by-index": 1.5,
    "count-events": 1.8,
    "time-events": 1.8,
    "python-events": 5.0,
    "python-settings": 0.1,
}


def medians(paths):
    """{(task, size): {who: (nanoseconds, bytes or None)}} in the order of the runs."""
    runs = collections.defaultdict(lambda: collections.defaultdict(list))
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("run_type") != "iteration" or run.get("error_occurred"):
                    continue
                task, who, *size = run["name"].split("/")
                waits = size[-1:] == ["real_time"]  # on the disk: processor time means nothing there
                if waits:
                    size.pop()
                time = run["real_time" if waits else "cpu_time"] * NANOSECONDS[run["time_unit"]]
                runs[task, "/".join(size)][who].append((time, run.get("bytes")))
    return {row: {who: statistics.median(times) for who, times in whos.items()} for row, whos in runs.items()}


def human(measured):
    time, size = measured
    if size is not None:
        return f"{size:.0f} bytes"
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if time >= scale:
            return f"{time / scale:.3g} {unit}"
    return f"{time:.3g} ns"


def limit_of(task, size):
    limit = LIMITS.get(task) or LIMITS.get(task.split("-")[0], {})
    return limit if isinstance(limit, float) else limit.get(size)


def verdict(value, limit):
    return "" if limit is None else f"{limit:.2f}" + (" MISSED" if value > limit else "")


def best_other(whos):
    """Returns the best of the others and the column to compare: the time, or the memory where measured."""
    column = 0 if whos["ours"][1] is None else 1
    others = {who: value for who, value in whos.items() if who != "ours" and not who.startswith("ours-")}
    who = "lower-bound" if "lower-bound" in others else min(others, key=lambda name: others[name][column], default=None)
    return who, column


def ratio(whos):
    """Returns ours divided by the best other; None if there is none."""
    who, column = best_other(whos) if "ours" in whos else (None, 0)
    return None if who is None else whos["ours"][column] / whos[who][column]


def rows(measured):
    for (task, size), whos in measured.items():
        if "ours" not in whos:
            continue
        ours, part = whos["ours"], ratio(whos)
        if part is None:
            yield task, size, human(ours), "", "", "", ""
            continue
        who = best_other(whos)[0]
        yield task, size, human(ours), human(whos[who]), who, f"{part:.2f}", verdict(part, limit_of(task, size))


def beside_itself(measured):
    """Returns the cost of loading one key of a million, divided by that of one of ten thousand."""
    per_key = [measured.get(("load", size), {}).get("ours") for size in ("10000", "1000000")]
    if all(per_key):
        growth = per_key[1][0] / per_key[0][0] / 100
        yield "load a key", "1M/10k", "", "", "itself", f"{growth:.2f}", verdict(growth, 3.0)


def main():
    markdown = sys.argv[1:2] == ["--markdown"]
    measured = medians(sys.argv[2:] if markdown else sys.argv[1:])
    head = ("task", "size", "ours", "best other", "", "ratio", "limit")
    table = [head, *beside_itself(measured), *rows(measured)]
    if markdown:
        table.insert(1, ("---",) * len(head))
        for row in table:
            print("| " + " | ".join(row) + " |")
        return
    widths = [max(len(row[i]) for row in table) for i in range(len(head))]
    for row in table:
        print("  ".join(f"{cell:<{width}}" if i in (0, 4) else f"{cell:>{width}}"
                        for i, (cell, width) in enumerate(zip(row, widths))).rstrip())


if __name__ == "__main__":
    main()
