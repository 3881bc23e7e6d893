#!/usr/bin/env python3
"""Counts the events of a log, by way of ctypes: events.py FILE [LIBRARY]"""
import collections
import ctypes
import datetime
import struct
import sys

lib = ctypes.CDLL(sys.argv[2] if len(sys.argv) > 2 else "libzelvane.so.1")
lib.LogReaderOpen.restype = ctypes.c_void_p
lib.LogReaderOpen.argtypes = [ctypes.c_char_p]
lib.LogReaderRegCount.restype = ctypes.c_ulong
lib.LogReaderRegCount.argtypes = [ctypes.c_void_p]
lib.LogReaderReadReg.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ctypes.c_long), ctypes.c_char_p]
lib.LogReaderClose.argtypes = [ctypes.c_void_p]

log = lib.LogReaderOpen(sys.argv[1].encode())
if not log:
    sys.exit(f"{sys.argv[1]} cannot be read")

codes = collections.Counter()
when = ctypes.c_long()
record = ctypes.create_string_buffer(64)
for i in range(lib.LogReaderRegCount(log)):
    if lib.LogReaderReadReg(log, i, ctypes.byref(when), record):
        (code,) = struct.unpack_from("<H", record)
        codes[code] += 1
lib.LogReaderClose(log)

# Stamps are local time already.
last = datetime.datetime(1970, 1, 1) + datetime.timedelta(seconds=when.value)
print(f"{sum(codes.values())} events, the last one on {last:%d %B %Y at %H:%M:%S}")
for code, count in codes.most_common():
    print(f"  event {code}: {count} time{'s' if count > 1 else ''}")
