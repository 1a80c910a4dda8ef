#!/usr/bin/env python3
"""Archives that try to reach out of their folder, or out of the target's: nothing but the target's state changes."""

import json
import shutil

import tool_runs
from tool_runs import ScratchTest, run

# Target paths, and whether the tool warns of them.
TARGET_PATHS = [
    ("../escaped.cfg", True),
    ("apps/../../escaped.cfg", True),
    ("../../../../../../../../tmp/kv-escaped.cfg", True),
    ("..\\escaped.cfg", True),
    ("..", True),
    ("/tmp/kv-escaped.cfg", False),
    ("//host/share/escaped.cfg", False),
    ("\\\\host\\share\\escaped.cfg", False),
    ("C:\\escaped.cfg", False),
    ("C:escaped.cfg", False),
    ("apps/a\u0000/../../escaped.cfg", False),
    ("apps/new\nline.cfg", False),
    ("apps/\u001b[31mred.cfg", False),
    ("apps/bell\u0007.cfg", False),
    ("", False),
    ("/", False),
    ("apps/" + "a" * 300, False),
    ("a/" * 100 + "deep.cfg", False),
]
# Names of update files, likewise.
NAMES = [
    ("../outside.ini", True),
    ("..\\outside.ini", True),
    ("sub/../../outside.ini", True),
    ("../../../../../../../../etc/hostname", True),
    ("..", True),
    ("/etc/hostname", False),
    ("C:\\windows\\win.ini", False),
    ("network.ini\u0000.exe", False),
    ("new\nline.ini", False),
    ("\u001b]0;title\u0007.ini", False),
    ("", False),
    (".", False),
    ("a" * 5000, False),
]


class HostileArchivesTest(ScratchTest):
    """Updates of the example rack from archives with one hostile entry."""

    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.description = (self.archive / "archive.json").read_text(encoding="utf-8")
        (self.scratch / "examples" / "outside.ini").write_text("outside")

    def write(self, **changes):
        """Changes the entry of network.ini, which is written into the target's file system."""
        description = json.loads(self.description)
        entry = next(entry for entry in description["files"] if entry["name"] == "network.ini")
        entry.update(changes)
        (self.archive / "archive.json").write_text(json.dumps(description), encoding="utf-8")

    def surroundings(self):
        """Everything but what a session may change."""
        state = self.rack / "state"
        return {path: path.read_bytes() if path.is_file() else None
                for path in self.scratch.rglob("*") if state not in [path, *path.parents]}

    def check_update(self, warns):
        before = self.surroundings()
        done = run("update", "-a", self.archive, "-t", "127.0.0.1", "--emulate", self.rack)
        self.assertIn(done.code, (0, 1))
        self.assertEqual(done.errors.count(b"kvreflash: warning: file entry "), int(warns), done.errors.decode())
        # The last line says why the update has failed.
        self.assertEqual(done.errors.count(b"\n"), int(warns) + done.code, done.errors.decode())
        self.assertEqual(self.surroundings(), before)
        written = [path for path in (self.rack / "state").rglob("*")]
        self.assertEqual([path for path in written if not path.resolve().is_relative_to(self.rack / "state")], [])
        # All other entries are updated as ever.
        self.assertIn(b"\nResults:\n", done.output)
        shutil.rmtree(self.rack / "state")

    def test_target_paths(self):
        for path, warns in TARGET_PATHS:
            with self.subTest(path=path[:60]):
                self.write(targetPath=path)
                self.check_update(warns)

    def test_names_of_update_files(self):
        for name, warns in NAMES:
            with self.subTest(name=name[:60]):
                self.write(name=name)
                self.check_update(warns)


if __name__ == "__main__":
    tool_runs.main()
