#!/usr/bin/env python3
"""The settings file of a machine."""

import errno
import json
import os
import shutil
import socket
import subprocess
from pathlib import Path

import tool_runs
from machine_settings import FILE, USAGE, SettingsTest
from tool_runs import command_of

TRUST = "/etc/kvreflash/trust"
# As documents call them.
KEYS = ("requirePlan", "trust", "journal")
NOBODY = 65534
REFUSED = 3

# Commands that read an archive, and so ask whom to trust. The target is not there: an archive is refused before.
ARCHIVE_COMMANDS = (["check"], ["archive-version"], ["content"], ["dump"], ["plan", "-t", "127.0.0.9"],
                    ["explain", "-t", "127.0.0.9"], ["matrix", "--emulate", "missing"],
                    ["update", "-t", "127.0.0.9"], ["verify", "-t", "127.0.0.9"])


class ValuesTest(SettingsTest):
    """What a settings file states, and what counts more or less than it."""

    def test_without_a_file_the_defaults_are_in_force(self):
        document = self.settings()
        self.assertEqual(document["file"], {"path": FILE, "state": "absent"})
        self.assertEqual(document["requirePlan"], {"value": False, "source": "default"})
        self.assertEqual(document["trust"], {"value": None, "source": "default"})
        self.assertEqual(document["journal"]["source"], "default")

    def test_without_its_folder_there_is_no_file(self):
        self.folder.rmdir()
        self.assertEqual(self.settings()["file"]["state"], "absent")
        self.folder.write_text("", encoding="utf-8")
        self.assertEqual(self.settings()["file"]["state"], "absent")

    def test_an_empty_file_states_nothing(self):
        self.write("# require-plan = true", "; journal = none", "")
        document = self.settings()
        self.assertEqual(document["file"], {"path": FILE, "state": "read"})
        self.assertEqual({document[name]["source"] for name in KEYS}, {"default"})

    def test_each_key_is_in_force(self):
        rows = (("require-plan = true", "requirePlan", True), ("require-plan = false", "requirePlan", False),
                ("trust = /srv/my trust", "trust", "/srv/my trust"),
                ("journal = /srv/journal", "journal", "/srv/journal"), ("journal = none", "journal", None))
        for line, name, value in rows:
            with self.subTest(line):
                self.write(line)
                document = self.settings()
                self.assertEqual(document[name], {"value": value, "source": "settings-file"})
                self.assertEqual({document[other]["source"] for other in KEYS if other != name}, {"default"})

    def test_a_link_leads_to_the_file(self):
        (self.folder / "real.ini").write_text("require-plan = true\n", encoding="utf-8")
        self.file.symlink_to("real.ini")
        self.assertTrue(self.settings()["requirePlan"]["value"])

    def test_the_command_line_counts_more_than_the_file_and_the_file_more_than_the_default(self):
        given, stated = self.make_trust_folder("given"), self.make_trust_folder("stated")
        self.assertIsNone(self.trust_folder_of())
        shutil.copytree(stated, self.folder / "trust")
        self.assertEqual(self.trust_folder_of(), TRUST)
        self.assertEqual(self.settings()["trust"], {"value": TRUST, "source": "default"})
        self.write(f"trust = {stated}")
        self.assertEqual(self.trust_folder_of(), stated)
        self.assertEqual(self.trust_folder_of("--trust", given), given)
        self.assertEqual(self.trust_folder_of("--trust", "given"), "given")

    def test_the_stated_trust_folder_counts_for_every_command_with_an_archive(self):
        self.write("trust = /srv/missing")
        message = ("the firmware archive is not accepted: the trust folder '/srv/missing' cannot be used: its file "
                   "allowed_signers cannot be read")
        for command in ARCHIVE_COMMANDS:
            with self.subTest(command):
                done = self.run_tool(*command, "-a", self.archive)
                self.assertEqual(done.code, REFUSED, done.errors)
                if command != ["check"]:
                    self.assertEqual(done.errors.decode().splitlines()[-1], f"kvreflash: {message}")
        done = self.run_tool("compare", self.archive, self.archive)
        self.assertEqual(done.code, REFUSED)
        self.assertEqual(done.errors.decode().splitlines()[-1], f"kvreflash: '{self.archive}': {message}")

    def test_the_text_shows_the_same(self):
        self.write("require-plan = true", "trust = /srv/trust", "journal = none")
        done = self.run_tool("settings")
        self.assertEqual((done.code, done.errors), (0, b""))
        self.assertEqual(done.output.decode().splitlines(), [
            f"Settings file: '{FILE}'",
            "",
            "Setting      | Value      | Source       ",
            "-----------------------------------------",
            "require-plan | true       | settings file",
            "trust        | /srv/trust | settings file",
            "journal      | none       | settings file"])

    def test_the_text_states_an_absent_and_an_ignored_file(self):
        for more, state in (((), "absent"), (("--no-settings",), "ignored")):
            lines = self.run_tool("settings", *more).output.decode().splitlines()
            self.assertEqual(lines[0], f"Settings file: '{FILE}' ({state})")
            self.assertEqual(lines[4].split(), ["require-plan", "|", "false", "|", "default"])


class JournalTest(SettingsTest):
    """Where journals are unless anybody says otherwise."""

    def default_journal(self, *starter, **variables):
        environment = {**os.environ, "HOME": "/home/somebody", "XDG_STATE_HOME": "", **variables}
        done = subprocess.run([*starter, *command_of("settings", "--no-settings", "--json")], env=environment,
                              capture_output=True, check=True)
        return json.loads(done.stdout)["journal"]

    def test_it_is_the_folder_of_the_state(self):
        self.assertEqual(self.default_journal(XDG_STATE_HOME="/srv/state"),
                         {"value": "/srv/state/kvreflash", "source": "default"})

    def test_root_has_the_folder_of_the_system(self):
        if os.geteuid() != 0:
            self.skipTest("this is about root")
        for state in ("", "relative"):
            self.assertEqual(self.default_journal(XDG_STATE_HOME=state)["value"], "/var/lib/kvreflash")

    def test_everybody_else_has_the_home_folder(self):
        user = ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"] if os.geteuid() == 0 else []
        if user and subprocess.run([*user, *command_of("version")], capture_output=True, check=False).returncode != 0:
            self.skipTest("nobody else may start this tool")
        for state in ("", "relative"):
            self.assertEqual(self.default_journal(*user, XDG_STATE_HOME=state)["value"],
                             "/home/somebody/.local/state/kvreflash")


class UnusableFileTest(SettingsTest):
    """Files that refuse every command that would use them."""

    def test_what_is_not_understood_is_named(self):
        rows = ((["plan = true"], "line 1: unknown key 'plan'"),
                (["", "# this", "requireplan = true"], "line 3: unknown key 'requireplan'"),
                (["trust.folder = /srv"], "line 1: unknown key 'trust.folder'"),
                (["[update]", "require-plan = true"], "line 1: section 'update': there are no sections"),
                (["[default]", "require-plan = true"], "line 1: it is not KEY = VALUE"),
                (["journal = none", "journal = none"], "line 2: journal is given twice"),
                (["trust = /srv", "journal = none", "trust = /srv"], "line 3: trust is given twice"),
                (["require-plan"], "line 1: require-plan needs a value"),
                (["require-plan ="], "line 1: require-plan needs a value"),
                (["trust = ''"], "line 1: trust needs a value"),
                (["journal ="], "line 1: journal needs a value"),
                (["require-plan = yes"], "line 1: require-plan: 'yes' must be true or false"),
                (["require-plan = true # so"], "line 1: require-plan: 'true # so' must be true or false"),
                (["trust = none"], "line 1: trust: 'none' must be an absolute path"),
                (["trust = trust"], "line 1: trust: 'trust' must be an absolute path"),
                (["journal = off"], "line 1: journal: 'off' must be an absolute path or none"),
                (["journal = /srv/\x1b[31m"], r"line 1: journal: '/srv/\x1B[31m' must be an absolute path or none"))
        for lines, reason in rows:
            with self.subTest(lines):
                self.write(*lines)
                self.assert_unusable(reason)

    def test_a_file_that_is_not_text_is_refused(self):
        for content, reason in ((b"trust = /srv\xff\n", "it is not valid UTF-8"),
                                ("trust = /srv\n".encode("utf-16"), "it is not valid UTF-8"),
                                (b"#" * 65537, "it has more than 65536 bytes")):
            self.file.write_bytes(content)
            self.assert_unusable(reason)
        self.file.write_bytes(b"#" * 65536)
        self.assertEqual(self.settings()["file"]["state"], "read")

    def test_a_file_that_cannot_be_read_is_not_taken_for_absent(self):
        self.write("require-plan = true")
        self.file.chmod(0)
        self.assert_unusable("Permission denied")

    def test_a_folder_that_cannot_be_searched_is_not_taken_for_empty(self):
        for mode in (0, 0o600):
            self.folder.chmod(mode)
            self.assert_unusable("Permission denied")
        self.folder.chmod(0o700)

    def test_a_folder_in_its_place_is_refused(self):
        self.file.mkdir()
        self.assert_unusable("Is a directory")

    def test_what_is_not_a_file_is_refused(self):
        def listen():
            with socket.socket(socket.AF_UNIX) as listener:
                listener.bind(str(self.file))

        not_regular = "it is not a regular file"
        rows = ((lambda: self.file.symlink_to("/"), "Is a directory"), (lambda: os.mkfifo(self.file), not_regular),
                (lambda: self.file.symlink_to("/dev/zero"), not_regular), (listen, not_regular),
                (lambda: self.file.symlink_to("missing"), "it is a link that leads nowhere"),
                (lambda: self.file.symlink_to(self.file.name), os.strerror(errno.ELOOP)))
        for make, reason in rows:
            make()
            with self.subTest(reason):
                self.assert_unusable(reason)
            self.file.replace(self.scratch / "earlier")

    def test_it_refuses_every_command_that_would_use_it(self):
        self.write("unknown = 1")
        for command in ARCHIVE_COMMANDS:
            for more in ((), ("--trust", "given"), ("--unsealed",), ("-q",), ("-v",)):
                with self.subTest(command, more=more):
                    self.assert_unusable("line 1: unknown key 'unknown'", *command, "-a", self.archive, *more)
        self.assert_unusable("line 1: unknown key 'unknown'", "compare", self.archive, self.archive)
        self.assert_unusable("line 1: unknown key 'unknown'", "settings", "--json")

    def test_it_refuses_no_other_command(self):
        self.write("unknown = 1")
        target = ("-t", "127.0.0.1", "--emulate", self.rack)
        for line in (["version"], ["--help"], ["settings", "--help"], ["connect", *target], ["elements", *target],
                     ["capture", "captured", *target], ["seal", self.archive],
                     ["pack", self.archive, "release.kva"]):
            with self.subTest(line):
                self.assertEqual(self.run_tool(*line).code, 0)

    def test_a_fault_of_the_command_line_comes_first(self):
        self.write("unknown = 1")
        done = self.run_tool("content", "-x")
        self.assertEqual(done.code, USAGE)
        self.assertTrue(done.errors.startswith(b"kvreflash: content has no option -x; run "), done.errors)

    def test_nothing_is_written(self):
        self.write("unknown = 1")
        files = ("--report", self.scratch / "report.json", "--events", self.scratch / "events")
        self.assert_unusable("line 1: unknown key 'unknown'", "update", "-a", self.archive, "-t", "127.0.0.1",
                             "--emulate", self.rack, "--json", *files)
        self.assertFalse((self.rack / "state").exists())
        self.assertEqual({path.name for path in self.scratch.iterdir()}, {"etc", "examples"})


class NoSettingsTest(SettingsTest):
    """What --no-settings ignores."""

    def test_no_value_of_the_file_is_in_force(self):
        default = self.settings("--no-settings")
        self.assertEqual(default["file"], {"path": FILE, "state": "ignored"})
        for line in ("require-plan = true", "trust = /srv/trust", "journal = /srv/journal", "journal = none"):
            with self.subTest(line):
                self.write(line)
                self.assertNotEqual(self.settings(), default)
                self.assertEqual(self.settings("--no-settings"), default)

    def test_the_stated_trust_folder_is_not_asked(self):
        self.write("trust = /srv/missing")
        self.assert_trusted_with_no_settings_alone()

    def test_the_trust_folder_of_the_system_is_not_asked(self):
        (self.folder / "trust").mkdir()
        self.assert_trusted_with_no_settings_alone()

    def assert_trusted_with_no_settings_alone(self):
        """The archive is refused, unless settings are ignored."""
        target = ("-t", "127.0.0.1", "--emulate", self.rack)
        for command in (["content"], ["plan", *target], ["update", *target]):
            with self.subTest(command):
                self.assertEqual(self.run_tool(*command, "-a", self.archive).code, REFUSED)
                done = self.run_tool(*command, "-a", self.archive, "--no-settings")
                self.assertEqual((done.code, done.errors), (0, b""))

    def test_a_file_that_cannot_be_used_does_not_matter(self):
        self.file.mkdir()
        self.assert_unusable("Is a directory", "content", "-a", self.archive)
        self.assertEqual(self.run_tool("content", "-a", self.archive, "--no-settings").code, 0)

    def test_a_trust_folder_that_is_given_is_asked(self):
        given = self.make_trust_folder("given")
        self.write("trust = /srv/missing")
        self.assertEqual(self.trust_folder_of("--no-settings", "--trust", given), given)
        self.assertEqual(self.run_tool("content", "-a", self.archive, "--no-settings", "--trust", given).code, REFUSED)

    def test_every_command_takes_it(self):
        target = ("-t", "127.0.0.1", "--emulate", self.rack)
        for line in (["version"], ["connect", *target], ["seal", self.archive], ["pack", self.archive, "release.kva"]):
            done = self.run_tool(*line, "--no-settings")
            self.assertEqual((done.code, done.errors), (0, b""), line)


if __name__ == "__main__":
    tool_runs.main()
