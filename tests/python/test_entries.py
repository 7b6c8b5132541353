"""Every entry that the plug-in registered gives what it gives to the command line program."""

import itertools

import numpy as np
import pytest

import picturehost
from picturehost import Picture, _picturehost

NUMBERS = (0.25, 1.5, -0.3, 0.1, 0.2, 0.05)


def picture(name):
    """The expression of a file, and the picture that Python makes of it."""
    return f'picture("{name}")', lambda folder: Picture.open(folder / name)


def block(name):
    return f'memoryblock("{name}")', lambda folder: (folder / name).read_bytes()


class Case:
    """A call, with arguments as the command line and as Python have them; those may have names."""

    def __init__(self, declaration, *arguments, photo="photo.png", saves=(), is_global=False, **named):
        self.declaration, self.photo, self.saves = declaration, photo, saves
        self.name = declaration.split("(")[0].split(" ")[0]
        self.arguments, self.named, self.is_global = arguments, named, is_global

    def expression(self):
        texts = [spell(value) for value in self.arguments]
        texts += [f"{name} = {spell(value)}" for name, value in self.named.items()]
        return f"{self.name}({', '.join(texts)})"

    def call(self, photo, folder):
        arguments = [in_python(value, folder, photo) for value in self.arguments]
        named = {name: in_python(value, folder, photo) for name, value in self.named.items()}
        where = picturehost if self.is_global else photo
        return getattr(where, self.name)(*arguments, **named)


SELF = ("self", None)


def spell(value):
    if isinstance(value, tuple):
        return value[0]
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, str):
        return "&c" + value[1:]
    return str(value)


def in_python(value, folder, photo):
    if value is SELF:
        return photo
    return value[1](folder) if isinstance(value, tuple) else value


RECTANGLE = "(left as integer,top as integer,width as integer,height as integer)"
THREE_CONTRASTS = "ContrastRed as double, ContrastGreen as double, ContrastBlue as double"
THREE_BRIGHTNESSES = "BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double"
SIX = f"({THREE_CONTRASTS}, {THREE_BRIGHTNESSES}) as picture"

CASES = [
    Case("ColornessKRT(threshold as integer = 10) as double", threshold=40),
    Case("ScrollVerticalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", 5, True, False),
    Case("ScrollHorizontalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", -7, wrap=True,
         scrollmask=False),
    Case("ScrollKRT(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as boolean",
         3, 4, True, True),
    Case("HasMaskKRT as boolean"),
    Case("ChangeContrastBrightnessAbsoluteKRT" + SIX, *NUMBERS),
    Case("ChangeContrastBrightnessLinearKRT" + SIX, *NUMBERS),
    Case("ChangeContrastBrightnessAbsoluteKRT(Contrast as double, Brightness as double) as picture", 0.3, -0.1),
    Case("ChangeContrastBrightnessLinearKRT(Contrast as double, Brightness as double) as picture",
         Contrast=0.3, Brightness=-0.1),
    Case(f"ChangeBrightnessAbsoluteKRT({THREE_BRIGHTNESSES}) as picture", *NUMBERS[:3]),
    Case(f"ChangeBrightnessLinearKRT({THREE_BRIGHTNESSES}) as picture", *NUMBERS[:3]),
    Case("ChangeBrightnessAbsoluteKRT(Brightness as double) as picture", 0.2),
    Case("ChangeBrightnessLinearKRT(Brightness as double) as picture", -0.2),
    Case("ChangeContrastKRT(Contrast as double) as picture", 0.4),
    Case(f"ChangeContrastKRT({THREE_CONTRASTS}) as picture", *NUMBERS[:3]),
    Case("ChangeCustomKRT(a as double, b as double) as picture", 0.7, 0.2),
    Case("ChangeCustomKRT(Ra as double, Rb as double, Ga as double, Gb as double, Ba as double, Bb as double)"
         " as picture", *NUMBERS),
    Case(f"InvertKRT{RECTANGLE} as picture", 3, 4, width=20, height=10),
    Case("InvertKRT as picture"),
    Case(f"InvertGrayKRT{RECTANGLE} as picture", -3, 4, 20, -1),
    Case("InvertGrayKRT as picture"),
    Case(f"ExtractColorRectangleMaskKRT{RECTANGLE} as picture", 6, 4, 15, 8),
    Case("ExtractColorRectangleMaskKRT as picture"),
    Case("EmbeddedMaskKRT(swap as boolean) as picture", True, photo="clear.png"),
    Case("CountColorKRT(col as color) as integer", "#0AC81E"),
    Case("CountColorsKRT(byref red as memoryblock, byref blue as memoryblock, byref green as memoryblock, "
         "byref count as integer)", saves=("red", "blue", "green")),
    Case("TransformColorsKRT(red as memoryblock, blue as memoryblock, green as memoryblock, "
         "dest as picture = nil) as picture", block("red.table"), block("green.table"), block("blue.table")),
    Case("ReplaceColorKRT(SearchColor as color, ReplaceWithColor as color) as picture", "#0AC81E", 0xFFFF00 & 1234567),
    Case("ExtractColorKRT(SearchColor as color, ReplaceWithColor as color, BackGroundColor as color) as picture",
         "#0AC81E", "#102030", BackGroundColor="#ABCDEF"),
    Case("ChangeSaturationKRT(Amount as integer) as picture", 150),
    Case("ReplaceRedChannelKRT(RedChannel as picture) as picture", picture("other.png")),
    Case("ReplaceGreenChannelKRT(GreenChannel as picture) as picture", picture("other.png")),
    Case("ReplaceBlueChannelKRT(BlueChannel as picture) as picture", BlueChannel=picture("other.png")),
    Case("FindPictureKRT(pic as picture, byref x as integer, byref y as integer) as boolean", picture("part.png")),
    Case("isWhiteKRT as boolean"),
    Case(f"isWhiteKRT{RECTANGLE} as boolean", 60, 0, 5, 5),
    Case("isBlackKRT as boolean"),
    Case(f"isBlackKRT{RECTANGLE} as boolean", 1, 2, 3, 4),
    Case("isGrayKRT(tolerance as integer = 0) as boolean", photo="grey.png"),
    Case("isGrayKRT(tolerance as integer, left as integer,top as integer,width as integer,height as integer)"
         " as boolean", 3, 0, 0, 5, 5),
]

GLOBAL_CASES = [
    Case("BinaryStringtoPictureKRT(data as String) as Picture",
         ("PicturetoBinaryStringKRT(self)",
          lambda folder: picturehost.PicturetoBinaryStringKRT(Picture.open(folder / "photo.png")))),
    Case("PicturetoBinaryStringKRT(p as picture) as string", SELF, saves=("PicturetoBinaryStringKRT",)),
    Case("CombinePicturesKRT(red as picture, blue as picture, green as picture) as picture",
         SELF, picture("other.png"), picture("clear.png")),
    Case("MergePictureKRT(source1 as picture, source2 as picture) as picture", SELF, picture("other.png")),
    Case("TintPictureKRT(source as picture, GreyBase as color, SepiaBase as color) as picture",
         SELF, "#4D961D", SepiaBase="#FFE4B0"),
    Case("RenderSamplesKRT(Samples as memoryblock, SampleCount as integer, Smooth as integer, Width as integer, "
         "Height as integer, outlinewidth as integer, BackColor as color=&c88B5C4, ForeColor as color=&c274C5A, "
         "OutLineColor as color=&c203F4E, Bits as Integer = 8, AutoScale as boolean = false) as Picture",
         block("sound.raw"), 700, 1, 200, 100, 2, Bits=15, AutoScale=True),
]
for case in GLOBAL_CASES:
    case.is_global = True


def methods_of_pictures():
    return list(itertools.chain(*(c.methods for c in _picturehost.classes() if c.extension)))


def test_every_method_has_a_case():
    assert {m.declaration for m in methods_of_pictures()} == {c.declaration for c in CASES}
    assert {m.declaration for m in _picturehost.global_methods()} == {c.declaration for c in GLOBAL_CASES}
    assert len(CASES) == 40 and len(GLOBAL_CASES) == 6


def check_values(result, saved, printed):
    """Named tuples, numbers, booleans and strings against what the program printed and saved."""
    values = result._asdict() if hasattr(result, "_asdict") else result
    assert len(values) == len(printed) or "FindPictureKRT" in printed
    for name, value in values.items():
        if isinstance(value, np.ndarray):
            assert value.tobytes() == saved[name]
        elif isinstance(value, bytes):
            assert value == saved[name]
        elif isinstance(value, bool):
            assert printed[name] == str(value).lower()
        else:
            assert float(printed[name]) == value


@pytest.mark.parametrize("case", CASES + GLOBAL_CASES, ids=lambda case: case.declaration[:60])
def test_equals_the_command_line(case, runner, tmp_path):
    expected, saved, printed = runner.run(case.expression(), photo=case.photo, saves=case.saves)
    photo = Picture.open(runner.folder / case.photo)
    result = case.call(photo, runner.folder)
    if isinstance(result, Picture):
        assert printed == {}
        photo = result
    else:
        assert printed != {}
        check_values(result if isinstance(result, tuple) else {case.name: result}, saved, printed)
    photo.save(tmp_path / "got.png")
    assert (tmp_path / "got.png").read_bytes() == expected


@pytest.mark.parametrize("swap", [False, True])
def test_assigning_to_a_pair_equals_the_command_line(swap, runner, tmp_path):
    expected, _, _ = runner.run(f'EmbeddedMaskKRT({str(swap).lower()}) = picture("other.png")', "self", photo="clear.png")
    photo = Picture.open(runner.folder / "clear.png")
    photo.EmbeddedMaskKRT[swap] = Picture.open(runner.folder / "other.png")
    photo.save(tmp_path / "got.png")
    assert (tmp_path / "got.png").read_bytes() == expected
