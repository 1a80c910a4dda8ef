#!/usr/bin/env python3
"""Checks the rules of the house that no compiler and no formatter knows.

usage: check_house.py [PROJECT FOLDER]

Rooms are the folders for which CMakeLists.txt files call kv_add_room(); what a room may include are its own headers and
those of its LIBRARIES.

Errors (exit code 1): a function of more than 80 lines; an include that the room's libraries do not give; a library of a
room that it does not include; rooms that need each other in a ring; a folder of sources that is not a room; a room of
more than 30 files; files that include each other in a ring; a platform conditional outside the files that are meant for
it; two headers of one name; a type of a header without its prefix, or with one where none belongs.
Warnings: a function of more than 40 lines; a file of more than 500 lines.
"""

import re
import sys
from pathlib import Path

FUNCTION_LIMIT = 80
FUNCTION_WARNING = 40
FILE_WARNING = 500

ROOM_LIMIT = 30

# Targets that are not rooms, and the folders whose headers they give.
GIVEN_BY = {"kv_interface": "include", "KvReflashLib": "include", "kv_imported": "platform/include",
            "KvPlatform": "platform/include", "KvEmulationHeaders": "platform/emulation/control"}
# Whose folders are rooms, and the CMakeLists.txt files that make them.
HOUSES = {"src": "src", "platform/emulation": "platform", "tools/kvreflash": "tools/kvreflash"}
# A room that another one needs for the operations that it calls, and for none of its headers.
CALLED_ONLY = re.compile(r"platform/emulation/.*")

ROOM = re.compile(r"^kv_add_room\(([\w/]+)\s*((?:[^()]|\([^)]*\))*)\)", re.MULTILINE)
ROOM_PREFIX = re.compile(r"^set\(KV_ROOM_PREFIX (\w+)\)", re.MULTILINE)
LIBRARIES = re.compile(r"\bLIBRARIES\b([^)]*)")

# The prefixes of types at namespace scope in headers, by the kind of the type.
PREFIXES = {"class": ("KvC", "KvI"), "struct": ("KvT", "KvS"), "enum": ("KvE",)}
PREFIXED = re.compile(r"(?:include|platform/include(?!/KvNJson\.h)|src)/.*|platform/emulation/control/KvEmulation\.h")
PLAIN = re.compile(r"(?:tools|platform/emulation)/.*")
# The imported JSON library and host interface have names of their own.
TYPE = re.compile(r"^(?:template <[^\n]*>\n)?(class|struct|enum)(?: class)? (?:KV_\w+_API )?(?!KvHIM)(\w+)(?! *;)[^;{]*\{",
                  re.MULTILINE)

PLATFORM_CONDITIONAL = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*"
                                  r"(?:_WIN32|_WIN64|\bWIN32\b|__linux__|__unix__|__APPLE__|_MSC_VER|__MINGW|__CYGWIN__)")
PLATFORM_FILES = re.compile(r"src/system/.*|platform/emulation/system/System[^/]*\.cpp|"
                            r"platform/include/KvPlatformExport\.h|include/KvIReflasher\.h|.*/kvreflash(_emulation)?\.h")

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
SOURCE_FOLDERS = ("include", "src", "platform", "tools", "tests", "fuzz", "bench", "examples")

# Comments, raw strings, strings and characters; a quote between digits separates them.
UNREAD = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^(\s]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])\'(?:\\.|[^\'\\\n])+\'',
                    re.DOTALL)
SCOPE = re.compile(r"\b(?:namespace|class|struct|union|enum|extern)\b[^()]*$")


def folder_of(path):
    return path.rsplit("/", 1)[0]


def house_of(path):
    """The house that a file belongs to; None for one of none."""
    return next((house for house in HOUSES if path.startswith(house + "/")), None)


def rooms_of(project):
    """{target: (folder, targets that it names as LIBRARIES)} of all rooms."""
    rooms = {}
    for folder in sorted(set(HOUSES.values())):
        recipe = project / folder / "CMakeLists.txt"
        text = recipe.read_text(encoding="utf-8") if recipe.exists() else ""
        prefix = ROOM_PREFIX.search(text)
        for name, arguments in ROOM.findall(text):
            libraries = LIBRARIES.search(arguments)
            target = f"kv_{prefix.group(1) if prefix else ''}{name.replace('/', '_')}"
            # What only some systems or platforms give is linked beside the call.
            more = re.findall(rf"^ +target_link_libraries\({target} (?:PUBLIC|PRIVATE)([^)]*)\)", text, re.MULTILINE)
            named = (libraries.group(1) if libraries else "") + " ".join(more)
            rooms[target] = (f"{folder}/{name}", named.split())
    return rooms


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
        self.rooms = rooms_of(project)
        folders = GIVEN_BY | {target: folder for target, (folder, _) in self.rooms.items()}
        self.seen_by = {folder: {folders[library] for library in libraries if library in folders}
                        for folder, libraries in self.rooms.values()}
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
            self.check_conditionals(path, code)
            self.check_names(path, code)
        for folder in self.seen_by:
            self.check_room(folder)
        self.check_houses()
        self.check_ring_of("includes", sorted(self.sources), self.included)
        self.check_ring_of("rooms", sorted(self.seen_by), lambda folder: sorted(self.seen_by.get(folder, ())))

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

    def check_room(self, folder):
        """Holds the includes of a room's files against what the room sees."""
        files = [path for path in self.sources if folder_of(path) == folder]
        if len(files) > ROOM_LIMIT:
            self.errors.append(f"{folder}: {len(files)} files in one room")
        needed = set()
        for path in files:
            for header in self.included(path):
                other = folder_of(header)
                needed.add(other)
                if other not in self.seen_by[folder] | {folder}:
                    self.errors.append(f"{path}: {folder} does not see {other}, but includes {header}")
        for other in sorted(self.seen_by[folder] - needed):
            # Who controls the emulation links it, too.
            is_linked = other == "platform/include" and GIVEN_BY["KvEmulationHeaders"] in needed
            if not CALLED_ONLY.fullmatch(folder) and not is_linked:
                self.errors.append(f"{folder}: sees {other}, but includes nothing of it")

    def check_houses(self):
        for folder in sorted({folder_of(path) for path in self.sources if house_of(path)}):
            if folder not in self.seen_by and folder not in HOUSES.values():
                self.errors.append(f"{folder}: not a room")

    def check_names(self, path, code):
        if not path.endswith(".h"):
            return
        for kind, name in TYPE.findall(code):
            if PREFIXED.fullmatch(path):
                if not name.startswith(PREFIXES[kind]):
                    self.errors.append(f"{path}: the {kind} {name} has not the prefix {' or '.join(PREFIXES[kind])}")
            elif PLAIN.fullmatch(path) and re.match(r"Kv[CITSE][A-Z]", name) and not self.is_imported(name):
                self.errors.append(f"{path}: the {kind} {name} has a prefix of the library's types")

    def is_imported(self, name):
        """The emulation defines types that the imported interfaces declare."""
        declared = re.compile(rf"^(?:class|struct) (?:KV_\w+_API )?{name}\b", re.MULTILINE)
        return any(declared.search(code) for path, code in self.sources.items() if folder_of(path) == "platform/include")

    def check_conditionals(self, path, code):
        if PLATFORM_FILES.fullmatch(path):
            return
        for number, line in enumerate(code.splitlines(), 1):
            if PLATFORM_CONDITIONAL.match(line):
                self.errors.append(f"{path}:{number}: a platform conditional")

    def check_ring_of(self, what, starts, followers):
        """Walks on in depth; what is met again on its own way closes a ring."""
        done, way = set(), []

        def visit(place):
            if place in way:
                self.errors.append(f"a ring of {what}: {' -> '.join(way[way.index(place):] + [place])}")
            elif place not in done:
                way.append(place)
                for follower in followers(place):
                    visit(follower)
                done.add(way.pop())

        for start in starts:
            visit(start)


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
