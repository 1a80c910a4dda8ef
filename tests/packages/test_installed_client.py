#!/usr/bin/env python3
"""The example client, built from the installed library as an integrator would, by CMake and by pkg-config, and run."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

parser = argparse.ArgumentParser()
for name in ("cmake", "build", "client", "archive", "rack", "compiler"):
    parser.add_argument(f"--{name}", required=True)
OPTIONS, REST = parser.parse_known_args()


def call(*command, **options):
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                          **options)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout.decode()}")
    return done.stdout.decode()


class InstalledClientTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="kvclient-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        call(OPTIONS.cmake, "--install", OPTIONS.build, "--prefix", cls.folder / "installed")
        # Moved, so that nothing can depend on the place of the installation.
        cls.prefix = (cls.folder / "installed").rename(cls.folder / "elsewhere")
        cls.library_folder = next(cls.prefix.glob("lib*/**/libKvReflashLib.so")).parent

    def assert_updates(self, client, **environment):
        rack = self.folder / "rack"
        shutil.rmtree(rack, ignore_errors=True)
        shutil.copytree(OPTIONS.rack, rack, ignore=shutil.ignore_patterns("state"))
        output = call(client, OPTIONS.archive, "127.0.0.1", "--emulate", rack, "--disable", "0", "--reboot",
                      env={**os.environ, "KV_TIME_SCALE": "0", **environment})
        self.assertIn("1: QB4120 (A), SN 2815, Bootloader, phase 0, from qb4120-ipl.kfw\n", output)
        self.assertNotIn("0: QB4120 (A), SN 2815, Firmware, phase", output)
        self.assertIn("Phase 4\n", output)
        self.assertIn("    Update completed successfully!\n", output)

    def test_it_is_built_by_cmake(self):
        build = self.folder / "build"
        call(OPTIONS.cmake, "-S", self.prefix / "share/doc/kvreflash/examples/client", "-B", build,
             f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_COMPILER={OPTIONS.compiler}")
        call(OPTIONS.cmake, "--build", build)
        self.assert_updates(build / "client")

    @unittest.skipUnless(shutil.which("pkg-config"), "there is no pkg-config")
    def test_it_is_built_by_pkg_config(self):
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.library_folder / "pkgconfig")}
        flags = call("pkg-config", "--cflags", "--libs", "KvReflashLib", "KvPlatform", env=environment).split()
        client = self.folder / "client"
        sources = [Path(OPTIONS.client) / name for name in ("Client.cpp", "EmulatedRack.cpp")]
        call(OPTIONS.compiler, "-std=c++20", *sources, *flags, "-o", client)
        self.assert_updates(client, LD_LIBRARY_PATH=str(self.library_folder))

    def test_another_major_version_is_not_found(self):
        project = self.folder / "other"
        project.mkdir()
        (project / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(Other LANGUAGES CXX)\n"
                                                "find_package(KvReflashLib 2.0 REQUIRED)\n", encoding="utf-8")
        with self.assertRaisesRegex(AssertionError, "KvReflashLib"):
            call(OPTIONS.cmake, "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *REST])
