#!/usr/bin/env python3
"""The schema of archive descriptions says of generated descriptions what the reader says of them, and what `check` writes
keeps to its own schema."""

import copy
import json
import random
import re
import unittest

try:
    import jsonschema
except ImportError:
    raise SystemExit("python3-jsonschema is missing (a Debian package)") from None

import tool_runs
from tool_runs import PROJECT, ScratchTest, run

SCHEMAS = PROJECT / "docs" / "schemas"

# What a schema cannot tell: which version texts are in range (their shape it does tell), and what lies in the folder.
# Besides, it takes numbers such as 2.0 and 1e3 for integers, which the reader refuses; none are generated.
NOT_EXPRESSIBLE = {"version-invalid", "archive-version-invalid", "format-version-invalid", "format-version-unsupported",
                   "checksum-file-missing", "checksum-unreadable", "not-accepted"}
# Everything else that the reader refuses in a JSON document.
EXPRESSIBLE = {"info-missing", "format-version-missing", "archive-version-missing", "product-name-missing",
               "archive-variant-invalid", "archive-name-missing", "files-missing", "entry-no-object",
               "feature-level-invalid", "mandatory-property", "board-without-type", "property-type",
               "property-elements", "mode-unknown", "entry-property-in-board", "id-and-target-path", "no-address"}

INFO = {"formatVersion": "1.0", "archiveVersion": "23.2.1", "productName": "P", "archiveVariant": "V", "archiveName": "N"}
OBJECT_KEYS = ("boardType", "boardVariant", "boardId", "id", "targetPath", "hwCompatibilityId", "swCompatibilityId",
               "version", "checksumCrc32", "mode")
ENTRY_KEYS = OBJECT_KEYS + ("name", "sequence", "featureLevel", "boards")
VALUES = (None, True, -1, 0, 3, 1.5, 18446744073709551615, 18446744073709551616, "", "QB", "1.0", "upgrade", [], {}, [1],
          ["QB", None], [None], [1, "QB"], [{"boardType": "QB"}], [5], {"boardType": "QB", "id": 1})
MUTATIONS = 700
# Programs that take a second to start say little more about the schema.
MUTATIONS_OF_LAUNCHED_PROGRAMS = 15


def validator_of(name):
    schema = json.loads((SCHEMAS / f"{name}.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


class Descriptions:
    """Descriptions made by chance: right ones, and such with a single fault."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def maybe(self, result, key, *values):
        if self.random.random() < 0.4:
            result[key] = self.random.choice(values)

    def conditions(self, result):
        self.maybe(result, "boardVariant", None, "A", ["A", None], [])
        self.maybe(result, "boardId", 0, 7, [6, 7])
        self.maybe(result, "hwCompatibilityId", 4294967295, [1])
        self.maybe(result, "swCompatibilityId", 131328, [1, 2])
        self.maybe(result, "comment", "x", 1, {"boardType": 5})

    def entry(self):
        entry = {"name": "a.bin", "sequence": self.random.randrange(100), "checksumCrc32": 5}
        kind = self.random.choice(("id", "targetPath"))
        address = {"id": self.random.randrange(9), "targetPath": "etc/x"}[kind]
        self.conditions(entry)
        self.maybe(entry, "version", None, "1.2", "7", "23.2b1.5", "1.2.3.4.5", "#8589934592")
        self.maybe(entry, "mode", "standard", "upgrade")
        self.maybe(entry, "featureLevel", 0, 2, 3)
        if self.random.random() < 0.5:
            entry.update({"boardType": self.random.choice(("QB", ["QB", "QC"])), kind: address})
            return entry
        at_entry = self.random.random() < 0.5
        entry["boards"] = [{"boardType": self.random.choice(("QB", ["QC"])), **({} if at_entry else {kind: address})}
                           for _ in range(self.random.randrange(1, 4))]
        for board in entry["boards"]:
            self.conditions(board)
        entry.update({kind: address} if at_entry else {})
        return entry

    def right(self):
        info = dict(INFO)
        if self.random.random() < 0.5:
            del info["archiveVariant"]
        return {"info": info, "files": [self.entry() for _ in range(self.random.randrange(4))]}

    def spoilt(self):
        description = self.right()
        description["files"].append(self.entry())
        objects = [description, description["info"]]
        for entry in description["files"]:
            objects += [entry] * 3 + entry.get("boards", []) * 2
        self.spoil(self.random.choice(objects), description)
        return description

    def spoil(self, found, description):
        key = self.random.choice(list(found))
        how = self.random.randrange(4)
        if how == 0:
            del found[key]
        elif how == 1:
            found[key] = copy.deepcopy(self.random.choice(VALUES))
        elif how == 2:
            found[self.random.choice(ENTRY_KEYS)] = copy.deepcopy(self.random.choice(VALUES))
        else:
            items = found.get("boards", description["files"])
            items[self.random.randrange(len(items))] = copy.deepcopy(self.random.choice(VALUES))


class ArchiveSchemaTest(ScratchTest):
    """Each test writes archives and has them checked."""

    def setUp(self):
        super().setUp()
        (self.scratch / "a.bin").write_text("content")
        self.schema = validator_of("archive")
        self.findings = validator_of("check")

    def check(self, folder):
        """The codes of the errors in the archive of a folder."""
        done = run("check", "-a", folder, "--format", "json")
        document = json.loads(done.output)
        self.findings.validate(document)
        errors = [finding["code"] for finding in document["findings"] if finding["severity"] == "error"]
        self.assertEqual((done.code, document["errors"]), (3 if errors else 0, len(errors)))
        return set(errors)

    def check_description(self, description):
        (self.scratch / "archive.json").unlink(missing_ok=True)
        (self.scratch / "archive.json").write_text(json.dumps(description), encoding="utf-8")
        return self.check(self.scratch)

    def compare(self, description):
        """Holds the schema against the reader; the codes."""
        codes = self.check_description(description)
        self.assertLessEqual(codes, EXPRESSIBLE | NOT_EXPRESSIBLE)
        if codes & EXPRESSIBLE:
            self.assertFalse(self.schema.is_valid(description), f"{codes}: {description}")
        elif not codes:
            self.schema.validate(description)
        return codes

    def test_right_descriptions_are_valid(self):
        descriptions = Descriptions(1)
        for _ in range(self.rounds() // 10):
            self.assertEqual(self.compare(descriptions.right()), set())

    def test_the_schema_refuses_what_the_reader_refuses(self):
        descriptions = Descriptions(2)
        met, right = set(), 0
        for _ in range(self.rounds()):
            codes = self.compare(descriptions.spoilt())
            met |= codes
            right += not codes
        if not tool_runs.arguments.launcher:
            self.assertGreater(right, self.rounds() // 10)
            self.assertLessEqual(EXPRESSIBLE, met)

    def test_faults_that_chance_seldom_makes(self):
        entry = {"name": "a.bin", "sequence": 1, "boardType": "QB", "id": 1, "checksumCrc32": 5}
        boards = {key: value for key, value in entry.items() if key != "boardType"}
        for wrong in ({**boards, "boards": []}, {**boards, "boards": {}}, {**boards, "boards": None},
                      {**entry, "boards": [{"boardType": "QB"}]}, boards,
                      {**boards, "boards": [{"boardType": "QB"}, {"boardType": "QB", "targetPath": "x"}]},
                      {**boards, "boards": [{"boardType": ["QB", None]}]}, {**entry, "boardVariant": [None, 1]},
                      {**entry, "featureLevel": "1"}, {**entry, "featureLevel": None}):
            self.assertTrue(self.compare({"info": INFO, "files": [wrong]}), wrong)

    @staticmethod
    def rounds():
        return MUTATIONS_OF_LAUNCHED_PROGRAMS if tool_runs.arguments.launcher else MUTATIONS

    def test_the_shape_of_a_version_is_told(self):
        def description(version):
            entry = {"name": "a.bin", "sequence": 1, "boardType": "QB", "id": 1, "checksumCrc32": 5, "version": version}
            return {"info": INFO, "files": [entry]}
        for version in ("", "x", "0.0", "1.", "1..2", "1.2.3.4.5.6", "1.2c3", "v1", "#", "1.2b", " 1.0"):
            self.assertFalse(self.schema.is_valid(description(version)), version)
            self.assertEqual(self.check_description(description(version)), {"version-invalid"}, version)
        for version in ("2.0", "x", "0.1", "10", "11.0"):
            self.assertFalse(self.schema.is_valid({"info": {**INFO, "formatVersion": version}, "files": []}), version)
        # Only its range is wrong.
        self.assertTrue(self.schema.is_valid(description("256.0")))
        self.assertEqual(self.check_description(description("256.0")), {"version-invalid"})

    def test_the_example_is_valid(self):
        archive, _ = self.lay_out_examples()
        self.assertEqual(self.check(archive), set())
        self.schema.validate(json.loads((archive / "archive.json").read_text(encoding="utf-8")))

    def test_the_document_on_the_check_names_every_code(self):
        text = (PROJECT / "docs" / "archive-check.md").read_text(encoding="utf-8")
        errors, warnings = (re.findall(r"^\| `([a-z-]+)` \|", part, re.MULTILINE) for part in text.split("## ")[1:])
        self.assertEqual(set(errors), EXPRESSIBLE | NOT_EXPRESSIBLE | {"description-unreadable", "invalid-json"})
        table = (PROJECT / "src" / "check" / "FindingTable.cpp").read_text(encoding="utf-8")
        codes = set(re.findall(r"\{\s*\"([a-z-]+)\", warning,", table))
        self.assertEqual(set(warnings), codes)
        self.assertGreater(len(codes), 15)
        self.assertEqual((len(errors), len(warnings)), (len(set(errors)), len(set(warnings))))

    def test_every_key_has_a_title_and_a_description(self):
        definitions = self.schema.schema["$defs"]
        objects = [self.schema.schema, *(definitions[name] for name in ("info", "supportedEntry", "board"))]
        for found in objects:
            for key, value in found["properties"].items():
                described = {**definitions.get(value.get("$ref", "").removeprefix("#/$defs/"), {}), **value}
                self.assertTrue(described.get("description"), key)
                self.assertTrue(described.get("title") or "not" in value, key)
        self.assertEqual(set(definitions["supportedEntry"]["properties"]), {"comment", *ENTRY_KEYS})


if __name__ == "__main__":
    tool_runs.main()
