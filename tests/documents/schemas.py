"""The schemas of docs/schemas, made strict for tests: readers ignore members that they do not know, tests refuse
them."""

import copy
import json
from pathlib import Path

import jsonschema

PROJECT = Path(__file__).resolve().parents[2]
SCHEMAS = PROJECT / "docs" / "schemas"

# Of the documents that are written, and of what is read.
NAMES = ("content", "elements", "plan", "explain", "matrix", "check", "report", "events")
READ_NAMES = ("archive",)


def schema_of(name):
    return json.loads((SCHEMAS / f"{name}.schema.json").read_text(encoding="utf-8"))


def objects_in(schema):
    """Every schema inside `schema` that describes an object with members of its own."""
    if isinstance(schema, dict):
        if "properties" in schema and "type" in schema:
            yield schema
        for value in schema.values():
            yield from objects_in(value)
    elif isinstance(schema, list):
        for value in schema:
            yield from objects_in(value)


def closed(schema):
    """The same schema without room for other members."""
    schema = copy.deepcopy(schema)
    for described in list(objects_in(schema)):
        described["additionalProperties"] = False
    return schema


def strict_validator_of(name):
    """Knows this one file, and no member that it does not name."""
    return jsonschema.Draft202012Validator(closed(schema_of(name)))


def objects_of(value):
    """Every JSON object inside `value`, itself included."""
    if isinstance(value, dict):
        yield value
        for member in value.values():
            yield from objects_of(member)
    elif isinstance(value, list):
        for item in value:
            yield from objects_of(item)


def spoilt_versions(document, never_required=()):
    """Copies of a document, each with one member missing, added, or of a wrong type."""
    for number, shape in enumerate(objects_of(document)):
        changes = [(key, "retype") for key in shape] + [(key, "drop") for key in shape if key not in never_required]
        for change in [*changes, ("surplus", "retype")]:
            spoilt = copy.deepcopy(document)
            spoil(next(found for index, found in enumerate(objects_of(spoilt)) if index == number), *change)
            yield spoilt


def spoil(found, key, how):
    if how == "drop":
        del found[key]
    else:
        found[key] = {"surplus": 0} if not isinstance(found.get(key), bool) else int(found[key])
