"""What has to be said in two places says the same in both."""

import json
import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]


def text(path):
    return (PROJECT / path).read_text(encoding="utf-8")


def rows(path, heading, column=0):
    """The words in code type in a column of the first table below a heading."""
    table = re.search(rf"^{re.escape(heading)}$.*?(^\|.*?)(?=^[^|])", text(path) + "\n\nend", re.MULTILINE | re.DOTALL).group(1)
    cells = [line.strip("|").split("|")[column] for line in table.splitlines()[2:]]
    return [word for cell in cells for word in re.findall(r"`([^`]+)`", cell)]


def words(path, pattern, flags=re.MULTILINE):
    found = re.findall(pattern, text(path), flags)
    if not found:
        raise AssertionError(f"{path} has nothing like {pattern}")
    return found


class SaidTwice(unittest.TestCase):
    def test_the_document_lists_the_stages_of_the_gate_in_their_order(self):
        stages = words("scripts/gate.sh", r"^stages=\(([\w ]+)\)$")[0].split()
        self.assertEqual(stages, rows("docs/contributing.md", "### All of it"))

    def test_the_document_lists_the_options_of_the_build(self):
        options = words("CMakeLists.txt", r"^option\((KV_\w+)")
        self.assertEqual(set(options), set(rows("docs/contributing.md", "## Building")))

    def test_the_document_has_the_values_with_which_the_gate_sweeps(self):
        document = text("docs/contributing.md")
        for variable, value in words("scripts/gate.sh", r"\b(KV_(?:SWEEP|KILL|TOOL_SWEEP)_\w+)=(\d+)"):
            self.assertRegex(document, rf"\| `{variable}` \| [^|]*\| {value} \|")

    def test_the_trace_table_lists_the_traced_operations(self):
        traced = words("platform/emulation/operations/Operation.cpp", r'^ +(?:inventory|host)\(Operation::\w+, "(\w+)"')
        table = text("docs/emulation.md").split("| call | fields |")[1].split("\n\n")[0]
        calls = [call for line in table.splitlines()[2:] for call in re.findall(r"`(\w+)`", line.split("|")[1])]
        self.assertEqual(sorted(traced), sorted(calls))

    def test_the_longest_text_of_a_target_is_the_same_for_emulation_capture_and_document(self):
        limits = words("platform/emulation/json/JsonPlace.h", r"longestText = (\d+);")
        self.assertEqual(limits, words("tools/kvreflash/capture/InventoryDescription.cpp", r"longestText = (\d+);"))
        for document in ("docs/emulation.md", "docs/rehearsing.md"):
            self.assertIn(f"more than {int(limits[0]):,} bytes", text(document))

    def test_the_largest_files_are_those_of_the_documents(self):
        for source, document in (("src/archive/DescriptionFile.h", "docs/archive-format.md"),
                                 ("platform/emulation/json/JsonDocument.h", "docs/emulation.md")):
            mebibytes = words(source, r"largest\w+ = std::uint64_t{(\d+)} << 20U")[0]
            self.assertIn(f"{mebibytes} MiB", text(document))

    def test_the_schema_knows_the_keys_of_entries_and_boards(self):
        table = words("src/archive/EntryProperties.cpp", r"keys = \{(.*?)\};", re.DOTALL)[0]
        schema = json.loads(text("docs/schemas/archive.schema.json"))["$defs"]
        described = set(schema["supportedEntry"]["properties"]) | set(schema["board"]["properties"]) | \
            set(schema["entry"].get("properties", {}))
        self.assertEqual(set(re.findall(r'"(\w+)"', table)), described - {"comment"})


if __name__ == "__main__":
    unittest.main()
