#!/usr/bin/env python3
"""An update that is killed at any moment leaves a target that the next session finds consistent, and finishes."""

import os
import random
import shutil
import subprocess
import sys
import time

import tool_runs
from tool_runs import ScratchTest, run

sys.path.insert(0, str(tool_runs.PROJECT / "tests" / "sessions"))
import leftovers  # noqa: E402

# So many moments, drawn with this seed.
MOMENTS = int(os.environ.get("KV_KILL_MOMENTS", "25"))
SEED = int(os.environ.get("KV_KILL_SEED", "1"))
# Pauses long enough to be hit, short enough to wait for.
TIME_SCALE = "0.002"
# A later moment than that is after the end.
MARGIN = 1.05


class KillSweepTest(ScratchTest):
    """Kills updates of the example rack."""

    def start(self, *line):
        environment = dict(os.environ, KV_TIME_SCALE=TIME_SCALE)
        return subprocess.Popen(tool_runs.command_of(*line), env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def update_line(self):
        return ("update", "-a", self.archive, "-t", "127.0.0.1", "--emulate", self.rack)

    def reset(self):
        shutil.rmtree(self.rack / "state", ignore_errors=True)

    def seconds_of_an_update(self):
        """The least of some: whatever else the machine does makes them longer."""
        seconds = []
        for _ in range(3):
            self.reset()
            began = time.monotonic()
            self.assertEqual(self.start(*self.update_line()).wait(), 0)
            seconds.append(time.monotonic() - began)
        return min(seconds)

    def state(self):
        """What the target shows and has, with the paths of all files that the emulation keeps."""
        shown = run("elements", "--json", "-t", "127.0.0.1", "--emulate", self.rack)
        self.assertEqual(shown.code, 0, shown.errors.decode())
        paths = sorted(path for path in (self.rack / "state").rglob("*") if path.is_file())
        files = {path: path.read_bytes() for path in paths if "cfdrive" in path.parts}
        return shown.output, paths, files

    def kill_after(self, seconds):
        """True when the update was still running."""
        update = self.start(*self.update_line())
        try:
            update.wait(seconds)
            return False
        except subprocess.TimeoutExpired:
            update.kill()
            update.wait()
            return True

    def check_next_session(self, complete):
        plan = run("plan", *self.update_line()[1:])
        self.assertEqual((plan.code, plan.errors), (0, b""), plan.output.decode())
        again = run(*self.update_line())
        self.assertEqual((again.code, again.errors), (0, b""), again.output.decode())
        self.assertEqual(leftovers.on_target(self.rack), [])
        self.assertEqual(self.state(), complete)

    def test_the_next_session_finishes_the_job(self):
        self.archive, self.rack = self.lay_out_examples()
        longest = self.seconds_of_an_update() * MARGIN
        complete = self.state()
        moments = random.Random(SEED)
        killed = 0
        for number in range(MOMENTS):
            self.reset()
            seconds = moments.uniform(0, longest)
            with self.subTest(number=number, seconds=seconds):
                killed += self.kill_after(seconds)
                self.check_next_session(complete)
        print(f"{MOMENTS} moments of seed {SEED}, {killed} of them during the update")
        self.assertGreater(killed, MOMENTS // 2)


if __name__ == "__main__":
    tool_runs.main()
