"""Every single change that is tried: where it is made, and what is written there instead."""

import collections
import dataclasses
import re

from mutation.changes import BINARY, COMPOUND, UNARY, changed_numbers
from mutation.tokens import Source

# What can't begin a call or an assignment.
KEYWORDS = set(
    "return if else for while do switch case default break continue goto using namespace struct class enum "
    "template typename static const constexpr inline extern public private protected friend explicit virtual "
    "static_assert sizeof delete new throw try catch operator auto void bool union typedef".split()
)
CONTROLS = {"if", "for", "while", "switch"}


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str  # relative to the root
    kind: str
    start: int  # in the file's text
    end: int
    new: str
    line: int
    column: int
    shown: str  # "'a < b' -> 'a <= b'"
    before: str  # the lines, joined to one, in which the change is made
    after: str  # the same with it

    @property
    def name(self):
        return f"{self.file}:{self.line}:{self.column}: {self.shown}"

    @property
    def identity(self):
        """What an explanation is kept under: lines above may come and go."""
        return self.file, self.before, self.after

    def apply(self, text):
        return text[: self.start] + self.new + text[self.end :]


def one_line(text):
    """Code as one line, without what a comment says."""
    return " ".join(re.sub(r"//[^\n]*", "", text).split())


def shortened(code):
    return code if len(code) <= 100 else f"{code[:60]} ... {code[-30:]}"


def find(file, text):
    """The mutants of a file, in its order."""
    finder = Finder(file, Source(text))
    finder.conditions()
    finder.operators()
    finder.constants()
    finder.statements()
    return sorted(finder.found, key=lambda mutant: (mutant.start, mutant.end, mutant.new))


def count_by_kind(mutants):
    return collections.Counter(mutant.kind for mutant in mutants)


class Finder:
    def __init__(self, file, source):
        self.file = file
        self.source = source
        self.found = []
        self.negated = set()  # conditions that are tried as true and as false, which says as much

    def add(self, kind, start, end, new, context=None):
        """`context`: from where to where the shown code reaches."""
        text = self.source.text
        first, last = context or (start, end)
        old, changed = one_line(text[first:last]), one_line(text[first:start] + new + text[end:last])
        shown = f"'{shortened(old)}' -> '{shortened(changed)}'"
        line, column = self.source.line_of(start)
        first, last = self.source.lines(start, end)
        self.found.append(
            Mutant(self.file, kind, start, end, new, line, column, shown, one_line(text[first:last]),
                   one_line(text[first:start] + new + text[end:last]))
        )  # fmt: skip

    def around(self, number, alone=False):
        """The code that an operator joins: its operands, as far as they are simple."""
        first = number if alone else self.operand_before(number)
        last = number + 1
        while self.source[last].text in ("!", "-", "~", "*", "&"):
            last += 1
        last = max(last, self.source[last].partner)
        while (following := self.source[last + 1]).text in (".", "->", "::", "(", "[", "<"):
            if following.text == "<" and not following.skipped:
                break
            if following.partner < 0:
                last += 1
                while following.text == "<" and self.source[last + 1].skipped or self.source[last].text == "::":
                    last += 1
                last += following.text in (".", "->")
            else:
                last = following.partner
        return self.source[max(first, 0)].start, self.source[last].end

    def operand_before(self, number):
        """The number of the first token of the operand that ends before a token."""
        first = number - 1
        while True:
            token = self.source[first]
            if token.text in (")", "]"):
                first = token.partner
                before = self.source[first - 1]
                if before.kind != "name" and not before.skipped and before.text not in (")", "]"):
                    return first
                first -= 1
            elif token.text == ">" and token.skipped:
                while self.source[first].skipped:
                    first -= 1
            elif self.source[first - 1].text in (".", "->", "::"):
                first -= 2
            else:
                return first

    def operators(self):
        for number, token in enumerate(self.source.tokens):
            if token.skipped or token.kind not in ("sign", "name"):
                continue
            if token.spaced and token.text in BINARY and self.is_operand(number - 1):
                kind, replacements = BINARY[token.text]
                if kind == "relation" and self.around(number) in self.negated:
                    replacements = replacements[:-1]
                for new in replacements:
                    self.add(kind, token.start, token.end, new, self.around(number))
            elif token.text in COMPOUND:
                self.add("assignment", token.start, token.end, COMPOUND[token.text], self.around(number))
            elif token.text in ("++", "--"):
                self.add("arithmetic", token.start, token.end, "--" if token.text == "++" else "++", self.unary(number))
            elif token.text in UNARY and not self.is_operand(number - 1) and self.begins_operand(number + 1):
                if self.around(number, alone=True) not in self.negated:
                    self.add(UNARY[token.text], token.start, token.end, "", self.unary(number))
            elif token.text in ("true", "false"):
                self.add("boolean", token.start, token.end, "false" if token.text == "true" else "true")

    def unary(self, number):
        first, last = self.source[number], self.source[number + 1]
        if first.text in ("++", "--") and self.is_operand(number - 1):
            return self.source[number - 1].start, first.end
        return first.start, last.end

    def is_operand(self, number):
        token = self.source[number]
        if token.kind in ("number", "text"):
            return True
        if token.kind == "name":
            return token.text not in ("return", "case", "else")
        return token.text in (")", "]", "}") or (token.text in (">", "...") and token.skipped) or token.text == "..."

    def begins_operand(self, number):
        token = self.source[number]
        return token.kind in ("number", "name") or token.text in ("(", "*", "~", "!", "-")

    def constants(self):
        for number, token in enumerate(self.source.tokens):
            if token.kind != "number" or token.skipped or self.is_array_size(number):
                continue
            for new in changed_numbers(token.text):
                self.add("constant", token.start, token.end, new, self.context_of_number(number))

    def context_of_number(self, number):
        before, after = self.source[number - 1], self.source[number + 1]
        first = before if before.text in "-+*/%&|^<>=([" or before.spaced else self.source[number]
        if first.text in BINARY and first.spaced and self.is_operand(number - 2):
            return self.around(number - 1)
        last = after if after.text in (")", "]") and first.text in ("(", "[") else self.source[number]
        if first.text == "=":
            first = self.source[number - 2]
        return first.start, last.end

    def is_array_size(self, number):
        """The size in a declaration: `int32_t outline[3]`."""
        bracket = self.source[number - 1]
        if bracket.text != "[" or bracket.partner != number + 1:
            return False
        before = self.source[number - 3]
        return before.text in ("*", "&", ">") and not before.spaced or (
            before.kind == "name" and before.text not in ("return", "case", "else"))  # fmt: skip

    def conditions(self):
        for number, token in enumerate(self.source.tokens):
            if token.text not in ("if", "while") or token.skipped:
                continue
            opening = number + 2 if self.source[number + 1].text == "constexpr" else number + 1
            bracket = self.source[opening]
            if bracket.text != "(" or bracket.partner < 0 or self.declares(opening, bracket.partner):
                continue
            closing = self.source[bracket.partner]
            if token.text == "if":
                self.negated.add((bracket.end, closing.start))
            for new in ("true", "false") if token.text == "if" else ("false",):
                self.add("boolean", bracket.end, closing.start, new, (token.start, closing.end))

    def declares(self, opening, closing):
        """Whether a condition makes a variable, or isn't looked at."""
        inner = range(opening + 1, closing)
        return any(
            self.source[i].skipped and self.source[i].text == "requires"
            or self.source[i].text == "=" and self.source[i].inside == opening
            for i in inner
        )  # fmt: skip

    def statements(self):
        """Calls and assignments that are statements, left out."""
        for number in self.statement_starts():
            end = number
            while self.source[end].text != ";":
                token = self.source[end]
                if token.kind == "end" or token.text in (")", "]", "}"):
                    break
                end = max(token.partner, end) + 1
            if self.source[end].text != ";" or self.source[number].skipped:
                continue
            left, sign = self.left_side(number, end)
            if left and sign.text == "=":
                self.leave_out("assignment", number, end)
            elif left and sign.text == ";" and self.source[end - 1].text == ")":
                self.leave_out("call", number, end)

    def leave_out(self, kind, first, last):
        start, end = self.source[first].start, self.source[last].start
        self.add(kind, start, end, "", (start, end + 1))

    def left_side(self, number, end):
        """Whether what stands before `=`, or before the end, is a variable's name or a call."""
        wants_name = True
        while self.source[number].text == "*" and not self.source[number].spaced:
            number += 1
        while number < end:
            token = self.source[number]
            if token.skipped and token.kind == "sign":  # a template's arguments
                while self.source[number].skipped:
                    number += 1
                continue
            if token.kind == "name":
                if token.text == "template":
                    pass
                elif not wants_name or token.text in KEYWORDS:
                    return False, token
                else:
                    wants_name = False
            elif token.text in (".", "->", "::"):
                wants_name = True
            elif token.text in ("(", "["):
                if wants_name and token.text == "[":  # a lambda
                    return False, token
                number, wants_name = token.partner, False
            else:
                return token.text == "=" and not wants_name, token
            number += 1
        return not wants_name, self.source[end]

    def statement_starts(self):
        source = self.source
        for number, token in enumerate(source.tokens):
            before = source[number - 1]
            in_block = token.inside < 0 or source[token.inside].text == "{" and not self.is_class(token.inside)
            if before.text in (";", "{", "}") and in_block:
                yield number
            elif before.text == "else" or before.text == ":" and self.is_label(number - 1):
                yield number
            elif before.text == ")" and before.partner >= 0:
                word = source[before.partner - 1].text
                if word == "constexpr":
                    word = source[before.partner - 2].text
                if word in CONTROLS:
                    yield number

    def is_class(self, opening):
        """Whether a brace opens the body of a class."""
        for number in range(opening - 1, max(opening - 12, -1), -1):
            if self.source[number].text in ("struct", "class"):
                return True
            if self.source[number].text in (";", "{", "}", ")"):
                return False
        return False

    def is_label(self, number):
        return self.source[number - 1].text == "default" or any(
            self.source[number - back].text == "case" for back in (2, 3, 4)
        )
