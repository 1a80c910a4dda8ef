#!/usr/bin/env python3
"""A rack with a thousand update elements: what the tool prints is compared with what a small model of our own makes of
the same inventory."""

import itertools
import json

import tool_runs
from tool_runs import ScratchTest, cases, run

BANNER = (f"\nKorvel Device Update Tool, Vs {cases.printed_version()}\n"
          "Copyright (c) 2026 Korvel. All rights reserved.\n \n")
FOUND = "HCN found: HCN[1]\nCN found: HCN[1]/CN[1]\nReboot support status: 0\n"
TARGET = ("-t", "127.0.0.1", "--emulate", "rack")
ROUTERS = 12
MODULES = 26  # of each router, around the inner one

# (name, kind, installed version, offered version, sequence; no offered version: the archive has no entry)
NODE = [("UserFirmware", "Firmware", "23.2a12", "23.2.1", 50), ("UserIpl", "Bootloader", "5.0", "5.1", 10),
        ("UserFpga", "FPGA", "1.0", "1.0", 20), ("Spare", "Spare", "0.0", "2.0", 10)]
ROUTER = [("UserFirmware", "Firmware", "3.5", "3.6", 40)]
MODULE = [("UserFirmware", "Firmware", "4.0", "4.1", 30), ("IoCpld", "CPLD", "2.0", "2.0", 30),
          ("Notes", "Notes", "1.1b3", None, 0)]


class Element:
    """An element as the model sees it."""

    def __init__(self, board, number, row, unit):
        self.type, self.serial = board
        self.id = number
        self.name, self.kind, self.installed, self.offered, self.sequence = row
        self.unit = unit
        self.checksum = 1000 * number + len(self.type)
        # What is offered in the version that is installed has the same checksum.
        self.offered_checksum = self.checksum + (self.installed != self.offered)

    @property
    def display(self):
        return f"{self.type}, SN {self.serial}, {self.kind}"

    @property
    def file(self):
        return f"{self.type}-{self.id}.bin"

    @property
    def up_to_date(self):
        return self.offered == self.installed

    @property
    def updated(self):
        return self.offered is not None and not self.up_to_date

    @property
    def answers(self):
        """How far its update is, as [done, total] for each query before the last one."""
        return [[step * (self.serial % 7), 40 + self.serial % 13] for step in range(1, (self.serial + self.id) % 6 + 1)]

    def percentage(self, query):
        """What it adds to the progress of its phase at a query, counted from 0."""
        done, total = self.answers[query] if query < len(self.answers) else (1, 1)
        return done * 100 // total

    def item(self):
        return {"id": "UPDATE_ELEMENT", "update": {"progress": self.answers}, "parameters": {
            "ID": self.id, "NAME": self.name, "VERSION": self.installed, "VERSION_HISTORY": "", "CONFIGURATION": 0,
            "VALID": 1, "ACTIVE": 1, "CHECKSUM_CRC32": self.checksum}}


class Rack:
    """The inventory, and its elements in the order of the element list: by unit, units in the order of their first
    element."""

    def __init__(self):
        self.walked = []
        self.items = []  # the elements as the target's description has them
        serials = itertools.count(100001)
        node = self.board("HCN", "QB4120", 2815, NODE, "Main")
        node["items"].append({"id": "CN", "items": [{"id": "BACKPLANE", "parameters": {"PRODUCT/UNITNAME": "Main"}}]})
        routers = [self.router(number, serials) for number in range(1, ROUTERS + 1)]
        self.inventory = {"id": "ROOT", "items": [node, {"id": "NETWORK", "items": routers}]}
        units = list(dict.fromkeys(element.unit for element in self.walked))
        self.elements = sorted(self.walked, key=lambda element: units.index(element.unit))
        phases = sorted({element.sequence for element in self.elements if element.updated})
        for element in self.elements:
            element.phase = phases.index(element.sequence) if element.updated else 0
        self.phases = len(phases)

    def board(self, identifier, board_type, serial, rows, unit, **parameters):
        elements = [Element((board_type, serial), number, row, unit) for number, row in enumerate(rows, 1)]
        items = [element.item() for element in elements]
        self.walked += elements
        self.items += items
        return {"id": identifier,
                "parameters": {"PRODUCT/BOARD_TYPE": board_type, "PRODUCT/SERIAL_NUMBER": serial,
                               "PRODUCT/SLOT_COUNT": 0, **parameters},
                "items": [{"id": "UPDATE_INFO", "items": items}]}

    def router(self, number, serials):
        """A router between whose modules stands another unit."""
        outer, inner = f"Router {number}", f"Inner {number}"
        item = self.board("IOROUTER", "QB8100", next(serials), ROUTER, outer, **{"PRODUCT/UNITNAME": outer})
        for half in range(2):
            for _ in range(MODULES // 2):
                item["items"].append(self.board("IOMODULE", "QB7001", next(serials), MODULE, outer))
            if half == 0:
                item["items"].append(self.board("IOROUTER", "QB8100", next(serials), ROUTER, inner,
                                                **{"PRODUCT/UNITNAME": inner}))
                item["items"][-1]["items"].append(self.board("IOMODULE", "QB7001", next(serials), MODULE, inner))
        return item


def entries():
    rows = [(board, number, row) for board, rows in (("QB4120", NODE), ("QB8100", ROUTER), ("QB7001", MODULE))
            for number, row in enumerate(rows, 1) if row[3] is not None]
    for board, number, row in rows:
        element = Element((board, 0), number, row, "")
        yield {"name": element.file, "sequence": element.sequence, "boardType": board, "id": number,
               "version": element.offered, "checksumCrc32": element.offered_checksum}


def table(rows):
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    lines = [" | ".join(cell.ljust(width) for cell, width in zip(row, widths)) for row in rows]
    lines.insert(1, "-" * len(lines[0]))
    return "".join(line + "\n" for line in lines)


def shown_version(version):
    return "---" if version in (None, "0.0") else version


def element_rows(elements):
    return [("Update element", "Version")] + [(one.display, shown_version(one.installed)) for one in elements]


def grouped_tables(elements):
    text = ""
    for unit, group in itertools.groupby(elements, key=lambda element: element.unit):
        stars = "*" * (len(unit) + 4)
        text += f"\n{stars}\n* {unit} *\n{stars}\n" + table(element_rows(group))
    return text


def plan_row(index, element):
    if element.offered is None:
        return (str(index), element.display, shown_version(element.installed), "---", f"{element.checksum} != ---", "", "-")
    sign = "==" if element.checksum == element.offered_checksum else "!="
    return (str(index), element.display, shown_version(element.installed), element.offered,
            f"{element.checksum} {sign} {element.offered_checksum}", "Y" if element.up_to_date else "N",
            str(element.phase) if element.updated else "-")


def plan_table(elements):
    heading = ("No.", "Update element", "Installed", "Available", "Checksums", "Up-to-date", "Phase")
    return table([heading] + [plan_row(index, element) for index, element in enumerate(elements)])


def record(index, element, files):
    """What a document says of the element, as far as the query record of it goes."""
    known = element.offered is not None
    return {
        "index": index, "boardType": element.type, "serialNumber": element.serial, "boardName": element.type,
        "unitPath": element.unit, "slot": None, "slotCount": 0, "displayName": element.display, "typeName": element.kind,
        "isFileSystemElement": False, "valid": True, "active": True,
        "installedVersion": None if element.installed == "0.0" else element.installed, "custom": False,
        "phase": element.phase if element.updated else None, "hasArchiveFile": known,
        "archiveFileIndex": files.index(element.file) if known else None,
        "availableVersion": element.offered,
        "checksumMismatch": element.checksum != element.offered_checksum if known else None, "disabled": element.up_to_date}


def name_list(heading, elements):
    return heading + "".join(f"        {element.display}\n" for element in elements)


def progress_lines(elements, spinner):
    """What the updates of a phase print until the last of them has ended, and once more."""
    queries = max(len(element.answers) for element in elements) + 2
    percentages = [sum(element.percentage(query) for element in elements) // len(elements) for query in range(queries)]
    return "".join(f"{number:3}% {next(spinner):<51}\r" for number in percentages) + "100% " + " " * 51


def update_text(rack, progress=False):
    """What an update prints, with or without progress lines."""
    spinner = itertools.cycle("-\\|/")
    text = name_list("\nUnsupported update elements (will be ignored):\n",
                     [element for element in rack.elements if element.offered is None]) + "\n"
    text += name_list("\nNo update is required for these elements:\n",
                      [element for element in rack.elements if element.up_to_date])
    for phase in range(rack.phases):
        group = [element for element in rack.elements if element.updated and element.phase == phase]
        files = dict.fromkeys(element.file for element in group)
        text += "\n\nTransferring files:\n" + "".join(f"        {name:<46}  [OK]\n" for name in files)
        text += "\nUpdating:\n" + "".join(f"        {element.display}".ljust(56) + "\n" for element in group)
        text += (progress_lines(group, spinner) if progress else "") + "[OK]\n"
    return text + "\nResults:\n\n    Update completed successfully!\n"


class LargeRackTest(ScratchTest):
    """Every command that shows or updates elements."""

    def setUp(self):
        super().setUp()
        self.rack = Rack()
        self.assertEqual(len(self.rack.elements), 1000)
        self.files = [entry["name"] for entry in entries()]
        (self.scratch / "rack").mkdir()
        self.write_target()
        self.write_archive()

    def write_target(self):
        target = {"addresses": ["127.0.0.1"], "inventory": self.rack.inventory}
        (self.scratch / "rack" / "target.json").write_text(json.dumps(target), encoding="utf-8")

    def write_archive(self):
        recipes = [{"name": entry["name"], "kind": "image", "version": entry["version"], "size": 10,
                    "checksum": entry["checksumCrc32"]} for entry in entries()]
        files = cases.make_archive.make_files(recipes)
        info = {"formatVersion": "1.0", "archiveVersion": "1.0", "productName": "", "archiveName": ""}
        files["archive.json"] = json.dumps({"info": info, "files": list(entries())}).encode()
        (self.scratch / "archive").mkdir()
        for name, data in files.items():
            (self.scratch / "archive" / name).write_bytes(data)

    def check(self, expected, *line):
        done = run(*line, *TARGET, folder=self.scratch)
        self.assertEqual((done.code, done.errors), (0, b""))
        self.assertEqual(done.output.decode(), BANNER + expected)

    def install(self):
        """Makes the model one of the rack after an update."""
        for element in self.rack.elements:
            if element.updated:
                element.installed, element.checksum = element.offered, element.offered_checksum

    def test_the_units_are_not_in_the_order_of_the_walk(self):
        self.assertNotEqual(self.rack.walked, self.rack.elements)

    def test_elements(self):
        self.check(table(element_rows(self.rack.elements)), "elements")

    def test_elements_in_groups(self):
        self.check(FOUND + grouped_tables(self.rack.elements), "elements", "-v")

    def test_plan(self):
        self.check(plan_table(self.rack.elements), "plan", "-a", "archive")

    def test_plan_with_details(self):
        self.check(f"{FOUND}The update process takes {self.rack.phases} phases!\n" + plan_table(self.rack.elements),
                   "plan", "-v", "-a", "archive")

    def test_records_of_the_plan(self):
        done = run("plan", "--json", "-a", "archive", *TARGET, folder=self.scratch)
        self.assertEqual(done.code, 0)
        expected = [record(index, element, self.files) for index, element in enumerate(self.rack.elements)]
        found = json.loads(done.output)["elements"]
        self.assertEqual([{name: element[name] for name in expected[0]} for element in found], expected)
        self.assertEqual(done.errors.decode(), BANNER + plan_table(self.rack.elements))

    def test_update(self):
        self.check(update_text(self.rack), "update", "--no-progress", "-a", "archive")
        self.install()
        self.check(plan_table(self.rack.elements), "plan", "-a", "archive")

    def test_the_progress_differs_from_query_to_query(self):
        modules = [element for element in self.rack.elements if element.file == "QB7001-1.bin"]
        self.assertGreater(len(modules), 300)
        text = progress_lines(modules, itertools.cycle("-"))
        self.assertEqual(len(set(text.split("\r"))), 7, text)

    def test_update_with_progress_and_details(self):
        self.check(f"{FOUND}The update process takes {self.rack.phases} phases!\n" + update_text(self.rack, True),
                   "update", "-v", "--progress", "line", "-a", "archive")

    def test_connect(self):
        self.check("", "connect")
        self.check(FOUND, "connect", "-v")

    def test_reboot_activates_what_was_installed(self):
        for item in self.rack.items:
            item["update"]["activation"] = "reboot"
        self.write_target()
        self.check(update_text(self.rack), "update", "--no-progress", "-a", "archive")
        self.check(plan_table(self.rack.elements), "plan", "-a", "archive")
        self.check("", "reboot")
        self.install()
        self.check(plan_table(self.rack.elements), "plan", "-a", "archive")


if __name__ == "__main__":
    tool_runs.main()
