"""The two filter classes from what the reference says of them, for whole pictures."""

import numpy as np

import rules


def PictureSepiaKRT(picture, **properties):
    offsets = [properties.pop(name, 0) for name in ("SepiaRed", "SepiaGreen", "SepiaBlue")]
    # FactorBlue is the weight of green, FactorGreen that of blue.
    factors = (("FactorRed", 0.299), ("FactorBlue", 0.587), ("FactorGreen", 0.114))
    weights = [int(properties.pop(name, value) * 1024) for name, value in factors]
    assert not properties
    total = sum(channel * weight for channel, weight in zip(rules.channels(picture), weights))
    grey = np.trunc(total / 1024)
    return rules.made(*(np.clip(grey + offset, 0, 255) for offset in offsets))


def read_cube(text):
    """The size of a .cube file's table and its entries, red fastest."""
    lines = [line.split() for line in text.splitlines() if line.strip() and not line.startswith("#")]
    size = next(int(words[1]) for words in lines if words[0] == "LUT_3D_SIZE")
    entries = [[float(word) for word in words] for words in lines if words[0][0] in "-.0123456789"]
    assert len(entries) == size**3
    return np.array(entries).reshape(size, size, size, 3).transpose(2, 1, 0, 3)


def PictureLut3DKRT(picture, table):
    grid = read_cube(table) * 255.0 + 0.5
    assert len(grid) == 16, "one entry for each of the table's points that reach a picture"
    values = rules.channels(picture)
    low = [value // 17 for value in values]
    high = [np.where(value == 255, 15, lower + 1) for value, lower in zip(values, low)]
    fx, fy, fz = ((value - 17 * lower) / 17.0 for value, lower in zip(values, low))

    def c(i, j, k):
        return grid[(low, high)[i][0], (low, high)[j][1], (low, high)[k][2]]

    def blended(first, a, second, b, third):
        return [((1 - first) , c(0, 0, 0)), (first - second, c(*a)), (second - third, c(*b)), (third, c(1, 1, 1))]

    result = np.zeros(picture.shape[:2] + (3,))
    todo = np.ones(picture.shape[:2], bool)
    for where, terms in (
        ((fx > fy) & (fy > fz), blended(fx, (1, 0, 0), fy, (1, 1, 0), fz)),
        ((fx > fy) & (fx > fz), blended(fx, (1, 0, 0), fz, (1, 0, 1), fy)),
        (fx > fy, blended(fz, (0, 0, 1), fx, (1, 0, 1), fy)),
        (fz > fy, blended(fz, (0, 0, 1), fy, (0, 1, 1), fx)),
        (fz > fx, blended(fy, (0, 1, 0), fz, (0, 1, 1), fx)),
        (todo, blended(fy, (0, 1, 0), fx, (1, 1, 0), fz)),
    ):
        chosen = where & todo
        parts = [weight[chosen][:, None] * colours[chosen] for weight, colours in terms]
        result[chosen] = ((parts[0] + parts[1]) + parts[2]) + parts[3]
        todo = todo & ~where
    return rules.made(*np.clip(np.trunc(result), 0, 255).transpose(2, 0, 1))
