"""Archives without a target."""

import json
import unittest

import kvreflash
import support
from kvreflash import ArchiveDocument, ChangeKind, Failure, Seal, Severity
from support import ScratchTest


def raise_version(description):
    """Another version of one entry, and one entry less."""
    description["archiveVersion"] = "24.0"
    entry = next(entry for entry in description["files"] if entry["name"] == "qb4120-ipl.kfw")
    entry["version"] = "6.0"
    description["files"] = [entry for entry in description["files"] if entry["name"] != "qb4120-cpld.kfw"]


def break_entry(description):
    description["files"][0]["mode"] = "sideways"


class ArchiveTest(ScratchTest):
    """What an archive states, and what is wrong with it."""

    def open(self, folder=support.ARCHIVE, **options):
        archive = kvreflash.Archive(folder, **options)
        self.addCleanup(archive.close)
        return archive

    def test_the_content_has_identity_and_entries(self):
        content = self.open().content()
        self.assertEqual((content.failure, content.archive_name, content.archive_version),
                         (Failure.NONE, "QB line firmware, summer release", "23.2.1"))
        self.assertEqual(len(content.entries), 19)
        entry = next(entry for entry in content.entries if entry.file_name == "qb4120-firmware.kfw")
        self.assertEqual((entry.version, entry.checksum, entry.upgrade_only), ("23.2.1", 947785106, False))
        self.assertEqual((content.manifest_digest, content.signer), (None, None))

    def test_a_refused_archive_raises_unless_it_must_not(self):
        archive = self.open(self.scratch)
        with self.assertRaisesRegex(kvreflash.ArchiveRefused, "archive.json") as caught:
            archive.content()
        self.assertEqual(caught.exception.exit_code, 3)
        content = archive.content(check=False)
        self.assertEqual((content.failure, content.message), (Failure.ARCHIVE, caught.exception.message))

    def test_a_check_finds_errors_with_their_place(self):
        self.assertEqual(self.open().check(), ())
        finding, = self.open(self.copy_archive(break_entry)).check()
        self.assertEqual((finding.severity, finding.code, finding.path),
                         (Severity.ERROR, "mode-unknown", "$.files[0].mode"))
        self.assertEqual(finding.hint, 'Write "standard" or "upgrade".')
        self.assertGreater(finding.line * finding.column, 0)

    def test_a_check_warns_of_what_is_only_surprising(self):
        archive = self.copy_archive()
        (archive / "stray.kfw").write_bytes(b"nobody names it")
        self.assertEqual([finding.severity for finding in self.open(archive).check()], [Severity.WARNING])

    def test_a_comparison_states_all_places(self):
        newer = self.open(self.copy_archive(raise_version))
        changes = newer.compare(self.open())
        raised, = [change for change in changes if change.change == ChangeKind.UP]
        self.assertEqual((raised.version_before, raised.version_after), ("5.0.1", "6.0"))
        removed, = [change for change in changes if change.change == ChangeKind.REMOVED]
        self.assertEqual((removed.board_type, removed.version_after), ("QB4120", None))
        self.assertIn(ChangeKind.SAME, {change.change for change in changes})

    def test_a_comparison_with_a_refused_archive_raises(self):
        with self.assertRaises(kvreflash.ArchiveRefused) as caught:
            self.open().compare(self.open(self.scratch))
        self.assertIn("archive.json", caught.exception.message)

    def test_documents_are_those_of_the_tool(self):
        archive = self.open()
        archive.content()
        archive.check()
        archive.compare(self.open())
        for kind in ArchiveDocument:
            self.assertEqual(archive.json(kind)["format"]["name"], f"kvreflash.{kind.name.lower()}")

    def test_the_order_of_calls_is_kept(self):
        archive = self.open()
        for kind in ArchiveDocument:
            with self.assertRaises(kvreflash.OrderError):
                archive.document(kind)

    def test_a_closed_archive_is_refused(self):
        with self.open() as archive:
            archive.content()
        archive.close()
        with self.assertRaises(kvreflash.ArgumentError):
            archive.check()

    def test_a_session_is_no_archive(self):
        session = self.session()
        archive = self.open()
        archive._handle, session._handle = session._handle, archive._handle  # pylint: disable=protected-access
        with self.assertRaises(kvreflash.ArgumentError):
            archive.content()
        archive._handle, session._handle = session._handle, archive._handle  # pylint: disable=protected-access


class SealedArchiveTest(ScratchTest):
    """Archives whose manifest is obeyed."""

    def setUp(self):
        super().setUp()
        self.folder = self.copy_archive()
        support.run_tool("seal", self.folder)

    def test_a_sealed_archive_states_its_manifest(self):
        with kvreflash.Archive(self.folder, release=True) as archive:
            content = archive.content()
        self.assertEqual(content.seal, Seal.SEALED)
        self.assertRegex(content.manifest_digest, "^[0-9a-f]{64}$")
        self.assertRegex(content.created, r"^\d{4}-\d\d-\d\dT")
        self.assertIsNone(content.signer)

    def test_a_tampered_archive_is_refused(self):
        with (self.folder / "qb4120-ipl.kfw").open("ab") as file:
            file.write(b"x")
        with kvreflash.Archive(self.folder, release=True) as archive:
            with self.assertRaisesRegex(kvreflash.ArchiveRefused, "qb4120-ipl.kfw"):
                archive.content()
            self.assertEqual({finding.code for finding in archive.check()}, {"not-accepted"})
        with kvreflash.Archive(self.folder) as archive:
            archive.content()

    def test_who_trusts_nobody_refuses_what_nobody_has_signed(self):
        trust = self.scratch / "trust"
        trust.mkdir()
        (trust / "allowed_signers").write_text("", encoding="utf-8")
        self.serve()
        with self.assertRaises(kvreflash.ArchiveRefused):
            self.session(archive=self.folder, trust_folder=trust).prepare()
        with kvreflash.Archive(self.folder, trust_folder=trust) as archive:
            self.assertEqual(archive.content(check=False).failure, Failure.ARCHIVE)

    def test_archives_that_nobody_has_signed_are_accepted_if_wanted(self):
        trust = self.scratch / "trust"
        trust.mkdir()
        (trust / "allowed_signers").write_text("", encoding="utf-8")
        with kvreflash.Archive(self.folder, trust_folder=trust, accept_unsealed=True) as archive:
            self.assertEqual(archive.content().seal, Seal.SEALED)

    def test_a_description_of_another_name_is_read(self):
        folder = self.copy_archive()
        (folder / "archive.json").rename(folder / "other.json")
        with kvreflash.Archive(folder, description="other.json") as archive:
            self.assertEqual(archive.content().archive_version, "23.2.1")
            self.assertEqual(json.loads(archive.document(ArchiveDocument.CONTENT))["failure"], None)


if __name__ == "__main__":
    unittest.main()
