"""Exceptions of calls that fail whatever the archive and the target are, and the base of all exceptions."""

from __future__ import annotations


class KvReflashError(Exception):
    """The base of all exceptions of this package."""

    def __init__(self, message: str) -> None:
        super().__init__(message)
        self.message = message
        """What went wrong, in one line."""


class LibraryNotLoaded(KvReflashError):
    """The library was not found, or is too old for this package."""


class EmulationError(KvReflashError):
    """An emulated target is not served."""


class CallError(KvReflashError):
    """A call that fails whatever the archive and the target are."""


class ArgumentError(CallError, ValueError):
    """An argument is wrong, or the object was closed."""


class OutOfMemoryError(CallError, MemoryError):
    """The library has no memory left."""


class OrderError(CallError):
    """The method must not be called now."""


class VersionError(CallError):
    """Library and package do not fit together."""
