"""The verbs of a case's steps; README.md tells what each means."""

import atexit
import functools
import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import tempfile
import time

import cases
import leftovers
from patches import CaseError

# A carriage return is written into expected files as this sign and a line feed: one progress line in each line.
RETURN_SIGN = "\u240d\n".encode()
# The library's version, in its banner or alone as `version` prints it.
VERSION_SIGN = b"{version}"
# In paths that the tool itself shows, by the shell of the system: a POSIX shell, cmd. The last one is for JSON.
PATH_SIGNS = {b"{quote}": (b"'", b'"'), b"{separator}": (b"/", b"\\"), b"{escaped-separator}": (b"/", b"\\\\")}
PRINTED_VERSION = cases.printed_version().encode()
# When something of a document or an event was.
TIME = re.compile(rb'("(?:begin|end|time)": ?)"[0-9-]+T[0-9:.]+Z"')


@functools.cache
def journals():
    """A folder for the journals of all sessions, instead of that of who runs them."""
    folder = tempfile.mkdtemp(prefix="kvstate-")
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder


class Mismatch(Exception):
    """The tool did something else than expected."""

    def __init__(self, what, expected=None, actual=None):
        super().__init__(what)
        self.expected = expected
        self.actual = actual


def canonical_lines(data):
    return b"".join(json.dumps(json.loads(line), sort_keys=True).encode() + b"\n" for line in data.splitlines())


class Runner:
    """How the tool is run, the same for all cases."""

    def __init__(self, tool, launcher=(), fold_crlf=False, timeout=60.0, update=False):
        self.command = [*launcher, str(tool)]
        self.fold_crlf = fold_crlf
        self.timeout = timeout
        self.update = update

    def with_path_signs(self, data):
        """In the text of an expected file what stands for the signs of paths that this system's shell takes."""
        for sign, (posix, windows) in PATH_SIGNS.items():
            data = data.replace(sign, windows if self.fold_crlf else posix)
        return data

    def keep_path_signs(self, data, former):
        """The same in the lines that are as they were."""
        for line in former.split(b"\n"):
            if any(sign in line for sign in PATH_SIGNS):
                data = data.replace(self.with_path_signs(line), line)
        return data

    def fold(self, data):
        return data.replace(b"\r\n", b"\n") if self.fold_crlf else data


class Session:
    """One case on its way: its scratch folder and the process it keeps running."""

    def __init__(self, runner, case, scratch):
        self.runner = runner
        self.case = case
        self.scratch = scratch
        self.process = None
        self.used = {"case.json"}
        self.updated = []
        self.left = []

    def follow(self):
        """Makes every step; raises Mismatch at the first that goes wrong."""
        try:
            for number, step in enumerate(self.case.steps, 1):
                self.make_step(number, step)
            if self.process:
                raise CaseError("the last step leaves a process running")
        finally:
            self.kill_process()
        left = sorted(self.left + leftovers.on_target(self.scratch / "rack"))
        if left != sorted(self.case.leaves):
            raise Mismatch(f"leaves behind {left}, expected {sorted(self.case.leaves)}")
        stray = {path.name for path in self.case.folder.iterdir()} - self.used
        if stray:
            raise CaseError(f"no step uses {', '.join(sorted(stray))}")

    def make_step(self, number, step):
        verb = next((verb for verb in STEP_VERBS if verb in step), None)
        if verb is None:
            raise CaseError(f"step {number}: no verb among {sorted(STEP_VERBS)}")
        function, keys = STEP_VERBS[verb]
        unknown = set(step) - keys - {verb, "about"}
        if unknown:
            raise CaseError(f"step {number}: unknown {sorted(unknown)}")
        function(self, number, step)

    # --- processes ---

    def environment(self, number, step, time_scale):
        environment = {key: value for key, value in os.environ.items() if not key.startswith("KV_")}
        environment.update({"LC_ALL": "C.UTF-8", "KV_TIME_SCALE": time_scale, "KV_TRACE": f"{number}.trace",
                            "XDG_STATE_HOME": journals()})
        environment.update(step.get("env", {}))
        return environment

    def launch(self, number, line, environment):
        arguments = [part.replace("{scratch}", str(self.scratch)) for part in shlex.split(line)]
        with open(self.scratch / f"{number}.out", "wb") as out, open(self.scratch / f"{number}.err", "wb") as err:
            return subprocess.Popen(self.runner.command + arguments, cwd=self.scratch, env=environment,
                                    stdin=subprocess.DEVNULL, stdout=out, stderr=err, start_new_session=True)

    def kill_process(self):
        if self.process and self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()
        self.process = None

    # --- comparisons ---

    def content(self, name):
        """Only what went through the tool's text streams has line ends of the system. Times are left out."""
        data = TIME.sub(rb'\1"{time}"', (self.scratch / name).read_bytes())
        return self.runner.fold(data) if name.endswith((".out", ".err")) else data

    def produced(self, name):
        path = self.scratch / name
        data = self.runner.fold(path.read_bytes()) if path.exists() else b""
        return TIME.sub(rb'\1"{time}"', data.replace(str(self.scratch).encode(), b"{scratch}"))

    def expected(self, name):
        path = self.case.folder / name
        self.used.add(name)
        data = path.read_bytes() if path.exists() else b""
        return self.runner.with_path_signs(data).replace(RETURN_SIGN, b"\r").replace(VERSION_SIGN, PRINTED_VERSION)

    def compare_trace(self, number):
        """The same line by line; only the layout of the JSON lines may differ."""
        self.compare(number, f"{number}.trace", canonical=canonical_lines)

    def compare(self, number, name, prefix=False, canonical=bytes):
        """Compares the file that a step produced with that of the case; a case that has none expects it empty."""
        actual, expected = canonical(self.produced(name)), canonical(self.expected(name))
        if prefix:
            actual = actual[:len(expected)]
        if actual == expected:
            return
        if self.runner.update and not prefix:
            self.write_expected(name, actual)
            return
        raise Mismatch(f"step {number}: {name}", expected, actual)

    def write_expected(self, name, data):
        path = self.case.folder / name
        if data:
            data = re.sub(rb'(^|Tool, Vs |"toolVersion": ?")' + re.escape(PRINTED_VERSION) + rb'(?=$|\\n|",)',
                          rb"\g<1>" + VERSION_SIGN, data, flags=re.MULTILINE)
            former = path.read_bytes() if path.exists() else b""
            path.write_bytes(self.runner.keep_path_signs(data, former).replace(b"\r", RETURN_SIGN))
        else:
            path.unlink(missing_ok=True)
        self.updated.append(name)


# --- verbs ------------------------------------------------------------------------------------------------------------

def wait_for_end(session, process, what):
    try:
        return process.wait(session.runner.timeout)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        raise Mismatch(f"{what}: did not end within {session.runner.timeout:g} s") from None


def run(session, number, step):
    process = session.launch(number, step["run"], session.environment(number, step, "0"))
    code = wait_for_end(session, process, f"step {number}")
    session.compare(number, f"{number}.out")
    session.compare(number, f"{number}.err")
    if step.get("trace"):
        session.compare_trace(number)
    if code != step.get("exit", 0):
        raise Mismatch(f"step {number}: exit code {code}, expected {step.get('exit', 0)}")
    session.left += leftovers.unreleased(session.produced(f"{number}.trace"))


def calls_so_far(path, call):
    """How many calls of that name the trace shows; a line still being written does not count."""
    if not path.exists():
        return 0
    lines = path.read_text(encoding="utf-8").split("\n")[:-1]
    return sum(json.loads(line)["call"] == call for line in lines)


def start(session, number, step):
    if session.process:
        raise CaseError(f"step {number}: a process is running already")
    call, count = step["until"]["call"], step["until"].get("count", 1)
    session.process = session.launch(number, step["start"], session.environment(number, step, "0.1"))
    deadline = time.monotonic() + session.runner.timeout
    while calls_so_far(session.scratch / f"{number}.trace", call) < count:
        if session.process.poll() is not None or time.monotonic() > deadline:
            raise Mismatch(f"step {number}: ended, or {session.runner.timeout:g} s over, before call {count} of {call}",
                           b"", session.produced(f"{number}.out") + session.produced(f"{number}.err"))
        time.sleep(0.01)
    session.compare(number, f"{number}.out", prefix=True)


def kill(session, number, _step):
    if not session.process:
        raise CaseError(f"step {number}: no process is running")
    if session.process.poll() is not None:
        raise Mismatch(f"step {number}: the process has ended by itself")
    session.kill_process()


def replace_archive(session, _number, step):
    shutil.rmtree(session.scratch / "archive")
    cases.lay_out_archive(step["archive"], session.scratch / "archive")


def replace_rack(session, _number, step):
    """Changes what the rack is; what the emulation has written stays."""
    cases.write_target(step["rack"], session.scratch / "rack")


def same(session, number, step):
    first, second = (session.content(name) for name in step["same"])
    if first != second:
        raise Mismatch(f"step {number}: {step['same'][0]} and {step['same'][1]} differ")


def listing(session, number, step):
    """Compares the files below a folder, as names relative to it, with those that are listed."""
    folder = session.scratch / step["listing"]
    found = sorted(path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file())
    if found != sorted(step["files"]):
        raise Mismatch(f"step {number}: {step['listing']} holds {found}, expected {sorted(step['files'])}")


STEP_VERBS = {
    "run": (run, {"exit", "trace", "env"}),
    "start": (start, {"until", "env"}),
    "kill": (kill, set()),
    "archive": (replace_archive, set()),
    "rack": (replace_rack, set()),
    "same": (same, set()),
    "listing": (listing, {"files"}),
}
