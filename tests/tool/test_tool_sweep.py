#!/usr/bin/env python3
"""Whichever call of an update fails: exit code, text, report, events, trace and the target say the same, nothing is
called updated that is not, nothing is flashed that is to be refused, and the next update completes."""

import collections
import functools
import json
import os
import random
import re
import shutil
import sys

import tool_runs
import update_views as views
from tool_runs import PROJECT, ScratchTest, arguments, cases, run
from update_views import ARCHIVE, TARGET, Session, update_line

sys.path.insert(0, str(PROJECT / "tests" / "sessions"))
import leftovers  # noqa: E402

# About so many disturbed updates, drawn with this seed; 0: every call, and so many pairs of calls.
SAMPLE = int(os.environ.get("KV_TOOL_SWEEP_SAMPLE", "150"))
ALL_PAIRS = int(os.environ.get("KV_TOOL_SWEEP_PAIRS", "500"))
SEED = int(os.environ.get("KV_TOOL_SWEEP_SEED", "1"))
# A tool that something else launches takes so many times as long.
LAUNCHED_SLOWNESS = 10

# An update without a reboot does not call it.
NOT_CALLED = {"KvHIM_FORCE_resetDevice"}
# What the trace does not have, and more calls than an update makes of it.
MANY_CALLS = {"getValue": 2048, "extractInventoryTreeFromFile": 64}
# A file that is not read as a tree passes as a plain one: a failure may show nowhere. So many may follow the last one
# that does.
HIDDEN_EXTRACTIONS = 8
# An error of one of these calls is never followed by success.
NEVER_IGNORED = {"createRootHandleByIpAddressList", "scan", "lock", "unlock", "transferFile", "deleteRemoteFile",
                 "update2", "updateStatus2", "updateErrors2", "KvHIM_putFileU", "KvHIM_renameFile", "getValue"}

# So many values are of the header of an update file that the archive is read with. One that cannot be read counts as
# not stated there; nothing of the target depends on it.
HEADER_VALUES = 7

WRONG_FILE = "qb8100-cpld.kfw"
UPDATE = update_line("--preflight", "--verify", "--report", views.REPORT, "--events", views.EVENTS)


class Disturbance(collections.namedtuple("Disturbance", "call occurrence silent")):
    """A call that fails: with an error or, silent, with nothing but its status."""

    def patch(self):
        return {"fault": self.call, "occurrence": self.occurrence, **({"errors": []} if self.silent else {})}

    def __str__(self):
        return f"{self.call} {self.occurrence}{' without an error' if self.silent else ''}"


# --- what holds of every disturbed update -----------------------------------------------------------------------------
# Each check yields a sentence for everything that is wrong.

def code_and_report_have_one_class(seen):
    failure = seen.report.failure
    if failure not in views.CLASSES[seen.code]:
        yield f"exit code {seen.code}, but the report says {failure}"
    if bool(seen.report.retryable) != (failure in views.RETRYABLE):
        yield f"{failure} is {'' if seen.report.retryable else 'not '}retryable"


def the_last_event_has_the_verdict(seen):
    last = seen.events.last()
    if (last.get("event"), last.get("failure"), last.get("exitCode")) != ("runEnd", seen.report.failure, seen.code):
        yield f"the last event is {last}"
    if seen.has_run() and seen.events.phases()[-1:] != [views.NO_PHASE]:
        yield f"the phases are {seen.events.phases()}"


def events_state_the_reasons_of_the_report(seen):
    reasons = {element.index: element.reason for element in seen.report.elements}
    for event in seen.events.events:
        if event["event"] == "elementEnd" and event["reason"] != reasons[event["value"]]:
            yield f"element {event['value']}: {event['reason']!r} by the events, {reasons[event['value']]!r} by the report"


def who_has_failed_has_a_reason(seen):
    for element in seen.report.elements:
        if element.outcome in (views.FAILED, views.CANCELLED, views.FILE_MISSING) and not element.reason:
            yield f"{element} has no reason"


def success_is_the_librarys_own_verdict(seen):
    if seen.code != 0:
        return
    if not seen.text.is_completed():
        yield "exit code 0 without the verdict"
    if seen.text.reports_errors():
        yield "exit code 0 with reported errors"
    if any(seen.text.verification()[word] for word in views.FAULTS):
        yield f"exit code 0 with {dict(seen.text.verification())}"


def an_error_is_no_success(seen):
    """Of two failing calls the first may keep the update from making the second."""
    if seen.code == 0 and len(seen.disturbances) == 1:
        one = seen.disturbances[0]
        of_archive = one.call == "getValue" and one.occurrence <= HEADER_VALUES
        if one.call in NEVER_IGNORED and not one.silent and not of_archive:
            yield "exit code 0"


def a_failure_says_why(seen):
    if seen.code != 0 and not seen.text.reason():
        yield f"exit code {seen.code}, and standard error has no last line"
    if seen.code != 0 and not seen.report.message:
        yield f"exit code {seen.code}, and the report has no message"


def what_is_claimed_is_true(seen):
    for element in seen.report.elements:
        if element.claims_success() and not seen.has(element):
            yield f"the target does not have {element}"


def a_failed_verification_has_grounds(seen):
    contradicted = [element for element in seen.report.elements if element.verification in views.FAULTS]
    if contradicted and seen.code == 0:
        yield f"exit code 0 with {contradicted}"
    if seen.code == 6 and not seen.text.is_completed():
        yield "exit code 6 after an update that failed"
    if seen.code == 6 and not contradicted and seen.report.judged(views.AS_EXPECTED):
        yield "exit code 6, and nothing differs"


def text_and_report_count_the_same(seen):
    counts = seen.text.verification()
    words = collections.Counter(element.verification for element in seen.report.elements if element.verification)
    if counts and counts != words:
        yield f"the text counts {dict(counts)}, the report {dict(words)}"


def events_and_report_name_the_same_failures(seen):
    notified = sorted(set(seen.events.element_errors()))
    failed = sorted(element.index for element in seen.report.failed())
    if notified != failed:
        yield f"{notified} failed by the events, {failed} by the report"


def text_and_report_name_the_same_failures(seen):
    failed = len(seen.report.failed())
    if seen.text.failed_elements() != failed:
        yield f"the results name {seen.text.failed_elements()} elements, the report {failed}"
    if (failed > 0) != (seen.report.failure == "elements"):
        yield f"{failed} elements failed, and the exit code is {seen.code} for {seen.report.failure}"


def what_could_not_be_started_has_failed(seen):
    failed = {seen.rack.place(element.address) for element in seen.report.elements if element.outcome == views.FAILED}
    for place in sorted(seen.failed_places() - failed):
        yield f"the update of {place} could not be started, and the report does not call it failed"


def what_was_updated_was_started(seen):
    started = {(call["address"], call["id"]) for call in seen.trace.succeeded("update2")}
    for element in seen.report.elements:
        if element.is_file():
            continue
        was_started = seen.rack.place(element.address) in started
        if element.outcome == views.UPDATED and not was_started:
            yield f"no update was started of {element}"
        if was_started and element.outcome not in (views.UPDATED, views.FAILED):
            yield f"an update was started of {element}"


def a_refusal_leaves_the_target_alone(seen):
    if seen.code in (2, 3, 4) and seen.touched():
        yield f"exit code {seen.code} after {seen.touched()}"


def a_refused_lock_is_the_end(seen):
    refused = any(call.get("errors") for call in seen.trace.of("lock"))
    if refused != (seen.code == 5):
        yield f"the lock was {'' if refused else 'not '}refused, and the exit code is {seen.code}"
    if refused and seen.touched() != ["lock"]:
        yield f"the lock was refused, and this was touched: {seen.touched()}"


def the_lock_is_given_back(seen):
    locks = sum(not call.get("errors") for call in seen.trace.of("lock"))
    if locks != len(seen.trace.of("unlock")):
        yield f"{locks} locks and {len(seen.trace.of('unlock'))} unlocks"


def the_wrong_file_is_not_flashed(seen):
    if seen.trace.transfers(WRONG_FILE):
        yield f"{WRONG_FILE} went to the target"


CHECKS = (code_and_report_have_one_class, the_last_event_has_the_verdict, events_state_the_reasons_of_the_report,
          who_has_failed_has_a_reason,
          success_is_the_librarys_own_verdict, an_error_is_no_success, a_failure_says_why, what_is_claimed_is_true,
          a_failed_verification_has_grounds, text_and_report_count_the_same, text_and_report_name_the_same_failures,
          events_and_report_name_the_same_failures, what_could_not_be_started_has_failed, what_was_updated_was_started,
          a_refusal_leaves_the_target_alone, a_refused_lock_is_the_end, the_lock_is_given_back)


# --- updates and what they leave --------------------------------------------------------------------------------------

class Found:
    """What an undisturbed session finds on the target."""

    def __init__(self, folder):
        plan = run("plan", *ARCHIVE, *TARGET, "--json", folder=folder)
        self.records = json.loads(plan.output)["elements"]
        self.files = views.Rack(folder / "rack").files()

    def __eq__(self, other):
        return (self.records, self.files) == (other.records, other.files)


def is_up_to_date(record):
    """True if the record of a plan says that what the archive offers is installed, and works."""
    same_version = (record["installedVersion"] or "") == (record["availableVersion"] or "")
    return bool(record["hasArchiveFile"] and record["disabled"] and record["valid"] and same_version and
                not record["checksumMismatch"])


class Complete:
    """What an undisturbed update of the rack leads to."""

    def __init__(self, folder):
        session = Session(folder, UPDATE)
        assert session.code == 0, session
        self.addresses = [element.address for element in session.report.elements]
        description = cases.read_json(folder / "archive" / "archive.json")
        self.paths = {entry["name"]: entry["targetPath"] for entry in description["files"] if "targetPath" in entry}
        self.found = Found(folder)


class DisturbedUpdate(Session):
    """An update with failing calls. `found` is to be asked for before the target is updated again."""

    def __init__(self, folder, disturbances, complete):
        rack = views.Rack(folder / "rack")
        undisturbed = rack.text()
        rack.reset()
        rack.add([one.patch() for one in disturbances])
        super().__init__(folder, UPDATE)
        rack.describe(undisturbed)
        self.disturbances = disturbances
        self.complete = complete
        self.folder = folder

    @functools.cached_property
    def found(self):
        return Found(self.folder)

    def __str__(self):
        return ", ".join(map(str, self.disturbances))

    def has(self, element):
        """True if the target has what the update was to install: as a file, or as an undisturbed plan says."""
        if not element.address:
            path = self.complete.paths[element.file]
            return self.found.files.get(path) == self.complete.found.files[path]
        return is_up_to_date(self.found.records[self.complete.addresses.index(element.address)])


def operations():
    """The imported operations at which faults can be put, as far as an update calls them."""
    table = (PROJECT / "platform" / "emulation" / "operations" / "Operation.cpp").read_text(encoding="utf-8")
    names = re.findall(r'^ +\w+\(Operation::\w+, "(\w+)"', table, re.MULTILINE)
    return [name for name in names if name not in NOT_CALLED]


def shown(session):
    """What two sessions that differ in nothing have in common."""
    return session.code, session.text.output, session.text.errors, session.trace.calls


def share(divisor):
    """How many updates a test makes that has this part of them."""
    return max(1, SAMPLE // divisor // (LAUNCHED_SLOWNESS if arguments.launcher else 1))


def sampled(groups, divisor):
    """Some of every group, about a share in all; all if that is asked for."""
    if SAMPLE == 0:
        return [one for group in groups for one in group]
    draw = random.Random(SEED)
    groups = draw.sample(groups, min(len(groups), share(divisor)))
    each = max(1, share(divisor) // len(groups))
    return [one for group in groups for one in draw.sample(group, min(each, len(group)))]


# --- the sweep --------------------------------------------------------------------------------------------------------

class ToolSweepTest(ScratchTest):
    """Updates of the example rack with failing calls."""

    # How often an undisturbed update calls each operation, once that is known; by exit code.
    counts = {}

    def setUp(self):
        super().setUp()
        self.disturbed = 0
        self.wrong = []
        views.lay_out(self.scratch)
        self.complete = Complete(self.scratch)

    def calls_of(self, operation, undisturbed):
        """How often an undisturbed update calls the operation."""
        if operation not in MANY_CALLS:
            return len(undisturbed.trace.of(operation))
        called, not_called = 0, MANY_CALLS[operation]
        while not_called - called > 1:
            middle = (called + not_called) // 2
            from_there = [Disturbance(operation, number, False) for number in range(middle, MANY_CALLS[operation])]
            shows = shown(DisturbedUpdate(self.scratch, from_there, self.complete)) != shown(undisturbed)
            called, not_called = (middle, not_called) if shows else (called, middle)
        return called + (HIDDEN_EXTRACTIONS if operation == "extractInventoryTreeFromFile" else 0)

    def groups(self):
        """All calls of the update, once with an error and once without, by operation."""
        undisturbed = DisturbedUpdate(self.scratch, [], self.complete)
        counts = self.counts.setdefault(undisturbed.code, {})
        for operation in operations():
            if operation not in counts:
                counts[operation] = self.calls_of(operation, undisturbed)
        return [[Disturbance(operation, number, silent) for number in range(1, count + 1)]
                for operation, count in counts.items() if count for silent in (False, True)]

    def disturb(self, disturbances, checks=CHECKS):
        """Updates a fresh rack with these failing calls, and collects what is wrong."""
        self.disturbed += 1
        seen = DisturbedUpdate(self.scratch, disturbances, self.complete)
        if seen.report is None:
            self.wrong.append(("report", f"{seen}: there is none"))
            return
        self.wrong += [(check.__name__, f"{seen}: {sentence}") for check in checks for sentence in check(seen)]

    def expect_next_update_completes(self, disturbances):
        """Whatever the one before has left."""
        again = Session(self.scratch, UPDATE)
        left = leftovers.on_target(self.scratch / "rack")
        if again.code != 0 or left or Found(self.scratch) != self.complete.found:
            name = ", ".join(map(str, disturbances))
            self.wrong.append(("next update", f"{name}: it ends with {again.code} and leaves {left}"))

    def assert_nothing_wrong(self):
        print(f"{self.disturbed} disturbed updates of seed {SEED}, {len(self.wrong)} complaints")
        counts = collections.Counter(check for check, _ in self.wrong)
        first = dict(reversed(self.wrong))
        self.assertEqual(counts, {}, "".join(f"\n{count} x {check}, first: {first[check]}"
                                             for check, count in counts.most_common()))

    def test_whichever_call_fails_everything_says_the_same(self):
        groups = self.groups()
        self.assertEqual({group[0].call for group in groups}, set(operations()), "an update does not call them all")
        print(f"{sum(map(len, groups))} disturbances")
        for one in sampled(groups, 1):
            self.disturb([one])
            self.expect_next_update_completes([one])
        self.assert_nothing_wrong()

    def test_whichever_two_calls_fail_everything_says_the_same(self):
        groups = self.groups()
        draw = random.Random(SEED)
        for _ in range(share(3) if SAMPLE else ALL_PAIRS):
            # Each operation as often as any other.
            pair = [draw.choice(draw.choice(groups)) for _ in range(2)]
            self.disturb(pair)
            self.expect_next_update_completes(pair)
        self.assert_nothing_wrong()

    def test_no_failing_call_lets_a_wrong_file_through(self):
        shutil.rmtree(self.scratch / "archive")
        cases.lay_out_archive({"base": "examples", "patch": [views.other_version(WRONG_FILE, "1.2.0.9")]},
                              self.scratch / "archive")
        for one in sampled(self.groups(), 2):
            self.disturb([one], (*CHECKS, the_wrong_file_is_not_flashed))
        self.assert_nothing_wrong()


if __name__ == "__main__":
    tool_runs.main()
