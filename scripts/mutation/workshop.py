"""Working copies of the tree in which mutants are built and run."""

import os
import re
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass

from mutation.suite import PLAIN, SANITIZED

IGNORED = {PLAIN, SANITIZED, ".git", "__pycache__"}
BUILD_TIMEOUT = 1800
# How much longer than the unchanged program a mutant may run, and how long at least, in seconds.
PATIENCE = 5
SHORTEST_TIMEOUT = 20
# Seconds that a command may take to end when it is told to.
GRACE = 10
# A mutant may run wild: bytes of each file that it writes, and of memory. The sanitizers reserve more than there is.
LIMITS = ("prlimit", f"--fsize={8 << 30}", "--core=0")
MEMORY = 8 << 30
FAILED_TEST = re.compile(r"^\[  FAILED  \] ([\w./]+)|^FAILED ([\w.-]+)|^ *\d+/\d+ Test +#\d+: (\S+) .*\*\*\*",
                         re.MULTILINE)
READ_OUTPUT = 1 << 20


class BrokenBaseline(Exception):
    """The unchanged sources cannot be built, or their tests fail."""


class Stopped(Exception):
    """The run was interrupted: what a mutant's programs did since tells nothing."""


@dataclass
class Outcome:
    """What became of a mutant: "noticed", "timeout", "survived" or "not compiled". `line` and `check` tell who noticed
    it, `detail` is the first test that failed or the compiler's first error; `seconds` is what it took."""
    verdict: str
    line: str = ""
    check: str = ""
    detail: str = ""
    seconds: float = 0.0


def files_below(folder):
    for path, folders, names in os.walk(folder):
        folders[:] = [name for name in folders if name not in IGNORED]
        for name in names:
            full = os.path.join(path, name)
            if not os.path.islink(full):
                yield os.path.relpath(full, folder)


def synchronise(project, copy):
    """Makes `copy` equal to the project but for build folders; what is equal already keeps its time, so that it is not
    built again."""
    wanted = set(files_below(project))
    for name in set(files_below(copy)) - wanted:
        (copy / name).unlink()
    for name in wanted:
        target = copy / name
        content = (project / name).read_bytes()
        if not target.is_file() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)
            shutil.copymode(project / name, target)


class Workshop:
    """One working copy with a build folder. Not to be used by several threads, but for stop()."""

    def __init__(self, project, folder, build_jobs):
        self.project = project
        self.copy = folder
        self.build_jobs = build_jobs
        self.scratch = folder.with_name(folder.name + "-scratch")
        self.durations = {}
        self.process = None
        self.stopped = False

    def stop(self):
        """Ends what is running, which then has no result."""
        self.stopped = True
        if self.process is not None:
            self.end(signal.SIGTERM)

    def end(self, how):
        """Sends a signal to the running command and what it has started. It is SIGTERM that ninja passes on."""
        try:
            os.killpg(self.process.pid, how)
        except ProcessLookupError:
            pass  # it has just ended by itself

    def await_end(self, timeout):
        """The exit code; None when the time ran out."""
        try:
            return self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            return None

    def prepare(self, suite):
        """Builds the unchanged sources and measures how long their tests take."""
        self.copy.mkdir(parents=True, exist_ok=True)
        synchronise(self.project, self.copy)
        for stage in suite.all_stages():
            if not (self.copy / stage.build / "build.ninja").is_file():
                self.must_pass("configuring", self.configuration(stage.build))
            self.must_pass("building", self.build_command(stage))
            for check in stage.checks:
                self.durations[check.name] = self.must_pass(check.name, self.limited(check))

    def build_command(self, stage):
        return ["ninja", "-C", stage.build, "-j", str(self.build_jobs), *stage.targets]

    @staticmethod
    def limited(check):
        memory = [] if check.line == "sanitizers" else [f"--as={MEMORY}"]
        return [*LIMITS, *memory, *check.command]

    @staticmethod
    def configuration(build):
        """Little optimisation and no debugging information: compiled and run fastest. No warnings either, lest they
        keep mutants from being built. Tests are not listed after each build."""
        options = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DCMAKE_CXX_FLAGS=-w",
                   f"-DKV_SANITIZE={'ON' if build == SANITIZED else 'OFF'}",
                   "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"]
        if shutil.which("ccache"):
            options.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        linker = next((name for name in ("lld", "gold") if shutil.which(f"ld.{name}")), None)
        if linker and build == PLAIN:
            options += [f"-DCMAKE_{kind}_LINKER_FLAGS=-fuse-ld={linker}" for kind in ("EXE", "SHARED")]
        return ["cmake", "-S", ".", "-B", build, "-G", "Ninja", *options]

    def environment(self):
        environment = {key: value for key, value in os.environ.items() if not key.startswith("KV_")}
        return {**environment, "KV_TIME_SCALE": "0", "TMPDIR": str(self.scratch), "TEST_TMPDIR": str(self.scratch),
                "CCACHE_SLOPPINESS": "pch_defines,time_macros",
                "ASAN_OPTIONS": "detect_leaks=1:strict_string_checks=1:hard_rss_limit_mb=4096"}

    def run(self, command, timeout):
        """(exit code or None when it took too long, what it printed, seconds)"""
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        log = self.copy / "build-output.txt"
        began = time.monotonic()
        with log.open("wb") as output:
            self.process = subprocess.Popen(command, cwd=self.copy, env=self.environment(), stdin=subprocess.DEVNULL,
                                            stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
            code = None
            try:
                code = self.await_end(timeout)
            finally:
                if code is None:
                    self.end(signal.SIGTERM)
                    self.await_end(GRACE)
                self.end(signal.SIGKILL)  # and what it may have left running
                self.process.wait()
        if self.stopped:
            raise Stopped
        with log.open("rb") as output:
            text = output.read(READ_OUTPUT).decode("utf-8", "replace")
        log.unlink()
        return code, text, time.monotonic() - began

    def must_pass(self, what, command):
        code, output, seconds = self.run(command, BUILD_TIMEOUT)
        if code != 0:
            raise BrokenBaseline(f"{what} fails on the unchanged sources (exit code {code}):\n{output[-4000:]}")
        return seconds

    def judge(self, suite, mutant):
        """Builds and runs a mutant, and takes the change back."""
        path = self.copy / mutant.file
        code = path.read_text(encoding="utf-8")
        began = time.monotonic()
        path.write_text(mutant.apply(code), encoding="utf-8")
        try:
            outcome = self.pass_stages(suite.stages(mutant.room))
        finally:
            path.write_text(code, encoding="utf-8")
        outcome.seconds = round(time.monotonic() - began, 1)
        return outcome

    def pass_stages(self, stages):
        for stage in stages:
            code, output, _ = self.run(self.build_command(stage), BUILD_TIMEOUT)
            if code != 0:
                error = re.search(r"\berror: .*", output)
                return Outcome("not compiled", detail=error.group() if error else output[-200:])
            for check in stage.checks:
                outcome = self.pass_check(check)
                if outcome is not None:
                    return outcome
        return Outcome("survived")

    def pass_check(self, check):
        """None when the check passes."""
        timeout = max(SHORTEST_TIMEOUT, PATIENCE * self.durations[check.name])
        code, output, _ = self.run(self.limited(check), timeout)
        if code == 0:
            return None
        if code is None:
            return Outcome("timeout", check.line, check.name)
        failed = FAILED_TEST.search(output)
        detail = next(filter(None, failed.groups())) if failed else f"exit code {code}"
        return Outcome("noticed", check.line, check.name, detail)
