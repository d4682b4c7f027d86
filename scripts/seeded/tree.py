"""A copy of the repository under build/seeded/, with a build and a Wine of its own, for faults."""
import os
import shutil
import signal
import subprocess
import tempfile
import time

from seeded import parts
from seeded.faults import ROOT

FOLDER = ROOT / "build" / "seeded"
# Some optimisation, so that what is undefined shows; the linker leaves out what only debuggers read.
_SETTINGS = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DMARVO_WERROR=OFF",
             "-DCMAKE_EXE_LINKER_FLAGS=-Wl,-s", "-DCMAKE_SHARED_LINKER_FLAGS=-Wl,-s"]


class BuildFailed(Exception):
    """The sources do not compile; the text is the compiler's."""


class Tree:
    """One copy. Its sources are the repository's, but for the one fault that is in work."""

    def __init__(self, number, stopping):
        self.stopping = stopping
        self.folder = FOLDER / f"tree-{number}"
        self.build = self.folder / "build" / "win32"
        # Both trees find each other's results in the compiler's cache.
        self.environment = {**os.environ, "CCACHE_BASEDIR": str(self.folder), "CCACHE_NOHASHDIR": "1",
                            "CCACHE_SLOPPINESS": "pch_defines,time_macros"}
        self.environment.pop("MARVO_LONG", None)
        self.parts = {}
        self._changed = {}

    def prepare(self):
        """Brings the copy up to date and builds what no fault changes."""
        self._copy_sources()
        self._borrow_wine()
        self._call("cmake", "--preset", "win32", *_SETTINGS, cwd=self.folder)
        self.parts = parts.read_parts(self)

    def _copy_sources(self):
        listed = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard"], cwd=ROOT, check=True,
                                stdout=subprocess.PIPE).stdout.decode().split("\0")
        wanted = {name for name in listed if name and (ROOT / name).is_file()}
        for name in wanted:
            # What is the same keeps its time, so that it is not compiled again.
            source, copy = ROOT / name, self.folder / name
            if not copy.is_file() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(source, copy)
            shutil.copymode(source, copy)
        for copy in self.folder.glob("*/**/*"):
            name = copy.relative_to(self.folder)
            if name.parts[0] != "build" and copy.is_file() and str(name) not in wanted:
                copy.unlink()

    def _borrow_wine(self):
        """The repository's Wine, streams and a copy of its prefix, so that nothing is downloaded again."""
        wine, streams = self.folder / "build" / "wine", self.folder / "build" / "streams"
        wine.mkdir(parents=True, exist_ok=True)
        streams.mkdir(exist_ok=True)
        for needed, script in ("wine/prefix-win32/marvo-recipe", ["scripts/setup.sh"]), \
                ("streams/ntsc.dv", ["scripts/make_streams.sh", "build/streams"]):
            if not (ROOT / "build" / needed).exists():
                self._call(*script, cwd=ROOT)
        if not (wine / "tree32").exists():
            (wine / "tree32").symlink_to((ROOT / "build" / "wine" / "tree32").resolve())
        if not (wine / "prefix-win32").exists():
            self._call("cp", "-a", str(ROOT / "build" / "wine" / "prefix-win32"), str(wine / "copied"))
            (wine / "copied").rename(wine / "prefix-win32")
        self._call("scripts/wine_prefix.sh", "win32", cwd=self.folder)
        for stream in (ROOT / "build" / "streams").iterdir():
            if not (streams / stream.name).exists():
                shutil.copy2(stream, streams / stream.name)

    def _call(self, *words, cwd=None, error=RuntimeError, last=False):
        """Runs a command to its end; unless it is the `last` one, only until the campaign is to stop."""
        with tempfile.TemporaryFile("w+", errors="replace") as output:
            process = subprocess.Popen(["nice", *map(str, words)], cwd=cwd, env=self.environment,
                                       stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                       start_new_session=True)
            while process.poll() is None:
                if self.stopping.is_set() and not last:
                    os.killpg(process.pid, signal.SIGTERM)
                    process.wait()
                    raise KeyboardInterrupt
                time.sleep(0.02)
            output.seek(0)
            if process.returncode != 0:
                raise error(f"{' '.join(map(str, words[:4]))}:\n{output.read()[-3000:]}")

    def compile(self, targets):
        if targets:
            self._call("ninja", *targets, cwd=self.build, error=BuildFailed)

    def seed(self, fault):
        """Puts the fault into the copy."""
        for path, original, text in fault.files():
            (self.folder / path).write_text(text, encoding="utf-8")
            self._changed[path] = original

    def mend(self):
        """Takes it out again."""
        for path, original in self._changed.items():
            (self.folder / path).write_text(original, encoding="utf-8")
        self._changed = {}

    def clear_away(self):
        """Ends what a program that crashed or hung has left of Wine's."""
        self._call("scripts/stop.sh", cwd=self.folder, last=True)
