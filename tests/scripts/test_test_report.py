"""Tests of the reader of ctest reports."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
from test_report import SHOWN_LINES, summarise  # noqa: E402

PASSED = '<testcase name="a" status="run"><system-out>fine</system-out></testcase>'
FAILED = '<testcase name="b" status="fail"><failure message=""/><system-out>{}</system-out></testcase>'
SKIPPED = '<testcase name="c" status="notrun"><skipped message="SKIP"/></testcase>'


class ReportTest(unittest.TestCase):
    def summary(self, *cases):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "report.xml"
            path.write_text("<testsuite>" + "".join(cases) + "</testsuite>")
            return summarise(path)

    def test_all_passed(self):
        self.assertEqual(self.summary(PASSED, PASSED), (2, 0, []))

    def test_failed_test_is_shown_with_its_output(self):
        self.assertEqual(self.summary(PASSED, FAILED.format("x\ny")), (1, 1, ["FAILED b\n    x\n    y"]))

    def test_long_output_is_shortened_from_its_begin(self):
        passed, failed, texts = self.summary(FAILED.format("\n".join(f"line {i}" for i in range(SHOWN_LINES + 5))))
        self.assertEqual((passed, failed), (0, 1))
        self.assertTrue(texts[0].startswith("FAILED b\n    ... 5 lines before\n    line 5\n"))

    def test_many_failures_are_all_named(self):
        _, failed, texts = self.summary(*[FAILED.format("x")] * 12)
        self.assertEqual((failed, len(texts), texts[-1]), (12, 12, "FAILED b"))

    def test_skipped_test_counts_neither_way(self):
        self.assertEqual(self.summary(PASSED, SKIPPED), (1, 0, []))

    def test_no_test_is_a_failure(self):
        self.assertEqual(self.summary()[:2], (0, 1))
        self.assertEqual(self.summary(SKIPPED)[:2], (0, 1))

    def test_program_counts_as_the_tests_of_its_own_report(self):
        inner = ('<testsuites><testsuite><testcase name="x" classname="S" status="run" result="completed"/>'
                 '<testcase name="y" classname="S" status="run" result="completed"><failure message="why"/></testcase>'
                 '<testcase name="z" classname="S" status="run" result="skipped"/></testsuite></testsuites>')
        self.assertEqual(self.program_summary(FAILED.format("all"), inner), (1, 1, ["FAILED S.y\n    why"]))

    def test_program_that_crashed_after_its_tests_is_a_failure(self):
        inner = '<testsuites><testcase name="x" classname="S" status="run" result="completed"/></testsuites>'
        self.assertEqual(self.program_summary(FAILED.format("dead"), inner), (1, 1, ["FAILED b\n    dead"]))

    def test_program_without_a_report_counts_as_one_test(self):
        self.assertEqual(self.program_summary(FAILED.format("dead"), ""), (0, 1, ["FAILED b\n    dead"]))

    def program_summary(self, case, inner):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "report.xml").write_text(f"<testsuite>{case}</testsuite>")
            (Path(folder) / "b.xml").write_text(inner)
            return summarise(Path(folder) / "report.xml", folder)

    def test_missing_report_is_a_failure(self):
        self.assertEqual(summarise(Path("/nowhere/report.xml"))[:2], (0, 1))


if __name__ == "__main__":
    unittest.main()
