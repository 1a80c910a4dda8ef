"""The schemas: what they are, that they describe the expected documents, and that they refuse spoilt ones."""

import json
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

try:
    import jsonschema
except ImportError:
    raise SystemExit("python3-jsonschema is missing (a Debian package)") from None

sys.path.insert(0, str(Path(__file__).resolve().parent))
from schemas import (LINE_NAMES, NAMES, PROJECT, READ_NAMES, SCHEMAS, closed, extended_versions, objects_in,  # noqa: E402
                     schema_of, spoilt_versions, strict_validator_of, validator_of)

# The tests of these rooms write documents.
EXPECTED = [PROJECT / "tests" / room / "expected" for room in ("documents", "journal", "plans")]
TYPES = {"std::uint32_t": "integer", "std::wstring": "string", "std::string": "string", "bool": "boolean"}
# Numbers of the query record that stand for a flag.
FLAGS = ("custom", "hasArchiveFile")
# The documents of sessions, which have the same members.
SESSIONS = ("plan", "update", "verify", "reboot")


def texts_of(path):
    """The documents of a file: one, or one in each line."""
    text = path.read_text(encoding="utf-8")
    return text.splitlines() if path.suffix == ".jsonl" else [text]


def expected_documents():
    """[(name, schema, document)]: the name of a file begins with that of the schema."""
    return [(path.name, path.name.split(".")[0], json.loads(text))
            for folder in EXPECTED for path in sorted(folder.iterdir()) for text in texts_of(path)]


def fields_of(record):
    """The (name, JSON type) of each field of a query record, as its header says."""
    header = (PROJECT / "include" / "KvTQueryRecords.h").read_text(encoding="utf-8")
    body = re.search(rf"struct {record} \{{(.*?)\n\}};", header, re.DOTALL).group(1)
    fields = re.findall(r"^\s*([\w:]+) (\w+)(?: = \w+)?;", body, re.MULTILINE)
    return [(name, "boolean" if name in FLAGS else TYPES[kind]) for kind, name in fields]


def info_fields():
    """The texts that the query of the archive's information fills."""
    header = (PROJECT / "include" / "KvIReflasher.h").read_text(encoding="utf-8")
    return re.findall(r"std::wstring& (\w+)", re.search(r"void getArchiveInfo\((.*?)\)", header, re.DOTALL).group(1))


def words_of_the_sources():
    """Every word of every enumeration, but for "none", which documents write as null."""
    code = (PROJECT / "src" / "documents" / "DocumentCodes.cpp").read_text(encoding="utf-8")
    tables = re.findall(r"wordsUpTo<\w+::\w+>\((.*?)\);", code, re.DOTALL)
    return {word for table in tables for word in re.findall(r'"([^"]*)"', table)} - {"none"}


def words_of_the_schemas():
    return {word for name in NAMES for words in values_of("enum", closed(schema_of(name))) for word in words} - {None}


def events_of_the_schema(name):
    """{name: members} of each event that is written."""
    described = [part["properties"] for part in closed(schema_of(name))["$defs"].values()]
    return {members["event"]["const"]: set(members) for members in described if "event" in members}


def values_of(key, schema):
    """Every value of this key inside a schema."""
    if isinstance(schema, dict):
        if key in schema:
            yield schema[key]
        for value in schema.values():
            yield from values_of(key, value)
    elif isinstance(schema, list):
        for value in schema:
            yield from values_of(key, value)


class SchemasTest(unittest.TestCase):
    """The schemas themselves."""

    def test_each_is_a_schema_of_its_draft(self):
        for name in NAMES:
            with self.subTest(name):
                self.assertEqual(schema_of(name)["$schema"], "https://json-schema.org/draft/2020-12/schema")
                jsonschema.Draft202012Validator.check_schema(schema_of(name))

    def test_there_is_no_other(self):
        self.assertEqual(sorted(path.name for path in SCHEMAS.iterdir()),
                         sorted(f"{name}.schema.json" for name in NAMES + READ_NAMES))

    def test_each_has_an_identifier_of_its_own_and_needs_no_other_file(self):
        for name in NAMES:
            with self.subTest(name):
                schema = schema_of(name)
                self.assertEqual(schema["$id"], f"urn:kvreflash:schema:{name}:1")
                self.assertEqual(set(values_of("$ref", schema)), {f"#/$defs/{part}" for part in schema.get("$defs", {})})

    def test_readers_may_meet_members_that_are_not_described(self):
        for name in NAMES:
            self.assertNotIn("additionalProperties", json.dumps(schema_of(name)), name)

    def test_every_member_is_described(self):
        for name in NAMES:
            described = list(objects_in(schema_of(name)))
            self.assertTrue(described)
            for schema in described:
                for key, value in schema["properties"].items():
                    with self.subTest(name, key=key):
                        self.assertTrue(value["description"])

    def check_record(self, name, record, fields):
        properties = schema_of(name)["$defs"][record]["properties"]
        self.assertEqual(list(properties)[:len(fields)], [field for field, _ in fields])
        for field, kind in fields:
            with self.subTest(field):
                found = properties[field]["type"]
                self.assertEqual(kind, found[0] if isinstance(found, list) else found)

    def test_the_records_have_the_fields_of_the_query_records(self):
        self.assertEqual(len(fields_of("KvTUpdateElementInfo")), 20)
        for name in ("elements", "explain", "matrix", *SESSIONS):
            self.check_record(name, "element", fields_of("KvTUpdateElementInfo"))
        for name in ("content", *SESSIONS):
            self.check_record(name, "entry", fields_of("KvTArchiveFileInfo"))
            self.check_record(name, "archive", [(field, "string") for field in info_fields()])

    def test_the_documents_of_sessions_have_the_same_members(self):
        plan = schema_of("plan")
        for name in SESSIONS:
            schema = schema_of(name)
            self.assertEqual(list(schema["properties"]), list(plan["properties"]))
            self.assertEqual(schema["$defs"], plan["$defs"])
            self.assertEqual(schema["properties"]["format"]["properties"]["name"]["const"], f"kvreflash.{name}")

    def test_the_words_are_those_of_the_sources(self):
        self.assertEqual(words_of_the_schemas(), words_of_the_sources() | {"update", "leave"})

    def test_an_event_of_a_later_version_is_for_readers_to_ignore(self):
        later = {"time": "2026-03-01T12:34:56.789Z", "event": "pause", "seconds": 3}
        validator_of("events").validate(later)
        self.assertFalse(strict_validator_of("events").is_valid(later))
        self.assertFalse(validator_of("events").is_valid({**later, "event": "phase"}), "it has no value")

    def test_so_is_one_in_a_journal(self):
        later = {"number": 7, "previous": "0" * 64, "time": "2026-03-01T12:34:56.789Z", "event": "pause"}
        validator_of("journal").validate(later)
        self.assertFalse(strict_validator_of("journal").is_valid(later))
        del later["previous"]
        self.assertFalse(validator_of("journal").is_valid(later), "it is not chained")

    def test_the_page_on_documents_names_every_word(self):
        text = (PROJECT / "docs" / "documents.md").read_text(encoding="utf-8")
        words = {word for name in NAMES for enumeration in values_of("enum", schema_of(name)) for word in enumeration}
        self.assertGreater(len(words), 60)
        for word in words - {None}:
            self.assertIn(f"`{word}`", text)


class ExpectedDocumentsTest(unittest.TestCase):
    """The documents of the folders expected, which the library writes (ExpectedDocuments.h)."""

    def test_they_keep_to_their_schemas(self):
        for name, schema, document in expected_documents():
            with self.subTest(name):
                strict_validator_of(schema).validate(document)

    def test_each_schema_validates_alone_as_a_file(self):
        for name in NAMES:
            with self.subTest(name), tempfile.TemporaryDirectory() as folder:
                shutil.copy(SCHEMAS / f"{name}.schema.json", folder)
                documents = [document for _, schema, document in expected_documents() if schema == name]
                self.assertTrue(documents)
                self.assertEqual(self.validate_in(folder, name, documents), 0)
                self.assertNotEqual(self.validate_in(folder, name, [{}]), 0)

    def validate_in(self, folder, name, documents):
        """The exit code of the package's own program, which sees this folder alone."""
        instances = []
        for number, document in enumerate(documents):
            Path(folder, f"{number}.json").write_text(json.dumps(document), encoding="utf-8")
            instances += ["-i", f"{number}.json"]
        return subprocess.run([sys.executable, "-m", "jsonschema", *instances, f"{name}.schema.json"], cwd=folder,
                              capture_output=True, check=False).returncode

    def test_spoilt_ones_do_not(self):
        tried = 0
        for name, schema, document in expected_documents():
            validator = strict_validator_of(schema)
            for spoilt in spoilt_versions(document):
                self.assertFalse(validator.is_valid(spoilt), f"{name}: {spoilt}")
                tried += 1
        self.assertGreater(tried, 3000)

    def test_readers_accept_a_member_that_is_not_described_and_tests_refuse_it(self):
        tried = 0
        for name, schema, document in expected_documents():
            validator, strict_validator = validator_of(schema), strict_validator_of(schema)
            for extended in extended_versions(document):
                validator.validate(extended)
                self.assertFalse(strict_validator.is_valid(extended), f"{name}: {extended}")
                tried += 1
        self.assertGreater(tried, 150)

    def test_they_have_every_member_of_the_schemas(self):
        for name in set(NAMES) - set(LINE_NAMES):
            found = {key for _, schema, document in expected_documents() if schema == name for key in document}
            self.assertEqual(found, set(schema_of(name)["properties"]), name)

    def test_they_have_every_event(self):
        for name in LINE_NAMES:
            found = {}
            for line in (document for _, schema, document in expected_documents() if schema == name):
                found.setdefault(line["event"], set()).update(line)
            self.assertEqual(found, events_of_the_schema(name))


if __name__ == "__main__":
    unittest.main()
