"""The version of the package, and the tag of a wheel with libraries inside; pyproject.toml has everything else."""

import re
import sysconfig
from pathlib import Path

from setuptools import Distribution, setup
from wheel.bdist_wheel import bdist_wheel

FOLDER = Path(__file__).resolve().parent
LIBRARIES = FOLDER / "src" / "kvreflash" / "lib"


def version():
    """The project's version: kept beside this file where the package is made apart from the project."""
    kept = FOLDER / "VERSION"
    if kept.exists():
        return kept.read_text(encoding="utf-8").strip()
    recipe = (FOLDER.parent.parent / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(\w+ VERSION ([\d.]+)", recipe, re.MULTILINE).group(1)


def platform():
    """The platform of the libraries inside; None if there are none."""
    if any(LIBRARIES.glob("*.dll")):
        return "win_amd64"
    if any(LIBRARIES.glob("*.so*")):
        return re.sub(r"[-.]", "_", sysconfig.get_platform())
    return None


class PlatformDistribution(Distribution):
    """Belongs to a platform as soon as libraries are inside."""

    def has_ext_modules(self):
        return platform() is not None


class TaggedWheel(bdist_wheel):
    """A wheel for each Python 3, as no module of it is compiled for one."""

    def get_tag(self):
        return ("py3", "none", platform() or "any")


setup(version=version(), distclass=PlatformDistribution, cmdclass={"bdist_wheel": TaggedWheel})
