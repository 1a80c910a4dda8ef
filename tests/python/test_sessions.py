"""Sessions: plans, updates, events, and requests to stop."""

import json
import os
import signal
import threading
import unittest
import warnings
from unittest import mock

import kvreflash
import support
from kvreflash import EventKind, Failure, Mode, Reason, Result, Stage, StopRequest, Verified
from support import ONE, ScratchTest, hold_until_stopped


class PlanTest(ScratchTest):
    """What a session finds and plans."""

    def setUp(self):
        super().setUp()
        self.serve()

    def test_a_plan_states_target_archive_and_elements(self):
        plan = self.session(mode=Mode.PLAN).prepare()
        self.assertEqual((plan.target_address, plan.nodes, plan.supported), ("127.0.0.1", (2815, 2816), True))
        self.assertEqual((plan.archive_version, plan.phases), ("23.2.1", 5))
        self.assertEqual((len(plan.elements), len(plan.changes), len(plan.entries)), (26, 20, 19))
        firmware = plan.elements[0]
        self.assertEqual((firmware.display_name, firmware.address, firmware.slot, firmware.element_id),
                         ("QB4120 (A), SN 2815, Firmware", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]", 1, 1))
        self.assertEqual((firmware.version, firmware.available_version), ("23.2a12", "23.2.1"))
        self.assertEqual((firmware.checksum, firmware.available_checksum), (1146530310, 947785106))
        self.assertEqual((firmware.valid, firmware.active, firmware.phase, firmware.updated), (True, True, 3, True))
        self.assertEqual((plan.elements[3].phase, plan.elements[3].updated), (None, False))
        self.assertEqual(firmware.reasons, (Reason.VERSION_DIFFERS, Reason.CHECKSUM_DIFFERS))
        self.assertEqual(plan.entries[firmware.entry].file_name, "qb4120-firmware.kfw")

    def test_what_is_not_known_is_none(self):
        file = self.session().prepare().elements[25]
        self.assertEqual(file.target_path, "config/net/network.ini")
        self.assertEqual((file.address, file.version, file.checksum, file.valid, file.active, file.element_id),
                         (None,) * 6)

    def test_an_element_without_an_entry_has_nothing_available(self):
        plan = self.session(mode=Mode.ELEMENTS, archive=None).prepare()
        self.assertEqual({(element.entry, element.available_version, element.available_checksum, element.phase)
                          for element in plan.elements}, {(None, None, None, None)})
        self.assertEqual((plan.archive_name, plan.entries), (None, ()))

    def test_filters_are_texts_or_lists(self):
        never = kvreflash.UnlistedFiles.NEVER
        texts = self.session(serial_numbers="2815,2816", element_names="UserIpl CnIpl", unlisted_files=never).prepare()
        lists = self.session(serial_numbers=[2815, 2816], element_names=["UserIpl", "CnIpl"],
                             unlisted_files=never).prepare()
        self.assertEqual([element.name for element in texts.elements if element.address], ["UserIpl", "CnIpl"])
        self.assertEqual(lists.elements, texts.elements)

    def test_options_reach_the_library(self):
        self.assertEqual(self.session(force=True).prepare().elements[3].reasons, (Reason.FORCED,))
        configuration = self.session(configuration=True).prepare()
        self.assertEqual(configuration.elements[0].name, "UserSettings")
        unlisted = self.session(unlisted_files=kvreflash.UnlistedFiles.NEVER).prepare()
        self.assertEqual(unlisted.elements[25].reasons, (Reason.UNLISTED_LEFT_OUT,))

    def test_a_disabled_element_is_left_out(self):
        session = self.prepared()
        for name in (0, "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]", "QB4120 (A), SN 2815, FPGA",
                     "config/net/network.ini"):
            session.disable(name)
        elements = session.plan().elements
        self.assertEqual([element.index for element in elements if Reason.DISABLED in element.reasons], [0, 1, 2, 25])
        self.assertTrue(all(elements[index].disabled for index in (0, 1, 2, 25)))
        self.assertEqual(len(session.plan().changes), 16)

    def test_documents_are_those_of_the_tool(self):
        session = self.prepared(**ONE)
        for kind in (kvreflash.Document.PLAN, kvreflash.Document.EXPLAIN, kvreflash.Document.ELEMENTS):
            self.assertEqual(session.json(kind)["format"]["name"], f"kvreflash.{kind.name.lower()}")
        self.assertEqual(json.loads(session.document(kvreflash.Document.PLAN))["archive"]["archiveVersion"], "23.2.1")

    def test_messages_are_those_of_a_console(self):
        messages = []
        session = self.session(mode=Mode.PLAN, on_message=messages.append)
        session.prepare()
        session.run()
        self.assertIn("QB4120 (A), SN 2815, Firmware", "".join(messages))

    def test_paths_with_characters_of_all_alphabets_are_passed_on(self):
        archive = self.copy_archive().rename(self.scratch / "Архив ü")
        self.assertEqual(self.session(archive=archive).prepare().archive_version, "23.2.1")
        self.assertEqual(self.session(archive=os.fsencode(archive)).prepare().archive_version, "23.2.1")


class UpdateTest(ScratchTest):
    """Updates, verifications and reboots."""

    def setUp(self):
        super().setUp()
        self.serve()

    def test_an_update_installs_the_plan_and_is_verified(self):
        session = self.session()
        plan = session.prepare()
        self.assertEqual(session.preflight(), ())
        outcome = session.run()
        self.assertEqual((outcome.succeeded, outcome.stage, outcome.exit_code), (True, Stage.ENDED, 0))
        self.assertEqual({outcome.results[element.index].result for element in plan.changes}, {Result.UPDATED})
        self.assertEqual({outcome.results[element.index].result for element in plan.elements if not element.updated},
                         {Result.NOT_PLANNED})
        self.assertEqual((outcome.results[0].state, outcome.results[3].state), (2, None))
        verification = session.verify()
        verification.raise_for_failure()
        judged = {element.element: element for element in verification.elements}
        self.assertEqual((judged[0].result, judged[0].version), (Verified.AS_EXPECTED, "23.2.1"))
        self.assertEqual((judged[25].result, judged[25].version), (Verified.NOT_LISTED, None))
        self.assertEqual(session.verification(), verification)
        self.assertEqual(len(self.session().prepare().changes), 1)

    def test_a_target_is_rebooted(self):
        session = self.session(mode=Mode.CONNECT, archive=None)
        session.prepare()
        self.assertEqual(session.reboot().stage, Stage.REBOOTED)
        with self.assertRaises(kvreflash.TargetFailed):
            self.session().prepare()

    def test_a_saved_plan_is_run(self):
        text = self.prepared(**ONE).document(kvreflash.Document.SAVED_PLAN)
        saved = kvreflash.read_saved_plan(text)
        self.assertEqual((saved.target, saved.target_address, saved.changes), ("127.0.0.1", "127.0.0.1", 1))
        session = kvreflash.Session(saved_plan=text)
        self.addCleanup(session.close)
        self.assertEqual([element.name for element in session.prepare().changes], ["UserIpl"])
        self.assertTrue(session.run().succeeded)


class EventTest(ScratchTest):
    """Events as callbacks and as an iterator."""

    def setUp(self):
        super().setUp()
        self.serve()

    def test_a_callback_receives_all_events_in_order(self):
        events = []
        session = self.prepared(on_event=events.append, **ONE)
        session.run()
        kinds = [event.kind for event in events if event.kind != EventKind.PROGRESS]
        self.assertEqual(kinds, [EventKind.LOCKED, EventKind.PHASE, EventKind.TRANSFER, EventKind.ELEMENT_START,
                                 EventKind.ELEMENT_END, EventKind.PHASE, EventKind.PHASE, EventKind.UNLOCKED])
        self.assertEqual([event.value for event in events if event.kind == EventKind.PHASE], [0, 1, kvreflash.NO_PHASE])
        self.assertEqual([event.element.name for event in events if event.element], ["UserIpl", "UserIpl"])
        self.assertEqual([event.entry.file_name for event in events if event.entry], ["qb4120-ipl.kfw"])
        self.assertTrue(all(event.succeeded for event in events))

    def test_the_iterator_yields_what_the_callback_receives(self):
        received = []
        session = self.prepared(on_event=received.append)
        self.assertEqual(list(session.run_events()), received)
        self.assertGreater(len(received), 50)
        self.assertTrue(session.outcome().succeeded)

    def test_a_callback_may_ask_its_session(self):
        seen = []

        def ask(event):
            if event.kind == EventKind.ELEMENT_END:
                seen.append((session.outcome().results[0].result, session.plan().elements[0].name))
        session = self.prepared(on_event=ask, **ONE)
        session.run()
        self.assertEqual(seen, [(Result.UPDATED, "UserIpl")])

    def test_a_callback_may_request_to_stop(self):
        def stop(event):
            if event.kind == EventKind.PHASE:
                session.request_stop()
        session = self.prepared(on_event=stop)
        with self.assertRaises(kvreflash.Stopped) as caught:
            session.run()
        self.assertTrue(caught.exception.retryable)
        self.assertEqual(caught.exception.exit_code, 7)
        self.assertNotIn(Result.UPDATED, {result.result for result in session.outcome().results})

    def test_what_a_callback_raises_stops_the_run_and_is_raised(self):
        calls = []

        def fail(event):
            calls.append(event)
            raise ZeroDivisionError("of the callback")
        session = self.prepared(on_event=fail)
        with self.assertRaisesRegex(ZeroDivisionError, "of the callback"):
            session.run()
        self.assertEqual(len(calls), 1)
        self.assertEqual(session.outcome().failure, Failure.STOPPED)

    def test_what_a_callback_of_messages_raises_is_raised_by_prepare(self):
        session = self.session(on_message=mock.Mock(side_effect=ZeroDivisionError))
        with self.assertRaises(ZeroDivisionError):
            session.prepare()

    def test_a_session_must_not_be_closed_in_its_callback(self):
        session = self.session(on_message=lambda text: session.close())
        with self.assertRaises(kvreflash.OrderError):
            session.prepare()

    def test_to_leave_the_loop_stops_the_run_and_awaits_its_end(self):
        session = hold_until_stopped(self.prepared())
        for event in session.run_events():
            if event.kind == EventKind.ELEMENT_START:
                break
        outcome = session.outcome()
        self.assertEqual((outcome.failure, outcome.stage), (Failure.STOPPED, Stage.ENDED))
        self.assertIn(Result.NOT_STARTED, {result.result for result in outcome.results})

    def test_a_loop_that_raises_stops_the_run(self):
        session = hold_until_stopped(self.prepared())
        with self.assertRaises(ZeroDivisionError):
            for _event in session.run_events():
                raise ZeroDivisionError
        self.assertEqual(session.outcome().failure, Failure.STOPPED)

    def test_a_failure_ends_the_loop_and_is_in_the_outcome(self):
        self.serve({"call": "transferFile"})
        session = self.prepared(**ONE)
        events = list(session.run_events())
        self.assertIn((EventKind.TRANSFER, False), [(event.kind, event.succeeded) for event in events])
        with self.assertRaises(kvreflash.ElementsFailed):
            session.outcome().raise_for_failure()

    def test_a_session_at_work_answers_no_questions_on_other_threads(self):
        session = hold_until_stopped(self.prepared())
        for _event in session.run_events():
            with self.assertRaisesRegex(kvreflash.OrderError, "on another thread"):
                session.outcome()
            with self.assertRaisesRegex(kvreflash.OrderError, "at work already"):
                session.verify()
            break

    def test_a_session_that_is_closed_at_work_is_stopped_and_awaited(self):
        with hold_until_stopped(self.prepared()) as session:
            events = session.run_events()
            next(events)
        left = len(self.session().prepare().changes)
        self.assertGreater(left, 1)
        events.close()


class InterruptTest(ScratchTest):
    """Ctrl-C, while the main thread waits."""

    def setUp(self):
        super().setUp()
        self.requests = []
        self.requested = threading.Event()

    def run_interrupted(self, session, times):
        """Runs with Ctrl-C at the start of an element; each one waits until the request before it was made."""
        request = session.request_stop

        def note(how=StopRequest.FINISH):
            self.requests.append(how)
            request(how)
            self.requested.set()

        def interrupt():
            for _time in range(times):
                self.requested.clear()
                os.kill(os.getpid(), signal.SIGINT)
                self.assertTrue(self.requested.wait(20))
        session.request_stop = note
        threads = []

        def begin(event):
            if event.kind == EventKind.ELEMENT_START and not threads:
                threads.append(threading.Thread(target=interrupt))
                threads[0].start()
                self.assertTrue(self.requested.wait(20))
        session._on_event = begin  # pylint: disable=protected-access
        with self.assertRaises(KeyboardInterrupt):
            session.run()
        threads[0].join()

    def test_the_first_one_awaits_what_has_begun(self):
        self.serve()
        session = self.prepared()
        self.run_interrupted(session, 1)
        self.assertEqual(self.requests, [StopRequest.FINISH])
        results = {result.result for result in session.outcome().results}
        self.assertEqual(session.outcome().failure, Failure.STOPPED)
        self.assertIn(Result.NOT_STARTED, results)
        self.assertNotIn(Result.IN_PROGRESS, results)

    def test_the_second_one_gives_up(self):
        self.serve(update={"state": 1})
        session = self.prepared(**ONE)
        self.run_interrupted(session, 2)
        self.assertEqual(self.requests, [StopRequest.FINISH, StopRequest.GIVE_UP])
        self.assertEqual(session.outcome().results[0].result, Result.IN_PROGRESS)

    def test_it_ends_a_loop_of_events(self):
        self.serve()
        session = hold_until_stopped(self.prepared())
        with self.assertRaises(KeyboardInterrupt):
            for event in session.run_events():
                if event.kind == EventKind.ELEMENT_START:
                    signal.raise_signal(signal.SIGINT)
        self.assertEqual(session.outcome().failure, Failure.STOPPED)


    def test_a_handler_of_the_program_is_left_alone(self):
        def refuse(_number, _frame):
            raise ZeroDivisionError
        before = signal.signal(signal.SIGINT, refuse)
        self.addCleanup(signal.signal, signal.SIGINT, before)
        self.serve(update={"state": 1})
        session = self.session(**ONE)
        session.prepare()
        session._on_event = lambda event: event.kind == EventKind.ELEMENT_START and os.kill(os.getpid(), signal.SIGINT)
        with self.assertRaises(ZeroDivisionError):
            session.run()
        with self.assertRaises(kvreflash.OrderError):
            session.outcome()
        session.request_stop(StopRequest.GIVE_UP)
        session.close()
        self.assertIs(signal.getsignal(signal.SIGINT), refuse)


class OptionTest(unittest.TestCase):
    """Options as the library receives them."""

    def record_of(self, **options):
        """The record of a session with these options."""
        with mock.patch("kvreflash._library.call", side_effect=ZeroDivisionError) as call, \
                mock.patch("kvreflash.session.byref", side_effect=lambda record: record), \
                self.assertRaises(ZeroDivisionError):
            kvreflash.Session(**options)
        return call.call_args[0][1]

    def test_each_switch_is_a_bit(self):
        for flag in kvreflash.enums.SessionFlag:
            self.assertEqual(self.record_of(**{flag.name.lower(): True}).flags, flag)
        self.assertEqual(self.record_of().flags, 0)

    def test_each_text_is_a_field(self):
        names = [name for name, _kind in kvreflash._records.SessionOptions._fields_[6:] if name != "saved_plan"]
        self.assertEqual(len(names), 10)
        record = self.record_of(**{name: f"of {name}" for name in names})
        self.assertEqual([getattr(record, name) for name in names], [f"of {name}".encode() for name in names])

    def test_numbers_are_passed_on(self):
        record = self.record_of(mode=Mode.PLAN, unlisted_files=kvreflash.UnlistedFiles.CHANGED, stall_limit=7)
        self.assertEqual((record.mode, record.unlisted_files, record.stall_limit), (6, 1, 7))
        self.assertEqual(self.record_of().mode, Mode.UPDATE)

    def test_lists_are_words(self):
        self.assertEqual(self.record_of(serial_numbers=[1, "2"]).serial_numbers, b"1,2")


class CallTest(ScratchTest):
    """Calls that must not be made."""

    def setUp(self):
        super().setUp()
        self.serve()

    def test_the_order_of_calls_is_kept(self):
        session = self.session()
        for call in (session.run, session.plan, session.verify, session.verification, session.preflight,
                     lambda: session.disable(0), lambda: next(session.run_events())):
            with self.assertRaises(kvreflash.OrderError):
                call()
        session.prepare()
        for call in (session.prepare, session.verify):
            with self.assertRaises(kvreflash.OrderError):
                call()
        session.run()
        with self.assertRaisesRegex(kvreflash.OrderError, "must not be called now"):
            session.run()

    def test_a_closed_session_is_refused(self):
        with self.session() as session:
            session.prepare()
        session.close()
        for call in (session.run, session.plan, session.outcome, session.request_stop, session.reboot):
            with self.assertRaisesRegex(kvreflash.ArgumentError, "freed"):
                call()

    def test_sessions_that_are_forgotten_are_closed_with_a_warning(self):
        session = kvreflash.Session(archive=support.ARCHIVE, target="127.0.0.1")
        session.prepare()
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always")
            del session
            __import__("gc").collect()
        self.assertIn("a session was not closed", [str(warning.message) for warning in caught])

    def test_wrong_options_are_refused(self):
        for options in ({"mode": 3}, {"mode": -1}, {"stall_limit": 1 << 32}, {"unlisted_files": 9},
                        {"target": "127.0.0.1\0x"}, {"archive": b"\xff\xfe"}, {"archive": os.fsdecode(b"\xff\xfe")},
                        {"resumed_run": "20260101T000000000Z-00000000"},
                        {"resumed_run": "no-run", "journal_folder": "/nowhere"}):
            with self.subTest(options=options), self.assertRaises(kvreflash.ArgumentError):
                kvreflash.Session(**options)


if __name__ == "__main__":
    unittest.main()
