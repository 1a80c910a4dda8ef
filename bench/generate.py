#!/usr/bin/env python3
"""Makes firmware archives and emulated racks of any size.

usage: generate.py archive OUT --entries N [--seed S] [--without-checksums] [--files]
       generate.py release OUT --entries N --file-size BYTES --tool KVREFLASH [--seed S]
       generate.py rack OUT --elements M --entries N [--seed S] [--current SHARE] [--unknown SHARE] [--polls P]

The same arguments make the same bytes, but for the signature of a release. A rack fits the archive of the same seed and
number of entries: its elements are those that the entries are meant for, spread evenly over them (several boards of a
kind when there are more elements than entries). The share `--current` has installed what the archive offers, the share
`--unknown` is of no entry, all others are out of date. `--polls` is how often an update of an element is asked for
before it has ended (default: once).

`--files` writes the update files too: firmware images, whose checksums are those of the description, and `files.txt`, a
list of their paths. `--without-checksums` leaves all checksums out of the description, so that they have to be read
from the files.

A release is an archive with update files of that size, sealed and signed with a key that nobody keeps: the folder
`archive`, the package `release.kva`, and the folder `trust`, by which it is accepted.
"""

import argparse
import json
import os
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "examples"))
import make_archive  # noqa: E402

ENTRIES_OF_BOARD = 8  # that share a board type
BOARDS_OF_ROUTER = 50
PAYLOAD_SIZE = 660  # with its header a file is a little longer than the 1000 bytes that are read of it
UNKNOWN_ID = 99  # an identifier that no entry has
TARGET_PATH_ID = 40  # identifiers of file-system elements begin here
KINDS = ("firmware", "bootloader", "fpga", "cpld", "hypervisor", "tables", "settings", "recovery")
COMMENTS = (
    "Boot loaders are never downgraded.",
    "For racks of the second series; the first one takes the file of the spring release.",
    "This one needs the boot loader of the same release.",
    "Carries the correction of the watchdog's time base.",
)
SEQUENCES = (10, 20, 30, 40, 50)
TIME_OF_SEALING = "1790000000"


class Board:
    """What the entries of a board type have in common, and the values of the board in the rack."""

    def __init__(self, seed, number):
        choose = random.Random(f"{seed}:board:{number}")
        self.number = number
        self.type = f"QB{4000 + number}"
        self.variants = choose.choice([None, ["A", "B", None], ["C", "D"], "B"])
        self.ids = choose.choice([None, [6, 7], 7, [2, 5, 7, 9]])
        self.listed = choose.choice(["single", "single", "single", "array", "boards"])

    @property
    def variant(self):
        """Of the board in the rack: the last one allowed that is one."""
        variants = self.variants if isinstance(self.variants, list) else [self.variants]
        return [variant for variant in [None, *variants] if variant is not None or variants == [None]][-1]

    def selection(self, address):
        """The members of an entry that tell which boards it is for, and the address there."""
        members = {}
        if self.listed == "boards":
            # The variant of the series that comes next has another address.
            other = {"targetPath": address["targetPath"]} if "targetPath" in address else {"id": address["id"] + 10}
            members["boards"] = [{"boardType": self.type, **address}, {"boardType": self.type + "N", **other}]
        else:
            members["boardType"] = [self.type, self.type + "L"] if self.listed == "array" else self.type
        if self.variants is not None:
            members["boardVariant"] = self.variants
        if self.ids is not None:
            members["boardId"] = self.ids
        return members if self.listed == "boards" else {**members, **address}

    def parameters(self, serial_number):
        parameters = {"PRODUCT/BOARD_TYPE": self.type, "PRODUCT/SERIAL_NUMBER": serial_number,
                      "PRODUCT/SLOT_COUNT": 1, "SLOT": serial_number % 20 + 1}
        if self.variant is not None:
            parameters["PRODUCT/VARIANT"] = self.variant
        if self.ids is not None:
            parameters["PRODUCT/ID"] = 7
        return parameters


class Entry:
    """A file entry of the archive, and the element that it is meant for."""

    def __init__(self, seed, index):
        choose = random.Random(f"{seed}:entry:{index}")
        self.board = Board(seed, index // ENTRIES_OF_BOARD)
        self.kind = KINDS[index % ENTRIES_OF_BOARD]
        self.number = index % ENTRIES_OF_BOARD + 1
        self.name = f"{self.board.type.lower()}-{self.kind}-{choose.randrange(16 ** 6):06x}.kfw"
        self.version = f"{choose.randrange(2, 24)}.{choose.randrange(10)}.{choose.randrange(1, 10)}"
        self.hardware = choose.choice([None, 3, [2, 3], [1, 2, 3, 4]])
        self.is_file = self.kind == "settings" and choose.random() < 0.8
        self.upgrade = not self.is_file and choose.random() < 0.15
        self.sequence = choose.choice(SEQUENCES)
        self.comment = choose.choice((None, *COMMENTS))

    @property
    def target_path(self):
        return f"config/{self.board.type.lower()}/{self.kind}.cfg"

    def recipe(self):
        return {"name": self.name, "kind": "image", "version": self.version, "size": PAYLOAD_SIZE}

    def checksum(self):
        return make_archive.crc32(make_archive.payload(self.recipe()))

    def description(self, with_checksum):
        address = {"targetPath": self.target_path} if self.is_file else {"id": self.number}
        entry = {} if self.comment is None else {"comment": self.comment}
        entry.update(name=self.name, sequence=self.sequence, **self.board.selection(address))
        if self.hardware is not None:
            entry["hwCompatibilityId"] = self.hardware
        entry["version"] = None if self.is_file else self.version
        if with_checksum:
            entry["checksumCrc32"] = self.checksum()
        if self.upgrade:
            entry["mode"] = "upgrade"
        return entry

    def element(self, state, polls):
        """The item of a rack: "current", "old" (out of date) or "unknown" (of no entry)."""
        current = state == "current"
        parameters = {
            "ID": self.number + (TARGET_PATH_ID if self.is_file else 0), "NAME": self.kind.capitalize(),
            "VERSION": self.version if current else "1.9", "VERSION_HISTORY": "1.9, 1.8", "CONFIGURATION": 0,
            "VALID": 1, "ACTIVE": 1, "CHECKSUM_CRC32": self.checksum() if current else 1}
        if self.hardware is not None:
            parameters["HW_COMPATIBILITY_ID"] = 3
        if self.is_file:
            parameters["LOCATION"] = self.target_path
        if state == "unknown":
            parameters["ID"] = UNKNOWN_ID + self.number
            parameters.pop("LOCATION", None)
        is_file = self.is_file and state != "unknown"
        item = {"id": "FILESYSTEM_ELEMENT" if is_file else "UPDATE_ELEMENT", "parameters": parameters}
        return item if is_file else {**item, "update": {"polls": polls}}


# --- archives ---------------------------------------------------------------------------------------------------------

def make_archive_description(seed, entries, with_checksums=True):
    """The description's text."""
    info = {"formatVersion": "1.0", "archiveVersion": "23.2.1", "productName": "Korvel QB line",
            "archiveVariant": "press", "archiveName": f"QB line firmware, {entries} files"}
    files = [Entry(seed, index).description(with_checksums) for index in range(entries)]
    text = json.dumps({"info": info, "files": files}, indent=4) + "\n"
    # Arrays of numbers and words stand on one line, as people write them.
    return re.sub(r"\[\s+([^\[\]{}]+?)\s+\]", lambda array: f"[{' '.join(array.group(1).split())}]", text)


def write_archive(out, seed, entries, with_checksums=True, files=False):
    out.mkdir(parents=True, exist_ok=True)
    (out / "archive.json").write_text(make_archive_description(seed, entries, with_checksums), encoding="utf-8")
    if not files:
        return
    paths = []
    for index in range(entries):
        recipe = Entry(seed, index).recipe()
        path = out / recipe["name"]
        path.write_bytes(make_archive.make_image(recipe))
        paths.append(str(path.resolve()))
    (out / "files.txt").write_text("".join(path + "\n" for path in paths), encoding="utf-8")


# --- releases ---------------------------------------------------------------------------------------------------------

def lengthen(path, size):
    """Repeats what the file holds until it has this size."""
    content = path.read_bytes()
    with path.open("ab") as file:
        for begin in range(len(content), size, len(content)):
            file.write(content[:size - begin])


def sign(archive, trust):
    """Signs the manifest with a new key, which the trust folder lists from then on and nobody has any more."""
    with tempfile.TemporaryDirectory() as folder:
        key = Path(folder) / "key"
        subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-C", "", "-f", key], check=True)
        subprocess.run(["ssh-keygen", "-q", "-Y", "sign", "-n", "kvreflash-archive", "-f", key,
                        archive / "manifest.json"], check=True)
        trust.mkdir()
        (trust / "allowed_signers").write_text(f"bench {key.with_suffix('.pub').read_text(encoding='utf-8')}",
                                               encoding="utf-8")


def write_release(out, seed, entries, file_size, tool):
    archive = out / "archive"
    write_archive(archive, seed, entries, files=True)
    (archive / "files.txt").unlink()
    for path in archive.glob("*.kfw"):
        lengthen(path, file_size)
    environment = {**os.environ, "SOURCE_DATE_EPOCH": TIME_OF_SEALING}
    subprocess.run([tool, "seal", archive], env=environment, stdout=subprocess.DEVNULL, check=True)
    sign(archive, out / "trust")
    subprocess.run([tool, "pack", archive, out / "release.kva"], stdout=subprocess.DEVNULL, check=True)


# --- racks ------------------------------------------------------------------------------------------------------------

def states(seed, count, current, unknown):
    """What becomes of each element: exact shares in random order."""
    currents, unknowns = round(count * current), round(count * unknown)
    result = ["current"] * currents + ["unknown"] * unknowns + ["old"] * (count - currents - unknowns)
    random.Random(f"{seed}:states").shuffle(result)
    return result


def chosen_entries(elements, entries):
    """The index of each element's entry: all of them in their order, again when there are more elements; or some."""
    if elements >= entries:
        return [index % entries for index in range(elements)]
    return [index * entries // elements for index in range(elements)]


def boards(seed, elements, entries, current, unknown, polls):
    """The items of the boards with their elements, one board for each run of elements of one type."""
    result, last = [], None
    for index, state in zip(chosen_entries(elements, entries), states(seed, elements, current, unknown)):
        entry = Entry(seed, index)
        # A board has an element once.
        if last is None or entry.board.number != last.board.number or entry.number <= last.number:
            result.append({"id": "IOMODULE", "parameters": entry.board.parameters(20000 + len(result)),
                           "items": [{"id": "UPDATE_INFO", "items": []}]})
        result[-1]["items"][0]["items"].append(entry.element(state, polls))
        last = entry
    return result


def make_rack(seed, elements, entries, current=0.4, unknown=0.1, polls=1):
    """The text of target.json: I/O routers with boards, below a node that has no elements."""
    modules = boards(seed, elements, entries, current, unknown, polls)
    routers = []
    for begin in range(0, len(modules), BOARDS_OF_ROUTER):
        number = len(routers) + 1
        routers.append({"id": "IOROUTER", "items": modules[begin:begin + BOARDS_OF_ROUTER], "parameters": {
            "PRODUCT/BOARD_TYPE": "QB8100", "PRODUCT/SERIAL_NUMBER": 10000 + number, "PRODUCT/SLOT_COUNT": 0,
            "PRODUCT/UNITNAME": f"Unit {number}", "UNITNAME": f"Unit {number}", "RACKNAME": "Hall 2"}})
    node = {"id": "HCN", "items": [{"id": "NETWORK", "items": routers}], "parameters": {
        "PRODUCT/BOARD_TYPE": "QB4120", "PRODUCT/SERIAL_NUMBER": 2815, "PRODUCT/SLOT_COUNT": 0}}
    return json.dumps({"addresses": ["127.0.0.1"], "inventory": {"id": "ROOT", "items": [node]}}, indent=1) + "\n"


# --- the command ------------------------------------------------------------------------------------------------------

def read_arguments(arguments):
    parser = argparse.ArgumentParser(description="Makes firmware archives and emulated racks of any size.")
    commands = parser.add_subparsers(dest="command", required=True)
    archive = commands.add_parser("archive", help="an archive")
    release = commands.add_parser("release", help="an archive that is sealed, signed and packed")
    rack = commands.add_parser("rack", help="an emulated target")
    for command in (archive, release, rack):
        command.add_argument("out", type=Path, help="folder to make it in")
        command.add_argument("--entries", type=int, required=True, help="file entries of the archive")
        command.add_argument("--seed", default="1", help="any text (default: 1)")
    archive.add_argument("--without-checksums", action="store_true", help="the description states none")
    archive.add_argument("--files", action="store_true", help="write the update files too")
    release.add_argument("--file-size", type=int, required=True, help="bytes of each update file")
    release.add_argument("--tool", type=Path, required=True, help="kvreflash, which seals and packs")
    rack.add_argument("--elements", type=int, required=True, help="update elements")
    rack.add_argument("--current", type=float, default=0.4, help="share that is up to date (default: 0.4)")
    rack.add_argument("--unknown", type=float, default=0.1, help="share that is of no entry (default: 0.1)")
    rack.add_argument("--polls", type=int, default=1, help="queries until an update has ended (default: 1)")
    return parser.parse_args(arguments)


def main(arguments=None):
    given = read_arguments(arguments)
    if given.command == "archive":
        write_archive(given.out, given.seed, given.entries, not given.without_checksums, given.files)
        return
    if given.command == "release":
        write_release(given.out, given.seed, given.entries, given.file_size, given.tool)
        return
    given.out.mkdir(parents=True, exist_ok=True)
    text = make_rack(given.seed, given.elements, given.entries, given.current, given.unknown, given.polls)
    (given.out / "target.json").write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
