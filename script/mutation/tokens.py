"""The tokens of a C++ source, and what of it is looked at.

The sources are kept as clang-format wants them, and this reads them so: a binary operator has white
space on both sides; a unary one, a pointer's star and a template's brackets don't.
"""

import bisect
import dataclasses
import re

PATTERN = re.compile(
    r"""
    (?P<skip>//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])+')
  | (?P<number>(?:0[xX][0-9a-fA-F']+|\d[\d']*(?:\.\d*)?(?:[eE][-+]?\d+)?)[uUlLfF]*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><=>|<<=|>>=|\.\.\.|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||\+=|-=|\*=|/=|%=|&=|\|=|\^=|[^\s\w])
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)
PAIRS = {"(": ")", "[": "]", "{": "}"}
# What follows one of these in brackets isn't code that runs.
DECLARATIVE = {"static_assert", "alignas", "__attribute__", "__asm__", "sizeof", "decltype"}


@dataclasses.dataclass
class Token:
    kind: str  # text, number, name or sign
    text: str
    start: int
    spaced: bool = False  # white space on both sides
    skipped: bool = False  # part of what isn't looked at
    partner: int = -1  # of a bracket: the other one's number
    inside: int = -1  # the number of the innermost bracket around it

    @property
    def end(self):
        return self.start + len(self.text)


class Source:
    """A file's text and its tokens."""

    def __init__(self, text):
        self.text = text
        self.tokens = [
            Token(match.lastgroup, match.group(), match.start())
            for match in PATTERN.finditer(text)
            if match.lastgroup != "skip"
        ]
        self.line_starts = [0] + [match.end() for match in re.finditer("\n", text)]
        self._note_spaces()
        self._pair_brackets()
        self._skip_declarative()

    def __getitem__(self, number):
        """A token; an empty one before the first and after the last."""
        if 0 <= number < len(self.tokens):
            return self.tokens[number]
        return Token("end", "", len(self.text))

    def line_of(self, position):
        """The number of a line, from 1 on, and of the column in it, from 1 on."""
        line = bisect.bisect_right(self.line_starts, position)
        return line, position - self.line_starts[line - 1] + 1

    def lines(self, start, end):
        """Where the lines that a piece of text lies in begin and end."""
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", max(start, end - 1))
        return first, len(self.text) if last < 0 else last

    def _note_spaces(self):
        for token in self.tokens:
            around = self.text[token.start - 1 : token.start] + self.text[token.end : token.end + 1]
            token.spaced = len(around) == 2 and around.isspace()

    def _pair_brackets(self):
        open_ones = []
        for number, token in enumerate(self.tokens):
            token.inside = open_ones[-1] if open_ones else -1
            if token.kind != "sign":
                continue
            if token.text in PAIRS:
                open_ones.append(number)
            elif token.text in PAIRS.values() and open_ones:
                other = open_ones.pop()
                token.inside = self.tokens[other].inside
                token.partner, self.tokens[other].partner = other, number

    def _skip(self, first, last):
        for token in self.tokens[first : last + 1]:
            token.skipped = True

    def _skip_declarative(self):
        for number, token in enumerate(self.tokens):
            if token.skipped:
                continue
            following = self[number + 1]
            if token.text in DECLARATIVE and following.text == "(":
                self._skip(number, following.partner)
            elif token.text == "requires" and following.text == "{":
                self._skip(number, following.partner)
            elif token.text == "__asm__":
                self._skip(number, self[number + 2].partner)
            elif token.text == "[" and following.text == "[":
                self._skip(number, token.partner)
            elif following.text == "<" and (token.text in ("template", "]") or not following.spaced):
                self._skip_template(number + 1)

    def _skip_template(self, number):
        """Parameters or arguments of a template: from `<` to where it closes."""
        depth = 0
        for last in range(number, min(number + 200, len(self.tokens))):
            token = self.tokens[last]
            if token.text == "<" and (last == number or not token.spaced):
                depth += 1
            elif token.text in (">", ">>") and not token.spaced:
                depth -= len(token.text)
            elif token.text in (";", "{") and token.inside == self.tokens[number].inside:
                return
            if depth <= 0:
                self._skip(number, last)
                return
