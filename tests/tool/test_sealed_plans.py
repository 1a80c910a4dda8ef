#!/usr/bin/env python3
"""Plans of a sealed archive: whoever saved one has vouched for this release and for no other."""

import json

import tool_runs
from release_runs import ReleaseTest
from run_journals import RunTest
from tool_runs import run


class SealedPlanTest(RunTest, ReleaseTest):
    """A plan of a release that somebody trusted has signed."""

    def setUp(self):
        super().setUp()
        self.release()
        self.image = self.archive / "network.ini"
        self.trusted = ("--trust", self.trust)
        self.save(*self.trusted)

    def lay_out_examples(self, name="examples"):
        """Once for both kinds of tests."""
        folder = self.scratch / name
        return (folder / "archive", folder / "rack") if folder.exists() else super().lay_out_examples(name)

    def run_sealed(self, *more):
        return self.run_plan(*self.trusted, *self.every_view, *more)

    def assert_untouched(self, done, code, failure):
        document = self.assert_agree(done, code, failure)
        self.assertFalse((self.rack / "state").exists())
        self.assertEqual(self.files(), [])
        self.assertEqual(self.private_copies(), [])
        return document

    def forge(self):
        """Once more, and the file is as it was."""
        content = self.image.read_bytes()
        self.image.write_bytes(content[:-1] + bytes([content[-1] ^ 1]))

    def test_the_release_is_updated(self):
        document = self.assert_agree(self.run_sealed(), 0, None)
        self.assertEqual(document["release"]["signer"], "release@korvel")
        self.assertEqual([one["state"] for one in self.runs()], ["complete"])

    def test_an_archive_that_was_forged_is_refused(self):
        self.forge()
        document = self.assert_untouched(self.run_sealed(), 3, "archive")
        self.assertIn("network.ini", document["message"])

    def test_a_forged_archive_that_is_sealed_again_is_refused(self):
        self.forge()
        (self.archive / "manifest.json.sig").unlink()
        self.seal()
        self.assert_untouched(self.run_sealed(), 3, "archive")
        self.sign(self.key("stranger"))
        self.assert_untouched(self.run_sealed(), 3, "archive")

    def test_another_release_of_the_same_signer_is_another_plan(self):
        self.forge()
        (self.archive / "manifest.json.sig").unlink()
        self.release()
        document = self.assert_untouched(self.run_sealed(), 9, "stale")
        self.assertIn("manifestSha256", document["message"])

    def test_without_the_trust_folder_the_signer_is_another(self):
        done = self.run_plan(*self.every_view)
        document = self.assert_untouched(done, 9, "stale")
        self.assertIn("release", document["message"])

    def test_a_run_of_it_goes_on_with_this_release_only(self):
        self.assertEqual(self.run_sealed().code, 0)
        self.cut_journal("intent", 2)
        self.reset()
        self.forge()
        files = self.files()
        done = run("resume", "--emulate", self.rack, "--journal", self.journal, *self.trusted, *self.every_view)
        self.assert_agree(done, 3, "archive")
        self.assertFalse((self.rack / "state").exists())
        self.assertEqual(self.files(), files)
        self.forge()
        done = run("resume", "--emulate", self.rack, "--journal", self.journal, *self.trusted, *self.every_view)
        self.assert_agree(done, 0, None)
        self.assertEqual(self.runs()[-1]["plan"], json.loads(self.plan.read_text(encoding="utf-8"))["id"])


if __name__ == "__main__":
    tool_runs.main()
