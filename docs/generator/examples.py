"""Runs the examples of the reference, and says how a person would type them."""

import pathlib
import shlex
import subprocess

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
ANY_PICTURE = "photos/coffee.png"  # for a picture of a result that the example has no need of


class Failed(Exception):
    """An example that didn't run."""


def command(example, output=None):
    """The words after `picturehost`, for the folder examples/."""
    words = ["run", *_expressions(example), example["photo"] or "--no-picture"]
    return words + ["--output", str(output)] if output else words


def _expressions(example):
    """One stands before the files; several go after -e."""
    expressions = example["run"]
    return expressions if len(expressions) == 1 else [word for text in expressions for word in ("-e", text)]


def typed(example):
    """The same as text for a shell, with one expression a line where there are several."""
    quoted = [shlex.quote(text) for text in example["run"]]
    lines = quoted if len(quoted) == 1 else [f"-e {text}" for text in quoted]
    lines = ["picturehost run", *lines, example["photo"] or "--no-picture"]
    if not example["only_values"]:
        lines[-1] += " -o result.png"
    text = " ".join(lines)
    return text if len(text) <= 76 else " \\\n    ".join(lines)


def subject(example):
    """What programs call the picture of an example."""
    return "page" if example["photo"] == "made/page.png" else "photo"


def python(example):
    """The whole program in Python, for the folder examples/."""
    modules = [name for name in ("pathlib", "wave") if f"{name}." in example["python"]]
    lines = [f"import {name}" for name in [*modules, "picturehost"]] + [""]
    names = {subject(example): example["photo"], pathlib.Path(example.get("other", "")).stem: example.get("other")}
    lines += [f'{name} = picturehost.Picture.open("{file}")' for name, file in names.items() if file]
    return "\n".join([*lines, example["python"]])


def run(picturehost, example, output=None):
    """Runs an example; returns the lines that it prints. Its picture goes into the file `output`."""
    words = [str(pathlib.Path(picturehost).resolve()), *command(example, output)]
    done = subprocess.run(words, cwd=EXAMPLES, text=True, capture_output=True)
    if done.returncode != 0:
        raise Failed(f"{shlex.join(words)}\n{done.stderr}")
    return [line for line in done.stdout.splitlines() if line]
