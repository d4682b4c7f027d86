#!/usr/bin/env python3
"""Makes a test program of the C++ examples of a document.

extract_examples.py DOCUMENT OUTPUT

Every block marked as cpp becomes one test, named after the heading above it. The examples' `assert` becomes a
check of the test, which names the document's line. A block that asserts nothing is an error: it would prove
nothing but that it compiles.
"""
import re
import sys

PREAMBLE = """// Made from %s; to be changed there.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <source_location>
#include <string>

#include "marvo.h"

#undef assert

namespace {

void assert(bool holds, std::source_location where = std::source_location::current()) {
    EXPECT_TRUE(holds) << "line " << where.line() << " of %s";
}

} // namespace
"""


def examples(lines, language="cpp"):
    """Yields (heading, first line of the code, code) of each block that is marked with the language."""
    heading, code, first = "", None, 0
    for number, line in enumerate(lines, 1):
        if code is None and line.startswith("#"):
            heading = line.lstrip("#").strip()
        if code is None and line == "```" + language:
            code, first = [], number + 1
        elif code is not None and line == "```":
            yield heading, first, code
            code = None
        elif code is not None:
            code.append(line)
    if code is not None:
        sys.exit(f"the block that begins in line {first} does not end")


def main():
    document, output = sys.argv[1:]
    with open(document, encoding="utf-8") as source:
        lines = source.read().split("\n")
    text, used = [PREAMBLE % (document, document)], {}
    for heading, first, code in examples(lines):
        if not any("assert(" in line for line in code):
            sys.exit(f"{document}:{first}: the example asserts nothing")
        name = "".join(word.capitalize() for word in re.findall(r"[A-Za-z0-9]+", heading))
        used[name] = used.get(name, 0) + 1
        text.append(f"\nTEST(Example, {name}{used[name] if used[name] > 1 else ''}) {{")
        text.append(f'#line {first} "{document}"')
        text += code
        text.append("}\n")
    if not used:
        sys.exit(f"{document} holds no examples")
    with open(output, "w", encoding="utf-8") as program:
        program.write("\n".join(text))


if __name__ == "__main__":
    main()
