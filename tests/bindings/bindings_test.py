"""The interface in other languages: what each declares against what the target's compiler says, and the
examples, run against the DLL where this machine can. A language is skipped, by name, when its compiler is not
installed; ./test.sh installs them all."""
import array
import os
import pathlib
import shutil
import sys
import unittest

import c_header
import facts
import make_bindings
import scripted_tests
from scripted_tests import PRESET, ROOT, TARGET

HERE = pathlib.Path(__file__).parent
FOLDER = scripted_tests.scratch()
TRIPLET = {"win32": "i686-w64-mingw32", "win64": "x86_64-w64-mingw32"}[TARGET]
CPU = TRIPLET.partition("-")[0]
# One of those that the wrapper is for with each target.
STANDARD = {"win32": "-std=c++17", "win64": "-std=c++20"}[TARGET]
GCC = f"{TRIPLET}-g++-posix"
STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Werror", f"-I{ROOT}"]
PYTHON, CSHARP, PASCAL = (ROOT / "bindings" / name
                          for name in ("python/marvo.py", "csharp/Marvo.cs", "pascal/marvo.pas"))
LIBRARY = [f"-L{ROOT}/build/{PRESET}/lib", "-lmarvo_c"]
HEADER = c_header.read()
WITH_CSHARP = unittest.skipUnless(shutil.which("mcs"), "C#: the package mono-mcs is not installed")
FPC = shutil.which("ppcx64-3.2.2") and pathlib.Path("/usr/share/fpcsrc/3.2.2").is_dir()
WITH_PASCAL = unittest.skipUnless(FPC, "Pascal: fp-compiler-3.2.2 or fpc-source-3.2.2 is not installed")


def once(test):
    """What is the same for every target is a test of one."""
    return test if TARGET == "win32" else None


def output(*words, status=0, **options):
    done = scripted_tests.complete(list(map(str, words)), **{"cwd": FOLDER, **options})
    text = (done.stdout + done.stderr).decode(errors="replace")
    if done.returncode != status:
        raise AssertionError(f"{words} ended with {done.returncode}:\n{text[-4000:]}")
    return text.replace("\r", "")


def run(program, *arguments, **options):
    return output(*scripted_tests.command(str(FOLDER / program), *arguments), **options,
                  env=scripted_tests.environment(MARVO_TIMEOUT="60"))


def library_headers():
    """Where a clang finds the standard library of the target's g++."""
    library = pathlib.Path(output(GCC, "-print-file-name=include/c++").strip())
    return [f"-isystem{library / part}" for part in ("", TRIPLET, "backward")]


class Facts(unittest.TestCase):
    """What a language declares is what the compiler of the target says."""
    maxDiff = None
    # What the seeded faults change.
    FAULTS = {"function marvo_seek i4 u8", "function marvo_step i4 i8", "member marvo_event.count 32 8",
              "const MARVO_E_FILE 9"}

    @classmethod
    def setUpClass(cls):
        (FOLDER / "truth.cpp").write_text(facts.of_compiler(HEADER), encoding="utf-8")
        output(GCC, "-std=c++17", f"-I{ROOT}", "-static", "truth.cpp", "-o", "truth.exe")
        cls.truth = set(run("truth.exe").splitlines())

    def compare(self, path, facts_of, *faults):
        """Of a file as it is, and of one in which each fault has replaced what was right."""
        text = path.read_text(encoding="utf-8")
        self.assertEqual([], sorted(self.truth ^ facts_of(text)))
        self.assertLessEqual(self.FAULTS, self.truth)
        for right, wrong in faults:
            self.assertIn(right, text)
            text = text.replace(right, wrong, 1)
        self.assertEqual(set(), self.FAULTS & facts_of(text))

    def test_python(self):
        self.compare(PYTHON, facts.of_python,
                     ('"marvo_seek": (ctypes.c_int32, [ctypes.c_uint64]),', ""),
                     ("(ctypes.c_int32, [ctypes.c_int64", "(ctypes.c_int32, [ctypes.c_int32"),
                     ('("count", ctypes.c_uint64', '("count", ctypes.c_uint32'),
                     ("MARVO_E_FILE = 9", "MARVO_E_FILE = 10"))

    @once
    @WITH_CSHARP
    def test_csharp(self):
        def of(text):
            (FOLDER / "Marvo.cs").write_text(text, encoding="utf-8")
            output("mcs", "-out:Facts.exe", "Marvo.cs", HERE / "Facts.cs")
            return set(output("mono", "Facts.exe").splitlines())
        self.compare(CSHARP, of, ("extern int marvo_seek(", "extern int marvo_seek_(int more, "),
                     ("marvo_step(long", "marvo_step(int"), ("public ulong count;", "public uint count;"),
                     ("MARVO_E_FILE = 9", "MARVO_E_FILE = 29"))

    @WITH_PASCAL
    def test_pascal(self):
        folder = FOLDER / "pascal"
        folder.mkdir()
        shutil.copy(FOLDER / "marvo.dll", folder)
        (folder / "layout.pas").write_text(facts.of_pascal_layout(HEADER), encoding="utf-8")

        def of(text):
            (folder / "marvo.pas").write_text(text, encoding="utf-8")
            output(ROOT / "scripts/pascal_for_windows.sh", TARGET, "-B", "layout.pas", cwd=folder)
            return facts.of_pascal_functions(text) | set(run("pascal/layout.exe").splitlines())
        self.compare(PASCAL, of, ("marvo_seek(frame: UInt64): Integer; stdcall;",
                                  "marvo_seek(frame: UInt64): Integer; cdecl;"),
                     ("marvo_step(frames: Int64)", "marvo_step(frames: Integer)"),
                     ("count: UInt64;", "count: Cardinal;"), ("MARVO_E_FILE = 9;", "MARVO_E_FILE = 10;"))


@once
class StandIn(unittest.TestCase):
    """The examples of languages that cannot be run against the DLL here, with one that stands for it."""
    WORDS = ["Spiel ä.dv", "neu.avi"]
    SAID = ["marvo 0.0 ö", "Spiel ä.dv: 3 frames, 1234.57 s", "frame 0: no time code, 100 bytes, 80",
            "frame 2: 10:00:00:24, 100 bytes, 240", "at byte 12345678901: kaputt ü", "1 faults",
            "neu.avi: 3 frames"]

    @classmethod
    def setUpClass(cls):
        text = (HERE / "stand_in.c").read_text(encoding="utf-8")
        cls.lacks = [name for name in HEADER.names("function") if f"{name}(" not in text]
        output("clang", "-shared", "-fPIC", "-Wall", "-Werror", f"-I{ROOT}", HERE / "stand_in.c", "-o",
               "libmarvo.so", *(f"-Wl,--defsym,{name}=missing" for name in cls.lacks))
        cls.environment = {**os.environ, "MARVO_DLL": str(FOLDER / "libmarvo.so"), "LC_ALL": "C.UTF-8"}

    def check(self, *command):
        self.assertEqual(self.SAID, output(*command, *self.WORDS, env=self.environment).splitlines())
        self.assertEqual(["marvo 0.0 ö", "result 9: There is no fehlt.dv"],
                         output(*command, "fehlt.dv", status=1, env=self.environment).splitlines())

    def test_python(self):
        start = ("import runpy, sys; sys.path.insert(0, sys.argv[1]); import marvo; marvo.load(); "
                 "sys.argv = sys.argv[2:]; runpy.run_path(sys.argv[0], run_name='__main__')")
        self.check(sys.executable, "-Bc", start, PYTHON.parent, ROOT / "examples/python/report.py")

    def test_python_takes_what_every_function_takes(self):
        module = {"__name__": "marvo", "__file__": str(PYTHON)}
        exec(PYTHON.read_text(encoding="utf-8"), module)  # pylint: disable=exec-used
        module["load"](self.environment["MARVO_DLL"])

        def value(role, part):
            kind = part.detail
            if role in ("filled", "bytes"):
                return array.array("h", [0] * 8) if kind.base == "short" else bytearray(8)
            if role == "callback":
                return lambda *words: None
            if kind.base in HEADER.names("handle"):
                return module[kind.base]()
            return "ä" if kind.base == "char" else None if kind.stars else 1
        for entry in HEADER.of("function"):
            if entry.name in self.lacks and entry.result.base == "int":
                words = [value(role, part) for role, part, *_ in make_bindings.roles(entry)
                         if role in ("filled", "bytes", "callback", "takes")]
                with self.subTest(function=entry.name):
                    with self.assertRaises(module["Error"]) as raised:
                        module[entry.name](*words)
                    self.assertEqual(3, raised.exception.code)

    @WITH_CSHARP
    def test_csharp(self):
        output("mcs", "-out:Report.exe", ROOT / "examples/csharp/Report.cs", CSHARP)
        (FOLDER / "Report.exe.config").write_text(
            f'<configuration><dllmap dll="marvo.dll" target="{FOLDER}/libmarvo.so"/></configuration>')
        self.check("mono", "Report.exe")


class Programs(unittest.TestCase):
    """Programs of each kind that run here, on the recording that the host has made first."""

    def test_cpp_host(self):
        ends = r"replaying frame \d+ of \d+ to \d+\n(.*\n)*match.dv: \d+ frames"
        self.assertRegex(HOST, r"marvo \d.*\n(.*\n)*event: .*\n(.*\n)*" + ends)
        clang = ["clang++", f"--target={TRIPLET}", *library_headers()]
        output(*clang, STANDARD, "-O1", *STRICT, "-c", ROOT / "examples/cpp/replay_host.cpp", "-o", "clang.o")
        output(GCC, "clang.o", *LIBRARY, "-static", "-o", "clang.exe")
        # It leaves the others' recording alone.
        (FOLDER / "clang").mkdir()
        self.assertRegex(run("clang.exe", 1, cwd=FOLDER / "clang"), ends)

    def test_cpp_wrapper(self):
        output(GCC, STANDARD, *STRICT, HERE / "wrapper.cpp", *LIBRARY, "-static", "-o", "wrapper.exe")
        self.assertEqual("", run("wrapper.exe"))

    def test_cpp_in_microsofts_dialect(self):
        # MinGW's headers stand for Microsoft's; these are what they ask the compiler for.
        kinds = "BOOL CHAR CHAR16_T CHAR32_T WCHAR_T SHORT INT LONG LLONG POINTER".split()
        stand_in = ["-U_MSC_VER", "-fno-ms-compatibility", "-D__MINGW32__", "-D__declspec=__declspec",
                    "-D_ALLOCA_S_MARKER_SIZE=16", "-D__GCC_ATOMIC_TEST_AND_SET_TRUEVAL=1",
                    *(f"-D__GCC_ATOMIC_{kind}_LOCK_FREE=2" for kind in kinds),
                    *(["-D__MINGW64__"] if TARGET == "win64" else [])]
        (FOLDER / "wrapper.cpp").write_text('#include "marvo.hpp"\n', encoding="utf-8")
        output("clang++", f"--target={CPU}-pc-windows-msvc", STANDARD, "-nostdinc++", *stand_in,
               *library_headers(), f"-isystem/usr/{TRIPLET}/include", *STRICT, "-fsyntax-only", "wrapper.cpp")

    @unittest.skipUnless(shutil.which("lld-link"), "Microsoft's linker: the package lld is not installed")
    def test_library_for_microsofts_linker(self):
        decorated = {"win32": ("@4", "@4", "@20"), "win64": ("", "", "")}[TARGET]
        names = [name + at for name, at in zip(("ExitProcess", "GetStdHandle", "WriteFile"), decorated)]
        (FOLDER / "kernel32.def").write_text("\n".join(["LIBRARY kernel32.dll", "EXPORTS", *names, ""]))
        output("llvm-dlltool", "--kill-at", "-m", {"win32": "i386", "win64": "i386:x86-64"}[TARGET], "-d",
               "kernel32.def", "-l", "kernel32.lib")
        output("clang", f"--target={CPU}-pc-windows-msvc", "-std=c89", "-O1", "-ffreestanding",
               "-fno-builtin", *STRICT, "-Wno-long-long", "-Wno-language-extension-token", "-c",
               HERE / "msvc_host.c", "-o", "msvc.obj")
        output("lld-link", "/nodefaultlib", "/subsystem:console", "/entry:start", "msvc.obj", "kernel32.lib",
               ROOT / f"build/{PRESET}/lib/marvo.lib", "/out:msvc.exe")
        said = run("msvc.exe").splitlines()
        self.assertRegex(said.pop(2), "missing.dv")
        frames = HOST.split()[-2]
        self.assertEqual([HOST.split()[1], "refused 9", "open 0", "info 0", f"frames {frames}", "close 0",
                          "verify 0", f"verified {frames}", "called 1"], said)

    @WITH_PASCAL
    def test_pascal_report(self):
        output(ROOT / "scripts/pascal_for_windows.sh", TARGET, f"-FE{FOLDER}", f"-Fu{PASCAL.parent}",
               f"-FU{FOLDER}", ROOT / "examples/pascal/report.pas")
        frames = HOST.split()[-2]
        said = run("report.exe", "match.dv", "match.avi")
        self.assertRegex(said, rf"marvo \d.*\nmatch.dv: {frames} frames, \d+\.\d\d s\n"
                               rf"frame 0: .*, 144000 bytes, \d+\nframe \d+: .*\n0 faults\n"
                               rf"match.avi: {frames} frames\n")
        self.assertRegex(run("report.exe", "missing.dv", status=1), r"result 9: .*missing\.dv")


@once
class Generated(unittest.TestCase):
    def test_the_files_are_what_the_header_gives(self):
        output(sys.executable, "-B", ROOT / "scripts/make_bindings.py", "--check")

    def test_the_linkers_names_are_what_the_header_gives(self):
        exports = (ROOT / "marvo/flat/exports.txt").read_text(encoding="utf-8").splitlines()
        self.assertEqual(sorted(f"{entry.name} {sum(map(c_header.argument_bytes, entry.parts))}"
                                for entry in HEADER.of("function")),
                         sorted(line for line in exports if line.startswith("marvo_")))


def setUpModule():
    global HOST
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    shutil.copy(ROOT / f"build/{PRESET}/bin/marvo.dll", FOLDER)
    output(GCC, STANDARD, *STRICT, ROOT / "examples/cpp/replay_host.cpp", *LIBRARY, "-static", "-o",
           "host.exe")
    HOST = run("host.exe", 1)


HOST = ""
scripted_tests.main()
