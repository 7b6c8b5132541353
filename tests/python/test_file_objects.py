"""Paths and file objects of every kind, and warnings."""

import io
import os
import pathlib
import warnings

import numpy as np
import pytest
from conftest import random_pixels
from PIL import Image

import picturehost
from picturehost import Picture


@pytest.fixture
def photo(tmp_path):
    path = tmp_path / "photo.png"
    Image.fromarray(random_pixels(1, 20, 30, alpha=255)).save(path, dpi=(200, 200))
    return path


def expected(photo):
    return np.array(Image.open(photo))


class Path:
    def __init__(self, path):
        self.path = path

    def __fspath__(self):
        return self.path


@pytest.mark.parametrize("kind", [str, os.fsencode, pathlib.Path, lambda p: Path(str(p)), lambda p: Path(os.fsencode(p))])
def test_paths(photo, kind, tmp_path):
    picture = Picture.open(kind(photo))
    assert np.array_equal(picture.to_array(), expected(photo))
    for name in ("out.png", "grün.png"):
        picture.save(kind(tmp_path / name))
        assert np.array_equal(np.array(Image.open(tmp_path / name).convert("RGBA")), expected(photo))


def test_files_that_are_read(photo):
    data = photo.read_bytes()
    memory = io.BytesIO()
    memory.write(data)  # it stands at its end, as Pillow may have it, too
    with open(photo, "rb") as buffered, open(photo, "rb", buffering=0) as raw:
        for file in (memory, buffered, raw):
            assert np.array_equal(Picture.open(file).to_array(), expected(photo))
            assert not file.closed
    assert len(Picture.open_pages(io.BytesIO(data))) == 1

    class OnlyReads:
        def read(self):
            return bytearray(data)

    assert Picture.open(OnlyReads()).width == 30
    reading, writing = os.pipe()
    with open(reading, "rb") as pipe:
        os.write(writing, data)
        os.close(writing)
        assert Picture.open(pipe).width == 30


@pytest.mark.parametrize("kind", [bytes, bytearray, memoryview, lambda data: np.frombuffer(data, np.uint8)])
def test_bytes(photo, kind):
    picture = Picture.from_bytes(kind(photo.read_bytes()))
    assert np.array_equal(picture.to_array(), expected(photo))
    assert picture.metadata["resolution"] == pytest.approx((200, 200), abs=0.1)


def test_what_cannot_be_read(photo, tmp_path):
    with open(photo, encoding="latin-1") as text, pytest.raises(TypeError, match="binary mode"):
        Picture.open(text)
    with pytest.raises(TypeError):
        Picture.from_bytes("text")
    with pytest.raises(BufferError):
        Picture.from_bytes(memoryview(photo.read_bytes())[::2])
    with pytest.raises(picturehost.Error, match="'the bytes' is empty"):
        Picture.from_bytes(b"")
    with pytest.raises(picturehost.Error, match="'the file object' isn't an image"):
        Picture.open(io.BytesIO(b"no picture"))
    (tmp_path / "text.png").write_text("no picture")
    with open(tmp_path / "text.png", "rb") as file, pytest.raises(picturehost.Error, match="text.png' isn't an image"):
        Picture.open(file)
    for missing in (tmp_path / "missing.png", os.fsencode(tmp_path / "missing.png")):
        with pytest.raises(FileNotFoundError):
            Picture.open(missing)


def test_files_that_are_written(photo, tmp_path):
    picture = Picture.open(photo)
    memory = io.BytesIO()
    picture.save(memory, format="tiff")
    assert np.array_equal(np.array(Image.open(memory).convert("RGBA")), expected(photo))
    with open(tmp_path / "a.png", "wb") as buffered, open(tmp_path / "b.png", "wb", buffering=0) as raw:
        picture.save(buffered)
        picture.save(raw)
        assert not raw.closed
    assert (tmp_path / "a.png").read_bytes() == (tmp_path / "b.png").read_bytes() == picture.to_bytes("png")

    class TakesLittle:
        def __init__(self):
            self.taken = b""

        def write(self, data):
            self.taken += data[:100]
            return min(100, len(data))

    class TakesSilently:
        taken = b""

        def write(self, data):
            self.taken += data

    for file in (TakesLittle(), TakesSilently()):
        picture.save(file, format="png")
        assert file.taken == picture.to_bytes("png")
    two = io.BytesIO()
    Picture.save_pages([picture, picture.InvertKRT()], two, format="tiff")
    assert Image.open(two).n_frames == 2


def test_what_cannot_be_written(photo, tmp_path):
    picture = Picture.open(photo)
    with pytest.raises(ValueError, match="format="):
        picture.save(io.BytesIO())
    with open(tmp_path / "a.txt", "wb") as file, pytest.raises(ValueError, match="format="):
        picture.save(file)
    with open(tmp_path / "a.txt", "w") as file, pytest.raises(TypeError):
        picture.save(file, format="png")

    class Full:
        def write(self, data):
            return 0

    with pytest.raises(OSError, match="no more bytes"):
        picture.save(Full(), format="png")


@pytest.fixture
def damaged(photo, tmp_path):
    Image.fromarray(random_pixels(2, 64, 64)[..., :3]).save(tmp_path / "whole.jpg")
    data = (tmp_path / "whole.jpg").read_bytes()
    (tmp_path / "short.jpg").write_bytes(data[: len(data) * 2 // 3])
    return tmp_path / "short.jpg"


def test_warnings_name_the_line_that_opened_the_file(damaged):
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        Picture.open(damaged)
        Picture.open_pages(damaged)
        Picture.from_bytes(damaged.read_bytes())
        Picture.open(io.BytesIO(damaged.read_bytes()))
    assert [warning.category for warning in caught] == [picturehost.PictureFileWarning] * 4
    assert {warning.filename for warning in caught} == {__file__}
    assert [warning.lineno - caught[0].lineno for warning in caught] == [0, 1, 2, 3]
    assert str(damaged) in str(caught[0].message) and "rows" in str(caught[0].message)
    assert "'the bytes'" in str(caught[2].message)
    assert issubclass(picturehost.PictureFileWarning, UserWarning)


def test_damage_and_strict(damaged):
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with pytest.raises(picturehost.PictureFileWarning, match="rows"):
            Picture.open(damaged)
        for options in ({"damage": "fail"}, {"strict": True}):
            with pytest.raises(picturehost.Error):
                Picture.open(damaged, **options)
        assert Picture.open(damaged, damage="ignore").width == 64


def test_what_a_format_cannot_hold_is_a_warning_or_an_error(photo, tmp_path):
    Image.open(photo).save(tmp_path / "a.png", exif=exif())
    picture = Picture.open(tmp_path / "a.png")
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        picture.save(tmp_path / "a.bmp")
        picture.to_bytes("bmp")
    assert ["EXIF" in str(warning.message) for warning in caught] == [True, True]
    assert [(warning.filename, warning.lineno - caught[0].lineno) for warning in caught] == [(__file__, 0), (__file__, 1)]

    (tmp_path / "kept.bmp").write_text("kept")
    file = io.BytesIO()
    with warnings.catch_warnings():
        warnings.simplefilter("error", picturehost.PictureFileWarning)
        for target in (tmp_path / "kept.bmp", file):
            with pytest.raises(picturehost.PictureFileWarning):
                picture.save(target, format="bmp")
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with pytest.raises(picturehost.Error, match="can't hold EXIF"):
            picture.save(tmp_path / "kept.bmp", strict=True)
        picture.save(tmp_path / "none.bmp", metadata="none")
    assert (tmp_path / "kept.bmp").read_text() == "kept" and file.getvalue() == b""
    names = {"photo.png", "a.png", "a.bmp", "kept.bmp", "none.bmp"}
    assert {path.name for path in tmp_path.iterdir()} == names, "and no hidden file"


def exif():
    made = Image.Exif()
    made[0x10F] = "Maker"
    return made
