"""What programs of other compilers rely on: the exported names, the layout of the structures, and a whole
session of a host in C, whose frames are compared with those of the camera."""
import re
import subprocess
import unittest

import scripted_tests

ROOT, TARGET = scripted_tests.ROOT, scripted_tests.TARGET
TRIPLE = {"win32": "i686", "win64": "x86_64"}[TARGET]
FRAME = 144000
LINES = (ROOT / "marvo" / "flat" / "exports.txt").read_text().split("\n")
EXPORTS = dict(line.split() for line in LINES if line)
WARNINGS = ("-pedantic", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", f"-I{ROOT}")
COMPILERS = (
    "gcc -std=c89", "clang -std=c89", "g++ -std=c++17 -xc++", "clang++ -std=c++20 -xc++",
    f"{TRIPLE}-w64-mingw32-gcc -std=c89",
    f"clang -ffreestanding -Wno-language-extension-token --target={TRIPLE}-pc-windows-msvc",
)


class Interface(unittest.TestCase):
    def test_names_are_kept_and_undecorated(self):
        told = subprocess.run([f"{TRIPLE}-w64-mingw32-objdump", "-p", scripted_tests.PROGRAMS / "marvo.dll"],
                              stdout=subprocess.PIPE, text=True, check=True).stdout
        exported = set(re.findall(r"\[ *\d+\] (marvo_\S+)", told))
        self.assertEqual(exported, set(EXPORTS))
        declared = re.findall(r"MARVO_CALL\s+(marvo_\w+)\(", (ROOT / "marvo_c.h").read_text())
        self.assertEqual(sorted(declared), sorted(EXPORTS))

    def test_layout_is_the_same_for_all_compilers(self):
        for compiler in COMPILERS:
            with self.subTest(compiler):
                done = subprocess.run([*compiler.split(), *WARNINGS, ROOT / "tests" / "flat" / "layout.c"],
                                      stderr=subprocess.PIPE, text=True, check=False)
                self.assertEqual(done.returncode, 0, done.stderr[:2000])


class Session(unittest.TestCase):
    def run_host(self, *arguments):
        """Runs the host; gives the numbers of the stream's frames in each of its files, and what it said."""
        folder = scripted_tests.scratch()
        camera = folder / "camera.txt"
        camera.write_text("stream = R:\\build\\streams\\pal.dv\n")
        path = "R:\\" + str(camera.relative_to(ROOT)).replace("/", "\\")
        done = scripted_tests.complete(scripted_tests.command("marvo-c-host", *arguments), cwd=folder,
                                       timeout=200, env=scripted_tests.environment(MARVO_CAMERA=path))
        said = (done.stdout + done.stderr).decode()
        self.assertEqual(done.returncode, 0, said)
        sent = (scripted_tests.STREAMS / "pal.dv").read_bytes()
        places = {sent[at:at + FRAME]: at // FRAME for at in range(0, len(sent), FRAME)}
        numbers = []
        for name in ("running.bin", "finished.bin"):
            data = (folder / name).read_bytes()
            numbers.append([places.get(data[at:at + FRAME]) for at in range(0, len(data), FRAME)])
            (folder / name).unlink()
        (folder / "c_host.avi").unlink()
        return (*numbers, len(places), said)

    def check(self, first, *arguments):
        running, finished, length, said = self.run_host(*arguments)
        first = finished[0] if first is None else first
        self.assertEqual(finished, [(first + n) % length for n in range(len(finished))], said)
        self.assertEqual(running[:30], finished[:30])
        self.assertIsNotNone(running[-1])
        self.assertRegex(said, r"running: [1-9]\d* from the ring, \d+ from the file")
        self.assertIn("end 0", said)
        for kind in 10, 11, 20, 21:
            self.assertIn(f"event {kind}: ", said)

    def test_frames_are_the_cameras(self):
        self.check(None, "--session")

    def test_frames_are_those_that_were_fed(self):
        self.check(0, "--feed", "R:\\build\\streams\\pal.dv")


scripted_tests.main()
