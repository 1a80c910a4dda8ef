"""The records of kvreflash.h, field by field."""

from __future__ import annotations

import ctypes
from ctypes import c_char_p, c_uint32, c_void_p
from typing import Type, TypeVar

from .errors import ArgumentError

HANDLE = c_void_p
MAXIMUM = 0xFFFFFFFF


class Record(ctypes.Structure):
    """A record, whose field `size` the constructor sets."""

    def __init__(self, **fields: object) -> None:
        for name, value in fields.items():
            if isinstance(value, int) and not 0 <= value <= MAXIMUM:  # ctypes would cut it
                raise ArgumentError(f"{name} must be from 0 to {MAXIMUM}")
        super().__init__(size=ctypes.sizeof(type(self)), **fields)


R = TypeVar("R", bound=Record)


class SessionOptions(Record):
    _fields_ = [
        ("size", c_uint32),
        ("mode", c_uint32),
        ("flags", c_uint32),
        ("unlisted_files", c_uint32),
        ("stall_limit", c_uint32),
        ("reserved", c_uint32),
        ("target", c_char_p),
        ("archive", c_char_p),
        ("description", c_char_p),
        ("board_types", c_char_p),
        ("serial_numbers", c_char_p),
        ("element_names", c_char_p),
        ("trust_folder", c_char_p),
        ("journal_folder", c_char_p),
        ("journal_place", c_char_p),
        ("saved_plan", c_char_p),
        ("resumed_run", c_char_p),
    ]


class Event(Record):
    _fields_ = [
        ("size", c_uint32),
        ("kind", c_uint32),
        ("value", c_uint32),
        ("succeeded", c_uint32),
        ("text", c_char_p),
    ]


class Plan(Record):
    _fields_ = [
        ("size", c_uint32),
        ("elements", c_uint32),
        ("changes", c_uint32),
        ("phases", c_uint32),
        ("entries", c_uint32),
        ("supported", c_uint32),
        ("nodes", c_uint32),
        ("reserved", c_uint32),
        ("target_address", c_char_p),
        ("archive_name", c_char_p),
        ("archive_version", c_char_p),
        ("product_name", c_char_p),
        ("archive_variant", c_char_p),
    ]


class Element(Record):
    _fields_ = [
        ("size", c_uint32),
        ("index", c_uint32),
        ("known", c_uint32),
        ("updated", c_uint32),
        ("disabled", c_uint32),
        ("up_to_date", c_uint32),
        ("downgrade", c_uint32),
        ("custom", c_uint32),
        ("phase", c_uint32),
        ("entry", c_uint32),
        ("element_id", c_uint32),
        ("serial_number", c_uint32),
        ("slot", c_uint32),
        ("slot_count", c_uint32),
        ("checksum", c_uint32),
        ("valid", c_uint32),
        ("active", c_uint32),
        ("reasons", c_uint32),
        ("display_name", c_char_p),
        ("type_name", c_char_p),
        ("name", c_char_p),
        ("address", c_char_p),
        ("target_path", c_char_p),
        ("board_type", c_char_p),
        ("board_variant", c_char_p),
        ("board_name", c_char_p),
        ("unit_path", c_char_p),
        ("version", c_char_p),
        ("available_version", c_char_p),
        ("available_checksum", c_uint32),
        ("board_id", c_uint32),
    ]


class Entry(Record):
    _fields_ = [
        ("size", c_uint32),
        ("index", c_uint32),
        ("description_index", c_uint32),
        ("known", c_uint32),
        ("checksum", c_uint32),
        ("sequence", c_uint32),
        ("upgrade_only", c_uint32),
        ("reserved", c_uint32),
        ("file_name", c_char_p),
        ("version", c_char_p),
    ]


class Outcome(Record):
    _fields_ = [
        ("size", c_uint32),
        ("stage", c_uint32),
        ("failure", c_uint32),
        ("retryable", c_uint32),
        ("exit_code", c_uint32),
        ("errors", c_uint32),
        ("faults", c_uint32),
        ("reserved", c_uint32),
        ("message", c_char_p),
        ("run", c_char_p),
    ]


class Error(Record):
    _fields_ = [
        ("size", c_uint32),
        ("code", c_uint32),
        ("origin_node", c_uint32),
        ("line", c_uint32),
        ("text", c_char_p),
        ("function", c_char_p),
    ]


class ElementResult(Record):
    _fields_ = [
        ("size", c_uint32),
        ("result", c_uint32),
        ("failed_call", c_uint32),
        ("known", c_uint32),
        ("state", c_uint32),
        ("file_changed", c_uint32),
        ("errors", c_uint32),
        ("reserved", c_uint32),
        ("reason", c_char_p),
    ]


class Verification(Record):
    _fields_ = [
        ("size", c_uint32),
        ("failure", c_uint32),
        ("elements", c_uint32),
        ("errors", c_uint32),
        ("message", c_char_p),
    ]


class VerifiedElement(Record):
    _fields_ = [
        ("size", c_uint32),
        ("element", c_uint32),
        ("result", c_uint32),
        ("known", c_uint32),
        ("checksum", c_uint32),
        ("valid", c_uint32),
        ("active", c_uint32),
        ("file_changed", c_uint32),
        ("version", c_char_p),
    ]


class ArchiveOptions(Record):
    _fields_ = [
        ("size", c_uint32),
        ("flags", c_uint32),
        ("archive", c_char_p),
        ("description", c_char_p),
        ("trust_folder", c_char_p),
    ]


class ArchiveInfo(Record):
    _fields_ = [
        ("size", c_uint32),
        ("entries", c_uint32),
        ("failure", c_uint32),
        ("seal", c_uint32),
        ("message", c_char_p),
        ("archive_name", c_char_p),
        ("archive_version", c_char_p),
        ("product_name", c_char_p),
        ("format_version", c_char_p),
        ("archive_variant", c_char_p),
        ("manifest_digest", c_char_p),
        ("created", c_char_p),
        ("signer", c_char_p),
        ("key_fingerprint", c_char_p),
    ]


class Finding(Record):
    _fields_ = [
        ("size", c_uint32),
        ("severity", c_uint32),
        ("line", c_uint32),
        ("column", c_uint32),
        ("code", c_char_p),
        ("path", c_char_p),
        ("message", c_char_p),
        ("hint", c_char_p),
    ]


class Change(Record):
    _fields_ = [
        ("size", c_uint32),
        ("change", c_uint32),
        ("element_id", c_uint32),
        ("content_changed", c_uint32),
        ("rules_changed", c_uint32),
        ("sequence_changed", c_uint32),
        ("board_type", c_char_p),
        ("target_path", c_char_p),
        ("version_before", c_char_p),
        ("version_after", c_char_p),
    ]


class SavedPlan(Record):
    _fields_ = [
        ("size", c_uint32),
        ("changes", c_uint32),
        ("id", c_char_p),
        ("time", c_char_p),
        ("target", c_char_p),
        ("target_address", c_char_p),
        ("archive", c_char_p),
        ("tool_version", c_char_p),
    ]


class RunInfo(Record):
    _fields_ = [
        ("size", c_uint32),
        ("state", c_uint32),
        ("failure", c_uint32),
        ("exit_code", c_uint32),
        ("resumable", c_uint32),
        ("reserved", c_uint32),
        ("id", c_char_p),
        ("command", c_char_p),
        ("begin", c_char_p),
        ("end", c_char_p),
        ("target", c_char_p),
        ("target_address", c_char_p),
        ("archive", c_char_p),
        ("user", c_char_p),
        ("computer", c_char_p),
        ("message", c_char_p),
        ("plan", c_char_p),
        ("fault", c_char_p),
    ]


# Bits of `known`.
KNOWS_VERSION = 1
KNOWS_CHECKSUM = 2
KNOWS_VALID = 4
KNOWS_ACTIVE = 8
KNOWS_ENTRY = 16
KNOWS_PHASE = 32
KNOWS_STATE = 64


def record_at(kind: Type[R], address: int) -> R:
    """A copy of the record at an address: of the fields that both sides know."""
    size = c_uint32.from_address(address).value
    record = kind()
    ctypes.memmove(ctypes.addressof(record), address, min(size, ctypes.sizeof(kind)))
    return record
