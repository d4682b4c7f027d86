"""What marvo_c.h declares, as the parser of clang sees it: for scripts that make something of it."""
import dataclasses
import json
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[1]
HEADER = ROOT / "marvo_c.h"
# The bytes of a number as an argument or a member; pointers are left out, since the target decides.
BYTES = {"char": 1, "short": 2, "int": 4, "marvo_i32": 4, "marvo_u32": 4, "marvo_i64": 8, "marvo_u64": 8,
         "double": 8}


@dataclasses.dataclass(frozen=True)
class Type:
    """`base` behind so many `stars`; an array of `count` when that is not 0."""
    base: str
    stars: int = 0
    const: bool = False
    count: int = 0

    @classmethod
    def of(cls, text):
        match = re.fullmatch(r"(const )?(?:struct |enum )?(\w+) ?(\**)(?:\[(\d+)\])?", text)
        if not match:
            raise SystemExit(f"make_bindings.py does not know the type '{text}' yet")
        const, base, stars, count = match.groups()
        return cls(base, len(stars), bool(const), int(count or 0))


@dataclasses.dataclass
class Named:
    """A member, a parameter or a constant; `detail` is its type or its value."""
    name: str
    detail: object
    comment: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Declared:
    """An enumeration, a structure, an opaque handle, a type of callbacks or a function. `comment` holds its
    paragraphs, `section` the title that it stands below in the header."""
    kind: str
    name: str
    comment: list
    section: str
    parts: list = dataclasses.field(default_factory=list)
    result: Type = None


@dataclasses.dataclass
class Header:
    """All of it, in the order of the header; `macros` are constants with (value, bytes, unsigned)."""
    macros: list
    declared: list

    def of(self, kind):
        return [entry for entry in self.declared if entry.kind == kind]

    def names(self, kind):
        return {entry.name for entry in self.of(kind)}


def _clang(text, *options):
    done = subprocess.run(["clang", "--target=i686-w64-mingw32", "-xc", f"-I{ROOT}", *options,
                           "-"], input=text, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise SystemExit(f"clang does not take the header:\n{done.stderr}")
    return done.stdout


def _plain(text):
    """A comment's text without its layout and Doxygen's marks of names."""
    return re.sub(r"::(?=marvo|MARVO)", "", " ".join(re.sub(r"^\s*\*", "", text, flags=re.M).split()))


def _comment(node, source=""):
    """The paragraphs of a declaration's comment. Those behind a member that is laid out over two lines clang
    does not see: they are taken from the source."""
    paragraphs = []

    def walk(part, prefix=""):
        if part["kind"] == "ParagraphComment":
            words = "".join(_text(inner) for inner in part.get("inner", ())).split()
            if words:
                paragraphs.append(prefix + " ".join(words))
        else:
            returns = part["kind"] == "BlockCommandComment" and part.get("name") in ("return", "returns")
            for inner in part.get("inner", ()):
                walk(inner, "Result: " if returns else "")

    def _text(part):
        return " ".join(part.get("args", [part.get("text", "")])) + " "

    for inner in node.get("inner", ()):
        if inner["kind"] == "FullComment":
            walk(inner)
    if not paragraphs and source:
        pattern = re.compile(r"\w+\s*=?\s*\d*\s*[,;]?\s*/\*\*<(.*?)\*/", re.S)
        behind = pattern.match(source, node["loc"]["offset"])
        paragraphs = [behind[1]] if behind else []
    return [_plain(paragraph) for paragraph in paragraphs]


def _value(node):
    """The value of an expression, where the tree has one."""
    if node["kind"] == "ConstantExpr":
        return int(node["value"])
    return next((value for inner in node.get("inner", ()) if (value := _value(inner)) is not None), None)


def _constants(node, source):
    value, constants = -1, []
    for inner in node.get("inner", ()):
        if inner["kind"] == "EnumConstantDecl":
            given = _value(inner)
            value = value + 1 if given is None else given
            constants.append(Named(inner["name"], value, _comment(inner, source)))
    return constants


def _callback(node, source):
    """The result and the parameters of a type of functions; their names stand in the source alone."""
    result, types = re.match(r"(.*?) ?\(\*\)\(([^()]*)\)", node["type"]["qualType"]).groups()
    begin = node["range"]["begin"]["offset"]
    text = source[begin:source.index(";", begin)]
    names = re.findall(r"(\w+)\s*[,)]", text[text.rindex("("):])
    return Type.of(result), [Named(name, Type.of(kind.strip()))
                             for name, kind in zip(names, types.split(","), strict=True)]


def read(path=HEADER):
    """Parses the header; ends the program with a sentence when something in it is not known yet."""
    source = path.read_text(encoding="ascii")
    include = f'#include "{path}"\n'
    names = [name for name in re.findall(r"^#define (MARVO_\w+) \S", _clang(include, "-E", "-dD"), re.M)
             if name != "MARVO_CALL"]
    probes = "".join(f"enum {{ value_{name} = (long long)({name}), bytes_{name} = sizeof({name}), "
                     f"unsigned_{name} = (__typeof__({name}))-1 > 0 }};\n" for name in names)
    tree = json.loads(_clang(include + probes, "-Wno-everything", "-fsyntax-only", "-fparse-all-comments",
                             "-Xclang", "-ast-dump=json"))
    sections = [(match.start(), match[1].strip()) for match in re.finditer(r"@name (.*)", source)]
    declared, probed = [], {}
    for node in tree["inner"]:
        kind, name, inner = node["kind"], node.get("name", ""), node.get("inner", [])
        offset = node["loc"].get("offset", 0)
        section = next((title for place, title in reversed(sections) if place < offset), "")
        entry = Declared("", name, _comment(node), section)
        if kind == "EnumDecl" and not name:
            probed |= {constant.name: constant.detail for constant in _constants(node, source)}
        elif kind == "EnumDecl":
            entry.kind, entry.parts = "enum", _constants(node, source)
        elif kind == "RecordDecl" and "completeDefinition" in node:
            entry.kind = "struct"
            entry.parts = [Named(field["name"], Type.of(field["type"]["qualType"]), _comment(field, source))
                           for field in inner if field["kind"] == "FieldDecl"]
        elif kind == "TypedefDecl" and "(*)" in node["type"]["qualType"]:
            entry.kind = "callback"
            entry.result, entry.parts = _callback(node, source)
        elif kind == "TypedefDecl" and node["type"]["qualType"] == f"struct {name}":
            # A structure that is complete stands in the list already.
            entry.kind = "" if any(other.name == name for other in declared) else "handle"
        elif kind == "FunctionDecl":
            entry.kind = "function"
            entry.result = Type.of(node["type"]["qualType"].partition("(")[0].strip())
            entry.parts = [Named(field["name"], Type.of(field["type"]["qualType"]))
                           for field in inner if field["kind"] == "ParmVarDecl"]
        if entry.kind:
            declared.append(entry)
    macros = []
    for name in names:
        value, count, unsigned = (probed[f"{what}_{name}"] for what in ("value", "bytes", "unsigned"))
        text = re.search(rf"/\*\*((?:(?!\*/).)*)\*/\s*#define {name}\b", source, re.S)
        comment = [_plain(text[1])] if text else []
        value = value % (1 << 8 * count) if unsigned else value
        macros.append(Named(name, (value, count, unsigned), comment))
    return Header(macros, declared)


def argument_bytes(parameter):
    """The bytes that an argument takes on the 32-bit stack."""
    kind = parameter.detail
    return 4 if kind.stars or kind.base.endswith("_fn") else max(4, BYTES[kind.base])
