"""What the workers of a cluster do; they import it by its name."""

import functools
import os

from . import _picturehost


@functools.lru_cache(maxsize=4)
def _batch(expressions, words):
    return _picturehost.Batch(list(expressions), list(words))


def do_file(expressions, words, file, output):
    """Makes one file of another; gives what the expressions print, and the warnings."""
    os.makedirs(os.path.dirname(output), exist_ok=True)
    return _batch(tuple(expressions), tuple(words)).run(file, output)
