"""The operators: each yields the places of a source where a fault of its kind can be made, as
(start, end, what stands there instead)."""
import random
import re

_MILLISECONDS = re.compile(r"_ms\b|\bSleep\b")
# A call of a member or a function; what follows is its name.
_CALL = r"(?:[\w.:>\])-]|\(\))*?\b"
_LOCK = re.compile(r"(?:const )?[\w:]*(?:[gG]uard|uninterruptible|killable)(?:<[\w:]+>)? \w+(?:\(|\{|$)")
_RELEASE = re.compile(_CALL + r"""
    (?:Release|AddRef|CloseHandle|close\w*|reset|Unadvise|Decommit|DestroyWindow|Revoke|FreeLibrary
    |CoTaskMemFree|clearMediaType|done|terminate|discard|free\w*|drop\w*|unregister\w*|disconnect\w*|adopt
    |abandon|VariantClear|DeleteFileW|unlock|ReleaseMutex|letGo|release|retire|cancel|stop\w*|wait|ask|enter)
    \(.*\)$""", re.X | re.S)
_NOTIFICATION = re.compile(_CALL + r"""
    (?:emit\w*|set|wake|notify\w*|post\w*|Post\w+|SetEvent|SendMessage\w*|signal\w*|fault|progress|tell
    |report\w*|log\w*|log_\.write|publish|raise|update\w*)\(.*\)$""", re.X | re.S)
_CACHE = re.compile("(?:" + _CALL + r"""
    (?:refresh|updateSize|forget|invalidate\w*|flush\w*|find(?:New)?|rebuild|reload|readAhead|widenLine
    |changed|wideChanged|clear(?:All|Index|Standard)?|setRange|describe|setSizes|setFrames)\(.*\)
    |\w*(?:[sS]tale|[dD]irty|[kK]nown|position|last[A-Z]\w*|window\w*|Since\w+|Until\w+)_?\w*\ =\ .*)$
    """, re.X | re.S)
_RESET = re.compile(r"""[\w.>\[\]-]+_(?:\.\w+|->\w+)?\ =\ (?:\w+_\ =\ )*
    (?:0|false|true|nullptr|-1|~0u?l*|L|\{\}|\w+::\w+|[a-z]\w*|\d[\d.]*|~\w+|\w+\{\}|\w+\(\))\s*$""", re.X)
_ENDING = re.compile("done|close|stop|end|finish|terminat|disconnect|release|reset|drop|~|exit|leave|letGo|"
                     "live|restart|retire|init|start|replace|take|begin|open", re.I)
_DECLARATION = re.compile(r"(?:const |static |constexpr |auto |return\b|throw\b|break|continue|using |"
                          r"typedef |case |goto |else|[\w:<>]+[&*]* [\w&*])")
_ASSIGNMENT = re.compile(r"[\w.>\[\]-]+ [+|&-]?= |\+\+|--")
_WIDE = re.compile(r"\b(unsigned long long|long long|std::uint64_t|std::int64_t|ULONGLONG|LONGLONG)\b")
_NARROW = {"unsigned long long": "unsigned long", "long long": "long", "std::uint64_t": "std::uint32_t",
           "std::int64_t": "std::int32_t", "ULONGLONG": "ULONG", "LONGLONG": "LONG"}
_NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)([uUlL]*)(?![\w.'])")


def _without(source, statement):
    """The statement's lines are gone."""
    start = source.code.rfind("\n", 0, statement.start) + 1
    return start, statement.end + 1, ""


def _dropped(pattern):
    def operator(source):
        for statement in source.statements:
            if pattern.match(statement.text):
                yield _without(source, statement)
    return operator


def dropped_lock(source):
    yield from _dropped(_LOCK)(source)
    # A scope that does nothing but wait for a lock.
    for found in re.finditer(r"^ +\{ ([\w:]+ \w+\([^;]*\);) \}\n", source.code, re.M):
        yield found.start(), found.end(), ""


def off_by_one(source):
    swaps = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
    for found in re.finditer(r"(?<=\S) (<=?|>=?) (?=\S)", source.code):
        if "template" not in source.code[source.code.rfind("\n", 0, found.start()):found.start()]:
            yield found.start(1), found.end(1), swaps[found[1]]
    for found in re.finditer(r"(?<=[\w)\]]) [+-] 1(?:u?l*)\b(?!\.)", source.code):
        yield found.start(), found.end(), ""


def swapped_order(source):
    for one, other in zip(source.statements, source.statements[1:]):
        between = source.text[one.end:other.start]
        if between.strip() or between.count("\n") > 1 or one.indent != other.indent:
            continue
        if not _ENDING.search(source.function(one.start)) or one.text == other.text:
            continue
        guards = [bool(_LOCK.match(each.text)) for each in (one, other)]
        others = [each.text for each, guard in zip((one, other), guards) if not guard]
        if (any(_DECLARATION.match(text) for text in others)
                or all(_ASSIGNMENT.match(text) for text in others)):
            continue
        first, second = (source.text[each.start:each.end] for each in (one, other))
        yield one.start, other.end, second + between + first


def fewer_bits(source):
    for found in _WIDE.finditer(source.code):
        before, behind = source.code[:found.start()], source.code[found.end():found.end() + 60]
        cast = before.endswith("static_cast<") and behind.startswith(">")
        line = before[before.rfind("\n") + 1:]
        local = re.fullmatch(r" +(?:const |constexpr |mutable )?(?:std::atomic<)?", line) and \
            re.match(r">? \w+(?: =|;|\{)", behind)
        if cast or local:
            yield found.start(), found.end(), _NARROW[found[1]]


def ignored_result(source):
    for start, end, word, behind in source.conditions():
        text = source.text[start:end]
        leaves = re.match(r"(?:return|continue|break|closeFile|output)\b", behind)
        if word != "if" or "(" not in text or not leaves:
            continue
        init, semicolon, condition = text.rpartition("; ")
        declared = re.match(r"(?:const )?[\w:<>]+[&*]*(?: const)? (\w+) = ", text)
        if semicolon:
            yield start, end, f"{init}; ({condition}) && false"
        elif declared:
            yield start, end, f"{text}; {declared[1]} && false"
        else:
            yield start, end, f"({text}) && false"
    for statement in source.statements:
        found = re.match(r"(?:const )?bool (?:const )?\w+ = (?=.*\()", statement.text)
        if found and "[" not in statement.text:
            start = statement.start + found.end()
            yield start, statement.end - 1, f"(({source.text[start:statement.end - 1]}), true)"


def inverted_condition(source):
    for start, end, _, _ in source.conditions():
        text = source.text[start:end]
        init, semicolon, condition = text.rpartition("; ")
        declared = re.match(r"(?:const )?[\w:<>]+[&*]*(?: const)? \w+ = ", text)
        if not (declared and not semicolon):
            yield start, end, f"{init}{semicolon}!({condition})"
    for found in re.finditer(r"(?<=\s)(&&|\|\|)(?=\s)", source.code):
        yield found.start(), found.end(), "||" if found[1] == "&&" else "&&"


def wrong_constant(source):
    for found in _NUMBER.finditer(source.code):
        line = source.code[slice(*source.whole_lines(found.start(), found.end()))]
        if _MILLISECONDS.search(line) or re.search(r"(?:case|default)\b|operator", line):
            continue
        before = source.code[:found.start()]
        value, suffix = int(found[1], 0), found[2]
        if value == 0 and not re.search(r"[=!]= $|[<>]=? $|(?:for \([^;]*= )$", before):
            continue
        choice = random.Random(f"{source.path} {line}")
        other = value + 1 if value < 3 else choice.choice([value + 1, value - 1, value * 2])
        yield found.start(), found.end(), f"{other:{'#x' if found[1].startswith('0x') else 'd'}}{suffix}"


def longer_wait(source):
    for found in re.finditer(r"(?<=_ms = )\d+(?=;)|(?<=\bSleep\()\d+(?=\))", source.code):
        if found[0] != "0":
            yield found.start(), found.end(), found[0] + "0"


OPERATORS = {
    "off by one": off_by_one,
    "dropped lock": dropped_lock,
    "dropped release": _dropped(_RELEASE),
    "swapped order": swapped_order,
    "64 to 32 bits": fewer_bits,
    "ignored result": ignored_result,
    "missing reset": _dropped(_RESET),
    "wrong constant": wrong_constant,
    "inverted condition": inverted_condition,
    "time-out times ten": longer_wait,
    "missing notification": _dropped(_NOTIFICATION),
    "stale cache": _dropped(_CACHE),
}
