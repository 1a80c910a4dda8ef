"""The verbs that change a base archive or rack for a case. Each verb is one key of a patch object; README.md tells
what each means."""

import re


class CaseError(Exception):
    """A case that cannot be followed; the text says where and why."""


def only_keys(patch, required, optional=()):
    unknown = set(patch) - set(required) - set(optional)
    missing = set(required) - set(patch)
    if unknown or missing:
        raise CaseError(f"patch {patch}: unknown {sorted(unknown)}, missing {sorted(missing)}")


# --- any JSON document ------------------------------------------------------------------------------------------------

def step_into(value, key, path):
    try:
        return value[int(key)] if isinstance(value, list) else value[key]
    except (KeyError, IndexError, ValueError, TypeError):
        raise CaseError(f'path "{path}": there is no "{key}"') from None


def parent_of(document, path):
    """The container that holds the last component of `path`, and that component as a key of it."""
    *above, last = path.split("/")
    for key in above:
        document = step_into(document, key, path)
    return document, int(last) if isinstance(document, list) else last


def set_value(document, patch):
    only_keys(patch, ["set", "to"])
    container, key = parent_of(document, patch["set"])
    container[key] = patch["to"]


def drop_value(document, patch):
    only_keys(patch, ["drop"])
    container, key = parent_of(document, patch["drop"])
    step_into(container, key, patch["drop"])
    del container[key]


def append_value(document, patch):
    only_keys(patch, ["append", "value"])
    container, key = parent_of(document, patch["append"])
    step_into(container, key, patch["append"]).append(patch["value"])


# --- archives ---------------------------------------------------------------------------------------------------------

class Archive:
    """An archive in the making: description, recipes, and what is not made by recipes."""

    def __init__(self, description, recipes):
        self.description = description
        self.recipes = {recipe["name"]: recipe for recipe in recipes}
        self.description_text = None  # replaces the description
        self.missing = []  # files that are left out


def set_recipe(archive, patch):
    only_keys(patch, ["recipe"])
    archive.recipes[patch["recipe"]["name"]] = patch["recipe"]


def set_description_text(archive, patch):
    only_keys(patch, ["descriptionText"])
    archive.description_text = patch["descriptionText"]


def leave_out(archive, patch):
    only_keys(patch, ["missing"])
    archive.missing.append(patch["missing"])


ARCHIVE_VERBS = {
    "set": lambda archive, patch: set_value(archive.description, patch),
    "drop": lambda archive, patch: drop_value(archive.description, patch),
    "append": lambda archive, patch: append_value(archive.description, patch),
    "recipe": set_recipe,
    "descriptionText": set_description_text,
    "missing": leave_out,
}


# --- racks ------------------------------------------------------------------------------------------------------------

def instances(items):
    """(identifier, instance, item) of each sibling."""
    counts = {}
    for item in items:
        counts[item["id"]] = counts.get(item["id"], 0) + 1
        yield item["id"], item.get("instance", counts[item["id"]]), item


def find_item(target, address):
    """The item at `address`, and the list that holds it; "" is the root."""
    item, siblings = target["inventory"], None
    for component in filter(None, address.split("/")):
        name, number = re.fullmatch(r"(\w+?)(?:\[(\d+)\])?", component).groups()
        siblings = item.get("items", [])
        wanted = (name, int(number or 1))
        item = next((found for *key, found in instances(siblings) if tuple(key) == wanted), None)
        if item is None:
            raise CaseError(f'address "{address}": there is no {component}')
    return item, siblings


def change_item(target, patch):
    only_keys(patch, ["item"], ["parameters", "without", "update", "items"])
    item, _ = find_item(target, patch["item"])
    item.setdefault("parameters", {}).update(patch.get("parameters", {}))
    for name in patch.get("without", []):
        del item["parameters"][name]
    if "update" in patch:
        item["update"] = patch["update"]
    item.setdefault("items", []).extend(patch.get("items", []))


def drop_item(target, patch):
    only_keys(patch, ["dropItem"])
    item, siblings = find_item(target, patch["dropItem"])
    for _, number, sibling in list(instances(siblings)):
        sibling["instance"] = number  # the others keep their addresses
    siblings.remove(item)


def add_fault(target, patch):
    only_keys(patch, ["fault"], ["at", "id", "occurrence", "errors", "status"])
    fault = {("call" if key == "fault" else key): value for key, value in patch.items()}
    target.setdefault("faults", []).append(fault)


RACK_VERBS = {
    "set": set_value,
    "drop": drop_value,
    "append": append_value,
    "item": change_item,
    "dropItem": drop_item,
    "fault": add_fault,
}


def apply(verbs, subject, patches):
    """Follows `patches` in order."""
    for patch in patches:
        verb = next((verb for verb in patch if verb in verbs), None)
        if verb is None:
            raise CaseError(f"patch {patch}: no verb among {sorted(verbs)}")
        verbs[verb](subject, patch)
