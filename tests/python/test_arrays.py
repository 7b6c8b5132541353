"""Arrays and pictures share their memory, each keeps the other alive, and what can't be shared is refused."""

import gc
import weakref

import numpy as np
import pytest
from conftest import random_pixels

from picturehost import Error, Picture


def test_a_picture_over_an_array_shares_its_memory():
    array = random_pixels(1, 7, 9)
    picture = Picture.from_array(array)
    assert (picture.width, picture.height) == (9, 7)
    assert np.shares_memory(picture.to_array(), array)
    array[2, 3] = (1, 2, 3, 4)
    assert picture.to_array()[2, 3].tolist() == [1, 2, 3, 4]
    picture.to_array()[4, 5] = (5, 6, 7, 8)
    assert array[4, 5].tolist() == [5, 6, 7, 8]


def test_what_the_plugin_writes_is_in_the_array():
    array = random_pixels(2, 7, 9)
    before = array.copy()
    assert Picture.from_array(array).ScrollVerticalKRT(2, True, False)
    assert np.array_equal(array[2:, :, :3], before[:5, :, :3])
    assert np.array_equal(array[:2, :, :3], before[5:, :, :3])


def test_what_the_array_gets_the_plugin_sees():
    array = np.zeros((4, 4, 4), np.uint8)
    picture = Picture.from_array(array)
    assert picture.CountColorKRT("#102030") == 0
    array[1:3] = (0x10, 0x20, 0x30, 255)
    assert picture.CountColorKRT("#102030") == 8


def test_results_are_shared_too():
    result = Picture(5, 3).InvertKRT()
    pixels = result.to_array()
    assert pixels.shape == (3, 5, 4) and pixels.dtype == np.uint8 and pixels.flags.writeable
    assert pixels.tobytes() == bytes((0, 0, 0, 255)) * 15
    pixels[:] = (1, 2, 3, 255)
    assert result.CountColorKRT("#010203") == 15


def test_a_picture_keeps_its_array():
    array = random_pixels(3, 50, 60)
    expected = array.tobytes()
    gone = weakref.ref(array)
    picture = Picture.from_array(array)
    del array
    gc.collect()
    assert gone() is not None
    assert picture.to_array().tobytes() == expected
    del picture
    gc.collect()
    assert gone() is None, "an array that nobody needs any more goes"


def test_an_array_keeps_its_picture():
    pixels = Picture(300, 200).InvertKRT().to_array()
    assert pixels.base.CountColorKRT("#000000") == 300 * 200, "freed memory may still look right, so this is asked"
    part = pixels[10:20, 30:40]
    del pixels
    gc.collect()
    others = [Picture(300, 200) for _ in range(20)]  # would take the memory that was free
    assert part.tobytes() == bytes((0, 0, 0, 255)) * 100
    assert len(others) == 20


def test_a_block_keeps_its_memory():
    red = Picture(30, 20).CountColorsKRT().red
    gc.collect()
    others = [Picture(30, 20).CountColorsKRT() for _ in range(50)]
    assert red.view("<u4")[255] == 600 and len(others) == 50


def test_a_picture_keeps_what_the_host_holds_of_it():
    import picturehost

    array = random_pixels(4, 5, 6)
    gone = weakref.ref(array)
    sepia = picturehost.PictureSepiaKRT(SourcePicture=Picture.from_array(array))
    del array
    gc.collect()
    assert gone() is not None and sepia.Run()
    del sepia
    gc.collect()
    assert gone() is None


def test_a_part_of_an_array_is_shared_and_its_surroundings_stay():
    array = random_pixels(5, 20, 3000)
    before = array.copy()
    part = array[4:9, 100:110]
    picture = Picture.from_array(part)
    assert np.shares_memory(picture.to_array(), array)
    assert picture.to_array().tobytes() == part.tobytes()
    assert picture.ScrollHorizontalKRT(3, True, False)
    assert np.array_equal(part[:, 3:, :3], before[4:9, 100:107, :3])
    outside = np.ones(array.shape[:2], bool)
    outside[4:9, 100:110] = False
    assert np.array_equal(array[outside], before[outside])


def test_one_row_and_one_column():
    array = random_pixels(6, 10, 10)
    for part in (array[3:4], array[:, 3:4], array[::-1][3:4], array[3:4, 3:4]):
        assert Picture.from_array(part).to_array().tobytes() == part.tobytes()
        assert np.shares_memory(Picture.from_array(part).to_array(), array)


def read_only():
    array = random_pixels(7, 4, 5)
    array.flags.writeable = False
    return array


def off_by_one_byte():
    return np.zeros(4 * 5 * 4 + 1, np.uint8)[1:].reshape(4, 5, 4)


UNSHAREABLE = {
    "read-only": (read_only, True),
    "upside down": (lambda: random_pixels(8, 4, 5)[::-1], True),
    "mirrored": (lambda: random_pixels(8, 4, 5)[:, ::-1], True),
    "every other pixel": (lambda: random_pixels(8, 4, 10)[:, ::2], True),
    "planes": (lambda: np.asfortranarray(random_pixels(8, 4, 5)), True),
    "channels turned round": (lambda: random_pixels(8, 4, 5)[..., ::-1], True),
    "one row for all": (lambda: np.broadcast_to(random_pixels(8, 1, 5), (4, 5, 4)), True),
    "unaligned": (off_by_one_byte, True),
    "signed": (lambda: random_pixels(8, 4, 5).astype(np.int8), False),
    "16 bits": (lambda: random_pixels(8, 4, 5).astype(np.uint16), False),
    "floating point": (lambda: random_pixels(8, 4, 5) / 255, False),
    "booleans": (lambda: random_pixels(8, 4, 5) > 9, False),
    "three channels": (lambda: random_pixels(8, 4, 5)[..., :3].copy(), False),
    "grey": (lambda: random_pixels(8, 4, 5)[..., 0].copy(), False),
    "a row of pictures": (lambda: random_pixels(8, 4, 5)[np.newaxis].copy(), False),
    "no rows": (lambda: random_pixels(8, 4, 5)[:0], False),
    "no columns": (lambda: random_pixels(8, 4, 5)[:, :0], False),
}


@pytest.mark.parametrize("name", UNSHAREABLE)
def test_what_cannot_be_shared_is_refused(name):
    make, can_be_copied = UNSHAREABLE[name]
    array = make()
    with pytest.raises(ValueError, match="the array can't become a picture: it"  if name not in (
            "upside down", "mirrored", "every other pixel", "planes", "channels turned round", "one row for all",
            "unaligned", "read-only") else "the array can't become a picture: "):
        Picture.from_array(array)
    if not can_be_copied:
        with pytest.raises(ValueError):
            Picture.from_array(array, copy=True)
        return
    picture = Picture.from_array(array, copy=True)
    assert picture.to_array().tobytes() == np.ascontiguousarray(array).tobytes()
    assert not np.shares_memory(picture.to_array(), array)


def test_other_objects_are_copied_or_refused():
    for other in (None, 3, "photo.png", [[[1, 2, 3, 4]]], bytes(16)):
        with pytest.raises(TypeError, match="NumPy array"):
            Picture.from_array(other)
    with pytest.raises(ValueError):
        Picture.from_array(bytes(16), copy=True)


def test_sizes_that_no_picture_has():
    for width, height in ((0, 1), (1, 0), (-1, 5), (2**31 - 1, 2**31 - 1)):
        with pytest.raises(Error):
            Picture(width, height)
    with pytest.raises(TypeError):
        Picture(2**31, 1)


def test_two_objects_of_one_picture_are_equal():
    import picturehost

    picture = Picture(3, 2)
    sepia = picturehost.PictureSepiaKRT(SourcePicture=picture)
    assert sepia.SourcePicture == picture and hash(sepia.SourcePicture) == hash(picture)
    assert picture != Picture(3, 2) and picture != 3
    assert repr(picture) == "<picturehost.Picture of 3 x 2 pixels>"
