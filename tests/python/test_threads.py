"""Threads may call at any time; one at a time is in the host."""

import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import pytest
from conftest import random_pixels

import picturehost
from picturehost import Picture, _picturehost


def test_many_threads_get_what_one_gets():
    arrays = [random_pixels(seed, 40, 50, alpha=255) for seed in range(8)]

    def work(array):
        picture = Picture.from_array(array)
        for _ in range(3):
            picture = picture.ChangeContrastKRT(0.2).InvertKRT(2, 3, 30, 30)
            picture = picturehost.MergePictureKRT(picture, Picture.from_array(array))
            sepia = picturehost.PictureSepiaKRT(SourcePicture=picture, SepiaRed=30)
            assert sepia.Run()
            picture = sepia.DestinationPicture
        return picture.to_array().tobytes(), picture.CountColorsKRT().red.tobytes()

    expected = [work(array) for array in arrays]
    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(work, arrays * 20)) == expected * 20


def test_files_and_calls_of_several_threads(runner, tmp_path):
    expected = Picture.open(runner.photo).InvertKRT().to_array().tobytes()
    batch = _picturehost.Batch(["InvertKRT"])

    def work(number):
        output = tmp_path / f"{number}.png"
        batch.run(runner.photo, output)
        held = [Picture.open(runner.photo) for _ in range(3)]
        del held  # gives back references while another thread is in the host
        return (Picture.open(output).to_array().tobytes(),
                Picture.open(runner.photo).InvertKRT().to_array().tobytes())

    with ThreadPoolExecutor(6) as pool:
        assert set(pool.map(work, range(60))) == {(expected, expected)}


def test_python_runs_while_a_batch_does_and_calls_wait(tmp_path):
    """A long batch holds the host's lock, but not the interpreter's."""
    Picture.from_array(random_pixels(1, 1500, 1500, alpha=255)).save(tmp_path / "large.png")
    batch = _picturehost.Batch(["InvertKRT"] * 4)
    output = tmp_path / "out.png"
    thread = threading.Thread(target=batch.run, args=(tmp_path / "large.png", output))
    thread.start()
    for _ in range(20):
        time.sleep(0.001)
    assert not output.exists(), "the batch was to last longer than twenty short sleeps"
    assert Picture(4, 4).CountColorKRT("#FFFFFF") == 16
    assert output.exists(), "the call got in while the batch was in the host"
    thread.join()


@pytest.fixture
def no_switches():
    """A thread runs on until it waits or lets go of the interpreter by itself."""
    before = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    yield
    sys.setswitchinterval(before)


def test_python_runs_while_pictures_are_opened_and_saved(tmp_path, no_switches):
    """Decoding and encoding keep the host's lock, but not the interpreter's."""
    picture = Picture.from_array(random_pixels(1, 400, 400, alpha=255))
    picture.save(tmp_path / "a.png")
    data = (tmp_path / "a.png").read_bytes()

    def is_seen_at_work(work):
        steps = []

        def body():
            steps.append("begun")
            work()
            steps.append("ended")

        thread = threading.Thread(target=body)
        thread.start()  # comes back when the thread has let go of the interpreter
        seen = steps == ["begun"]
        thread.join()
        return seen

    # A busy machine may wake this thread too late many times, but not each time.
    for work in (lambda: Picture.open(tmp_path / "a.png"), lambda: Picture.from_bytes(data),
                 lambda: picture.to_bytes("png"), lambda: picture.save(tmp_path / "b.png")):
        assert any(is_seen_at_work(work) for _ in range(200))
    assert not any(is_seen_at_work(lambda: picture.InvertKRT()) for _ in range(20)), "methods keep it"


def test_a_batch_has_layouts_of_its_own(runner, tmp_path):
    """What it makes is the program's; pictures made after it are Python's as before."""
    expected, _, _ = runner.run("InvertKRT(5, 5, 9, 9)", photo="clear.png", layout="argb-premultiplied")
    _picturehost.Batch(["InvertKRT(5, 5, 9, 9)"]).run(runner.folder / "clear.png", tmp_path / "out.png")
    assert (tmp_path / "out.png").read_bytes() == expected
    other, _, _ = runner.run("InvertKRT(5, 5, 9, 9)", photo="clear.png")
    Picture.open(runner.folder / "clear.png").InvertKRT(5, 5, 9, 9).save(tmp_path / "own.png")
    assert (tmp_path / "own.png").read_bytes() == other != expected
