"""Tests of the checker of house rules."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
from check_house import House, functions  # noqa: E402


def body(lines):
    return "".join(f"    call({i});\n" for i in range(lines))


class FunctionTest(unittest.TestCase):
    def spans(self, code, *expected):
        self.assertEqual(functions(code), list(expected))

    def test_free_function(self):
        self.spans("int f(int a)\n{\n    return a;\n}\n\nvoid g() {}\n", (1, 4), (6, 6))

    def test_declarations_types_and_tables_are_none(self):
        self.spans("int f(int);\nstruct S {\n    int a = 1;\n};\nconstexpr S table[] = {\n    {1},\n};\nenum class E { a };\n")

    def test_functions_inside_namespaces_and_classes(self):
        self.spans("namespace {\nclass C final : public B {\npublic:\n    int f() const {\n        return 1;\n    }\n};\n}\n",
                   (4, 6))

    def test_constructor_with_braces_among_its_initialisers(self):
        self.spans("C::C(int a)\n    : a_{a}, b_{} {\n    call();\n}\nint f() {\n}\n", (1, 4), (5, 6))

    def test_lambda_and_blocks_belong_to_their_function(self):
        self.spans("int f() {\n    if (a) {\n        b([] { return 1; });\n    }\n    return 2;\n}\n", (1, 6))

    def test_braces_in_comments_and_literals_do_not_count(self):
        self.spans("// }{\nint f() {\n    a('{', \"}\\\"}\", R\"x(})\")x\"); /* { */\n    b(1'000);\n}\nint g() {\n}\n", (2, 5), (6, 7))

    def test_preprocessor_lines_do_not_count(self):
        self.spans("#define F(x) if (x) {\nint f() {\n}\n", (2, 3))


class HouseTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.project = Path(folder.name)

    def findings(self, rooms="", **files):
        """Errors and warnings on {path: code}; in the keys "__" stands for "/" and the last "_" for the dot. `rooms` are
        the calls that make the rooms of src; without them each folder of src with files is one that sees nothing."""
        files = {key.replace("__", "/")[::-1].replace("_", ".", 1)[::-1]: code for key, code in files.items()}
        rooms = rooms or "".join(f"kv_add_room({folder})\n"
                                 for folder in sorted({path.split("/")[1] for path in files if path.startswith("src/")}))
        for name, code in (files | {"src/CMakeLists.txt": rooms}).items():
            path = self.project / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(code)
        house = House(self.project)
        house.check()
        return house.errors, house.warnings

    def test_short_function_is_fine(self):
        self.assertEqual(self.findings(src__a__A_cpp="void f() {\n" + body(38) + "}\n"), ([], []))

    def test_long_function_warns(self):
        errors, warnings = self.findings(src__a__A_cpp="void f() {\n" + body(39) + "}\n")
        self.assertEqual((errors, warnings), ([], ["src/a/A.cpp:1: a function of 41 lines"]))

    def test_function_of_81_lines_fails(self):
        self.assertEqual(self.findings(src__a__A_cpp="void f() {\n" + body(78) + "}\n")[0], [])
        self.assertEqual(self.findings(src__a__A_cpp="\nvoid f() {\n" + body(79) + "}\n")[0],
                         ["src/a/A.cpp:2: a function of 81 lines"])

    def test_long_file_warns(self):
        self.assertEqual(self.findings(src__a__A_cpp="\n" * 501)[1], ["src/a/A.cpp: 501 lines"])

    def test_an_include_that_no_library_gives_fails(self):
        errors, _ = self.findings("kv_add_room(planning)\nkv_add_room(execution\n  SOURCES D.cpp)\n",
                                  src__execution__D_h="", src__planning__P_cpp='#include "D.h"\n')
        self.assertEqual(errors, ["src/planning/P.cpp: src/planning does not see src/execution, but includes "
                                  "src/execution/D.h"])

    def test_an_include_of_a_librarys_library_fails(self):
        errors, _ = self.findings("kv_add_room(a)\nkv_add_room(b LIBRARIES kv_a)\nkv_add_room(c LIBRARIES kv_b)\n",
                                  src__a__A_h="", src__b__B_h='#include "A.h"\n',
                                  src__c__C_cpp='#include "A.h"\n#include "B.h"\n')
        self.assertEqual(errors, ["src/c/C.cpp: src/c does not see src/a, but includes src/a/A.h"])

    def test_includes_of_libraries_are_fine(self):
        errors, _ = self.findings("kv_add_room(planning SOURCES P.cpp)\n"
                                  "kv_add_room(execution\n  SOURCES D.cpp\n"
                                  "  LIBRARIES kv_planning KvPlatform\n            kv_interface)\n",
                                  src__planning__P_h="", include__K_h="", platform__include__C_h="",
                                  src__execution__D_cpp='#include "P.h"\n#include "K.h"\n#include "C.h"\n')
        self.assertEqual(errors, [])

    def test_a_library_of_which_nothing_is_included_fails(self):
        errors, _ = self.findings("kv_add_room(a)\nkv_add_room(b LIBRARIES kv_a)\n", src__a__A_h="", src__b__B_cpp="")
        self.assertEqual(errors, ["src/b: sees src/a, but includes nothing of it"])

    def test_rooms_that_need_each_other_fail(self):
        errors, _ = self.findings("kv_add_room(a LIBRARIES kv_b)\nkv_add_room(b LIBRARIES kv_a)\n",
                                  src__a__A_h="", src__b__B_h="", src__a__A_cpp='#include "B.h"\n',
                                  src__b__B_cpp='#include "A.h"\n')
        self.assertEqual(errors, ["a ring of rooms: src/a -> src/b -> src/a"])

    def test_rooms_of_a_house_with_a_prefix_are_known_by_it(self):
        (self.project / "tools/kvreflash").mkdir(parents=True)
        (self.project / "tools/kvreflash/CMakeLists.txt").write_text(
            "set(KV_ROOM_PREFIX tool_)\nkv_add_room(text)\nkv_add_room(views LIBRARIES kv_tool_text)\n")
        errors, _ = self.findings(tools__kvreflash__text__T_h="", tools__kvreflash__views__V_cpp='#include "T.h"\n')
        self.assertEqual(errors, [])

    def test_a_folder_that_is_no_room_fails(self):
        errors, _ = self.findings("kv_add_room(a)\n", src__a__A_cpp="", src__b__B_cpp="")
        self.assertEqual(errors, ["src/b: not a room"])

    def test_a_room_of_31_files_fails(self):
        files = {f"src__a__A{number}_cpp": "" for number in range(31)}
        self.assertEqual(self.findings(**files)[0], ["src/a: 31 files in one room"])

    def test_types_of_the_librarys_headers_need_their_prefix(self):
        code = ("class Writer {\n};\nstruct KvCRecord {\n};\nenum class Kind : int { a };\nclass Declared;\n"
                "template <typename T>\nclass Pool final : public B {\n};\n")
        self.assertEqual(self.findings(src__a__A_h=code)[0],
                         ["src/a/A.h: the class Writer has not the prefix KvC or KvI",
                          "src/a/A.h: the struct KvCRecord has not the prefix KvT or KvS",
                          "src/a/A.h: the enum Kind has not the prefix KvE",
                          "src/a/A.h: the class Pool has not the prefix KvC or KvI"])

    def test_types_of_sources_and_nested_types_need_none(self):
        errors, _ = self.findings(src__a__A_h="class KvCWriter {\n    struct Part {\n    };\n};\n",
                                  src__a__A_cpp="struct Row {\n};\n")
        self.assertEqual(errors, [])

    def test_types_of_programs_have_no_prefix(self):
        (self.project / "tools/kvreflash").mkdir(parents=True)
        (self.project / "tools/kvreflash/CMakeLists.txt").write_text("kv_add_room(text)\n")
        errors, _ = self.findings(tools__kvreflash__text__T_h="struct KvTLine {\n};\nclass Word {\n};\n")
        self.assertEqual(errors,
                         ["tools/kvreflash/text/T.h: the struct KvTLine has a prefix of the library's types"])

    def test_ring_of_includes_fails(self):
        errors, _ = self.findings(src__a__A_h='#include "B.h"\n', src__a__B_h='#include "C.h"\n', src__a__C_h='#include "B.h"\n')
        self.assertEqual(errors, ["a ring of includes: src/a/B.h -> src/a/C.h -> src/a/B.h"])

    def test_two_headers_of_one_name_fail(self):
        errors, _ = self.findings(src__a__A_h="", src__b__A_h="")
        self.assertEqual(errors, ["A.h: 2 headers of this name: src/a/A.h, src/b/A.h"])

    def test_platform_conditional_fails_outside_the_system_files(self):
        code = "int a;\n#if defined(_WIN32)\n#endif\n"
        self.assertEqual(self.findings(src__console__A_cpp=code)[0], ["src/console/A.cpp:2: a platform conditional"])

    def test_platform_conditional_is_fine_in_the_system_files(self):
        code = "#ifdef __linux__\n#endif\n"
        (self.project / "platform").mkdir()
        (self.project / "platform/CMakeLists.txt").write_text("kv_add_room(emulation/system OBJECTS SOURCES A.cpp)\n")
        self.assertEqual(self.findings(src__system__A_cpp=code, platform__emulation__system__SystemB_cpp=code)[0], [])


if __name__ == "__main__":
    unittest.main()
