"""Finds the places of a C++ source where one small change makes another program: mutants."""

import re
from dataclasses import dataclass
from functools import cached_property

from mutation.tokens import Lines, partners, tokenise

# What an operator with blanks on both sides becomes, and what the change is called.
SWAPS = {
    "<": [("boundary", "<="), ("negated", ">=")],
    "<=": [("boundary", "<"), ("negated", ">")],
    ">": [("boundary", ">="), ("negated", "<=")],
    ">=": [("boundary", ">"), ("negated", "<")],
    "==": [("negated", "!=")],
    "!=": [("negated", "==")],
    "&&": [("logical", "||")],
    "||": [("logical", "&&")],
    "+": [("arithmetic", "-")],
    "-": [("arithmetic", "+")],
    "*": [("arithmetic", "/")],
    "/": [("arithmetic", "*")],
    "%": [("arithmetic", "*")],
    "&": [("bitwise", "|")],
    "|": [("bitwise", "&")],
    "+=": [("assignment", "-=")],
    "-=": [("assignment", "+=")],
    "*=": [("assignment", "/=")],
    "/=": [("assignment", "*=")],
    "|=": [("assignment", "&=")],
    "&=": [("assignment", "|=")],
}
STEPS = {"++": "--", "--": "++"}
COMPARISONS = {"<", "<=", ">", ">=", "==", "!="}
LOGICAL = {"&&", "||"}
WORDS = {"true": "false", "false": "true"}
# What a call is not, though it has the form of one.
NO_CALLS = {"if", "while", "for", "switch", "return", "throw", "catch", "static_assert", "static_cast", "sizeof",
            "alignas", "noexcept", "decltype", "delete", "new", "operator", "using", "typedef", "friend", "explicit"}
BEHIND_PARAMETERS = {"const", "noexcept", "override", "final", "mutable", "constexpr"}
# Between the parentheses of these nothing is computed when the program runs.
UNEVALUATED = {"static_assert", "noexcept", "sizeof", "alignof", "decltype", "alignas"}
INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9][0-9']*)([uUlLzZ]*)")


@dataclass(frozen=True)
class Mutant:
    """One change of one source: `original` at `begin` becomes `mutated`. Line and column count from 1."""
    file: str
    line: int
    column: int
    kind: str
    begin: int
    original: str
    mutated: str

    @property
    def room(self):
        """The folder below src/."""
        return self.file.split("/")[1]

    @property
    def id(self):
        return f"{self.file}:{self.line}:{self.column}:{self.kind}"

    def apply(self, code):
        end = self.begin + len(self.original)
        assert code[self.begin:end] == self.original
        return code[:self.begin] + self.mutated + code[end:]

    def changed_lines(self, code):
        """The lines concerned as they are and as they become, without indentation and blank ones."""
        begin, end = Lines(code).around(self.begin, self.begin + len(self.original))
        within = self.begin - begin
        before = code[begin:end]
        after = before[:within] + self.mutated + before[within + len(self.original):]
        return stripped(before), stripped(after)


def stripped(text):
    return tuple(line.strip() for line in text.splitlines() if line.strip())


def successor(number):
    """The text of the next integer in the same notation; None when the text is no integer."""
    match = INTEGER.fullmatch(number)
    if not match:
        return None
    digits, suffix = match.groups()
    digits = digits.replace("'", "")
    prefix = digits[:2].lower()
    if prefix == "0x":
        return f"0x{int(digits, 16) + 1:X}{suffix}"
    if prefix == "0b":
        return f"0b{int(digits, 2) + 1:b}{suffix}"
    if digits.startswith("0") and digits != "0":
        return f"0{int(digits, 8) + 1:o}{suffix}"
    return f"{int(digits) + 1}{suffix}"


class Finder:
    """Finds the mutants of one source. What is found depends on the text alone."""

    def __init__(self, file, code):
        self.file = file
        self.code = code
        self.lines = Lines(code)
        self.tokens = tokenise(code)
        self.partner = partners(self.tokens)
        self.found = []

    def mutants(self):
        for index, token in enumerate(self.tokens):
            if index in self.unevaluated:
                continue
            if token.kind == "operator":
                self.visit_operator(index)
            elif token.kind == "number":
                self.visit_number(index)
            elif token.text in WORDS:
                self.add("truth", token, WORDS[token.text])
            elif token.text in ("if", "while"):
                self.visit_condition(index)
            elif token.text == "return":
                self.visit_return(index)
            if self.function_at[index] is not None and self.begins_statement(index):
                self.visit_call(index)
        return sorted(self.found, key=lambda mutant: (mutant.begin, mutant.kind))

    def add(self, kind, token, mutated):
        self.add_span(kind, token.begin, token.end, mutated)

    def add_span(self, kind, begin, end, mutated):
        line, column = self.lines.place(begin)
        self.found.append(Mutant(self.file, line, column, kind, begin, self.code[begin:end], mutated))

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def kind(self, index):
        return self.tokens[index].kind if 0 <= index < len(self.tokens) else ""

    @cached_property
    def unevaluated(self):
        """Indices of the tokens that no running program sees: arguments of templates, static_assert and the like."""
        skipped = set()
        for index, other in self.partner.items():
            before = self.text(index - 1)
            if other > index and (self.text(index) in ("<", "[[") or self.text(index) == "(" and before in UNEVALUATED):
                skipped.update(range(index, other + 1))
        return skipped

    @cached_property
    def function_at(self):
        """For each token the type of the function that it is in, as one word ("" where it is not told): None outside of
        functions."""
        types, current, outer = [], None, []
        for index, token in enumerate(self.tokens):
            if token.text == "{" and token.kind == "operator":
                outer.append(current)
                current = self.type_of_block(index, current)
            elif token.text == "}" and token.kind == "operator" and outer:
                current = outer.pop()
            types.append(current)
        return types

    def type_of_block(self, index, current):
        """The type of the function whose body begins here; else that of the function around."""
        last = index - 1
        while self.text(last) in BEHIND_PARAMETERS:
            last -= 1
        if self.text(last) == "try":
            return current
        if self.text(last) == "]":
            return ""  # a lambda without parameters
        if self.text(last) != ")" or last not in self.partner:
            return self.type_told_behind(last, current)
        name = self.partner[last] - 1
        if self.text(name) == "]":
            return ""
        if self.kind(name) != "name" and self.text(name) not in (")", ">", "=="):
            return current
        if self.text(name) in ("if", "for", "while", "switch", "catch", "constexpr"):
            return current
        while self.text(name - 1) == "::":
            name -= 2
        type_word = self.text(name - 1) if self.kind(name - 1) == "name" else ""
        return type_word

    def type_told_behind(self, last, current):
        """For a function whose type comes behind "->"."""
        first = last
        while self.kind(first) == "name" or self.text(first) in ("::", "*", "&", "<", ">"):
            first -= 1
        if self.text(first) == "->" and self.text(first - 1) == ")":
            return self.text(last)
        return current

    def visit_operator(self, index):
        token = self.tokens[index]
        if self.text(index - 1) == "operator":
            return
        if token.text in STEPS:
            self.add("step", token, STEPS[token.text])
        elif token.text == "!" and not token.space_behind:
            self.add("not", token, "")
        elif token.spaced and not self.joins_text(index):
            for kind, mutated in SWAPS.get(token.text, []):
                self.add(kind, token, mutated)

    def joins_text(self, index):
        """Whether a "+" has a text on one of its sides, or none of its sides is a value."""
        return self.text(index) in ("+", "+=") and "text" in (self.kind(index - 1), self.kind(index + 1))

    def visit_number(self, index):
        token = self.tokens[index]
        mutated = successor(token.text)
        if mutated is not None and not self.is_extent(index) and not self.is_pure(index):
            self.add("constant", token, mutated)

    def is_extent(self, index):
        """Whether a number is the extent of an array that is declared: "type name[4]"."""
        return (self.text(index - 1) == "[" and self.text(index + 1) == "]" and self.kind(index - 2) == "name" and
                (self.kind(index - 3) == "name" and self.text(index - 3) not in ("return", "case") or
                 self.text(index - 3) in ("*", "&", ">") and self.tokens[index - 3].space_before is False))

    def is_pure(self, index):
        """Whether a number is the one of a pure virtual function."""
        return (self.text(index) == "0" and self.text(index - 1) == "=" and self.text(index + 1) == ";" and
                self.text(index - 2) in BEHIND_PARAMETERS | {")"})

    def visit_condition(self, index):
        if self.text(index + 1) != "(" or index + 1 not in self.partner:
            return
        last = self.partner[index + 1] - 1
        first = max((place + 1 for place in self.outermost(index + 2, last) if self.text(place) == ";"),
                    default=index + 2)
        if first <= last and not self.has_outermost(first, last, {"="}):
            self.negate("condition", first, last)

    def visit_return(self, index):
        last = index + 1
        while self.text(last) not in (";", "") and last + 1 < len(self.tokens):
            last = self.partner.get(last, last) + 1 if self.text(last) in ("(", "[", "{", "<") else last + 1
        last -= 1
        if last <= index or self.text(last) in WORDS or self.text(index + 1) == "{":
            return
        is_logical = self.has_outermost(index + 1, last, LOGICAL) and not self.has_outermost(index + 1, last, {"?"})
        if is_logical or self.function_at[index] == "bool":
            self.negate("result", index + 1, last)

    def negate(self, kind, first, last):
        """Negates an expression, unless another mutant does the same: that of its one comparison or its "!"."""
        if not self.has_outermost(first, last, LOGICAL | {"?"}):
            if self.text(first) == "!" or self.has_outermost(first, last, COMPARISONS) or self.text(last) in WORDS:
                return
        begin, end = self.tokens[first].begin, self.tokens[last].end
        self.add_span(kind, begin, end, f"!({self.code[begin:end]})")

    def outermost(self, first, last):
        """The indices of the tokens that are in no brackets."""
        index = first
        while index <= last:
            yield index
            other = self.partner.get(index, index)
            index = max(other, index) + 1

    def has_outermost(self, first, last, texts):
        return any(self.text(index) in texts and (self.tokens[index].spaced or self.text(index) in (";", "=", "?"))
                   for index in self.outermost(first, last))

    def begins_statement(self, index):
        before = self.text(index - 1)
        if before == ")" and index - 1 in self.partner:
            head = self.text(self.partner[index - 1] - 1)
            return head in ("if", "while", "for", "constexpr")
        return before in (";", "{", "}", "else", "do") or before == ":" and self.ends_label(index - 1)

    def ends_label(self, colon):
        """Whether a colon belongs to a case of a switch."""
        first = colon - 1
        while self.kind(first) in ("name", "number", "text") and self.text(first) != "case" or self.text(first) == "::":
            if self.text(first) == "default":
                return True
            first -= 1
        return self.text(first) == "case"

    def visit_call(self, index):
        """A statement that is a single call, its result perhaps cast to void, goes away."""
        end = index
        if self.text(end) == "(" and self.text(end + 1) == "void" and self.text(end + 2) == ")":
            end += 3
        if self.text(end) == "::":
            end += 1
        if self.kind(end) != "name" or self.text(end) in NO_CALLS:
            return
        while True:
            end += 1
            while self.text(end) in ("(", "[", "<") and end in self.partner:
                end = self.partner[end] + 1
            if self.text(end) not in (".", "->", "::"):
                break
            end += 1
            if self.kind(end) != "name":
                return
        if self.text(end) == ";" and self.text(end - 1) == ")":
            self.add_span("call", self.tokens[index].begin, self.tokens[end].begin, "")


def find_mutants(file, code):
    """All mutants of the source `file`, a path from the project's folder, in the order of their places."""
    return Finder(file, code).mutants()


def sources(project):
    """Paths, from the project's folder, of the sources that are compiled on this system."""
    return sorted(path.relative_to(project).as_posix() for path in (project / "src").rglob("*")
                  if path.suffix in (".h", ".cpp") and not path.stem.endswith("Windows"))


def all_mutants(project):
    return [mutant for file in sources(project)
            for mutant in find_mutants(file, (project / file).read_text(encoding="utf-8"))]
