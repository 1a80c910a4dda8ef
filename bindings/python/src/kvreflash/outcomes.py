"""What has become of a session, and what a verification has found."""

from __future__ import annotations

from ctypes import c_void_p
from dataclasses import dataclass
from typing import Optional, Tuple

from . import _library
from . import _records as records
from ._library import decoded, known
from .enums import FailedCall, Failure, Result, Stage, Verified
from .errors import OrderError
from .failures import OperationFailed, failed


@dataclass(frozen=True)
class TargetError:
    """An error that the device access libraries have reported."""

    code: int
    text: str
    origin_node: Optional[int]
    """Serial number of the node that has reported it; None: the host."""
    function: Optional[str]
    """None: not known."""
    line: Optional[int]
    """None: not known."""


@dataclass(frozen=True)
class ElementResult:
    """What has become of an element."""

    element: int
    """Index in the plan."""
    result: Result
    reason: str
    """Why it failed or was not started; empty otherwise."""
    failed_call: FailedCall
    """The call that has failed."""
    state: Optional[int]
    """Last answer of the target: 1 running, 2 succeeded, anything else failed. None: it was not asked."""
    file_changed: bool
    """Its update file has changed while it was used."""
    errors: Tuple[TargetError, ...]


@dataclass(frozen=True)
class Outcome:
    """What has become of a session so far."""

    stage: Stage
    failure: Failure
    message: str
    """Why, in one line; empty if nothing failed."""
    retryable: bool
    """The same may succeed if it is tried again."""
    exit_code: int
    """Of the console tool for this failure."""
    faults: Tuple[str, ...]
    """Sentences of the last prepare (how a saved plan differs) or preflight."""
    run: Optional[str]
    """Id of the run in the journal."""
    errors: Tuple[TargetError, ...]
    """Those that belong to no element."""
    results: Tuple[ElementResult, ...]
    """Of each element of the plan; empty if the target was not scanned."""

    @property
    def succeeded(self) -> bool:
        """Whether nothing failed."""
        return self.failure == Failure.NONE

    def failure_exception(self) -> OperationFailed:
        """The exception for this failure."""
        return failed(self.failure, self.message, retryable=self.retryable, faults=self.faults)

    def raise_for_failure(self) -> None:
        """Raises the exception for this failure; does nothing after a success."""
        if not self.succeeded:
            raise self.failure_exception()


@dataclass(frozen=True)
class VerifiedElement:
    """An element beside what the target reports of it. None stands for what it does not report."""

    element: int
    """Index in the plan."""
    result: Verified
    version: Optional[str]
    checksum: Optional[int]
    valid: Optional[bool]
    active: Optional[bool]
    file_changed: bool
    """Its update file has changed: nobody knows what was installed."""


@dataclass(frozen=True)
class Verification:
    """The last verification of a session."""

    failure: Failure
    message: str
    """Why it failed; empty otherwise."""
    errors: Tuple[TargetError, ...]
    """Those that the look has collected."""
    elements: Tuple[VerifiedElement, ...]
    """Those that were judged."""

    @property
    def succeeded(self) -> bool:
        """Whether the target reports what it should."""
        return self.failure == Failure.NONE

    def raise_for_failure(self) -> None:
        """Raises the exception for this failure; does nothing after a success."""
        if not self.succeeded:
            raise failed(self.failure, self.message)


def outcome_of(session: Optional[c_void_p]) -> Outcome:
    """The outcome of a session as it stands."""
    record = _library.filled("kvr_session_get_outcome", records.Outcome, session)
    return Outcome(
        stage=Stage(record.stage),
        failure=Failure(record.failure),
        message=decoded(record.message),
        retryable=bool(record.retryable),
        exit_code=record.exit_code,
        faults=tuple(_library.text("kvr_session_get_fault", session, index) for index in range(record.faults)),
        run=known(record.run),
        errors=_errors_of(record.errors, "kvr_session_get_error", session),
        results=tuple(_result_of(session, index) for index in range(_element_count(session))))


def verification_of(session: Optional[c_void_p]) -> Verification:
    """The last verification of a session."""
    record = _library.filled("kvr_session_get_verification", records.Verification, session)
    return Verification(failure=Failure(record.failure), message=decoded(record.message),
                        errors=_errors_of(record.errors, "kvr_session_get_look_error", session),
                        elements=tuple(_verified_of(session, index) for index in range(record.elements)))


def _element_count(session: Optional[c_void_p]) -> int:
    try:
        count: int = _library.filled("kvr_session_get_plan", records.Plan, session).elements
        return count
    except OrderError:
        return 0


def _errors_of(count: int, function: str, *place: object) -> Tuple[TargetError, ...]:
    return tuple(_error_from(_library.filled(function, records.Error, *place, index)) for index in range(count))


def _error_from(record: records.Error) -> TargetError:
    return TargetError(code=record.code, text=decoded(record.text), origin_node=record.origin_node or None,
                       function=known(record.function), line=record.line or None)


def _result_of(session: Optional[c_void_p], index: int) -> ElementResult:
    record = _library.filled("kvr_session_get_result", records.ElementResult, session, index)
    return ElementResult(
        element=index,
        result=Result(record.result),
        reason=decoded(record.reason),
        failed_call=FailedCall(record.failed_call),
        state=record.state if record.known & records.KNOWS_STATE else None,
        file_changed=bool(record.file_changed),
        errors=_errors_of(record.errors, "kvr_session_get_element_error", session, index))


def _verified_of(session: Optional[c_void_p], index: int) -> VerifiedElement:
    record = _library.filled("kvr_session_get_verified", records.VerifiedElement, session, index)
    bits = record.known
    return VerifiedElement(
        element=record.element,
        result=Verified(record.result),
        version=known(record.version),
        checksum=record.checksum if bits & records.KNOWS_CHECKSUM else None,
        valid=bool(record.valid) if bits & records.KNOWS_VALID else None,
        active=bool(record.active) if bits & records.KNOWS_ACTIVE else None,
        file_changed=bool(record.file_changed))
