#!/usr/bin/env python3
"""What the dump command prints is a description of the same archive, whatever the archive: the example and those of all
session cases."""

import json
import shutil

import tool_runs
from tool_runs import ScratchTest, cases, run

HIGHEST_FEATURE_LEVEL = 2
NO_FILES = 'ERROR: The archive description file is corrupt. Property "files" is missing or invalid.\n'


def archives_of(case):
    """The archives that a case begins with or changes to."""
    return [case.archive, *(step["archive"] for step in case.steps if "archive" in step)]


def from_line(text, beginning):
    """The text from the first line on that begins so."""
    lines = text.splitlines(keepends=True)
    return "".join(lines[next(i for i, line in enumerate(lines) if line.startswith(beginning)):])


class RoundTripTest(ScratchTest):
    """Dumps, writes the dump as a description, and looks at both archives."""

    def printed(self, command, archive, *line):
        done = run(command, "-a", archive, *line)
        self.assertEqual(done.code, 0, (done.output + done.errors).decode())
        return done.output.decode()

    def check(self, archive):
        """False when the archive cannot be read at all."""
        first = run("dump", "-a", archive)
        if first.code != 0:
            return False
        dumped = from_line(first.output.decode(), "{")
        self.check_keys(archive, json.loads(dumped))
        again = archive.with_name("again")
        shutil.copytree(archive, again)
        (again / "archive.json").write_text(dumped, encoding="utf-8")
        if json.loads(dumped)["files"] is None:
            self.check_without_entries(again)
        else:
            self.assertEqual(self.printed("dump", again), dumped)
            self.check_same(archive, again)
        shutil.rmtree(again)
        return True

    def check_keys(self, archive, dumped):
        """Entries keep their keys in their order; a checksum from the update file comes last."""
        given = json.loads((archive / "archive.json").read_text(encoding="utf-8-sig"))["files"]
        accepted = [entry for entry in given if entry.get("featureLevel", 1) <= HIGHEST_FEATURE_LEVEL]
        entries = dumped["files"] or []
        self.assertEqual(len(entries), len(accepted))
        for entry, original in zip(entries, accepted):
            added = [key for key in entry if key not in original]
            self.assertIn(added, ([], ["checksumCrc32"]))
            self.assertEqual(list(entry), list(original) + added)
            self.assertEqual({**entry, "checksumCrc32": 0}, {**original, "checksumCrc32": 0})

    def check_without_entries(self, again):
        """A dump without entries has null for its list, which no description may have."""
        done = run("dump", "-a", again)
        self.assertEqual(done.code, 3)
        self.assertIn(NO_FILES, done.output.decode())

    def check_same(self, archive, again):
        tables = [from_line(self.printed("content", folder), "BoardType") for folder in (archive, again)]
        self.assertEqual(*tables)
        self.assertEqual(*(from_line(self.printed("archive-version", folder), ("0", *"123456789")).splitlines()[-1]
                           for folder in (archive, again)))
        records = [json.loads(self.printed("content", folder, "--json")) for folder in (archive, again)]
        self.assertEqual(records[1]["archive"].pop("formatVersion"), "1.0")
        records[0]["archive"].pop("formatVersion")
        # Entries that are ignored are not dumped, so that the others move up.
        self.assertEqual([file.pop("index") for file in records[1]["files"]],
                         [file["fileIndex"] for file in records[1]["files"]])
        for file in records[0]["files"]:
            self.assertGreaterEqual(file.pop("index"), file["fileIndex"])
        self.assertEqual(*records)

    def test_the_example(self):
        self.assertTrue(self.check(self.lay_out_examples()[0]))

    def test_the_archives_of_the_session_cases(self):
        read = 0
        seen = []
        for name in cases.case_names():
            for archive in archives_of(cases.Case(cases.CASES / name)):
                if archive in seen:
                    continue
                seen.append(archive)
                folder = self.scratch / "archive"
                cases.lay_out_archive(archive, folder)
                with self.subTest(name, archive=archive):
                    read += self.check(folder)
                shutil.rmtree(folder)
                shutil.rmtree(self.scratch / "again", ignore_errors=True)
        self.assertGreater(read, 15)


if __name__ == "__main__":
    tool_runs.main()
