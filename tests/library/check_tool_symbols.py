#!/usr/bin/env python3
"""Checks that the tool has nothing of the library's rooms in itself: it must link the shared library.

usage: check_tool_symbols.py [--nm NM] TOOL PROJECT

What the rooms define is read from the headers of PROJECT/src: their types, and their functions outside of any class. A
name that the interface, the platform or the tool itself declares as well does not count.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

TYPE = re.compile(r"^(?:class|struct|enum(?: class)?)\s+(?:[A-Z_]+_API\s+)?(\w+)[^;{]*\{", re.MULTILINE)
# A function at the beginning of a line; its line may be the second of a declaration.
FUNCTION = re.compile(r"^(?!class|struct|enum|using|namespace|return|#|/|\s|\}|\))[^\n;(={]*?[\s&*](\w+)\(", re.MULTILINE)
# Without this the tool's symbols were not read.
EXPECTED = re.compile(r"KvISession.*createInstance")


def names_in(text):
    """The types and free functions that a header or source declares at the beginning of a line."""
    return set(TYPE.findall(text)) | set(FUNCTION.findall(text))


def names_below(folders, suffixes):
    names = set()
    for folder in folders:
        for path in sorted(folder.rglob("*")):
            if path.suffix in suffixes:
                names |= names_in(path.read_text(encoding="utf-8"))
    return names


def names_of_rooms(project):
    others = names_below([project / "include", project / "platform"], {".h"})
    others |= names_below([project / "tools"], {".h", ".cpp"})
    return names_below([project / "src"], {".h"}) - others - {"operator", "defined"}


def symbols_of(nm, tool):
    return subprocess.run([nm, "-C", tool], check=True, capture_output=True, text=True).stdout.splitlines()


def names_used(symbol):
    """The types that a symbol mentions, and the functions outside of any class and namespace that it calls by name."""
    return set(re.findall(r"\b[A-Z]\w*", symbol)) | set(re.findall(r"(?<![\w:])([a-z]\w*)(?:\[abi:\w+\])?[(<]", symbol))


def faults(symbols, names):
    """Each name of a room that occurs, with the first symbol that has it."""
    found = {}
    for symbol in symbols:
        for name in names_used(symbol) & names:
            found.setdefault(name, symbol.strip())
    texts = [f"{name}: {found[name]}" for name in sorted(found)]
    if not any(EXPECTED.search(symbol) for symbol in symbols):
        texts.append("the tool does not import KvISession::createInstance, or its symbols cannot be read")
    return texts


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("tool")
    parser.add_argument("project", type=Path)
    arguments = parser.parse_args()
    names = names_of_rooms(arguments.project)
    found = faults(symbols_of(arguments.nm, arguments.tool), names)
    for fault in found:
        print(fault)
    print(f"{len(names)} names of rooms, {len(found)} faults")
    return 1 if found or not names else 0


if __name__ == "__main__":
    sys.exit(main())
