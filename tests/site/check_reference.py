#!/usr/bin/python3
"""Holds the built site against the rules restated in this folder.

    check_reference.py PICTUREHOST SITE

For every entry: its page has every heading, the declaration and the defaults that picturehost lists
and the commands that were run; the picture that it shows has exactly the pixels, and the text it
says was printed is exactly the text, that the rules come to; and the program in the host's language
makes the calls of the example.
"""

import html.parser
import pathlib
import re
import sys

import numpy as np
import PIL.Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "docs" / "generator"))

import evaluate  # noqa: E402
import examples  # noqa: E402
import reference  # noqa: E402

faults = []


def expect(holds, what):
    if not holds:
        faults.append(what)


class Sections(html.parser.HTMLParser):
    """The text, the pictures and the printed lines of a page, by the anchors of its second headings."""

    def __init__(self):
        super().__init__()
        self.sections = {}
        self.current = None
        self.inside = []  # the open elements of a block of printed text

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "h2" and "id" in attributes:
            self.current = self.sections.setdefault(attributes["id"], {"text": "", "pictures": [], "printed": ""})
        if self.current is None:
            return
        if tag == "img":
            self.current["pictures"].append(attributes["src"])
        if self.inside or "printed" in attributes.get("class", "").split():
            self.inside.append(tag)
        if tag in ("td", "th", "li", "p", "h3", "pre"):
            self.current["text"] += "\n"

    def handle_endtag(self, tag):
        while self.inside and self.inside.pop() != tag:
            pass

    def handle_data(self, data):
        if self.current is not None:
            self.current["text"] += data
            if "code" in self.inside:
                self.current["printed"] += data


def squeezed(text):
    return " ".join(text.split())


def check_text(entry, section):
    text = squeezed(section["text"])
    example = entry["example"]
    headings = ["Formula", "Result", "Failures"] + (["Intended oddities"] if entry["oddities"] else [])
    if entry["kind"] == "Class":
        headings += ["Properties", "Methods"]
        rows = entry["properties"]
        declarations = list(entry["methods"])
    else:
        headings.append("Parameters")
        rows = entry["parameters"]
        declarations = [entry["declaration"]]
    for heading in headings:
        expect(f" {heading}" in text, f"{entry['key']}: no heading {heading}")
    for declaration in declarations:
        expect(squeezed(declaration) in text, f"{entry['key']}: doesn't show {declaration}")
    for row in rows:
        kind = ("byref " if row.get("byref") else "") + row["type"]
        beginning = f"{row['name']} {kind} "
        expect(beginning in text, f"{entry['key']}: doesn't show “{beginning}”")
        if row["default"] is not None:
            expect(f" {row['default']} " in text, f"{entry['key']}: doesn't show the default {row['default']}")
    for program in (example["program"], examples.typed(example), examples.python(example)):
        expect(squeezed(program) in text, f"{entry['key']}: doesn't show\n{program}")


def check_outcome(entry, section, folder):
    example = entry["example"]
    session = evaluate.Session(example["photo"])
    for expression in example["run"]:
        session.run(expression)
    printed = [line for line in section["printed"].splitlines() if line]
    if example["photo"]:  # otherwise samples() tells what it filled in
        lines = [evaluate.as_printed(name, value) for name, value in session.printed.items()]
        if example["only_values"] or session.printed:
            expect(sorted(printed) == sorted(lines), f"{entry['key']}: printed {printed}, by the rules {lines}")
    if example["only_values"]:
        expect(printed, f"{entry['key']}: shows no value")
        return
    expect(section["pictures"], f"{entry['key']}: shows no picture")
    with PIL.Image.open(folder / section["pictures"][-1]) as image:
        shown = np.array(image.convert("RGB"))
    wanted = session.current[..., :3]
    if shown.shape != wanted.shape:
        faults.append(f"{entry['key']}: shows {shown.shape}, by the rules {wanted.shape}")
    elif differing := np.argwhere((shown != wanted).any(axis=-1)).tolist():
        y, x = differing[0]
        faults.append(
            f"{entry['key']}: {len(differing)} pixels differ, first ({x}, {y}): "
            f"shown {shown[y, x].tolist()}, by the rules {wanted[y, x].tolist()}"
        )


FILE = re.compile(r'(?:picture|memoryblock|samples|string)\("[^"]*?([^/"]+)\.\w+"\)')
CALL = re.compile(r"\w+KRT")


def calls(text):
    """The registered calls in a program or an expression, without spaces, with variables for files."""
    text = FILE.sub(r"\1", text)
    found = []
    for start in CALL.finditer(text):
        end = start.end()
        if text[end : end + 1] == "(":
            depth = 1
            end += 1
            while depth:
                depth += {"(": 1, ")": -1}.get(text[end], 0)
                end += 1
        found.append(re.sub(r"\s|\(\)$", "", text[start.start() : end]))
    return found


def check_program(entry):
    """The same calls in the same order; by-reference arguments are left out of expressions."""
    example = entry["example"]
    if entry["kind"] == "Class":
        for name, value in re.findall(r"(\w+) = (-?[\d.]+)", example["run"][0]):
            expect(f"filter.{name} = {value}" in example["program"], f"{entry['key']}: the program doesn't set {name}")
        expect("filter.Run" in example["program"], f"{entry['key']}: the program doesn't call Run")
        return
    wanted = calls("\n".join(example["run"]).replace("self", examples.subject(example)))
    outputs = [row["name"] for row in entry["parameters"] if row["byref"]]
    text = example["program"]
    for name in outputs:
        text = re.sub(rf"(?<=[(,])\s*{name}\s*(?=[,)])|,\s*{name}\s*(?=[,)])", "", text)
    text = re.sub(r"\(\s*,+", "(", re.sub(r",+\s*\)", ")", text))
    expect(calls(text) == wanted, f"{entry['key']}: the program calls {calls(text)}, the example {wanted}")


def main():
    picturehost, site = sys.argv[1], pathlib.Path(sys.argv[2])
    checked = 0
    for family in reference.load(picturehost):
        page = Sections()
        page.feed((site / "reference" / f"{family['file']}.html").read_text())
        for entry in family["entries"]:
            section = page.sections.get(entry["anchor"])
            if section is None:
                faults.append(f"{entry['key']}: not on its page")
                continue
            check_text(entry, section)
            check_outcome(entry, section, site / "reference")
            check_program(entry)
            checked += 1
    for fault in faults:
        print(fault, file=sys.stderr)
    print(f"{checked} entries held against the rules, {len(faults)} faults")
    sys.exit(1 if faults else 0)


main()
