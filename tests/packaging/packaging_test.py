"""What is released: the packages of this build, a host built from the ZIP, the installer under Wine, and
marvo inside of another project. That two whole builds give the same packages is checked by
`./package.sh --check`; here, what could make them differ: the packages are made twice, and some sources
compiled in two folders give the same objects. With --long the other project is built
whole."""
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time
import unittest
import zipfile

import scripted_tests
from scripted_tests import LONG, PRESET, ROOT, TARGET

TRIPLET = {"win32": "i686-w64-mingw32", "win64": "x86_64-w64-mingw32"}[TARGET]
FOLDER = scripted_tests.scratch()
BUILD = ROOT / "build" / PRESET
MAIN = ROOT / "tests/consumer/project/main.cpp"
DRIVE_C = ROOT / "build/wine" / f"prefix-{TARGET}" / "drive_c"
# Wine's helpers for menus would only take time.
QUICK = {"WINEDLLOVERRIDES": "mscoree=;mshtml=;winedbg.exe=;winemenubuilder.exe="}
EPOCH = "1500000000"


def output(*words, **options):
    done = subprocess.run(list(map(str, words)), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{words} ended with {done.returncode}:\n{done.stdout[-4000:]}")
    return done.stdout


def make_packages(name):
    out = FOLDER / name / "packages"
    out.parent.mkdir()
    output(sys.executable, "-B", ROOT / "packaging/make_packages.py", out, BUILD,
           env={**os.environ, "SOURCE_DATE_EPOCH": EPOCH})
    return out


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def setUpModule():
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    output(ROOT / "scripts/setup.sh", "nsis", "pkgconf")
    globals()["PACKAGES"] = make_packages("first")
    archive, symbols = sorted(PACKAGES.glob("*.zip"), key=lambda path: len(path.name))
    for path in archive, symbols:
        with zipfile.ZipFile(path) as packed:
            packed.extractall(FOLDER / "unpacked")
    globals()["SDK"] = FOLDER / "unpacked" / archive.stem


class Packages(unittest.TestCase):
    def test_the_same_build_gives_the_same_bytes(self):
        again = make_packages("of another length")
        names = sorted(path.name for path in PACKAGES.iterdir())
        self.assertEqual(5, len(names))
        self.assertEqual([], [name for name in names
                              if (PACKAGES / name).read_bytes() != (again / name).read_bytes()])
        output("sha256sum", "--strict", "-c", "SHA256SUMS", cwd=PACKAGES)

    def test_a_host_is_built_from_the_zip(self):
        flags = output("pkg-config", "--cflags", "--libs", "marvo", env={
            **os.environ, "PKG_CONFIG_PATH": str(SDK / "lib/pkgconfig")}).split()
        output(f"{TRIPLET}-g++-posix", MAIN, *flags, "-static", "-o", SDK / "bin/host.exe")
        version = SDK.name.split("-")[1]
        done = scripted_tests.run(str(SDK / "bin/host.exe"))
        self.assertEqual((0, version), (done.returncode, done.stdout.decode().strip()))

    def test_symbols_lie_beside_and_tell_no_folder_of_this_machine(self):
        library = SDK / "bin/marvo.dll"
        self.assertIn(b"marvo.dll.debug", library.read_bytes())
        if PRESET == "win32":
            self.assertLess(library.stat().st_size, 1_200_000)
        self.assertLess(max(path.stat().st_size for path in PACKAGES.glob("*.exe")), 8_000_000)
        symbols = library.with_name("marvo.dll.debug")
        address = re.findall(r"^(\w+) T dvFrontEnd::replay", output(f"{TRIPLET}-nm", "-C", symbols), re.M)[0]
        self.assertRegex(output(f"{TRIPLET}-addr2line", "-e", symbols, address),
                         r"\bmarvo/frontend/\w+\.cpp:\d")
        found = [path.name for path in (SDK / "bin").glob("*.*") if path.name != "host.exe" and
                 str(ROOT).encode() in path.read_bytes()]
        self.assertEqual([], found)

    def test_the_bill_of_materials_is_true(self):
        for place, prefix in (SDK / "share/doc/marvo/marvo.cdx.json", "bin/"), (
                next(PACKAGES.glob("*.cdx.json")), f"{TARGET}/bin/"):
            bill = json.loads(place.read_text(encoding="utf-8"))
            inside = {entry["bom-ref"]: entry for entry in bill["components"]}
            uses = {entry["ref"]: {name.partition("@")[0] for name in entry["dependsOn"]}
                    for entry in bill["dependencies"]}
            for program in "marvo.dll", "marvo-replay.exe", "dvrec.exe", "marvo-host.exe":
                self.assertEqual(sha256(SDK / "bin" / program),
                                 inside[prefix + program]["hashes"][0]["content"])
                self.assertLessEqual({"libgcc", "libstdc++", "mingw-w64", "winpthreads"},
                                     uses[prefix + program])
            self.assertNotIn("nlohmann-json", uses[prefix + "marvo.dll"])
            self.assertLessEqual({"nlohmann-json", "CLI11"}, uses[prefix + "marvo-host.exe"])
            self.assertTrue(all(re.match(r"\d", entry["version"]) for entry in inside.values()
                                if entry["type"] == "library"))
        self.assertEqual(["CLI11.txt", "GPL-3.txt", "gcc.txt", "mingw-w64.txt", "nlohmann-json.txt"], sorted(
            path.name for path in (SDK / "share/doc/marvo/licences").iterdir()))


class Contained(unittest.TestCase):
    def test_builds_inside_of_another_project_and_in_another_folder(self):
        here, there = FOLDER / "here", FOLDER / "of-another-length"
        source, build = here / "sources", here / "build"
        for name in "cmake", "marvo":
            shutil.copytree(ROOT / name, source / name)
        for path in ROOT / "CMakeLists.txt", *ROOT.glob("marvo*.h*"):
            shutil.copy(path, source)
        # It writes the places that it knows into objects.
        plain = {**os.environ, "CCACHE_DISABLE": "1"}
        output("cmake", "-G", "Ninja", "-S", pathlib.Path(__file__).parent / "project", "-B", build,
               f"-DMARVO_SOURCES={source}", f"-DMAIN={MAIN}", "-DCMAKE_BUILD_TYPE=Release",
               f"-DCMAKE_TOOLCHAIN_FILE={source}/cmake/mingw-{TRIPLET.partition('-')[0]}.cmake",
               "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON")
        shutil.copytree(here, there)
        objects = [f"marvo/marvo/{room}/CMakeFiles/marvo_{room}.dir/{name}.cpp.obj" for room, name in (
            ("core", "number_text"), ("core", "semaphore"), ("dv", "packs"))]
        output("ninja", "-C", build, *objects, env=plain)
        commands = output("ninja", "-C", build, "-t", "commands", *objects).partition("\n")[2]
        self.assertIn(str(here), commands)
        output("bash", "-euc", commands.replace(str(here), str(there)), cwd=there / "build", env=plain)
        self.assertEqual([], [path for path in objects
                              if (build / path).read_bytes() != (there / "build" / path).read_bytes()])
        commands = {pathlib.Path(entry["file"]).name: entry["command"] for entry in json.loads(
            (build / "compile_commands.json").read_text(encoding="utf-8"))}
        flags = set(re.findall(r" (-[^IOg]\S*)", commands["main.cpp"].replace(str(source), "")))
        self.assertLessEqual(flags, {"-DNDEBUG", "-o", "-c"})
        # Everything that the whole is made of is there.
        wanted = [] if LONG else ["--", "-n"]
        output("cmake", "--build", build, *wanted)
        if LONG:
            done = scripted_tests.run(str(build / "containing.exe"))
            self.assertEqual(0, done.returncode, done.stdout)


class Installer(unittest.TestCase):
    UNINSTALL, CLASSES = r"Software\Microsoft\Windows\CurrentVersion\Uninstall\marvo", r"Software\Classes"

    def registry(self, *words):
        """What reg.exe prints; nothing when it finds nothing."""
        done = scripted_tests.run(str(DRIVE_C / "windows/system32/reg.exe"), *words)
        return done.stdout.decode(errors="replace") if done.returncode == 0 else ""

    def install(self, *words, status=0):
        program, = FOLDER.glob("first/packages/*-setup.exe")
        done = scripted_tests.run(str(program), "/S", *words, **QUICK)
        self.assertEqual(status, done.returncode)

    def test_installs_runs_and_goes_without_what_is_the_users(self):
        own = FOLDER / "own"
        places = (DRIVE_C / "Program Files/marvo", [], "HKLM"), (
            own, ["/CURRENTUSER", "/D=R:\\" + str(own.relative_to(ROOT)).replace("/", "\\")], "HKCU")
        for place, words, root in places:
            with self.subTest(root=root):
                self.remove(place)
                self.addCleanup(self.remove, place)
                movie = f"{root}\\{self.CLASSES}\\.avi"
                self.registry("add", movie, "/ve", "/d", "movie", "/f")
                self.addCleanup(self.registry, "delete", movie, "/f")
                self.check(place, words, root)

    def check(self, place, words, root):
        self.install("/ASSOC", *words)
        programs = place / TARGET
        for program in "marvo-replay", "dvrec":
            done = scripted_tests.run(str(programs / f"{program}.exe"), "--version")
            self.assertEqual(f"{program} {SDK.name.split('-')[1]}", done.stdout.decode().strip())
        self.assertTrue((place / "doc/licences/nsis.txt").is_file() and (place / "doc/LICENSE").is_file())
        self.assertRegex(self.registry("query", f"{root}\\{self.UNINSTALL}"), r"(?i)DisplayVersion .*\d.*")
        recordings = self.registry("query", f"{root}\\{self.CLASSES}\\.avi", "/s")
        self.assertRegex(recordings, r"(?s)\(Default\) .*movie.*marvo\.recording")
        self.assertEqual(2, len(self.menu()))

        mine = {programs / "marvo-replay.ini", place / "recordings/match.dv"}
        for path in mine:
            path.parent.mkdir(exist_ok=True)
            path.write_text("mine", encoding="utf-8")
        # Over itself; but not while it is used.
        self.install(*words)
        with subprocess.Popen(scripted_tests.command(str(programs / "dvrec.exe"), "info", "-"), cwd=FOLDER,
                              env=scripted_tests.environment(), stdin=subprocess.PIPE,
                              stderr=subprocess.DEVNULL) as running:
            mapped = pathlib.Path(f"/proc/{running.pid}/maps")
            self.wait_for(lambda: "dvrec.exe" in mapped.read_text(encoding="utf-8", errors="replace"))
            self.install(*words, status=2)
            running.stdin.close()

        self.assertEqual(0, scripted_tests.run(str(place / "uninstall.exe"), "/S", **QUICK).returncode)
        # It goes on as a copy of itself.
        self.wait_for(lambda: not self.registry("query", f"{root}\\{self.UNINSTALL}"))
        self.assertEqual(mine, {path for path in place.rglob("*") if path.is_file()})
        self.assertEqual([], self.menu())
        self.assertEqual("", self.registry("query", f"{root}\\{self.CLASSES}\\marvo.recording"))
        self.assertIn("movie", self.registry("query", f"{root}\\{self.CLASSES}\\.avi", "/ve"))

    def remove(self, place):
        """What a run that failed has left."""
        shutil.rmtree(place, ignore_errors=True)
        for path in self.menu():
            path.unlink()

    def menu(self):
        return [path for path in DRIVE_C.rglob("marvo/*.lnk") if "Start Menu" in str(path)]

    def wait_for(self, holds):
        end = time.monotonic() + 60
        while not holds():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.1)


scripted_tests.main()
