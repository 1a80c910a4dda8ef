#!/usr/bin/env python3
"""Checks that a shared library exports what a list names, and nothing else.

usage: check_exported_symbols.py [--nm NM | --objdump OBJDUMP] LIBRARY LIST

With --objdump the library is a DLL, whose table of names that tool prints.

The list has one symbol per line; "#" begins a comment, "?" marks a symbol that need not be there.
"""

import argparse
import re
import subprocess
import sys


def read_list(text):
    """The required and the optional symbols."""
    required, optional = set(), set()
    for line in text.splitlines():
        words = line.split("#", 1)[0].split()
        if words:
            (optional if words[0] == "?" else required).add(words[-1])
    return required, optional


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def exported(nm, library):
    lines = output_of(nm, "-D", "--defined-only", library).splitlines()
    return {line.split()[-1].split("@")[0] for line in lines if line.strip()}


def names_of_dll(text):
    """The names in the export table that objdump -p prints."""
    table = text.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    return set(re.findall(r"^\s*\[\s*\d+\]\s+(\S+)$", table, re.MULTILINE))


def faults(symbols, required, optional):
    return ([f"missing: {symbol}" for symbol in sorted(required - symbols)] +
            [f"not meant to be exported: {symbol}" for symbol in sorted(symbols - required - optional)])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--objdump")
    parser.add_argument("library")
    parser.add_argument("list")
    arguments = parser.parse_args()
    with open(arguments.list, encoding="utf-8") as file:
        required, optional = read_list(file.read())
    symbols = (names_of_dll(output_of(arguments.objdump, "-p", arguments.library)) if arguments.objdump
               else exported(arguments.nm, arguments.library))
    found = faults(symbols, required, optional)
    for fault in found:
        print(fault)
    return 1 if found or not required else 0


if __name__ == "__main__":
    sys.exit(main())
