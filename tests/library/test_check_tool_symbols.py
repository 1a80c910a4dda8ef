"""Tests of check_tool_symbols.py."""

import tempfile
import unittest
from pathlib import Path

import check_tool_symbols as script

IMPORT = "                 U KvISession::createInstance(KvNReflasher::KvTOptions)"
NAMES = {"KvCRoom", "roomFunction"}


class Names(unittest.TestCase):
    def test_types_and_free_functions_of_a_header_are_found(self):
        header = """#pragma once
#include "Other.h"

/// A class.
class KV_REFLASH_API KvCRoom : public Base {
public:
    void member();
};
class OnlyNamed;
struct KvTRecord {
    int field = 0;
};
enum KvENumber : int { one };
enum class KvEWord : int { two };
[[nodiscard]] std::vector<int> roomFunction(const std::string& text,
                                            int other);
template <typename Result>
Result roomTemplate(Result value) {
    return call(value);
}
inline constexpr int constant = call(2);
// aComment(here)
"""
        self.assertEqual(script.names_in(header),
                         {"KvCRoom", "KvTRecord", "KvENumber", "KvEWord", "roomFunction", "roomTemplate"})

    def test_names_of_the_interface_and_of_the_tool_do_not_count(self):
        with tempfile.TemporaryDirectory() as folder:
            project = Path(folder)
            for path, text in {"src/room/Room.h": "class KvCRoom {};\nvoid shared();\nstruct KvTValue {};\n",
                               "include/KvTValue.h": "struct KvTValue {};\n",
                               "tools/tool/Tool.cpp": "void shared() {\n}\n"}.items():
                (project / path).parent.mkdir(parents=True)
                (project / path).write_text(text, encoding="utf-8")
            self.assertEqual(script.names_of_rooms(project), {"KvCRoom"})

    def test_the_rooms_of_this_project_have_names(self):
        names = script.names_of_rooms(Path(__file__).resolve().parents[2])
        self.assertLessEqual({"KvCFirmwareArchive", "KvCUpdatePlanner", "KvCTargetInventory", "KvCPreparation",
                              "KvCUpdateDriver", "KvCConsoleWriter", "KvCReflasher", "KvCOwnedErrorList", "callSucceeds",
                              "walkInventory", "lookAtTarget"}, names)


class Faults(unittest.TestCase):
    def test_a_tool_that_imports_the_interface_alone_is_right(self):
        self.assertEqual(script.faults([IMPORT, "0000 T main", "0000 t writeText(std::string const&)"], NAMES), [])

    def test_a_symbol_of_a_room_is_a_fault(self):
        for symbol in ("0000000000001230 t KvCRoom::prepare()", "0000 V vtable for KvCRoom",
                       "0000 W std::vector<KvCRoom, std::allocator<KvCRoom> >::~vector()",
                       "                 U roomFunction(int)", "0000 t roomFunction[abi:cxx11](wchar_t const*)",
                       "0000 t bool roomFunction<bool>(bool)"):
            with self.subTest(symbol):
                self.assertEqual(len(script.faults([IMPORT, symbol], NAMES)), 1)

    def test_a_longer_name_or_one_of_another_scope_is_none(self):
        for symbol in ("0000 t KvCRoomOther::prepare()", "0000 t Other::roomFunction(int)", "0000 t roomFunctions()"):
            with self.subTest(symbol):
                self.assertEqual(script.faults([IMPORT, symbol], NAMES), [])

    def test_a_tool_without_readable_symbols_is_a_fault(self):
        self.assertEqual(len(script.faults([], NAMES)), 1)

    def test_an_import_from_a_dll_is_one(self):
        symbol = "00000001 I __imp__ZN10KvISession14createInstanceEN12KvNReflasher10KvTOptionsE"
        self.assertEqual(script.faults([symbol], NAMES), [])


if __name__ == "__main__":
    unittest.main()
