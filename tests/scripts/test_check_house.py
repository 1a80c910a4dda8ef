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

    def findings(self, **files):
        """Errors and warnings on {path: code}; in the keys "__" stands for "/" and the last "_" for the dot."""
        for key, code in files.items():
            path = self.project / (key.replace("__", "/")[::-1].replace("_", ".", 1)[::-1])
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

    def test_include_up_the_layers_fails(self):
        errors, _ = self.findings(src__execution__D_h="", src__planning__P_cpp='#include "D.h"\n')
        self.assertEqual(errors, ["src/planning/P.cpp: src/planning does not see src/execution, but includes "
                                  "src/execution/D.h"])

    def test_include_down_the_layers_is_fine(self):
        errors, _ = self.findings(src__planning__P_h="", include__K_h="", platform__include__C_h="",
                                  src__execution__D_cpp='#include "P.h"\n#include "K.h"\n#include "C.h"\n')
        self.assertEqual(errors, [])

    def test_library_that_includes_the_emulation_fails(self):
        errors, _ = self.findings(platform__emulation__E_h="", src__session__S_cpp='#include "E.h"\n')
        self.assertIn("src/session does not see platform/emulation", errors[0])

    def test_the_tool_sees_one_header_of_the_emulation(self):
        errors, _ = self.findings(platform__emulation__control__KvEmulation_h="", platform__emulation__E_h="",
                                  tools__T_cpp='#include "KvEmulation.h"\n#include "E.h"\n')
        self.assertEqual(errors, ["tools/T.cpp: tools does not see platform/emulation, but includes platform/emulation/E.h"])

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
        self.assertEqual(self.findings(src__system__A_cpp=code, platform__emulation__system__SystemB_cpp=code)[0], [])


if __name__ == "__main__":
    unittest.main()
