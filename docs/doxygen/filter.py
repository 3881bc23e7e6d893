#!/usr/bin/env python3
"""filter.py HEADER: the header as Doxygen wants it. Our headers are written to be read as they are, with plain comments;
here these become documentation. A comment holds for all declarations that follow it without an empty line: twins."""
import re
import sys


def as_line_comments(lines):
    """Comments of C headers in the other style; their text is indented by three."""
    inside = False
    for line in lines:
        end = line.endswith("*/")
        begin = re.match(r"(\s*)/\* ?(.*)$", line)
        if begin:
            line = begin[1] + "// " + begin[2]
        elif inside:
            line = "// " + line[3:].removeprefix("/")
        elif end:
            line = line.replace("/* ", "// ")
        if begin or inside:
            inside = not end
        yield line.removesuffix("*/").rstrip() if end else line.rstrip()


def escaped(text):
    """A comment is plain text: no commands, no HTML."""
    return re.sub(r"([\\@<>&#%])", r"\\\1", text)


def documentation(comment):
    """The lines of one comment; what is indented behind an empty line is code or a table."""
    verbatim = False
    yield "/**"
    for i, text in enumerate(comment):
        if not verbatim and text.startswith("  ") and (i == 0 or not comment[i - 1]):
            verbatim = True
            yield "@verbatim"
        if verbatim and not next((later for later in comment[i:] if later), "").startswith("  "):
            verbatim = False
            yield "@endverbatim"
        yield text if verbatim else escaped(text)
    if verbatim:
        yield "@endverbatim"
    yield "*/"


def section(comment):
    """A heading `---- Title. Text ----`, perhaps with more text below it: its title, and all of the text."""
    end = next(i for i, text in enumerate(comment) if text.endswith("----"))
    heading = " ".join(comment[: end + 1]).strip("- ")
    title, _, text = re.split(r"([.:] |$)", heading, 1)
    return title.rstrip("."), ([text] if text else []) + comment[end + 1 :]


class Filter:
    def __init__(self, name):
        self.name = name
        self.comment = []
        self.twin = []  # what holds for the next declaration, too
        self.above = []  # what holds for all that says nothing itself: the text of the section, or of the record
        self.in_section = False
        self.at_start = True  # of a declaration
        self.fresh = False  # a comment is directly above
        self.trailing = False  # the last line ended in a comment

    def close_section(self):
        if self.in_section:
            print("/** @} */")
        self.in_section, self.above = False, []

    def end_comment(self):
        """What the gathered comment turns out to be, seen from the line behind it."""
        if self.comment and self.comment[0].startswith("---- "):
            self.close_section()
            self.in_section = True
            title, text = section(self.comment)
            print(f"/** @name {escaped(title)} */\n/** @{{ */")
            self.above = list(documentation(text)) if any(text) else []
        elif self.comment:
            self.twin = list(documentation(self.comment))
            print("\n".join(self.twin))
            self.fresh = True
        self.comment = []

    def code(self, line):
        parts = re.match(r"(.*?)(?:\s*// ?(.*))?$", line)
        code, remark = parts[1], parts[2]
        if "= delete;" in code:
            return
        if re.match(r"( private:| protected:|\};|ZELVANE_C_END|#if|#endif|#include)", code):
            self.close_section()
        said = remark or self.fresh or re.match(r"(#(?!define)|\s*\}| \w+:$)", code)
        if self.at_start and not said and (self.twin or self.above):
            print("/** Destroys the object. */" if re.search(r"~\w+\(\)", code) else "\n".join(self.twin or self.above))
        if re.match(r"(typedef )?(class|struct) [^;]*$", code) and not self.fresh:
            print(f"/** @copydoc {self.name} */")
        if self.at_start and remark:
            self.twin = [f"/** {escaped(remark)} */"]
        self.at_start = bool(re.search(r"[;{}:]$", code)) or code.startswith("#")
        if re.match(r"typedef struct", code):
            self.above = self.twin
        elif code.startswith("} "):
            self.above = []
        if re.match(r"#(ifndef|include|endif)|\}|[^#].*[{:]$", code):
            self.twin = []
        self.trailing = remark is not None and not code.startswith(("#", "}"))
        if self.trailing:
            code += "  ///< " + escaped(remark)
        print(code)

    def run(self, lines):
        print("/** @file */")
        for line in lines:
            comment = re.match(r"(\s*)//(?: (.*))?$", line)
            if comment and self.trailing and len(comment[1]) > 8:
                print(comment[1] + "///< " + escaped(comment[2]))
            elif comment:
                self.trailing = False
                self.comment.append(comment[2] or "")
            elif not line:
                self.end_comment()
                print()
                self.twin, self.trailing = [], False
            else:
                self.fresh = False
                self.end_comment()
                self.code(line)
        self.close_section()


with open(sys.argv[1], encoding="utf-8") as header:
    Filter(sys.argv[1]).run(as_line_comments(header.read().splitlines()))
