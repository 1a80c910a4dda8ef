"""Archives without a target."""

from __future__ import annotations

import json
import warnings
from contextlib import suppress
from ctypes import byref, c_uint32
from dataclasses import dataclass
from types import TracebackType
from typing import Any, Optional, Tuple, Type

from . import _library
from . import _records as records
from ._library import PathText, decoded, encoded, known
from .enums import ArchiveDocument, ChangeKind, Failure, Seal, SessionFlag, Severity
from .failures import ArchiveRefused, failed
from .plans import Entry, entry_of


@dataclass(frozen=True)
class ArchiveContent:
    """The content of an archive. None stands for what it does not state."""

    failure: Failure
    """:attr:`Failure.ARCHIVE` if it is refused, :attr:`Failure.NONE` otherwise."""
    message: str
    """Why it is refused; empty otherwise."""
    archive_name: Optional[str]
    archive_version: Optional[str]
    product_name: Optional[str]
    format_version: Optional[str]
    archive_variant: Optional[str]
    seal: Seal
    """Looked at with a trust folder or ``release`` only."""
    manifest_digest: Optional[str]
    """SHA-256 of the manifest in hexadecimal digits."""
    created: Optional[str]
    """When it was sealed, RFC 3339."""
    signer: Optional[str]
    """Who has signed it, as the trust folder calls them."""
    key_fingerprint: Optional[str]
    """Of the key that counts."""
    entries: Tuple[Entry, ...]
    """Accepted entries."""


@dataclass(frozen=True)
class Finding:
    """Something that is to be said about an archive."""

    severity: Severity
    code: str
    """Kind of finding; docs/archive-check.md lists them."""
    message: str
    hint: str
    """Advice; may be empty."""
    path: str
    """JSON path of the value."""
    line: int
    """Place in the description, from 1."""
    column: int


@dataclass(frozen=True)
class Change:
    """A place, on boards of a type, for which one of two archives has an entry."""

    change: ChangeKind
    board_type: str
    element_id: Optional[int]
    """None for a file."""
    target_path: Optional[str]
    """Of a file."""
    version_before: Optional[str]
    """None: no entry, or it states none."""
    version_after: Optional[str]
    content_changed: bool
    """Other checksums, or not known."""
    rules_changed: bool
    """For other boards or elements."""
    sequence_changed: bool
    """Of another phase."""


class Archive:
    """A folder or package of update files and their description, as a context manager.

    ``description`` is the file name of the description ("archive.json"). With a ``trust_folder`` only archives are
    accepted that somebody signed whom it names; with ``release`` alone the manifest of the archive is obeyed; with
    ``accept_unsealed`` archives that are not sealed or signed are accepted, too. An archive is used by one thread at a
    time.

    >>> import kvreflash
    >>> with kvreflash.Archive(archive) as example:
    ...     print(example.content().archive_version, len(example.check()))
    23.2.1 0
    """

    # For an archive that could not be made.
    _handle: Optional[records.HANDLE] = None

    def __init__(self, archive: PathText, *, description: str = "", trust_folder: Optional[PathText] = None,
                 release: bool = False, accept_unsealed: bool = False) -> None:
        flags = (release * SessionFlag.RELEASE) | (accept_unsealed * SessionFlag.ACCEPT_UNSEALED)
        options = records.ArchiveOptions(flags=flags, archive=encoded(archive), description=encoded(description),
                                         trust_folder=encoded(trust_folder))
        handle = records.HANDLE()
        _library.call("kvr_archive_create", byref(options), byref(handle))
        self._handle = handle

    def __enter__(self) -> Archive:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], fault: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __del__(self) -> None:
        if self._handle is not None:
            warnings.warn("an archive was not closed", ResourceWarning, source=self)
            with suppress(Exception):
                self.close()

    def close(self) -> None:
        """Releases the archive. It must not be used any more; closing it again does nothing."""
        if self._handle is not None:
            _library.call("kvr_archive_free", self._handle)
            self._handle = None

    def content(self, check: bool = True) -> ArchiveContent:
        """Reads the archive as a session does. Raises :class:`ArchiveRefused` if it is refused, unless ``check`` is
        False."""
        _library.call("kvr_archive_read", self._handle)
        record = _library.filled("kvr_archive_get_info", records.ArchiveInfo, self._handle)
        content = ArchiveContent(
            failure=Failure(record.failure), message=decoded(record.message),
            archive_name=known(record.archive_name), archive_version=known(record.archive_version),
            product_name=known(record.product_name), format_version=known(record.format_version),
            archive_variant=known(record.archive_variant), seal=Seal(record.seal),
            manifest_digest=known(record.manifest_digest), created=known(record.created),
            signer=known(record.signer), key_fingerprint=known(record.key_fingerprint),
            entries=tuple(entry_of("kvr_archive_get_entry", self._handle, index) for index in range(record.entries)))
        if check and content.failure != Failure.NONE:
            raise failed(content.failure, content.message)
        return content

    def check(self) -> Tuple[Finding, ...]:
        """Looks for everything that is wrong or surprising. The archive is refused if there are errors."""
        count = _library.number("kvr_archive_check", self._handle)
        return tuple(self._finding(index) for index in range(count))

    def compare(self, older: Archive) -> Tuple[Change, ...]:
        """The places of this archive and an older one, also those that are the same. Raises :class:`ArchiveRefused` if
        one of them is refused.

        >>> import kvreflash
        >>> with kvreflash.Archive(archive) as newer, kvreflash.Archive(archive) as older:
        ...     {place.change for place in newer.compare(older)}
        {<ChangeKind.SAME: 0>}
        """
        places = c_uint32()
        result = _library.call("kvr_archive_compare", self._handle, older._handle, byref(places))
        if result != _library.SUCCESS:
            raise ArchiveRefused(_library.last_error())
        return tuple(self._change(index) for index in range(places.value))

    def document(self, kind: ArchiveDocument) -> str:
        """A document of the archive: JSON as the console tool writes it. Raises :class:`OrderError` before the method
        that it depends on."""
        return _library.text("kvr_archive_get_document", self._handle, kind)

    def json(self, kind: ArchiveDocument) -> Any:
        """A document of the archive as values."""
        return json.loads(self.document(kind))

    def _finding(self, index: int) -> Finding:
        record = _library.filled("kvr_archive_get_finding", records.Finding, self._handle, index)
        return Finding(severity=Severity(record.severity), code=decoded(record.code), message=decoded(record.message),
                       hint=decoded(record.hint), path=decoded(record.path), line=record.line, column=record.column)

    def _change(self, index: int) -> Change:
        record = _library.filled("kvr_archive_get_change", records.Change, self._handle, index)
        return Change(change=ChangeKind(record.change), board_type=decoded(record.board_type),
                      element_id=record.element_id or None, target_path=known(record.target_path),
                      version_before=known(record.version_before), version_after=known(record.version_after),
                      content_changed=bool(record.content_changed), rules_changed=bool(record.rules_changed),
                      sequence_changed=bool(record.sequence_changed))
