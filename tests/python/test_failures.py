"""Each class of failures has its exception."""

import multiprocessing
import unittest

import kvreflash
import support
from kvreflash import FailedCall, Mode, Result
from support import ONE, ScratchTest


def drop_files(description):
    """Leaves the archive with nothing for the processor boards."""
    description["files"] = [entry for entry in description["files"] if not entry["name"].startswith("qb4120")]


def hold_lock(rack, archive, pipe):
    """A process whose update of the rack never ends; it says when it holds the lock."""
    def report(event):
        if event.kind == kvreflash.EventKind.ELEMENT_START:
            pipe.send(True)
    address = kvreflash.emulation.serve(rack)
    with kvreflash.Session(archive=archive, target=address, on_event=report, **ONE) as session:
        session.prepare()
        session.run()


class FailureTest(ScratchTest):
    """Exceptions by their class, with what they state."""

    def assert_fails(self, kind, exit_code, operation):
        """The exception that an operation raises."""
        with self.assertRaises(kind) as caught:
            operation()
        self.assertIs(type(caught.exception), kind)
        self.assertEqual((caught.exception.failure, caught.exception.exit_code), (kind.failure, exit_code))
        self.assertTrue(caught.exception.message)
        self.assertEqual(str(caught.exception), caught.exception.message)
        return caught.exception

    def test_a_refused_archive(self):
        self.serve()
        session = self.session(archive=self.scratch)
        failure = self.assert_fails(kvreflash.ArchiveRefused, 3, session.prepare)
        self.assertIn("archive.json", failure.message)
        self.assertFalse(failure.retryable)

    def test_an_unusable_update_file(self):
        self.serve()
        archive = self.copy_archive()
        session = self.prepared(archive=archive)
        (archive / "qb4120-ipl.kfw").unlink()
        failure = self.assert_fails(kvreflash.ArchiveRefused, 3, session.preflight)
        self.assertEqual(len(failure.faults), 1)
        self.assertIn("qb4120-ipl.kfw", failure.faults[0])
        with self.assertRaises(kvreflash.OrderError):
            session.run()

    def test_faults_of_update_files_are_returned_if_wanted(self):
        self.serve()
        archive = self.copy_archive()
        session = self.prepared(archive=archive)
        (archive / "qb4120-ipl.kfw").unlink()
        self.assertEqual(len(session.preflight(check=False)), 1)

    def test_a_target_that_is_not_reached(self):
        self.serve()
        failure = self.assert_fails(kvreflash.TargetFailed, 4, self.session(target="127.0.0.9").prepare)
        self.assertTrue(failure.retryable)

    def test_a_stale_plan(self):
        self.serve()
        text = self.prepared(**ONE).document(kvreflash.Document.SAVED_PLAN)
        self.prepared(**ONE).run()
        session = kvreflash.Session(saved_plan=text)
        self.addCleanup(session.close)
        failure = self.assert_fails(kvreflash.PlanStale, 9, session.prepare)
        self.assertTrue(any("installed.version" in fault for fault in failure.faults), failure.faults)

    def test_a_saved_plan_that_was_changed(self):
        self.serve()
        text = self.prepared(**ONE).document(kvreflash.Document.SAVED_PLAN)
        changed = text.replace("UserIpl", "UserIpm")
        self.assert_fails(kvreflash.PlanStale, 9, lambda: kvreflash.read_saved_plan(changed))
        self.assert_fails(kvreflash.PlanStale, 9, lambda: kvreflash.Session(saved_plan=changed))

    def test_a_target_that_is_not_supported(self):
        self.serve()
        session = self.session(archive=self.copy_archive(drop_files))
        self.assert_fails(kvreflash.TargetNotSupported, 2, session.prepare)
        self.assertFalse(session.plan().supported)

    def test_a_filter_that_lets_nothing_through(self):
        self.serve()
        self.assert_fails(kvreflash.SelectionFailed, 8, self.session(serial_numbers=[1]).prepare)

    def test_a_disabled_element_that_does_not_exist(self):
        self.serve()
        session = self.prepared()
        failure = self.assert_fails(kvreflash.SelectionFailed, 8, lambda: session.disable("nothing"))
        self.assertIn("'nothing'", failure.message)

    def test_a_locked_target(self):
        self.serve(update={"state": 1})
        context = multiprocessing.get_context("spawn")
        here, there = context.Pipe()
        other = context.Process(target=hold_lock, args=(self.rack, support.ARCHIVE, there))
        other.start()
        self.addCleanup(other.join)
        self.addCleanup(other.kill)
        self.assertTrue(here.poll(30) and here.recv())
        failure = self.assert_fails(kvreflash.TargetLocked, 5, self.prepared(**ONE).run)
        self.assertTrue(failure.retryable)

    def test_an_update_that_is_stopped(self):
        self.serve()
        session = self.prepared()
        session.request_stop()
        self.assert_fails(kvreflash.Stopped, 7, session.run)

    def test_an_element_that_fails(self):
        error = {"code": 32786, "text": "Refused.", "originNode": 2815, "function": "check", "line": 21}
        self.serve(update={"errors": [error]})
        session = self.prepared(**ONE)
        self.assert_fails(kvreflash.ElementsFailed, 1, session.run)
        result = session.outcome().results[0]
        self.assertEqual((result.result, result.failed_call), (Result.FAILED, FailedCall.UPDATE_ERRORS2))
        self.assertEqual(result.errors, (kvreflash.TargetError(32786, "Refused.", 2815, "check", 21),))

    def test_errors_of_no_element(self):
        self.serve({"call": "unlock", "errors": [{"code": 7, "text": "Still held."}]})
        session = self.prepared(**ONE)
        self.assert_fails(kvreflash.ErrorsReported, 1, session.run)
        self.assertEqual(session.outcome().errors, (kvreflash.TargetError(7, "Still held.", None, None, None),))

    def test_a_reboot_that_fails(self):
        self.serve({"call": "KvHIM_FORCE_resetDevice", "status": 7})
        session = self.prepared(mode=Mode.CONNECT)
        self.assert_fails(kvreflash.RebootFailed, 1, session.reboot)

    def test_a_target_that_does_not_report_what_it_should(self):
        self.serve(update={"activation": "reboot"})
        session = self.prepared(**ONE)
        session.run()
        verification = session.verify()
        self.assertEqual(verification.elements[0].result, kvreflash.Verified.UNCHANGED)
        self.assert_fails(kvreflash.VerificationFailed, 6, verification.raise_for_failure)
        session.reboot()

    def test_a_target_that_cannot_be_looked_at(self):
        self.serve({"call": "scan", "occurrence": 2, "errors": [{"code": 9, "text": "Busy."}]})
        session = self.prepared(**ONE)
        session.run()
        verification = session.verify()
        self.assertEqual([(error.code, error.text) for error in verification.errors], [(9, "Busy.")])
        self.assert_fails(kvreflash.VerificationFailed, 6, verification.raise_for_failure)

    def test_a_plan_that_cannot_be_saved(self):
        self.serve()
        archive = self.copy_archive()
        session = self.prepared(archive=archive)
        (archive / "qb4120-ipl.kfw").unlink()
        failure = self.assert_fails(kvreflash.ArchiveRefused, 3,
                                    lambda: session.document(kvreflash.Document.SAVED_PLAN))
        self.assertIn("qb4120-ipl.kfw", failure.message)

    def test_a_journal_that_cannot_be_written(self):
        self.serve()
        self.journal.write_text("a file\n", encoding="utf-8")
        session = self.session(journal_folder=self.journal, journal_required=True)
        self.assert_fails(kvreflash.OutputFailed, 1, session.prepare)

    def test_a_failure_is_returned_if_wanted(self):
        self.serve({"call": "transferFile", "at": "HCN[1]"})
        outcome = self.prepared(**ONE).run(check=False)
        self.assertFalse(outcome.succeeded)
        self.assert_fails(kvreflash.ElementsFailed, 1, outcome.raise_for_failure)

    def test_a_class_of_failures_that_is_not_known(self):
        failure = kvreflash.failures.failed(kvreflash.Failure(77), "new")
        self.assertIs(type(failure), kvreflash.OperationFailed)
        self.assertEqual((failure.failure, failure.exit_code), (77, 1))


class CallErrorTest(unittest.TestCase):
    """Exceptions of calls."""

    def test_results_of_calls_have_their_exceptions(self):
        # A record that is too small, and an index past the end.
        library = kvreflash._library  # pylint: disable=protected-access
        options = library.records.ArchiveOptions()
        handle = library.records.HANDLE()
        options.size = 4
        with self.assertRaises(kvreflash.VersionError):
            library.call("kvr_archive_create", options, handle)
        with self.assertRaisesRegex(kvreflash.ArgumentError, "null"):
            library.call("kvr_archive_read", None)

    def test_exceptions_are_of_the_usual_kinds_too(self):
        self.assertTrue(issubclass(kvreflash.OutOfMemoryError, MemoryError))
        self.assertTrue(issubclass(kvreflash.ArgumentError, ValueError))
        self.assertEqual(kvreflash.OutOfMemoryError("out of memory").message, "out of memory")

    def test_a_folder_that_is_no_target_is_not_served(self):
        with self.assertRaisesRegex(kvreflash.EmulationError, "nowhere"):
            kvreflash.emulation.serve("/nowhere")


if __name__ == "__main__":
    unittest.main()
