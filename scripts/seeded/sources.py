"""C++ text as the operators see it: what is neither comment, text nor for the preprocessor, and where
statements and conditions stand. The sources are laid out by clang-format, which makes this easy: every body
has braces, and a statement that goes on in the next line is indented further there."""
import bisect
import re

_BLANKED = re.compile(r"""
    //[^\n]* | /\*.*?\*/                                    # comments
    | R"(?P<mark>[^\s()]*)\(.*?\)(?P=mark)"                 # raw texts
    | "(?:\\.|[^"\\\n])*" | (?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])*'
    | ^[ ]*\#(?:[^\n]*\\\n)*[^\n]*                          # the preprocessor's lines
    | \bstatic_assert\b[^;]*;
    """, re.S | re.M | re.X)
_FUNCTION = re.compile(r"^(?:[A-Za-z][^\n;=]*?[\s*&]|)([A-Za-z_~][\w:~]*(?:operator[^\s(]+)?)\(", re.M)
_STATEMENT = re.compile(r"^( +)((?:[^\s;{}][^\n;{}]*)(?:\n\1 [^\n;{}]*)*);[ ]*$", re.M)
_OPENING = re.compile(r"(?<![\w.])(if|while) \(")


def mask(text):
    """The text with everything that is no code blanked, so that all offsets stay."""
    return _BLANKED.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)


class Statement:
    """A statement of its own, from its first letter to its semicolon."""

    def __init__(self, start, end, indent, text):
        self.start, self.end, self.indent, self.text = start, end, indent, text


class Source:
    """A file: its `text`, its `code` (the text without what is no code), its statements."""

    def __init__(self, path, text):
        self.path, self.text, self.code = path, text, mask(text)
        self._lines = [0] + [found.end() for found in re.finditer("\n", text)]
        self._functions = [(found.start(), found[1]) for found in _FUNCTION.finditer(self.code)]
        self.statements = list(self._statements())

    def line(self, offset):
        return bisect.bisect_right(self._lines, offset)

    def whole_lines(self, start, end):
        """The lines that hold a range, without the last line's end."""
        first, behind = self._lines[self.line(start) - 1], self.text.find("\n", max(start, end - 1))
        return first, behind if behind >= 0 else len(self.text)

    def function(self, offset):
        """The name of the function that an offset lies in, as far as names at the start of a line tell."""
        place = bisect.bisect_right([start for start, _ in self._functions], offset)
        return self._functions[place - 1][1] if place else ""

    def _statements(self):
        for found in _STATEMENT.finditer(self.code):
            before = self.code[:found.start()].rstrip()
            if before.endswith((";", "{", "}", ":")):
                yield Statement(found.start(2), found.end(), found[1], found[2])

    def conditions(self):
        """Yields (start, end, word, what follows behind the brace) of each condition in parentheses."""
        for found in _OPENING.finditer(self.code):
            end = self.closing(found.end() - 1)
            if end and self.code.startswith(") {", end):
                yield found.end(), end, found[1], self.code[end + 3:end + 400].lstrip()

    def closing(self, opening):
        """The offset of the parenthesis that closes the one at `opening`."""
        depth = 0
        for found in re.compile("[()]").finditer(self.code, opening):
            depth += 1 if found[0] == "(" else -1
            if depth == 0:
                return found.start()
        return None
