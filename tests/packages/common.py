"""What the tests of installing and packing share: the build folder, and running things."""

import os
import pathlib
import subprocess

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["PICTURE_BINARY_DIR"])
PHOTO = SOURCE / "examples/photos/coffee.png"


def run(*command, **options):
    """Runs a command that has to succeed; returns what it printed."""
    words = [str(word) for word in command]
    done = subprocess.run(words, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(words)} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def files_below(folder):
    """Every file below a folder, by its path from there."""
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir())
