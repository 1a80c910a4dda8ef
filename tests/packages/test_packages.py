#!/usr/bin/env python3
"""Makes the packages, unpacks each of them elsewhere, and runs the tool and the examples from there."""

import argparse
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

parser = argparse.ArgumentParser()
for name in ("cpack", "config", "launcher", "version"):
    parser.add_argument(f"--{name}", required=True)
parser.add_argument("--instrumented", action="store_true", help="the library needs the runtime of its sanitizers")
OPTIONS, REST = parser.parse_known_args()
WINDOWS = bool(OPTIONS.launcher)
DLLS = {"KvReflashLib.dll", "KvPlatform.dll", "libgcc_s_seh-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll"}
# The other works that are in our files or beside them: words of their notices.
WORKS = ["Boost Software License", "University of Cincinnati", "THL A29 Limited"]
RUNTIME_WORKS = ["GCC RUNTIME LIBRARY EXCEPTION", "GNU GENERAL PUBLIC LICENSE", "mingw-w64 project", "Lockless"]


def output_of(*command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.returncode}\n{done.stdout.decode()}")
    return done.stdout.decode()


class Package:
    """What every package has to hold; `unpack` puts it into a folder and returns where bin, share, ... are."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="kvpackage-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        output_of(OPTIONS.cpack, "--config", OPTIONS.config, "-G", cls.generator, "-B", str(cls.folder / "made"))
        cls.package, = (path for path in (cls.folder / "made").glob("kvreflash*") if path.is_file())
        cls.root = cls.unpack(cls.package, cls.folder / "unpacked")
        cls.documents = cls.root / "share/doc/kvreflash"

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

    def test_the_examples_that_come_along_make_an_update(self):
        shutil.copytree(self.documents / "examples", self.folder / "examples")
        self.assertEqual(self.run_tool("check", "-a", "examples/archive"), (0, "No findings.\n", ""))
        code, output, errors = self.run_tool("update", "-a", "examples/archive", "-t", "127.0.0.1", "--emulate",
                                             "examples/rack")
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("    Update completed successfully!\n", output)
        self.assertTrue((self.folder / "examples/rack/state").is_dir())

    def test_everything_that_the_tool_needs_lies_beside_it(self):
        if WINDOWS:
            self.assertLessEqual(DLLS, {path.name for path in (self.root / "bin").iterdir()})
        else:
            self.assertEqual({path.name for path in (self.root / "bin").iterdir()}, {"kvreflash"})

    def test_other_works_in_it_have_their_notices(self):
        notices = (self.documents / "THIRD-PARTY-NOTICES.txt").read_text(encoding="utf-8")
        for words in WORKS + (RUNTIME_WORKS if WINDOWS else []):
            self.assertIn(words, notices)
        if not WINDOWS:
            for words in RUNTIME_WORKS:
                self.assertNotIn(words, notices)

    def test_the_documents_are_there(self):
        for document in ("README.md", "CHANGELOG.md", "docs/commands.md", "docs/schemas/archive.schema.json"):
            self.assertTrue((self.documents / document).is_file(), document)

    def test_links_of_the_documents_lead_to_something(self):
        links = [(document, link) for document in self.documents.rglob("*.md")
                 for link in re.findall(r"\]\(([^)\s#]+)", document.read_text(encoding="utf-8"))]
        self.assertGreater(len(links), 40)
        for document, link in links:
            self.assertTrue((document.parent / link).exists(), f"{document.name}: {link}")

    @unittest.skipIf(WINDOWS, "there is no place for them")
    def test_manual_page_and_completion_are_there(self):
        self.assertIn(".SH COMMANDS", (self.root / "share/man/man1/kvreflash.1").read_text(encoding="utf-8"))
        self.assertIn("complete -", (self.root / "share/bash-completion/completions/kvreflash").read_text(encoding="utf-8"))

    def test_it_can_be_linked(self):
        names = {path.relative_to(self.root).as_posix() for path in self.root.rglob("*")}
        self.assertLessEqual({"include/KvReflashLib/KvIReflasher.h", "include/KvReflashLib/KvTOptions.h",
                              "include/KvReflashLib/KvTQueryRecords.h", "include/KvReflashLib/kvreflash.h",
                              "include/KvPlatform/KvEmulation.h", "include/KvPlatform/kvreflash_emulation.h"}, names)
        for library in ("KvReflashLib", "KvPlatform"):
            self.assertTrue(any(name.endswith(f"/{library}/{library}Config.cmake") for name in names), library)
            linked = f"/lib{library}.dll.a" if WINDOWS else f"/lib{library}.so"
            self.assertTrue(any(name.endswith(linked) for name in names), linked)


class ArchivePackageTest(Package, unittest.TestCase):
    generator = "ZIP" if WINDOWS else "TGZ"

    @staticmethod
    def unpack(package, folder):
        shutil.unpack_archive(package, folder)
        root, = folder.iterdir()
        return root


@unittest.skipIf(WINDOWS or not shutil.which("dpkg-deb"), "for Debian and its like")
class DebianPackageTest(Package, unittest.TestCase):
    generator = "DEB"

    @staticmethod
    def unpack(package, folder):
        output_of("dpkg-deb", "--extract", str(package), str(folder))
        return folder / "usr"

    def field(self, name):
        return output_of("dpkg-deb", "--field", str(self.package), name).strip()

    def test_it_tells_what_it_is(self):
        self.assertEqual(self.field("Package"), "kvreflash")
        self.assertEqual(self.field("Version"), OPTIONS.version)
        self.assertEqual(self.package.name, f"kvreflash_{OPTIONS.version}_{self.field('Architecture')}.deb")
        self.assertIn("Copyright (c) 2026 Korvel.", (self.documents / "copyright").read_text(encoding="utf-8"))

    def test_it_depends_on_what_its_programs_need_and_not_on_its_own_libraries(self):
        packages = {re.match(r"\S+", dependency).group() for dependency in self.field("Depends").split(", ")}
        self.assertLessEqual({"libc6", "libstdc++6"}, packages)
        self.assertFalse({name for name in packages if "kv" in name.lower()})

    def test_programs_that_are_linked_later_find_the_libraries(self):
        output_of("dpkg-deb", "--control", str(self.package), str(self.folder / "control"))
        self.assertIn("libKvReflashLib 1 kvreflash", (self.folder / "control/shlibs").read_text(encoding="utf-8"))
        self.assertIn("ldconfig", (self.folder / "control/postinst").read_text(encoding="utf-8"))

    @unittest.skipUnless(hasattr(os, "geteuid") and os.geteuid() == 0, "only root installs packages")
    def test_it_can_be_installed_and_removed(self):
        root = self.folder / "system"
        (root / "var/lib/dpkg/info").mkdir(parents=True)
        (root / "var/lib/dpkg/status").touch()
        command = ["dpkg", f"--root={root}", "--force-depends", "--force-script-chrootless",
                   "--path-include=/usr/share/*", "--log=/dev/null"]
        output_of(*command, "--install", str(self.package))
        self.assertTrue((root / "usr/bin/kvreflash").is_file())
        output_of(*command, "--purge", "kvreflash")
        self.assertFalse((root / "usr/bin/kvreflash").exists())

    @unittest.skipIf(OPTIONS.instrumented, "Python cannot load the library without the runtime of its sanitizers")
    def test_the_package_for_python_finds_its_library(self):
        package, = (self.folder / "made").glob("python3-kvreflash_*_all.deb")
        depends = output_of("dpkg-deb", "--field", str(package), "Depends")
        self.assertIn(f"kvreflash (= {OPTIONS.version})", depends)
        unpacked = self.folder / "python"
        output_of("dpkg-deb", "--extract", str(package), str(unpacked))
        rack = self.folder / "rack-of-python"
        shutil.copytree(self.documents / "examples/rack", rack)
        libraries, = {path.parent for path in self.root.rglob("libKvReflashLib.so.1")}
        program = ("import sys, kvreflash; kvreflash.emulation.serve(sys.argv[1])\n"
                   "with kvreflash.Session(archive=sys.argv[2], target='127.0.0.1') as session:\n"
                   "    print(len(session.prepare().changes))\n")
        done = subprocess.run(["/usr/bin/python3", "-B", "-c", program, str(rack), str(self.documents / "examples/archive")],
                              env={**os.environ, "PYTHONPATH": str(unpacked / "usr/lib/python3/dist-packages"),
                                   "LD_LIBRARY_PATH": str(libraries), "KV_TIME_SCALE": "0"},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.assertEqual((done.returncode, done.stdout), (0, b"20\n"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *REST])
