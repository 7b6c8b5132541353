"""What the documentation shows is what comes out."""

import doctest
import shutil

from conftest import SOURCE


def test_the_examples_of_the_page(tmp_path, monkeypatch):
    shutil.copy(SOURCE / "examples" / "photos" / "coffee.png", tmp_path)
    monkeypatch.chdir(tmp_path)
    result = doctest.testfile(str(SOURCE / "docs" / "python.md"), module_relative=False)
    assert result.failed == 0
    assert result.attempted > 20
    assert (tmp_path / "negative.png").exists()
