#!/usr/bin/env python3
"""Compiles the assembly with mcs and makes the NuGet package of it and of the built libraries.

usage: make_package.py [--linux BUILD] [--windows BUILD] [--netstandard DLL] OUTPUT

BUILD is a build folder, such as build/release, with the libraries in bin/. OUTPUT receives KvReflash.dll,
KvReflash.xml and KvReflash.VERSION.nupkg. DLL is what KvReflash.csproj makes, with its .xml beside it. Needs mcs; for
--linux patchelf and strip, too.
"""

import argparse
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path
from xml.sax.saxutils import escape

HERE = Path(__file__).resolve().parent
PROJECT = HERE.parents[1]

# The same input makes the same package.
MOMENT = (1980, 1, 1, 0, 0, 0)

# What KvReflash.csproj has made by its tools.
ASSEMBLY_FACTS = """\
using System.Reflection;
using System.Runtime.Versioning;

[assembly: AssemblyTitle("KvReflash")]
[assembly: AssemblyCompany("Korvel")]
[assembly: AssemblyVersion("{version}.0")]
[assembly: AssemblyFileVersion("{version}.0")]
[assembly: TargetFramework(".NETFramework,Version=v4.5")]
"""

NUSPEC = """\
<?xml version="1.0" encoding="utf-8"?>
<package xmlns="http://schemas.microsoft.com/packaging/2013/05/nuspec.xsd">
  <metadata>
    <id>KvReflash</id>
    <version>{version}</version>
    <authors>Korvel</authors>
    <description>{description}</description>
    <copyright>{copyright}</copyright>
    <readme>README.md</readme>
    <dependencies>
{frameworks}
    </dependencies>
  </metadata>
</package>
"""

RELATIONSHIPS = """\
<?xml version="1.0" encoding="utf-8"?>
<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
  <Relationship Id="manifest" Type="http://schemas.microsoft.com/packaging/2010/07/manifest"
                Target="/KvReflash.nuspec"/>
</Relationships>
"""

FRAMEWORKS = {"net45": ".NETFramework4.5", "netstandard2.0": ".NETStandard2.0"}


def project_fact(pattern):
    """A fact of the project, which its CMakeLists.txt states."""
    return re.search(pattern, (PROJECT / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)


def project_version():
    return project_fact(r"project\(\w+ VERSION ([0-9.]+)")


def run(*command):
    subprocess.run([str(word) for word in command], check=True)


def compile_assembly(output):
    """Makes KvReflash.dll and KvReflash.xml in a folder."""
    facts = output / "AssemblyFacts.cs"
    facts.write_text(ASSEMBLY_FACTS.format(version=project_version()), encoding="utf-8")
    run("mcs", "-nologo", "-target:library", "-langversion:7.2", "-optimize", "-warn:4", "-warnaserror",
        f"-doc:{output / 'KvReflash.xml'}", f"-out:{output / 'KvReflash.dll'}", facts, *sorted(HERE.glob("src/*.cs")))
    facts.unlink()
    return output / "KvReflash.dll"


def linux_libraries(build, scratch):
    """{name in the package: file}: .NET looks for the first name, the library for the second, in its own folder. The
    maker's device access libraries are not built here, and not packed."""
    files = {}
    for built, name in (("libKvReflashLib.so", "libKvReflashLib.so"), ("libKvPlatform.so", "libKvPlatform.so.1")):
        file = build / "bin" / built
        if name == "libKvPlatform.so.1" and not file.exists():
            continue
        files[name] = scratch / name
        shutil.copyfile(file.resolve(), files[name])
        run("strip", "--strip-unneeded", files[name])
        run("patchelf", "--set-rpath", "$ORIGIN", files[name])
    return files


def windows_libraries(build):
    """{name: file} of the libraries and what they load."""
    return {file.name: file for file in sorted((build / "bin").glob("*.dll"))}


def content_types(names):
    """The part that says of each name what it is, by what follows its last point."""
    suffixes = sorted({name.rsplit(".", 1)[1] for name in names} | {"rels"})
    types = {"rels": "application/vnd.openxmlformats-package.relationships+xml"}
    rows = "\n".join(f'  <Default Extension="{suffix}" ContentType="{types.get(suffix, "application/octet")}"/>'
                     for suffix in suffixes)
    return ('<?xml version="1.0" encoding="utf-8"?>\n'
            '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">\n' + rows + "\n</Types>\n")


def nuspec(frameworks):
    rows = "\n".join(f'      <group targetFramework="{FRAMEWORKS[framework]}"/>' for framework in frameworks)
    return NUSPEC.format(version=project_version(), description=escape(project_fact(r'DESCRIPTION "([^"]+)"')),
                         copyright=escape((PROJECT / "notices/copyright").read_text(encoding="utf-8").splitlines()[1]),
                         frameworks=rows)


def parts_of(assemblies, libraries, notices):
    """{name: bytes} of all parts of the package."""
    parts = {"KvReflash.nuspec": nuspec(assemblies).encode(), "README.md": (HERE / "README.md").read_bytes()}
    for framework, assembly in assemblies.items():
        parts[f"lib/{framework}/KvReflash.dll"] = assembly.read_bytes()
        parts[f"lib/{framework}/KvReflash.xml"] = assembly.with_suffix(".xml").read_bytes()
    for system, files in libraries.items():
        for name, file in files.items():
            parts[f"runtimes/{system}/native/{name}"] = file.read_bytes()
        parts[f"runtimes/{system}/THIRD-PARTY-NOTICES.txt"] = notices[system].read_bytes()
    return {"[Content_Types].xml": content_types(parts).encode(), "_rels/.rels": RELATIONSHIPS.encode(), **parts}


def write_package(path, parts):
    with zipfile.ZipFile(path, "w") as package:
        for name, content in parts.items():
            entry = zipfile.ZipInfo(name, MOMENT)
            entry.external_attr = 0o644 << 16
            package.writestr(entry, content, zipfile.ZIP_DEFLATED)


def make_package(output, linux=None, windows=None, netstandard=None):
    """Makes all files in a folder; returns the package."""
    output.mkdir(parents=True, exist_ok=True)
    assemblies = {"net45": compile_assembly(output)}
    if netstandard:
        assemblies["netstandard2.0"] = netstandard
    libraries = {}
    notices = {}
    with tempfile.TemporaryDirectory() as scratch:
        if linux:
            libraries["linux-x64"] = linux_libraries(linux, Path(scratch))
            notices["linux-x64"] = linux / "THIRD-PARTY-NOTICES.txt"
        if windows:
            libraries["win-x64"] = windows_libraries(windows)
            notices["win-x64"] = windows / "THIRD-PARTY-NOTICES.txt"
        package = output / f"KvReflash.{project_version()}.nupkg"
        write_package(package, parts_of(assemblies, libraries, notices))
    return package


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    for option in ("--linux", "--windows", "--netstandard"):
        parser.add_argument(option, type=Path)
    parser.add_argument("output", type=Path)
    arguments = parser.parse_args()
    print(make_package(arguments.output, arguments.linux, arguments.windows, arguments.netstandard))
    return 0


if __name__ == "__main__":
    sys.exit(main())
