"""The arithmetic of measuring: turns, medians, goals and verdicts."""

import contextlib
import io
import sys
import tempfile
import unittest
import unittest.mock
import xml.etree.ElementTree
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import charts  # noqa: E402
import measure  # noqa: E402
from measure import Command, Goal, Judge, Sample, at  # noqa: E402

PER_SIZE = ("archive-version", "parse_boost", "parse_rapidjson", "dump", "jq dump", "print_boost", "print_rapidjson",
            "content", "jq content", "connect", "plan")


def seconds(wall, processor=None, peak=1000):
    return Sample(wall, wall if processor is None else processor, peak)


def measured(sizes, **changed):
    """Medians in which everything takes 1 second and peaks at 1000 KiB; `changed` by name, "_" for " "."""
    names = ["empty process", "version", "read_heads of nothing", "update", "update with journal",
             "waiting update"]
    names += [at(name, size) for size in sizes for name in (*PER_SIZE, "completion", "read_heads")]
    names += ["update from package 64", "update from package 1024", "sha256sum 1024", "cp 1024", "hash_and_copy 1024"]
    return {**{name: seconds(1) for name in names}, **changed}


class TurnsTest(unittest.TestCase):
    def measure(self, commands, rounds):
        order = []

        def run(command):
            order.append(command.name)
            return seconds(len(order))

        with contextlib.redirect_stderr(io.StringIO()):
            return measure.measure(commands, rounds, run), order

    def test_in_turn_and_the_first_round_does_not_count(self):
        samples, order = self.measure([Command("a", []), Command("b", [])], 2)
        self.assertEqual(order, ["a", "b"] * 3)
        self.assertEqual([one.wall for one in samples["a"]], [3, 5])
        self.assertEqual([one.wall for one in samples["b"]], [4, 6])

    def test_commands_of_fewer_rounds(self):
        samples, order = self.measure([Command("a", []), Command("slow", [], rounds=1)], 3)
        self.assertEqual(order.count("slow"), 2)
        self.assertEqual((len(samples["a"]), len(samples["slow"])), (3, 1))

    def test_medians_are_taken_singly(self):
        runs = [Sample(1, 30, 200), Sample(9, 10, 100), Sample(2, 20, 900)]
        self.assertEqual(measure.medians({"a": runs}), {"a": Sample(2, 20, 200)})


class ProgramsTest(unittest.TestCase):
    def test_the_journal_of_an_update_is_empty_before_each_run(self):
        with tempfile.TemporaryDirectory() as name:
            scratch = Path(name)
            (scratch / "target.json").write_text("{}", encoding="utf-8")
            data = unittest.mock.Mock()
            data.outdated_rack.return_value = scratch
            without, written = measure.Programs(scratch, data, scratch).updates()
            journal = scratch / "journal"
            without.before()
            self.assertFalse(journal.exists())
            written.before()
            (journal / "run.jsonl").write_text("", encoding="utf-8")
            written.before()
            self.assertEqual(list(journal.iterdir()), [])
            self.assertEqual([command.arguments[-1] for command in (without, written)], ["none", journal])


class GoalTest(unittest.TestCase):
    def test_verdicts(self):
        self.assertEqual(Goal("", 1, 2.0, 2).verdict, "met")
        self.assertEqual(Goal("", 1, 2.01, 2).verdict, "missed")
        self.assertEqual(Goal("", 1, 3, 2, judged=False).verdict, "-")
        self.assertEqual(Goal("", 1, 3).verdict, "-")


class JudgeTest(unittest.TestCase):
    SIZES = (1, 1000, 10000, 100000)

    def goals(self, waiting=5, sizes=SIZES, **changed):
        results = measured(sizes)
        results.update({name.replace("_of_", " of ").replace("__", " "): one for name, one in changed.items()})
        judge = Judge(results, list(sizes), {size: (1024 * 1000, 1024 * 3000) for size in sizes}, waiting)
        return {(goal.name, goal.entries): goal for goal in judge.goals()}

    def test_ratios_of_wall_and_processor_time(self):
        goal = self.goals(**{"dump 1000": seconds(3, 8), "jq dump 1000": seconds(12, 16)})[
            "dump / jq --indent 4", 1000]
        self.assertEqual((goal.value, goal.processor, goal.limit, goal.verdict), (0.25, 0.5, 0.22, "missed"))

    def test_the_fastest_of_others_counts(self):
        goal = self.goals(**{"parse_boost 10000": seconds(0.5), "archive-version 10000": seconds(1.5)})[
            "archive-version / bare parse", 10000]
        self.assertEqual((goal.value, goal.processor, goal.verdict), (3, 3, "missed"))

    def test_small_archives_are_not_judged_where_the_start_counts_most(self):
        goals = self.goals(**{"archive-version 1000": seconds(99), "plan 1000": seconds(99)})
        self.assertEqual(goals["archive-version / bare parse", 1000].verdict, "-")
        self.assertEqual(goals["plan / content", 1000].verdict, "-")
        self.assertEqual(goals["content / jq -r", 1].verdict, "missed")
        self.assertNotIn(("peak memory of dump / description", 1), goals)

    def test_the_cost_of_an_entry_leaves_the_start_out(self):
        changed = {"content 10000": seconds(2, 3), "content 100000": seconds(21, 11), "version": seconds(1, 1)}
        goal = self.goals(**changed)["cost of an entry in content / at 10000", 100000]
        self.assertEqual((goal.value, goal.processor, goal.verdict), (2, 0.5, "missed"))
        small = self.goals(**changed)["cost of an entry in content / at 1000", 10000]
        self.assertEqual(small.verdict, "-")

    def test_completion_stands_without_the_load_and_without_the_start(self):
        goal = self.goals(**{"completion 100000": seconds(8), "archive-version 100000": seconds(2),
                             "read_heads 100000": seconds(5), "read_heads of nothing": seconds(1)})[
            "completion / reading the heads", 100000]
        self.assertEqual((goal.value, goal.verdict), (1.5, "missed"))

    def test_peak_memory_in_sizes_of_what_is_read(self):
        goals = self.goals(**{"dump 10000": seconds(1, 1, 6000), "plan 10000": seconds(1, 1, 22000),
                              "plan 100000": seconds(1, 1, 22000)})
        self.assertEqual((goals["peak memory of dump / description", 10000].value,
                          goals["peak memory of dump / description", 10000].verdict), (6, "missed"))
        plans = [goals["peak memory of plan / descriptions", entries] for entries in (10000, 100000)]
        self.assertEqual([(plan.value, plan.verdict) for plan in plans], [(5.5, "-"), (5.5, "missed")])

    def test_a_plan_without_its_scan(self):
        goal = self.goals(**{"plan 10000": seconds(9), "connect 10000": seconds(6), "version": seconds(1),
                             "content 10000": seconds(2)})["plan without scan / content", 10000]
        self.assertEqual((goal.value, goal.verdict), (2, "-"))

    def test_updates(self):
        goals = self.goals(5, update=seconds(1.1), **{"waiting update": seconds(5.04, 0.02)})
        self.assertEqual(goals["seconds of an update that does not wait", 1000].verdict, "missed")
        self.assertEqual(goals["update / waiting that it asks for", 10].verdict, "met")
        self.assertEqual(goals["processor time while waiting", 10].verdict, "met")
        worse = self.goals(5, **{"waiting update": seconds(5.06, 0.03)})
        self.assertEqual(worse["update / waiting that it asks for", 10].verdict, "missed")
        self.assertEqual(worse["processor time while waiting", 10].verdict, "missed")

    def test_a_journal_is_judged_by_processor_time(self):
        name = "processor time of an update with journal / without"
        for processor, verdict in ((2.1, "met"), (2.11, "missed")):
            goal = self.goals(update=seconds(1, 2), **{"update with journal": seconds(9, processor)})[name, 1000]
            self.assertEqual((goal.value, goal.verdict), (processor / 2, verdict))

    def test_reading_a_package_stands_beside_hashing_and_copying(self):
        goals = self.goals(**{"update from package 1024": seconds(3, 2), "sha256sum 1024": seconds(2, 0.5),
                              "hash_and_copy 1024": seconds(1.5)})
        goal = goals["update from a package of 1 GiB / sha256sum and cp", 64]
        self.assertEqual((goal.value, goal.processor, goal.verdict), (1, 2 / 1.5, "met"))
        goal = goals["update from a package of 1 GiB / bare hash and copy", 64]
        self.assertEqual((goal.value, goal.verdict), (2, "-"))
        slow = self.goals(**{"update from package 1024": seconds(2.61)})
        self.assertEqual(slow["update from a package of 1 GiB / sha256sum and cp", 64].verdict, "missed")

    def test_memory_does_not_grow_with_a_package(self):
        for peak, verdict in ((1000 + 4096, "met"), (1001 + 4096, "missed")):
            goals = self.goals(**{"update from package 1024": seconds(1, 1, peak)})
            self.assertEqual(goals["MiB of peak memory at 1 GiB more than at 64 MiB", 64].verdict, verdict)

    def test_what_nothing_took_is_no_success(self):
        goal = self.goals(**{"jq dump 1": seconds(0)})["dump / jq --indent 4", 1]
        self.assertEqual(goal.verdict, "missed")

    def test_waiting(self):
        self.assertAlmostEqual(measure.waiting_of(10, 4), 5.8)


class ReportTest(unittest.TestCase):
    def test_tables(self):
        self.assertEqual(measure.goal_table([Goal("a", 0, 1.5, 1, 0.25), Goal("long", 10, 2)]).splitlines(), [
            "goal  entries  by wall time  by processor  at most  verdict",
            "a                     1.500         0.250    1.000   missed",
            "long       10         2.000                               -"])

    def test_everything_is_written(self):
        with tempfile.TemporaryDirectory() as name:
            folder, sizes = Path(name), [1000, 10000]
            results = measured(sizes, **{at("content", 1000): seconds(2), at("content", 10000): seconds(3)})
            goals = Judge(results, sizes, {size: (1000, 1000) for size in sizes}, 1).goals()
            measure.write_charts(folder, results, goals, sizes)
            measure.write_results(folder / "r" / "results.json", {"a": [seconds(1)]}, results, goals, {})
            self.assertEqual(sorted(path.name for path in folder.glob("*.svg")),
                             ["cost-per-entry.svg", "peak-memory.svg", "ratios.svg"])
            for path in folder.glob("*.svg"):
                xml.etree.ElementTree.parse(path)
            self.assertIn('"missed"', (folder / "r" / "results.json").read_text(encoding="utf-8"))


class ChartTest(unittest.TestCase):
    def test_lines_on_logarithmic_scales(self):
        text = charts.lines("T", "x", "y", {"a": [(100, 1), (1000, 10), (10000, 100)]})
        points = [tuple(map(float, point.split(","))) for point in text.split('points="')[1].split('"')[0].split()]
        self.assertAlmostEqual(points[1][0], (points[0][0] + points[2][0]) / 2, 1)
        self.assertAlmostEqual(points[1][1], (points[0][1] + points[2][1]) / 2, 1)
        self.assertLess(points[2][1], points[0][1])

    def test_points_that_noise_made_negative_are_left_out(self):
        self.assertEqual(charts.lines("T", "x", "y", {"a": [(100, 1), (1000, -1)]}).count("<circle"), 1)
        self.assertIn("nothing measured", charts.lines("T", "x", "y", {"a": [(100, -1)]}))

    def test_bars_beyond_the_limit_are_marked(self):
        text = charts.bars("T", [("good & fast", 0.5), ("bad", 2), ("good", 0.9)], 1)
        self.assertEqual(text.count(f'fill="{charts.MISSED}"'), 1)
        root = xml.etree.ElementTree.fromstring(text)
        bars = [float(one.get("width")) for one in root.iter("{http://www.w3.org/2000/svg}rect")][1:]
        self.assertAlmostEqual(bars[1], 4 * bars[0], 0)


if __name__ == "__main__":
    unittest.main()
