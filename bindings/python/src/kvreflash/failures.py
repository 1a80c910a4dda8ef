"""Exceptions of operations that have failed, one class for each class of failures.

>>> import kvreflash
>>> with kvreflash.Session(archive=archive, target="127.0.0.9") as session:
...     try:
...         session.prepare()
...     except kvreflash.TargetFailed as failure:
...         print(failure.retryable, failure.exit_code)
True 4
"""

from __future__ import annotations

from typing import Dict, Optional, Sequence, Tuple, Type

from . import _library
from .enums import Failure
from .errors import KvReflashError


class OperationFailed(KvReflashError):
    """An operation has failed. Its class says in which way; this one itself is of none of the known classes."""

    failure = Failure.NONE

    def __init__(self, message: str, *, failure: Optional[Failure] = None, retryable: bool = False,
                 faults: Sequence[str] = ()) -> None:
        super().__init__(message)
        if failure is not None:
            self.failure = failure
        self.retryable = retryable
        """The same may succeed if it is tried again."""
        self.exit_code = _library.exit_code(self.failure)
        """With which the console tool ends after this failure."""
        self.faults: Tuple[str, ...] = tuple(faults)
        """One sentence for each difference to a saved plan, or for each unusable update file."""


class ArchiveRefused(OperationFailed):
    """The archive was refused, or an update file of it is not usable."""

    failure = Failure.ARCHIVE


class TargetFailed(OperationFailed):
    """The target was not reached, or cannot be scanned."""

    failure = Failure.TARGET


class PlanStale(OperationFailed):
    """A saved plan, or a run that is to go on, does not hold any more, or was changed."""

    failure = Failure.STALE


class TargetNotSupported(OperationFailed):
    """The archive does not support the target."""

    failure = Failure.UNSUPPORTED


class SelectionFailed(OperationFailed):
    """A filter lets no element through, or what was named does not exist or is not the only one."""

    failure = Failure.SELECTION


class TargetLocked(OperationFailed):
    """The target could not be locked, or its run is under way."""

    failure = Failure.LOCKED


class Stopped(OperationFailed):
    """Ended on request."""

    failure = Failure.STOPPED


class ElementsFailed(OperationFailed):
    """An element or file failed."""

    failure = Failure.ELEMENTS


class ErrorsReported(OperationFailed):
    """Errors were reported."""

    failure = Failure.ERRORS


class RebootFailed(OperationFailed):
    """The target was not rebooted."""

    failure = Failure.REBOOT


class VerificationFailed(OperationFailed):
    """The target does not report what it should."""

    failure = Failure.VERIFICATION


class OutputFailed(OperationFailed):
    """Something could not be written."""

    failure = Failure.OUTPUT


_CLASSES: Dict[Failure, Type[OperationFailed]] = {
    kind.failure: kind
    for kind in (ArchiveRefused, TargetFailed, PlanStale, TargetNotSupported, SelectionFailed, TargetLocked, Stopped,
                 ElementsFailed, ErrorsReported, RebootFailed, VerificationFailed, OutputFailed)
}


def failed(failure: Failure, message: str, *, retryable: bool = False,
           faults: Sequence[str] = ()) -> OperationFailed:
    """The exception for a failure."""
    kind = _CLASSES.get(failure, OperationFailed)
    return kind(message, failure=failure, retryable=retryable, faults=faults)
