#!/usr/bin/env python3
"""Makes the package that is an archive file, unpacks it elsewhere and runs the tool from there."""

import argparse
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

parser = argparse.ArgumentParser()
for name in ("cpack", "config", "launcher", "archive", "rack", "version"):
    parser.add_argument(f"--{name}", required=True)
OPTIONS, REST = parser.parse_known_args()
WINDOWS = bool(OPTIONS.launcher)
DLLS = {"KvReflashLib.dll", "KvPlatform.dll", "libgcc_s_seh-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll"}


class ArchivePackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="kvpackage-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        subprocess.run([OPTIONS.cpack, "--config", OPTIONS.config, "-B", str(cls.folder / "made")], check=True,
                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        package, = [path for path in (cls.folder / "made").iterdir() if path.suffix in (".zip", ".gz")]
        shutil.unpack_archive(package, cls.folder / "unpacked")
        cls.root, = (cls.folder / "unpacked").iterdir()

    def run_tool(self, *arguments):
        tool = self.root / "bin" / ("kvreflash.exe" if WINDOWS else "kvreflash")
        environment = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
        done = subprocess.run([*shlex.split(OPTIONS.launcher), str(tool), *arguments], cwd=self.folder,
                              env={**environment, "KV_TIME_SCALE": "0"}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        return done.returncode, done.stdout.decode().replace("\r\n", "\n"), done.stderr.decode()

    def test_the_tool_tells_its_version(self):
        major, minor, patch = OPTIONS.version.split(".")
        text = f"{major}.{minor}" + ("" if patch == "0" else f".{patch}")
        self.assertEqual(self.run_tool("version"), (0, f"{text}\n", ""))

    def test_an_update_of_the_example_rack_succeeds(self):
        rack = self.folder / "rack"
        shutil.copytree(OPTIONS.rack, rack)
        code, output, errors = self.run_tool("update", "-a", OPTIONS.archive, "-t", "127.0.0.1", "--emulate", str(rack))
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("    Update completed successfully!\n", output)
        self.assertTrue((rack / "state").is_dir())

    def test_everything_that_the_tool_needs_lies_beside_it(self):
        if WINDOWS:
            self.assertLessEqual(DLLS, {path.name for path in (self.root / "bin").iterdir()})
        else:
            self.assertEqual({path.name for path in (self.root / "bin").iterdir()}, {"kvreflash"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *REST])
