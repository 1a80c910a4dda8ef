#!/usr/bin/env python3
"""Makes the update files of a firmware archive from readable recipes.

usage: make_archive.py FOLDER OUT       make the archive of FOLDER in OUT
       make_archive.py --check FOLDER   only check that description and recipes agree

FOLDER holds `archive.json`, the archive description, and `recipes.json`, which says what each update file contains:

    {"updateFiles": [{"name": FILE, "kind": KIND, ...}, ...]}

    kind        keys                                                        what is made
    image       version, size, hw, sw, typeId, checksum, cut                firmware image: header and payload
    bitstream   design, size, checksum, headerSize, formatVersion           FPGA bitstream: header and payload
    tree        version, typeId, hw, sw, checksum, stated, contents         inventory tree file with a FIRMWARE node
    text        lines                                                       text file, every line ended by a line feed
    bytes       hex, or size                                                the bytes given, or `size` bytes of payload

`size` is the payload's number of bytes (default 1024); the payload depends on the name alone, so that every run makes
the same files. `hw` and `sw` are [lowest, highest] compatibility identifiers (default [0, 0]). `checksum` replaces the
checksum that is computed otherwise (CRC-32 of the payload; of a tree: of its FIRMWARE node without the checksum).
`cut` keeps only the first bytes of the file. `stated` puts the checksum of a tree beside the tree too. A "comment" is
allowed in every recipe.

Whoever makes an archive wants a second update to find nothing to do. The checks are those that this needs: every entry
of the description has its file and every file its entry, the checksums that the description states are those of the
files, and so are the versions (null for a file that carries none).
"""

import argparse
import hashlib
import json
import re
import shutil
import struct
import sys
import zlib
from pathlib import Path

IMAGE_MAGIC = (0x1255AA34, 0xAA184755)
IMAGE_HEADER_SIZE = 364
BITSTREAM_MAGIC = b"kvFPGABS"
BITSTREAM_HEADER_SIZE = 92
DEFAULT_PAYLOAD_SIZE = 1024
PRERELEASE_BUILDS = {"a": 1, "b": 2}
RELEASE_KINDS = {0: 0, 1: 10, 2: 11}  # service pack build: release kind of the image header


class RecipeError(Exception):
    """A recipe or description that cannot be followed; the text says where and why."""


# --- versions ---------------------------------------------------------------------------------------------------------

def parse_version(text):
    """The six components (major, minor, maintenance, service pack build, service pack number, patch level)."""
    early = re.fullmatch(r"(\d+)(?:\.(\d+))?(?:\.(\d+))?([ab])(\d+)(?:\.(\d+))?", text)
    if early:
        major, minor, maintenance, letter, pack, patch = early.groups()
        return (int(major), int(minor or 0), int(maintenance or 0), PRERELEASE_BUILDS[letter], int(pack),
                int(patch or 0))
    if re.fullmatch(r"\d+(\.\d+){0,4}", text):
        numbers = [int(part) for part in text.split(".")]
        major, minor, maintenance, pack, patch = numbers + [0] * (5 - len(numbers))
        return (major, minor, maintenance, 0, pack, patch)
    raise RecipeError(f'"{text}" is not a version')


# --- makers: recipe in, bytes out -------------------------------------------------------------------------------------

def crc32(data):
    return zlib.crc32(data) & 0xFFFFFFFF


def payload(recipe):
    """Bytes that look like code and are the same in every run."""
    size = recipe.get("size", DEFAULT_PAYLOAD_SIZE)
    blocks = (hashlib.sha256(f"{recipe['name']}:{i}".encode()).digest() for i in range((size + 31) // 32))
    return b"".join(blocks)[:size]


def make_image(recipe):
    body = payload(recipe)
    major, minor, maintenance, build, pack, patch = parse_version(recipe["version"])
    header = bytearray(IMAGE_HEADER_SIZE)
    struct.pack_into(">II", header, 40, *IMAGE_MAGIC)
    struct.pack_into(">I", header, 60, recipe.get("checksum", crc32(body)))
    struct.pack_into(">BBBBHH", header, 76, major, minor, maintenance, RELEASE_KINDS[build], pack, patch)
    struct.pack_into(">IIIII", header, 344, *recipe.get("hw", [0, 0]), *recipe.get("sw", [0, 0]),
                     recipe.get("typeId", 0))
    return bytes(header) + body


def make_bitstream(recipe):
    body = payload(recipe)
    header = bytearray(BITSTREAM_HEADER_SIZE)
    design = recipe.get("design", "").encode()[:72]
    struct.pack_into(">8sII72sI", header, 0, BITSTREAM_MAGIC, recipe.get("headerSize", BITSTREAM_HEADER_SIZE),
                     recipe.get("formatVersion", 1), design, recipe.get("checksum", crc32(body)))
    return bytes(header) + body


def make_tree(recipe):
    hw, sw = recipe.get("hw", [0, 0]), recipe.get("sw", [0, 0])
    parameters = {
        "MIN_HW_COMPATIBILITY_ID": hw[0],
        "MAX_HW_COMPATIBILITY_ID": hw[1],
        "MIN_SW_COMPATIBILITY_ID": sw[0],
        "MAX_SW_COMPATIBILITY_ID": sw[1],
        "TYPE_ID": recipe.get("typeId", 0),
        "VERSION": recipe["version"],
    }
    firmware = {"id": "FIRMWARE", "parameters": parameters, "items": recipe.get("contents", [])}
    checksum = recipe.get("checksum", crc32(json.dumps(firmware, separators=(",", ":")).encode()))
    parameters["CHECKSUM_CRC32"] = checksum
    document = {"inventoryTree": {"id": "ROOT", "items": [firmware]}}
    if recipe.get("stated"):
        document["checksumCrc32"] = checksum
    return (json.dumps(document, indent=4) + "\n").encode()


def make_text(recipe):
    return "".join(line + "\n" for line in recipe["lines"]).encode()


def make_bytes(recipe):
    return bytes.fromhex(recipe["hex"]) if "hex" in recipe else payload(recipe)


MAKERS = {"image": make_image, "bitstream": make_bitstream, "tree": make_tree, "text": make_text, "bytes": make_bytes}


def make_file(recipe):
    """The bytes of one update file."""
    name = recipe.get("name", "?")
    try:
        data = MAKERS[recipe["kind"]](recipe)
    except KeyError as error:
        raise RecipeError(f'recipe of "{name}": {error} is missing, or an unknown kind') from error
    except (TypeError, ValueError, IndexError, struct.error, RecipeError) as error:
        raise RecipeError(f'recipe of "{name}": {error}') from error
    return data[:recipe["cut"]] if "cut" in recipe else data


def make_files(recipes):
    """{name: bytes} of all recipes."""
    files = {}
    for recipe in recipes:
        if recipe.get("name") in files:
            raise RecipeError(f'two recipes for "{recipe["name"]}"')
        files[recipe["name"]] = make_file(recipe)
    return files


# --- reading back: what an update leaves on the target ----------------------------------------------------------------

def find_firmware(item):
    """The first FIRMWARE item in preorder, or None."""
    if item.get("id") == "FIRMWARE":
        return item
    return next(filter(None, map(find_firmware, item.get("items", []))), None)


def installed_from_tree(document):
    parameters = (find_firmware(document["inventoryTree"]) or {}).get("parameters", {})
    checksum = document.get("checksumCrc32", parameters.get("CHECKSUM_CRC32"))
    version = parameters.get("VERSION")
    return checksum, parse_version(version) if version else None


def parse_tree_file(data):
    """The document of an inventory tree file; None when `data` is none."""
    try:
        document = json.loads(data)
    except ValueError:
        return None
    return document if isinstance(document, dict) and "inventoryTree" in document else None


def installed(data):
    """(checksum, version components or None) that an element shows after the installation of the file `data`."""
    head = data[:IMAGE_HEADER_SIZE].ljust(IMAGE_HEADER_SIZE, b"\0")
    if struct.unpack_from(">II", head, 40) == IMAGE_MAGIC:
        major, minor, maintenance, kind, pack, patch = struct.unpack_from(">BBBBHH", head, 76)
        build = next((build for build, known in RELEASE_KINDS.items() if known == kind), 0)
        return struct.unpack_from(">I", head, 60)[0], (major, minor, maintenance, build, pack, patch)
    if data[:8] == BITSTREAM_MAGIC and len(data) >= BITSTREAM_HEADER_SIZE:
        size, format_version = struct.unpack_from(">II", data, 8)
        if format_version == 1 and size >= BITSTREAM_HEADER_SIZE:
            return struct.unpack_from(">I", data, 88)[0], None
    document = parse_tree_file(data)
    return installed_from_tree(document) if document else (crc32(data), None)


# --- checks -----------------------------------------------------------------------------------------------------------

def check_entry(index, entry, files):
    """Sentences on what does not fit between one entry of the description and its file."""
    where = f'file entry {index} ("{entry["name"]}")'
    if entry["name"] not in files:
        return [f"{where}: there is no recipe for this file"]
    checksum, version = installed(files[entry["name"]])
    complaints = []
    if entry.get("checksumCrc32", checksum) != checksum:
        complaints.append(f"{where}: checksumCrc32 is {entry['checksumCrc32']}, that of the file is {checksum}")
    stated = entry.get("version", "absent")
    if version is None and stated is not None:
        complaints.append(f'{where}: the file carries no version, "version" has to be null')
    if version is not None and (not isinstance(stated, str) or stated == "absent" or parse_version(stated) != version):
        complaints.append(f"{where}: version is {stated}, that of the file is {version}")
    return complaints


def check(description, files):
    """Sentences on everything that does not fit between the description and the files; empty when all is well."""
    complaints = []
    for index, entry in enumerate(description["files"]):
        complaints += check_entry(index, entry, files)
    named = {entry["name"] for entry in description["files"]}
    complaints += [f'recipe of "{name}": no file entry names this file' for name in files if name not in named]
    return complaints


# --- the command ------------------------------------------------------------------------------------------------------

def read_json(path):
    try:
        return json.loads(path.read_text(encoding="utf-8"))
    except (OSError, ValueError) as error:
        raise RecipeError(f"{path}: {error}") from error


def write_archive(folder, out, files):
    out.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(folder / "archive.json", out / "archive.json")
    for name, data in files.items():
        (out / name).write_bytes(data)


def run(arguments):
    description = read_json(arguments.folder / "archive.json")
    files = make_files(read_json(arguments.folder / "recipes.json")["updateFiles"])
    complaints = check(description, files)
    if complaints:
        raise RecipeError("\n".join(complaints))
    if arguments.check:
        return
    write_archive(arguments.folder, arguments.out, files)
    print(f"{arguments.out}: {len(files)} update files for {len(description['files'])} file entries")


def main():
    parser = argparse.ArgumentParser(description="Makes the update files of a firmware archive from its recipes.")
    parser.add_argument("--check", action="store_true", help="only check that description and recipes agree")
    parser.add_argument("folder", type=Path, help="folder with archive.json and recipes.json")
    parser.add_argument("out", type=Path, nargs="?", help="folder to make the archive in")
    arguments = parser.parse_args()
    if not arguments.check and arguments.out is None:
        parser.error("OUT is missing")
    try:
        run(arguments)
    except RecipeError as error:
        print(f"make_archive.py: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
