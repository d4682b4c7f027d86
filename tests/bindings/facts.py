"""Facts about the interface, one per line, as several sources have them: the target's compiler, and each of
the languages. A source that is right says what the compiler says, word for word:

  const NAME VALUE | struct NAME BYTES | member NAME.MEMBER OFFSET BYTES
  function NAME RESULT PARAMETERS... | callback NAME RESULT PARAMETERS...

A parameter is v (none), p (any pointer), i4, u4, i8, u8 or f8."""
import ctypes
import re

import make_bindings

COMPILER = """#include <cstddef>
#include <cstdio>
#include <type_traits>
#include "marvo_c.h"
template <class T> void say() {
    if constexpr (std::is_void_v<T>) std::printf(" v");
    else if constexpr (std::is_pointer_v<T>) std::printf(" p");
    else std::printf(" %%c%%u", std::is_floating_point_v<T> ? 'f' : std::is_signed_v<T> ? 'i' : 'u',
                     unsigned(sizeof(T)));
}
template <class R, class... A> void signature(const char* what, R(MARVO_CALL*)(A...)) {
    std::printf("%%s", what);
    say<R>();
    (say<A>(), ...);
    std::puts("");
}
int main() {
    %s
}
"""


def of_compiler(header):
    """A C++ program that prints them: the names are the header's, everything else is the compiler's."""
    lines = []
    for name in [macro.name for macro in header.macros] + [part.name for entry in header.of("enum")
                                                           for part in entry.parts]:
        lines.append(f'std::printf("const {name} %llu\\n", (unsigned long long)({name}));')
    for entry in header.of("struct"):
        lines.append(f'std::printf("struct {entry.name} %u\\n", unsigned(sizeof({entry.name})));')
        lines += [f'std::printf("member {entry.name}.{part.name} %u %u\\n", unsigned(offsetof({entry.name}, '
                  f'{part.name})), unsigned(sizeof({entry.name}::{part.name})));' for part in entry.parts]
    lines += [f'signature("function {name}", (decltype(&{name}))nullptr);'
              for name in header.names("function")]
    lines += [f'signature("callback {name}", {name}());' for name in header.names("callback")]
    return COMPILER % "\n    ".join(lines)


def of_python(text):
    """Of the text of bindings/python/marvo.py."""
    module = {"__name__": "marvo", "__file__": "marvo.py"}
    exec(compile(text, "marvo.py", "exec"), module)  # pylint: disable=exec-used

    def letter(kind):
        if kind is None:
            return "v"
        code = getattr(kind, "_type_", "P")
        if not isinstance(code, str) or code in "Pz":
            return "p"
        return f"{'f' if code == 'd' else 'i' if code.islower() else 'u'}{ctypes.sizeof(kind)}"

    facts = {f"const {name} {value}" for name, value in module.items() if name.startswith("MARVO_")}
    for name, (result, arguments) in module["_FUNCTIONS"].items():
        facts.add(" ".join(["function", name, *map(letter, [result, *arguments])]))
    for name, kind in module.items():
        if name.startswith("marvo_") and isinstance(kind, type):
            if issubclass(kind, ctypes.Structure):
                facts.add(f"struct {name} {ctypes.sizeof(kind)}")
                facts |= {f"member {name}.{member.rstrip('_')} {getattr(kind, member).offset} "
                          f"{getattr(kind, member).size}" for member, _ in kind._fields_}
            elif hasattr(kind, "_argtypes_"):
                facts.add(" ".join(["callback", name, *map(letter, [kind._restype_, *kind._argtypes_])]))
    return facts


PASCAL_TYPES = {"integer": "i4", "cardinal": "u4", "int64": "i8", "uint64": "u8", "double": "f8"}


def of_pascal_functions(text):
    """Those on functions and callbacks, of the text of marvo.pas; one that is not stdcall is left out."""
    facts = set()
    text = re.sub(r"\s+", " ", re.sub(r"//.*", "", text))
    declared = r"(?:T(\w+) = )?(?:function|procedure) ?(\w*)(?:\(([^)]*)\))?(?:: (\w+))?; stdcall;"
    for callback, name, parameters, result in re.findall(declared, text):
        types = [part.split(":")[1].strip() for part in parameters.split(";")] if parameters else []
        letters = [PASCAL_TYPES.get(kind.lower(), "p") for kind in types]
        result = PASCAL_TYPES.get(result.lower(), "p") if result else "v"
        facts.add(" ".join(["callback" if callback else "function", callback or name, result, *letters]))
    return facts


def of_pascal_layout(header):
    """A Pascal program that prints the others."""
    name = make_bindings.Pascal().name
    lines = [f"WriteLn('const {constant} ', {constant});"
             for constant in [macro.name for macro in header.macros]
             + [part.name for entry in header.of("enum") for part in entry.parts]]
    variables = []
    for entry in header.of("struct"):
        variables.append(f"  a_{entry.name}: T{entry.name};")
        lines.append(f"WriteLn('struct {entry.name} ', SizeOf(T{entry.name}));")
        lines += [f"WriteLn('member {entry.name}.{part.name} ', PtrUInt(@a_{entry.name}.{name(part.name)}) - "
                  f"PtrUInt(@a_{entry.name}), ' ', SizeOf(a_{entry.name}.{name(part.name)}));"
                  for part in entry.parts]
    return "\n".join(["program layout;", "uses marvo;", "var", *variables, "begin", *lines, "end."])
