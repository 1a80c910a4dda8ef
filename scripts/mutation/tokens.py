"""Tokens of C++ sources, as far as the finder of mutable places needs them."""

import re
from bisect import bisect_right
from dataclasses import dataclass

SKIPPED = r'//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:\\\n|[^\n])*'
TEXT = (r'(?:u8|[LuU])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|(?:u8|[LuU])?"(?:\\.|[^"\\\n])*"'
        r"|(?:u8|[LuU])?'(?:\\.|[^'\\\n])+'")
NUMBER = r"\.?[0-9](?:[eEpP][+-]|'?[0-9a-zA-Z_]|\.)*"
OPERATOR = (r'<=>|<<=|>>=|->\*|\.\.\.|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\[\[|\]\]|'
            r'[-+*/%<>=!&|^~?:;,.(){}\[\]]')
TOKEN = re.compile(rf"(?P<skipped>{SKIPPED})|(?P<text>{TEXT})|(?P<number>{NUMBER})|(?P<name>[A-Za-z_]\w*)|"
                   rf"(?P<operator>{OPERATOR})", re.DOTALL | re.MULTILINE)
CLOSING = {"(": ")", "[": "]", "{": "}", "[[": "]]"}


@dataclass(frozen=True)
class Token:
    """A token and where it stands. Whether there is space before and behind it tells an operator with two operands from
    one with a single operand and from brackets of templates: the sources are laid out by clang-format."""
    kind: str
    text: str
    begin: int
    end: int
    space_before: bool
    space_behind: bool

    @property
    def spaced(self):
        return self.space_before and self.space_behind


def tokenise(code):
    """The tokens of a source, without comments and preprocessor lines."""
    tokens = []
    for match in TOKEN.finditer(code):
        if match.lastgroup == "skipped":
            continue
        begin, end = match.span()
        kind = next(kind for kind in ("text", "number", "name", "operator") if match.group(kind) is not None)
        tokens.append(Token(kind, match.group(), begin, end, code[begin - 1:begin].isspace(),
                            code[end:end + 1].isspace()))
    return tokens


def partners(tokens):
    """The index of the other bracket for the index of each round, square or curly one; and of "<" and ">" around
    arguments of templates."""
    found, open_ones, angles = {}, [], []
    for index, token in enumerate(tokens):
        if token.kind != "operator":
            continue
        if token.text in CLOSING:
            open_ones.append((index, angles))
            angles = []
        elif token.text in CLOSING.values() and open_ones:
            other, angles = open_ones.pop()
            found[other], found[index] = index, other
        elif token.text == "<" and not token.space_behind:
            angles.append(index)
        elif token.text == ">" and not token.space_before and angles:
            other = angles.pop()
            found[other], found[index] = index, other
    return found


class Lines:
    """Line and column, from 1, of places in a text; and whole lines."""

    def __init__(self, text):
        self.text = text
        self.begins = [0] + [match.end() for match in re.finditer(r"\n", text)]

    def place(self, offset):
        line = bisect_right(self.begins, offset)
        return line, offset - self.begins[line - 1] + 1

    def around(self, begin, end):
        """Where the lines begin and end (without the line break) that hold this part."""
        last = self.text.find("\n", end)
        return self.begins[bisect_right(self.begins, begin) - 1], len(self.text) if last < 0 else last
