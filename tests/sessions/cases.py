"""Reads cases and lays out their scratch folders."""

import copy
import json
import re
import sys
from pathlib import Path

import patches
from patches import CaseError

HERE = Path(__file__).resolve().parent
PROJECT = HERE.parent.parent
CASES = HERE / "cases"

sys.path.insert(0, str(PROJECT / "examples"))
import make_archive  # noqa: E402  (the example archive's recipes are ours too)

# Where a base's parts are: the examples, or a folder of bases/.
ARCHIVE_BASES = {"examples": PROJECT / "examples" / "archive"}
RACK_BASES = {"examples": PROJECT / "examples" / "rack"}


class Case:
    """One folder of cases/."""

    def __init__(self, folder):
        self.folder = folder
        self.name = folder.name
        script = read_json(folder / "case.json")
        unknown = set(script) - {"about", "archive", "rack", "steps", "leaves"}
        if unknown or not script.get("about") or not script.get("steps"):
            raise CaseError(f"case.json: needs about and steps; unknown {sorted(unknown)}")
        self.about = script["about"]
        self.archive = script.get("archive", "box")
        self.rack = script.get("rack", "box")
        self.steps = script["steps"]
        self.leaves = script.get("leaves", [])


def printed_version():
    """The project's version as the tool prints it, such as 1.1 for 1.1.0."""
    build = (PROJECT / "CMakeLists.txt").read_text(encoding="utf-8")
    begin, last = re.search(r"^project\(\w+ VERSION (\d+\.\d+)(\.\d+)", build, re.MULTILINE).groups()
    return begin if last == ".0" else begin + last


def case_names():
    return sorted(path.parent.name for path in CASES.glob("*/case.json"))


def read_json(path):
    try:
        return json.loads(path.read_text(encoding="utf-8"))
    except (OSError, ValueError) as error:
        raise CaseError(f"{path}: {error}") from error


def base_and_patches(choice):
    return (choice, []) if isinstance(choice, str) else (choice["base"], choice.get("patch", []))


def lay_out_archive(choice, folder):
    base, changes = base_and_patches(choice)
    source = ARCHIVE_BASES.get(base, HERE / "bases" / base)
    archive = patches.Archive(read_json(source / "archive.json"),
                              copy.deepcopy(read_json(source / "recipes.json")["updateFiles"]))
    patches.apply(patches.ARCHIVE_VERBS, archive, changes)
    text = archive.description_text
    try:
        files = make_archive.make_files(archive.recipes.values())
    except make_archive.RecipeError as error:
        raise CaseError(str(error)) from error
    files["archive.json"] = (json.dumps(archive.description) if text is None else text).encode()
    folder.mkdir()
    for name, data in sorted(files.items()):
        if name not in archive.missing:
            (folder / name).write_bytes(data)


def write_target(choice, folder):
    base, changes = base_and_patches(choice)
    target = read_json(RACK_BASES.get(base, HERE / "bases" / base) / "target.json")
    patches.apply(patches.RACK_VERBS, target, changes)
    (folder / "target.json").write_text(json.dumps(target, indent=1), encoding="utf-8")


def lay_out(case, scratch):
    """Makes the folders `archive` and `rack` of the case in `scratch`."""
    lay_out_archive(case.archive, scratch / "archive")
    (scratch / "rack").mkdir()
    write_target(case.rack, scratch / "rack")
