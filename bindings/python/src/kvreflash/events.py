"""What happens while a session is at work."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional

from .enums import EventKind
from .plans import Element, Entry

NO_PHASE = 0xFFFFFFFF
"""The value of :attr:`EventKind.PHASE` after the last phase."""

ELEMENT_KINDS = (EventKind.ELEMENT_ERROR, EventKind.ELEMENT_START, EventKind.ELEMENT_END)


@dataclass(frozen=True)
class Event:
    """Something that happens while a session is at work."""

    kind: EventKind
    value: int
    """:class:`EventKind` says what it is."""
    succeeded: bool
    """False if what has ended has failed, otherwise True."""
    element: Optional[Element] = None
    """The element of the plan that it concerns."""
    entry: Optional[Entry] = None
    """The entry of the archive that it concerns."""
