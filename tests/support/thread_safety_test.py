"""clang's thread-safety analysis over all of the library's sources: what a lock guards is touched only while
it is held, and locks are taken in their order (marvo/core/thread_annotations.h)."""
import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import unittest

import scripted_tests

BUILD = scripted_tests.PROGRAMS.parent
# What the path of a source holds, to look at no others.
ONLY = os.environ.get("MARVO_ONLY", "")
ANALYSIS = ["-Wno-everything", "-Wthread-safety", "-Wthread-safety-beta", "-Werror"]
# Reading these takes longer than all the rest.
SYSTEM_HEADERS = "".join(f"#include <{name}>\n" for name in (
    "winsock2.h", "windows.h", "objbase.h", "oleauto.h", "dshow.h", "algorithm", "atomic", "functional",
    "memory", "string", "tuple", "vector"))

TOUCHES_WITHOUT_LOCK = """
#include "marvo/core/timed_guard.h"
struct Guarded {
    vcore::semaphore first{1, 1}, second MARVO_ACQUIRED_AFTER(first){1, 1};
    int member MARVO_GUARDED_BY(first) = 0;
    int good() { vcore::timed_guard guard(first, 10); return member; }
    int bad() { return member; }
    void wrong() { vcore::timed_guard guard(second, 10); vcore::timed_guard other(first, 10); }
};
"""


def library_commands():
    """The sources of the library with the flags that say what they see."""
    for entry in json.loads((BUILD / "compile_commands.json").read_text()):
        if f"{scripted_tests.ROOT}/marvo/" in entry["file"] and ONLY in entry["file"]:
            words = shlex.split(entry["command"])
            compiler = next(word for word in words if "g++" in word)
            yield entry["file"], compiler, [word for word in words if re.match("-[DI]|-std=", word)]


def own_headers(compiler):
    """The folders of the compiler's C++ library, which clang does not find by itself."""
    told = subprocess.run([compiler, "-E", "-x", "c++", "-v", os.devnull], stderr=subprocess.PIPE, text=True,
                          check=True).stderr
    folders = re.search("(?: .*\n)+", told.split("#include <...> search starts here:\n")[1])[0].split("\n")
    return [word for folder in folders if "c++" in folder for word in ("-isystem", folder.strip())]


class ThreadSafety(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.sources = list(library_commands())
        compiler = cls.sources[0][1]
        triple = re.search(r"\w+-w64-mingw32", compiler)[0]
        cls.clang = ["clang++", f"--target={triple}", *own_headers(compiler)]
        folder = scripted_tests.scratch()
        headers, cls.headers = folder / "system.h", folder / "system.pch"
        headers.write_text(SYSTEM_HEADERS)
        defines = [flag for flag in cls.sources[0][2] if not flag.startswith("-I")]
        subprocess.run([*cls.clang, *defines, "-x", "c++-header", headers, "-o", cls.headers], check=True)

    def analyse(self, flags, *source, **options):
        words = [*self.clang, *flags, *ANALYSIS, "-include-pch", self.headers, "-fsyntax-only", *source]
        return subprocess.run(words, stderr=subprocess.PIPE, text=True, check=False, **options)

    def test_no_guarded_member_is_touched_without_its_lock(self):
        self.assertGreater(len(self.sources), 0 if ONLY else 50)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            done = pool.map(lambda source: self.analyse(source[2], source[0]), self.sources)
            self.assertEqual([each.stderr for each in done if each.returncode], [])

    def test_the_analysis_sees_what_is_wrong(self):
        found = self.analyse([*self.sources[0][2], f"-I{scripted_tests.ROOT}"], "-x", "c++", "-",
                             input=TOUCHES_WITHOUT_LOCK).stderr
        self.assertEqual(re.findall(r"error: (.*?) \[", found),
                         ["reading variable 'member' requires holding semaphore 'first'",
                          "semaphore 'first' must be acquired before 'second'"])


if __name__ == "__main__":
    scripted_tests.main()
