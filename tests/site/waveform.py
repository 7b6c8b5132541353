"""RenderSamplesKRT from what the reference says of it: 8 unsigned bits, an outline of one pixel."""

import numpy as np

import rules


def columns(samples, width):
    lower, upper = [], []
    for c in range(width):
        first = int(c / width * len(samples))
        last = int((c + 1) / width * len(samples))
        assert last > first
        part = samples[first:last].astype(int) - 128
        half = (last - first) * 0.5
        lower.append(int(part[part < 0].sum()) / half)
        upper.append(int(part[part >= 0].sum()) / half)
    return lower, upper


def smoothed(values, a):
    result = []
    previous = values[0]
    for value in values:
        previous = previous * (1.0 - a) + value * a
        result.append(previous)
    return result


def blend(picture, x, y, outline, weight):
    height, width = picture.shape[:2]
    if not (0 <= x < width and 0 <= y < height):
        return
    red, green, blue = (int(value) for value in picture[y, x, :3])
    mixed = [(old * weight + int(new) * (255 - weight)) // 255 for old, new in zip((red, blue, green), outline)]
    picture[y, x, :3] = mixed


def line(picture, x0, y0, x1, y1, outline):
    if y0 > y1:
        x0, y0, x1, y1 = x1, y1, x0, y0
    blend(picture, x0, y0, outline, 0)
    step, wide, high = (1 if x1 >= x0 else -1), abs(x1 - x0), y1 - y0
    if high == 0 or wide == 0 or wide == high:
        for i in range(1, max(wide, high) + 1):
            blend(picture, x0 + (step * i if wide else 0), y0 + (i if high else 0), outline, 0)
        return
    accumulator = 0
    slope = (min(wide, high) << 16) // max(wide, high)
    for _ in range(max(wide, high) - 1):
        before, accumulator = accumulator, (accumulator + slope) & 0xFFFF
        carried = accumulator <= before
        weight = accumulator >> 8
        if wide > high:
            x0, y0 = x0 + step, y0 + carried
            beside = (x0, y0 + 1)
        else:
            x0, y0 = x0 + step * carried, y0 + 1
            beside = (x0 + step, y0)
        blend(picture, x0, y0, outline, weight)
        blend(picture, *beside, outline, weight ^ 255)
    blend(picture, x1, y1, outline, 0)


def RenderSamplesKRT(samples, count, smooth, width, height, outline_width, back, fore, outline, bits, auto_scale):
    assert count < 1 and smooth >= 0 and outline_width == 1 and bits == 8
    lower, upper = columns(samples, width)
    scale = 2 * max(0.0, max(upper), max(-value for value in lower)) if auto_scale else 127.0
    a = 2.0 / (smooth + 1.0)
    lower, upper = smoothed(lower, a), smoothed(upper, a)
    scale = scale * (1.0 - a) + scale * a
    middle = height // 2
    ends = [[int(value * height / scale + middle) for value in curve] for curve in (lower, upper)]

    picture = np.full((height, width, 4), 255, np.uint8)
    picture[..., :3] = rules.rgb(back)
    for curve in ends:
        for c, end in enumerate(curve):
            top, bottom = sorted((middle, end))
            picture[max(top, 0) : min(bottom, height - 1) + 1, c, :3] = rules.rgb(fore)
    before = [(0, middle), (0, middle)]
    for c in range(width):
        for i, curve in enumerate(ends):
            line(picture, *before[i], c, curve[c], rules.rgb(outline))
            before[i] = (c, curve[c])
    return picture
