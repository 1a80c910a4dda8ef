#!/usr/bin/env python3
"""Makes a wheel of bindings/python with the libraries inside.

usage: make_wheel.py [--system linux|windows] LIBRARIES OUTPUT

LIBRARIES is the folder of the built libraries, such as build/release/bin, or build/windows/bin for Windows. The wheel
is made in the folder OUTPUT, and its path is printed. For the python3 that runs the script the Debian packages
python3-build and python3-wheel are needed, and for Linux binutils and patchelf. What the library needs and not every
system has comes along.
"""

import argparse
import importlib.util
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
PACKAGE = PROJECT / "bindings" / "python"

# What each system needs inside: our libraries, and what they need that systems do not have.
LIBRARIES = {
    "linux": ("libKvPlatform.so.1", "libKvReflashLib.so.1"),
    "windows": ("KvPlatform.dll", "KvReflashLib.dll", "libgcc_s_seh-1.dll", "libgcrypt-20.dll", "libgpg-error-0.dll",
                "libstdc++-6.dll", "libwinpthread-1.dll"),
}
# Libraries of the system that come along, since not every Linux has them.
TAKEN_ALONG = ("libgcrypt.so.20", "libgpg-error.so.0")
TOOLS = {"linux": ("ldd", "strip", "patchelf"), "windows": ()}


def project_version():
    recipe = (PROJECT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(\w+ VERSION ([\d.]+)", recipe, re.MULTILINE).group(1)


def require_tools(system):
    """Ends the script if something is missing that the wheel is made with."""
    missing = [f"the module {name}" for name in ("build", "setuptools", "wheel") if not importlib.util.find_spec(name)]
    missing += [f"the program {name}" for name in TOOLS[system] if not shutil.which(name)]
    if missing:
        sys.exit(f"make_wheel.py: missing: {', '.join(missing)}")


def copy_libraries(system, source, target):
    missing = [name for name in LIBRARIES[system] if not (source / name).is_file()]
    if missing:
        sys.exit(f"make_wheel.py: missing in {source}: {', '.join(missing)}")
    target.mkdir()
    for name in LIBRARIES[system]:
        shutil.copy(source / name, target / name)


def take_along(folder):
    """Copies libraries of the system beside those that need them."""
    listed = subprocess.run(["ldd", folder / "libKvReflashLib.so.1"], check=True, stdout=subprocess.PIPE,
                            encoding="utf-8").stdout
    found = dict(re.findall(r"(\S+) => (\S+) \(", listed))
    for name in TAKEN_ALONG:
        if name not in found:
            sys.exit(f"make_wheel.py: {name} is not linked")
        shutil.copy(found[name], folder / name)


def detach(folder):
    """Frees libraries for Linux of the folder in which they were built."""
    for library in folder.iterdir():
        subprocess.run(["strip", "--strip-unneeded", library], check=True)
        subprocess.run(["patchelf", "--set-rpath", "$ORIGIN", library], check=True)


def lay_out(system, libraries, folder):
    """Makes a folder from which the wheel is built."""
    shutil.copytree(PACKAGE, folder, ignore=shutil.ignore_patterns("__pycache__", "*.egg-info", "build", "dist", "lib"))
    (folder / "VERSION").write_text(project_version() + "\n", encoding="utf-8")
    shutil.copytree(PROJECT / "notices", folder / "licenses")
    inside = folder / "src" / "kvreflash" / "lib"
    copy_libraries(system, libraries, inside)
    if system == "linux":
        take_along(inside)
        detach(inside)


def make_wheel(system, libraries, output):
    """Makes the wheel and returns its path."""
    require_tools(system)
    with tempfile.TemporaryDirectory(prefix="kvwheel-") as scratch:
        folder, made = Path(scratch, "package"), Path(scratch, "made")
        lay_out(system, libraries, folder)
        subprocess.run([sys.executable, "-m", "build", "--wheel", "--no-isolation", "--outdir", made, folder],
                       check=True, stdout=sys.stderr)
        wheel, = made.glob("*.whl")
        output.mkdir(parents=True, exist_ok=True)
        return Path(shutil.copy(wheel, output / wheel.name))


def main():
    parser = argparse.ArgumentParser(description="Makes a wheel of the package for Python, with the libraries inside.")
    parser.add_argument("--system", choices=sorted(LIBRARIES), default="linux", help="what the libraries are for")
    parser.add_argument("libraries", type=Path, metavar="LIBRARIES", help="the folder of the built libraries")
    parser.add_argument("output", type=Path, metavar="OUTPUT", help="the folder for the wheel")
    arguments = parser.parse_args()
    print(make_wheel(arguments.system, arguments.libraries, arguments.output))


if __name__ == "__main__":
    main()
