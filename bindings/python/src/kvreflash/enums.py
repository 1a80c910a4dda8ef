"""Enumerations of the library.

Later versions of the library may add values. A value that is not known here becomes a member whose name begins with
``UNKNOWN_``; take it for "something else".

>>> from kvreflash import Failure
>>> Failure(0)
<Failure.ARCHIVE: 0>
>>> Failure.ARCHIVE.word
'archive'
>>> Failure(99).name
'UNKNOWN_99'
"""

from __future__ import annotations

import enum
from typing import Optional

from . import _library


class OpenEnum(enum.IntEnum):
    """An enumeration that may get values."""

    @classmethod
    def _missing_(cls, value: object) -> Optional[OpenEnum]:
        if not isinstance(value, int):
            return None
        member = int.__new__(cls, value)
        member._name_ = f"UNKNOWN_{value}"
        member._value_ = value
        return member

    @property
    def word(self) -> str:
        """The word that documents use for the value; empty if there is none."""
        code = _CODES.get(type(self).__name__)
        return "" if code is None else _library.word(code, self)


class Mode(OpenEnum):
    """What a session does."""

    ELEMENTS = 4
    """Scans the target."""
    CONNECT = 5
    """Scans the target, before a reboot."""
    PLAN = 6
    """Reads the archive, scans the target and plans."""
    UPDATE = 7
    """Plans and updates."""


class UnlistedFiles(OpenEnum):
    """Which files that the inventory does not list are written."""

    ALWAYS = 0
    CHANGED = 1
    """Those whose content is not the one that the journal has for this place."""
    NEVER = 2


class StopRequest(OpenEnum):
    """How a running update is asked to end."""

    FINISH = 0
    """Nothing new begins; what has begun is awaited."""
    GIVE_UP = 1
    """What has begun is not awaited either."""


class Failure(OpenEnum):
    """Classes of failures; the first one counts if several apply."""

    ARCHIVE = 0
    """The archive was refused."""
    TARGET = 1
    """The target was not reached, or cannot be scanned."""
    STALE = 2
    """A saved plan, or a run that is to go on, does not hold any more."""
    UNSUPPORTED = 3
    """The archive does not support the target."""
    SELECTION = 4
    """A filter lets no element through, or a named element does not exist."""
    LOCKED = 5
    """The target could not be locked, or its run is under way."""
    STOPPED = 6
    """Ended on request."""
    ELEMENTS = 7
    """An element or file failed."""
    ERRORS = 8
    """Errors were reported."""
    REBOOT = 9
    """The target was not rebooted."""
    VERIFICATION = 10
    """The target does not report what it should."""
    OUTPUT = 11
    """Something could not be written."""
    NONE = 12
    """Nothing failed."""


class EventKind(OpenEnum):
    """Kinds of events. The comments say what :attr:`Event.value` is."""

    PHASE = 0
    """Number of the phase that begins; :data:`NO_PHASE` after the last one."""
    PROGRESS = 1
    """Percentage of the running phase."""
    ELEMENT_ERROR = 2
    """Index of the element whose update has failed."""
    LOCKED = 3
    UNLOCKED = 4
    """``succeeded``: whether the lock was given back."""
    TRANSFER = 5
    """Index of the entry; ``succeeded``: whether the target has its file."""
    ELEMENT_START = 6
    """Index of the element."""
    ELEMENT_END = 7
    """Index of the element; ``succeeded``: whether its update has."""
    STALLED = 8
    """Seconds without news."""
    MESSAGE = 100
    """Goes to ``on_message`` and never to ``on_event``."""


class Reason(OpenEnum):
    """Reasons for an update, up to FORCED and CONTENT_DIFFERS, and against it."""

    VERSION_DIFFERS = 0
    CHECKSUM_DIFFERS = 1
    INVALID = 2
    """The installed image is not valid."""
    INACTIVE = 3
    """The installed image is not active."""
    FORCED = 4
    """It is up to date, and ``force`` is given."""
    UP_TO_DATE = 5
    NEWER_INSTALLED = 6
    """The entry is for upgrades only."""
    NO_ENTRY = 7
    FEATURE_LEVEL = 8
    """Only an entry matches that this library must ignore."""
    CUSTOM_LEFT_OUT = 9
    DISABLED = 10
    CARRIER_BOARD_MISSING = 11
    DOWNGRADE_LEFT_OUT = 12
    CONTENT_DIFFERS = 13
    """Of a file: the journal does not have this content."""
    UNLISTED_LEFT_OUT = 14
    """A file that the inventory does not list."""
    WRITTEN_BEFORE = 15
    """Of a file: the journal has this content."""
    DONE_BEFORE = 16
    """The run that goes on has installed it."""
    IN_DOUBT = 17
    """It was in progress when that run broke off; ``redo`` updates it again."""


class Stage(OpenEnum):
    """How far a session came. Each value includes those before it."""

    CREATED = 0
    ARCHIVE_READ = 1
    TARGET_FOUND = 2
    TARGET_SCANNED = 3
    PREPARED = 4
    LOCKED = 5
    PHASES_RUN = 6
    ENDED = 7
    REBOOTED = 8


class Result(OpenEnum):
    """Results of elements."""

    NOT_PLANNED = 0
    NOT_STARTED = 1
    FILE_MISSING = 2
    """Its update file was missing when its phase began."""
    CANCELLED = 3
    """An earlier update on the same board has failed."""
    FAILED = 4
    UPDATED = 5
    IN_PROGRESS = 6
    """The session ended while it was under way."""


class FailedCall(OpenEnum):
    """Calls of the device access libraries that make an element fail."""

    NONE = 0
    TRANSFER_FILE = 1
    UPDATE2 = 2
    UPDATE_STATUS2 = 3
    UPDATE_ERRORS2 = 4
    WRITE_FILE = 5


class Verified(OpenEnum):
    """Judgements on elements."""

    NOT_LISTED = 0
    """A file that the inventory does not list."""
    GONE = 1
    """The target does not list it any more."""
    AS_EXPECTED = 2
    NOT_JUDGED = 3
    """Neither version nor checksum can be compared."""
    UNCHANGED = 4
    """It reports what it reported before; it may change at a reboot."""
    DIFFERS = 5


class Severity(OpenEnum):
    """How much a finding weighs."""

    ERROR = 0
    """The archive is refused for it."""
    WARNING = 1


class Seal(OpenEnum):
    """How far the content of an archive is vouched for."""

    NONE = 0
    """It has no manifest."""
    SEALED = 1
    """It is what its manifest says; nobody has signed that."""
    SIGNED_BY_STRANGER = 2
    """By a key that is not trusted here."""
    TRUSTED = 3
    """By somebody who is trusted."""


class ChangeKind(OpenEnum):
    """Changes from an older archive."""

    SAME = 0
    ADDED = 1
    """Only the new archive has an entry."""
    REMOVED = 2
    """Only the old archive has an entry."""
    UP = 3
    DOWN = 4
    CHANGED = 5
    """The versions are equal or not known, and something else differs."""


class RunState(OpenEnum):
    """States of runs."""

    RUNNING = 0
    COMPLETE = 1
    """It has come to its end, whatever came of it."""
    STOPPED = 2
    """It was ended on request."""
    BROKEN_OFF = 3
    """Its process has ended in the middle."""


class Document(OpenEnum):
    """Documents of a session: JSON as the console tool writes it."""

    PLAN = 0
    UPDATE = 1
    VERIFY = 2
    REBOOT = 3
    ELEMENTS = 4
    EXPLAIN = 5
    """All elements, each with the entries that were tried."""
    SAVED_PLAN = 6
    """For ``Session(saved_plan=...)``."""


class ArchiveDocument(OpenEnum):
    """Documents of an archive."""

    CONTENT = 0
    """After :meth:`Archive.content`."""
    CHECK = 1
    """After :meth:`Archive.check`."""
    COMPARE = 2
    """After :meth:`Archive.compare`."""


class SessionFlag(enum.IntFlag):
    """Bits of the session's options, named after its keyword arguments."""

    FORCE = 1
    VERBOSE = 2
    CONFIGURATION = 4
    SKIP_CUSTOM = 8
    NO_DOWNGRADE = 16
    WATCH_FILES = 32
    RELEASE = 64
    ACCEPT_UNSEALED = 128
    JOURNAL_REQUIRED = 256
    REDO = 512


class Code(enum.IntEnum):
    """Enumerations of the library that have words."""

    FAILURE = 0
    STAGE = 1
    REASON = 2
    RESULT = 3
    VERIFIED = 4
    FAILED_CALL = 5
    SEVERITY = 6
    SEAL = 7
    CHANGE = 8
    RUN_STATE = 9


_CODES = {
    "Failure": Code.FAILURE,
    "Stage": Code.STAGE,
    "Reason": Code.REASON,
    "Result": Code.RESULT,
    "Verified": Code.VERIFIED,
    "FailedCall": Code.FAILED_CALL,
    "Severity": Code.SEVERITY,
    "Seal": Code.SEAL,
    "ChangeKind": Code.CHANGE,
    "RunState": Code.RUN_STATE,
}
