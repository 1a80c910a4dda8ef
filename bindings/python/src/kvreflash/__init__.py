"""Firmware updates of networked real-time targets.

:class:`Session` plans and updates a target, :class:`Archive` looks into archives, :func:`runs` lists the journal,
:mod:`kvreflash.emulation` serves emulated targets.

The libraries are looked for in the package itself, then in the folder that the environment variable KVREFLASH_LIBRARY
names, then by the system's loader.

>>> import kvreflash
>>> address = kvreflash.emulation.serve(rack)
>>> with kvreflash.Session(archive=archive, target=address) as session:
...     plan = session.prepare()
...     for element in plan.changes[:2]:
...         print(f"{element.display_name}: {element.version} -> {element.available_version}")
...     outcome = session.run()
...     session.verify().raise_for_failure()
QB4120 (A), SN 2815, Firmware: 23.2a12 -> 23.2.1
QB4120 (A), SN 2815, Bootloader: 5.0 -> 5.0.1
"""

from . import emulation
from ._library import version
from .archive import Archive, ArchiveContent, Change, Finding
from .enums import (ArchiveDocument, ChangeKind, Document, EventKind, FailedCall, Failure, Mode, Reason, Result,
                    RunState, Seal, Severity, Stage, StopRequest, UnlistedFiles, Verified)
from .errors import (ArgumentError, CallError, EmulationError, KvReflashError, LibraryNotLoaded, OrderError,
                     OutOfMemoryError, VersionError)
from .events import NO_PHASE, Event
from .failures import (ArchiveRefused, ElementsFailed, ErrorsReported, OperationFailed, OutputFailed, PlanStale,
                       RebootFailed, SelectionFailed, Stopped, TargetFailed, TargetLocked, TargetNotSupported,
                       VerificationFailed)
from .outcomes import ElementResult, Outcome, TargetError, Verification, VerifiedElement
from .plans import Element, Entry, Plan, SavedPlan, read_saved_plan
from .runs import Run, history_document, run_document, runs
from .session import Session

__all__ = [
    "Archive", "ArchiveContent", "ArchiveDocument", "ArchiveRefused", "ArgumentError", "CallError", "Change",
    "ChangeKind", "Document", "Element", "ElementResult", "ElementsFailed", "EmulationError", "Entry", "ErrorsReported",
    "Event", "EventKind", "FailedCall", "Failure", "Finding", "KvReflashError", "LibraryNotLoaded", "Mode", "NO_PHASE",
    "OperationFailed", "OrderError", "OutOfMemoryError", "Outcome", "OutputFailed", "Plan", "PlanStale", "Reason",
    "RebootFailed", "Result", "Run", "RunState", "SavedPlan", "Seal", "SelectionFailed", "Session", "Severity", "Stage",
    "StopRequest", "Stopped", "TargetError", "TargetFailed", "TargetLocked", "TargetNotSupported", "UnlistedFiles",
    "Verification", "VerificationFailed", "Verified", "VerifiedElement", "VersionError", "emulation",
    "history_document", "read_saved_plan", "run_document", "runs", "version",
]
