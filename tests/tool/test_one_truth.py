#!/usr/bin/env python3
"""A session has one plan and one outcome: what is checked, shown, reported and verified is what runs."""

import ctypes
import json
import os
import struct
import threading
from collections import Counter

import tool_runs
import update_views as views
from tool_runs import ScratchTest, arguments, cases, run
from update_views import ARCHIVE, TARGET, Session, update_line

HCN = "HCN[1]"
# Elements of the example rack.
NODE_FIRMWARE = f"{HCN}/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"
NODE_FPGA = f"{HCN}/UPDATE_INFO[1]/UPDATE_ELEMENT[3]"
ROUTER_CPLD = f"{HCN}/NETWORK[1]/IOROUTER[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]"
INACTIVE_BOARD = f"{HCN}/CN[1]/BACKPLANE[1]/IOMODULE[2]"
INACTIVE = f"{INACTIVE_BOARD}/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"
ROUTER_FPGA = f"{HCN}/NETWORK[1]/IOROUTER[1]/IOMODULE[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"

# The file of ROUTER_CPLD, and of nothing else.
WRONG_FILE = "qb8100-cpld.kfw"
WRONG_VERSION = views.other_version(WRONG_FILE, "1.2.0.9")
EVERYTHING = ("--preflight", "--verify", "--report", views.REPORT, "--events", views.EVENTS)
LOOKS = ("--verify", "--report", views.REPORT, "--events", views.EVENTS)

# How often the description of an archive is swapped under an update.
SWAPPED_UPDATES = 40


class TruthTest(ScratchTest):
    """Sessions with the example archive and the example rack."""

    def lay_out(self, rack=(), archive=()):
        views.lay_out(self.scratch, rack, archive)

    def session(self, *line):
        return Session(self.scratch, line)

    def updated(self, *options):
        return self.session(*update_line(*options))

    def documents(self, *line):
        """The document that a command with --json writes, and its exit code."""
        done = run(*line, "--json", folder=self.scratch)
        return json.loads(done.output), done.code

    def is_planned(self, address, *filters):
        """True if the next plan wants to update the element."""
        document, code = self.documents("plan", *ARCHIVE, *TARGET, *filters)
        self.assertEqual(code, 0)
        self.session("plan", *ARCHIVE, *TARGET, *filters, "--report", views.REPORT)
        index = views.ReportView(cases.read_json(self.scratch / views.REPORT)).at(address).index
        return not document["elements"][index]["disabled"]

    def assert_refused(self, session, codes):
        self.assertIn(session.code, codes, session)
        self.assertEqual(session.touched(), [], session)
        self.assert_says_why(session)

    def assert_says_why(self, session):
        self.assertNotEqual(session.text.reason(), "", f"nothing on standard error says why: {session}")

    def assert_verified(self, session, address, *words):
        """The report judges the element by one of these words, and the text counts it."""
        word = session.report.at(address).verification
        self.assertIn(word, words, session.report.at(address))
        self.assertGreaterEqual(session.text.verification()[word], 1, session)


class CheckedIsWhatRunsTest(TruthTest):
    """What --preflight has looked at is what is flashed."""

    def test_a_wrong_version_is_refused(self):
        self.lay_out(archive=[WRONG_VERSION])
        self.assert_refused(self.updated(*EVERYTHING), {3})

    def test_a_wrong_version_is_not_flashed_when_the_first_scan_fails(self):
        self.lay_out(rack=[{"fault": "scan", "occurrence": 1}], archive=[WRONG_VERSION])
        self.assert_refused(self.updated(*EVERYTHING), {3, 4})

    def test_a_wrong_version_is_not_flashed_when_a_value_of_its_element_cannot_be_read(self):
        for occurrence in (2, 3):
            with self.subTest(occurrence=occurrence):
                self.lay_out(rack=[{"fault": "getValue", "at": ROUTER_CPLD, "occurrence": occurrence}],
                             archive=[WRONG_VERSION])
                self.assert_refused(self.updated(*EVERYTHING), {3, 4})

    def test_an_unreadable_value_alone_is_refused_by_preflight(self):
        for occurrence in (1, 2, 3):
            with self.subTest(occurrence=occurrence):
                self.lay_out(rack=[{"fault": "getValue", "at": ROUTER_CPLD, "occurrence": occurrence}])
                self.assert_refused(self.updated(*EVERYTHING), {3, 4})

    def test_an_unreadable_value_of_a_header_is_refused_by_preflight(self):
        # The archive is read with the first values of the inventory tree files, the preflight reads all of them.
        for occurrence in (8, 14, 20):
            with self.subTest(occurrence=occurrence):
                self.lay_out(rack=[{"fault": "getValue", "at": "FIRMWARE[1]", "occurrence": occurrence}])
                self.assert_refused(self.updated(*EVERYTHING), {3})

    def test_without_preflight_whatever_was_flashed_is_judged(self):
        for occurrence in (2, 3, 4, 8, 12, 16, 20, 24):
            with self.subTest(occurrence=occurrence):
                self.lay_out(rack=[{"fault": "getValue", "at": ROUTER_CPLD, "occurrence": occurrence}],
                             archive=[WRONG_VERSION])
                session = self.updated(*LOOKS)
                self.assertNotEqual(session.code, 0, session)
                self.check_flashed_elements(session)
                self.assert_says_why(session)

    def check_flashed_elements(self, session):
        started = {(call["address"], call["id"]) for call in session.trace.succeeded("update2")}
        for element in session.report.elements:
            if session.rack.place(element.address) in started:
                self.assertIsNotNone(element.verification, element)
                if element.file == WRONG_FILE:
                    self.assertFalse(element.claims_success(), element)


class ReportTest(TruthTest):
    """A report is about the session that ran."""

    def test_the_report_calls_the_element_failed_that_failed(self):
        self.lay_out(rack=[{"fault": "getValue", "at": NODE_FIRMWARE, "occurrence": 2, "errors": []},
                           {"fault": "update2"}])
        session = self.updated("-e", "UserIpl", "--report", views.REPORT, "--events", views.EVENTS)
        self.assertEqual(session.code, 1, session)
        failed = session.failed_places()
        self.assertEqual(len(failed), 1, session.trace.calls)
        told = [session.report.with_index(index) for index in session.events.element_errors()]
        self.assertEqual({session.rack.place(told[0].address)}, failed, told)
        self.assertEqual(session.report.failed(), sorted(told, key=lambda element: element.index))
        self.assertEqual({session.rack.place(element.address) for element in session.report.elements
                          if element.outcome == views.FAILED}, failed)

    def test_what_is_only_looked_at_does_not_change_the_update(self):
        patches = ({"fault": "scan"}, {"fault": "getValue", "at": ROUTER_CPLD, "occurrence": 2},
                   {"fault": "getValue", "at": NODE_FIRMWARE, "occurrence": 3, "errors": []},
                   {"fault": "update2", "occurrence": 3})
        for patch in patches:
            with self.subTest(patch=patch):
                self.lay_out(rack=[patch])
                alone = self.updated("--events", views.EVENTS)
                self.lay_out(rack=[patch])
                observed = self.updated(*LOOKS)
                calls = alone.trace.through_unlock()
                self.assertEqual(observed.trace.calls[:len(calls)], calls)
                self.assertEqual(observed.after, alone.after)

    def test_a_refused_lock_updates_nothing(self):
        for options in ((), ("--force",), ("--verify",), ("--force", "--verify")):
            with self.subTest(options=options):
                self.lay_out(rack=[{"fault": "lock"}])
                session = self.updated(*options, "--report", views.REPORT)
                self.assertNotEqual(session.code, 0, session)
                self.assertEqual([call["call"] for call in session.trace.changes_target()], ["lock"])
                self.assertEqual(session.after, session.before)
                self.assertEqual([element for element in session.report.elements if element.claims_success()], [])
                self.assertEqual(session.text.verification()[views.AS_EXPECTED], 0, session)
                self.assert_says_why(session)

    def test_a_refused_lock_has_an_exit_code_of_its_own(self):
        self.lay_out(rack=[{"fault": "lock"}])
        session = self.updated("--report", views.REPORT)
        self.assertEqual((session.code, session.report.failure, session.report.retryable), (5, "locked", True), session)


class VerificationTest(TruthTest):
    """"As expected" is only what the target has reported."""

    REFUSING = {"item": INACTIVE, "update": {"errors": [{"code": 7, "text": "Refused."}]}}
    # What leaves the inactive element as it is, and the exit code that is right then.
    STAYING_INACTIVE = {
        "its errors are lost":
            ([REFUSING, {"fault": "updateErrors2", "at": INACTIVE_BOARD, "occurrence": 0, "errors": []}], 6),
        "activated by a reboot": ([{"item": INACTIVE, "update": {"activation": "reboot"}}], 6),
        "its update fails": ([{"item": INACTIVE, "update": {"polls": 2, "state": 3}}], 1),
        "its update reports errors": ([REFUSING], 1),
    }

    def test_an_element_that_stays_inactive_is_not_as_expected(self):
        filters = ("-s", "10244", "-e", "UserFirmware")
        for name, (patches, code) in self.STAYING_INACTIVE.items():
            for filtered in ((), filters):
                with self.subTest(name, filters=filtered):
                    self.lay_out(rack=patches)
                    session = self.updated(*filtered, *LOOKS)
                    element = session.report.at(INACTIVE)
                    self.assertFalse(element.claims_success(), element)
                    self.assertEqual(session.code, code, session)
                    self.assertTrue(self.is_planned(INACTIVE, *filtered))
                    self.assert_says_why(session)

    def test_an_element_that_is_what_it_was_is_unchanged(self):
        self.lay_out(rack=[{"item": INACTIVE, "update": {"activation": "reboot"}},
                           {"item": ROUTER_CPLD, "update": {"activation": "reboot"}}])
        session = self.updated(*LOOKS)
        self.assertEqual(session.code, 6, session)
        for address in (INACTIVE, ROUTER_CPLD):
            self.assert_verified(session, address, views.UNCHANGED)

    def test_an_element_that_a_reboot_activates_is_as_expected_then(self):
        self.lay_out(rack=[{"item": INACTIVE, "update": {"activation": "reboot"}}])
        session = self.updated(*LOOKS, "--reboot", "--wait", "30")
        self.assertEqual(session.code, 0, session)
        self.assert_verified(session, INACTIVE, views.AS_EXPECTED)

    def empty_fpga(self):
        self.lay_out()
        (self.scratch / "archive" / "qb4120-fpga.kbs").write_bytes(b"")

    def test_an_empty_update_file_is_refused_by_preflight_and_by_a_strict_update(self):
        self.empty_fpga()
        for options in (EVERYTHING, ("--strict", "--report", views.REPORT)):
            session = self.updated(*options)
            self.assert_refused(session, {3})
            self.assertEqual(session.report.failure, "archive", session)

    def test_a_checksum_of_0_differs_from_that_of_the_archive(self):
        self.empty_fpga()
        session = self.updated(*LOOKS)
        self.assertEqual(session.code, 6, session)
        self.assert_verified(session, NODE_FPGA, views.DIFFERS)
        self.assert_says_why(session)

    def test_another_version_than_planned_differs(self):
        self.lay_out(archive=[WRONG_VERSION])
        session = self.updated(*LOOKS)
        self.assertEqual((session.code, session.report.failure), (6, "verification"), session)
        self.assert_verified(session, ROUTER_CPLD, views.DIFFERS)

    def test_an_element_without_version_and_checksum_is_not_judged(self):
        self.lay_out(rack=[{"item": ROUTER_FPGA, "without": ["CHECKSUM_CRC32"], "parameters": {"VALID": 0}}])
        whole = self.updated(*LOOKS)
        self.assertEqual(whole.code, 0, whole)
        self.assert_verified(whole, ROUTER_FPGA, views.NOT_JUDGED)
        self.lay_out(rack=[{"item": ROUTER_FPGA, "without": ["CHECKSUM_CRC32"], "parameters": {"VALID": 0}}])
        alone = self.updated("-s", "61001", "-e", "IoFpga", *LOOKS)
        self.assertEqual(alone.code, 6, alone)
        self.assert_verified(alone, ROUTER_FPGA, views.NOT_JUDGED)

    def test_an_update_that_writes_only_unlisted_files_succeeds(self):
        self.lay_out()
        first = self.updated("--verify")
        self.assertEqual(first.code, 0, first)
        self.assertEqual(first.text.verification(), Counter({views.AS_EXPECTED: 19, views.NOT_LISTED: 1}))
        second = self.updated("--verify")
        self.assertEqual(second.code, 0, second)
        self.assertEqual(second.text.verification(), Counter({views.NOT_LISTED: 1}))
        self.assertEqual(second.trace.of("transferFile") + second.trace.of("update2"), [])


class DescriptionTest(TruthTest):
    """The description that is checked, warned about and shown is the one that is used."""

    OUTSIDE = "../../escaped.cfg"

    def setUp(self):
        super().setUp()
        self.lay_out()
        self.path = self.scratch / "archive" / "archive.json"
        self.usual = self.path.read_bytes()
        description = json.loads(self.usual)
        entry = next(entry for entry in description["files"] if entry["name"] == "network.ini")
        entry["targetPath"] = self.OUTSIDE
        self.hostile = json.dumps(description).encode()

    @staticmethod
    def leaves_root(session):
        """True if a file was written outside the target's root, or tried to be."""
        return any(".." in call["path"].split("/") for call in session.trace.of("KvHIM_putFileU"))

    def warns(self, session):
        return any("warning" in line.lower() and self.OUTSIDE in line for line in session.text.errors.splitlines())

    def small_update(self):
        """One that writes little but the file of the changed entry."""
        return self.updated("-e", "UserCpld")

    def test_a_path_that_leaves_the_root_is_warned_about(self):
        self.path.write_bytes(self.hostile)
        session = self.small_update()
        self.assertEqual((self.leaves_root(session), self.warns(session)), (True, True), session)

    def test_a_swapped_description_is_warned_about_when_it_is_used(self):
        count = SWAPPED_UPDATES // (5 if arguments.launcher else 1)
        outside = unwarned = 0
        with Swapped(self.path, self.usual, self.hostile):
            for _ in range(count):
                session = self.small_update()
                outside += self.leaves_root(session)
                unwarned += self.leaves_root(session) and not self.warns(session)
        print(f"{count} updates with a swapped description, {outside} wrote outside, {unwarned} without a warning")
        self.assertEqual(unwarned, 0, f"of {outside}")

    def test_a_description_is_read_once(self):
        if arguments.launcher:
            self.skipTest("what launches the tool may open files on its own")
        self.path.write_bytes(self.hostile)
        filters = ("-b", "QB7001", "-s", "10231", "-e", "UserFirmware")
        lines = (update_line("-e", "UserCpld"), update_line(*EVERYTHING), ("plan", *ARCHIVE, *TARGET),
                 ("plan", *ARCHIVE, *TARGET, "--report", views.REPORT), ("explain", *ARCHIVE, *TARGET, *filters))
        for line in lines:
            with self.subTest(line=line):
                with Openings(self.path) as openings:
                    session = self.session(*line)
                self.assertFalse(self.leaves_root(session) and not self.warns(session), session)
                self.assertEqual(openings.count, 1)


class Swapped:
    """A file that is replaced in a loop, by one content and by the other."""

    # Seconds between replacements, at most: an update reads its archive within milliseconds.
    PAUSE = 0.0003

    def __init__(self, path, *contents):
        self.path = path
        self.contents = contents
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.swap)

    def swap(self):
        aside = self.path.with_name("archive.json.new")
        while not self.ended.is_set():
            for content in self.contents:
                aside.write_bytes(content)
                os.replace(aside, self.path)
                self.ended.wait(self.PAUSE)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.ended.set()
        self.thread.join()


class Openings:
    """How often a file is opened meanwhile."""

    # Of <sys/inotify.h>. Without those in between, one opening behind another would be told as one.
    OPENED = 0x20
    ACCESSED_OR_CLOSED = 0x01 | 0x10
    EVENT = struct.Struct("iIII")

    def __init__(self, path):
        self.path = path
        self.count = 0

    def __enter__(self):
        library = ctypes.CDLL(None, use_errno=True)
        self.events = library.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        watch = library.inotify_add_watch(self.events, os.fsencode(self.path), self.OPENED | self.ACCESSED_OR_CLOSED)
        if watch < 0:
            raise OSError(ctypes.get_errno(), "inotify_add_watch")
        return self

    def __exit__(self, *_):
        events = os.read(self.events, 1 << 20)
        os.close(self.events)
        self.count = sum(mask & self.OPENED != 0 for _, mask, _, _ in self.EVENT.iter_unpack(events))


class LooksTest(TruthTest):
    """How often a command looks at the target."""

    FILTERS = ("-b", "QB7001", "-s", "10231", "-e", "UserFirmware")

    def setUp(self):
        super().setUp()
        self.lay_out()

    def assert_looks(self, count, *line):
        """The session has made so many scans, each of one device look-up."""
        session = self.session(*line)
        self.assertEqual(session.code, 0, session)
        calls = ("createRootHandleByIpAddressList", "scan")
        self.assertEqual([len(session.trace.of(call)) for call in calls], [count, count])
        return session

    def test_a_plan_is_one_look(self):
        self.assert_looks(1, "plan", *ARCHIVE, *TARGET)
        self.assert_looks(1, "plan", *ARCHIVE, *TARGET, "--report", views.REPORT)

    def test_an_explanation_is_one_look(self):
        self.assert_looks(1, "explain", *ARCHIVE, *TARGET)
        for count in range(2, len(self.FILTERS) + 1, 2):
            self.assert_looks(1, "explain", *ARCHIVE, *TARGET, *self.FILTERS[:count])

    def test_each_target_of_a_matrix_is_one_look(self):
        self.assert_looks(1, "matrix", *ARCHIVE, "--emulate", "rack")
        self.assertEqual(run("capture", *TARGET, "captured", folder=self.scratch).code, 0)
        self.assert_looks(2, "matrix", *ARCHIVE, "--emulate", "rack", "--emulate", "captured")

    def test_an_update_looks_once_before_and_once_after(self):
        session = self.session(*update_line(*EVERYTHING))
        self.assertEqual(session.code, 0, session)
        order = [call["call"] for call in session.trace.calls if call["call"] in ("scan", "lock", "unlock")]
        self.assertEqual(order, ["scan", "lock", "unlock", "scan"])

    def test_an_update_alone_looks_once(self):
        self.assert_looks(1, *update_line())
        self.assert_looks(1, *update_line("--disable", "0", "--preflight"))


class VerifyTest(TruthTest):
    """The command that only judges."""

    LINE = ("verify", *ARCHIVE, *TARGET)

    def assert_judged(self, code, *line):
        """Exit code, its class in the document, and a target that is left alone."""
        session = self.session(*line)
        self.assertEqual(session.code, code, session)
        self.assertEqual(session.touched(), [], session)
        if code != 0:
            self.assert_says_why(session)
        return session

    def test_a_target_that_is_up_to_date_is_as_expected(self):
        self.lay_out()
        self.assertEqual(self.updated().code, 0)
        session = self.assert_judged(0, *self.LINE)
        self.assertEqual(len(session.trace.of("scan")), 1)
        counts = session.text.verification()
        # Nothing of the rack differs, and nothing but the written file and what is left out has no judgement.
        self.assertEqual(counts[views.AS_EXPECTED], 23, counts)
        self.assertEqual([counts[word] for word in views.FAULTS], [0, 0, 0])

    def test_a_target_that_is_out_of_date_differs(self):
        self.lay_out()
        session = self.assert_judged(6, *self.LINE)
        self.assertEqual(len(session.trace.of("scan")), 1)
        counts = session.text.verification()
        self.assertEqual(counts[views.AS_EXPECTED], 4, counts)
        self.assertEqual(counts[views.DIFFERS], 19, counts)

    def test_one_element_is_enough_to_differ(self):
        self.lay_out()
        self.assertEqual(self.updated("--disable", "0").code, 0)
        self.assertEqual(self.assert_judged(6, *self.LINE).text.verification()[views.DIFFERS], 1)

    def test_a_newer_version_is_as_expected_for_an_entry_that_only_upgrades(self):
        # The boot loader is newer than the archive's, whose entry only upgrades.
        self.lay_out(rack=[{"item": f"{HCN}/UPDATE_INFO/UPDATE_ELEMENT[2]", "parameters": {"VERSION": "6.0"}}])
        self.assertEqual(self.updated().code, 0)
        self.assert_judged(0, *self.LINE)

    def test_an_inactive_element_is_not_as_expected(self):
        self.lay_out()
        self.assert_judged(6, *self.LINE, "-s", "10244", "-e", "UserFirmware")

    def test_elements_without_an_entry_decide_nothing(self):
        self.lay_out()
        self.assertEqual(self.updated().code, 0)
        # Two boards: one without any entry, one that is up to date.
        self.assert_judged(0, *self.LINE, "-b", "QB2900,QB7001")

    def test_nothing_that_could_be_judged_is_no_success(self):
        self.lay_out(rack=[{"item": ROUTER_FPGA, "without": ["CHECKSUM_CRC32"]}])
        self.assert_judged(6, *self.LINE, "-s", "61001", "-e", "IoFpga")

    def test_a_checksum_of_0_is_not_as_expected(self):
        self.lay_out(rack=[{"item": ROUTER_FPGA, "parameters": {"CHECKSUM_CRC32": 0}}])
        session = self.assert_judged(6, *self.LINE, "-s", "61001", "-e", "IoFpga")
        # No update would change that.
        self.assertRegex(session.text.output + session.text.errors, "--force")

    def test_an_unsupported_target(self):
        index = [entry["name"] for entry in self.description()["files"]].index("qb4120-cpld.kfw")
        self.lay_out(archive=[{"drop": f"files/{index}"}])
        self.assert_judged(2, *self.LINE)

    @staticmethod
    def description():
        return cases.read_json(cases.ARCHIVE_BASES["examples"] / "archive.json")

    def test_a_target_that_is_not_reached(self):
        self.lay_out()
        self.assert_judged(4, "verify", *ARCHIVE, "-t", "127.0.0.2", "--emulate", "rack")
        for call in ("scan", "createRootHandleByIpAddressList", "KvHIM_createFilter"):
            with self.subTest(call):
                self.lay_out(rack=[{"fault": call, "occurrence": 0}])
                self.assert_judged(4, *self.LINE)

    def test_an_archive_that_is_not_readable(self):
        self.lay_out()
        self.assert_judged(3, "verify", "-a", "nowhere", *TARGET)
        (self.scratch / "archive" / "archive.json").write_text("{", encoding="utf-8")
        self.assert_judged(3, *self.LINE)

    def test_a_value_that_cannot_be_read_is_no_success(self):
        self.lay_out()
        self.assertEqual(self.updated().code, 0)
        views.Rack(self.scratch / "rack").add([{"fault": "getValue", "at": ROUTER_CPLD, "occurrence": 3}])
        session = self.session(*self.LINE)
        self.assertIn(session.code, (1, 6), session)
        self.assertEqual(session.touched(), [])

    def test_the_document_has_the_class_of_the_exit_code(self):
        archives = {0: ARCHIVE, 3: ("-a", "nowhere"), 4: ARCHIVE, 6: ARCHIVE}
        for code, archive in archives.items():
            with self.subTest(code=code):
                self.lay_out(rack=[{"fault": "scan"}] if code == 4 else [])
                if code == 0:
                    self.assertEqual(self.updated().code, 0)
                document, found = self.documents("verify", *archive, *TARGET)
                view = views.DocumentView(document)
                self.assertEqual((found, view.format), (code, {"name": "kvreflash.verify", "version": 1}))
                self.assertIn(view.failure, views.CLASSES[code])
                self.assertEqual(view.retryable, view.failure in views.RETRYABLE)


if __name__ == "__main__":
    tool_runs.main()
