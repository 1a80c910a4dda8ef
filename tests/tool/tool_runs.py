"""What the scripts of this folder share: the tool that they are given, scratch folders, and the cases of the session
tests as data."""

import argparse
import atexit
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent.parent

sys.path.insert(0, str(PROJECT / "tests" / "sessions"))
import cases  # noqa: E402

arguments = argparse.Namespace()


def main():
    """Runs the tests of the calling script."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", type=Path, required=True, help="the kvreflash to run")
    parser.add_argument("--archive", type=Path, required=True, help="the example archive")
    parser.add_argument("--rack", type=Path, required=True, help="the example rack")
    parser.add_argument("--launcher", default="", help='what runs the tool ("wine")')
    parser.add_argument("--fold-crlf", action="store_true", help="take CR LF of the tool as LF")
    parser.parse_known_args(namespace=arguments)
    if "XDG_STATE_HOME" not in os.environ:  # no test writes into the journal of who runs it
        os.environ["XDG_STATE_HOME"] = tempfile.mkdtemp(prefix="kvstate-")
        atexit.register(shutil.rmtree, os.environ["XDG_STATE_HOME"], ignore_errors=True)
    unittest.main(argv=sys.argv[:1])


class Run:
    """A run of the tool that has ended."""

    def __init__(self, process):
        self.code = process.returncode
        self.output = process.stdout
        self.errors = process.stderr


def command_of(*line):
    """The tool with these arguments, as a command of this system."""
    return [*shlex.split(arguments.launcher), str(arguments.tool.resolve()), *map(str, line)]


def run(*line, folder=None, trace=None, timeout=300, starter=(), **options):
    """Runs the tool with these arguments, in `folder`; sleeps take no time. Its calls are appended to the file `trace`
    of that folder. After `timeout` seconds the test fails. `starter` is a command that runs the one that follows it."""
    environment = {key: value for key, value in os.environ.items() if not key.startswith("KV_")}
    environment.update({"LC_ALL": "C.UTF-8", "KV_TIME_SCALE": "0"})
    if trace:
        environment["KV_TRACE"] = trace
    process = subprocess.run([*starter, *command_of(*line)], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                             capture_output=True, check=False, timeout=timeout, **options)
    if arguments.fold_crlf:
        process.stdout = process.stdout.replace(b"\r\n", b"\n")
        process.stderr = process.stderr.replace(b"\r\n", b"\n")
    return Run(process)


def in_posix_quotes(text):
    """What the tool itself says, with its paths in the quotes of a POSIX shell. Its launcher is for Windows."""
    return re.sub(r'^kvreflash: .*$', lambda line: line[0].replace('"', "'"), text, flags=re.MULTILINE) \
        if arguments.launcher else text


def pastable(message):
    """A message of the library with the path of an archive, as the tool itself says it: with the separator of the system.
    Its launcher is for Windows."""
    return message if arguments.launcher else message.replace("\\", "/")


class ScratchTest(unittest.TestCase):
    """A test with a scratch folder of its own."""

    def setUp(self):
        self.scratch = Path(tempfile.mkdtemp(prefix="kvtool-")).resolve()
        self.addCleanup(shutil.rmtree, self.scratch, ignore_errors=True)

    def lay_out_case(self, name):
        """Makes the archive and rack of a session case; returns their folders."""
        folder = self.scratch / name
        folder.mkdir()
        cases.lay_out(cases.Case(cases.CASES / name), folder)
        return folder / "archive", folder / "rack"

    def lay_out_examples(self, name="examples"):
        """Copies the example archive and rack into a folder of that name."""
        folder = self.scratch / name
        shutil.copytree(arguments.archive, folder / "archive")
        shutil.copytree(arguments.rack, folder / "rack", ignore=shutil.ignore_patterns("state"))
        return folder / "archive", folder / "rack"
