#!/usr/bin/env python3
"""Takes out of the site's pages what Doxygen links and does not have.

finish_docs.py DIR

The line of shortcuts at the head of a page also names sections that are empty because all of their members
are private or have no documentation; and the list of all members those of a private base.
"""
import pathlib
import re
import sys

# In the list of all members, what a class has of a base that is its own affair.
PRIVATE = re.compile(r'  <tr[^>]*>(?:(?!</tr>).)*<span class="mlabel">private</span>(?:(?!</tr>).)*</tr>\n')
SUMMARY = re.compile(r'(<div class="summary">\n)(.*?)(</div>)', re.S)


def finished(text):
    """The page without shortcuts to nowhere."""
    def kept(match):
        links = re.findall(r'<a href="#([\w-]+)">([^<]*)</a>', match[2])
        there = [f'<a href="#{place}">{words}</a>' for place, words in links if f'name="{place}"' in text]
        return match[1] + " &#124;\n".join(there) + match[3]
    return SUMMARY.sub(kept, PRIVATE.sub("", text))


for page in pathlib.Path(sys.argv[1]).glob("*.html"):
    before = page.read_text(encoding="utf-8")
    after = finished(before)
    if after != before:
        page.write_text(after, encoding="utf-8")
