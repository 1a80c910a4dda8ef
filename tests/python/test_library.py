"""How the libraries are found. Each case is a process of its own, as they are loaded once."""

import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

import support
from support import ScratchTest

PACKAGE = support.PROJECT / "bindings" / "python" / "src"
ASK = "import kvreflash; print(kvreflash.version())"
SERVE = f"import kvreflash; print(kvreflash.emulation.serve({str(support.RACK)!r}))"


class LibraryTest(ScratchTest):
    """The package, the variable and the system's loader."""

    def ask(self, statement, package=PACKAGE, **variables):
        """The last line that a new interpreter prints, whatever it is."""
        environment = {name: value for name, value in os.environ.items() if not name.startswith("KVREFLASH")}
        process = subprocess.run([sys.executable, "-B", "-c", statement], check=False, capture_output=True,
                                 encoding="utf-8", cwd=self.scratch,
                                 env={**environment, "PYTHONPATH": str(package), **variables})
        return (process.stdout + process.stderr).splitlines()[-1]

    def copy_package(self, *libraries):
        """A copy of the package with these libraries inside."""
        package = self.scratch / "package"
        shutil.copytree(PACKAGE / "kvreflash", package / "kvreflash", ignore=shutil.ignore_patterns("__pycache__"))
        (package / "kvreflash" / "lib").mkdir()
        for name in libraries:
            shutil.copy(support.LIBRARIES / name, package / "kvreflash" / "lib")
        return package

    def test_the_variable_names_the_folder(self):
        self.assertRegex(self.ask(ASK, KVREFLASH_LIBRARY=str(support.LIBRARIES)), r"^\d+\.\d+")
        self.assertRegex(self.ask(ASK, KVREFLASH_LIBRARY=os.path.relpath(support.LIBRARIES, self.scratch)), r"^\d+\.")

    def test_the_package_goes_before_the_variable(self):
        package = self.copy_package("libKvReflashLib.so.1", "libKvPlatform.so.1")
        self.assertRegex(self.ask(ASK, package, KVREFLASH_LIBRARY="/nowhere"), r"^\d+\.\d+")

    def test_the_system_finds_what_nothing_else_names(self):
        self.assertRegex(self.ask(ASK, LD_LIBRARY_PATH=str(support.LIBRARIES)), r"^\d+\.\d+")
        self.assertEqual(self.ask(SERVE, LD_LIBRARY_PATH=str(support.LIBRARIES)), "127.0.0.1")

    def test_a_missing_library_is_named_with_its_folder(self):
        self.assertRegex(self.ask(ASK, KVREFLASH_LIBRARY=str(self.scratch)),
                         rf"^kvreflash.errors.LibraryNotLoaded: libKvReflashLib.so.1 was not found in {self.scratch}: ")
        self.assertRegex(self.ask(ASK), "^kvreflash.errors.LibraryNotLoaded: .*; KVREFLASH_LIBRARY can name its folder")

    def test_a_library_that_is_too_old_is_refused(self):
        older = f"import kvreflash._library as library; library.ABI_VERSION = 99; {ASK}"
        self.assertEqual(self.ask(older, KVREFLASH_LIBRARY=str(support.LIBRARIES)),
                         "kvreflash.errors.LibraryNotLoaded: libKvReflashLib.so.1 has version 1 of the interface, and "
                         "99 is needed")

    def test_a_platform_of_another_name_serves_no_emulated_targets(self):
        # The product finds its platform itself, in the folder where it was built.
        package = self.copy_package("libKvReflashLib.so.1")
        self.assertRegex(self.ask(ASK, package), r"^\d+\.\d+")
        self.assertRegex(self.ask(SERVE, package), "^kvreflash.errors.EmulationError: ")

    def test_a_forgotten_thread_finishes_its_update(self):
        program = ("import kvreflash, threading\n"
                   f"address = kvreflash.emulation.serve({str(self.rack)!r})\n"
                   f"session = kvreflash.Session(archive={str(support.ARCHIVE)!r}, target=address)\n"
                   "session.prepare()\n"
                   "events = session.run_events()\n"
                   "print(next(events).kind.name)\n")
        self.ask(program, KVREFLASH_LIBRARY=str(support.LIBRARIES), KV_TIME_SCALE="0.01")
        self.assertEqual(list(Path(self.rack, "state", "transferred").glob("*")), [])
        self.assertGreater(len(list(Path(self.rack, "state", "elements").glob("*"))), 15)


if __name__ == "__main__":
    unittest.main()
