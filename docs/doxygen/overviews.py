#!/usr/bin/env python3
"""overviews.py HTML: fails when the page of a public header lacks the header's overview, or a function has no text.
Overloads share the text of the first; without an empty line between them."""
import glob
import html
import os
import re
import sys


def words(text):
    """Letters and digits alone: marks of Markdown and of HTML differ, words do not."""
    return re.sub(r"[^a-z0-9]+", " ", html.unescape(text).lower())


missing = []
for header in glob.glob("zelvane/**/*.h", recursive=True):
    if header.endswith("_internal.h"):
        continue
    with open(header, encoding="utf-8") as file:
        text = file.read()
    overview = re.match(r"/// @file\n((?:///.*\n)+)", text)
    for bare in re.findall(r"(?<!@\{)\n\n *((?:ZELVANE_API|virtual) [^;{~]*\()(?![^\n]*///<)", text):
        missing.append(f"{header}: no comment says what this does: {bare}")
    page = os.path.join(sys.argv[1], os.path.basename(header).replace(".h", "_8h.html"))
    with open(page, encoding="utf-8") as file:
        shown = words(re.sub(r"<[^>]+>", "", file.read()))
    lines = [words(line[4:]).strip() for line in overview[1].splitlines()] if overview else ["no comment begins with @file"]
    missing += [f"{page} lacks the overview of {header}: {line}" for line in lines if line not in shown][:1]
print("\n".join(missing))
sys.exit(1 if missing else 0)
