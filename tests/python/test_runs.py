"""The journal, and runs that go on."""

import json
import unittest

import kvreflash
from kvreflash import EventKind, Failure, Result, RunState
from support import ONE, ScratchTest, hold_until_stopped


class RunTest(ScratchTest):
    """Runs of a journal."""

    def setUp(self):
        super().setUp()
        self.serve()

    def stopped_run(self):
        """The id of an update that was stopped after its first phase had begun."""
        with self.session(journal_folder=self.journal, journal_place=self.rack) as session:
            session.prepare()
            for event in hold_until_stopped(session).run_events():
                if event.kind == EventKind.ELEMENT_START:
                    break
            return session.outcome().run

    def test_a_run_is_written_down(self):
        with self.session(journal_folder=self.journal, **ONE) as session:
            session.prepare()
            outcome = session.run()
        run, = kvreflash.runs(self.journal)
        self.assertEqual((run.id, run.state, run.command, run.target), (outcome.run, RunState.COMPLETE, "update",
                                                                        "127.0.0.1"))
        self.assertEqual((run.failure, run.message, run.exit_code), (Failure.NONE, "", 0))
        self.assertEqual((run.resumable, run.plan, run.fault), (False, None, None))
        self.assertLessEqual(run.begin, run.end)

    def test_documents_are_those_of_the_tool(self):
        run = self.stopped_run()
        history = json.loads(kvreflash.history_document(self.journal))
        self.assertEqual((history["format"]["name"], len(history["runs"])), ("kvreflash.history", 1))
        self.assertEqual(json.loads(kvreflash.run_document(self.journal, run))["format"]["name"], "kvreflash.run")

    def test_a_run_that_does_not_exist_has_no_document(self):
        self.stopped_run()
        for run in ("20260101T000000000Z-00000000", ""):
            with self.assertRaises(kvreflash.SelectionFailed) as caught:
                kvreflash.run_document(self.journal, run)
            self.assertTrue(caught.exception.message)

    def test_a_folder_that_does_not_exist_has_no_runs(self):
        self.assertEqual(kvreflash.runs(self.scratch / "nothing"), ())

    def test_an_open_run_is_running(self):
        session = self.prepared(journal_folder=self.journal, **ONE)
        session.run()
        self.assertEqual(kvreflash.runs(self.journal)[0].state, RunState.RUNNING)
        session.close()
        self.assertEqual(kvreflash.runs(self.journal)[0].state, RunState.COMPLETE)

    def test_a_stopped_run_goes_on(self):
        stopped = self.stopped_run()
        run, = kvreflash.runs(self.journal)
        self.assertEqual((run.state, run.failure, run.resumable), (RunState.STOPPED, Failure.STOPPED, True))
        with kvreflash.Session(resumed_run=stopped, journal_folder=self.journal, journal_place=self.rack) as session:
            plan = session.prepare()
            self.assertGreater(len(plan.changes), 0)
            self.assertLess(len(plan.changes), 20)
            outcome = session.run()
        self.assertNotIn(Result.FAILED, {result.result for result in outcome.results})
        self.assertEqual([(run.state, run.resumable) for run in kvreflash.runs(self.journal)],
                         [(RunState.STOPPED, False), (RunState.COMPLETE, False)])

    def test_a_run_does_not_go_on_with_another_target(self):
        stopped = self.stopped_run()
        path = self.rack / "target.json"
        path.write_text(path.read_text(encoding="utf-8").replace('"PRODUCT/SERIAL_NUMBER": 2815',
                                                                 '"PRODUCT/SERIAL_NUMBER": 9999'), encoding="utf-8")
        self.serve()
        session = kvreflash.Session(resumed_run=stopped, journal_folder=self.journal, journal_place=self.rack)
        self.addCleanup(session.close)
        with self.assertRaises(kvreflash.PlanStale) as caught:
            session.prepare()
        self.assertTrue(caught.exception.faults)


if __name__ == "__main__":
    unittest.main()
