"""Arguments and results: names, defaults, overloads, kinds of values, what is told when they don't fit."""

import array
import inspect

import numpy as np
import pytest

import picturehost
from picturehost import Picture


def plain(colour=(10, 20, 30, 255), height=4, width=6):
    return Picture.from_array(np.full((height, width, 4), colour, np.uint8))


def test_docstrings_begin_with_the_declarations():
    assert Picture.InvertKRT.__doc__.splitlines()[:2] == [
        "InvertKRT(left as integer,top as integer,width as integer,height as integer) as picture",
        "InvertKRT as picture",
    ]
    assert picturehost.MergePictureKRT.__doc__.startswith("MergePictureKRT(source1 as picture, source2")
    assert picturehost.PictureSepiaKRT.MinX.__doc__.startswith("MinX as Integer")


def test_signatures_have_names_and_defaults():
    assert str(inspect.signature(Picture.ColornessKRT)) == "(self, /, threshold=10)"
    drawn = inspect.signature(picturehost.RenderSamplesKRT).parameters
    assert drawn["BackColor"].default == 0x88B5C4 and drawn["AutoScale"].default is False
    assert str(inspect.signature(Picture.CountColorsKRT)) == "(self, /, red=None, blue=None, green=None, count=0)"


def test_defaults_are_the_declared_ones():
    picture = plain((100, 120, 110, 255))
    assert picture.ColornessKRT() == picture.ColornessKRT(10) != picture.ColornessKRT(threshold=30)
    assert plain((9, 9, 9, 255)).isGrayKRT() is True
    assert plain((9, 9, 10, 255)).isGrayKRT() is False


@pytest.mark.parametrize("colour", [0x0A141E, "#0A141E", "#0a141e", np.int64(0x0A141E), np.uint32(0x0A141E)])
def test_colours(colour):
    assert plain().CountColorKRT(colour) == 24


@pytest.mark.parametrize("colour", ["0A141E", "#0A141", "#0A141G", "#+A141E", "red", "", 1.0, -1, 2**32, None, b"#0A141E"])
def test_what_is_no_colour(colour):
    with pytest.raises(TypeError):
        plain().CountColorKRT(colour)


def test_numbers_of_numpy_and_python():
    expected = plain().ChangeContrastKRT(0.5).to_array().tobytes()
    for number in (np.float64(0.5), np.float32(0.5), np.float16(0.5)):
        assert plain().ChangeContrastKRT(number).to_array().tobytes() == expected
    assert plain().ChangeContrastKRT(1).to_array().tobytes() == plain().ChangeContrastKRT(1.0).to_array().tobytes()
    assert plain().ScrollVerticalKRT(np.int8(1), np.bool_(True), False) is True


@pytest.mark.parametrize("amount", [1.0, 1.5, "1", None, 2**31, -(2**31) - 1, 10**30, [1], np.array([1]), np.array(1), object()])
def test_what_is_no_integer(amount):
    with pytest.raises(TypeError):
        plain().ChangeSaturationKRT(amount)


def table():
    return bytes(reversed(range(256)))


@pytest.mark.parametrize("block", [
    table(), bytearray(table()), memoryview(table()), np.frombuffer(table(), np.uint8),
    array.array("B", table()), np.frombuffer(table(), "<u4"),
    np.repeat(np.frombuffer(table(), np.uint8), 2)[::2],  # not contiguous
    np.frombuffer(table(), np.uint8)[::-1][::-1],
], ids=lambda block: type(block).__name__)
def test_memory_blocks(block):
    result = plain().TransformColorsKRT(block, block, block)
    assert result.to_array()[0, 0].tolist() == [245, 235, 225, 255]


def test_a_block_that_is_given_is_copied():
    given = bytearray(1024)
    assert plain().CountColorsKRT(red=given).red[40:44].view("<u4")[0] == 24
    assert given == bytes(1024)


def test_results_by_reference():
    counted = plain().CountColorsKRT()
    assert counted._fields == ("red", "blue", "green", "count")
    assert counted.count == 24
    assert [np.flatnonzero(block.view("<u4")).tolist() for block in counted[:3]] == [[10], [20], [30]]
    again = plain().CountColorsKRT(*counted[:3])
    assert again.red.view("<u4")[10] == 48


def test_a_position_or_none():
    haystack = np.zeros((8, 9, 4), np.uint8)
    haystack[3:5, 6:8] = 200
    picture = Picture.from_array(haystack)
    assert picture.FindPictureKRT(Picture.from_array(haystack[3:5, 6:8])) == (6, 3)
    assert picture.FindPictureKRT(plain()) is None


def test_strings():
    data = picturehost.PicturetoBinaryStringKRT(plain())
    assert isinstance(data, bytes) and data.startswith(b"PPIC") and max(data) < 128
    assert picturehost.BinaryStringtoPictureKRT(data.decode()).to_array()[1, 1].tolist() == [10, 20, 30, 255]
    assert max(picturehost.PicturetoBinaryStringKRT(plain((200, 0, 0, 255)))) == 200
    assert picturehost.BinaryStringtoPictureKRT(data).to_array()[1, 1].tolist() == [10, 20, 30, 255]


def test_overloads_are_told_apart_by_number_and_names():
    picture = Picture.from_array(np.zeros((4, 6, 4), np.uint8))
    assert picture.InvertKRT().to_array()[..., 0].min() == 255
    part = picture.InvertGrayKRT(left=1, top=1, width=2, height=1).to_array()
    assert picture.isGrayKRT(0, 0, 0, 2, 2) is True and part.shape == (4, 6, 4)
    for arguments, named in (((1, 2), {}), ((), {"left": 1}), ((1, 2, 3, 4, 5), {}), ((), {"colour": 1})):
        with pytest.raises(TypeError, match="InvertKRT as picture"):
            picture.InvertKRT(*arguments, **named)


def test_a_mistake_names_the_declaration():
    with pytest.raises(TypeError, match=r"Amount is missing; it is declared ChangeSaturationKRT\(Amount"):
        plain().ChangeSaturationKRT()
    with pytest.raises(TypeError, match="no parameter is called amont"):
        plain().ChangeSaturationKRT(amont=3)
    with pytest.raises(TypeError, match="given twice"):
        plain().ChangeSaturationKRT(3, Amount=3)


def test_exceptions_of_the_host_have_their_names():
    with pytest.raises(picturehost.NilObjectException, match="The channel picture is nil.") as caught:
        plain().ReplaceRedChannelKRT(None)
    assert caught.value.ErrorNumber == 0
    assert isinstance(caught.value, picturehost.RuntimeException)
    assert isinstance(caught.value, picturehost.Error)
    with pytest.raises(picturehost.NilObjectException, match="memoryblock is nil"):
        picturehost.RenderSamplesKRT(None, 1, 1, 10, 10, 1)
    assert plain().InvertKRT().width == 6, "nothing is left behind of an exception"


def test_nil_that_the_arguments_explain():
    with pytest.raises(picturehost.NilResultError, match="the pictures differ in size, 6 x 4 and 5 x 4"):
        picturehost.MergePictureKRT(plain(), plain(width=5))
    with pytest.raises(picturehost.NilResultError, match="a picture among the arguments is nil"):
        picturehost.MergePictureKRT(plain(), None)
    with pytest.raises(picturehost.NilResultError, match="isn't a whole picture"):
        picturehost.BinaryStringtoPictureKRT(b"PPIC")
    with pytest.raises(picturehost.NilResultError, match="Bits must be"):
        picturehost.RenderSamplesKRT(bytes(10), 10, 1, 10, 10, 1, Bits=9)


def test_methods_need_a_picture_of_their_own():
    for other in (None, 3, "photo.png", picturehost.PictureSepiaKRT()):
        with pytest.raises(TypeError, match="a method of Picture is called on"):
            Picture.InvertKRT(other)


def test_pairs():
    picture = plain((10, 20, 30, 77))
    grey = picture.EmbeddedMaskKRT[False].to_array()
    assert grey[0, 0].tolist() == [77, 77, 77, 255]
    assert picture.EmbeddedMaskKRT(swap=True).to_array()[0, 0, 0] == 178
    with pytest.raises(AttributeError):
        picture.EmbeddedMaskKRT = picture
    with pytest.raises(TypeError):
        picture.EmbeddedMaskKRT["yes"]
    with pytest.raises(TypeError):
        picture.EmbeddedMaskKRT[False] = 7
    assert Picture.EmbeddedMaskKRT.__doc__.startswith("EmbeddedMaskKRT(swap as boolean) as picture")
