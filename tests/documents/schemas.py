"""The schemas of docs/schemas, made strict for tests: readers ignore members that they do not know, tests refuse
them."""

import copy
import json
from pathlib import Path

import jsonschema

PROJECT = Path(__file__).resolve().parents[2]
SCHEMAS = PROJECT / "docs" / "schemas"

# Of what is written, and of what is read.
NAMES = ("content", "elements", "plan", "explain", "matrix", "check", "compare", "update", "verify", "reboot", "settings",
         "history", "run", "saved-plan", "events", "journal")
READ_NAMES = ("archive",)
# Of lines, each of which is one of several events.
LINE_NAMES = ("events", "journal")
# The part of a schema for events that this version does not write.
OTHER_EVENT = "otherEvent"


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
    """The same schema without room for other members and events."""
    schema = copy.deepcopy(schema)
    if schema.get("$defs", {}).pop(OTHER_EVENT, None):
        schema["oneOf"].remove({"$ref": f"#/$defs/{OTHER_EVENT}"})
    for described in list(objects_in(schema)):
        described["additionalProperties"] = False
    return schema


def validator_of(name):
    """Knows this one file, as readers do."""
    return jsonschema.Draft202012Validator(schema_of(name))


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


def spoilt_versions(document):
    """Copies of a document, each with one member missing, added, or of a wrong type."""
    for number, shape in enumerate(objects_of(document)):
        for change in [*((key, how) for key in shape for how in ("retype", "drop")), ("surplus", "retype")]:
            yield with_change(document, number, *change)


def extended_versions(document):
    """Copies of a document, each with a member more."""
    for number, _ in enumerate(objects_of(document)):
        yield with_change(document, number, "surplus", "retype")


def with_change(document, number, key, how):
    changed = copy.deepcopy(document)
    spoil(next(found for index, found in enumerate(objects_of(changed)) if index == number), key, how)
    return changed


def spoil(found, key, how):
    if how == "drop":
        del found[key]
    else:
        found[key] = {"surplus": 0} if not isinstance(found.get(key), bool) else int(found[key])
