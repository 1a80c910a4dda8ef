"""The programs that kvreflash is compared with do what they are taken for. The environment variable KV_BENCH_BIN names
the folder with all of them (default: that of scripts/bench.sh)."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import generate  # noqa: E402
import measure  # noqa: E402
from measure import Command  # noqa: E402

BIN = Path(os.environ.get("KV_BENCH_BIN", Path(__file__).resolve().parents[1] / "build" / "bench" / "bin"))


def output(*arguments):
    return subprocess.run([str(argument) for argument in arguments], stdout=subprocess.PIPE, check=True).stdout


class ReferencesTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)
        self.archive = self.folder / "archive"
        generate.write_archive(self.archive, "1", 200, files=True)
        self.description = self.archive / "archive.json"

    def status(self, *arguments):
        return subprocess.run([str(argument) for argument in arguments], stdout=subprocess.DEVNULL,
                              check=False).returncode

    def test_all_dumps_are_the_same(self):
        expected = output("jq", "--indent", "4", ".", self.description)
        for name in ("parse_boost", "parse_nlohmann", "parse_rapidjson"):
            self.assertEqual(output(BIN / name, "--print", self.description), expected, name)
        self.assertEqual(output(BIN / "kvreflash", "dump", "-a", self.archive), expected)

    def test_the_listing_has_the_cells_of_content(self):
        def cells(text):
            return [[cell.strip() for cell in line.split(" | ")] for line in text.decode().splitlines()]

        listing = cells(output("jq", "-r", measure.JQ_CONTENT, self.description))
        content = cells(output(BIN / "kvreflash", "content", "-a", self.archive))
        self.assertEqual(len(listing), 200)
        self.assertEqual(listing, [line for line in content if len(line) == 5][1:])

    def test_parsers_refuse_what_is_no_json(self):
        broken = self.folder / "broken.json"
        broken.write_bytes(self.description.read_bytes()[:-3])
        for name in ("parse_boost", "parse_nlohmann", "parse_rapidjson", "parse_simdjson"):
            self.assertEqual(self.status(BIN / name, self.description), 0)
            self.assertEqual(self.status(BIN / name, broken), 1)

    def test_the_parser_without_print_prints_nothing(self):
        for name in ("parse_boost", "parse_nlohmann", "parse_rapidjson", "parse_simdjson", "empty_process"):
            self.assertEqual(output(BIN / name, self.description), b"")

    def test_all_heads_are_read(self):
        files = self.archive / "files.txt"
        self.assertEqual(self.status(BIN / "read_heads", files), 0)
        files.write_text(files.read_text(encoding="utf-8") + str(self.folder / "absent"), encoding="utf-8")
        self.assertEqual(self.status(BIN / "read_heads", files), 1)


    def test_files_are_copied_with_all_that_they_hold(self):
        copies = self.folder / "copies"
        copies.mkdir()
        long = self.folder / "long"
        long.write_bytes(bytes(range(256)) * 3000)
        self.assertEqual(self.status(BIN / "hash_and_copy", self.description, long, copies), 0)
        for path in (self.description, long):
            self.assertEqual((copies / path.name).read_bytes(), path.read_bytes())
        self.assertEqual(self.status(BIN / "hash_and_copy", self.folder / "absent", copies), 1)
        self.assertEqual(self.status(BIN / "hash_and_copy", long, self.folder / "absent"), 1)


class RunMeasuredTest(unittest.TestCase):
    def run_python(self, code, **more):
        return measure.Runner(BIN).run(Command("test", [sys.executable, "-c", code], **more))

    def test_time(self):
        sleeping = self.run_python("import time; time.sleep(0.4)")
        self.assertGreaterEqual(sleeping.wall, 0.4)
        self.assertLess(sleeping.processor, sleeping.wall)
        working = self.run_python("import time\nwhile time.process_time() < 0.4: pass")
        self.assertGreaterEqual(working.processor, 0.4)
        self.assertGreaterEqual(working.wall * 1.05, working.processor)

    def test_peak_memory(self):
        small = self.run_python("pass").peak
        self.assertLess(small, 40000)
        self.assertGreaterEqual(self.run_python("bytearray(b'x') * (100 << 20)").peak, small + 90000)
        self.assertLess(measure.Runner(BIN).run(Command("small", [BIN / "empty_process"])).peak, 8000)

    def test_failures_and_the_environment(self):
        with self.assertRaises(measure.MeasurementError):
            self.run_python("raise SystemExit(3)")
        self.run_python("import os; assert os.environ['KV_X'] == 'y'", environment={"KV_X": "y"})
        with self.assertRaises(measure.MeasurementError):
            measure.Runner(BIN).run(Command("absent", [BIN / "no-such-program"]))

    def test_what_goes_before_goes_before_each_run(self):
        calls = []
        for _ in range(2):
            self.run_python("pass", before=lambda: calls.append(1))
        self.assertEqual(len(calls), 2)


class DataTest(unittest.TestCase):
    def test_made_once(self):
        with tempfile.TemporaryDirectory() as name:
            data = measure.Data(Path(name))
            description = data.archive(5) / "archive.json"
            description.write_text("kept", encoding="utf-8")
            self.assertEqual((data.archive(5) / "archive.json").read_text(encoding="utf-8"), "kept")
            data.generator = "another"
            self.assertEqual(len(json.loads((data.archive(5) / "archive.json").read_text(encoding="utf-8"))["files"]),
                             5)


if __name__ == "__main__":
    unittest.main()
