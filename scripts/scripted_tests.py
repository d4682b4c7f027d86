"""Tests in Python that are counted one by one, like those of the GoogleTest programs.

A test script defines unittest cases and ends with `scripted_tests.main()`. CTest runs it on Linux
(`marvo_script_test` in tests/CMakeLists.txt); programs of ours are run by `run`. Called with a command line
(`marvo_command_test`), this file is itself a script with one test, which passes when the command does.
Environment:

  MARVO_PRESET       the build whose programs are tested: win32 (also when unset), win64, win32-debug, ...
  MARVO_TEST_RESULT  file for the results, in GoogleTest's JSON form
  MARVO_CWD          directory of the repository that the tests may fill

By hand: `PYTHONPATH=scripts python3 SCRIPT -k NAME`; the arguments are unittest's.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[1]
PRESET = os.environ.get("MARVO_PRESET", "win32")
# The Windows that it is for, win32 or win64.
TARGET = PRESET.partition("-")[0]
STREAMS = ROOT / "build" / "streams"
PROGRAMS = ROOT / "build" / PRESET / "bin"
# Whether the slow variants of the tests are wanted.
LONG = bool(os.environ.get("MARVO_LONG"))


def scratch():
    """The directory that the tests of this process may fill; made when missing."""
    default = ROOT / "build" / PRESET / "scratch" / "by-hand"
    directory = pathlib.Path(os.environ.get("MARVO_CWD", default)).resolve()
    directory.mkdir(parents=True, exist_ok=True)
    return directory


def command(program, *arguments):
    """The command line that runs a program of build/<target>/bin under Wine."""
    return [str(ROOT / "scripts" / "run.sh"), PRESET, program, *map(str, arguments)]


def environment(**more):
    """The environment for `command`: this process's, without what would make a program leave results."""
    dropped = ("MARVO_TEST_RESULT", "MARVO_CWD")
    return {**{key: value for key, value in os.environ.items() if key not in dropped}, **more}


def complete(words, **options):
    """subprocess.run without input; stdout and stderr of the result are bytes. They do not come through
    pipes: services of Wine that a program is the first to need may hold its pipes open for a minute after it
    has ended."""
    with tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as errors:
        done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=output, stderr=errors, check=False,
                              **options)
        for name, file in ("stdout", output), ("stderr", errors):
            file.seek(0)
            setattr(done, name, file.read())
        return done


def run(program, *arguments, cwd=None, timeout=120, **more):
    """Runs a program to its end, in `cwd` (default: the scratch directory), which must lie in the repository;
    `more` goes into its environment. Gives subprocess's CompletedProcess with bytes in stdout and stderr; a
    program that does not end in `timeout` seconds has the return code 124."""
    return complete(command(program, *arguments), cwd=cwd or scratch(),
                    env=environment(MARVO_TIMEOUT=str(timeout), **more))


class _Results(unittest.TextTestResult):
    """Keeps for every test its name, how long it took and why it failed."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self.records = {}
        self._began = 0.0

    def _record(self, test):
        # An error outside of a test (in setUpClass, say) comes with a holder that has nothing but a text.
        suite, _, name = test.id().rpartition(".")
        return self.records.setdefault(test.id(), {
            "suite": suite.rpartition(".")[2] or suite, "name": name, "result": "COMPLETED", "failures": [],
            "time": 0.0})

    def _fail(self, test, text):
        self._record(test)["failures"].append({"failure": text, "type": ""})

    def startTest(self, test):
        super().startTest(test)
        self._began = time.monotonic()
        self._record(test)

    def stopTest(self, test):
        self._record(test)["time"] = time.monotonic() - self._began
        super().stopTest(test)

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self._record(test)["result"] = "SKIPPED"

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._fail(test, self.failures[-1][1])

    def addError(self, test, err):
        super().addError(test, err)
        self._fail(test, self.errors[-1][1])

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err is not None:
            self._fail(test, f"{subtest}: {self._exc_info_to_string(err, test)}")

    def addExpectedFailure(self, test, err):
        super().addExpectedFailure(test, err)
        self._record(test)["result"] = "SKIPPED"

    def addUnexpectedSuccess(self, test):
        super().addUnexpectedSuccess(test)
        self._fail(test, "passed, but was expected to fail")

    def as_json(self):
        suites = {}
        for record in self.records.values():
            entry = {"name": record["name"], "status": "RUN", "result": record["result"],
                     "time": f"{record['time']:.3f}s"}
            if record["failures"]:
                entry["failures"] = record["failures"]
            suites.setdefault(record["suite"], []).append(entry)
        return {"tests": len(self.records), "testsuites": [
            {"name": name, "tests": len(entries), "testsuite": entries} for name, entries in suites.items()]}


class _Runner(unittest.TextTestRunner):
    resultclass = _Results

    def run(self, test):
        # Results of a former run must not pass for this one's, should it break off.
        file = os.environ.get("MARVO_TEST_RESULT")
        if file:
            pathlib.Path(file).unlink(missing_ok=True)
        results = super().run(test)
        if file:
            pathlib.Path(file).parent.mkdir(parents=True, exist_ok=True)
            pathlib.Path(file).write_text(json.dumps(results.as_json(), indent=1), encoding="utf-8")
        return results


def main():
    """Runs the calling script's test cases; ends with status 1 when one fails or there is none."""
    program = unittest.main(module="__main__", testRunner=_Runner, verbosity=2, exit=False)
    raise SystemExit(not (program.result.wasSuccessful() and program.result.testsRun > 0))


class Command(unittest.TestCase):
    """The command line that this file was called with."""
    words = []

    def test_succeeds(self):
        done = complete(self.words)
        self.assertEqual(done.returncode, 0, (done.stdout + done.stderr).decode(errors="replace"))


if __name__ == "__main__":
    Command.words = sys.argv[1:]
    del sys.argv[1:]
    main()
