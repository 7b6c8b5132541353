"""Scrolling, channels, masks and strings of bytes, in the manner of rules.py."""

import numpy as np

from rules import made


# Without wrap nothing moves on this host.
def ScrollVerticalKRT(picture, delta, wrap, scroll_mask):
    assert wrap
    picture[:] = np.roll(picture, delta, axis=0)
    return True


def ScrollHorizontalKRT(picture, delta, wrap, scroll_mask):
    assert wrap
    picture[:] = np.roll(picture, delta, axis=1)
    return True


def ScrollKRT(picture, delta_x, delta_y, wrap, scroll_mask):
    ScrollHorizontalKRT(picture, delta_x, wrap, scroll_mask)
    return ScrollVerticalKRT(picture, delta_y, wrap, scroll_mask)


def MergePictureKRT(source1, source2):
    return made(*np.maximum(source1, source2)[..., :3].transpose(2, 0, 1))


def CombinePicturesKRT(red, blue, green):
    return made(red[..., 0], green[..., 1], blue[..., 2])


def replaced(picture, other, channel):
    result = [picture[..., i] for i in range(3)]
    result[channel] = other[: picture.shape[0], : picture.shape[1], channel]
    return made(*result)


def ReplaceRedChannelKRT(picture, other):
    return replaced(picture, other, 0)


def ReplaceGreenChannelKRT(picture, other):
    return replaced(picture, other, 1)


def ReplaceBlueChannelKRT(picture, other):
    return replaced(picture, other, 2)


def HasMaskKRT(picture):
    return False  # nothing that comes from a file has a separate mask


def EmbeddedMaskKRT(picture, swap):
    value = 255 - picture[..., 3] if swap else picture[..., 3]
    return made(value, value, value)


def assign_EmbeddedMaskKRT(picture, swap, mask, first):
    """`first` is the channel whose byte comes first in memory."""
    picture[..., first] = 255 - mask[..., 0] if swap else mask[..., 0]


def PicturetoBinaryStringKRT(picture):
    height, width = picture.shape[:2]
    header = b"PPIC"
    for number in (40 + 3 * width * height, width, height, 32, 40):
        header += number.to_bytes(4, "big")
    return header + bytes(16) + picture[..., :3].tobytes()


def BinaryStringtoPictureKRT(data):
    width, height, begin = (int.from_bytes(data[at : at + 4], "big") for at in (8, 12, 20))
    pixels = np.frombuffer(data, np.uint8, 3 * width * height, begin).reshape(height, width, 3)
    return made(*pixels.transpose(2, 0, 1))
