#!/usr/bin/env python3
"""Writes the JSON Schemas of documents and events, each a file that needs no other, from the parts that they share. The
words of enumerations are those of src/documents/DocumentCodes.cpp.

usage: make_schemas.py [--check]    --check: writes nothing; exit code 1 if a file is not what this script would write
"""

import json
import re
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
SCHEMAS = PROJECT / "docs" / "schemas"
CODES = PROJECT / "src" / "documents" / "DocumentCodes.cpp"

DRAFT = "https://json-schema.org/draft/2020-12/schema"

MAX_32 = 0xFFFFFFFF
MAX_64 = 0xFFFFFFFFFFFFFFFF
SHA256 = "[0-9a-f]{64}"
RUN_ID = "^[0-9]{8}T[0-9]{9}Z-[0-9a-f]{8}$"
SECOND = r"^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}"
TIME = SECOND + r"(\.[0-9]+)?(Z|[+-][0-9]{2}:[0-9]{2})$"
EVENT_TIME = SECOND + r"\.[0-9]{3}Z$"
# When the end of a run is null.
UNENDED = "it has not come to its end"


def words(table):
    """The words of an enumeration, from the table of this name in the sources; without "none", which is null."""
    code = CODES.read_text(encoding="utf-8")
    found = re.search(rf"constexpr auto {table} =\s*wordsUpTo<\w+::\w+>\((.*?)\);", code, re.DOTALL)
    return [word for word in re.findall(r'"([^"]*)"', found.group(1)) if word != "none"]


# Values. `null`, where there is one, says what null means.

def with_null(schema, null):
    if null is None:
        return schema
    described = {"description": f"{schema['description']} Null: {null}."}
    if "enum" in schema:
        return {**described, "enum": [*schema["enum"], None]}
    if "$ref" in schema:
        return {**described, "anyOf": [{"$ref": schema["$ref"]}, {"type": "null"}]}
    return {**schema, **described, "type": [schema["type"], "null"]}


def text(description, null=None, **rules):
    return with_null({"description": description, "type": "string", **rules}, null)


def number(description, null=None, maximum=MAX_32, minimum=0):
    return with_null({"description": description, "type": "integer", "minimum": minimum, "maximum": maximum}, null)


def count(description, minimum=0):
    return {"description": description, "type": "integer", "minimum": minimum}


def flag(description, null=None):
    return with_null({"description": description, "type": "boolean"}, null)


def word(description, table, null=None):
    return with_null({"description": description, "enum": words(table)}, null)


def part(name, description, null=None):
    """A record that the file defines."""
    return with_null({"description": description, "$ref": f"#/$defs/{name}"}, null)


def list_of(description, items, **rules):
    return {"description": description, "type": "array", "items": items, **rules}


def records(name, description):
    return list_of(description, {"$ref": f"#/$defs/{name}"})


def together(*names):
    """These members are there together or not at all."""
    return {names[0]: list(names[1:]), **{name: [names[0]] for name in names[1:]}}


def record(description, properties, optional=(), dependent=None):
    schema = {"description": description, "type": "object",
              "required": [name for name in properties if name not in optional], "properties": properties}
    if dependent:
        schema["dependentRequired"] = dependent
    return schema


# Parts.

VERDICT = {
    "failure": word("The class of the failure.", "failureWords", "success"),
    "retryable": flag("The same may succeed if it is tried again."),
    "message": text("Why it failed, in one line; empty after a success."),
}

IDENTITY = record("What the archive says of itself.", {
    "archiveName": text("Name."),
    "archiveVersion": text("Version."),
    "productName": text("Product that it belongs to."),
    "formatVersion": text("Version of the description's format."),
    "archiveVariant": text("Variant; empty if there is none."),
})

RELEASE = record("What vouches for the archive.", {
    "seal": word("How far its content is vouched for.", "sealWords"),
    "manifestSha256": text("SHA-256 of its manifest.", "it has none", pattern=f"^{SHA256}$"),
    "created": text("When it was sealed, as the manifest says.", "it has no manifest", format="date-time"),
    "signer": text("Who has signed it, as the trust folder calls them.", "nobody who is trusted"),
    "keyKind": text("Kind of the key that has signed it.", "it is not signed"),
    "keyFingerprint": text("Fingerprint of the key.", "it is not signed", pattern="^SHA256:[A-Za-z0-9+/]{43}$"),
    "trustFolder": text("The trust folder that was asked.", "none"),
    "unsealedAccepted": flag("It was accepted only because archives that are not signed were to be accepted."),
})

ENTRY = record("An entry of the archive.", {
    "name": text("Name of the update file, relative to the archive folder."),
    "version": text("Version of its contents.", "not known"),
    "index": number("Position in the description's files, from 0; ignored entries count."),
    "fileIndex": number("Position among the accepted entries, from 0."),
    "checksumCrc32": number("CRC-32 of its contents.", "not known"),
    "mode": word("standard: updates what differs; upgrade: what has a lower version.", "entryModeWords"),
    "sequence": number("Entries of a lower sequence are installed in an earlier phase."),
})

INSTALLED = record("What the target reports as installed on an element.", {
    "version": text("Version.", "not known"),
    "checksumCrc32": number("CRC-32; 0: the target reports none, but has a place for it.", "not reported"),
    "valid": flag("It is complete and can be used.", "not reported"),
    "active": flag("It is what the board runs.", "not reported"),
})

ELEMENT = {
    "index": number("Position in the element list, from 0: the No. of the plan."),
    "boardType": text("Type of the board that carries it; may be empty."),
    "serialNumber": number("Serial number of the board; the upper 8 bits may hold a sub-number."),
    "boardName": text("Name or type of the board, and its variant in parentheses."),
    "unitPath": text("Name of the unit, followed by its rack and instance names if it has them."),
    "slot": number("Slot that the board is in.", "the board has no slot"),
    "slotCount": number("How many slots the board takes; 0: it has no slot."),
    "displayName": text("The element's name in tables and messages."),
    "typeName": text("What kind of element it is, such as Firmware or FPGA."),
    "isFileSystemElement": flag("A file in the target's file system rather than something that is flashed."),
    "valid": flag("What is installed is complete and can be used; false if that is not reported."),
    "active": flag("What is installed is what the board runs; false if that is not reported."),
    "installedVersion": text("Installed version.", "not known"),
    "custom": flag("It is a custom element."),
    "phase": number("Phase of the update, from 0.", "it is not updated"),
    "hasArchiveFile": flag("An entry of the archive matches it."),
    "archiveFileIndex": number("The fileIndex of the entry.", "no entry"),
    "availableVersion": text("Version of the entry.", "not known, or no entry"),
    "checksumMismatch": flag("The installed checksum differs from that of the entry, or the entry's is not known.",
                             "no entry, an entry of the mode upgrade, or no checksum or 0 is reported"),
    "disabled": flag("It takes no part in the update."),
    "name": text("Its name in the inventory, which --element looks for."),
    "address": text("Address of the inventory item; empty for a file that the inventory does not list."),
    "boardAddress": text("Address of the board that carries it."),
    "boardVariant": text("Variant of the board."),
    "boardId": number("Identifier of the board."),
    "unitName": text("Name of the unit; may be empty, as the following two."),
    "unitInstanceName": text("Name of the unit's instance."),
    "rackName": text("Name of the rack."),
    "elementId": number("Identifier of the element."),
    "targetPath": text("Path of a file, below the root of the target's file system; else empty."),
    "hwCompatibilityId": number("Hardware compatibility identifier."),
    "swCompatibilityId": number("Software compatibility identifier."),
    "installed": part("installed", "What the target reports of it before the update."),
    "installedChecksum": number("The installed checksum.", "not reported"),
    "entry": part("entry", "The entry that it takes.", "no entry"),
    "availableChecksum": number("The checksum of the entry.", "not known, or no entry"),
    "decision": {"description": "Whether it is updated. Null: the session reads no archive.",
                 "enum": ["update", "leave", None]},
    "reasons": list_of("Why; empty without a decision.", {"enum": words("reasonWords")}, uniqueItems=True),
    "upToDate": flag("What is installed is what the entry offers, or newer if the entry's mode is upgrade."),
    "isDowngrade": flag("The entry has a lower version than is installed. Versions that are not known are not compared."),
}

VERSION = record("A version and its components.", {
    "text": text("The printed form."),
    "major": number("Major release.", maximum=0xFF),
    "minor": number("Minor release.", maximum=0xFF),
    "maintenance": number("Maintenance release.", maximum=0xFF),
    "servicePackBuild": number("0: release, 1: alpha, 2: beta.", maximum=0xFF),
    "servicePackNumber": number("Service pack number.", maximum=0xFFFF),
    "patchLevel": number("Patch level.", maximum=0xFFFF),
})

COMPARED = {
    "description": "A text, a number, null, or an array of these.",
    "type": ["string", "integer", "null", "array"],
    "items": {"type": ["string", "integer", "null"]},
}

TRIED_ENTRY = record("An entry that was tried for an element.", {
    "name": ENTRY["properties"]["name"],
    "index": ENTRY["properties"]["index"],
    "fileIndex": ENTRY["properties"]["fileIndex"],
    "failedTest": word("The first test that failed.", "matchTestWords", "none, the entry was chosen"),
    "archiveValue": part("comparedValue", "What the description has for the failed test."),
    "elementValue": part("comparedValue", "What the element has for the failed test."),
})

HIDDEN_ELEMENT = record("An element of the target that the session does not look at.", {
    "displayName": ELEMENT["displayName"],
    "address": text("Address of the inventory item."),
    "hiddenBy": list_of("What hides it.", {"enum": words("hiddenByWords")}, minItems=1, uniqueItems=True),
})

FINDING = record("Something that is to be said about the archive.", {
    "severity": word("The archive is refused for an error; a warning is about what may not be meant.", "severityWords"),
    "code": text("The kind of finding.", pattern="^[a-z]+(-[a-z]+)*$"),
    "file": text("Path of the description."),
    "line": count("Line of the description, from 1.", minimum=1),
    "column": count("Column in characters, from 1.", minimum=1),
    "path": text("JSON path of the value concerned, such as $.files[3].boards[0].id.", pattern="^\\$"),
    "message": text("What is the matter."),
    "hint": text("What to do; may be empty."),
})

ERROR = record("An error that the device access libraries have reported.", {
    "code": number("Its number."),
    "codeText": text("The number as messages show it, in hexadecimal.", pattern="^0x[0-9a-f]{1,8}$"),
    "text": text("What it says."),
    "originNode": number("Serial number of the node that reported it; 0: the host."),
    "seconds": with_null({"description": "Seconds since the time base of the error manager.", "type": "number"},
                         "not known"),
    "mainModule": number("Main module.", "not known"),
    "subModule": number("Sub-module.", "not known"),
    "function": text("Function; empty if it is not known."),
    "line": number("Line.", "not known"),
})

OUTCOME = {
    "outcome": word("What became of the element.", "resultWords"),
    "reason": text("Why it failed, was cancelled, is missing or was not started, in one sentence; else empty."),
    "failedCall": word("The call that made it fail.", "failedCallWords", "none"),
    "state": number("What the target answered to the last status query: 1 running, 2 succeeded, anything else failed.",
                    "it answered none"),
    "message": text("What the session said of a file that could not be written; else empty."),
    "errors": records("error", "The errors of its calls, then those that the target reported for it."),
}

VERIFIED = {
    "after": part("installed", "What the target reports of it in the end.",
                  "it was not looked at, or does not list the element"),
    "verification": word("How that fits the plan.", "verifiedWords", "the element was not judged"),
    "leftByPlan": flag("It reports the checksum 0 and differs: a plan leaves it, a forced update does not.",
                       "the element was not judged"),
    "fileChanged": flag("Its update file changed while it was used: nobody knows what was installed.",
                        "the element was not judged"),
}

FILE_OUTCOME = record("What became of an update file in one phase.", {
    "name": ENTRY["properties"]["name"],
    "fileIndex": ENTRY["properties"]["fileIndex"],
    "phase": number("The phase, from 0."),
    "targetPath": text("Path in the target's file system for a file that is written there; else empty."),
    "outcome": word("What became of it.", "resultWords"),
})

LOOK = record("How the target was looked at in the end.", {
    "succeeded": flag("False: it could not be reached or scanned."),
    "message": text("Why not, in one line; else empty."),
    "errors": records("error", "The errors that the look collected."),
})

COUNTS = record("Number of verified elements with each result.",
                {result: count("Number of elements.") for result in words("verifiedWords")})

FILES = records("entry", "The accepted entries of the archive, in their order.")

RELEASE_PART = part("release", "What vouches for the archive.", "that was not asked")

IN_ORDER = "The elements in the order of the element list."
PLANNED_PARTS = {"installed": INSTALLED, "entry": ENTRY}

SUPPORT = {
    "supported": flag("False: an update would refuse the target."),
    "unsupportedElements": list_of("Indices of the elements that decide that: elements of processor boards without an "
                                   "entry.", number("Index of an element."), uniqueItems=True),
    "phaseCount": number("Number of phases."),
}
TARGET = {
    "given": text("As it was given."),
    "address": text("IPv4 address; empty if the target was not scanned."),
}
NODES = list_of("Serial numbers of its processor nodes, as far as it reports them.", number("Serial number."))
PLACES = list_of("The places that say, beside address and serial numbers, which target it is: the folders of emulated "
                 "ones.", text("A place."))
EXIT_CODE = number("Exit code of kvreflash.", maximum=255)


def element(more=None, **rules):
    return record("An element of the target and what an update does to it.", {**ELEMENT, **(more or {})}, **rules)


def form_of(name, description):
    """What each document, and the first line of a journal, says of its kind."""
    return record("What kind of document it is.", {
        "name": {"description": description, "const": f"kvreflash.{name}"},
        "version": {"description": "Version of the format.", "const": 1},
    })


def identified(name, title):
    """How each schema begins."""
    return {"$schema": DRAFT, "$id": f"urn:kvreflash:schema:{name}:1", "title": title}


def document(name, title, members, parts, optional=(), dependent=None):
    """The schema of a document. A document of a success has the optional members, too."""
    form = form_of(name, "The kind, named after the command.")
    schema = record(title + ".", {"format": form, **VERDICT, **members}, optional, dependent)
    del schema["description"]
    if optional:
        schema["if"] = {"properties": {"failure": {"const": None}}}
        schema["then"] = {"required": list(optional)}
    return {**identified(name, title), **schema, "$defs": parts}


def content():
    return document("content", "Content of a firmware archive", {
        "archive": part("archive", "The archive."),
        "release": RELEASE_PART,
        "files": FILES,
    }, {"archive": IDENTITY, "release": RELEASE, "entry": ENTRY}, ("archive", "release", "files"),
        together("archive", "release", "files"))


def elements():
    return document("elements", "Update elements of a target", {"elements": records("element", IN_ORDER)},
                    {"element": element(), **PLANNED_PARTS}, ("elements",))


def explain():
    explained = element({
        "installedVersionRead": part("version", "How the installed version is read.", "not known"),
        "availableVersionRead": part("version", "How the entry's version is read.", "not known, or no entry"),
        "triedEntries": records("triedEntry", "The entries for the board type, in their order, up to the chosen one."),
        "entriesForOtherBoardTypes": count("Number of other entries before the chosen one or, without one, in the "
                                           "archive."),
    })
    return document("explain", "Explanation of a plan", {
        "release": RELEASE_PART,
        "elements": records("element", "The elements that were asked for, in the order of the element list."),
        "hiddenElements": records("hiddenElement", "The elements of the target that the session does not look at."),
    }, {"element": explained, **PLANNED_PARTS, "version": VERSION, "triedEntry": TRIED_ENTRY, "comparedValue": COMPARED,
        "hiddenElement": HIDDEN_ELEMENT, "release": RELEASE}, ("release", "elements", "hiddenElements"),
        together("release", "elements", "hiddenElements"))


def matrix():
    target = record("A target and what an update would do to it.", {
        "folder": text("Folder of the emulated target, as it was given."),
        "address": text("First address of the target; empty if it has none or cannot be loaded."),
        **VERDICT,
        "supported": flag("False: an update would refuse the target."),
        "elements": records("element", IN_ORDER),
    }, ("supported", "elements"), together("supported", "elements"))
    state = word("What an update would do to it.", "outlookWords")
    return document("matrix", "Plans for several targets", {
        "archive": part("archive", "The archive."),
        "release": RELEASE_PART,
        "targets": records("target", "The targets in the order of the command line."),
        "unmatchedEntries": records("entry", "The entries that no element of any planned target takes."),
    }, {"archive": IDENTITY, "release": RELEASE, "target": target, "element": element({"state": state}),
        **PLANNED_PARTS},
        ("archive", "release", "unmatchedEntries"), together("archive", "release", "unmatchedEntries"))


def compare():
    compared = record("The entry of one of the archives.", {
        **ENTRY["properties"],
        "rules": text("Values that boards and elements must have; empty: any."),
    })
    side = record("One of the archives.", {
        "archive": part("archive", "What it says of itself."),
        "release": RELEASE_PART,
    })
    place = record("An element, or a file, on boards of a type.", {
        "boardType": text("Type of the boards."),
        "elementId": number("Identifier of the element.", "a file"),
        "targetPath": text("Path of a file, below the root of the target's file system; else empty."),
        "change": word("What becomes of it: up and down are about the version.", "changeWords"),
        "contentChanged": flag("The update files have other checksums, or one of them is not known."),
        "sequenceChanged": flag("The entry is of another phase."),
        "modeChanged": flag("The entry has another mode."),
        "rulesChanged": flag("The entry is for other boards or elements."),
        "before": part("compared", "The entry of the old archive.", "none"),
        "after": part("compared", "The entry of the new archive.", "none"),
    })

    def elements_with(which):
        return with_null(records("element", f"The elements of the target, planned with the {which} archive, in the order "
                                            "of the element list."), "no target was asked")

    members = ("before", "after", "places", "elementsBefore", "elementsAfter")
    return document("compare", "What a release changes", {
        "before": part("side", "The old archive."),
        "after": part("side", "The new archive."),
        "places": records("place", "The places of both archives, in the order of the new one; those that only the old "
                                   "one has follow."),
        "elementsBefore": elements_with("old"),
        "elementsAfter": elements_with("new"),
    }, {"side": side, "archive": IDENTITY, "release": RELEASE, "place": place, "compared": compared,
        "element": element(), **PLANNED_PARTS}, members, together(*members))


def check():
    return document("check", "Findings on a firmware archive", {
        "findings": records("finding", "The findings in the order of the description."),
        "errors": count("Number of errors."),
        "warnings": count("Number of warnings."),
    }, {"finding": FINDING})


def session(name, title):
    """The document of a command that plans or changes a target."""
    reported = element({**OUTCOME, **VERIFIED}, optional=tuple(OUTCOME), dependent=together(*OUTCOME))
    planned = {
        "archive": part("archive", "The archive.", "the session reads none"),
        "release": part("release", "What vouches for the archive.", "that was not asked"),
        "targetAddress": text("IPv4 address of the target."),
        **SUPPORT,
        "elements": records("element", IN_ORDER),
    }
    outcome = {
        "stage": word("How far the session came; each value includes those before it.", "stageWords"),
        "fileOutcomes": records("fileOutcome", "The update files in the order in which they were transferred or "
                                               "written; those that were never begun follow."),
        "errors": records("error", "The errors that belong to no element."),
    }
    return document(name, title, {
        "toolVersion": text("Version of kvreflash."),
        "begin": text("Begin of the session.", pattern=TIME),
        "end": text("End of the session.", UNENDED if name in ("update", "reboot") else None, pattern=TIME),
        "exitCode": number("Exit code of kvreflash, but for a document that cannot be written.", maximum=255),
        "target": part("target", "The target."),
        "archiveFolder": text("Folder of the archive; empty if the session reads none."),
        "files": records("entry", "The accepted entries of the archive, in their order; empty if there is none."),
        **planned,
        **outcome,
        "verificationCounts": part("counts", "What the verification has found.", "nothing was verified"),
        "look": part("look", "How the target was looked at in the end.", "nothing was verified"),
        "messages": text("What the session said, in visible characters and without progress that was "
                         "overwritten."),
    }, {"target": record("The target.", TARGET), "archive": IDENTITY, "release": RELEASE, "element": reported, **PLANNED_PARTS, "error": ERROR,
        "fileOutcome": FILE_OUTCOME, "counts": COUNTS, "look": LOOK},
        (*planned, *outcome), {**together(*planned), **together(*outcome)})


def plan():
    return session("plan", "Plan of an update")


def update():
    return session("update", "Update of a target")


def verify():
    return session("verify", "Verification of a target")


def reboot():
    return session("reboot", "Reboot of a target")


def settings():
    def setting(description, value):
        return record(description, {"value": value, "source": word("Where the value comes from.", "settingSourceWords")})

    file = record("The settings file.", {
        "path": text("Its path."),
        "state": word("read: its values count; ignored: whether there is one was not asked.", "settingsFileWords"),
    })
    return document("settings", "Settings of a machine", {
        "file": part("file", "The settings file."),
        "requirePlan": setting("Whether an update needs a saved plan.", flag("True: it does.")),
        "trust": setting("Who is trusted.", text("The trust folder.", "none")),
        "journal": setting("Where journals are kept.", text("The folder of the journals.", "none is kept")),
    }, {"file": file})


# Saved plans.

DECIDING_OPTIONS = record("The options that decide what the update does.", {
    "boardTypes": text("The filter of board types, as it was given; empty: none."),
    "serialNumbers": text("The filter of serial numbers, as it was given; empty: none."),
    "elements": text("The filter of element names, as it was given; empty: none."),
    "configuration": flag("It is about configuration elements."),
    "skipCustom": flag("Custom elements are left out."),
    "force": flag("Elements that are up to date are updated, too."),
    "noDowngrade": flag("Elements for which the archive has a lower version are left out."),
    "unlistedFiles": word("Which files that the inventory does not list are written.", "unlistedFilesWords"),
    "disable": list_of("The elements that were left out by hand.", text("An element, as it was named.")),
})

PLANNED_ARCHIVE = record("The archive that the plan was made with.", {
    "folder": text("Its path, from the root; empty if none was read."),
    "description": text("Name of its description file."),
    "descriptionSha256": text("SHA-256 of the description; empty if none was read.", pattern=f"^({SHA256})?$"),
    "information": part("archive", "What it says of itself.", "none was read"),
    "release": RELEASE_PART,
    "files": records("file", "The files that are used, each once, in the order of the plan. Empty if the archive is "
                             "sealed: the digest of its manifest stands for all of them."),
})

FILE = record("An update file, by its content.", {
    "name": ENTRY["properties"]["name"],
    "size": number("Bytes.", maximum=MAX_64),
    "sha256": text("SHA-256 of its content.", pattern=f"^{SHA256}$"),
})


def plan_basis(id_rules, time_rules):
    """What a plan was made of: the members of a saved plan, and of the first line of a journal."""
    return {
        "id": text("Identifier of the saved plan.", **id_rules),
        "toolVersion": text("Version of kvreflash that has planned."),
        "time": text("When it was planned.", **time_rules),
        "target": part("target", "The target."),
        "options": part("options", "The options that decide what the update does."),
        "archive": part("plannedArchive", "The archive."),
    }


BASIS_PARTS = {"target": record("The target.", {**TARGET, "nodeSerialNumbers": NODES}), "options": DECIDING_OPTIONS,
               "plannedArchive": PLANNED_ARCHIVE, "archive": IDENTITY, "release": RELEASE, "file": FILE}

PLAN_ELEMENTS = {
    **SUPPORT,
    "changes": number("Number of elements and files that the update changes."),
    "elements": records("element", IN_ORDER),
}


def saved_plan():
    title = "Saved plan"
    schema = record(title + ".", {
        "format": form_of("saved-plan", "The kind."),
        **plan_basis({"pattern": RUN_ID}, {"pattern": EVENT_TIME}),
        **PLAN_ELEMENTS,
        "digest": text("SHA-256 of the document without this member.", pattern=f"^{SHA256}$"),
    })
    del schema["description"]
    return {**identified("saved-plan", title), **schema,
            "$defs": {**BASIS_PARTS, "element": element(), **PLANNED_PARTS}}


# Runs of a journal.

RUN = record("A run.", {
    "id": text("Its identifier, which begins with its time.", pattern=RUN_ID),
    "state": word("running: its process goes on; complete: it has ended by itself, whatever came of it; stopped: on "
                  "request; broken-off: in the middle.", "runStateWords"),
    "open": flag("It was stopped or broke off, and no other run has gone on with it."),
    "command": text("The command: update or reboot."),
    "toolVersion": text("Version of kvreflash."),
    "begin": text("When it began.", pattern=EVENT_TIME),
    "end": part("end", "What it has written at its end.", UNENDED),
    "user": text("Who has started it; empty if that is not known, as the following."),
    "computer": text("The computer on which it ran."),
    "target": part("target", "The target."),
    "archiveFolder": text("Path of the archive, from the root; empty if the run reads none."),
    "archive": part("archive", "What the archive says of itself.", "the run reads none"),
    "plan": text("Identifier of the saved plan that it runs.", "none"),
    "resumes": text("Identifier of the run that it goes on with.", "none"),
    "resumedBy": text("Identifier of the last run that has gone on with it.", "none"),
    "fault": text("Why its file is not to be trusted from some line on.", "it is whole"),
})

RUN_END = record("The end of a run.", {
    "time": text("When it ended.", pattern=EVENT_TIME),
    **VERDICT,
    "exitCode": EXIT_CODE,
})

RUN_PARTS = {"run": RUN, "end": RUN_END,
             "target": record("The target.", {**TARGET, "nodeSerialNumbers": NODES, "places": PLACES}),
             "archive": IDENTITY}


def history():
    return document("history", "Runs of a journal", {
        "runs": records("run", "The runs from the oldest to the newest."),
        "faults": list_of("Files of the journal that cannot be read.", text("A file and what is the matter with it.")),
    }, RUN_PARTS)


def run():
    progressed = element({
        "progress": word("How far its update came, as far as the journal knows.", "progressWords"),
        "outcome": OUTCOME["outcome"],
        "reason": OUTCOME["reason"],
        "after": VERIFIED["after"],
    })
    return document("run", "A run of a journal", {
        "run": part("run", "The run.", "it was not found"),
        "elements": records("element", "The elements of its plan; empty if it was not found, or has written none."),
    }, {**RUN_PARTS, "element": progressed, **PLANNED_PARTS})


# Events. Each has its time and its name.

INDEX = number("Index of the element in the list of the plan.")
NAME = text("The element's name in tables and messages: its displayName in documents.")
SUCCEEDED = flag("False: it has failed.")

EVENTS = {
    "runBegin": ("The command begins.", {
        "command": text("The command."),
        "toolVersion": text("Version of kvreflash."),
        "target": text("The target as it was given; may be empty."),
        "archiveFolder": text("Folder of the archive; empty if the session reads none."),
    }),
    "plan": ("The plan is made.", {
        "phaseCount": number("Number of phases."),
        "updates": number("Number of elements that are to be updated."),
        "supported": flag("False: the update refuses the target."),
        "targetAddress": text("IPv4 address of the target."),
        "release": RELEASE_PART,
    }),
    "locked": ("The target is locked.", {}),
    "phase": ("A phase begins.", {
        "value": number("Number of the phase, from 0; 4294967295 when the last one is over."),
    }),
    "progress": ("The running phase has come so far.", {
        "value": number("Percentage, 0 to 100; above that only while the target says that more is done than there is "
                        "to do."),
    }),
    "transfer": ("An update file was transferred, or could not be.", {
        "file": text("Name of the update file, relative to the archive folder."),
        "phase": number("The phase that it is for, from 0."),
        "succeeded": SUCCEEDED,
    }),
    "elementStart": ("The update of an element begins.", {
        "value": INDEX,
        "name": NAME,
        "address": text("Address of the inventory item; empty for a file that the inventory does not list."),
        "file": text("Name of the update file, relative to the archive folder."),
    }),
    "elementError": ("The update of an element has failed.", {
        "value": INDEX,
        "name": NAME,
        "reason": text("Why, in one sentence."),
    }),
    "elementEnd": ("The update of an element has ended.", {
        "value": INDEX,
        "name": NAME,
        "succeeded": SUCCEEDED,
        "result": word("What became of it: its outcome in documents.", "resultWords"),
        "reason": text("Why it failed, in one sentence; else empty."),
    }),
    "unlocked": ("The lock was given back, or could not be.", {"succeeded": SUCCEEDED}),
    "verify": ("The target was looked at and judged.", {
        "counts": part("counts", "What the verification has found."),
        "failure": word("The class of its failure.", "failureWords", "success"),
    }),
    "runEnd": ("The command ends: the last event.", {
        **VERDICT,
        "exitCode": EXIT_CODE,
    }),
}


def event(description, name, members, optional=(), before=None):
    """One that has the members of `optional` has them all."""
    return record(description, {
        **(before or {}),
        "time": text("When it happened: RFC 3339, UTC with milliseconds.", pattern=EVENT_TIME),
        "event": {"description": "Its name.", **name},
        **members,
    }, optional, together(*optional) if optional else None)


def lines(name, title, description, described, before, parts):
    """The schema of a line: knows each event that is written; another one only has to have time and name."""
    events_of_line = {event_name: event(*what, before=before) for event_name, what in described.items()}
    events_of_line["otherEvent"] = event("An event of a later version.",
                                         {"type": "string", "not": {"enum": list(described)}}, {}, before=before)
    return {**identified(name, title), "description": description,
            "oneOf": [{"$ref": f"#/$defs/{event_name}"} for event_name in events_of_line],
            "$defs": {**events_of_line, **parts}}


def named(records_of_events):
    """{name: (description, name, members)}"""
    return {name: (description, {"const": name}, members)
            for name, (description, members) in records_of_events.items()}


def events():
    return lines("events", "Event of an update", "One line of what `kvreflash update --events FILE` writes.",
                 named(EVENTS), {}, {"counts": COUNTS, "release": RELEASE})


# Lines of a journal: most events, and the records that it has beside them.

CHAIN = {
    "number": number("Number of the line, from 0."),
    "previous": text("SHA-256 of the line before, without its line end; zeros in the first one.",
                     pattern=f"^{SHA256}$"),
}

WRITTEN_FILE = {
    "targetPath": text("Place of a file that the inventory does not list, below the root of the target's file system."),
    "sha256": text("SHA-256 of what was written there.", "it was not written", pattern=f"^{SHA256}$"),
}

INTENDED_ELEMENT = record("An element of the phase.", {
    "index": INDEX,
    "name": NAME,
    "address": EVENTS["elementStart"][1]["address"],
    "targetPath": ELEMENT["targetPath"],
})

VERIFIED_ELEMENT = record("A verified element.", {
    "index": INDEX,
    "result": word("How what the target reports fits the plan.", "verifiedWords"),
    "after": part("installed", "What the target reports of it.", "it does not list the element, or was not reached"),
    "leftByPlan": flag("It reports the checksum 0 and differs: a plan leaves it, a forced update does not."),
    "fileChanged": flag("Its update file changed while it was used: nobody knows what was installed."),
})

JOURNAL_RECORDS = {
    "begin": ("The run begins: the first line.", {
        "format": form_of("journal", "The kind."),
        "command": RUN["properties"]["command"],
        "user": RUN["properties"]["user"],
        "computer": RUN["properties"]["computer"],
        "places": PLACES,
        "resumes": text("Identifier of the run that it goes on with; empty: none."),
        "plan": record("What the plan of the run was made of; its identifier is that of the saved plan that is run, or "
                       "empty.", plan_basis({}, {})),
    }),
    "plan": ("The plan of the run: the second line.", PLAN_ELEMENTS),
    "intent": ("A phase is about to begin: its elements are no longer untouched.", {
        "phase": number("Number of the phase, from 0."),
        "elements": records("intendedElement", "The elements of the phase."),
    }),
    "reboot": ("The target was asked to reboot.", {"succeeded": SUCCEEDED}),
}
JOURNAL_EVENTS = ("locked", "phase", "transfer", "elementStart", "elementError", "elementEnd", "unlocked", "verify",
                  "runEnd")


def journal():
    described = named({**JOURNAL_RECORDS, **{name: EVENTS[name] for name in JOURNAL_EVENTS}})

    def extend(name, more, optional=()):
        description, const, members = described[name]
        described[name] = (description, const, {**members, **more}, optional)

    extend("elementEnd", WRITTEN_FILE, tuple(WRITTEN_FILE))
    extend("verify", {"lookSucceeded": flag("The target could be looked at."),
                      "elements": records("verifiedElement", "The verified elements.")})
    return lines("journal", "Line of a journal", "One line of the file of a run.", described, CHAIN,
                 {**BASIS_PARTS, "element": element(), **PLANNED_PARTS, "intendedElement": INTENDED_ELEMENT,
                  "counts": COUNTS, "verifiedElement": VERIFIED_ELEMENT})


SCHEMA_MAKERS = {"content": content, "elements": elements, "plan": plan, "explain": explain, "matrix": matrix,
                 "compare": compare, "check": check, "update": update, "verify": verify, "reboot": reboot,
                 "settings": settings, "history": history, "run": run, "saved-plan": saved_plan, "events": events,
                 "journal": journal}


def schema_texts():
    """{file name: contents}"""
    return {f"{name}.schema.json": json.dumps(make(), indent=4, ensure_ascii=False) + "\n"
            for name, make in SCHEMA_MAKERS.items()}


def main():
    stale = {name: contents for name, contents in schema_texts().items()
             if not (SCHEMAS / name).exists() or (SCHEMAS / name).read_text(encoding="utf-8") != contents}
    for name, contents in stale.items():
        if "--check" in sys.argv[1:]:
            print(f"docs/schemas/{name} is not what scripts/make_schemas.py writes")
        else:
            (SCHEMAS / name).write_text(contents, encoding="utf-8")
    return 1 if stale and "--check" in sys.argv[1:] else 0


if __name__ == "__main__":
    sys.exit(main())
