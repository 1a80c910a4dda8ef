"""What the tests of the package for Python share: scratch folders with the example archive and rack."""

import json
import os
import shutil
import subprocess
import tempfile
import threading
import unittest
from pathlib import Path

import kvreflash

PROJECT = Path(__file__).resolve().parent.parent.parent
LIBRARIES = Path(os.environ["KVREFLASH_LIBRARY"])
ARCHIVE = Path(os.environ["KVREFLASH_ARCHIVE"])
TOOL = Path(os.environ["KVREFLASH_TOOL"])
RACK = PROJECT / "examples" / "rack"

ADDRESS = "127.0.0.1"
# A filter that lets one element through, and its index then.
ONE = {"element_names": "UserIpl", "unlisted_files": kvreflash.UnlistedFiles.NEVER}


class ScratchTest(unittest.TestCase):
    """A test with a scratch folder, and a copy of the example rack in it."""

    def setUp(self):
        self.scratch = Path(tempfile.mkdtemp(prefix="kvpython-")).resolve()
        self.addCleanup(shutil.rmtree, self.scratch, ignore_errors=True)
        self.addCleanup(kvreflash.emulation.reset)
        self.rack = copy_rack(self.scratch)
        self.journal = self.scratch / "journal"

    def serve(self, *faults, update=None):
        """Serves the rack with these faults; the elements named UserIpl are updated as `update` says."""
        path = self.rack / "target.json"
        target = json.loads(path.read_text(encoding="utf-8"))
        target["faults"] = list(faults)
        for item in items_of(target["inventory"]):
            if update and item.get("parameters", {}).get("NAME") == "UserIpl":
                item["update"] = update
        path.write_text(json.dumps(target), encoding="utf-8")
        kvreflash.emulation.reset()
        return kvreflash.emulation.serve(self.rack)

    def session(self, **options):
        """A session with the example archive and the served rack, closed with the test."""
        session = kvreflash.Session(**{"archive": ARCHIVE, "target": ADDRESS, **options})
        self.addCleanup(session.close)
        return session

    def prepared(self, **options):
        """A session that is ready to run."""
        session = self.session(**options)
        session.prepare()
        return session

    def copy_archive(self, change=None):
        """A copy of the example archive; `change` may alter its description."""
        folder = self.scratch / f"archive{len(list(self.scratch.iterdir()))}"
        shutil.copytree(ARCHIVE, folder)
        if change is not None:
            path = folder / "archive.json"
            description = json.loads(path.read_text(encoding="utf-8"))
            change(description)
            path.write_text(json.dumps(description), encoding="utf-8")
        return folder


def hold_until_stopped(session):
    """Keeps the run of a session from going on after the start of its first element, until a stop is requested."""
    stopped = threading.Event()
    request = session.request_stop

    def note(how=kvreflash.StopRequest.FINISH):
        request(how)
        stopped.set()

    def hold(event):
        if event.kind == kvreflash.EventKind.ELEMENT_START and not stopped.wait(20):
            raise TimeoutError("no stop was requested")
    session.request_stop = note
    session._on_event = hold  # pylint: disable=protected-access
    return session


def copy_rack(folder):
    return Path(shutil.copytree(RACK, folder / "rack", ignore=shutil.ignore_patterns("state")))


def items_of(item):
    """An item of a target's description and all below it."""
    yield item
    for child in item.get("items", []):
        yield from items_of(child)


def run_tool(*line):
    subprocess.run([TOOL, *line], check=True, capture_output=True)
