"""The schemas: what they are, that they describe the documents of expected/, and that they refuse spoilt ones."""

import json
import re
import sys
import unittest
from pathlib import Path

try:
    import jsonschema
except ImportError:
    raise SystemExit("python3-jsonschema is missing (a Debian package)") from None

sys.path.insert(0, str(Path(__file__).resolve().parent))
from schemas import (NAMES, PROJECT, READ_NAMES, SCHEMAS, objects_in, schema_of, spoilt_versions,  # noqa: E402
                     strict_validator_of)

EXPECTED = Path(__file__).resolve().parent / "expected"
TYPES = {"std::uint32_t": "integer", "std::wstring": "string", "std::string": "string", "bool": "boolean"}
# Numbers of the query record that stand for a flag.
FLAGS = ("custom", "hasArchiveFile")


def expected_documents():
    """[(name, schema, document)]: the name of a file begins with that of the schema."""
    return [(path.stem, path.name.split(".")[0], json.loads(path.read_text(encoding="utf-8")))
            for path in sorted(EXPECTED.iterdir())]


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
        for name in ("elements", "plan", "explain", "matrix", "report"):
            self.check_record(name, "element", fields_of("KvTUpdateElementInfo"))
        for name in ("content", "plan", "report"):
            self.check_record(name, "entry", fields_of("KvTArchiveFileInfo"))
            self.check_record(name, "archive", [(field, "string") for field in info_fields()])

    def test_the_page_on_documents_names_every_word(self):
        text = (PROJECT / "docs" / "documents.md").read_text(encoding="utf-8")
        words = {word for name in NAMES for enumeration in values_of("enum", schema_of(name)) for word in enumeration}
        self.assertGreater(len(words), 60)
        for word in words - {None}:
            self.assertIn(f"`{word}`", text)


class ExpectedDocumentsTest(unittest.TestCase):
    """The documents of expected/, which the library writes (WholeDocumentsTest.cpp)."""

    def test_they_keep_to_their_schemas(self):
        for name, schema, document in expected_documents():
            with self.subTest(name):
                strict_validator_of(schema).validate(document)

    def test_spoilt_ones_do_not(self):
        tried = 0
        for name, schema, document in expected_documents():
            validator = strict_validator_of(schema)
            never_required = ("files",) if schema == "report" else ()
            for spoilt in spoilt_versions(document, never_required):
                self.assertFalse(validator.is_valid(spoilt), f"{name}: {spoilt}")
                tried += 1
        self.assertGreater(tried, 2000)

    def test_they_have_every_member_of_the_schemas(self):
        for name in set(NAMES) - {"events"}:
            found = {key for _, schema, document in expected_documents() if schema == name for key in document}
            self.assertEqual(found, set(schema_of(name)["properties"]), name)

    def test_a_report_of_a_plan_is_a_plan_with_more(self):
        document = next(document for name, _, document in expected_documents() if name == "report.plan")
        jsonschema.Draft202012Validator(schema_of("plan")).validate(document)


if __name__ == "__main__":
    unittest.main()
