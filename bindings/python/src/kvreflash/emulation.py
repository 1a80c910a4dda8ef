"""Emulated targets, served in this process, so that a program is tested without a rack. docs/emulation.md describes
their folders."""

from __future__ import annotations

import ctypes

from ._library import PathText, decoded, encoded, libraries
from .errors import EmulationError

_ADDRESS_SIZE = 16


def serve(folder: PathText) -> str:
    """Serves the emulated target in a folder from now on, beside those that are served already; returns its first
    IPv4 address. Updates write into the folder. Raises :class:`EmulationError` if it cannot be served.

    >>> import kvreflash
    >>> kvreflash.emulation.serve(rack)
    '127.0.0.1'
    """
    platform = _platform()
    address = ctypes.create_string_buffer(_ADDRESS_SIZE)
    if platform.kvr_emulation_serve(encoded(folder), address, _ADDRESS_SIZE) != 0:
        raise EmulationError(decoded(platform.kvr_emulation_last_error()))
    return decoded(address.value)


def reset() -> None:
    """Serves no target any more. Not while a session is open."""
    platform = _platform()
    if platform.kvr_emulation_reset() != 0:
        raise EmulationError(decoded(platform.kvr_emulation_last_error()))


def _platform() -> ctypes.CDLL:
    platform = libraries().platform
    if platform is None or not hasattr(platform, "kvr_emulation_serve"):
        raise EmulationError("the platform of this installation serves no emulated targets")
    return platform
