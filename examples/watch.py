#!/usr/bin/env python3
"""Prints the changes in a settings file: watch.py FILE [SECONDS between checks]

A save replaces the file, so check the name each time: an open file, or a watch on one, stays with the old file."""
import os
import sys
import time
import zelvane


def state(path):
    """Differs after each save: a replaced file has another inode, one changed in place another time or size."""
    try:
        status = os.stat(path)
    except FileNotFoundError:
        return None
    return status.st_ino, status.st_mtime_ns, status.st_size


def settings(path):
    try:
        file = zelvane.Config(path, read_only=True, strict=False)
    except FileNotFoundError:
        return {}
    return {(section, key): value for section in file for key, value in file[section].items()}


path, pause = sys.argv[1], float(sys.argv[2]) if len(sys.argv) > 2 else 1.0
seen, before = state(path), settings(path)
print(f"watching {path}: {len(before)} keys", flush=True)
while True:
    time.sleep(pause)
    if state(path) == seen:
        continue
    seen, now = state(path), settings(path)
    for section, key in sorted(before.keys() | now.keys()):
        old, new = before.get((section, key)), now.get((section, key))
        if old != new:
            print(f"[{section}] {key}: {old!r} -> {new!r}", flush=True)
    before = now
