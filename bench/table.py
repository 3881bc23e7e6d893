#!/usr/bin/env python3
"""Prints the medians of benchmark runs (Google Benchmark's JSON) as a table, with the ratio of ours to each peer."""
import collections
import json
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def medians(paths):
    """{(task, size): {who: nanoseconds}} in the order of the runs."""
    runs = collections.defaultdict(lambda: collections.defaultdict(list))
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("run_type") != "iteration":
                    continue
                task, who, *size = run["name"].split("/")
                runs[task, "/".join(size)][who].append(run["real_time"] * NANOSECONDS[run["time_unit"]])
    return {row: {who: statistics.median(times) for who, times in whos.items()} for row, whos in runs.items()}


def human(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def main():
    print(f"{'task':<22}{'size':>9}{'ours':>11}{'peer':>11}  {'':<12}{'ours/peer':>9}")
    for (task, size), whos in medians(sys.argv[1:]).items():
        ours = whos.pop("ours", None)
        if ours is None:
            continue
        for who, time in whos.items() or [("", None)]:
            ratio = "" if time is None else f"{ours / time:.2f}"
            print(f"{task:<22}{size:>9}{human(ours):>11}{'' if time is None else human(time):>11}  {who:<12}{ratio:>9}")


if __name__ == "__main__":
    main()
