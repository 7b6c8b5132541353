"""The stub says what the module is."""

import pathlib
import subprocess
import sys

import pytest

import picturehost

RIGHT = """
import io
import warnings
import numpy as np
from numpy.typing import NDArray
import picturehost
from picturehost import Picture

photo = Picture.open("photo.jpg")
scan = Picture.open(b"scan.tif", page=2, damage="fail", keep_alpha=True, pixel_limit=0.5)
with open("photo.jpg", "rb") as file, open("out.png", "wb") as out:
    Picture.open(file).save(out, format="png", metadata="profile", quality=None, compression=9)
pages: list[Picture] = Picture.open_pages(io.BytesIO(b""))
Picture.save_pages((page for page in pages), "out.tif", compression="lzw")
data: bytes = Picture.from_bytes(b"", to_srgb=True).copy().to_bytes("jpeg", quality=90, strict=True)
comments = photo.metadata.get("comments", [])
again = Picture.from_array(photo.to_array(), like=photo)
warnings.simplefilter("error", picturehost.PictureFileWarning)
inverted = photo.InvertKRT(1, 2, width=3, height=4)
if inverted is not None:
    pixels: NDArray[np.uint8] = inverted.to_array()
found = photo.FindPictureKRT(photo)
if found is not None:
    place: int = found.x
counted = photo.CountColorsKRT(red=b"")
count: int = counted.count
photo.EmbeddedMaskKRT[False] = photo
lut = picturehost.PictureLut3DKRT(SourcePicture=photo)
lut.Table[0, 1, 2, 0] = 3.5
tinted = picturehost.TintPictureKRT(photo, "#102030", SepiaBase=0x405060)
try:
    photo.ReplaceRedChannelKRT(None)
except picturehost.NilObjectException as problem:
    number: int = problem.ErrorNumber
"""

WRONG = """
from picturehost import Picture, TintPictureKRT
photo = Picture(3, 2)
photo.InvertKRT(1, 2)
photo.ChangeSaturationKRT("much")
photo.ChangeSaturationKRT(amount=3)
TintPictureKRT(photo, "#102030")
photo.EmbeddedMaskKRT[False] = 3
photo.InvertKRT().to_array()
Picture.open("photo.jpg", 2)
Picture.open("photo.jpg", damage="fial")
photo.save("out.jpg", metadata="all")
photo.to_bytes()
photo.metadata["comments"] = []
"""


# NumPy's own stubs take the checker half a minute to read.
STAND_INS = {
    "numpy/__init__.pyi": "class uint8: ...\n",
    "numpy/typing.pyi": "from typing import Generic, TypeVar\nT = TypeVar('T')\nclass NDArray(Generic[T]): ...\n",
    "PIL/__init__.pyi": "",
    "PIL/Image.pyi": "class Image: ...\n",
}


@pytest.fixture(scope="module")
def search_path(tmp_path_factory):
    folder = tmp_path_factory.mktemp("types")
    for name, text in STAND_INS.items():
        (folder / name).parent.mkdir(exist_ok=True)
        (folder / name).write_text(text)
    return f"{folder}:{pathlib.Path(picturehost.__file__).parents[1]}"


def run(module, *words, search_path, folder):
    module_path = str(pathlib.Path(picturehost.__file__).parents[1])
    return subprocess.run([sys.executable, "-m", module, *words], cwd=folder, capture_output=True, text=True,
                          env={"MYPYPATH": search_path, "PYTHONPATH": module_path, "PATH": "/usr/bin:/bin"})


def test_the_module_is_as_its_stub_says(search_path, tmp_path):
    (tmp_path / "expected").write_text("picturehost.Picture[A-Za-z0-9]*  # have a metaclass of pybind11's\n")
    done = run("mypy.stubtest", "picturehost", "--ignore-missing-stub", "--allowlist=expected",
               search_path=search_path, folder=tmp_path)
    assert done.returncode == 0, done.stdout + done.stderr


def test_a_type_checker_tells_right_from_wrong(search_path, tmp_path):
    (tmp_path / "right.py").write_text(RIGHT)
    (tmp_path / "wrong.py").write_text(WRONG)
    done = run("mypy", "--strict", "--follow-imports=silent", "--cache-dir=/dev/null", "right.py", "wrong.py",
               search_path=search_path, folder=tmp_path)
    wrong = [line.split(":")[:2] for line in done.stdout.splitlines() if ": error:" in line]
    assert wrong == [["wrong.py", str(line)] for line in range(4, 15)], done.stdout + done.stderr


def test_every_public_name_is_in_the_stub():
    stub = pathlib.Path(picturehost.__file__).with_name("__init__.pyi").read_text()
    for name in picturehost.__all__:
        assert f"def {name}(" in stub or f"class {name}" in stub
