#!/usr/bin/env python3
"""Counts the single tests of a run of ctest.

test_results.py FOLDER

FOLDER holds ctest's report (ctest.xml, in JUnit's form) and what each part left of its tests (<part>.json, in
GoogleTest's form). When failed parts were run again, FOLDER/first/ holds the same of the first run, and for
these parts the second run counts.

Prints "PASSED FAILED SKIPPED", then a line for each test that failed at first and passed at its second try.
What failed or was skipped is named on standard error. A part that left no whole results, ran no test, or
failed although none of its tests did (a crash at the end, a time-out), counts as one failed test.
"""
import json
import pathlib
import sys
import xml.etree.ElementTree


class Part:
    """What came of one part: the names of tests that passed and were skipped, and what to say of failures."""

    def __init__(self, name, ended_well, results):
        self.passed, self.skipped, self.failed = [], [], []
        try:
            suites = json.loads(results.read_text(encoding="utf-8", errors="replace"))["testsuites"]
            for suite in suites:
                for test in suite["testsuite"]:
                    if test["status"] == "RUN":
                        self._outcome(test).append(f"{suite['name']}.{test['name']} (in {name})")
        except (OSError, ValueError, KeyError):
            self.failed.append(f"{name} left no whole results: it crashed, timed out or did not start")
            return
        if not self.passed + self.skipped + self.failed:
            self.failed.append(f"{name} ran no test")
        elif not ended_well and not self.failed:
            self.failed.append(f"{name} ended badly after its tests")

    def _outcome(self, test):
        if test.get("failures"):
            return self.failed
        return self.skipped if test["result"] == "SKIPPED" else self.passed


def read_run(folder):
    """The parts of a run by name."""
    report = xml.etree.ElementTree.parse(folder / "ctest.xml")
    said = {case.get("name"): case.get("status") for case in report.iter("testcase")}
    return {name: Part(name, status == "run", folder / f"{name}.json") for name, status in said.items()}


def main():
    folder = pathlib.Path(sys.argv[1])
    parts, rescued = read_run(folder), []
    if (folder / "first").exists():
        first, second = read_run(folder / "first"), parts
        parts = {**first, **second}
        rescued = [name for part in second if not second[part].failed for name in first[part].failed]
    for part in parts.values():
        for name in part.failed:
            print("failed:", name, file=sys.stderr)
        for name in part.skipped:
            print("skipped:", name, file=sys.stderr)
    states = ("passed", "failed", "skipped")
    print(*(sum(len(getattr(part, state)) for part in parts.values()) for state in states))
    for name in rescued:
        print(name)


main()
