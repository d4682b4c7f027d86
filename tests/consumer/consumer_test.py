"""The library as a host meets it: what `cmake --install` puts down, in every order with other headers, under
every compiler, with flags that are not the library's own, found by CMake.

marvo.h alone is compiled by each compiler. Among the standard headers, behind headers of Windows that break
others (`HARSH`), in both standards, and with a host's switches and macros it is compiled by one of them; the
headers are the same for both targets, so one target is enough for that. The standard headers in groups in
front of marvo.h, and each combination of the switches, are preprocessed only: when the library's declarations
are then word for word those of marvo.h alone, they compile alike."""
import concurrent.futures
import itertools
import os
import pathlib
import re
import shutil
import subprocess
import unittest

import scripted_tests
from scripted_tests import PRESET, ROOT, TARGET

TRIPLET = {"win32": "i686-w64-mingw32", "win64": "x86_64-w64-mingw32"}[TARGET]
FOLDER = scripted_tests.scratch()
SDK = FOLDER / "sdk"
POSIX, WIN32 = f"{TRIPLET}-g++-posix", f"{TRIPLET}-g++-win32"
STANDARDS = ("c++17", "c++20")
MARVO, STRICT = ["marvo.h"], ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]


def output(*words, status=0, **options):
    """What a command prints on both channels; it must end with the status."""
    done = subprocess.run(list(map(str, words)), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", check=False, **options)
    if done.returncode != status:
        raise AssertionError(f"{words} ended with {done.returncode}:\n{done.stdout[-4000:]}")
    return done.stdout


LIBRARY = pathlib.Path(output(POSIX, "-print-file-name=include/c++").strip())
COMPILERS = {
    "g++ posix": [POSIX],
    "g++ win32": [WIN32],
    # It does not find the headers of a compiler whose version is called "12-posix".
    "clang++": ["clang++", f"--target={TRIPLET}",
                *(f"-isystem{LIBRARY / part}" for part in ("", TRIPLET, "backward"))],
}
# The last two are of later standards, and refuse compilers of former ones.
_names = sorted({path.name for path in LIBRARY.iterdir() if path.is_file()} - {"stdatomic.h", "coroutine"})
HEADERS = [*_names, *(name[1:] + ".h" for name in _names
                      if name[0] == "c" and pathlib.Path(f"/usr/{TRIPLET}/include/{name[1:]}.h").is_file())]
GROUPS = 4
HARSH = ("dshow.h", "windows.h", "winsock2.h", "objbase.h")
SWITCHES = ["-DNOMINMAX", "-DNO_DSHOW_STRSAFE", "-DUNICODE"]
COMBINED = [flags for count in (1, 2, 3) for flags in itertools.combinations(SWITCHES, count)]
HOST_MACROS = ["-Dmin(a,b)=((a)<(b)?(a):(b))", "-Dmax(a,b)=((a)<(b)?(b):(a))", "-DWIN32_LEAN_AND_MEAN"]
# Compiler, standard, includes, options.
ALONE = [(compiler, "c++17", MARVO, []) for compiler in COMPILERS]
ONCE = [
    ("clang++", "c++20", HEADERS + MARVO, []),
    ("g++ posix", "c++20", HEADERS[::-2] + MARVO + HEADERS[-2::-2], []),
    *(("clang++", STANDARDS[place % 2], [header, *MARVO], []) for place, header in enumerate(HARSH)),
    ("clang++", "c++17", MARVO, ["-DMARVO_STATIC", *SWITCHES]),
    ("clang++", "c++20", MARVO, ["-DMARVO_BUILD", *HOST_MACROS]),
]


def compile_text(compiler, standard, includes, options):
    """Runs the compiler over a source that consists of includes; what it printed."""
    text = "".join(f'#include {name if name[0] == "<" else "<" + name + ">"}\n' for name in includes)
    words = [*COMPILERS[compiler], f"-std={standard}", f"-I{SDK / 'include'}", *options, "-xc++", "-"]
    done = subprocess.run(words, input=text, capture_output=True, text=True, errors="replace", check=False)
    if done.returncode != 0:
        errors = [line for line in done.stderr.splitlines() if "error" in line][:3]
        raise AssertionError(f"{compiler} {standard} {options}: {includes[:3]}...: {errors}")
    return done.stdout


def own_words(preprocessed):
    """The words that come from the library's headers."""
    words, ours = [], False
    for line in preprocessed.splitlines():
        if line.startswith("# "):
            ours = f'"{SDK}' in line
        elif ours:
            words += line.split()
    return words


def in_parallel(function, jobs):
    """The results of all calls; an AssertionError in its place for one that failed."""
    def guarded(job):
        try:
            return function(*job)
        except AssertionError as error:
            return error
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(guarded, jobs))


class Header(unittest.TestCase):
    def test_compiles_in_every_order_and_with_all_flags(self):
        jobs = ALONE + (ONCE if TARGET == "win32" else [])
        results = in_parallel(lambda compiler, standard, includes, flags: compile_text(
            compiler, standard, includes, ["-fsyntax-only", *STRICT, *flags]), jobs)
        alone = own_words(compile_text("clang++", "c++17", MARVO, ["-E"]))
        self.assertGreater(len(alone), 1000)
        groups = [HEADERS[place::GROUPS] for place in range(GROUPS)]
        preprocessed = [(group + MARVO, ["-E"]) for group in groups]
        preprocessed += [(MARVO, ["-E", *flags]) for flags in COMBINED]
        singles = in_parallel(
            lambda *job: own_words(compile_text("clang++", "c++17", *job)) == alone, preprocessed)

        failed = [str(result) for result in results if isinstance(result, AssertionError)]
        summary = (f"{PRESET}: marvo.h and {len(HEADERS)} standard headers, {' '.join(STRICT)}: compiled by "
                   f"{', '.join(COMPILERS)}: {len(jobs) - len(failed)} of {len(jobs)} ways; the same words "
                   f"behind {GROUPS} groups of standard headers and with each set of "
                   f"switches: {singles.count(True)} of {len(singles)}\n")
        results_folder = ROOT / "build" / PRESET / "results"
        results_folder.mkdir(parents=True, exist_ok=True)
        (results_folder / "consumer.txt").write_text(summary, encoding="utf-8")
        self.assertEqual([], failed)
        self.assertEqual([], [f"{job}: {found}" for job, found in zip(preprocessed, singles)
                              if found is not True])

    def test_leaves_no_macro_but_those_of_the_systems_headers(self):
        files = [path.read_text(encoding="utf-8") for path in (SDK / "include").rglob("*.h")]
        system = sorted({name for text in files for name in re.findall(r"^#include <(.*)>", text, re.M)})
        # Those of Windows in the order that the library gives them.
        system = ["winsock2.h", "windows.h", *system]

        def macros(compiler, includes, flags):
            lines = compile_text(compiler, "c++17", includes, ["-E", "-dM", *flags]).splitlines()
            # Reserved names are the compiler's and its library's, and differ with the order of their headers.
            return {line for line in lines if not re.match("#define _[_A-Z]", line)}
        for compiler, flags in ("g++ posix", [*HOST_MACROS, "-Dsprintf=odd"]), ("clang++", []):
            with self.subTest(compiler=compiler, flags=flags):
                known = macros(compiler, system, [*flags, "-DNO_DSHOW_STRSAFE"])
                left = macros(compiler, MARVO, flags)
                # A host's own, which the standard library takes away and marvo.h gives back.
                own = {f"#define {flag[2:].replace('=', ' ', 1)}" for flag in flags if "(" in flag}
                self.assertEqual(own, left - known)
                self.assertEqual({"#define NO_DSHOW_STRSAFE 1"}, known - left)

    def test_each_header_works_behind_the_one_that_has_them_all(self):
        headers = sorted(str(path.relative_to(SDK / "include")) for path in (SDK / "include").rglob("*.h"))
        private = sorted(str(path.relative_to(ROOT)) for path in (ROOT / "marvo").rglob("*.h"))
        for includes in headers[::-1], MARVO + private:
            compile_text("clang++", "c++20", includes, ["-fsyntax-only", *STRICT, f"-I{ROOT}"])


class Program(unittest.TestCase):
    def version(self):
        text = (SDK / "include/marvo/version.h").read_text(encoding="utf-8")
        return ".".join(re.findall(r"version\w+ = (\d+);", text))

    def test_a_host_of_its_own_works(self):
        source = pathlib.Path(__file__).parent / "project"
        for compiler, level in (f"{TRIPLET}-g++", "-O2"), (POSIX, "-O0"):
            build = FOLDER / compiler
            output("cmake", "-G", "Ninja", "-S", source, "-B", build, f"-Dmarvo_ROOT={SDK}",
                   "-DCMAKE_SYSTEM_NAME=Windows", f"-DCMAKE_CXX_COMPILER={compiler}",
                   f"-DCMAKE_C_COMPILER={compiler.replace('g++', 'gcc')}", f"-DLEVEL={level}")
            output("cmake", "--build", build)
            # A program that is not linked with -static needs its compiler's own DLLs.
            for name in "libstdc++-6.dll", "libgcc_s_dw2-1.dll", "libgcc_s_seh-1.dll", "libwinpthread-1.dll":
                for found in (pathlib.Path(output(compiler, f"-print-file-name={name}").strip()),
                              pathlib.Path(f"/usr/{TRIPLET}/lib/{name}")):
                    if found.is_file():
                        shutil.copy(found, build)
        clang = FOLDER / POSIX / "consumer-clang.exe"
        output(*COMPILERS["clang++"], "-std=c++17", "-O2", f"-I{SDK}/include", "-c", source / "main.cpp",
               "-o", FOLDER / "clang.o")
        output(POSIX, FOLDER / "clang.o", f"-L{SDK}/lib", "-lmarvo", "-static", "-o", clang)
        self.assertTrue((FOLDER / POSIX / "marvo.dll").is_file())
        programs = sorted(FOLDER.glob("*/consumer-*.exe"))
        self.assertEqual(7, len(programs))
        for program in programs:
            with self.subTest(program=program.relative_to(FOLDER)):
                done = scripted_tests.run(str(program))
                self.assertEqual((0, self.version()), (done.returncode, done.stdout.decode().strip()))

    def test_dvrec_tells_the_version_of_the_header(self):
        done = scripted_tests.run("dvrec", "--version")
        self.assertEqual((0, f"dvrec {self.version()}"), (done.returncode, done.stdout.decode().strip()))


def setUpModule():
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    # Into a folder that is moved then: nothing in it may hold on to where it was.
    output("cmake", "--install", ROOT / "build" / PRESET, "--prefix", FOLDER / "installed")
    (FOLDER / "installed").rename(SDK)


scripted_tests.main()
