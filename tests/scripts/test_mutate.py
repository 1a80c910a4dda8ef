"""Tests of the mutation check: what it finds, chooses and tells. Nothing is compiled."""

import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path
from unittest import mock

PROJECT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "scripts"))
from mutation.places import Mutant, all_mutants, find_mutants, successor  # noqa: E402
from mutation.report import Change, Report, Results, fingerprint, read_accepted  # noqa: E402
from mutation.sample import choose, shares  # noqa: E402
from mutation.suite import Suite  # noqa: E402
from mutation.workshop import Outcome, Stopped, Workshop, synchronise  # noqa: E402

FILE = "src/room/File.cpp"


def changes(code):
    """(kind, original, mutated) of all mutants."""
    return [(mutant.kind, mutant.original, mutant.mutated) for mutant in find_mutants(FILE, code)]


def in_function(statements, result="void"):
    return f"{result} f() {{\n    {statements}\n}}\n"


class OperatorsTest(unittest.TestCase):
    def check(self, statement, *expected):
        self.assertEqual(changes(in_function(statement)), list(expected))

    def test_order_has_a_boundary_and_a_negation(self):
        self.check("x = a < b;", ("boundary", "<", "<="), ("negated", "<", ">="))
        self.check("x = a <= b;", ("boundary", "<=", "<"), ("negated", "<=", ">"))
        self.check("x = a > b;", ("boundary", ">", ">="), ("negated", ">", "<="))
        self.check("x = a >= b;", ("boundary", ">=", ">"), ("negated", ">=", "<"))

    def test_equality_is_negated(self):
        self.check("x = a == b;", ("negated", "==", "!="))
        self.check("x = a != b;", ("negated", "!=", "=="))

    def test_logical_operators_are_swapped(self):
        self.check("x = a && b;", ("logical", "&&", "||"))
        self.check("x = a || b;", ("logical", "||", "&&"))

    def test_arithmetic_is_swapped(self):
        self.check("x = a + b;", ("arithmetic", "+", "-"))
        self.check("x = a - b;", ("arithmetic", "-", "+"))
        self.check("x = a * b;", ("arithmetic", "*", "/"))
        self.check("x = a / b;", ("arithmetic", "/", "*"))
        self.check("x += a;", ("assignment", "+=", "-="))

    def test_operators_at_the_end_of_a_line_are_found(self):
        self.check("x = a &&\n        b;", ("logical", "&&", "||"))

    def test_steps_are_turned_round(self):
        self.check("++x;", ("step", "++", "--"))
        self.check("x--;", ("step", "--", "++"))

    def test_not_is_removed(self):
        self.check("x = !a;", ("not", "!", ""))

    def test_signs_pointers_and_references_stay(self):
        self.check("x = -a;")
        self.check("const T* p = &a;")
        self.check("T& r = *a;")
        self.check("T&& r = std::move(a);")

    def test_member_access_and_streams_stay(self):
        self.check("x = a->b;")
        self.check("x << a >> b;")

    def test_joined_texts_stay(self):
        self.check('x = a + "b";')

    def test_brackets_of_templates_stay(self):
        self.check("std::vector<std::array<char, 4>> x;")
        self.assertEqual(changes("template <typename A, int n = 3>\nclass T {};\n"), [])

    def test_operators_that_are_defined_stay(self):
        self.assertEqual(changes("bool operator==(const T& a) const = default;\nbool operator!() const;\n"), [])


class ConstantsTest(unittest.TestCase):
    def test_numbers_are_incremented_in_their_notation(self):
        cases = {"0": "1", "9": "10", "7U": "8U", "0x0FU": "0x10U", "0xa": "0xB", "0xFFFFFFFF": "0x100000000",
                 "0666": "0667", "1'000": "1001", "0b11": "0b100", "12ULL": "13ULL"}
        self.assertEqual({number: successor(number) for number in cases}, cases)

    def test_separated_digits_are_one_number(self):
        self.assertEqual(changes("constexpr int x = 1'000;\n"), [("constant", "1'000", "1001")])

    def test_floating_numbers_stay(self):
        self.assertEqual([successor(number) for number in ("1.5", ".5", "1e3", "2.0F")], [None] * 4)

    def test_constants_are_found_outside_of_functions_too(self):
        self.assertEqual(changes("constexpr int x = 7;\nstruct S {\n    bool y = false;\n};\n"),
                         [("constant", "7", "8"), ("truth", "false", "true")])

    def test_extents_of_arrays_stay_and_indices_do_not(self):
        self.assertEqual(changes(in_function("char text[16];")), [])
        self.assertEqual(changes(in_function("const char* texts[16];")), [])
        self.assertEqual(changes(in_function("x = text[16];")), [("constant", "16", "17")])
        self.assertEqual(changes(in_function("return a()[1];", "int")), [("constant", "1", "2")])

    def test_pure_virtual_functions_stay(self):
        self.assertEqual(changes("struct S {\n    virtual void f() = 0;\n    virtual int g() const = 0;\n};\n"), [])

    def test_truth_values_are_swapped(self):
        self.assertEqual(changes(in_function("x = true;")), [("truth", "true", "false")])

    def test_what_no_running_program_sees_stays(self):
        self.assertEqual(changes("static_assert(sizeof(int) == 4);\nvoid f() noexcept(true);\n"), [])

    def test_comments_texts_and_preprocessor_lines_stay(self):
        self.assertEqual(changes("// a < 1\n/* b\n * 2 */\n#if A == 1 && \\\n    B == 2\n#endif\n"), [])
        self.assertEqual(changes(in_function("x = \"a == 1 \\\" && 2\" L'0' R\"(a < \" 1)\";")), [])


class ConditionsTest(unittest.TestCase):
    def kinds(self, code):
        return [(mutant.kind, mutant.mutated) for mutant in find_mutants(FILE, code)
                if mutant.kind in ("condition", "result")]

    def test_conditions_are_negated(self):
        self.assertEqual(self.kinds(in_function("if (a) {\n    }")), [("condition", "!(a)")])
        self.assertEqual(self.kinds(in_function("while (a(b) || c) {\n    }")), [("condition", "!(a(b) || c)")])
        self.assertEqual(self.kinds(in_function("if (const int x = y; a(x)) {\n    }")), [("condition", "!(a(x))")])

    def test_what_another_mutant_negates_is_not_negated_twice(self):
        for condition in ("a == b", "a < b", "!a", "!a(b && c)"):
            self.assertEqual(self.kinds(in_function(f"if ({condition}) {{\n    }}")), [])
        self.assertEqual(self.kinds(in_function("return a == b;", "bool")), [])
        self.assertEqual(self.kinds(in_function("return true;", "bool")), [])

    def test_declarations_are_no_conditions(self):
        self.assertEqual(self.kinds(in_function("if (const auto* x = a()) {\n    }")), [])

    def test_results_of_bool_functions_are_negated(self):
        for head in ("bool f()", "bool C::f() const", "[[nodiscard]] bool f(int a) noexcept override",
                     "template <typename T>\nbool f(T<int> a)"):
            self.assertEqual(self.kinds(f"{head} {{\n    return a(b);\n}}\n"), [("result", "!(a(b))")], head)
        self.assertEqual(self.kinds("auto f() -> bool {\n    return a(b);\n}\n"), [("result", "!(a(b))")])

    def test_results_inside_of_conditionals_are_those_of_the_function(self):
        self.assertEqual(self.kinds("bool f() {\n    for (;;) {\n        return a(b);\n    }\n}\n"),
                         [("result", "!(a(b))")])

    def test_other_results_stay(self):
        for head in ("int f()", "const T* C::f() const", "C::C() : a_(b)"):
            self.assertEqual(self.kinds(f"{head} {{\n    return a(b);\n}}\n"), [], head)

    def test_results_of_lambdas_are_negated_when_they_are_logical(self):
        code = "bool f() {{\n    x = [](int a) {{ return {0}; }};\n}}\n"
        self.assertEqual(self.kinds(code.format("a(b)")), [])
        self.assertEqual(self.kinds(code.format("a && b")), [("result", "!(a && b)")])
        self.assertEqual(self.kinds(code.format("a && b ? c : d")), [])


class CallsTest(unittest.TestCase):
    def removed(self, code):
        return [mutant.original for mutant in find_mutants(FILE, code) if mutant.kind == "call"]

    def test_statements_that_are_one_call_go_away(self):
        for call in ("f(a)", "a.b(c)", "a->b().c(d)", "std::sort(a, b)", "a[b].c(d)", "f<T>(a)", "f(\n        a)",
                     "(void)f(a)", "f([&] { return 1; })"):
            self.assertEqual(self.removed(in_function(f"{call};")), [call])

    def test_calls_behind_heads_are_statements(self):
        self.assertEqual(self.removed(in_function("if (x)\n        f(a);\n    else\n        g(b);")), ["f(a)", "g(b)"])
        self.assertEqual(self.removed(in_function("switch (x) {\n    case A::b:\n        f(a);\n    default:\n"
                                                  "        g(b);\n    }")), ["f(a)", "g(b)"])

    def test_declarations_and_other_statements_stay(self):
        for statement in ("T a(b);", "const T a(b);", "x = f(a);", "return f(a);", "throw f(a);", "if (f(a)) {\n    }",
                          "static_cast<void>(a);", "delete f(a);", "x = a ? b : f(c);", "std::vector<T> a(b);"):
            self.assertEqual(self.removed(in_function(statement)), [], statement)

    def test_declared_functions_stay(self):
        code = "class C {\n    C(int);\npublic:\n    void f(int);\n    ~C();\n};\nvoid f(int);\n"
        self.assertEqual(self.removed(code), [])

    def test_calls_inside_of_a_removed_call_are_found_too(self):
        self.assertEqual(self.removed(in_function("f([&] { g(a); });")), ["f([&] { g(a); })", "g(a)"])


class MutantsTest(unittest.TestCase):
    CODE = "bool f(int a) {\n    return a < 1 && a != 3;\n}\n"

    def test_places_count_from_1(self):
        ids = [mutant.id for mutant in find_mutants(FILE, self.CODE)]
        self.assertEqual(ids, [f"{FILE}:2:12:result", f"{FILE}:2:14:boundary", f"{FILE}:2:14:negated",
                               f"{FILE}:2:16:constant", f"{FILE}:2:18:logical", f"{FILE}:2:23:negated",
                               f"{FILE}:2:26:constant"])

    def test_a_mutant_changes_its_place_alone(self):
        mutant = find_mutants(FILE, self.CODE)[1]
        self.assertEqual(mutant.apply(self.CODE), self.CODE.replace("<", "<="))
        self.assertEqual(mutant.changed_lines(self.CODE),
                         (("return a < 1 && a != 3;",), ("return a <= 1 && a != 3;",)))

    def test_mutants_of_the_project_are_distinct_and_change_something(self):
        mutants = all_mutants(PROJECT)
        self.assertGreater(len(mutants), 1000)
        self.assertEqual(len({mutant.id for mutant in mutants}), len(mutants))
        self.assertTrue(all(mutant.original != mutant.mutated for mutant in mutants))
        self.assertFalse([mutant for mutant in mutants if "Windows.cpp" in mutant.file])


def mutants_of(sizes):
    return [Mutant(file, line, 1, "truth", 0, "true", "false") for file, size in sizes.items()
            for line in range(1, size + 1)]


class SampleTest(unittest.TestCase):
    SIZES = {"src/a/A.cpp": 100, "src/a/B.cpp": 50, "src/b/C.cpp": 1}

    def test_files_give_their_share_and_at_least_one(self):
        self.assertEqual(shares(self.SIZES, 31), {"src/a/A.cpp": 20, "src/a/B.cpp": 10, "src/b/C.cpp": 1})
        for count in (1, 2, 3, 10, 77, 150, 151, 500):
            self.assertEqual(sum(shares(self.SIZES, count).values()), min(count, 151), count)

    def test_the_choice_is_the_same_for_the_same_seed(self):
        mutants = mutants_of(self.SIZES)
        self.assertEqual(choose(mutants, 30, "1"), choose(mutants, 30, "1"))
        self.assertNotEqual(choose(mutants, 30, "1"), choose(mutants, 30, "2"))
        self.assertEqual(len(choose(mutants, 30, "1")), 30)

    def test_a_wider_choice_keeps_those_of_a_narrow_one(self):
        mutants = mutants_of(self.SIZES)
        self.assertLess(set(choose(mutants, 15, "1")), set(choose(mutants, 60, "1")))


class SuiteTest(unittest.TestCase):
    def test_rooms_above_are_those_that_link_a_room(self):
        suite = Suite(PROJECT)
        self.assertEqual(suite.above("session"), [])
        self.assertEqual(suite.above("planning"), ["printouts", "execution", "check", "verification", "session"])
        self.assertEqual(set(suite.above("system")), set(suite.uses) - {"system", "guards", "documents", "names", "crypto"})

    def test_every_room_has_tests_of_its_own_and_the_sessions(self):
        suite = Suite(PROJECT)
        for room in {mutant.room for mutant in all_mutants(PROJECT)}:
            own, middle, rest, sanitized = suite.stages(room)
            self.assertTrue(own.checks, room)
            self.assertEqual({check.line for check in own.checks}, {"room"})
            self.assertEqual(middle.checks[-1].line, "sessions")
            self.assertIn("tool_tests", rest.targets)
            self.assertLessEqual(set(own.targets), set(sanitized.targets))
        self.assertEqual([check.name for check in suite.stages("archive")[0].checks],
                         ["archive_tests", "archive_calls_tests"])


class WorkshopTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.project = Path(folder.name) / "project"
        self.copy = Path(folder.name) / "copy"
        (self.project / "src/room").mkdir(parents=True)
        (self.project / "build").mkdir()
        (self.project / "build/output").write_text("built")
        (self.project / FILE).write_text("int x = 1;\n")
        self.copy.mkdir()

    def test_a_copy_is_brought_up_to_date(self):
        synchronise(self.project, self.copy)
        self.assertEqual((self.copy / FILE).read_text(), "int x = 1;\n")
        self.assertFalse((self.copy / "build").exists())
        (self.copy / FILE).write_text("mutated")
        (self.copy / "src/gone").write_text("")
        synchronise(self.project, self.copy)
        self.assertEqual((self.copy / FILE).read_text(), "int x = 1;\n")
        self.assertFalse((self.copy / "src/gone").exists())

    def test_what_is_equal_is_not_written_again(self):
        synchronise(self.project, self.copy)
        before = (self.copy / FILE).stat().st_mtime_ns
        synchronise(self.project, self.copy)
        self.assertEqual((self.copy / FILE).stat().st_mtime_ns, before)

    def test_a_command_is_run_with_its_limits(self):
        workshop = Workshop(self.project, self.copy, 1)
        code, output, _ = workshop.run([sys.executable, "-c", "import os; print(os.environ['KV_TIME_SCALE']); exit(3)"],
                                       60)
        self.assertEqual((code, output), (3, "0\n"))
        self.assertIsNone(workshop.run(["sleep", "60"], 0.1)[0])

    def test_what_is_stopped_has_no_result(self):
        workshop = Workshop(self.project, self.copy, 1)
        threading.Timer(0.2, workshop.stop).start()
        began = time.monotonic()
        with self.assertRaises(Stopped):
            workshop.run(["sleep", "60"], 60)
        self.assertLess(time.monotonic() - began, 30)

    def test_the_change_is_taken_back(self):
        workshop = Workshop(self.project, self.copy, 1)
        synchronise(self.project, self.copy)
        mutant = find_mutants(FILE, "int x = 1;\n")[0]
        seen = []
        workshop.pass_stages = lambda _: seen.append((self.copy / FILE).read_text()) or Outcome("survived")
        outcome = workshop.judge(mock.Mock(), mutant)
        self.assertEqual((outcome.verdict, seen), ("survived", ["int x = 2;\n"]))
        self.assertEqual((self.copy / FILE).read_text(), "int x = 1;\n")


CODE = "int x = 1;\nbool y = true;\nbool z = a && b;\n"
ACCEPTED = """# Survivors.

src/room/File.cpp
- bool y = true;
+ bool y = false;
No test can see it: y is set
before it is read.
"""


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name) / "results.jsonl"
        self.mutants = find_mutants(FILE, CODE)
        self.assertEqual([mutant.kind for mutant in self.mutants], ["constant", "truth", "logical"])

    def results(self, code=CODE):
        return Results(self.path, {FILE: fingerprint(code)})

    def report(self, *outcomes, accepted=ACCEPTED):
        results = self.results()
        for mutant, outcome in zip(self.mutants, outcomes):
            results.add(mutant, outcome)
        return Report(self.mutants, {FILE: CODE}, self.results(), read_accepted(accepted))

    def test_results_are_found_again_until_their_source_changes(self):
        outcome = Outcome("noticed", "room", "room_tests", "Test.case", 1.5)
        self.results().add(self.mutants[0], outcome)
        self.assertEqual(self.results().get(self.mutants[0]), outcome)
        self.assertIsNone(self.results().get(self.mutants[1]))
        self.assertIsNone(self.results(CODE + "\n").get(self.mutants[0]))

    def test_the_last_result_counts_and_half_a_line_does_not(self):
        self.results().add(self.mutants[0], Outcome("survived"))
        self.results().add(self.mutants[0], Outcome("timeout"))
        with self.path.open("a") as file:
            file.write('{"id": "src')
        self.assertEqual(self.results().get(self.mutants[0]), Outcome("timeout"))

    def test_each_mutant_counts_once(self):
        report = self.report(Outcome("noticed", "room"), Outcome("survived"), Outcome("timeout", "sessions"))
        counts = report.count()
        self.assertEqual({key: value for key, value in counts.items() if value},
                         {"mutants": 3, "room": 1, "survivors": 1, "accepted": 1, "timeouts": 1})
        self.assertEqual(counts, report.count("room"))
        self.assertAlmostEqual(report.percentage(counts), 200 / 3)
        self.assertAlmostEqual(report.percentage(counts, without_accepted=True), 100)

    def test_what_does_not_compile_counts_neither_way(self):
        report = self.report(Outcome("noticed", "above"), Outcome("not compiled"), Outcome("survived"))
        self.assertAlmostEqual(report.percentage(report.count()), 50)

    def test_survivors_are_told_with_their_reason(self):
        text = self.report(Outcome("noticed", "room"), Outcome("survived"), Outcome("survived")).text()
        self.assertIn(f"{FILE}:2:10:truth\n{FILE}\n- bool y = true;\n+ bool y = false;\n"
                      "No test can see it: y is set before it is read.\n", text)
        self.assertIn("- bool z = a && b;\n+ bool z = a || b;\nNOT LOOKED AT\n", text)
        self.assertIn("Noticed: 33.3 %; without the 1 accepted survivors 50.0 %", text)

    def test_mutants_that_were_not_run_are_told(self):
        self.assertIn("2 mutants were not run.", self.report(Outcome("noticed", "room")).text())

    def test_accepted_survivors_need_lines_and_a_reason(self):
        for text in ("src/a.cpp\n- a\n+ b\n", "src/a.cpp\nwhy\n", "src/a.cpp\n- a\nwhy\n+ b\n"):
            with self.assertRaises(ValueError):
                read_accepted(text)

    def test_a_removed_statement_may_leave_no_line(self):
        self.assertEqual(list(read_accepted("src/a.cpp\n- f();\n+ ;\nwhy\n")), [Change("src/a.cpp", ("f();",), (";",))])

    def test_accepted_survivors_are_mutants_of_the_project(self):
        path = PROJECT / "scripts/mutation-survivors.txt"
        codes = {}
        for mutant in all_mutants(PROJECT):
            codes.setdefault(mutant.file, (PROJECT / mutant.file).read_text(encoding="utf-8"))
        existing = {Change.of(mutant, codes[mutant.file]) for mutant in all_mutants(PROJECT)}
        for change in read_accepted(path.read_text(encoding="utf-8")):
            self.assertTrue(change in existing, f"no longer a place of the sources:\n{change}")


if __name__ == "__main__":
    unittest.main()
