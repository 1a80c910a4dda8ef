#!/usr/bin/env python3
"""Checks that a shared library exports what a list names, and nothing else.

usage: check_exported_symbols.py [--nm NM] LIBRARY LIST

The list has one symbol per line; "#" begins a comment, "?" marks a symbol that need not be there. What a library
instantiates of the C++ standard library does not count: it is the same in every library.
"""

import argparse
import re
import subprocess
import sys

STANDARD_LIBRARY = re.compile(r"_Z(?:GV|T[ISVT])?Z?N?K?(?:S[tabsiod]|9__gnu_cxx)")


def read_list(text):
    """The required and the optional symbols."""
    required, optional = set(), set()
    for line in text.splitlines():
        words = line.split("#", 1)[0].split()
        if words:
            (optional if words[0] == "?" else required).add(words[-1])
    return required, optional


def exported(nm, library):
    lines = subprocess.run([nm, "-D", "--defined-only", library], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    return {line.split()[-1].split("@")[0] for line in lines if line.strip()}


def faults(symbols, required, optional):
    own = {symbol for symbol in symbols if not STANDARD_LIBRARY.match(symbol)}
    return ([f"missing: {symbol}" for symbol in sorted(required - own)] +
            [f"not meant to be exported: {symbol}" for symbol in sorted(own - required - optional)])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("library")
    parser.add_argument("list")
    arguments = parser.parse_args()
    with open(arguments.list, encoding="utf-8") as file:
        required, optional = read_list(file.read())
    found = faults(exported(arguments.nm, arguments.library), required, optional)
    for fault in found:
        print(fault)
    return 1 if found or not required else 0


if __name__ == "__main__":
    sys.exit(main())
