"""Which parts of the tests can see a fault, and how one is run and read."""
import json
import os
import pathlib
import re
import signal
import subprocess
import time

from seeded.faults import BY_HAND

# The parts that see a room's faults, the nearest and cheapest first. A part that stands nowhere here takes no
# part: what checks form, documents or the public header's taste, and what measures nothing of the library.
_ABOVE_READERS = ["readers", "recording", "recording.guard", "mutation.guard", "dvrec"]
SEEN_BY = {
    "core": ["core", "core.guard", "video", "avi", "readers", "recording", "replay", "frontend", "dvrec",
             "system"],
    "com": ["com", "frontend", "dvrec", "system"],
    "gui": ["gui", "frontend", "system"],
    "dv": ["video", "avi", *_ABOVE_READERS, "replay", "system"],
    "video": ["video", "replay", "replay.guard", "recording", "frontend", "system"],
    "picture": ["picture", "dvrec"],
    "avi": ["avi", "avi.guard", *_ABOVE_READERS, "replay", "interop.own", "interop.foreign", "system"],
    "recording": [*_ABOVE_READERS, "replay", "interop.own", "interop.faults", "frontend", "system"],
    "replay": ["replay", "replay.guard", "frontend", "system"],
    "frontend": ["frontend", "frontend.guard", "system"],
    "flat": ["flat", "flat.guard"],
    "tools": ["dvrec", "mutation.guard", "interop.own", "interop.foreign"],
}
THREAD_SAFETY = "thread-safety"
# Where the tests of a part are that is not named after their folder.
FOLDER_OF = {"readers": "recording", "dvrec": "tools", THREAD_SAFETY: "support"}
_TOUCHES_LOCK = re.compile(r"guard|lock|Lock|GUARDED|REQUIRES|EXCLUDES")


def parts_for(fault):
    """The names of the parts that can see a fault, in the order in which to ask them."""
    names = list(SEEN_BY[fault.room])
    may_matter = fault.operator in (BY_HAND, "swapped order") or _TOUCHES_LOCK.search(fault.diff)
    if fault.room not in ("tools", "dv", "gui") and may_matter:
        names.insert(0, THREAD_SAFETY)
    return names


class Outcome:
    """What came of a run: `passed`, the tests that `failed`, a word on how, and how long it took."""

    def __init__(self, passed, failed=(), how="", seconds=0.0):
        self.passed, self.failed, self.how, self.seconds = passed, list(failed), how, seconds


class Part:
    """A part of the tests as ctest knows it: one command, or several that share its tests."""

    def __init__(self, name, entries, tree):
        self.name, self.entries, self.tree = name, entries, tree
        self.is_script = entries[0]["command"][0].endswith("python3")
        self.program = pathlib.Path(entries[0]["command"][-1]).stem

    def targets(self, header):
        """What to build for it. A program that links the DLL is built again only for a header."""
        if self.name == THREAD_SAFETY:
            return []
        if self.is_script:
            engine = ["marvo-host", "marvo-devices"] * (self.name == "interop.faults")
            return ["marvo", "dvrec", *engine] + ["marvo-recording-probe"] * self.name.startswith("interop")
        library = "marvo_guarded" if self.is_guarded() else "marvo"
        program = self.program + "-guarded" * self.is_guarded()
        is_static = self.name in ("avi", "avi.guard", "readers")
        more = ["marvo-devices"] + ["marvo-exit-probe", "marvo-unload-probe"] * (self.name == "system")
        return ([] if is_static else [library]) + ([program, *more] if header or is_static else [])

    def is_guarded(self):
        return "guard" in pathlib.Path(self.entries[0]["command"][-1]).parts

    def run(self, limit, stopping, only=None, without=(), source=""):
        """Runs it. `only`: these tests alone. `without`: all but these. `source`: for the analysis of locks,
        what the paths of the sources to look at hold."""
        began = time.monotonic()
        entries = self.entries[:1] if only and not self.is_script else self.entries
        runs = [_Run(self, entry, number, only, without, source) for number, entry in enumerate(entries)]
        try:
            outcome = self._watch(runs, began + limit, stopping)
        finally:
            for run in runs:
                run.end()
        outcome.seconds = time.monotonic() - began
        return outcome

    @staticmethod
    def _watch(runs, deadline, stopping):
        waiting = list(runs)
        while waiting:
            for run in list(waiting):
                code = run.process.poll()
                if code is None:
                    continue
                if code != 0:
                    return run.failure(code)
                waiting.remove(run)
            if time.monotonic() > deadline:
                return waiting[0].failure(None)
            if stopping.is_set():
                raise KeyboardInterrupt
            time.sleep(0.05)
        return Outcome(True)


class _Run:
    """A command of a part while it runs, in a group of processes of its own."""

    def __init__(self, part, entry, number, only, without, source):
        folder = part.tree.folder / "build" / "runs"
        folder.mkdir(exist_ok=True)
        self.part, self.log = part, folder / f"{part.name}.{number}.txt"
        environment = dict(part.tree.environment)
        for name, value in _property(entry, "ENVIRONMENT", []):
            environment[name] = value
        command = list(entry["command"])
        if part.is_script:
            command += ["-f"] + [word for name in only or () for word in ("-k", name)]
            environment["MARVO_ONLY"] = source
        else:
            environment["GTEST_FAIL_FAST"] = "1"
            if only:
                environment["GTEST_FILTER"] = ":".join(only)
                for name in ("GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX"):
                    environment.pop(name, None)
            elif without:
                already = environment.get("GTEST_FILTER", "-")
                environment["GTEST_FILTER"] = ":".join([already, *without]).replace("-:", "-")
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen(["nice", *command], cwd=part.tree.build, env=environment,
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
                                            start_new_session=True)

    def failure(self, code):
        """What the log of a run that failed says; without a code it hangs."""
        text = self.log.read_text(encoding="utf-8", errors="replace")
        if self.part.is_script:
            failed = re.findall(r"^(?:FAIL|ERROR): (test\w+)", text, re.M)
        else:
            ran = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
            ended = set(re.findall(r"^\[ +(?:OK|FAILED|SKIPPED) +\] ([^\s,]+)", text, re.M))
            failed = re.findall(r"^\[  FAILED  \] ([^\s,]+)[^\n]*\(\d+ ms\)", text, re.M)
            failed = failed or [name for name in ran if name not in ended]
        said = self.part.is_script or failed and "FAILED" in text
        how = "hang" if code is None else "failed" if said else "crash"
        return Outcome(False, dict.fromkeys(failed), how)

    def end(self):
        if self.process.poll() is None:
            try:
                os.killpg(self.process.pid, signal.SIGTERM)
                self.process.wait(10)
            except (ProcessLookupError, subprocess.TimeoutExpired):
                pass
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.process.wait()


def _property(entry, name, default):
    for item in entry.get("properties", []):
        if item["name"] == name:
            return [pair.split("=", 1) for pair in item["value"]]
    return default


def read_parts(tree):
    """The parts that the tree's build has, by name."""
    told = subprocess.run(["ctest", "--show-only=json-v1"], cwd=tree.build, stdout=subprocess.PIPE,
                          check=True)
    groups = {}
    for entry in json.loads(told.stdout)["tests"]:
        if "command" in entry:
            groups.setdefault(re.sub(r"\.\d+$", "", entry["name"]), []).append(entry)
    return {name: Part(name, entries, tree) for name, entries in groups.items()}
