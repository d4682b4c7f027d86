#!/usr/bin/env python3
"""Runs single tests of the GoogleTest programs, each alone and in an empty folder, where it can use nothing
that another one has left. With MARVO_LONG all of them, else one of each program, another one every day.

By hand: MARVO_LONG=1 scripts/run_alone.py [-k ROOM]; environment and arguments are scripted_tests'."""
import datetime
import random
import re
import shutil
import unittest

import scripted_tests

FOLDER = scripted_tests.scratch() / "alone"
DAY = datetime.date.today().toordinal()


def tests_of(program):
    """The full names of a program's tests."""
    suite, names = "", []
    for line in scripted_tests.run(program, "--gtest_list_tests").stdout.decode().splitlines():
        word = line.split("#")[0].strip()
        if line.startswith("  "):
            names.append(suite + word)
        elif re.fullmatch(r"[\w/]+\.", word):
            suite = word
    return names


class Alone(unittest.TestCase):
    def check(self, program):
        names = tests_of(program)
        self.assertTrue(names)
        if not scripted_tests.LONG:
            names = [random.Random(f"{DAY} {program}").choice(names)]
        for name in names:
            with self.subTest(name):
                shutil.rmtree(FOLDER, ignore_errors=True)
                FOLDER.mkdir()
                done = scripted_tests.run(program, f"--gtest_filter={name}", cwd=FOLDER, timeout=300)
                output = done.stdout.decode(errors="replace")
                self.assertEqual(done.returncode, 0, output)
                self.assertRegex(output, r"\[  PASSED  \] 1 test|\[  SKIPPED \] 1 test")

    def tearDown(self):
        shutil.rmtree(FOLDER, ignore_errors=True)


for file in sorted(scripted_tests.PROGRAMS.glob("marvo-tests-*.exe")):
    setattr(Alone, "test_" + file.stem.rpartition("-")[2],
            lambda self, program=file.stem: self.check(program))

if __name__ == "__main__":
    scripted_tests.main()
