#!/usr/bin/env python3
"""Checks the rules of the house that no compiler and no formatter knows.

usage: check_house.py [PROJECT FOLDER]

Errors (exit code 1): a function of more than 80 lines; an include that goes up or sideways in the layering; files that
include each other in a ring; a platform conditional outside the files that are meant for it; two headers of one name.
Warnings: a function of more than 40 lines; a file of more than 500 lines.
"""

import re
import sys
from pathlib import Path

FUNCTION_LIMIT = 80
FUNCTION_WARNING = 40
FILE_WARNING = 500

# Which folders, or single headers, the files of a folder may include, besides their own.
INTERFACES = {"include", "platform/include"}
LAYERS = {
    "include": set(),
    "platform/include": set(),
    "platform/emulation": {"platform/include"},
    "src/system": set(),
    "src/guards": {"platform/include"},
    "src/documents": INTERFACES,
    "src/console": INTERFACES | {"src/system"},
    "src/archive": INTERFACES | {"src/console", "src/guards", "src/system"},
    "src/target": INTERFACES | {"src/console", "src/guards", "src/system", "src/archive"},
    "src/inventory": INTERFACES | {"src/console", "src/guards"},
    "src/planning": INTERFACES | {"src/archive", "src/inventory", "src/console"},
    "src/check": INTERFACES | {"src/planning", "src/target", "src/archive", "src/console", "src/system"},
    "src/preparation": INTERFACES | {"src/planning", "src/target", "src/archive", "src/inventory", "src/console"},
    "src/execution": INTERFACES | {"src/planning", "src/target", "src/archive", "src/inventory", "src/console",
                                   "src/guards", "src/system"},
    "src/verification": INTERFACES | {"src/preparation", "src/planning", "src/inventory", "src/console", "src/guards"},
    "src/session": INTERFACES | {"src/preparation", "src/execution", "src/verification", "src/check", "src/planning",
                                 "src/target", "src/archive", "src/inventory", "src/console", "src/guards",
                                 "src/system"},
    "tools": INTERFACES | {"platform/emulation/control/KvEmulation.h"},
}

PLATFORM_CONDITIONAL = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*"
                                  r"(?:_WIN32|_WIN64|\bWIN32\b|__linux__|__unix__|__APPLE__|_MSC_VER|__MINGW|__CYGWIN__)")
PLATFORM_FILES = re.compile(r"src/system/.*|platform/emulation/system/System[^/]*\.cpp|"
                            r"platform/include/KvPlatformExport\.h|include/KvIReflasher\.h")

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
SOURCE_FOLDERS = ("include", "src", "platform", "tools", "tests", "fuzz", "bench", "examples")

# Comments, raw strings, strings and characters; a quote between digits separates them.
UNREAD = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^(\s]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])\'(?:\\.|[^\'\\\n])+\'',
                    re.DOTALL)
SCOPE = re.compile(r"\b(?:namespace|class|struct|union|enum|extern)\b[^()]*$")


def folder_of(path):
    """The folder whose layer a file belongs to: two names of a path below src or platform, else one."""
    parts = path.split("/")
    return "/".join(parts[:2]) if parts[0] in ("src", "platform") else parts[0]


def without_text(code):
    """The code with comments and literals blanked out, line for line."""
    blanked = UNREAD.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), code)
    return re.sub(r"^[ \t]*#.*?(?<!\\)$", lambda match: re.sub(r"[^\n]", " ", match.group()), blanked,
                  flags=re.MULTILINE | re.DOTALL)


def functions(code):
    """(first line, last line) of every function that is not inside another one."""
    text = without_text(code)
    found, scopes, head, function = [], [], 0, None
    for place in (match.start() for match in re.finditer(r"[{};]", text)):
        mark = text[place]
        if mark == ";":
            head = place + 1 if function is None else head
        elif mark == "{":
            is_function = function is None and ")" in text[head:place] and not SCOPE.search(text[head:place])
            if is_function:
                function = (len(scopes), head)
            scopes.append(head)
            head = place + 1 if not is_function else head
        elif scopes:
            opened = scopes.pop()
            follower = text[place + 1:].lstrip()[:1]
            if function is None or function[0] != len(scopes):
                head = place + 1 if function is None else head
                continue
            if follower in (",", "{"):  # the braces initialised a member; the constructor's body is still to come
                function, head = None, opened
                continue
            found.append(span(text, function[1], place))
            function, head = None, place + 1
    return found


def span(text, begin, end):
    begin += re.match(r"\s*(?:(?:public|protected|private)\s*:\s*)?", text[begin:end]).end()
    return text.count("\n", 0, begin) + 1, text.count("\n", 0, end) + 1


class House:
    """The sources of a project folder and what is wrong with them."""

    def __init__(self, project):
        self.errors = []
        self.warnings = []
        paths = sorted(path for folder in SOURCE_FOLDERS for path in (project / folder).rglob("*")
                       if path.suffix in (".h", ".cpp"))
        self.sources = {path.relative_to(project).as_posix(): path.read_text(encoding="utf-8") for path in paths}
        self.headers = {}
        for path in self.sources:
            if path.endswith(".h"):
                self.headers.setdefault(path.rsplit("/", 1)[-1], []).append(path)

    def check(self):
        for name, paths in self.headers.items():
            if len(paths) > 1:
                self.errors.append(f"{name}: {len(paths)} headers of this name: {', '.join(paths)}")
        for path, code in self.sources.items():
            self.check_lengths(path, code)
            self.check_layer(path)
            self.check_conditionals(path, code)
        self.check_rings()

    def included(self, path):
        """The project's files that `path` includes."""
        names = INCLUDE.findall(self.sources[path])
        return [self.headers[name][0] for name in (name.rsplit("/", 1)[-1] for name in names) if name in self.headers]

    def check_lengths(self, path, code):
        for first, last in functions(code):
            length = last - first + 1
            if length > FUNCTION_WARNING:
                where = self.errors if length > FUNCTION_LIMIT else self.warnings
                where.append(f"{path}:{first}: a function of {length} lines")
        lines = code.count("\n")
        if lines > FILE_WARNING:
            self.warnings.append(f"{path}: {lines} lines")

    def check_layer(self, path):
        folder = folder_of(path)
        if folder not in LAYERS:
            return
        for header in self.included(path):
            if not {folder_of(header), header} & (LAYERS[folder] | {folder}):
                self.errors.append(f"{path}: {folder} does not see {folder_of(header)}, but includes {header}")

    def check_conditionals(self, path, code):
        if PLATFORM_FILES.fullmatch(path):
            return
        for number, line in enumerate(code.splitlines(), 1):
            if PLATFORM_CONDITIONAL.match(line):
                self.errors.append(f"{path}:{number}: a platform conditional")

    def check_rings(self):
        """Walks the includes in depth; a header that is met again on its own way closes a ring."""
        done, way = set(), []

        def visit(path):
            if path in way:
                self.errors.append(f"a ring of includes: {' -> '.join(way[way.index(path):] + [path])}")
            elif path not in done:
                way.append(path)
                for header in self.included(path):
                    visit(header)
                done.add(way.pop())

        for path in self.sources:
            visit(path)


def main():
    project = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    house = House(project)
    house.check()
    for warning in house.warnings:
        print(f"warning: {warning}")
    for error in house.errors:
        print(f"error: {error}")
    print(f"{len(house.sources)} files, {len(house.errors)} errors, {len(house.warnings)} warnings")
    return 1 if house.errors or not house.sources else 0


if __name__ == "__main__":
    sys.exit(main())
