#!/usr/bin/env python3
"""The JSON that the tool writes keeps to the schemas that the project ships, and they to the records of the library."""

import copy
import functools
import json
import re
import unittest

try:
    import jsonschema
except ImportError:
    raise SystemExit("python3-jsonschema is missing (a Debian package)") from None

import tool_runs
from tool_runs import PROJECT, ScratchTest, run

SCHEMAS = PROJECT / "docs" / "schemas"
NAMES = ("content", "elements", "plan", "events", "matrix", "explain", "report", "findings")
# Of what the tool reads; test_archive_schema.py holds it against the reader.
READ_NAMES = ("archive",)
TYPES = {"std::uint32_t": "integer", "std::wstring": "string", "std::string": "string", "bool": "boolean"}

# Archives and racks that differ in what their records hold: many boards of an entry, no entries, UTF-8, unknown
# versions, invalid and inactive elements, custom ones, files of the target, names of units and racks.
CASES = ("archive-content", "archive-content-empty", "element-table", "records-as-json", "update-plan",
         "which-elements-are-up-to-date", "files-written-to-target", "file-listed-by-target", "custom-elements",
         "elements-in-groups", "empty-target", "records-of-odd-targets")


def schema_of(name):
    return json.loads((SCHEMAS / f"{name}.schema.json").read_text(encoding="utf-8"))


@functools.cache
def validator_of(name):
    files = {(SCHEMAS / f"{other}.schema.json").as_uri(): schema_of(other) for other in NAMES}
    base = (SCHEMAS / f"{name}.schema.json").as_uri()
    resolver = jsonschema.RefResolver(base_uri=base, referrer=files[base], store=files)
    return jsonschema.Draft202012Validator(files[base], resolver=resolver)


def fields_of(record):
    """The (name, type) of each field of a query record, as its header says."""
    header = (PROJECT / "include" / "KvTQueryRecords.h").read_text(encoding="utf-8")
    body = re.search(rf"struct {record} \{{(.*?)\n\}};", header, re.DOTALL).group(1)
    return [(name, kind) for kind, name in re.findall(r"^\s*([\w:]+) (\w+)(?: = \w+)?;", body, re.MULTILINE)]


def info_fields():
    """The texts that the query of the archive's information fills."""
    header = (PROJECT / "include" / "KvIReflasher.h").read_text(encoding="utf-8")
    return re.findall(r"std::wstring& (\w+)", re.search(r"void getArchiveInfo\((.*?)\)", header, re.DOTALL).group(1))


def type_of(schema, files):
    """The JSON type that a property's schema allows."""
    if "enum" in schema:
        return {int: "integer"}[type(schema["enum"][0])]
    if "const" in schema:
        return {str: "string"}[type(schema["const"])]
    if "anyOf" in schema:
        kinds = {type_of(one, files) for one in schema["anyOf"]}
        return kinds.pop() if len(kinds) == 1 else None
    if "$ref" in schema:
        file, _, path = schema["$ref"].partition("#/")
        whole = schema_of(file.removesuffix(".schema.json")) if file else files
        for key in path.split("/"):
            whole = whole[key]
        return type_of(whole, files)
    return schema["type"]


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

    def objects(self, schema):
        """Every schema inside `schema` that describes an object with properties of its own."""
        if isinstance(schema, dict):
            if "properties" in schema and "type" in schema:
                yield schema
            for value in schema.values():
                yield from self.objects(value)
        elif isinstance(schema, list):
            for value in schema:
                yield from self.objects(value)

    def test_every_property_is_required_and_described_and_no_other_is_allowed(self):
        for name in NAMES:
            described = list(self.objects(schema_of(name)))
            self.assertTrue(described)
            for schema in described:
                with self.subTest(name, properties=list(schema["properties"])):
                    self.assertEqual(schema["required"], list(schema["properties"]))
                    self.assertIs(schema["additionalProperties"], False)
                    self.assertTrue(schema["description"])
                    for key, value in schema["properties"].items():
                        self.assertTrue("description" in value or "$ref" in value, key)

    def check_record(self, name, record, fields):
        schema = schema_of(name)["$defs"][record]
        self.assertEqual(list(schema["properties"]), [field for field, _ in fields])
        for field, kind in fields:
            with self.subTest(field):
                self.assertEqual(type_of(schema["properties"][field], schema_of(name)), TYPES[kind])

    def test_the_fields_are_those_of_the_query_records(self):
        self.assertEqual(len(fields_of("KvTUpdateElementInfo")), 20)
        self.check_record("elements", "element", fields_of("KvTUpdateElementInfo"))
        self.check_record("content", "file", fields_of("KvTArchiveFileInfo"))
        self.check_record("content", "archive", [(name, "std::wstring") for name in info_fields()])


class DocumentsTest(ScratchTest):
    """What the tool really writes."""

    def documents(self, archive, rack):
        """The document of each command."""
        target = ("-t", "127.0.0.1", "--emulate", rack)
        lines = {"content": ("-a", archive), "elements": target, "plan": ("-a", archive, *target)}
        for command, line in lines.items():
            done = run(command, "--json", *line)
            self.assertTrue(done.output, done.errors.decode())
            yield command, json.loads(done.output)

    def check(self, archive, rack):
        for command, document in self.documents(archive, rack):
            with self.subTest(command):
                validator_of(command).validate(document)
                for records, record in (("elements", "KvTUpdateElementInfo"), ("files", "KvTArchiveFileInfo")):
                    names = [name for name, _ in fields_of(record)]
                    for found in document.get(records, []):
                        self.assertEqual(list(found), names)
                self.assertEqual(list(document.get("archive", dict.fromkeys(info_fields()))), info_fields())

    def test_the_examples_keep_to_the_schemas(self):
        self.check(*self.lay_out_examples())

    def test_the_session_cases_keep_to_the_schemas(self):
        for name in CASES:
            with self.subTest(name):
                self.check(*self.lay_out_case(name))

    def matrix(self, archive, *racks):
        """The document of a matrix, some of whose targets may fail."""
        done = run("matrix", "--json", "-a", archive, *(word for rack in racks for word in ("--emulate", rack)))
        self.assertTrue(done.output, done.errors.decode())
        return json.loads(done.output)

    def test_matrices_keep_to_the_schema(self):
        archive, rack = self.lay_out_examples()
        racks = [rack, *(self.lay_out_case(name)[1] for name in CASES), self.scratch / "no rack"]
        document = self.matrix(archive, *racks)
        validator_of("matrix").validate(document)
        self.assertEqual([target["folder"] for target in document["targets"]], [str(folder) for folder in racks])
        self.assertIn("error", document["targets"][-1])
        states = {element["state"] for target in document["targets"] for element in target.get("elements", [])}
        self.assertEqual(states, {"would-update", "up-to-date", "no-entry", "disabled"})
        self.assertEqual({target.get("supported") for target in document["targets"]}, {True, False, None})

    def test_a_spoilt_matrix_does_not_keep_to_its_schema(self):
        archive, rack = self.lay_out_case("records-as-json")
        document = self.matrix(archive, rack, self.scratch / "no rack")
        validator_of("matrix").validate(document)
        for spoilt in spoilt_versions(document):
            self.assertFalse(validator_of("matrix").is_valid(spoilt), spoilt)

    def explanation(self, archive, rack, *options):
        done = run("explain", "--json", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, *options)
        self.assertEqual(done.code, 0, done.errors.decode())
        return json.loads(done.output)

    def test_explanations_keep_to_the_schema(self):
        decisions = set()
        for folders in (self.lay_out_examples(), *map(self.lay_out_case, CASES)):
            for options in ((), ("--skip-custom",), ("--configuration",)):
                document = self.explanation(*folders, *options)
                validator_of("explain").validate(document)
                decisions |= {element["decision"] for element in document["elements"]}
        self.assertEqual(decisions, set(schema_of("explain")["$defs"]["element"]["properties"]["decision"]["enum"]))

    def test_a_spoilt_explanation_does_not_keep_to_its_schema(self):
        document = self.explanation(*self.lay_out_examples(), "-b", "QB4120")
        for spoilt in spoilt_versions(document):
            self.assertFalse(validator_of("explain").is_valid(spoilt), spoilt)

    def report(self, command, archive, rack, *options):
        file = self.scratch / "report.json"
        run(command, "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--report", file, *options)
        return json.loads(file.read_text(encoding="utf-8"))

    def test_reports_keep_to_the_schema(self):
        archive, rack = self.lay_out_examples()
        documents = [self.report("plan", archive, rack), self.report("plan", archive, rack, "-d", "none.json"),
                     self.report("update", archive, rack, "--disable", "3"),
                     self.report("update", archive, rack, "--force", "--verify", "--reboot"),
                     self.report("update", *self.lay_out_case("events"))]
        for document in documents:
            validator_of("report").validate(document)
        self.assertEqual([document["exitCode"] for document in documents], [0, 1, 0, 0, 1])
        for spoilt in spoilt_versions(documents[2]):
            self.assertFalse(validator_of("report").is_valid(spoilt), spoilt)

    def notifications(self, folder, exit_code):
        archive, rack = folder
        events = self.scratch / "notifications"
        done = run("update", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--events", events)
        self.assertEqual(done.code, exit_code, done.output.decode())
        return [json.loads(line) for line in events.read_text(encoding="utf-8").splitlines()]

    def test_notifications_keep_to_the_schema(self):
        lines = self.notifications(self.lay_out_examples(), 0) + self.notifications(self.lay_out_case("events"), 1)
        self.assertEqual({line["event"] for line in lines}, {"phase", "progress", "elementError"})
        for line in lines:
            validator_of("events").validate(line)
            for spoilt in spoilt_versions(line):
                self.assertFalse(validator_of("events").is_valid(spoilt), spoilt)

    def test_a_spoilt_document_does_not_keep_to_its_schema(self):
        tried = 0
        for command, document in self.documents(*self.lay_out_case("records-as-json")):
            validator = validator_of(command)
            validator.validate(document)
            for spoilt in spoilt_versions(document):
                self.assertFalse(validator.is_valid(spoilt), f"{command}: {spoilt}")
                tried += 1
        self.assertGreater(tried, 100)


def objects_of(value, place=""):
    """Every JSON object inside `value`, itself included, with the keys that lead to it."""
    if isinstance(value, dict):
        yield place, value
        for key, member in value.items():
            yield from objects_of(member, f"{place}/{key}")
    elif isinstance(value, list):
        for item in value:
            yield from objects_of(item, place)


def spoilt_versions(document):
    """Copies of a document, each with one property missing, added, or of a wrong type. Of the objects at one place that
    have values of the same types in the same properties one stands for all."""
    seen = set()
    for number, (place, found) in enumerate(objects_of(document)):
        kind = (place, *((key, type(value)) for key, value in found.items()))
        if kind in seen:
            continue
        seen.add(kind)
        for change in [(key, how) for key in found for how in ("drop", "retype")] + [("surplus", "retype")]:
            spoilt = copy.deepcopy(document)
            spoil(next(other for index, (_, other) in enumerate(objects_of(spoilt)) if index == number), *change)
            yield spoilt


def spoil(found, key, how):
    if how == "drop":
        del found[key]
    else:
        found[key] = {"surplus": 0} if not isinstance(found.get(key), bool) else int(found[key])


if __name__ == "__main__":
    tool_runs.main()
