"""What the tests of the Python module share: pictures in files, and the command line program."""

import os
import pathlib
import subprocess

import numpy as np
import pytest
from PIL import Image, ImageCms

SOURCE = pathlib.Path(__file__).resolve().parents[2]


def random_pixels(seed, height, width, alpha=None):
    pixels = np.random.default_rng(seed).integers(0, 256, (height, width, 4), dtype=np.uint8)
    if alpha is not None:
        pixels[..., 3] = alpha
    return pixels


def run_words(photo, *expressions):
    """The words of `picturehost run` for expressions on a picture."""
    return ["run", *[word for expression in expressions for word in ("-e", expression)], photo]


class Runner:
    """picturehost, run in a folder of its own with the pictures that the tests are about."""

    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        self.photo = folder / "photo.png"

    def run(self, *expressions, photo="photo.png", saves=(), output=True, layout="rgba"):
        """Gives the bytes of the picture, of what was saved by name, and the printed values."""
        words = [self.program, *run_words(photo, *expressions), "--layout", layout]
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


class Sources:
    """A folder of picture files that say something besides their pixels."""

    # Debian's package libgs-common has it; its colours aren't those of sRGB.
    WIDE = pathlib.Path("/usr/share/color/icc/ghostscript/a98.icc")

    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        exif = Image.Exif()
        exif[0x10F], exif[0x112] = "Maker", 6
        smooth = np.linspace((250, 10, 30, 255), (5, 200, 90, 255), 60 * 40).reshape(40, 60, 4).astype(np.uint8)
        photo = Image.fromarray(smooth).convert("RGB")
        photo.save(folder / "photo.jpg", quality=83, progressive=True, dpi=(300, 300), icc_profile=profile, exif=exif,
                   comment=b"a comment")
        self.exiftool("-overwrite_original", "-XMP-dc:Title=A title", "-IPTC:Keywords=one", folder / "photo.jpg")
        photo.save(folder / "photo.bmp")
        photo.save(folder / "lzw.tif", compression="tiff_lzw", dpi=(150, 150))
        photo.save(folder / "lossless.webp", lossless=True, icc_profile=profile)
        photo.save(folder / "lossy.webp", quality=50)
        photo.save(folder / "wide.png", icc_profile=self.WIDE.read_bytes())
        photo.convert("L").save(folder / "grey.jpg", quality=70)
        photo.quantize(20).save(folder / "palette.png", dpi=(150, 150))
        photo.convert("1").save(folder / "bilevel.png")
        photo.convert("1").save(folder / "fax.tif", compression="group4")
        Image.fromarray(random_pixels(8, 20, 30)).save(folder / "clear.png")
        frames = [Image.fromarray(random_pixels(seed, 12, 16, alpha=255)).quantize(9) for seed in range(3)]
        frames[0].save(folder / "animation.gif", save_all=True, append_images=frames[1:], duration=[50, 120, 200], loop=2)
        pages = [Image.fromarray(random_pixels(seed, 12, 16, alpha=255)).convert("RGB") for seed in range(3)]
        pages[0].save(folder / "pages.tif", save_all=True, append_images=pages[1:], dpi=(100, 100))

    @staticmethod
    def exiftool(*words, text=True):
        done = subprocess.run(["exiftool", "-q", "-m", *map(str, words)], text=text, capture_output=True, check=True)
        return done.stdout


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
