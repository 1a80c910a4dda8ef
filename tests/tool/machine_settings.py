"""What tests with a settings file share. Its place is fixed: each run has a folder /etc of its own, in a mount
namespace."""

import json
import os
import shutil
import subprocess
import sys
from pathlib import Path

from run_journals import RunTest
from tool_runs import PROJECT, run

sys.path.insert(0, str(PROJECT / "tests" / "documents"))
from schemas import strict_validator_of  # noqa: E402

FILE = "/etc/kvreflash/kvreflash.ini"
USAGE = 64

# A shell that puts a folder in the place of /etc, and runs the tool with the rights of the user only: no root reads
# what its rights forbid.
SHELL = 'mount --bind "$0" /etc && exec setpriv --bounding-set=-all --inh-caps=-all "$@"'


def namespace():
    """The command that runs another one in a mount namespace."""
    return ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "--user", "--map-root-user", "--mount"]


def why_not():
    """Why there is no such namespace here; empty if there is."""
    if not shutil.which("unshare") or not shutil.which("setpriv"):
        return "there is no unshare or setpriv"
    command = [*namespace(), "sh", "-c", SHELL, "/etc", "true"]
    tried = subprocess.run(command, capture_output=True, check=False, encoding="utf-8")
    return "" if tried.returncode == 0 else f"the system allows no mount namespace: {tried.stderr}"


class SettingsTest(RunTest):
    """A machine with settings of its own."""

    @classmethod
    def setUpClass(cls):
        cls.why_not = why_not()

    def setUp(self):
        if self.why_not:
            self.skipTest(self.why_not)
        super().setUp()
        self.etc = self.scratch / "etc"
        self.folder = self.etc / "kvreflash"
        self.folder.mkdir(parents=True)
        if Path("/etc/ld.so.cache").exists():  # where the libraries are
            shutil.copy("/etc/ld.so.cache", self.etc)
        self.file = self.folder / "kvreflash.ini"

    def run_tool(self, *line):
        return run(*line, starter=[*namespace(), "sh", "-c", SHELL, self.etc], folder=self.scratch)

    def write(self, *lines):
        self.file.write_text("".join(f"{line}\n" for line in lines), encoding="utf-8")

    def make_trust_folder(self, name):
        """A folder that trusts nobody: an archive that is not sealed is refused, and --unsealed accepts it."""
        folder = self.scratch / name
        folder.mkdir()
        (folder / "allowed_signers").write_text("# nobody\n", encoding="utf-8")
        return str(folder)

    def settings(self, *line):
        """What is in force, as the document says."""
        done = self.run_tool("settings", "--json", *line)
        self.assertEqual((done.code, done.errors), (0, b""))
        document = json.loads(done.output)
        strict_validator_of("settings").validate(document)
        self.assertEqual((document["failure"], document["message"]), (None, ""))
        return document

    def trust_folder_of(self, *line):
        """The trust folder that is asked about an archive that is not sealed."""
        done = self.run_tool("content", "-a", self.archive, "--unsealed", "--json", *line)
        self.assertEqual(done.code, 0, done.errors)
        return json.loads(done.output)["release"]["trustFolder"]

    def assert_unusable(self, reason, *line):
        """A command is refused for the settings file."""
        done = self.run_tool(*(line or ("settings",)))
        self.assertEqual((done.code, done.output), (USAGE, b""))
        self.assertEqual(done.errors.decode(), f"kvreflash: the settings file '{FILE}' cannot be used: {reason}\n")
