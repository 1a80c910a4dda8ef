"""What a session has found on the target and would do to it, and saved plans."""

from __future__ import annotations

from ctypes import byref, c_void_p
from dataclasses import dataclass
from typing import Optional, Tuple

from . import _library
from . import _records as records
from ._library import decoded, known
from .enums import Reason
from .failures import PlanStale


@dataclass(frozen=True)
class Entry:
    """An entry of an archive."""

    index: int
    """Among the accepted entries."""
    description_index: int
    """In "files" of the description."""
    file_name: str
    """Relative to the archive."""
    version: Optional[str]
    """None: it states none."""
    checksum: Optional[int]
    """CRC-32 of the contents; None: it states none."""
    sequence: int
    """Lower ones are installed in an earlier phase."""
    upgrade_only: bool
    """Only greater versions are installed."""


@dataclass(frozen=True)
class Element:
    """An element of the target, and what an update does to it. None stands for what is not known."""

    index: int
    """The "No." of the plan."""
    display_name: str
    """In tables and results."""
    type_name: str
    """Kind of element, such as "Firmware"."""
    name: str
    """In the inventory, such as "UserFirmware"."""
    address: Optional[str]
    """In the inventory; None for a file that it does not list."""
    target_path: Optional[str]
    """Of a file, below the root of the target's file system."""
    element_id: Optional[int]
    """The number by which entries name it; None for a file."""
    board_type: str
    board_variant: str
    board_name: str
    board_id: int
    serial_number: int
    """Of the board."""
    slot: Optional[int]
    """Of the board; None: it has no slot."""
    slot_count: int
    unit_path: str
    custom: bool
    version: Optional[str]
    """Of what is installed."""
    checksum: Optional[int]
    """CRC-32 of what is installed."""
    valid: Optional[bool]
    """What is installed is complete."""
    active: Optional[bool]
    """The board runs what is installed."""
    entry: Optional[int]
    """Index of the entry that matches it."""
    available_version: Optional[str]
    """Of the entry."""
    available_checksum: Optional[int]
    """CRC-32 of the entry."""
    phase: Optional[int]
    """In which it is updated, from 0."""
    updated: bool
    """It takes part in the update."""
    disabled: bool
    """It takes no part: it was left out, or is up to date."""
    up_to_date: bool
    """The archive has nothing else for it."""
    downgrade: bool
    """The archive has a lower version than is installed."""
    reasons: Tuple[Reason, ...]
    """Reasons for or against the update."""


@dataclass(frozen=True)
class Plan:
    """The plan of a session."""

    target_address: str
    """IPv4, in dotted form."""
    nodes: Tuple[int, ...]
    """Serial numbers of the processor nodes."""
    supported: bool
    """The archive supports the target."""
    archive_name: Optional[str]
    """This and the following: None without an archive, or if it does not state them."""
    archive_version: Optional[str]
    product_name: Optional[str]
    archive_variant: Optional[str]
    phases: int
    """Number of the phases of the update."""
    elements: Tuple[Element, ...]
    entries: Tuple[Entry, ...]
    """Accepted entries of the archive."""

    @property
    def changes(self) -> Tuple[Element, ...]:
        """The elements that an update changes."""
        return tuple(element for element in self.elements if element.updated)


@dataclass(frozen=True)
class SavedPlan:
    """A saved plan, in short."""

    id: str
    time: str
    """When it was planned, RFC 3339."""
    target: str
    """As it was given."""
    target_address: str
    archive: str
    """Where the archive was."""
    tool_version: str
    changes: int
    """Number of elements and files that it changes."""


def read_saved_plan(content: str) -> SavedPlan:
    """Reads the text of :attr:`Document.SAVED_PLAN`. Raises :class:`PlanStale` if it is none or was changed.

    >>> import kvreflash
    >>> address = kvreflash.emulation.serve(rack)
    >>> with kvreflash.Session(archive=archive, target=address) as session:
    ...     plan = session.prepare()
    ...     text = session.document(kvreflash.Document.SAVED_PLAN)
    >>> kvreflash.read_saved_plan(text).target
    '127.0.0.1'
    >>> with kvreflash.Session(saved_plan=text) as session:
    ...     plan = session.prepare()
    """
    record = records.SavedPlan()
    if _library.call("kvr_read_saved_plan", _library.encoded(content), byref(record)) != _library.SUCCESS:
        raise PlanStale(_library.last_error())
    return SavedPlan(id=decoded(record.id), time=decoded(record.time), target=decoded(record.target),
                     target_address=decoded(record.target_address), archive=decoded(record.archive),
                     tool_version=decoded(record.tool_version), changes=record.changes)


def plan_of(session: Optional[c_void_p]) -> Plan:
    """The plan of a session as it stands."""
    record = _library.filled("kvr_session_get_plan", records.Plan, session)
    entries = tuple(entry_of("kvr_session_get_entry", session, index) for index in range(record.entries))
    return Plan(
        target_address=decoded(record.target_address),
        nodes=tuple(_library.number("kvr_session_get_node", session, index) for index in range(record.nodes)),
        supported=bool(record.supported),
        archive_name=known(record.archive_name),
        archive_version=known(record.archive_version),
        product_name=known(record.product_name),
        archive_variant=known(record.archive_variant),
        phases=record.phases,
        elements=tuple(_element_of(session, index, entries) for index in range(record.elements)),
        entries=entries)


def entry_of(function: str, handle: Optional[c_void_p], index: int) -> Entry:
    """An entry that a function of a session or an archive fills."""
    record = _library.filled(function, records.Entry, handle, index)
    return Entry(index=record.index, description_index=record.description_index, file_name=decoded(record.file_name),
                 version=known(record.version),
                 checksum=record.checksum if record.known & records.KNOWS_CHECKSUM else None,
                 sequence=record.sequence, upgrade_only=bool(record.upgrade_only))


def _reasons_of(session: Optional[c_void_p], element: int, count: int) -> Tuple[Reason, ...]:
    return tuple(Reason(_library.number("kvr_session_get_reason", session, element, index))
                 for index in range(count))


def _element_of(session: Optional[c_void_p], index: int, entries: Tuple[Entry, ...]) -> Element:
    record = _library.filled("kvr_session_get_element", records.Element, session, index)
    bits = record.known
    entry = record.entry if bits & records.KNOWS_ENTRY else None
    return Element(
        index=record.index,
        display_name=decoded(record.display_name),
        type_name=decoded(record.type_name),
        name=decoded(record.name),
        address=known(record.address),
        target_path=known(record.target_path),
        element_id=record.element_id or None,
        board_type=decoded(record.board_type),
        board_variant=decoded(record.board_variant),
        board_name=decoded(record.board_name),
        board_id=record.board_id,
        serial_number=record.serial_number,
        slot=record.slot if record.slot_count else None,
        slot_count=record.slot_count,
        unit_path=decoded(record.unit_path),
        custom=bool(record.custom),
        version=known(record.version),
        checksum=record.checksum if bits & records.KNOWS_CHECKSUM else None,
        valid=bool(record.valid) if bits & records.KNOWS_VALID else None,
        active=bool(record.active) if bits & records.KNOWS_ACTIVE else None,
        entry=entry,
        available_version=known(record.available_version),
        available_checksum=entries[entry].checksum if entry is not None and entry < len(entries) else None,
        phase=record.phase if bits & records.KNOWS_PHASE else None,
        updated=bool(record.updated),
        disabled=bool(record.disabled),
        up_to_date=bool(record.up_to_date),
        downgrade=bool(record.downgrade),
        reasons=_reasons_of(session, index, record.reasons))
