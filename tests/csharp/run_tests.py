#!/usr/bin/env python3
"""Compiles the .NET assembly, the tests and the example with mcs, and runs them with mono.

usage: run_tests.py [--build BUILD]

BUILD is the build folder with the libraries and the example archive. The last line is "N passed, N failed".
"""

import argparse
import os
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
PROJECT = HERE.parents[1]
sys.path.insert(0, str(PROJECT / "bindings/csharp"))

import make_package  # noqa: E402  # pylint: disable=wrong-import-position

COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
RECORD = re.compile(r"typedef struct (kvr_\w+) \{([^}]*)\}")
FIELD = re.compile(r"(\w+);")
FUNCTION = re.compile(r"KVR_API [^;{]*?KVR_CALL (kvr_\w+)\(([^)]*)\);")
CONSTANTS = re.compile(r"^enum \{([^}]*)\}", re.MULTILINE)
# What the assembly makes exceptions of.
RESULTS = re.compile(r"KVR_(SUCCESS|FAILED|UNSUPPORTED|ERROR_\w+)$")


def prints_of(header):
    """The lines of a program in C that prints the facts of a header."""
    text = COMMENT.sub("", header)
    for name, body in RECORD.findall(text):
        yield f'printf("record {name} %zu\\n", sizeof({name}));'
        for field in FIELD.findall(body):
            yield (f'printf("field {name} {field} %zu %zu\\n", offsetof({name}, {field}), '
                   f"sizeof((({name}*)0)->{field}));")
    for name, parameters in FUNCTION.findall(text):
        count = 0 if parameters == "void" else parameters.count(",") + 1
        yield f'printf("function {name} {count}\\n");'
    for body in CONSTANTS.findall(text):
        for name in re.findall(r"KVR_\w+", body):
            if not RESULTS.match(name):
                yield f'printf("constant {name} %ld\\n", (long){name});'


def facts_of_header(folder):
    """A file with the layout of records, the functions and the constants, as a compiler for C sees them."""
    source = folder / "facts.c"
    header = PROJECT / "include/kvreflash.h"
    body = "\n".join(prints_of(header.read_text(encoding="utf-8")))
    source.write_text('#include "kvreflash.h"\n#include <stddef.h>\n#include <stdio.h>\n'
                      f"int main(void) {{\n{body}\n}}\n", encoding="utf-8")
    subprocess.run(["gcc", "-std=c99", f"-I{header.parent}", source, "-o", folder / "facts"], check=True)
    facts = folder / "facts.txt"
    facts.write_bytes(subprocess.run([folder / "facts"], check=True, stdout=subprocess.PIPE).stdout)
    return facts


def compile_program(program, sources, assembly):
    subprocess.run(["mcs", "-nologo", "-langversion:7.2", "-warnaserror", f"-r:{assembly}", f"-out:{program}",
                    *sources], check=True)
    return program


def mono(libraries, *command):
    """The result of a .NET program that finds the libraries in a folder; None: beside itself."""
    environment = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
    environment["KV_TIME_SCALE"] = "0"
    if libraries:
        environment["LD_LIBRARY_PATH"] = str(libraries)
    return subprocess.run(["mono", "--debug", *(str(word) for word in command)], env=environment,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=300, check=False)


def read_screen(screen, until=None):
    """What programs write to a terminal: up to some text, or to their end."""
    shown = b""
    while until is None or until not in shown:
        try:
            part = os.read(screen, 4096)
        except OSError:  # the last program has closed the terminal
            part = b""
        if not part:
            break
        shown += part
    return shown


class Place:
    """What is made once for all tests."""

    def __init__(self, folder, build):
        self.folder = folder
        self.build = build
        self.libraries = build / "bin"
        self.archive = build / "examples/archive"
        self.rack = PROJECT / "examples/rack"
        self.package = make_package.make_package(folder, build)
        self.assembly = folder / "KvReflash.dll"
        self.example = compile_program(folder / "Update.exe", [PROJECT / "examples/csharp/Update.cs"], self.assembly)


PLACE = None


class Scripted(unittest.TestCase):
    """What takes a process or a folder of its own."""

    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(dir=PLACE.folder))
        self.rack = self.folder / "rack"
        shutil.copytree(PLACE.rack, self.rack)

    def run_example(self, *arguments, program=None, libraries=None):
        return mono(libraries, program or PLACE.example, *arguments)

    def update(self, *arguments, **options):
        return self.run_example(PLACE.archive, "127.0.0.1", *arguments, libraries=PLACE.libraries, **options)

    def test_the_example_updates_and_verifies(self):
        result = self.update(self.rack)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertRegex(result.stdout, r"^20 of 26 elements are updated\n")
        self.assertIn("  100 %\n", result.stdout)
        self.assertTrue(result.stdout.endswith("Verified: yes\n"), result.stdout)

    def test_the_example_states_why_it_fails(self):
        result = self.run_example(PLACE.archive, "127.0.0.9", self.rack, libraries=PLACE.libraries)
        self.assertEqual(result.returncode, 4)
        self.assertRegex(result.stderr, r"^Target: .+\n$")

    def test_the_example_refuses_an_archive_with_errors(self):
        result = self.run_example(self.folder / "nothing", "127.0.0.1", self.rack, libraries=PLACE.libraries)
        self.assertEqual(result.returncode, 3)
        self.assertRegex(result.stdout, r"^error: .+\n$")

    def test_the_example_states_its_usage(self):
        result = self.run_example(libraries=PLACE.libraries)
        self.assertEqual((result.returncode, result.stdout), (64, ""))
        self.assertRegex(result.stderr, "^usage: ")

    def test_an_interrupt_ends_the_example_when_what_has_begun_is_done(self):
        environment = {**os.environ, "KV_TIME_SCALE": "1", "TERM": "xterm", "LD_LIBRARY_PATH": str(PLACE.libraries)}
        command = ["mono", PLACE.example, PLACE.archive, "127.0.0.1", self.rack]
        screen, terminal = pty.openpty()  # mono notices Ctrl-C at a terminal only
        with subprocess.Popen(command, env=environment, stdin=terminal, stdout=terminal,
                              stderr=subprocess.PIPE) as update:
            os.close(terminal)
            shown = read_screen(screen, b"Phase 0")
            update.send_signal(signal.SIGINT)
            shown += read_screen(screen)
            errors = update.stderr.read().decode()
        os.close(screen)
        self.assertEqual(update.returncode, 7, shown)
        self.assertRegex(errors, r"^Stopped: .+\n$")
        self.assertNotIn(b"Phase 1", shown)
        self.assertNotIn(b"Verified", shown)

    def test_the_package_works_in_a_folder_of_its_own(self):
        with zipfile.ZipFile(PLACE.package) as package:
            package.extractall(self.folder / "package")
        program = self.folder / "program"
        program.mkdir()
        for part in ("lib/net45/KvReflash.dll", "runtimes/linux-x64/native/libKvReflashLib.so",
                     "runtimes/linux-x64/native/libKvPlatform.so.1"):
            shutil.copy(self.folder / "package" / part, program)
        compile_program(program / "Update.exe", [PROJECT / "examples/csharp/Update.cs"], program / "KvReflash.dll")
        # Before anything else has loaded what the library needs.
        result = self.run_example(self.folder / "nothing", "127.0.0.1", program=program / "Update.exe")
        self.assertEqual((result.returncode, result.stderr), (3, ""))
        result = self.run_example(PLACE.archive, "127.0.0.1", self.rack, program=program / "Update.exe")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("Verified: yes\n", result.stdout)

    def test_the_package_describes_its_parts(self):
        with zipfile.ZipFile(PLACE.package) as package:
            names = package.namelist()
            types = ElementTree.fromstring(package.read("[Content_Types].xml"))
            nuspec = ElementTree.fromstring(package.read("KvReflash.nuspec"))
            relationships = ElementTree.fromstring(package.read("_rels/.rels"))
        self.assertEqual(sorted(names), ["KvReflash.nuspec", "README.md", "[Content_Types].xml", "_rels/.rels",
                                         "lib/net45/KvReflash.dll", "lib/net45/KvReflash.xml",
                                         "runtimes/linux-x64/THIRD-PARTY-NOTICES.txt",
                                         "runtimes/linux-x64/native/libKvPlatform.so.1",
                                         "runtimes/linux-x64/native/libKvReflashLib.so"])
        described = {row.get("Extension") for row in types}
        self.assertEqual({name.rsplit(".", 1)[1] for name in names if name != "[Content_Types].xml"}, described)
        version = nuspec.find("{*}metadata/{*}version").text
        self.assertEqual(PLACE.package.name, f"KvReflash.{version}.nupkg")
        self.assertEqual([row.get("Target") for row in relationships], ["/KvReflash.nuspec"])

    def test_the_package_holds_libraries_for_windows_if_they_were_built(self):
        build = self.folder / "windows"
        (build / "bin").mkdir(parents=True)
        for file in ("bin/KvReflashLib.dll", "bin/other.dll", "bin/kvreflash.exe", "THIRD-PARTY-NOTICES.txt"):
            (build / file).write_text(file, encoding="utf-8")
        package = make_package.make_package(self.folder / "out", windows=build)
        with zipfile.ZipFile(package) as content:
            native = sorted(name for name in content.namelist() if name.startswith("runtimes/"))
        self.assertEqual(native, ["runtimes/win-x64/THIRD-PARTY-NOTICES.txt",
                                  "runtimes/win-x64/native/KvReflashLib.dll", "runtimes/win-x64/native/other.dll"])

    def test_the_same_input_makes_the_same_parts(self):
        again = make_package.make_package(self.folder / "again", PLACE.build)
        with zipfile.ZipFile(PLACE.package) as one, zipfile.ZipFile(again) as other:
            # The compiler gives each assembly an identity of its own.
            names = [name for name in one.namelist() if not name.endswith(".dll")]
            self.assertEqual([one.read(name) for name in names], [other.read(name) for name in names])

    def test_a_library_that_is_too_old_is_refused(self):
        source = self.folder / "old.c"
        source.write_text("unsigned kvr_abi_version(void) { return 0; }\n", encoding="utf-8")
        subprocess.run(["gcc", "-shared", "-fPIC", source, "-o", self.folder / "libKvReflashLib.so"], check=True)
        result = self.run_example(PLACE.archive, "127.0.0.1", libraries=self.folder)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("NotSupportedException: KvReflashLib has version 0 of its C interface; 1 is needed",
                      result.stderr)

    def test_a_missing_library_is_named(self):
        result = self.run_example(PLACE.archive, "127.0.0.1")
        self.assertIn("DllNotFoundException: KvReflashLib", result.stderr)

    def test_the_documentation_has_all_public_members(self):
        documented = {member.get("name") for member in ElementTree.parse(PLACE.folder / "KvReflash.xml").iter("member")}
        for member in ("T:KvReflash.Session", "M:KvReflash.Session.Prepare", "P:KvReflash.Outcome.Elements",
                       "F:KvReflash.Failure.Locked", "M:KvReflash.Emulation.Serve(System.String)"):
            self.assertIn(member, documented)


def run_compiled_tests():
    """Runs the tests in C#. Returns how many have passed and failed."""
    program = compile_program(PLACE.folder / "Tests.exe", sorted(HERE.glob("*.cs")), PLACE.assembly)
    result = mono(PLACE.libraries, program, facts_of_header(PLACE.folder), PLACE.archive, PLACE.rack)
    print(result.stdout + result.stderr, end="")
    passed = len(re.findall(r"^ok ", result.stdout, re.MULTILINE))
    failed = len(re.findall(r"^FAILED ", result.stdout, re.MULTILINE))
    ended_early = result.returncode != (1 if failed else 0) or passed == 0
    return passed, failed + (1 if ended_early else 0)


def main():
    global PLACE  # pylint: disable=global-statement
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--build", type=Path, default=PROJECT / "build/release")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        try:
            PLACE = Place(Path(folder), arguments.build.resolve())
            passed, failed = run_compiled_tests()
        except subprocess.CalledProcessError as failure:
            print(f"{failure}\n0 passed, 1 failed")
            return 1
        scripted = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    broken = len(scripted.failures) + len(scripted.errors)
    print(f"{passed + scripted.testsRun - broken} passed, {failed + broken} failed")
    return 0 if failed + broken == 0 and passed > 0 else 1


if __name__ == "__main__":
    sys.exit(main())
