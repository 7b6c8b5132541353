"""What the documentation shows is what comes out."""

import doctest
import shutil
import warnings

from conftest import SOURCE, random_pixels
from PIL import Image


def test_the_examples_of_the_page(tmp_path, monkeypatch):
    shutil.copy(SOURCE / "examples" / "photos" / "coffee.png", tmp_path)
    pages = [Image.fromarray(random_pixels(seed, 20, 30, alpha=255)).convert("L") for seed in range(2)]
    pages[0].save(tmp_path / "scan.tif", save_all=True, append_images=pages[1:], dpi=(300, 300),
                  compression="tiff_adobe_deflate")
    monkeypatch.chdir(tmp_path)
    with warnings.catch_warnings():
        result = doctest.testfile(str(SOURCE / "docs" / "python.md"), module_relative=False)
    assert result.failed == 0
    assert result.attempted > 20
    assert (tmp_path / "negative.png").exists()
    assert Image.open(tmp_path / "negative.tif").tag_v2[259] == 5, "LZW"
    assert Image.open(tmp_path / "inverted.tif").n_frames == 2
