#!/usr/bin/env python3
"""Makes the declarations of marvo_c.h for other languages.

make_bindings.py          writes the files of bindings/
make_bindings.py --check  only says which of them are not what marvo_c.h gives; then the status is 1
"""
import html
import keyword
import sys
import textwrap

import c_header
from c_header import ROOT, Type

MADE = "Made by scripts/make_bindings.py from marvo_c.h; not to be changed here."


def lines_of(text, prefix, width=108):
    """A text as lines that begin with the prefix."""
    return [prefix + line for line in textwrap.wrap(text, width - len(prefix), break_long_words=False,
                                                    break_on_hyphens=False)]


def doc_lines(paragraphs, prefix):
    return [line for paragraph in paragraphs for line in lines_of(paragraph, prefix)]


def with_comment(code, comment, mark, indent):
    """A line of code with its comment behind it, or in front of it when both are too long for a line."""
    text = " ".join(comment)
    behind = f"{indent}{code}  {mark}{text}"
    if not text:
        return [indent + code]
    return [behind] if len(behind) <= 108 else [*lines_of(text, indent + mark), indent + code]


def wrapped(code, indent):
    """A declaration as lines, the later ones further in."""
    return textwrap.wrap(code, 108, initial_indent=indent, subsequent_indent=indent + "    ")


def value_of(constant):
    """A constant's value, whether of an enumeration or a macro."""
    return constant.detail[0] if isinstance(constant.detail, tuple) else constant.detail


def roles(function):
    """The parameters in groups, each with what it is for:

    ("callback", function, ...)  called by the library; the `user` behind it belongs to it
    ("text", buffer, capacity, needed)  text that the library gives
    ("filled", buffer, capacity)        memory that the library fills
    ("bytes", data, count)              memory that the library reads
    ("structure", pointer)              a structure that the library fills
    ("gives", pointer)                  a number or a handle that the library gives
    ("takes", value)                    anything else"""
    groups, parts = [], list(function.parts)
    while parts:
        first = parts.pop(0)
        kind = first.detail
        sized = bool(parts) and parts[0].name in ("capacity", "bytes")
        if kind.base.endswith("_fn"):
            groups.append(("callback", first))
        elif first.name == "user":
            groups.append(("user", first))
        elif kind.base == "char" and kind.stars and not kind.const:
            groups.append(("text", first, parts.pop(0), parts.pop(0)))
        elif kind.base in ("void", "short") and kind.stars and sized:
            groups.append(("bytes" if kind.const else "filled", first, parts.pop(0)))
        elif kind.stars and not kind.const and kind.base in c_header.BYTES or kind.stars == 2:
            groups.append(("gives", first))
        elif kind.stars == 1 and not kind.const and kind.base.endswith(("_info", "_result", "_event")):
            groups.append(("structure", first))
        else:
            groups.append(("takes", first))
    return groups


class Python:
    """bindings/python/marvo.py"""
    path = "bindings/python/marvo.py"
    NUMBERS = {"char": "c_char", "short": "c_int16", "int": "c_int32", "marvo_i32": "c_int32",
               "marvo_u32": "c_uint32", "marvo_i64": "c_int64", "marvo_u64": "c_uint64", "double": "c_double"}

    def name(self, name):
        return name + "_" if keyword.iskeyword(name) else name

    def type(self, kind):
        if kind.base == "void" and not kind.stars:
            return "None"
        if kind.base in ("void", "short"):
            return "ctypes.c_void_p"
        if kind.base == "char" and kind.stars:
            return "_Text" if kind.const else "ctypes.POINTER(ctypes.c_char)"
        base = f"ctypes.{self.NUMBERS[kind.base]}" if kind.base in self.NUMBERS else kind.base
        if kind.count:
            return f"{base} * {kind.count}"
        # A handle is a pointer already.
        for _ in range(kind.stars - (kind.base in self.handles)):
            base = f"ctypes.POINTER({base})"
        return base

    def docstring(self, paragraphs, indent):
        text = "\n\n".join("\n".join(lines_of(paragraph, indent, 104)) for paragraph in paragraphs).strip()
        end = f"\n{indent}" if "\n" in text else ""
        return [f'{indent}"""{text}{end}"""'] if text else []

    def structure(self, entry):
        yield from ["", "", f"class {entry.name}(_Structure):", *self.docstring(entry.comment, "    "),
                    "    _fields_ = ["]
        for field in entry.parts:
            yield from with_comment(f'("{self.name(field.name)}", {self.type(field.detail)}),', field.comment,
                                    "# ", " " * 8)
        yield "    ]"

    def callback(self, entry):
        # What the library passes into a callback stays its own type there.
        types = [self.type(entry.result),
                 *("ctypes.c_char_p" if part.detail.base == "char" else self.type(part.detail)
                   for part in entry.parts)]
        of = ", ".join(part.name for part in entry.parts[1:])
        return ["", "", *lines_of(f"{entry.name}({of}). {' '.join(entry.comment)}", "# "),
                f"{entry.name} = _callback({', '.join(types)})"]

    def function(self, entry):
        parameters, before, arguments, gives, waits = [], [], [], [], False
        for role, first, *rest in roles(entry):
            name = self.name(first.name)
            if role == "text":
                gives, arguments = ["text"], [*arguments, "buffer", "capacity", "needed"]
            elif role in ("filled", "bytes"):
                parameters.append(name)
                unit = c_header.BYTES.get(first.detail.base, 1)
                before.append(f"{name}_at, {name}_{rest[0].name} = _memory({name}, {unit})")
                arguments += [f"{name}_at", f"{name}_{rest[0].name}"]
            elif role in ("structure", "gives"):
                kind = self.type(Type(first.detail.base, first.detail.stars - 1))
                before.append(f"{name} = {kind}()")
                arguments.append(f"ctypes.byref({name})")
                gives.append(name if role == "structure" or kind in self.handles else f"{name}.value")
            elif role == "callback":
                parameters.append(name if entry.name.startswith("marvo_set_") else f"{name}=None")
                waits = self.waits[first.detail.base]
                before.append(f"{name} = _called({first.detail.base}, {name}, "
                              f"{'failures' if waits else None})")
                arguments.append(name)
            elif role == "user":
                arguments.append("None")
            else:
                optional = first.detail.const and first.detail.base not in ("char", "void")
                parameters.append(f"{name}=None" if optional else name)
                arguments.append(name)
        # A parameter that may be left out stands behind those that may not.
        parameters.sort(key=lambda parameter: "=" in parameter)
        call = f"library.{entry.name}({', '.join(arguments)})"
        callbacks = [part.name for part in entry.parts if part.detail.base.endswith("_fn")]
        yield from ["", "", f"def {entry.name}({', '.join(parameters)}):",
                    *self.docstring(entry.comment, "    ")]
        if waits:
            yield "    failures = []"
        yield from (f"    {line}" for line in before)
        if gives == ["text"]:
            inner = ", ".join(arguments[:-3] + ["*buffer"])
            yield f"    return _text(lambda *buffer: library.{entry.name}({inner}))"
        elif entry.result.base == "int":
            yield f"    _check({call}{', failures' if waits else ''})"
            if callbacks and not waits:
                yield f'    _kept["{entry.name}"] = {callbacks[0]}'
            if gives:
                yield f"    return {', '.join(gives)}"
        elif entry.result.stars:
            yield f'    return {call}.decode("utf-8")'
        else:
            yield f"    return {call}"

    def write(self, header):
        self.handles = header.names("handle")
        self.waits = {entry.name: entry.result.base != "void" for entry in header.of("callback")}
        yield from PYTHON.format(made=MADE).rstrip().splitlines()
        yield ""
        for macro in header.macros:
            yield from with_comment(f"{macro.name} = {value_of(macro)}", macro.comment, "# ", "")
        for entry in header.declared:
            if entry.kind == "enum":
                yield from ["", *lines_of(f"{entry.name}: {' '.join(entry.comment)}", "# ")]
                for constant in entry.parts:
                    yield from with_comment(f"{constant.name} = {constant.detail}", constant.comment, "# ",
                                            "")
            elif entry.kind == "handle":
                yield from ["", "", f"class {entry.name}(ctypes.c_void_p):",
                            *self.docstring(entry.comment, "    ")]
            elif entry.kind == "struct":
                yield from self.structure(entry)
            elif entry.kind == "callback":
                yield from self.callback(entry)
        yield from ["", "", "_FUNCTIONS = {"]
        for entry in header.of("function"):
            result = "ctypes.c_char_p" if entry.result.stars else self.type(entry.result)
            types = ", ".join(self.type(part.detail) for part in entry.parts)
            yield from lines_of(f'"{entry.name}": ({result}, [{types}]),', "    ")
        yield "}"
        for entry in header.of("function"):
            for line in self.function(entry):
                # Only calls are longer than a line, and they may go on where a blank is.
                yield from [line] if len(line) <= 108 else wrapped(line.strip(), "    ")
        yield from PYTHON_END.rstrip().splitlines()


PYTHON = '''"""marvo from Python, by ctypes. {made}

The names are those of marvo_c.h. What a function gives through pointers there, it returns here; a result
that is not MARVO_OK is raised as an Error. Text is str; memory is anything with a buffer (bytes, bytearray,
array); a callback is any callable, without the header's `user`. A structure has its `size` from the start.

    import marvo
    reader = marvo.marvo_reader_open("match.dv")
    print(marvo.marvo_reader_info(reader).frames)
    marvo.marvo_reader_close(reader)

marvo.dll is looked for where MARVO_DLL says, else beside this file, else where Windows looks; load() takes
another. The DLL is for programs of its own width: a 32-bit Python for the 32-bit one.
"""
import ctypes
import os

library = None


class Error(Exception):
    """A function's result that is not MARVO_OK, with the library's sentence; `code` is the result."""

    def __init__(self, code, text):
        super().__init__(text)
        self.code = code


class _Structure(ctypes.Structure):
    def __init__(self, *arguments, **members):
        super().__init__(*arguments, **members)
        self.size = self.size or ctypes.sizeof(self)


class _Text(ctypes.c_char_p):
    @classmethod
    def from_param(cls, value):
        return ctypes.c_char_p(value.encode("utf-8") if isinstance(value, str) else value)


# Functions of the library are stdcall on Windows. Elsewhere there is none, but these can be looked at.
_callback = getattr(ctypes, "WINFUNCTYPE", ctypes.CFUNCTYPE)
# Callbacks that were set: what the library may call must not be collected.
_kept = {{}}


def _check(result, failures=()):
    if failures:
        raise failures[0]
    if result != 0:
        raise Error(result, library.marvo_last_error().decode("utf-8"))


def _text(ask):
    capacity = 256
    while True:
        buffer, needed = ctypes.create_string_buffer(capacity), ctypes.c_uint32()
        result = ask(buffer, capacity, ctypes.byref(needed))
        if result != MARVO_E_BUFFER:
            _check(result)
            return buffer.value.decode("utf-8")
        capacity = max(needed.value, 2 * capacity)


def _memory(data, unit):
    """Where memory is, and how many units it has."""
    if data is None or isinstance(data, bytes):
        return data, len(data or b"") // unit
    view = memoryview(data).cast("B")
    return (ctypes.c_char * len(view)).from_buffer(view), len(view) // unit


def _plain(value):
    """What a callback gets, as something that may be kept."""
    if isinstance(value, bytes):
        return value.decode("utf-8")
    if hasattr(value, "contents"):
        return type(value.contents).from_buffer_copy(value.contents)
    return value


def _called(kind, function, failures):
    """A function as the library calls it. What one raises that may end the work goes into `failures`."""
    if function is None:
        return kind()

    def call(_, *arguments):
        try:
            return function(*map(_plain, arguments)) or 0
        except BaseException as failure:
            if failures is None:
                raise
            failures.append(failure)
            return 1
    return kind(call)
'''

PYTHON_END = '''

def load(path=None):
    """Loads the DLL from a file. Done by the import on Windows."""
    global library
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), "marvo.dll")
    path = path or os.environ.get("MARVO_DLL") or (beside if os.path.exists(beside) else "marvo.dll")
    loaded = getattr(ctypes, "WinDLL", ctypes.CDLL)(path)
    for name, (result, arguments) in _FUNCTIONS.items():
        function = getattr(loaded, name)
        function.restype, function.argtypes = result, arguments
    library = loaded


if os.name == "nt":
    load()
'''


class CSharp:
    """bindings/csharp/Marvo.cs"""
    path = "bindings/csharp/Marvo.cs"
    NUMBERS = {"char": "byte", "short": "short", "int": "int", "marvo_i32": "int", "marvo_u32": "uint",
               "marvo_i64": "long", "marvo_u64": "ulong", "double": "double", "void": "void"}
    RESERVED = {"in", "out", "event", "from", "ref", "object", "string", "params", "base", "is", "as", "lock"}
    TEXT = "[MarshalAs(UnmanagedType.LPUTF8Str)] string"

    def name(self, name):
        return "@" + name if name in self.RESERVED else name

    def type(self, kind):
        return self.NUMBERS.get(kind.base, kind.base)

    def summary(self, paragraphs, indent):
        text = html.escape(" ".join(paragraphs), quote=False)
        if not text:
            return []
        lines = lines_of(text, f"{indent}/// ")
        if len(lines) == 1 and len(lines[0]) < 80:
            return [f"{indent}/// <summary>{lines[0].strip()[4:]}</summary>"]
        return [f"{indent}/// <summary>", *lines, f"{indent}/// </summary>"]

    def parameter(self, part, memory=False):
        kind, name = part.detail, self.name(part.name)
        if kind.base == "char" and kind.const:
            return f"{self.TEXT} {name}"
        if memory or kind.base in ("char", "short") and kind.stars:
            of = "short" if kind.base == "short" else "byte"
            return f"{'[In]' if kind.const else '[In, Out]'} {of}[] {name}"
        if kind.base == "void" or kind.base in self.handles:
            return f"{'out ' if kind.stars == 2 else ''}IntPtr {name}"
        if kind.stars:
            return f"{'out' if kind.base in c_header.BYTES else 'ref'} {self.type(kind)} {name}"
        return f"{self.type(kind)} {name}"

    def parameters(self, entry):
        return ", ".join(self.parameter(part, role in ("filled", "bytes") and place == 0)
                         for role, *parts in roles(entry) for place, part in enumerate(parts))

    def structure(self, entry):
        yield from ["", *self.summary(entry.comment, "    "), "    [StructLayout(LayoutKind.Sequential)]",
                    f"    public struct {entry.name}", "    {"]
        for field in entry.parts:
            yield from self.summary(field.comment, " " * 8)
            if field.detail.count:
                yield f"        [MarshalAs(UnmanagedType.ByValArray, SizeConst = {field.detail.count})]"
                yield f"        public {self.type(field.detail)}[] {self.name(field.name)};"
            else:
                yield f"        public {self.type(field.detail)} {self.name(field.name)};"
        yield from ["", "        /// <summary>One with its size set, the rest 0.</summary>",
                    f"        public static {entry.name} New()", "        {",
                    f"            return new {entry.name}",
                    f"            {{ size = (uint)Marshal.SizeOf(typeof({entry.name})) }};",
                    "        }", "    }"]

    def write(self, header):
        self.handles = header.names("handle")
        yield from CSHARP.replace("{made}", MADE).rstrip().splitlines()
        for entry in header.declared:
            if entry.kind == "enum":
                yield from ["", *self.summary(entry.comment, "    "), f"    public enum {entry.name}",
                            "    {"]
                for constant in entry.parts:
                    yield from self.summary(constant.comment, " " * 8)
                    yield f"        {constant.name} = {constant.detail},"
                yield "    }"
            elif entry.kind == "struct":
                yield from self.structure(entry)
            elif entry.kind == "callback":
                of = ", ".join(self.parameter(part) for part in entry.parts)
                declared = f"public delegate {self.type(entry.result)} {entry.name}({of});"
                yield from ["", *self.summary(entry.comment, "    "),
                            "    [UnmanagedFunctionPointer(CallingConvention.StdCall)]",
                            *wrapped(declared, " " * 4)]
        yield from CSHARP_CLASS.rstrip().splitlines()
        for macro in header.macros:
            value, size, unsigned = macro.detail
            kind = {(4, 0): "int", (4, 1): "uint", (8, 0): "long", (8, 1): "ulong"}[size, unsigned]
            yield from ["", *self.summary(macro.comment, " " * 8),
                        f"        public const {kind} {macro.name} = {value};"]
        for entry in header.of("function"):
            result = "IntPtr" if entry.result.stars else self.type(entry.result)
            declared = f"public static extern {result} {entry.name}({self.parameters(entry)});"
            yield from ["", *self.summary(entry.comment, " " * 8),
                        "        [DllImport(Dll, CallingConvention = CallingConvention.StdCall)]",
                        *wrapped(declared, " " * 8)]
        yield from ["    }", "}"]


CSHARP = '''// marvo from C#. {made}
//
// The names are those of marvo_c.h. Text is UTF-8; text that comes out as an IntPtr or in a byte[] is read
// with Native.Text(). A structure is made with its New(), which sets its size. A delegate that was given to
// one of the marvo_set_... functions must be kept referenced as long as it is set.
//
// The DLL is for processes of its own width: PlatformTarget x86 for the 32-bit one. Needs .NET Framework 4.7,
// .NET or Mono.
using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Marvo
{
    /// <summary>A result that is not MARVO_OK, with the library's sentence.</summary>
    public sealed class MarvoException : Exception
    {
        public MarvoException(int code, string text) : base(text) { Code = (marvo_result)code; }

        /// <summary>The result.</summary>
        public marvo_result Code { get; private set; }
    }
'''

CSHARP_CLASS = '''
    /// <summary>The functions of marvo.dll.</summary>
    public static class Native
    {
        private const string Dll = "marvo.dll";

        /// <summary>Throws a MarvoException for a result that is not MARVO_OK.</summary>
        public static void Check(int result)
        {
            if (result != 0)
            {
                throw new MarvoException(result, Text(marvo_last_error()));
            }
        }

        /// <summary>The text at an address.</summary>
        public static string Text(IntPtr address)
        {
            if (address == IntPtr.Zero)
            {
                return null;
            }
            int length = 0;
            while (Marshal.ReadByte(address, length) != 0)
            {
                ++length;
            }
            byte[] bytes = new byte[length];
            Marshal.Copy(address, bytes, 0, length);
            return Encoding.UTF8.GetString(bytes);
        }

        /// <summary>The text in a buffer or a structure, up to its zero.</summary>
        public static string Text(byte[] buffer)
        {
            int length = Array.IndexOf(buffer, (byte)0);
            return Encoding.UTF8.GetString(buffer, 0, length < 0 ? buffer.Length : length);
        }
'''


class Pascal:
    """bindings/pascal/marvo.pas"""
    path = "bindings/pascal/marvo.pas"
    NUMBERS = {"char": "AnsiChar", "short": "SmallInt", "int": "Integer", "marvo_i32": "Integer",
               "marvo_u32": "Cardinal", "marvo_i64": "Int64", "marvo_u64": "UInt64", "double": "Double"}
    RESERVED = {"to", "file", "type", "in", "out", "end", "set", "interface", "unit", "var", "program", "of",
                "result"}

    def name(self, name):
        return name + "_" if name in self.RESERVED else name

    def type(self, kind):
        if kind.base == "void":
            return "Pointer"
        base = self.NUMBERS.get(kind.base, f"T{kind.base}")
        stars = kind.stars - (kind.base in self.handles)
        if kind.count:
            return f"array[0..{kind.count - 1}] of {base}"
        return f"{'P' * stars}{base.removeprefix('T') if stars else base}"

    def parameters(self, entry):
        return "; ".join(f"{self.name(part.name)}: {self.type(part.detail)}" for part in entry.parts)

    def declared(self, entry, name):
        of = f"({self.parameters(entry)})" if entry.parts else ""
        if entry.result.base == "void" and not entry.result.stars:
            return f"procedure{name}{of}"
        return f"function{name}{of}: {self.type(entry.result)}"

    def write(self, header):
        self.handles = header.names("handle")
        yield from PASCAL.replace("{made}", MADE).rstrip().splitlines()
        yield from ["", "const"]
        for macro in header.macros:
            value = "High(UInt64)" if value_of(macro) == 2 ** 64 - 1 else value_of(macro)
            yield from with_comment(f"{macro.name} = {value};", macro.comment, "// ", "  ")
        for entry in header.of("enum"):
            yield from ["", *lines_of(f"{entry.name}: {' '.join(entry.comment)}", "  // ")]
            for constant in entry.parts:
                yield from with_comment(f"{constant.name} = {constant.detail};", constant.comment, "// ",
                                        "  ")
        pointers = "Integer", "Cardinal", "Int64", "UInt64", "SmallInt"
        yield from ["", "type", *(f"  P{kind} = ^{kind};" for kind in pointers)]
        for entry in header.declared:
            if entry.kind == "handle":
                yield from ["", *doc_lines(entry.comment, "  // "), f"  T{entry.name} = type Pointer;",
                            f"  P{entry.name} = ^T{entry.name};"]
            elif entry.kind == "struct":
                yield from ["", *doc_lines(entry.comment, "  // "), f"  P{entry.name} = ^T{entry.name};",
                            f"  T{entry.name} = record"]
                for field in entry.parts:
                    yield from with_comment(f"{self.name(field.name)}: {self.type(field.detail)};",
                                            field.comment, "// ", "    ")
                yield "  end;"
            elif entry.kind == "callback":
                yield from ["", *doc_lines(entry.comment, "  // "),
                            f"  T{entry.name} = {self.declared(entry, '')}; stdcall;"]
        for entry in header.of("function"):
            text = (f"{self.declared(entry, ' ' + entry.name)}; stdcall; "
                    f"external MARVO_DLL name '{entry.name}';")
            yield from ["", *doc_lines(entry.comment, "// "),
                        *wrapped(text, "")]
        yield from PASCAL_END.rstrip().splitlines()


PASCAL = '''// marvo from Delphi and Free Pascal. {made}
//
// The names are those of marvo_c.h; a structure is called as there with a T, a pointer to it with a P in
// front, and a name that Pascal keeps for itself has an underscore behind it. Text is UTF-8 and ends with a
// zero. The DLL is for programs of its own width.
unit marvo;

{$IFDEF FPC}
  {$MODE OBJFPC}{$H+}
{$ENDIF}
// Members are aligned to their own size, as in C.
{$ALIGN 8}

interface

uses
  SysUtils;

const
  MARVO_DLL = 'marvo.dll';

type
  // A result that is not MARVO_OK, with the library's sentence.
  EMarvo = class(Exception)
  public
    Code: Integer;
  end;

// Raises an EMarvo for a result that is not MARVO_OK.
procedure MarvoCheck(code: Integer);

// Makes all of a structure 0 and sets its size: MarvoClear(info, SizeOf(info)).
procedure MarvoClear(out structure; bytes: Cardinal);
'''

PASCAL_END = '''

implementation

procedure MarvoCheck(code: Integer);
var
  failure: EMarvo;
begin
  if code <> MARVO_OK then
  begin
    failure := EMarvo.Create(string(UTF8String(marvo_last_error())));
    failure.Code := code;
    raise failure;
  end;
end;

procedure MarvoClear(out structure; bytes: Cardinal);
begin
  FillChar(structure, bytes, 0);
  Cardinal(structure) := bytes;
end;

end.
'''


WRITERS = [Python(), CSharp(), Pascal()]


def main():
    header = c_header.read()
    stale = []
    for writer in WRITERS:
        path, text = ROOT / writer.path, "\n".join(writer.write(header)) + "\n"
        if path.is_file() and path.read_text(encoding="utf-8") == text:
            continue
        stale.append(writer.path)
        if "--check" not in sys.argv[1:]:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
    if "--check" in sys.argv[1:] and stale:
        sys.exit("not what marvo_c.h gives; scripts/make_bindings.py writes them: " + ", ".join(stale))
    print(*(stale or ["nothing to do"]), sep="\n")


if __name__ == "__main__":
    main()
