"""Files, Pillow's images and notebooks."""

import io

import numpy as np
import pytest
from conftest import random_pixels
from PIL import Image

import picturehost
from picturehost import Picture


def test_open_reads_what_pillow_reads(runner):
    for name in ("photo.png", "clear.png"):
        assert np.array_equal(Picture.open(runner.folder / name).to_array(), np.array(Image.open(runner.folder / name)))
    assert Picture.open(str(runner.photo)).width == 53


def test_save_writes_what_was_there(runner, tmp_path):
    pixels = random_pixels(1, 9, 8)
    picture = Picture.from_array(pixels)
    for name in ("a.png", "b.tiff"):
        picture.save(tmp_path / name)
        saved = np.array(Image.open(tmp_path / name))
        assert np.array_equal(saved[..., 3], pixels[..., 3])
        assert np.array_equal(saved[pixels[..., 3] == 255], pixels[pixels[..., 3] == 255])
    picture.save(str(tmp_path / "c.jpg"))
    assert Image.open(tmp_path / "c.jpg").mode == "RGB"
    assert sorted(path.name for path in tmp_path.iterdir()) == ["a.png", "b.tiff", "c.jpg"]


def test_a_save_that_fails_leaves_what_was_there(tmp_path):
    (tmp_path / "kept.txt").write_text("kept")
    with pytest.raises(picturehost.Error, match="the name must end in"):
        Picture(2, 2).save(tmp_path / "kept.txt")
    with pytest.raises(picturehost.Error, match="can't write"):
        Picture(2, 2).save(tmp_path / "missing" / "a.png")
    assert [path.name for path in tmp_path.iterdir()] == ["kept.txt"]
    assert (tmp_path / "kept.txt").read_text() == "kept"


def test_files_that_cannot_be_opened(runner, tmp_path):
    with pytest.raises(FileNotFoundError):
        Picture.open(tmp_path / "missing.png")
    (tmp_path / "text.png").write_text("no picture")
    with pytest.raises(picturehost.Error, match="isn't an image"):
        Picture.open(tmp_path / "text.png")
    (tmp_path / "short.png").write_bytes(runner.photo.read_bytes()[:400])
    with pytest.raises(picturehost.Error, match="truncated"):
        Picture.open(tmp_path / "short.png")
    with pytest.raises(picturehost.Error):
        Picture.open(tmp_path)
    with pytest.raises(TypeError):
        Picture.open(3)


@pytest.mark.parametrize("mode", ["RGBA", "RGB", "L", "LA", "P", "1", "CMYK"])
def test_pillow_in_and_out(mode):
    image = Image.fromarray(random_pixels(2, 6, 7)).convert(mode)
    picture = Picture.from_pil(image)
    back = picture.to_pil()
    assert back.mode == "RGBA" and back.tobytes() == image.convert("RGBA").tobytes()
    picture.to_array()[:] = 0
    assert back.tobytes() == image.convert("RGBA").tobytes(), "each has memory of its own"
    back.putpixel((0, 0), (9, 9, 9, 9))
    assert picture.to_array()[0, 0].tolist() == [0, 0, 0, 0]


def test_notebooks_show_the_picture():
    pixels = random_pixels(3, 6, 7)
    shown = Image.open(io.BytesIO(Picture.from_array(pixels)._repr_png_()))
    assert np.array_equal(np.array(shown), pixels)
