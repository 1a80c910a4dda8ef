#!/usr/bin/env python3
"""Folders are found however their paths are written: with drive letters, in every alphabet, with a separator at the end,
and beyond 260 characters at least without harm."""

import os
import shutil

import tool_runs
from tool_runs import ScratchTest, run

FOREIGN = "Gr\u00fc\u00dfe \u4e2d \U0001f680"
COMPLETED = b"    Update completed successfully!\n"


def on_drive(path):
    """The path as a Windows program writes it: drive Z is the root folder."""
    return "Z:" + str(path).replace("/", "\\")


class ExamplesTest(ScratchTest):
    """The example archive and rack, and what the tool says of them."""

    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.expected = run("content", "-a", self.archive).output
        self.assertIn(b"qb4120-firmware.kfw", self.expected)

    def check_content(self, folder):
        done = run("content", "-a", folder)
        self.assertEqual((done.code, done.errors, done.output), (0, b"", self.expected))

    def check_update(self, archive, rack):
        done = run("update", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--no-progress")
        self.assertEqual((done.code, done.errors), (0, b""), done.output.decode())
        self.assertIn(COMPLETED, done.output)
        self.assertTrue((self.rack / "state").is_dir())

    def check_refused(self, folder):
        """With the reader's own message about the description file."""
        done = run("content", "-a", folder)
        sentence = "Cannot open archive description file"
        self.assertEqual(done.code, 3)
        self.assertIn(f"ERROR: {sentence} {folder}\\archive.json\n", done.output.decode())
        shown = f"{folder}\\archive.json" if tool_runs.arguments.launcher else f"{folder}/archive.json"
        self.assertEqual(done.errors.decode(), f"kvreflash: {sentence} {shown}\n")


class PathsTest(ExamplesTest):
    def test_a_separator_at_the_end(self):
        self.check_content(f"{self.archive}\\")
        self.check_content(f"{self.archive}/")
        self.check_update(f"{self.archive}\\", f"{self.rack}/")

    def test_names_of_every_alphabet(self):
        archive = self.archive.rename(self.archive.with_name(FOREIGN))
        self.rack = self.rack.rename(archive / FOREIGN)
        self.check_content(archive)
        self.check_update(archive, self.rack)

    def test_a_relative_path(self):
        done = run("content", "-a", self.archive.name, folder=self.archive.parent)
        self.assertEqual((done.code, done.output), (0, self.expected))

    def test_a_long_path_is_read_or_refused_with_a_message(self):
        folder = self.archive.parent.joinpath(*["x" * 60] * 5)
        self.assertGreater(len(str(folder)), 260)
        shutil.copytree(self.archive, folder)
        done = run("content", "-a", folder)
        if done.code == 0:
            self.assertEqual(done.output, self.expected)
        else:
            self.check_refused(folder)

    def test_a_path_that_no_system_takes_is_refused_with_a_message(self):
        self.check_refused(f"{self.archive.parent}/{'x' * 5000}")


class WindowsPathsTest(ExamplesTest):
    def setUp(self):
        if not tool_runs.arguments.launcher:
            self.skipTest("paths of Windows only")
        super().setUp()

    def test_a_drive_letter(self):
        self.check_content(on_drive(self.archive))
        self.check_content(on_drive(self.archive) + "\\")
        self.check_content(on_drive(self.archive).lower().replace("\\", "/"))
        self.check_update(on_drive(self.archive), on_drive(self.rack))

    def test_the_form_without_a_limit(self):
        self.check_content("\\\\?\\" + on_drive(self.archive))

    def test_a_share_that_is_not_there(self):
        self.check_refused("\\\\nowhere.invalid\\share")

    def test_a_path_relative_to_a_drive(self):
        relative = os.path.relpath(self.archive, self.archive.parent)
        done = run("content", "-a", f"Z:{relative}", folder=self.archive.parent)
        self.assertEqual((done.code, done.output), (0, self.expected))


if __name__ == "__main__":
    tool_runs.main()
