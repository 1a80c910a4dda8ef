#!/usr/bin/env python3
"""Holds the interface in C against the one that was kept: programs that were built with that one must go on working.

usage: check_abi.py HEADER KEPT [--compiler CC] [--write]

KEPT has one fact a line, as a compiler sees the header: sizes of records, offsets, sizes and order of their fields,
values of constants, declarations of functions. What is kept must be there unchanged; functions and constants may be
added, and fields behind the last one of a record. --write keeps the header's facts."""

import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
RECORD = re.compile(r"typedef struct (kvr_\w+) \{([^}]*)\}")
FIELD = re.compile(r"(\w+);")
FUNCTION = re.compile(r"\w+_API ([^;{]*?)\w+_CALL (kvr_\w+)\(([^)]*)\);")
CALLBACK = re.compile(r"typedef (\w+)\(\w+_CALL\* (kvr_\w+)\)\(([^)]*)\);")
ENUMERATION = re.compile(r"^enum \{([^}]*)\}", re.MULTILINE)


def joined(text):
    return " ".join(text.split())


def prints_of(text):
    """The statements of a program in C that prints what only a compiler knows."""
    for name, body in RECORD.findall(text):
        yield f'printf("record {name} %zu\\n", sizeof({name}));'
        for number, field in enumerate(FIELD.findall(body)):
            yield (f'printf("field {name} {number} {field} %zu %zu\\n", offsetof({name}, {field}), '
                   f"sizeof((({name}*)0)->{field}));")
    for body in ENUMERATION.findall(text):
        for name in re.findall(r"\bKVR_\w+", body):
            yield f'printf("constant {name} %ld\\n", (long){name});'


def facts_of(header, compiler):
    """The facts of a header, a line each."""
    text = COMMENT.sub("", header.read_text(encoding="utf-8"))
    with tempfile.TemporaryDirectory() as scratch:
        source, program = Path(scratch, "facts.c"), Path(scratch, "facts")
        body = "\n".join(prints_of(text))
        source.write_text(f'#include "{header.resolve()}"\n#include <stddef.h>\n#include <stdio.h>\n'
                          f"int main(void) {{\n{body}\nreturn 0;\n}}\n", encoding="utf-8")
        subprocess.run([compiler, "-x", "c", "-std=c99", source, "-o", program], check=True)
        printed = subprocess.run([program], check=True, stdout=subprocess.PIPE, encoding="ascii").stdout
    functions = [f"function {name} {joined(result)}({joined(parameters)})"
                 for result, name, parameters in FUNCTION.findall(text) + CALLBACK.findall(text)]
    return printed.splitlines() + functions


def faults_of(kept, now):
    """Why programs that were built with the kept facts would not work; empty if they would."""
    key_length = {"record": 2, "field": 3, "constant": 2, "function": 2}

    def by_key(facts):
        return {tuple(words[:key_length[words[0]]]): words[key_length[words[0]]:] for words in map(str.split, facts)}

    before, after = by_key(kept), by_key(now)
    faults = []
    for key, values in before.items():
        if key not in after:
            faults.append(f"{' '.join(key)}: it is gone")
        elif key[0] == "record":
            if int(after[key][0]) < int(values[0]):
                faults.append(f"{' '.join(key)}: it was {values[0]} bytes, and is {after[key][0]}")
        elif after[key] != values:
            faults.append(f"{' '.join(key)}: it was '{' '.join(values)}', and is '{' '.join(after[key])}'")
    for key, values in after.items():
        if key[0] == "field" and key not in before and key[:1] + key[1:2] + ("0",) in before:
            offset, size = int(values[1]), int(before["record", key[1]][0])
            if offset < size:
                faults.append(f"{' '.join(key)}: it is within the bytes that the record had")
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("header", type=Path)
    parser.add_argument("kept", type=Path)
    parser.add_argument("--compiler", default="gcc")
    parser.add_argument("--write", action="store_true")
    given = parser.parse_args()
    facts = facts_of(given.header, given.compiler)
    if given.write:
        given.kept.write_text("".join(fact + "\n" for fact in facts), encoding="ascii")
        return 0
    kept = given.kept.read_text(encoding="ascii").splitlines()
    faults = faults_of(kept, facts)
    new = len(set(facts) - set(kept))
    print("\n".join(faults) if faults else f"{len(kept)} facts hold, {new} are new")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
