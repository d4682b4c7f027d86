#!/usr/bin/env python3
"""Checks the documentation's site as it was made.

check_site.py DIR

  - every link inside of the site, its navigation and its search leads to a page, and to a place on it, that
    is there; what lies on other hosts is counted, not fetched
  - every picture is there, and says in words what it shows
  - no private member is listed
  - every class says what to include: "marvo.h", "marvo.hpp" or "marvo_c.h"
  - dvFE, every member of its class, and every function of marvo_c.h has a place

Names what is wrong and ends with status 1; otherwise prints the counts.
"""
import collections
import html.parser
import pathlib
import re
import sys
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[1]
REFERENCES = {"a": "href", "img": "src", "object": "data", "link": "href", "script": "src", "iframe": "src",
              "area": "href"}
INCLUDES = {'"marvo.h"', '"marvo.hpp"', '"marvo_c.h"'}
# In the scripts that the navigation and the search are made of.
IN_SCRIPTS = re.compile(r"""["']((?:\.\./)?[\w.-]+\.html(?:#[\w.-]*)?)["']""")


class Page(html.parser.HTMLParser):
    """What a page holds: places, references, and the words of its headings and its include line."""

    def __init__(self, text):
        super().__init__()
        self.places, self.references, self.unnamed, self.headings = set(), [], [], []
        self.codes, self.members, self.labels = [], [], []
        # A link that Doxygen took for text.
        self.broken = "&lt;a href" in text
        self._into = None
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.places.add(attributes.get("id"))
        if tag == "a":
            self.places.add(attributes.get("name"))
        target = attributes.get(REFERENCES.get(tag, ""))
        if target:
            self.references.append(target)
        if tag == "img" and "alt" not in attributes:
            self.unnamed.append(target)
        kind = attributes.get("class") or ""
        if tag == "h2" and "groupheader" in kind:
            self._begin(self.headings)
        elif tag == "h2" and "memtitle" in kind:
            self._begin(self.members)
        elif tag == "span" and kind == "mlabel":
            self._begin(self.labels)
        elif tag == "code":
            self._begin(self.codes)

    def _begin(self, into):
        into.append("")
        self._into = into

    def handle_data(self, data):
        if self._into is not None:
            self._into[-1] += data

    def handle_endtag(self, tag):
        if tag in ("h2", "code") or self._into is self.labels:
            self._into = None


def links_of(folder, pages):
    """Yields (where, target) of each link of the site."""
    for name, page in pages.items():
        for target in page.references:
            yield name, target
    for script in sorted(folder.glob("*.js")) + sorted(folder.glob("search/*.js")):
        text = script.read_text(encoding="utf-8")
        for target in IN_SCRIPTS.findall(text):
            yield str(script.relative_to(folder)), target


def dead(folder, pages, where, target):
    """Why a link leads nowhere, or nothing."""
    place, _, anchor = target.partition("#")
    path = folder / where
    if place:
        path = (path.parent / urllib.parse.unquote(place)).resolve()
    if not path.is_file() or folder not in path.parents:
        return f"{where}: there is no {target}"
    page = pages.get(str(path.relative_to(folder)))
    if anchor and page and urllib.parse.unquote(anchor) not in page.places:
        return f"{where}: no such place: {target}"
    return None


def misses(folder, pages):
    """Yields what the reference lacks, or should not have."""
    for name, page in pages.items():
        private = [heading for heading in page.headings if "Private" in heading]
        private += [f"{name} has a member marked so" for label in page.labels if label == "private"]
        if page.broken:
            yield f"{name}: shows a link as it is written"
        for heading in private:
            yield f"{name}: lists what is private: {heading.strip()}"
        if re.match(r"(class|struct|union)[^/]*(?<!-members)\.html$", name) and name != "classes.html":
            said = [code[8:].strip() for code in page.codes if code.startswith("#include")]
            if len(said) != 1 or said[0] not in INCLUDES:
                yield f"{name}: says to include {' and '.join(said) or 'nothing'}"
    listed = collections.defaultdict(set)
    for name, page in pages.items():
        for member in page.members:
            listed[name] |= set(re.findall(r"\w+", member))
    everywhere = set().union(*listed.values())
    if "dvFE" not in everywhere:
        yield "dvFE has no place"
    header = (ROOT / "marvo_c.h").read_text(encoding="utf-8")
    for function in re.findall(r"MARVO_CALL (marvo_\w+)\(", header):
        if function not in listed["marvo__c_8h.html"]:
            yield f"{function}() has no place"
    text = (ROOT / "marvo/frontend/front_end.h").read_text(encoding="utf-8").partition("private:")[0]
    for member in re.findall(r"^    [\w: *&]+?\b(\w+)\([^()]*\)(?: const| override)?;$", text, re.M):
        if member not in listed["classdvFrontEnd.html"]:
            yield f"dvFrontEnd::{member} has no place"


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    pages = {str(path.relative_to(folder)): Page(path.read_text(encoding="utf-8"))
             for path in sorted(folder.rglob("*.html"))}
    wrong, inside, outside = [], 0, set()
    for where, target in links_of(folder, pages):
        if re.match(r"[a-z]+:", target):
            outside.add(target)
            continue
        inside += 1
        wrong.append(dead(folder, pages, where, target))
    wrong += [f"{name}: no words for the picture {target}"
              for name, page in pages.items() for target in page.unnamed]
    wrong = sorted(set(filter(None, wrong)) | set(misses(folder, pages)))
    print(*wrong, sep="\n")
    counts = f"{len(pages)} pages, {inside} links inside, {len(outside)} to other hosts"
    sys.exit(f"check_site.py: {len(wrong)} faults in {counts}" if wrong else print(counts))


main()
