"""Whether the results of scripted tests say what happened, and whether a run is counted as it went."""
import json
import os
import pathlib
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
        states = {f"{suite['name']}.{test['name']}": "failed" if test.get("failures") else test["result"]
                  for suite in results["testsuites"] for test in suite["testsuite"]}
        broken = [name for name in states if "Broken" in name]
        self.assertEqual([states.pop(name) for name in broken], ["failed"])
        self.assertEqual(states, {
            "Sample.test_passes": "COMPLETED", "Sample.test_fails": "failed", "Sample.test_raises": "failed",
            "Sample.test_skipped": "SKIPPED", "Sample.test_part_fails": "failed",
            "Sample.test_surprises": "failed"})
        self.assertEqual(done.returncode, 1)

    def test_the_exit_status_is_0_only_when_tests_ran_and_passed(self):
        self.assertEqual(self.run_script(SCRIPT, "-k", "test_passes")[0].returncode, 0)
        self.assertEqual(self.run_script("import scripted_tests; scripted_tests.main()")[0].returncode, 1)


class CountedRuns(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = pathlib.Path(holder.name)

    def leave(self, folder, **parts):
        """Leaves of each part what ctest says and its tests: + passed, - failed, s skipped."""
        folder.mkdir(exist_ok=True)
        cases = [f'<testcase name="{name}" status="{said}"/>' for name, (said, _) in parts.items()]
        (folder / "ctest.xml").write_text(f"<testsuite>{''.join(cases)}</testsuite>")
        for name, (_, tests) in parts.items():
            (folder / f"{name}.json").write_text("{" if tests is None else json.dumps({"testsuites": [{
                "name": name, "testsuite": [
                    {"name": str(k), "status": "RUN", "result": "SKIPPED" if sign == "s" else "COMPLETED",
                     **({"failures": [{}]} if sign == "-" else {})} for k, sign in enumerate(tests)]}]}))

    def count(self):
        counter = scripted_tests.ROOT / "scripts" / "test_results.py"
        done = subprocess.run([sys.executable, counter, self.folder], capture_output=True, text=True,
                              check=True)
        return done.stdout.splitlines(), done.stderr

    def test_what_a_part_does_not_tell_is_a_failure(self):
        self.leave(self.folder, good=("run", "++s"), bad=("fail", "+-"), crashed=("fail", None),
                   silent=("run", None), empty=("run", ""), late=("fail", "++"), absent=("notrun", None))
        counts, said = self.count()
        self.assertEqual(counts, ["5 6 1"])
        for text in ("bad.1 (in bad)", "crashed left no", "silent left no", "empty ran no test",
                     "late ended badly", "absent left no"):
            self.assertIn("failed: " + text, said)

    def test_a_second_try_counts_and_is_named(self):
        self.leave(self.folder / "first", good=("run", "++"), shaky=("fail", "+-"), bad=("fail", "-+"),
                   gone=("fail", "-"))
        self.leave(self.folder, shaky=("run", "++"), bad=("fail", "--"))
        self.assertEqual(self.count()[0], ["4 3 0", "shaky.1 (in shaky)"])


if __name__ == "__main__":
    scripted_tests.main()
