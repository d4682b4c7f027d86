"""What watches over the documentation: the checks of its site and of its samples name what is wrong."""
import sys
import unittest

import scripted_tests
from scripted_tests import LONG, ROOT

FOLDER = scripted_tests.scratch()


def script(name, *arguments):
    """What a script says, and its status."""
    done = scripted_tests.complete([sys.executable, "-B", ROOT / "scripts" / name, *map(str, arguments)])
    return done.returncode, (done.stdout + done.stderr).decode()


class Checks(unittest.TestCase):
    def test_the_site(self):
        site = FOLDER / "small"
        (site / "search").mkdir(parents=True, exist_ok=True)
        (site / "b.html").write_text('<a id="here"></a><h2 class="memtitle">dvFE</h2>')
        (site / "classA.html").write_text("<code>#include &quot;core/a.h&quot;</code>"
                                          '<span class="mlabel">private</span>')
        (site / "search" / "all.js").write_text("['../b.html#there']; [\"gone.html\"]")
        (site / "a.html").write_text('<a href="b.html#here">1</a><a href="b.html">2</a>'
                                     '<a href="#mine" id="mine">3</a><a href="c.html">4</a><img src="d.png">'
                                     '<a href="b.html#nowhere">5</a>'
                                     '<a href="https://other.example/">6</a>&lt;a href="b.html"&gt;')
        status, said = script("check_site.py", site)
        self.assertEqual(1, status)
        lines = [line for line in said.splitlines() if "no place" not in line]
        self.assertEqual([
            "a.html: no such place: b.html#nowhere", "a.html: no words for the picture d.png",
            "a.html: shows a link as it is written", "a.html: there is no c.html",
            "a.html: there is no d.png",
            "classA.html: lists what is private: classA.html has a member marked so",
            'classA.html: says to include "core/a.h"', "search/all.js: no such place: ../b.html#there",
            "search/all.js: there is no gone.html"], lines[:-1])
        self.assertIn("dvFrontEnd::startRecord has no place", said)

    def test_the_samples(self):
        page = FOLDER / "page.md"
        for text, expected in (
                ("```\nls\n```", "no language that is known"),
                ("```console\n> echo now\nthen\n```", "echo now\nprints\nnow\nin place of\nthen"),
                ("```sh\ntrue\nfalse\ntrue\n```", "ended with status 1"),
                ("<!-- not run: why -->\nwords", "a comment on a block of code, and no block"),
                ("```ini\n[dv]\nplaydely = 5\n```", "there is no setting dv.playdely"),
                ("```json\n{]\n```", "JSONDecodeError"),
                ("```c\nint a;\n```", "a piece of C belongs to a file"),
                ("```python\n1\n```", "say which test does"),
                ("<!-- file: a -->\n```cpp\nint a;\n```\n```sh\ngrep int a\n```\n<!-- not run: x -->\n```sh\n"
                 "false\n```\n```json\n{}\n```", "2 run, 0 compiled, 1 kept as files that were built, "
                 "0 run by other parts, 1 marked as not run")):
            with self.subTest(text):
                page.write_text(text)
                status, said = script("run_samples.py", scripted_tests.PRESET, page.relative_to(ROOT))
                self.assertIn(expected, said)
                self.assertEqual("marked" not in expected, status != 0)

    @unittest.skipUnless(LONG, "fetches Chromium")
    def test_a_phone_shows_every_page(self):
        done = scripted_tests.complete([ROOT / "docs.sh", "--check"])
        self.assertEqual(0, done.returncode, (done.stdout + done.stderr).decode(errors="replace"))


scripted_tests.main()
