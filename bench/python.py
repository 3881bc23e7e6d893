#!/usr/bin/env python3
"""python.py ZELCTL: measures the Python package and its comparison programs. Prints JSON for table.py.

python-events: reads a log of a million events into a DataFrame; the comparison is `zelctl log count` of the same log.
python-settings: opens a settings file and reads ten keys; the comparison is configparser."""
import configparser
import json
import resource
import subprocess
import sys
import tempfile

import numpy
import pandas

import zelvane

EVENTS = 1_000_000
SECTIONS = 20
KEYS = 10


def log_file(folder):
    records = numpy.zeros(EVENTS, [("time", "<i4"), ("code", "<u2"), ("payload", "S62")])
    records["time"] = 1_100_000_000 + 60 * numpy.arange(EVENTS)
    records["code"] = numpy.arange(EVENTS) % 7
    records["payload"] = b"Mains failed, 52 V"
    records.tofile(folder + "/logevt.rgt")
    return folder + "/logevt.rgt"


def settings_file(folder):
    with open(folder + "/settings.cfg", "w", encoding="latin-1") as file:
        for section in range(SECTIONS):
            file.write(f"[SECTION{section}]\n" + "".join(f"KEY{key} = {key}\n" for key in range(KEYS)))
    return folder + "/settings.cfg"


def frame_of(path):
    return pandas.DataFrame(numpy.asarray(zelvane.EventLog(path).records))


def count_of(path, zelctl):
    return int(subprocess.run([zelctl, "log", "count", path, "--code", "3"], check=True, capture_output=True).stdout)


def ours(path):
    section = zelvane.Config(path, read_only=True)["SECTION7"]
    return [section[f"KEY{key}"] for key in range(KEYS)]


def theirs(path):
    parser = configparser.ConfigParser(interpolation=None)
    parser.read(path, encoding="latin-1")
    section = parser["SECTION7"]
    return [section[f"KEY{key}"] for key in range(KEYS)]


def processor_time():
    """Returns the time of this process and its finished children in seconds."""
    spent = [resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)]
    return sum(usage.ru_utime + usage.ru_stime for usage in spent)


def runs(name, work, times, rounds):
    for _ in range(rounds):
        start = processor_time()
        for _ in range(times):
            work()
        nanoseconds = (processor_time() - start) / times * 1e9
        yield {"name": name, "run_type": "iteration", "cpu_time": nanoseconds, "time_unit": "ns"}


def main():
    zelctl = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        log, settings = log_file(folder), settings_file(folder)
        assert (frame_of(log)["code"] == 3).sum() == count_of(log, zelctl)
        assert ours(settings) == theirs(settings)
        results = [
            *runs(f"python-events/ours/{EVENTS}", lambda: frame_of(log), 1, 5),
            *runs(f"python-events/zelctl/{EVENTS}", lambda: count_of(log, zelctl), 1, 5),
            *runs(f"python-settings/ours/{SECTIONS * KEYS}", lambda: ours(settings), 200, 5),
            *runs(f"python-settings/configparser/{SECTIONS * KEYS}", lambda: theirs(settings), 50, 5),
        ]
    json.dump({"benchmarks": results}, sys.stdout)


if __name__ == "__main__":
    main()
