"""Sessions with one target."""

from __future__ import annotations

import json
import queue
import warnings
from contextlib import suppress
from ctypes import byref, c_uint32
from types import TracebackType
from typing import Any, Callable, Iterable, Iterator, Optional, Tuple, Type, Union

from . import _library
from . import _records as records
from ._library import PathText, encoded
from ._worker import PAUSE, Worker
from .enums import Document, EventKind, Mode, SessionFlag, StopRequest, UnlistedFiles
from .errors import ArgumentError, OrderError
from .events import ELEMENT_KINDS, Event
from .failures import ArchiveRefused, SelectionFailed
from .outcomes import Outcome, Verification, outcome_of, verification_of
from .plans import Plan, plan_of, read_saved_plan

Words = Union[str, Iterable[Union[str, int]]]


class Session:
    """An update session with one target, as a context manager.

    ``archive``
        Folder or package of the archive; ``description`` is the file name of its description ("archive.json").
    ``target``
        IPv4 address or name of the target.
    ``mode``
        What the session does.
    ``board_types``, ``serial_numbers``, ``element_names``
        Filters: a text of words separated by commas or blanks, or a list; empty: all.
    ``trust_folder``, ``release``, ``accept_unsealed``
        Whose archives are accepted: those that somebody signed whom the trust folder names; with ``release`` alone the
        archive's manifest is obeyed; with ``accept_unsealed`` archives that are not sealed or signed are accepted, too.
    ``journal_folder``, ``journal_required``, ``journal_place``
        Where the run is written down; whether nothing begins that cannot be; what says, beside address and serial
        numbers, which target it is: the folder of an emulated one.
    ``saved_plan``
        Text of a saved plan: the session does exactly that. Target, filters and what decides come from the plan, the
        archive too unless it is given.
    ``resumed_run``, ``redo``
        Id of a run of the journal: the session goes on with it; with ``redo`` it updates elements in doubt again.
    ``unlisted_files``
        Which files that the inventory does not list are written.
    ``stall_limit``
        Gives up when nothing new shows for so many seconds; 0: never.
    ``force``
        Updates elements that are up to date, too.
    ``configuration``
        Looks at configuration elements instead of the others.
    ``skip_custom``, ``no_downgrade``
        Leave out custom elements, and elements for which the archive has a lower version.
    ``watch_files``
        Notices update files that change while they are used.
    ``verbose``
        Messages with details.
    ``on_event``, ``on_message``
        Receive each :class:`Event`, and each message as a console would show it, line ends included. They run on the
        thread that does the session's work, and hold it up. They may ask the session for its plan and outcome and
        request to stop. If one raises, the session is asked to stop, neither is called again, and the method under way
        raises the exception when it has ended.

    A session is used by one thread at a time; :meth:`request_stop` may be called on any thread. Its work runs on a
    thread of its own, so that Ctrl-C arrives: the first one asks to end and awaits what has begun, the second one gives
    that up, too. KeyboardInterrupt is raised when the work has ended. In a program with its own handler of SIGINT that
    handler runs; if it raises an exception, the session is at work until :meth:`close` has awaited its end.

    >>> import kvreflash
    >>> address = kvreflash.emulation.serve(rack)
    >>> with kvreflash.Session(archive=archive, target=address, watch_files=True) as session:
    ...     plan = session.prepare()
    ...     session.disable(3)
    ...     faults = session.preflight()
    ...     outcome = session.run()
    ...     verification = session.verify()
    >>> len(plan.changes), outcome.failure, verification.succeeded
    (20, <Failure.NONE: 12>, True)
    """

    # For a session that could not be made.
    _handle: Optional[records.HANDLE] = None
    _worker: Optional[Worker] = None

    def __init__(self, *, archive: Optional[PathText] = None, target: Optional[str] = None, mode: Mode = Mode.UPDATE,
                 description: str = "", board_types: Words = "", serial_numbers: Words = "", element_names: Words = "",
                 trust_folder: Optional[PathText] = None, release: bool = False, accept_unsealed: bool = False,
                 journal_folder: Optional[PathText] = None, journal_required: bool = False,
                 journal_place: Optional[PathText] = None, saved_plan: Optional[str] = None,
                 resumed_run: Optional[str] = None, redo: bool = False,
                 unlisted_files: UnlistedFiles = UnlistedFiles.ALWAYS, stall_limit: int = 0, force: bool = False,
                 configuration: bool = False, skip_custom: bool = False, no_downgrade: bool = False,
                 watch_files: bool = False, verbose: bool = False,
                 on_event: Optional[Callable[[Event], object]] = None,
                 on_message: Optional[Callable[[str], object]] = None) -> None:
        if saved_plan:
            read_saved_plan(saved_plan)  # states why it cannot be read
        if resumed_run and journal_folder is None:
            raise ArgumentError("a run goes on with the journal that has it: journal_folder is missing")
        self._on_event = on_event
        self._on_message = on_message
        self._queue: Optional[queue.SimpleQueue[Optional[Event]]] = None
        self._plan: Optional[Plan] = None
        self._fault: Optional[BaseException] = None
        flags = {SessionFlag.FORCE: force, SessionFlag.VERBOSE: verbose, SessionFlag.CONFIGURATION: configuration,
                 SessionFlag.SKIP_CUSTOM: skip_custom, SessionFlag.NO_DOWNGRADE: no_downgrade,
                 SessionFlag.WATCH_FILES: watch_files, SessionFlag.RELEASE: release,
                 SessionFlag.ACCEPT_UNSEALED: accept_unsealed, SessionFlag.JOURNAL_REQUIRED: journal_required,
                 SessionFlag.REDO: redo}
        options = records.SessionOptions(
            mode=mode, flags=sum(flag for flag, is_wanted in flags.items() if is_wanted),
            unlisted_files=unlisted_files, stall_limit=stall_limit, target=encoded(target), archive=encoded(archive),
            description=encoded(description), board_types=_joined(board_types),
            serial_numbers=_joined(serial_numbers), element_names=_joined(element_names),
            trust_folder=encoded(trust_folder), journal_folder=encoded(journal_folder),
            journal_place=encoded(journal_place), saved_plan=encoded(saved_plan), resumed_run=encoded(resumed_run))
        handle = records.HANDLE()
        _library.call("kvr_session_create", byref(options), byref(handle))
        self._handle = handle
        # The library calls it until the session is freed.
        self._function = _library.EventFunction(self._receive)
        _library.call("kvr_session_set_event_function", handle, self._function, None)

    def __enter__(self) -> Session:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], fault: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __del__(self) -> None:
        if self._handle is not None:
            warnings.warn("a session was not closed", ResourceWarning, source=self)
            with suppress(Exception):
                self.close()

    def close(self) -> None:
        """Ends the session and releases all that it holds of the target. Work that is under way is asked to stop and
        awaited. The session must not be used any more; closing it again does nothing. Not within one of its callbacks
        (:class:`OrderError`)."""
        worker = self._worker
        try:
            if worker is not None and not worker.is_current:
                worker.request_stop()
                worker.join()
        finally:
            if self._handle is not None:
                _library.call("kvr_session_free", self._handle)
                self._handle = None

    def prepare(self) -> Plan:
        """Reads the archive, finds and scans the target, and plans, as the mode asks; returns the plan. Once for each
        session. Raises the exception for the failure; its ``faults`` list how a saved plan, or a run that is to go on,
        differs."""
        if self._perform("kvr_prepare") != _library.SUCCESS:
            raise self.outcome().failure_exception()
        return self.plan()

    def disable(self, element: Union[int, str]) -> None:
        """Leaves an element out of the update. ``element`` is its index, its inventory address, its target path or its
        displayed name. Raises :class:`SelectionFailed` if not exactly one is named so. Between prepare and run."""
        found = c_uint32()
        result = _library.call("kvr_disable", self._own(), encoded(str(element)), byref(found))
        if result != _library.SUCCESS:
            raise SelectionFailed(f"'{element}' must name one element, and names {found.value}")
        self._plan = None

    def preflight(self, check: bool = True) -> Tuple[str, ...]:
        """Checks the update files that an update would use; returns what is wrong with them. If something is, the
        session cannot run any more, and :class:`ArchiveRefused` is raised unless ``check`` is False. Between prepare
        and run."""
        if self._perform("kvr_preflight") == _library.SUCCESS:
            return ()
        faults = self.outcome().faults
        if check:
            raise ArchiveRefused("; ".join(faults), faults=faults)
        return faults

    def run(self, check: bool = True) -> Outcome:
        """Updates the target in the mode :attr:`Mode.UPDATE`, and gives what other modes print to ``on_message``. Once,
        after a successful prepare. If it fails, raises the exception for the failure unless ``check`` is False."""
        result = self._perform("kvr_run")
        outcome = self.outcome()
        if check and result != _library.SUCCESS:
            raise outcome.failure_exception()
        return outcome

    def run_events(self) -> Iterator[Event]:
        """Runs like :meth:`run`, and yields the events in their order. They are kept until they are taken, so that a
        slow loop does not hold the update up. The loop ends when the run has ended; :meth:`outcome` then has what came
        of it, and nothing is raised for a failure. Meanwhile the session answers no questions, but
        :meth:`request_stop` may be called. To leave the loop early asks the run to stop and awaits its end.

        >>> import kvreflash
        >>> address = kvreflash.emulation.serve(rack)
        >>> with kvreflash.Session(archive=archive, target=address, serial_numbers=[61001]) as session:
        ...     plan = session.prepare()
        ...     for event in session.run_events():
        ...         if event.kind == kvreflash.EventKind.ELEMENT_END:
        ...             print(event.element.display_name, event.succeeded)
        ...     session.outcome().raise_for_failure()
        QB6210 (DI16), SN 61001, FPGA True
        QB6210 (DI16), SN 61001, UserLogic True
        """
        events: queue.SimpleQueue[Optional[Event]] = queue.SimpleQueue()
        worker = self._begin("kvr_run", events=events)
        try:
            while True:
                with suppress(queue.Empty):
                    event = events.get(timeout=PAUSE)
                    if event is None:
                        break
                    yield event
        except BaseException:
            worker.request_stop()
            raise
        finally:
            self._finish(worker)

    def request_stop(self, how: StopRequest = StopRequest.FINISH) -> None:
        """Asks a running update to end. Never taken back. Any thread, at any time."""
        _library.call("kvr_request_stop", self._handle, how)

    def verify(self, was_rebooted: bool = False) -> Verification:
        """Looks at what the target reports now and holds it against the plan and what was updated. ``was_rebooted``:
        the target was rebooted since. After a successful prepare and, in the mode :attr:`Mode.UPDATE`, after run.
        Raises nothing if the target does not report what it should; :meth:`Verification.raise_for_failure` does."""
        self._perform("kvr_verify", int(was_rebooted))
        return verification_of(self._own())

    def reboot(self, check: bool = True) -> Outcome:
        """Resets the target. If it cannot be reset, raises the exception for the failure unless ``check`` is False.
        After a successful prepare."""
        result = self._perform("kvr_reboot")
        outcome = self.outcome()
        if check and result != _library.SUCCESS:
            raise outcome.failure_exception()
        return outcome

    def plan(self) -> Plan:
        """The plan as it stands. Raises :class:`OrderError` if the target was not scanned."""
        self._plan = plan_of(self._own())
        return self._plan

    def outcome(self) -> Outcome:
        """What has become of the session so far."""
        return outcome_of(self._own())

    def verification(self) -> Verification:
        """The last verification. Raises :class:`OrderError` before :meth:`verify`."""
        return verification_of(self._own())

    def document(self, kind: Document) -> str:
        """A document of the session as it stands: JSON as the console tool writes it. Raises :class:`ArchiveRefused`
        if a file cannot be read whose digest a saved plan needs.

        >>> import kvreflash
        >>> address = kvreflash.emulation.serve(rack)
        >>> with kvreflash.Session(target=address, mode=kvreflash.Mode.ELEMENTS) as session:
        ...     plan = session.prepare()
        ...     document = session.json(kvreflash.Document.ELEMENTS)
        >>> document["format"]["name"]
        'kvreflash.elements'
        """
        result, text = _library.answer("kvr_session_get_document", self._own(), kind)
        if result != _library.SUCCESS:
            raise ArchiveRefused(_library.last_error())
        return text

    def json(self, kind: Document) -> Any:
        """A document of the session as values."""
        return json.loads(self.document(kind))

    def _own(self) -> Optional[records.HANDLE]:
        """The handle, for what no other thread may do meanwhile."""
        if self._worker is not None and not self._worker.is_current:
            raise OrderError("the session is at work on another thread")
        return self._handle

    def _perform(self, name: str, *arguments: int) -> int:
        """Calls a function of the library that takes its time."""
        return self._finish(self._begin(name, *arguments))

    def _begin(self, name: str, *arguments: int,
               events: Optional[queue.SimpleQueue[Optional[Event]]] = None) -> Worker:
        handle = self._handle
        if self._worker is not None:
            raise OrderError("the session is at work already")
        self._fault = None
        self._queue = events
        worker = Worker(lambda: _library.call(name, handle, *arguments), self.request_stop,
                        on_end=lambda: None if events is None else events.put(None))
        self._worker = worker
        worker.start()
        return worker

    def _finish(self, worker: Worker) -> int:
        try:
            result = worker.wait()
        finally:
            if worker.has_ended:
                self._worker = None
        if self._fault is not None:
            raise self._fault
        return result

    def _receive(self, address: int, _context: Optional[int]) -> None:
        """Takes an event of the library. No exception can leave it."""
        if self._fault is not None:
            return
        try:
            self._deliver(records.record_at(records.Event, address))
        except BaseException as fault:  # pylint: disable=broad-except  # raised by the method under way
            self._fault = fault
            self.request_stop()

    def _deliver(self, record: records.Event) -> None:
        if record.kind == EventKind.MESSAGE:
            if self._on_message is not None:
                self._on_message(_library.decoded(record.text))
            return
        event = self._event_from(record)
        if self._queue is not None:
            self._queue.put(event)
        if self._on_event is not None:
            self._on_event(event)

    def _event_from(self, record: records.Event) -> Event:
        kind = EventKind(record.kind)
        return Event(kind=kind, value=record.value, succeeded=bool(record.succeeded),
                     element=self._known_plan().elements[record.value] if kind in ELEMENT_KINDS else None,
                     entry=self._known_plan().entries[record.value] if kind == EventKind.TRANSFER else None)

    def _known_plan(self) -> Plan:
        return self.plan() if self._plan is None else self._plan


def _joined(words: Words) -> bytes:
    return encoded(words if isinstance(words, str) else ",".join(map(str, words)))
