#!/usr/bin/env python3
"""manual.py ZELCTL: compares the settings in zelvane-cfg(5) with those that the command writes and checks. New files
show sections, keys and defaults; `cfg lint` reports range, words and replacement of a wrong value. Every manual page
that a page refers to must exist."""
import glob
import json
import os
import re
import subprocess
import sys
import tempfile

MANUAL = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "man")
WRONG = "x" * 400


def numbers(pattern, text):
    return [tuple(int(number) for number in found if number) for found in re.findall(pattern, text)]


def listed():
    """Maps file, section and key in the page to limits or words, and the default (None if there is none)."""
    with open(os.path.join(MANUAL, "zelvane-cfg.5"), encoding="ascii") as page:
        text = page.read().replace("\\-", "-")
    rows = {}
    for file, section, body in re.findall(r"^\.Ss (\S+) \[(\S+)\]\n(.*?)(?=^\.S[sh] )", text, re.S | re.M):
        for key, row in re.findall(r"^\.It Li (\w+)\n(.*?)(?=^\.It|^\.El)", body, re.S | re.M):
            default = re.search(r"default\s+(?:(-?\w+)\.$|\.Ql(?: (.*))? \.$)", row, re.I | re.M)
            # Only the text before the default: the text of a default can contain numbers.
            limits = numbers(r"(-?\d+) (?:to|or) (-?\d+)|up to (\d+) bytes", row[: default.start() if default else None])
            words = sorted(set(re.findall(r"^\.Ql ([A-Z]+|rs232|usbhid)\b", row, re.M)))
            rows[file, section, key] = (limits or words, default and (default[1] or default[2] or ""))
    return rows


def run(zelctl, root, *arguments, status=0):
    environment = {**os.environ, "HOME": root, "LC_ALL": "C"}
    done = subprocess.run([zelctl, *arguments], cwd=root, env=environment, capture_output=True, text=True, check=False)
    assert done.returncode == status, f"zelctl {' '.join(arguments)}: status {done.returncode}, {done.stderr}"
    return done.stdout


def written(zelctl, root):
    """Maps file, section and key in new files to the default. Each record is written completely."""
    for record in (["shutdown", "set"], ["client", "set"], ["ups", "set", root]):
        field = "upsType=0" if record[0] == "ups" else "langId=0"
        run(zelctl, root, *record, field, "--root", root)
    keys = {}
    for file in ("upscli.cfg", "upssrv.cfg", ".zelvane"):
        for section, values in json.loads(run(zelctl, root, "cfg", "list", file, "--json")).items():
            # The first entry of a list shows the default for all entries.
            keys.update({(file, section, "number" if section == "CLILIST" else k): v for k, v in values.items()})
    return keys


def checked(zelctl, root, file, section, key, fields):
    """Returns the limits or words of a key and the value that programs use, as `cfg lint` reports for a wrong value."""
    with open(os.path.join(root, file), "w", encoding="ascii") as wrong:
        wrong.write(f"[{section}]\n{'1' if key == 'number' else key} = {';'.join([WRONG] * fields)}\n")
    findings = json.loads(run(zelctl, root, "cfg", "lint", file, "--json", status=1))
    text = " ".join(finding["message"].replace(WRONG, "") for finding in findings)
    words = re.search(r"one of ([\w, ]+)", text)
    used = re.search(r"the programs use (-?\w+)", text)
    limits = numbers(r"(-?\d+) (?:to|or) (-?\d+)|at most (\d+) allowed", text)
    return limits or sorted(words[1].split(", ") if words else []), used and {"on": "1", "off": "0"}.get(used[1], used[1])


def faults(zelctl, root):
    page = listed()
    new = written(zelctl, root)
    lists = {"UPSTYPE", "USBHID", "SRVLIST", "INIT"}  # they come with the product; no command writes them
    for place in sorted(new.keys() | {p for p in page if p[0] in ("upscli.cfg", "upssrv.cfg", ".zelvane")}):
        default = page[place][1] if place in page else "not listed"
        if place not in new or default != new[place]:
            yield f"{place}: default {default} in zelvane-cfg(5), {new.get(place, 'no such key')} in a new file"
    for (file, section, key), (limits, default) in page.items():
        if (file, section, key) not in new and section not in lists:
            continue
        fields = len(limits) if key in ("ZELSRV", "number") else 1
        found, used = checked(zelctl, root, file.replace("NN", "03"), section, key, fields)
        if found != limits:
            yield f"{file}, [{section}] {key}: limits {limits} in zelvane-cfg(5), {found} reported by zelctl cfg lint"
        # Seconds in the file can be milliseconds in the programs.
        if default and len(limits) == 1 and len(limits[0]) == 2 and used not in (default, default + "000"):
            yield f"{file}, [{section}] {key}: default {default} in zelvane-cfg(5), a wrong value counts as {used}"
    for path in glob.glob(os.path.join(MANUAL, "*.[35]")):
        with open(path, encoding="ascii") as text:
            for name, number in re.findall(r"^\.Xr (zelvane\S*) (\d)", text.read(), re.M):
                if not os.path.exists(os.path.join(MANUAL, f"{name}.{number}")):
                    yield f"{os.path.basename(path)} refers to {name}({number}), which does not exist"
                if path.endswith(".3") and number != "3":
                    yield f"{os.path.basename(path)} refers to {name}({number}), which is in another package"


with tempfile.TemporaryDirectory() as scratch:
    found = list(faults(sys.argv[1], scratch))
print("\n".join(found))
sys.exit(1 if found else 0)
