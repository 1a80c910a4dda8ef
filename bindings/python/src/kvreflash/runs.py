"""The journal of runs."""

from __future__ import annotations

from contextlib import contextmanager
from ctypes import byref, c_uint32
from dataclasses import dataclass
from typing import Iterator, Optional, Tuple

from . import _library
from . import _records as records
from ._library import PathText, decoded, encoded, known
from .enums import Failure, RunState
from .failures import SelectionFailed


@dataclass(frozen=True)
class Run:
    """A run, in short."""

    id: str
    state: RunState
    command: str
    """"update" or "reboot"."""
    begin: str
    """RFC 3339, UTC."""
    end: Optional[str]
    """None: not written."""
    target: str
    """As it was given."""
    target_address: Optional[str]
    archive: Optional[str]
    """Path of the archive."""
    user: str
    computer: str
    failure: Failure
    """What the run has written at its end."""
    message: str
    """Why it failed; empty otherwise."""
    exit_code: int
    resumable: bool
    """It did not come to its end, and no other run has gone on with it."""
    plan: Optional[str]
    """Id of the saved plan that it has run."""
    fault: Optional[str]
    """Why its file is not to be trusted from some line on; None: it is whole."""


def runs(journal_folder: PathText) -> Tuple[Run, ...]:
    """The runs of a journal, from the oldest to the newest; none if there is no such folder.

    >>> import kvreflash
    >>> address = kvreflash.emulation.serve(rack)
    >>> with kvreflash.Session(archive=archive, target=address, journal_folder=journal) as session:
    ...     plan = session.prepare()
    ...     outcome = session.run()
    >>> [(run.command, run.state.name, run.id == outcome.run) for run in kvreflash.runs(journal)]
    [('update', 'COMPLETE', True)]
    """
    with _journal(journal_folder) as (handle, count):
        return tuple(_run(handle, index) for index in range(count))


def history_document(journal_folder: PathText) -> str:
    """The document of all runs of a journal: JSON as the console tool writes it."""
    with _journal(journal_folder) as (handle, _count):
        return _library.text("kvr_runs_get_document", handle, None)


def run_document(journal_folder: PathText, run: str) -> str:
    """The document of the run of this id. Raises :class:`SelectionFailed` if there is none, or it cannot be read."""
    if not run:
        raise SelectionFailed("no run is named")
    with _journal(journal_folder) as (handle, _count):
        result, text = _library.answer("kvr_runs_get_document", handle, encoded(run))
        if result != _library.SUCCESS:
            raise SelectionFailed(_library.last_error())
        return text


@contextmanager
def _journal(folder: PathText) -> Iterator[Tuple[records.HANDLE, int]]:
    """A handle to the runs, and their number."""
    handle, count = records.HANDLE(), c_uint32()
    _library.call("kvr_runs_create", encoded(folder), byref(handle), byref(count))
    try:
        yield handle, count.value
    finally:
        _library.call("kvr_runs_free", handle)


def _run(handle: records.HANDLE, index: int) -> Run:
    record = _library.filled("kvr_runs_get", records.RunInfo, handle, index)
    return Run(id=decoded(record.id), state=RunState(record.state), command=decoded(record.command),
               begin=decoded(record.begin), end=known(record.end), target=decoded(record.target),
               target_address=known(record.target_address), archive=known(record.archive), user=decoded(record.user),
               computer=decoded(record.computer), failure=Failure(record.failure), message=decoded(record.message),
               exit_code=record.exit_code, resumable=bool(record.resumable), plan=known(record.plan),
               fault=known(record.fault))
