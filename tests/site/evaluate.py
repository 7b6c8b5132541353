"""Evaluates the expressions of an example by the rules, as picturehost does by the plug-in."""

import pathlib
import re

import numpy as np
import PIL.Image

import composition
import filters
import rules
import waveform

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
TOKEN = re.compile(r'\s*(&c[0-9A-Fa-f]{6}|-?\d+(?:\.\d+)?|"[^"]*"|[A-Za-z_]\w*|[(),=])')
FUNCTIONS = {
    name: function
    for module in (rules, composition, waveform, filters)
    for name, function in vars(module).items()
    if name.endswith("KRT")
}
# The first argument is the current picture for these; global methods are given theirs.
GLOBAL = {
    "BinaryStringtoPictureKRT",
    "PicturetoBinaryStringKRT",
    "CombinePicturesKRT",
    "MergePictureKRT",
    "TintPictureKRT",
    "RenderSamplesKRT",
}


def picture(file):
    with PIL.Image.open(EXAMPLES / file) as image:
        return np.array(image.convert("RGBA"))


FILES = {
    "picture": picture,
    "memoryblock": lambda file: np.frombuffer((EXAMPLES / file).read_bytes(), np.uint8),
    "samples": lambda file: np.frombuffer((EXAMPLES / file).read_bytes()[44:], np.uint8),  # after a WAV header
    "cube": lambda file: (EXAMPLES / file).read_text(),
}


class Session:
    """The current picture, the values with names, and what was printed."""

    def __init__(self, photo, alpha_first=True):
        self.alpha_first = alpha_first  # how the pictures lie in memory
        self.current = picture(photo) if photo else None
        self.named = {}
        self.printed = {}

    def run(self, text):
        self.tokens = TOKEN.findall(text)
        assert "".join(self.tokens) == re.sub(r"\s", "", text), text
        if len(self.tokens) > 1 and self.tokens[1] == "=":
            name, self.tokens = self.tokens[0], self.tokens[2:]
            self.named[name] = self.value()
            return
        name = self.tokens[0]
        setter = FUNCTIONS.get("assign_" + name)
        if setter and "=" in self.tokens:
            self.tokens.pop(0)
            arguments, _ = self.arguments()
            assert self.tokens.pop(0) == "="
            setter(self.current, *arguments, self.value(), 3 if self.alpha_first else 0)
            return
        self.keep(name, self.value())

    def keep(self, name, result):
        if isinstance(result, np.ndarray) and result.ndim == 3:
            self.current = result
        elif isinstance(result, dict):
            self.printed |= result
        else:
            self.printed[name] = result

    def value(self):
        token = self.tokens.pop(0)
        if token.startswith("&c"):
            return int(token[2:], 16)
        if token[0] in "-0123456789":
            return float(token) if "." in token else int(token)
        if token[0] == '"':
            return token[1:-1]
        if token in ("true", "false"):
            return token == "true"
        if token == "self":
            return self.current
        if token in self.named:
            return self.named[token]
        arguments, named = self.arguments() if self.tokens[:1] == ["("] else ([], {})
        if token in FILES:
            return FILES[token](*arguments)
        if token not in GLOBAL:
            arguments = [self.current, *arguments]
        return FUNCTIONS[token](*arguments, **named)

    def arguments(self):
        assert self.tokens.pop(0) == "("
        positional, named = [], {}
        while self.tokens[0] != ")":
            if self.tokens[1] == "=":
                name = self.tokens.pop(0)
                self.tokens.pop(0)
                named[name] = self.value()
            else:
                positional.append(self.value())
            if self.tokens[0] == ",":
                self.tokens.pop(0)
        self.tokens.pop(0)
        return positional, named


def as_printed(name, value):
    """A line of picturehost's, and for a block or string what its first bytes look like."""
    if isinstance(value, bool):
        return f"{name} = {str(value).lower()}"
    if isinstance(value, np.ndarray):
        block = value.tobytes()
        return f"{name} = memoryblock of {len(block)} bytes: {block[:16].hex(' ')} ..."
    if isinstance(value, bytes):
        return f"{name} = string of {len(value)} bytes"
    return f"{name} = {value}"
