"""What the tests of the Python module share: pictures in files, and the command line program."""

import os
import pathlib
import subprocess

import numpy as np
import pytest
from PIL import Image

SOURCE = pathlib.Path(__file__).resolve().parents[2]


def random_pixels(seed, height, width, alpha=None):
    pixels = np.random.default_rng(seed).integers(0, 256, (height, width, 4), dtype=np.uint8)
    if alpha is not None:
        pixels[..., 3] = alpha
    return pixels


class Runner:
    """picturehost, run in a folder of its own with the pictures that the tests are about."""

    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        self.photo = folder / "photo.png"

    def run(self, *expressions, photo="photo.png", saves=(), output=True, layout="rgba"):
        """Gives the bytes of the picture, of what was saved by name, and the printed values."""
        words = [self.program, "run", "--layout", layout, photo]
        words += [word for expression in expressions for word in ("-e", expression)]
        if output:
            words += ["--output", "expected.png"]
        for name in saves:
            words += ["--save", f"{name}={name}.bin"]
        done = subprocess.run(words, cwd=self.folder, capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stderr
        printed = dict(line.split(" = ", 1) for line in done.stdout.splitlines())
        saved = {name: (self.folder / f"{name}.bin").read_bytes() for name in saves}
        picture = (self.folder / "expected.png").read_bytes() if output else None
        return picture, saved, printed


@pytest.fixture(scope="session")
def program():
    return os.environ["PICTUREHOST_PROGRAM"]


@pytest.fixture(scope="session")
def runner(program, tmp_path_factory):
    folder = tmp_path_factory.mktemp("pictures")

    def save(name, pixels):
        Image.fromarray(pixels).save(folder / name)

    photo = random_pixels(1, 37, 53, alpha=255)
    photo[5:9, 7:20] = (10, 200, 30, 255)
    save("photo.png", photo)
    save("clear.png", random_pixels(2, 37, 53))
    save("other.png", random_pixels(3, 37, 53, alpha=255))
    save("small.png", random_pixels(4, 11, 13, alpha=255))
    save("part.png", np.ascontiguousarray(photo[20:26, 31:40]))
    save("grey.png", np.full((9, 8, 4), (90, 90, 90, 255), np.uint8))
    save("grid.png", random_pixels(5, 20, 30, alpha=255) // 17 * 17)
    random = np.random.default_rng(6)
    for name in ("red", "green", "blue"):
        (folder / f"{name}.table").write_bytes(random.permutation(256).astype(np.uint8).tobytes())
    (folder / "sound.raw").write_bytes(random.integers(-9000, 9000, 700, dtype=np.int16).tobytes())
    return Runner(program, folder)
