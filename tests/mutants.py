#!/usr/bin/env python3
"""Mutants of the library and the command: one small fault a time, and whether the tests see it.

mutants.py BUILD [--count N] [--seed S] [PATTERN ...]

A copy of the sources in BUILD is configured once; each mutant changes one line there, compiles what depends on it and
runs the tests, the quickest first. PATTERN chooses source files by a part of their path. The survivors are printed with
their line before and after, and the last line counts the verdicts.
"""
import argparse
import os
import random
import re
import shutil
import subprocess
import sys
from collections import Counter
from pathlib import Path

COMPILE_SECONDS, TEST_SECONDS = 300, 90

# What is found (outside comments, literals and template brackets) and what takes its place.
OPERATORS = [(r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" > ", " >= "), (r" <= ", " < "),
             (r" >= ", " > "), (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "),
             (r" \* ", " / "), (r" % ", " * "), (r" \+= ", " -= "), (r" -= ", " += "), (r"\btrue\b", "false"),
             (r"\bfalse\b", "true"), (r"\bif \(!", "if ("), (r"\bif \((?!!)", "if (!")]
NUMBER = re.compile(r"(?<![\w.'])(\d+)(?=[\]),; ])")
STATEMENT = re.compile(r"^\s+(?!return\b|using\b|static_assert|break|continue|case|else|for|do\b|throw)"
                       r"[\w:.>*&()\[\]-]+( [-+|&]?= .*|\(.*\)|\+\+|--);$")
DECLARATION = re.compile(r"^\s+[\w:<>,]+( const)?[ *&]+\w+( =|\()")


def blank_literals(line):
    """The line with strings, characters and comments as blanks, so that nothing in them is changed."""
    return re.sub(r'"(\\.|[^"\\])*"|(?<!\w)\'(\\.|[^\'\\])*\'|//.*', lambda found: "\0" * len(found[0]), line)


def mutants_of_line(line):
    text = blank_literals(line)
    if not text.strip("\0 ") or re.match(r"\s*(#|template|static_assert|using|namespace|extern)", text):
        return
    for pattern, instead in OPERATORS:
        if pattern in (r" < ", r" > ") and "operator" in text:
            continue
        for found in re.finditer(pattern, text):
            yield line[:found.start()] + instead + line[found.end():]
    for found in NUMBER.finditer(text):
        yield line[:found.start()] + str(int(found[1]) + 1) + line[found.end():]
    if STATEMENT.match(text) and (not DECLARATION.match(text) or "->" in text):
        yield re.match(r"\s*", line)[0] + ";"


def mutants_of_file(path):
    lines = path.read_text(encoding="utf-8").split("\n")
    return [(path, number, line, mutant) for number, line in enumerate(lines) for mutant in mutants_of_line(line)]


class Workshop:
    """A copy of the tracked files, built without optimisation, and the tests to run in it."""

    def __init__(self, build):
        self.source, self.build = build / "source", build / "objects"
        names = subprocess.check_output(["git", "ls-files", "-z"], text=True).split("\0")[:-1]
        for name in filter(os.path.isfile, names):
            copy = self.source / name  # with a time of its own where it differs: what an interrupted run left is compiled anew
            if not copy.is_file() or copy.read_bytes() != Path(name).read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(name, copy)
        self.run(["cmake", "-S", self.source, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                  "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DZELVANE_STRESS=ON"], 600, check=True)
        self.run(["cmake", "--build", self.build], 3600, check=True)

    @staticmethod
    def run(command, seconds, check=False):
        """Whether the command succeeds in time. What it starts ends with it."""
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   stdin=subprocess.DEVNULL, start_new_session=True)
        try:
            good = process.wait(seconds) == 0
        except subprocess.TimeoutExpired:
            good = False
        finally:
            try:
                os.killpg(process.pid, 9)
            except ProcessLookupError:
                pass
            process.wait()
        if check and not good:
            sys.exit(f"failed: {' '.join(map(str, command))}")
        return good

    def tests(self, path):
        of_command = "/tools/" in str(path)
        static = [self.build / "tests/zelvane_tests_static", "--gtest_brief=1", "--gtest_fail_fast"]
        shared = [self.build / "tests/zelvane_tests", "--gtest_brief=1", "--gtest_fail_fast", "--gtest_filter=*elctl*"]
        faults = [self.build / "stress/zelvane_stress", "faults", "--brief"]
        return [("zelvane_tests", [shared])] if of_command else [
            ("zelvane_tests_static", [static]), ("all", [shared, faults])]

    def verdict(self, path, number, mutant):
        original = path.read_text(encoding="utf-8")
        lines = original.split("\n")
        lines[number] = mutant
        try:
            path.write_text("\n".join(lines), encoding="utf-8")
            for target, tests in self.tests(path):
                if not self.run(["cmake", "--build", self.build, "--target", target], COMPILE_SECONDS):
                    return "does not compile"
                if not all(self.run(test, TEST_SECONDS) for test in tests):
                    return "killed"
            return "survived"
        finally:
            path.write_text(original, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("patterns", nargs="*")
    choice = parser.parse_intermixed_args()
    workshop = Workshop(choice.build.resolve())
    for _, tests in workshop.tests(Path("zelvane")):
        if not all(workshop.run(test, TEST_SECONDS) for test in tests):
            sys.exit("the tests fail without a mutant")
    paths = sorted(path for folder in ("zelvane", "tools") for path in (workshop.source / folder).rglob("*.cpp")
                   if not choice.patterns or any(each in str(path.relative_to(workshop.source)) for each in choice.patterns))
    mutants = [mutant for path in paths for mutant in mutants_of_file(path)]
    chosen = random.Random(choice.seed).sample(mutants, min(choice.count, len(mutants)))
    verdicts = Counter()
    for path, number, line, mutant in sorted(chosen):
        verdict = workshop.verdict(path, number, mutant)
        verdicts[verdict] += 1
        if verdict == "survived":
            print(f"{path.relative_to(workshop.source)}:{number + 1}\n  - {line.strip()}\n  + {mutant.strip()}", flush=True)
    print(f"mutants: {len(chosen)} of {len(mutants)}: " + ", ".join(f"{n} {what}" for what, n in sorted(verdicts.items())))


if __name__ == "__main__":
    main()
