"""Which tests look at a room of src/, told by the build description: those of its own folder first, then those of the
product and of the rooms that use it; at last its own once more, under the sanitizers."""

import re
import sys
from dataclasses import dataclass

PLAIN = "build"
SANITIZED = "build-sanitized"
TOOL = "kvreflash"
# The folders of tests/ that look at the product as a whole.
PRODUCT_TESTS = ("library", "tool")
PART = re.compile(r"kv_add_room\((\w+)([^)]*)\)")
PROGRAM = re.compile(r"^kv_add_(?:calls_)?test\((\w+)", re.MULTILINE)
# Snippets that have to be refused by the compiler are tests of ctest's alone.
FORMAT_CHECKS = {"console": "^format-check[.]"}


@dataclass(frozen=True)
class Check:
    """One command of the suite, run in a working copy of the tree. `line` is what the report counts it under."""
    name: str
    line: str
    command: tuple


@dataclass(frozen=True)
class Stage:
    """Checks whose programs are built together in one build folder, and then run one after the other."""
    build: str
    targets: tuple
    checks: tuple


def programs_stage(programs, line, build=PLAIN):
    return Stage(build, tuple(programs), tuple(
        Check(f"{program} ({line})" if build == SANITIZED else program, line,
              (f"{build}/bin/{program}", "--gtest_fail_fast", "--gtest_brief=1")) for program in programs))


def wider(stage, *checks, targets=()):
    return Stage(stage.build, stage.targets + targets, stage.checks + checks)


SESSIONS = Check("golden sessions", "sessions", (sys.executable, "-B", "tests/sessions/run_sessions.py", "--tool",
                                                 f"{PLAIN}/bin/{TOOL}"))


def compiler_check(room):
    return Check("format-check", "room", ("ctest", "--test-dir", PLAIN, "--no-tests=error", "--output-on-failure", "-R",
                                          FORMAT_CHECKS[room]))


class Suite:
    """The tests of a project folder."""

    def __init__(self, project):
        parts = dict(PART.findall((project / "src/CMakeLists.txt").read_text(encoding="utf-8")))
        self.uses = {room: set(re.findall(r"\bkv_(\w+)", text)) & set(parts) for room, text in parts.items()}
        self.programs = {file.parent.name: PROGRAM.findall(file.read_text(encoding="utf-8"))
                         for file in sorted((project / "tests").glob("*/CMakeLists.txt"))}

    def above(self, room):
        """The rooms that use a room, directly or not, in the order of the build description."""
        reached = {room}
        while True:
            more = reached | {user for user, used in self.uses.items() if used & reached}
            if more == reached:
                return [user for user in self.uses if user in reached and user != room]
            reached = more

    def stages(self, room):
        """What runs for a mutant of a room, until something fails: cheap and likely checks first."""
        own = programs_stage(self.programs[room], "room")
        if room in FORMAT_CHECKS:
            own = wider(own, compiler_check(room))
        above = [program for user in self.above(room) for program in self.programs[user]]
        near = [program for program in above if program in self.programs["session"]]
        rest = [program for program in above if program not in near]
        rest += [program for folder in PRODUCT_TESTS for program in self.programs[folder]]
        return [own, wider(programs_stage(near, "above"), SESSIONS, targets=(TOOL,)), programs_stage(rest, "above"),
                programs_stage(self.programs[room] + near, "sanitizers", SANITIZED)]

    def all_stages(self):
        """Everything once, for the unchanged sources."""
        stages = [stage for room in self.uses for stage in self.stages(room)]
        for build in (PLAIN, SANITIZED):
            here = [stage for stage in stages if stage.build == build]
            targets = dict.fromkeys(target for stage in here for target in stage.targets)
            checks = {check.name: check for stage in here for check in stage.checks}
            yield Stage(build, tuple(targets), tuple(checks.values()))
