"""The report on coverage: what counts, and which lines need a reason."""

import contextlib
import io
import json
import os
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import coverage_report  # noqa: E402


def line(number, count, *branches, **more):
    """Branches are pairs: how often it was taken, and whether only exceptions take it."""
    return {"line_number": number, "count": count,
            "branches": [{"count": taken, "throw": throw} for taken, throw in branches], **more}


class CoverageReportTest(unittest.TestCase):
    """Reports on one source of five lines."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(scratch.name)
        Path("src").mkdir()
        Path("src/a.cpp").write_text("one\n  if (two)\n    three;\nfour\nfive\n", encoding="utf-8")
        Path("reasons").write_text("", encoding="utf-8")

    def report(self, *lines):
        """The exit code and what is printed."""
        Path("coverage.json").write_text(json.dumps({"files": [{"file": "src/a.cpp", "lines": lines}]}),
                                         encoding="utf-8")
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            code = coverage_report.main("coverage.json", "reasons")
        return code, output.getvalue()

    def test_all_reached(self):
        code, text = self.report(line(1, 3), line(2, 1, (1, False), (2, False)))
        self.assertEqual(code, 0)
        self.assertIn("0 lines are not reached", text)
        self.assertIn("2 of      2", text)

    def test_nothing_measured(self):
        self.assertEqual(self.report()[0], 1)

    def test_lines_without_code_do_not_count(self):
        self.assertEqual(self.report(line(1, 3), line(2, 0, **{"gcovr/noncode": True}))[0], 0)

    def test_too_few_lines(self):
        Path("reasons").write_text("src/a.cpp | if (two) three; | never\n", encoding="utf-8")
        lines = [line(number, 1) for number in range(4, 101)]
        self.assertEqual(self.report(*lines, *lines[:2], line(3, 0))[0], 0)
        self.assertEqual(self.report(*lines[:40], line(3, 0))[0], 1)

    def test_too_few_branches(self):
        taken = [(1, False)] * 9
        self.assertEqual(self.report(line(1, 1, *taken, (0, False)))[0], 0)
        self.assertEqual(self.report(line(1, 1, *taken[:8], (0, False)))[0], 1)

    def test_branches_of_exceptions_do_not_count(self):
        self.assertEqual(self.report(line(1, 1, (1, False), *[(0, True)] * 9))[0], 0)

    def test_a_line_needs_a_reason_of_its_own(self):
        lines = [line(1, 1)] * 60 + [line(3, 0)]
        code, text = self.report(*lines)
        self.assertEqual(code, 1)
        self.assertIn("src/a.cpp:3: if (two) three;\n    NO REASON GIVEN\n", text)
        Path("reasons").write_text("# why\n\nsrc/a.cpp | if (two) three; | two is false\n", encoding="utf-8")
        code, text = self.report(*lines)
        self.assertEqual(code, 0)
        self.assertIn("src/a.cpp:3: if (two) three;\n    two is false\n", text)


if __name__ == "__main__":
    unittest.main()
