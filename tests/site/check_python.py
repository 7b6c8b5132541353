#!/usr/bin/python3
"""Runs every Python program of the reference, with the module on PYTHONPATH.

    check_python.py PICTUREHOST

What a program saves has exactly the pixels, and what it prints is exactly the values, that the
rules in this folder come to.
"""

import ast
import contextlib
import io
import os
import pathlib
import sys
import tempfile

import numpy as np
import PIL.Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "docs" / "generator"))

import evaluate  # noqa: E402
import examples  # noqa: E402
import reference  # noqa: E402


def printed(key, values):
    """What print() gives for the values of an entry."""
    if key.startswith("CountColorsKRT"):
        return f"{values['count']} {values['red'][:4]}"
    if key.startswith("FindPictureKRT"):
        return f"{values['x']} {values['y']}" if values["FindPictureKRT"] else ""
    if key.startswith("PicturetoBinaryStringKRT"):
        return str(len(values["PicturetoBinaryStringKRT"]))
    (value,) = values.values()
    return str(value)


def fault(entry):
    """Runs the program of an entry in the current folder; what is wrong with the outcome, or nothing."""
    example = entry["example"]
    session = evaluate.Session(example["photo"], alpha_first=False)
    for expression in example["run"]:
        session.run(expression)
    output = io.StringIO()
    with contextlib.redirect_stdout(output):
        exec(compile(ast.parse(examples.python(example)), entry["key"], "exec"), {})
    if example["only_values"]:
        wanted = printed(entry["key"], session.printed)
        got = output.getvalue().strip()
        return None if got == wanted else f"prints {got}, by the rules {wanted}"
    result = pathlib.Path("result.png")
    with PIL.Image.open(result) as image:
        shown = np.array(image.convert("RGB"))
    result.unlink()
    return None if np.array_equal(shown, session.current[..., :3]) else "saves other pixels than the rules come to"


def main():
    families = reference.load(sys.argv[1])
    faults = []
    checked = 0
    with tempfile.TemporaryDirectory() as folder:
        for child in examples.EXAMPLES.iterdir():
            os.symlink(child, pathlib.Path(folder) / child.name)
        os.chdir(folder)
        for entry in (entry for family in families for entry in family["entries"]):
            if problem := fault(entry):
                faults.append(f"{entry['key']}: {problem}")
            checked += 1
        os.chdir("/")
    for text in faults:
        print(text, file=sys.stderr)
    print(f"{checked} Python programs run, {len(faults)} faults")
    sys.exit(1 if faults else 0)


main()
