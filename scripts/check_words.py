#!/usr/bin/env python3
"""Checks what no formatter does: how lines look, includes, what headers begin with, plain English.

check_words.py [FILES...]  (default: all that git knows)

Names each place and exits with status 1 when there are any.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
LONGEST = 110
CODE = {".h", ".hpp", ".cpp", ".py", ".sh", ".cmake", ".cs", ".pas"}
TEXT = CODE | {".md", ".txt", ".json", ".script", ""}

# What a line must not hold, by what is said of it.
EVERYWHERE = {
    "a tab": re.compile(r"\t"),
    "blanks at its end": re.compile(r"[ \t\r]+$"),
    'not English, since "begin" is a verb': re.compile(r"\b(the|an?|its|each|at|in) begin\b", re.I),
}
IN_CODE = {
    # A row of a table in a comment cannot be broken.
    f"longer than {LONGEST} columns": re.compile(rf"^(?!\s*/// *\|).{{{LONGEST + 1}}}"),
    "an include that does not begin at the root": re.compile(r'#\s*include\s*"\.\./'),
}
# In C89 there are no line comments.
HEADER_START = re.compile(r"/// @file\n/// \S|/\*\* @file\n \* \S")


def findings(path):
    """Yields (line number, what is wrong)."""
    text = (ROOT / path).read_text(encoding="utf-8")
    rules = {**EVERYWHERE, **(IN_CODE if path.suffix in CODE else {})}
    if path.suffix in (".h", ".hpp") and not HEADER_START.match(text):
        yield 1, "a header begins with /// @file and a line that says what it is for"
    for number, line in enumerate(text.split("\n"), 1):
        for what, pattern in rules.items():
            if pattern.search(line):
                yield number, what


def main():
    names = sys.argv[1:] or subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True,
                                           check=True).stdout.splitlines()
    found = [f"{path}:{number}: {what}" for path in map(pathlib.Path, names)
             if path.suffix in TEXT and (ROOT / path).is_file()
             for number, what in findings(path)]
    print(*found, sep="\n")
    sys.exit(1 if found or not names else 0)


main()
