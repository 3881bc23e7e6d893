#!/usr/bin/env python3
"""Mutants of the library and the command: one small fault a time, and whether the tests see it.
mutants.py BUILD [--count N] [--seed S] [--skip N] [--quick] [PATTERN ...]
Each changes one line of a copy in BUILD, compiles and runs the tests of its module, the likeliest first, until one fails.
PATTERN selects lines by a part of PATH:LINE. The order is random: a run that is interrupted, or continued with --skip, is
a sample. --quick omits the stress tests: try its survivors again without it. Output: verdict, place, change, failed test.
"""
import argparse
import os
import random
import re
import resource
import shutil
import subprocess
import sys
from collections import Counter
from contextlib import suppress
from pathlib import Path

# Processor time detects a mutant that loops, however busy the machine is.
WALL_SECONDS, PROCESSOR_SECONDS, SWEEP_SECONDS = 240, 15, 150

# Patterns (outside comments, literals and template brackets) and their replacements.
OPERATORS = [(r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" > ", " >= "), (r" <= ", " < "), (r" >= ", " > "),
             (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" % ", " * "),
             (r" \+= ", " -= "), (r" -= ", " += "), (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
             (r"\bif \(!", "if ("), (r"\bif \((?!!)", "if (!")]
NUMBER = re.compile(r"(?<![\w.'])(\d+)(?=[\]),; ])")
STATEMENT = re.compile(r"^\s+(?!return\b|using\b|static_assert|break|continue|case|else|for|do\b|throw)"
                       r"[\w:.>*&()\[\]-]+( [-+|&]?= .*|\(.*\)|\+\+|--);$")
DECLARATION = re.compile(r"^\s+[\w:<>,]+( const)?[ *&]+\w+( =|\()")


def blank_literals(line):
    """Returns the line with strings, characters and comments as blanks, which then stay unchanged."""
    return re.sub(r'"(\\.|[^"\\])*"|(?<!\w)\'(\\.|[^\'\\])*\'|//.*', lambda found: "\0" * len(found[0]), line)


def mutants_of_line(line):
    text = blank_literals(line)
    if not text.strip("\0 ") or re.match(r"\s*(#|template|static_assert|using|namespace|extern)", text):
        return
    for pattern, instead in OPERATORS:
        for found in () if pattern in (r" < ", r" > ") and "operator" in text else re.finditer(pattern, text):
            yield line[:found.start()] + instead + line[found.end():]
    for found in NUMBER.finditer(text):
        yield line[:found.start()] + str(int(found[1]) + 1) + line[found.end():]
    if STATEMENT.match(text) and (not DECLARATION.match(text) or "->" in text):
        yield re.match(r"\s*", line)[0] + ";"


class Workshop:
    """A copy of the tracked files, built without optimisation, and the tests to run in it."""
    def __init__(self, build, quick):
        self.source, self.build, self.output, self.quick = build / "source", build / "objects", build / "output", quick
        names = subprocess.check_output(["git", "ls-files", "-z"], text=True).split("\0")[:-1]
        for copy in filter(os.path.isfile, self.source.rglob("*")):
            if str(copy.relative_to(self.source)) not in names:  # removed or renamed since the last run
                copy.unlink()
        for name in filter(os.path.isfile, names):
            copy = self.source / name  # replaces what an interrupted run left
            if not copy.is_file() or copy.read_bytes() != Path(name).read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(name, copy)
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []  # for the file mutated last
        for command in (["-S", self.source, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", *launcher,
                         "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DZELVANE_STRESS=ON", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"],
                        ["--build", self.build, "--target", "zelvane_tests", "zelvane_tests_static", "zelvane_stress"]):
            subprocess.run(["cmake", *command], stdout=subprocess.DEVNULL, check=True)

    def run(self, command):  # returns whether it succeeds in time
        seconds = SWEEP_SECONDS if "--brief" in command else PROCESSOR_SECONDS
        with open(self.output, "wb") as output:
            process = subprocess.Popen(
                command, stdout=output, stderr=output, stdin=subprocess.DEVNULL, start_new_session=True,
                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1)))
            try:
                return process.wait(WALL_SECONDS) == 0
            except subprocess.TimeoutExpired:
                return False
            finally:
                with suppress(ProcessLookupError):
                    os.killpg(process.pid, 9)
                process.wait()

    def suites(self, names, text=""):
        """Returns a filter for the suites in test files with these names that contain the text."""
        files = [file.read_text(encoding="utf-8") for file in (self.source / "tests").glob(names)]
        found = {name for file in files if text in file for name in re.findall(r"^TEST(?:_[FP])?\((\w+),", file, re.MULTILINE)}
        return ":".join(sorted(f"{name}.*:*/{name}.*" for name in found))

    def steps(self, path):
        """Returns the targets to build and the tests to run, first those with a header of the same directory."""
        shared, static = ([self.build / "tests" / name, "--gtest_brief=1", "--gtest_fail_fast"]
                          for name in ("zelvane_tests", "zelvane_tests_static"))
        command, internal = self.suites("zelctl*_test.cpp"), self.suites("*_internal_test.cpp")
        if "tools" in path.relative_to(self.source).parts:
            completion = [self.source / "tests/completion.sh", self.build / "tools/zelctl/zelctl", self.source / "tools/zelctl"]
            return [("zelctl", [[*shared, f"--gtest_filter={command}"], completion])]
        near = self.suites("*_test.cpp", f'#include "{path.relative_to(self.source).parent}/')
        steps = [("zelvane", [[*shared, f"--gtest_filter={near}-{command}"], [*shared, f"--gtest_filter=-{near}:{command}"]]),
                 ("zelvane_tests_static", [[*static, f"--gtest_filter={internal}"]]),
                 ("zelvane_stress", [[self.build / "stress/zelvane_stress", what, "--brief"] for what in ("faults", "powercuts")])]
        return steps[:2] if self.quick else steps

    def verdict(self, path, number, mutant):
        original = path.read_text(encoding="utf-8")
        lines = original.split("\n")
        lines[number] = mutant
        try:
            path.write_text("\n".join(lines), encoding="utf-8")
            for target, tests in self.steps(path):
                if not self.run(["cmake", "--build", self.build, "--target", target]):
                    return "no program", ""
                if not all(self.run(test) for test in tests):
                    failed = re.findall(r"\[  FAILED  \] ([\w./]+)", self.output.read_text(encoding="latin-1"))
                    return "killed", "".join(failed[:1])
            return "survived", ""
        finally:
            path.write_text(original, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("build", type=Path)
    for option, default in (("--count", 500), ("--seed", 1), ("--skip", 0)):
        parser.add_argument(option, type=int, default=default)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("patterns", nargs="*")
    choice = parser.parse_intermixed_args()
    workshop = Workshop(choice.build.resolve(), choice.quick)
    paths = sorted(path for folder in ("zelvane", "tools") for path in (workshop.source / folder).rglob("*.cpp"))
    place = {path: str(path.relative_to(workshop.source)) for path in paths}
    mutants = [(path, number, line, mutant) for path in paths
               for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"))
               if not choice.patterns or any(each in f"{place[path]}:{number + 1}:" for each in choice.patterns)
               for mutant in mutants_of_line(line)]
    if mutants and not all(workshop.run(test) for _, tests in workshop.steps(mutants[0][0]) for test in tests):
        sys.exit(f"the tests fail without a mutant: {workshop.output}")
    verdicts = Counter()
    chosen = random.Random(choice.seed).sample(mutants, min(choice.count, len(mutants)))
    for path, number, line, mutant in chosen[choice.skip:]:
        verdict, by = workshop.verdict(path, number, mutant)
        verdicts[verdict] += 1
        print(f"{verdict:10} {place[path]}:{number + 1}: {line.strip()}  =>  {mutant.strip()}  [{by}]", flush=True)
    print(f"mutants of {len(mutants)}: " + ", ".join(f"{n} {what}" for what, n in sorted(verdicts.items())))


if __name__ == "__main__":
    main()
