#!/usr/bin/env python3
"""Makes the input of the documentation's site: headers and written pages as Doxygen wants them.

prepare_docs.py DIR

Fills DIR, which must not exist, with

  - every header that marvo.h, marvo.hpp and marvo_c.h reach, with the one to include named at each class;
  - the pages, each under its own name (docs/formats.md becomes formats.html) and with anchors that last: the
    heading "Raw records" of it is formats.html#formats_raw-records. A link to a page, to a heading or to a
    public header leads there; one to another file of the repository becomes its name;
  - the pictures that they show.
"""
import collections
import os
import pathlib
import re
import shutil
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
# What a program includes; a header that two of them reach belongs to the first.
UMBRELLAS = "marvo_c.h", "marvo.hpp", "marvo.h"
PAGES = [*sorted((ROOT / "docs").glob("*.md")), ROOT / "CONTRIBUTING.md", ROOT / "CHANGELOG.md"]
LABELS = {path: path.stem.lower() for path in PAGES}
FRONT = ROOT / "docs" / "index.md"
LABELS[ROOT / "README.md"] = LABELS[FRONT]
PICTURES = {".png", ".svg"}

DEFINITION = re.compile(r"\s*(?:typedef )?(?:class|struct|union) (?:MARVO_\w+(?:\([^)]*\))? )*\w+(?: final)?"
                        r"(?: : .*)?(?: \{.*)?$")
# A link, or code that is none.
SPAN = re.compile(r"(?P<image>!?)\[(?P<text>(?:[^][]|\[[^]]*\])*)\]\((?P<target>[^() ]+)\)"
                  r"|(?P<ticks>`+)(?!`).*?(?<!`)(?P=ticks)(?!`)")
# What is named in running text and has a place in the reference: a command of dvFE, a function of the C
# interface.
COMMAND = re.compile(r"`(dvFE\.(\w+)(?:\([^`\"]*\))?)`")
FUNCTION = re.compile(r"`((marvo_\w+)\([^`\"]*\))`")


def reached(name):
    """The header and all of ours that it includes, in that order."""
    found, waiting = [], [name]
    while waiting:
        header = waiting.pop(0)
        if header not in found and (ROOT / header).is_file():
            found.append(header)
            waiting += re.findall(r'^#include "([^"]+)"', (ROOT / header).read_text(encoding="utf-8"), re.M)
    return found


def public_headers():
    """Each public header with the one that a program includes to have it."""
    umbrella = {}
    for name in UMBRELLAS:
        for header in reached(name):
            umbrella.setdefault(header, name)
    return umbrella


def with_include_lines(text, include):
    """A header that tells at every class what to include."""
    lines = []
    for line in text.split("\n"):
        if DEFINITION.match(line):
            place = len(lines)
            while place and lines[place - 1].lstrip().startswith("template"):
                place -= 1
            above = lines[place - 1].strip() if place else ""
            if above.startswith("///"):
                lines.insert(place, f'/// @headerfile {include} "{include}"')
            elif above.endswith("*/"):
                lines.insert(place, f'/** @headerfile {include} "{include}" */')
        lines.append(line)
    return "\n".join(lines)


def slug(heading):
    """What stands for a heading in links, as on the pages of code hosts."""
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


class Page:
    """A page on its way from the repository to the site."""

    def __init__(self, path, headers, pictures):
        self.path, self.label, self.headers, self.pictures = path, LABELS[path], headers, pictures
        self.places = collections.Counter()
        self.known = {name: set(re.findall(r"\b(\w+)\(", (ROOT / name).read_text(encoding="utf-8")))
                      for name in ("marvo_c.h", "marvo/frontend/front_end.h") if name in headers}

    def link(self, match):
        """What stands for a link on the site."""
        image, text, target = match.group("image", "text", "target")
        if re.match(r"[a-z]+:", target):
            return match.group(0)
        place, _, heading = target.partition("#")
        file = self.path
        if place:
            file = pathlib.Path(os.path.normpath(self.path.parent / place))
        if not file.exists():
            sys.exit(f"{self.path.relative_to(ROOT)}: there is no {target}")
        if file.suffix in PICTURES:
            self.pictures.add(file)
            return f"{image}[{text}]({file.name})" if image else f'<a href="{file.name}">{text}</a>'
        if file in LABELS:
            label = LABELS[file]
            return f'<a href="{label}.html{f"#{label}_{heading}" if heading else ""}">{text}</a>'
        header = str(file.relative_to(ROOT))
        if header in self.headers:
            return f'@ref {header} "{text}"'
        return text

    def code(self, code):
        """A piece of code in running text, as a link when the reference has it."""
        for pattern, header, scope in ((COMMAND, "marvo/frontend/front_end.h", "dvFrontEnd::"),
                                       (FUNCTION, "marvo_c.h", "")):
            match = pattern.fullmatch(code)
            if match and match[2] in self.known.get(header, ()):
                return f'@ref {scope}{match[2]} "{match[1]}"'
        return code

    def line(self, line):
        """A line of running text."""
        heading = re.match(r"(#+) (.*)", line)
        line = SPAN.sub(lambda span: self.code(span[0]) if span["text"] is None else self.link(span), line)
        if heading:
            label = self.label
            if len(heading[1]) > 1:
                place = slug(heading[2])
                # The second of a name on a page gets a number.
                times = self.places[place]
                self.places[place] += 1
                label += f"_{place}{f'-{times}' if times else ''}"
            if self.path != FRONT or len(heading[1]) > 1:
                line += f" {{#{label}}}"
        if re.fullmatch(r"</?div[^>]*>", line):
            # Else Doxygen opens and closes it around every paragraph.
            return f"@htmlonly[block]\n{line}\n@endhtmlonly"
        return "" if re.fullmatch(r"\s*<!--.*-->", line) else line

    def text(self):
        """The page for the site."""
        lines, fence = [], ""
        for line in self.path.read_text(encoding="utf-8").split("\n"):
            if fence:
                fence = "" if line.strip() == fence else fence
            elif line.lstrip().startswith("```"):
                fence = "```"
            else:
                line = self.line(line)
            lines.append(line)
        return "\n".join(lines)


def main():
    folder, = map(pathlib.Path, sys.argv[1:])
    headers, pictures = public_headers(), set()
    layout = (ROOT / "docs" / "layout.xml").read_text(encoding="utf-8")
    for path in PAGES:
        if path != FRONT and f'url="{LABELS[path]}.html"' not in layout:
            sys.exit(f"{path.relative_to(ROOT)} has no place in the navigation, docs/layout.xml")
    for header, include in headers.items():
        (folder / header).parent.mkdir(parents=True, exist_ok=True)
        text = (ROOT / header).read_text(encoding="utf-8")
        (folder / header).write_text(with_include_lines(text, include), encoding="utf-8")
    (folder / "pages").mkdir()
    for path in PAGES:
        text = Page(path, headers, pictures).text()
        (folder / "pages" / f"{LABELS[path]}.md").write_text(text, encoding="utf-8")
    (folder / "pictures").mkdir()
    for picture in pictures:
        shutil.copy(picture, folder / "pictures")


main()
