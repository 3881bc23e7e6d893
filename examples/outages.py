#!/usr/bin/env python3
"""A month's mains failures: outages.py LOG YEAR-MONTH. Event 1 begins one, event 2 ends it."""
import sys
import zelvane

log, month, began = zelvane.EventLog(sys.argv[1]), sys.argv[2], None
for event in log:
    if event.code == 1 and began is None:
        began = event.time
    elif event.code == 2 and began is not None:
        if f"{began:%Y-%m}" == month:
            print(f"{began:%d %b %H:%M:%S}  {event.time - began}")
        began = None
