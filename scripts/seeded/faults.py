"""The faults that can be seeded: those that the operators find in the sources, and those written by hand."""
import hashlib
import pathlib
import random
import tomllib

from seeded.operators import OPERATORS
from seeded.sources import Source

ROOT = pathlib.Path(__file__).resolve().parents[2]
HERE = pathlib.Path(__file__).resolve().parent
BY_HAND = "by hand"
EQUIVALENT = HERE / "equivalent.toml"


class Fault:
    """One change of one file (by hand, of several files): `edits` are (path, start, end, new text)."""

    def __init__(self, operator, sources, edits, name="", reason="", occurrence=0):
        self.operator, self.edits, self.name, self.reason = operator, edits, name, reason
        self._sources = sources
        path, start, _, _ = edits[0]
        source = sources[path]
        self.file, self.line = path, source.line(start)
        self.room = path.split("/")[1] if path.startswith("marvo/") else path.split("/")[0]
        self.function = source.function(start)
        self.old, self.new = zip(*(self._changed_lines(edit) for edit in edits))
        words = [name] if name else [path, operator, self.function, *self.old, *self.new, str(occurrence)]
        self.id = hashlib.sha1("\n".join(words).encode()).hexdigest()[:8]

    def _changed_lines(self, edit):
        """The lines that an edit touches, before and after it."""
        path, start, end, new = edit
        source = self._sources[path]
        first, behind = source.whole_lines(start, end)
        old = source.text[first:behind]
        return old, source.text[first:start] + new.rstrip("\n") * bool(new.strip()) + source.text[end:behind]

    @property
    def diff(self):
        """What changes, as in a unified diff."""
        lines = []
        for old, new in zip(self.old, self.new):
            before, after = old.split("\n"), new.split("\n") if new.strip() else []
            while before and after and before[0] == after[0]:
                del before[0], after[0]
            while before and after and before[-1] == after[-1]:
                del before[-1], after[-1]
            lines += [f"-{line}" for line in before] + [f"+{line}" for line in after]
        return "\n".join(lines)

    def files(self):
        """Yields (path, text, text with the fault)."""
        for path in dict.fromkeys(edit[0] for edit in self.edits):
            original = text = self._sources[path].text
            for _, start, end, new in sorted((edit for edit in self.edits if edit[0] == path),
                                             key=lambda edit: edit[1], reverse=True):
                text = text[:start] + new + text[end:]
            yield path, original, text


class Catalogue:
    """All faults that the sources offer, by room."""

    def __init__(self):
        paths = sorted(path for folder in ("marvo", "tools") for ending in ("h", "cpp")
                       for path in (ROOT / folder).glob(f"**/*.{ending}") if path.parent.name != "marvo")
        self.sources = {str(path.relative_to(ROOT)): Source(str(path.relative_to(ROOT)),
                                                            path.read_text(encoding="utf-8"))
                        for path in paths}
        self.problems = []
        self.by_hand = list(self._by_hand())
        self.faults = [*self._by_operators(), *self.by_hand]
        self.equivalent = self._equivalent()

    def _by_operators(self):
        for path, source in self.sources.items():
            seen, occurrences = set(), {}
            for operator, find in OPERATORS.items():
                for start, end, new in find(source):
                    # Several operators may find the same place.
                    if (start, end, new) in seen:
                        continue
                    seen.add((start, end, new))
                    fault = Fault(operator, self.sources, [(path, start, end, new)])
                    count = occurrences[fault.id] = occurrences.get(fault.id, -1) + 1
                    yield fault if count == 0 else Fault(operator, self.sources, [(path, start, end, new)],
                                                         occurrence=count)

    def _by_hand(self):
        names = set()
        for file in sorted(HERE.glob("patches/*.toml")):
            for entry in tomllib.loads(file.read_text(encoding="utf-8"))["fault"]:
                where = f"{file.relative_to(ROOT)}: '{entry.get('name', 'a fault without a name')}'"
                edits = [self._edit(where, change) for change in entry.get("change", [entry])]
                if entry.get("name") in names or not entry.get("reason"):
                    self.problems.append(f"{where} needs a name of its own and a reason")
                elif all(edits):
                    names.add(entry["name"])
                    yield Fault(BY_HAND, self.sources, edits, entry["name"], entry["reason"])

    def _edit(self, where, change):
        source = self.sources.get(change.get("file"))
        if not source:
            self.problems.append(f"{where}: there is no source {change.get('file')}")
            return None
        old, new = change["old"], change["new"]
        found = source.text.count(old)
        if found != 1:
            self.problems.append(f"{where}: its old text stands in {source.path} {found} times")
            return None
        start = source.text.index(old)
        return source.path, start, start + len(old), new

    def _equivalent(self):
        """Reasons by fault's id of the changes that nobody can observe."""
        if not EQUIVALENT.exists():
            return {}
        known = {fault.id for fault in self.faults}
        entries = tomllib.loads(EQUIVALENT.read_text(encoding="utf-8")).get("fault", [])
        for entry in entries:
            if entry["id"] not in known:
                self.problems.append(f"{EQUIVALENT.relative_to(ROOT)}: no fault has the id {entry['id']} any "
                                     f"more ({entry.get('file', '?')}): take the entry out")
        return {entry["id"]: entry["reason"] for entry in entries}

    def rooms(self):
        return sorted({fault.room for fault in self.faults})

    def sample(self, room, seed, operators=()):
        """A room's faults in the order in which a seed takes them: the operators in turn, so that those which
        find many places do not crowd out the others."""
        choice = random.Random(f"{seed} {room}")
        kinds = {}
        for fault in self.faults:
            if fault.room == room and (not operators or fault.operator in operators):
                kinds.setdefault(fault.operator, []).append(fault)
        for faults in kinds.values():
            choice.shuffle(faults)
        while kinds:
            for kind in choice.sample(sorted(kinds), len(kinds)):
                yield kinds[kind].pop()
                if not kinds[kind]:
                    del kinds[kind]
