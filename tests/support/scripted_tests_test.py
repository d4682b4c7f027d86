"""Whether the results that scripted tests leave say what happened."""
import json
import os
import subprocess
import sys
import tempfile
import textwrap
import unittest

import scripted_tests

SCRIPT = """
    import unittest, scripted_tests
    class Sample(unittest.TestCase):
        def test_passes(self): pass
        def test_fails(self): self.fail("wrong")
        def test_raises(self): raise ValueError("odd")
        @unittest.skip("not here")
        def test_skipped(self): pass
        def test_part_fails(self):
            for number in range(3):
                with self.subTest(number=number): self.assertNotEqual(number, 1)
        @unittest.expectedFailure
        def test_surprises(self): pass
    class Broken(unittest.TestCase):
        @classmethod
        def setUpClass(cls): raise OSError("no disk")
        def test_never_runs(self): pass
    scripted_tests.main()
"""


class ScriptedTests(unittest.TestCase):
    def run_script(self, text, *arguments):
        with tempfile.TemporaryDirectory() as folder:
            result = os.path.join(folder, "results", "sample.json")
            environment = {**os.environ, "MARVO_TEST_RESULT": result, "PYTHONPATH": os.path.dirname(
                os.path.abspath(scripted_tests.__file__))}
            done = subprocess.run([sys.executable, "-", *arguments], input=textwrap.dedent(text).encode(),
                                  capture_output=True, env=environment, check=False)
            with open(result, encoding="utf-8") as file:
                return done, json.load(file)

    def test_every_outcome_is_counted_once(self):
        done, results = self.run_script(SCRIPT)
        states = {}
        for suite in results["testsuites"]:
            for test in suite["testsuite"]:
                state = "failed" if test.get("failures") else test["result"]
                states[f"{suite['name']}.{test['name']}"] = state
        broken = [name for name in states if "Broken" in name]
        self.assertEqual([states.pop(name) for name in broken], ["failed"])
        self.assertEqual(states, {
            "Sample.test_passes": "COMPLETED", "Sample.test_fails": "failed", "Sample.test_raises": "failed",
            "Sample.test_skipped": "SKIPPED", "Sample.test_part_fails": "failed", "Sample.test_surprises": "failed"})
        self.assertEqual(done.returncode, 1)

    def test_the_exit_status_is_0_only_when_tests_ran_and_passed(self):
        self.assertEqual(self.run_script(SCRIPT, "-k", "test_passes")[0].returncode, 0)
        self.assertEqual(self.run_script("import scripted_tests; scripted_tests.main()")[0].returncode, 1)


if __name__ == "__main__":
    scripted_tests.main()
