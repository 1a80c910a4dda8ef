"""The wheel: it brings the libraries along, and works without anything else of the project."""

import importlib.util
import os
import shutil
import subprocess
import sys
import unittest
import zipfile
from pathlib import Path

import support
from support import ScratchTest

SCRIPT = support.PROJECT / "scripts" / "make_wheel.py"
WINDOWS_LIBRARIES = ("KvPlatform.dll", "KvReflashLib.dll", "libgcc_s_seh-1.dll", "libgcrypt-20.dll",
                     "libgpg-error-0.dll", "libstdc++-6.dll", "libwinpthread-1.dll")

MISSING = [name for name in ("build", "setuptools", "wheel") if not importlib.util.find_spec(name)]
MISSING += [name for name in ("ldd", "strip", "patchelf") if not shutil.which(name)]


def make(*arguments):
    environment = {name: value for name, value in os.environ.items() if not name.startswith(("KVREFLASH", "PYTHON"))}
    return subprocess.run([sys.executable, "-B", SCRIPT, *arguments], capture_output=True, encoding="utf-8",
                          check=False, env=environment)


@unittest.skipIf(MISSING, f"the wheel cannot be made without {', '.join(MISSING)}")
class WheelTest(ScratchTest):
    """Wheels for both systems."""

    def made(self, *arguments):
        """The path of a wheel."""
        process = make(*arguments, self.scratch / "wheels")
        self.assertEqual(process.returncode, 0, process.stderr)
        return Path(process.stdout.strip())

    def metadata(self, wheel, name):
        with zipfile.ZipFile(wheel) as content:
            file, = [file for file in content.namelist() if file.endswith(f".dist-info/{name}")]
            return content.read(file).decode()

    def test_the_wheel_works_on_its_own(self):
        wheel = self.made(support.LIBRARIES)
        version = os.environ["KVREFLASH_VERSION"]
        self.assertEqual(wheel.name, f"kvreflash-{version}-py3-none-linux_x86_64.whl")
        self.assertIn("Root-Is-Purelib: false", self.metadata(wheel, "WHEEL"))
        self.assertIn(f"Version: {version}\n", self.metadata(wheel, "METADATA"))
        installed = self.scratch / "installed"
        with zipfile.ZipFile(wheel) as content:
            content.extractall(installed)
        self.assertTrue((installed / "kvreflash" / "py.typed").exists())
        environment = {"PYTHONPATH": str(installed), "KV_TIME_SCALE": "0"}
        program = support.PROJECT / "examples" / "python" / "update.py"
        output = subprocess.run([sys.executable, "-B", program, support.ARCHIVE, "127.0.0.1", self.rack], check=True,
                                env=environment, cwd=self.scratch, capture_output=True, encoding="utf-8").stdout
        self.assertTrue(output.endswith("Verified: yes\n"), output)
        loaded = "import kvreflash; kvreflash.version(); print(open('/proc/self/maps').read())"
        maps = subprocess.run([sys.executable, "-B", "-c", loaded], check=True, env=environment, capture_output=True,
                              encoding="utf-8").stdout
        libraries = {line.split()[-1] for line in maps.splitlines()
                     if any(name in line for name in ("libKv", "libgcrypt", "libgpg-error"))}
        self.assertEqual(libraries, {str(path) for path in (installed / "kvreflash" / "lib").iterdir()})
        self.assertEqual(len(libraries), 4)

    def test_the_wheel_names_no_folder_of_the_build(self):
        with zipfile.ZipFile(self.made(support.LIBRARIES)) as content:
            for name in content.namelist():
                self.assertNotIn(os.fsencode(support.LIBRARIES), content.read(name), name)

    def test_a_wheel_for_windows_has_the_libraries_of_the_named_folder(self):
        libraries = self.scratch / "dlls"
        libraries.mkdir()
        for name in WINDOWS_LIBRARIES:
            (libraries / name).write_text(name, encoding="utf-8")
        wheel = self.made("--system", "windows", libraries)
        self.assertTrue(wheel.name.endswith("-py3-none-win_amd64.whl"), wheel.name)
        with zipfile.ZipFile(wheel) as content:
            inside = [name for name in content.namelist() if "/lib/" in name]
            self.assertEqual(inside, [f"kvreflash/lib/{name}" for name in WINDOWS_LIBRARIES])
            self.assertEqual(content.read("kvreflash/lib/KvPlatform.dll"), b"KvPlatform.dll")

    def test_missing_libraries_are_named(self):
        libraries = self.scratch / "dlls"
        libraries.mkdir()
        for name in WINDOWS_LIBRARIES[1:]:
            (libraries / name).write_text(name, encoding="utf-8")
        process = make("--system", "windows", libraries, self.scratch / "wheels")
        self.assertEqual((process.returncode, process.stderr),
                         (1, f"make_wheel.py: missing in {libraries}: KvPlatform.dll\n"))
        self.assertFalse((self.scratch / "wheels").exists())


if __name__ == "__main__":
    unittest.main()
