"""Every registered entry once more, from what the reference says, over arrays of NumPy.

A picture is an array of height x width x 4 bytes: red, green, blue, alpha. Functions are named as
the entries are and take the picture first; overloads are told apart by their arguments. What a
method changes in place is changed in its array.
"""

import numpy as np

WHITE = 255  # what the embedded host's new pictures without an alpha channel are filled with


def fresh(like):
    return np.full_like(like, WHITE)


def channels(picture):
    return picture[..., 0].astype(np.int64), picture[..., 1].astype(np.int64), picture[..., 2].astype(np.int64)


def made(red, green, blue):
    """An opaque picture of three arrays of channel values."""
    opaque = np.full(red.shape, 255)
    return np.stack([red, green, blue, opaque], axis=-1).astype(np.uint8)


def rgb(colour):
    return np.array([colour >> 16 & 255, colour >> 8 & 255, colour & 255])


def clip(picture, left, top, width, height):
    """The slices that a rectangle selects."""
    rows, columns = picture.shape[:2]
    right = left + (columns if width < 0 else width)
    bottom = top + (rows if height < 0 else height)
    left, top = max(left, 0), max(top, 0)
    return slice(top, max(min(bottom, rows), top)), slice(left, max(min(right, columns), left))


def within(picture, rectangle, rule):
    """`rule` of the pixels inside the rectangle, in a new picture that keeps its fill elsewhere."""
    result = fresh(picture)
    inside = clip(picture, *rectangle)
    result[inside] = rule(picture[inside])
    return result


# --- Invert


def inverted(picture):
    return made(*(255 - channel for channel in channels(picture)))


def grey_inverted(picture):
    red, green, blue = channels(picture)
    grey = (red == green) & (green == blue)
    return np.where(grey[..., None], inverted(picture), made(red, green, blue))


def InvertKRT(picture, left=0, top=0, width=-1, height=-1):
    return within(picture, (left, top, width or -1, height or -1), inverted)


def InvertGrayKRT(picture, left=0, top=0, width=-1, height=-1):
    return within(picture, (left, top, width, height), grey_inverted)


# --- Brightness and contrast: doubles, truncated toward zero, clamped


def each(values):
    """One value for all channels, or three."""
    return values * 3 if len(values) == 1 else values


def tones(picture, curve):
    """`curve` (channel number, values as doubles) of each channel, truncated and clamped."""
    results = [np.trunc(curve(i, channel.astype(float))) for i, channel in enumerate(channels(picture))]
    return made(*(np.clip(result, 0, 255) for result in results))


def contrast(v, k):
    return (v - 127) * (k + 1.0) + 127.0


def linear(v, b):
    return v * ((b + 255.0) / 255.0) + 0.0 if b < 0 else v * ((255.0 - b) / 255.0) + b


def ChangeContrastKRT(picture, *k):
    k = each(k)
    return tones(picture, lambda i, v: contrast(v, k[i]))


def ChangeBrightnessAbsoluteKRT(picture, *b):
    b = each(b)
    return tones(picture, lambda i, v: v + b[i])


def ChangeBrightnessLinearKRT(picture, *b):
    b = each(b)
    assert all(-255 <= value <= 255 for value in b), "beyond that range nothing is clamped"
    return tones(picture, lambda i, v: linear(v, b[i]))


def halves(values):
    return each(values[: len(values) // 2]), each(values[len(values) // 2 :])


def ChangeContrastBrightnessAbsoluteKRT(picture, *values):
    k, b = halves(values)
    return tones(picture, lambda i, v: contrast(v, k[i]) + b[i])


def ChangeContrastBrightnessLinearKRT(picture, *values):
    k, b = halves(values)
    return tones(picture, lambda i, v: linear(contrast(v, k[i]), b[i]))


def ChangeCustomKRT(picture, *values):
    if len(values) == 2:
        a, b = values
        return tones(picture, lambda i, v: v * a + b)
    red_a, red_b, _, green_b, blue_a, blue_b = values  # green is multiplied by red's factor
    return tones(picture, lambda i, v: v * (red_a, red_a, blue_a)[i] + (red_b, green_b, blue_b)[i])


# --- Saturation, tint, colorness


def ChangeSaturationKRT(picture, amount):
    red, green, blue = channels(picture)
    grey = (red + 2 * green + blue) // 4
    moved = [grey + np.trunc((channel - grey) * (amount + 255) / 255) for channel in (red, green, blue)]
    return made(*(np.clip(channel, 0, 255) for channel in moved))


def TintPictureKRT(source, grey_base, sepia_base):
    weights, shades = rgb(grey_base) / 255.0, rgb(sepia_base) / 255.0
    red, green, blue = (channel.astype(float) for channel in channels(source))
    brightness = blue * weights[2] + (green * weights[1] + red * weights[0])
    return made(*(np.minimum(np.trunc(shade * brightness), 255) for shade in shades))


def ColornessKRT(picture, threshold=10):
    red, green, blue = channels(picture)
    bright = (red > 29) | (green > 29) | (blue > 29)
    far = (abs(green - red) > threshold) | (abs(green - blue) > threshold)
    return int((bright & far).sum()) / red.size


# --- Colours


def is_colour(picture, colour):
    return (picture[..., :3] == rgb(colour)).all(axis=-1)


def CountColorKRT(picture, colour):
    return int(is_colour(picture, colour).sum())


def CountColorsKRT(picture):
    """The histograms by the declared names, which are crossed, and the number of pixels."""
    counted = [np.bincount(channel.ravel(), minlength=256).astype("<u4") for channel in channels(picture)]
    return {"red": counted[0], "blue": counted[1], "green": counted[2], "count": picture.shape[0] * picture.shape[1]}


def TransformColorsKRT(picture, red, blue, green):
    return made(red[picture[..., 0]], green[picture[..., 1]], blue[picture[..., 2]])


def ReplaceColorKRT(picture, search, replacement):
    return made(*np.where(is_colour(picture, search)[..., None], rgb(replacement), picture[..., :3]).transpose(2, 0, 1))


def ExtractColorKRT(picture, search, replacement, background):
    return made(*np.where(is_colour(picture, search)[..., None], rgb(replacement), rgb(background)).transpose(2, 0, 1))


def ExtractColorRectangleMaskKRT(picture, left=0, top=0, width=-1, height=-1):
    red, green, blue = channels(picture)
    coloured = (red != green) | (green != blue)
    rows, columns = clip(picture, left, top, width, height)
    edged = np.zeros((picture.shape[0] + 2, picture.shape[1] + 2), bool)  # so that neighbours always exist
    inner = edged[1:-1, 1:-1]
    inner[rows, columns] = coloured[0 : rows.stop - rows.start, columns]  # from source row 0 on
    mask = np.full(inner.shape, 255)
    while edged.any():
        top, left = np.unravel_index(edged.argmax(), edged.shape)
        bottom, right = top, left
        grew = True
        while grew:
            grew = False
            if edged[top - 1, left : right + 1].any():
                top, grew = top - 1, True
            if edged[bottom + 1, left : right + 1].any():
                bottom, grew = bottom + 1, True
            if edged[top : bottom + 1, left - 1].any():
                left, grew = left - 1, True
            if edged[top : bottom + 1, right + 1].any():
                right, grew = right + 1, True
        edged[top : bottom + 1, left : right + 1] = False
        mask[top - 1 : bottom, left - 1 : right] = 0
    return made(mask, mask, mask)


def FindPictureKRT(picture, needle):
    """Places in reading order, for a needle whose first row occurs only where the rest follows."""
    (rows, columns), (height, width) = picture.shape[:2], needle.shape[:2]
    for y in range(rows - height + 1):
        first = (picture[y, : columns - width + 1, :3] == needle[0, 0, :3]).all(axis=-1)
        for x in np.flatnonzero(first):
            if (picture[y, x : x + width, :3] != needle[0, :, :3]).any():
                continue
            assert (picture[y : y + height, x : x + width, :3] == needle[..., :3]).all(), "a near miss"
            return {"x": int(x), "y": y, "FindPictureKRT": True}
    return {"x": 0, "y": 0, "FindPictureKRT": False}


def isWhiteKRT(picture, left=0, top=0, width=-1, height=-1):
    return bool((picture[clip(picture, left, top, width, height)][..., :3] == 255).all())


def isBlackKRT(picture, left=0, top=0, width=-1, height=-1):
    return bool((picture[clip(picture, left, top, width, height)][..., :3] == 0).all())


def isGrayKRT(picture, tolerance=0, left=0, top=0, width=-1, height=-1):
    red, green, blue = channels(picture[clip(picture, left, top, width, height)])
    differences = [abs(red - green), abs(red - blue), abs(green - blue)]
    return all(bool((difference <= abs(tolerance)).all()) for difference in differences)
