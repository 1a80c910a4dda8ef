"""Finds and loads the libraries, and calls them."""

from __future__ import annotations

import ctypes
import functools
import os
import sys
from ctypes import CFUNCTYPE, POINTER, c_char_p, c_int32, c_uint32, c_void_p
from pathlib import Path
from typing import Mapping, NamedTuple, Optional, Tuple, Type, TypeVar, Union

from . import _records as records
from .errors import ArgumentError, CallError, LibraryNotLoaded, OrderError, OutOfMemoryError, VersionError

# The version of the interface that this package is written for.
ABI_VERSION = 1

SUCCESS = 0
FAILED = 1

FOLDER_VARIABLE = "KVREFLASH_LIBRARY"
PACKAGE_FOLDER = Path(__file__).parent / "lib"

if sys.platform == "win32":
    PLATFORM_NAME, LIBRARY_NAME = "KvPlatform.dll", "KvReflashLib.dll"
else:
    PLATFORM_NAME, LIBRARY_NAME = "libKvPlatform.so.1", "libKvReflashLib.so.1"

EventFunction = CFUNCTYPE(None, c_void_p, c_void_p)

_HANDLE = records.HANDLE
_OUT_HANDLE = POINTER(_HANDLE)
_OUT_NUMBER = POINTER(c_uint32)
_OUT_TEXT = POINTER(c_char_p)

# The parameters of the functions. All of them return a result.
PARAMETERS = {
    "kvr_session_create": (POINTER(records.SessionOptions), _OUT_HANDLE),
    "kvr_session_free": (_HANDLE,),
    "kvr_session_set_event_function": (_HANDLE, EventFunction, c_void_p),
    "kvr_prepare": (_HANDLE,),
    "kvr_disable": (_HANDLE, c_char_p, _OUT_NUMBER),
    "kvr_preflight": (_HANDLE,),
    "kvr_run": (_HANDLE,),
    "kvr_request_stop": (_HANDLE, c_uint32),
    "kvr_verify": (_HANDLE, c_uint32),
    "kvr_reboot": (_HANDLE,),
    "kvr_session_get_plan": (_HANDLE, POINTER(records.Plan)),
    "kvr_session_get_node": (_HANDLE, c_uint32, _OUT_NUMBER),
    "kvr_session_get_element": (_HANDLE, c_uint32, POINTER(records.Element)),
    "kvr_session_get_reason": (_HANDLE, c_uint32, c_uint32, _OUT_NUMBER),
    "kvr_session_get_entry": (_HANDLE, c_uint32, POINTER(records.Entry)),
    "kvr_session_get_outcome": (_HANDLE, POINTER(records.Outcome)),
    "kvr_session_get_fault": (_HANDLE, c_uint32, _OUT_TEXT),
    "kvr_session_get_error": (_HANDLE, c_uint32, POINTER(records.Error)),
    "kvr_session_get_result": (_HANDLE, c_uint32, POINTER(records.ElementResult)),
    "kvr_session_get_element_error": (_HANDLE, c_uint32, c_uint32, POINTER(records.Error)),
    "kvr_session_get_verification": (_HANDLE, POINTER(records.Verification)),
    "kvr_session_get_verified": (_HANDLE, c_uint32, POINTER(records.VerifiedElement)),
    "kvr_session_get_look_error": (_HANDLE, c_uint32, POINTER(records.Error)),
    "kvr_session_get_document": (_HANDLE, c_uint32, _OUT_TEXT),
    "kvr_archive_create": (POINTER(records.ArchiveOptions), _OUT_HANDLE),
    "kvr_archive_free": (_HANDLE,),
    "kvr_archive_read": (_HANDLE,),
    "kvr_archive_get_info": (_HANDLE, POINTER(records.ArchiveInfo)),
    "kvr_archive_get_entry": (_HANDLE, c_uint32, POINTER(records.Entry)),
    "kvr_archive_check": (_HANDLE, _OUT_NUMBER),
    "kvr_archive_get_finding": (_HANDLE, c_uint32, POINTER(records.Finding)),
    "kvr_archive_compare": (_HANDLE, _HANDLE, _OUT_NUMBER),
    "kvr_archive_get_change": (_HANDLE, c_uint32, POINTER(records.Change)),
    "kvr_archive_get_document": (_HANDLE, c_uint32, _OUT_TEXT),
    "kvr_read_saved_plan": (c_char_p, POINTER(records.SavedPlan)),
    "kvr_runs_create": (c_char_p, _OUT_HANDLE, _OUT_NUMBER),
    "kvr_runs_free": (_HANDLE,),
    "kvr_runs_get": (_HANDLE, c_uint32, POINTER(records.RunInfo)),
    "kvr_runs_get_document": (_HANDLE, c_char_p, _OUT_TEXT),
}

# Functions that return something else: what they return, and their parameters.
OTHER_FUNCTIONS = {
    "kvr_abi_version": (c_uint32, ()),
    "kvr_version": (c_char_p, ()),
    "kvr_last_error": (c_char_p, ()),
    "kvr_code": (c_char_p, (c_uint32, c_uint32)),
    "kvr_exit_code": (c_uint32, (c_uint32,)),
}

EMULATION_FUNCTIONS = {
    "kvr_emulation_serve": (c_int32, (c_char_p, c_char_p, c_uint32)),
    "kvr_emulation_reset": (c_int32, ()),
    "kvr_emulation_last_error": (c_char_p, ()),
}

_ERRORS = {-1: ArgumentError, -2: OutOfMemoryError, -3: OrderError, -4: VersionError}

PathText = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
R = TypeVar("R", bound=records.Record)


class Libraries(NamedTuple):
    """The loaded libraries."""

    product: ctypes.CDLL
    platform: Optional[ctypes.CDLL]
    """None if the platform has another name."""


def _folder() -> Optional[Path]:
    """The folder of the libraries; None if the system's loader looks for them."""
    if (PACKAGE_FOLDER / LIBRARY_NAME).exists():
        return PACKAGE_FOLDER
    named = os.environ.get(FOLDER_VARIABLE)
    return Path(named).absolute() if named else None


def _load(folder: Optional[Path], name: str) -> ctypes.CDLL:
    return ctypes.CDLL(name if folder is None else str(folder / name))


def _load_platform(folder: Optional[Path]) -> Optional[ctypes.CDLL]:
    try:
        return _load(folder, PLATFORM_NAME)
    except OSError:
        return None


@functools.lru_cache(maxsize=None)
def libraries() -> Libraries:
    """Loads the libraries at the first call. Raises LibraryNotLoaded."""
    folder = _folder()
    # The product then finds the platform loaded, wherever they are.
    platform = _load_platform(folder)
    try:
        product = _load(folder, LIBRARY_NAME)
    except OSError as fault:
        place = f"in {folder}" if folder else f"by the system; {FOLDER_VARIABLE} can name its folder"
        raise LibraryNotLoaded(f"{LIBRARY_NAME} was not found {place}: {fault}") from fault
    _declare(product, OTHER_FUNCTIONS)
    found = product.kvr_abi_version()
    if found < ABI_VERSION:
        raise LibraryNotLoaded(f"{LIBRARY_NAME} has version {found} of the interface, and {ABI_VERSION} is needed")
    _declare(product, {name: (c_int32, parameters) for name, parameters in PARAMETERS.items()})
    if platform is not None and hasattr(platform, "kvr_emulation_serve"):
        _declare(platform, EMULATION_FUNCTIONS)
    return Libraries(product, platform)


def _declare(library: ctypes.CDLL, functions: Mapping[str, Tuple[object, Tuple[object, ...]]]) -> None:
    for name, (result, parameters) in functions.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = parameters


def call(name: str, *arguments: object) -> int:
    """Calls a function; returns its result, or raises CallError if the call itself has failed."""
    product = libraries().product
    result: int = getattr(product, name)(*arguments)
    if result < 0:
        raise _ERRORS.get(result, CallError)(decoded(product.kvr_last_error()) or f"{name} returned {result}")
    return result


def last_error() -> str:
    """Why the last call of this thread has failed; functions that return FAILED state whether it is known here."""
    return decoded(libraries().product.kvr_last_error())


def filled(name: str, kind: Type[R], *arguments: object) -> R:
    """The record that a function fills. Its texts last until the next call with the same handle."""
    record = kind()
    call(name, *arguments, ctypes.byref(record))
    return record


def number(name: str, *arguments: object) -> int:
    """The number that a function gives."""
    given = c_uint32()
    call(name, *arguments, ctypes.byref(given))
    return given.value


def answer(name: str, *arguments: object) -> Tuple[int, str]:
    """The result of a function, and the text that it gives."""
    given = c_char_p()
    result = call(name, *arguments, ctypes.byref(given))
    return result, decoded(given.value)


def text(name: str, *arguments: object) -> str:
    """The text that a function gives."""
    return answer(name, *arguments)[1]


def exit_code(failure: int) -> int:
    """The exit code of the console tool for a failure."""
    code: int = libraries().product.kvr_exit_code(failure)
    return code


def word(code: int, value: int) -> str:
    """The word that documents use for a value of an enumeration; empty if there is none."""
    return decoded(libraries().product.kvr_code(code, value))


def decoded(given: Optional[bytes]) -> str:
    """A text of the library."""
    return (given or b"").decode("utf-8", "replace")


def known(given: Optional[bytes]) -> Optional[str]:
    """A text of the library that is empty if it is not known."""
    return decoded(given) or None


def encoded(given: Optional[PathText]) -> bytes:
    """A text or path for the library; None is empty. Raises ArgumentError if it holds a zero."""
    plain = "" if given is None else os.fspath(given)
    data = plain if isinstance(plain, bytes) else plain.encode("utf-8", "surrogateescape")
    if b"\0" in data:
        raise ArgumentError("a text holds a zero character")
    return data


def version() -> str:
    """The version of the library, such as "1.2.3"."""
    return decoded(libraries().product.kvr_version())
