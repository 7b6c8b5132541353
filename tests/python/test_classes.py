"""The plug-in's classes: every property and method."""

import numpy as np
import pytest

import picturehost
from picturehost import Picture, _picturehost

# For each property a value other than its first one. What isn't a picture goes to the program, too.
SETTINGS = {
    "PictureSepiaKRT": {
        "MinX": 2, "MaxX": 40, "MinY": 3, "MaxY": 30, "SepiaRed": 60, "SepiaGreen": 25, "SepiaBlue": -20,
        "FactorRed": 0.5, "FactorBlue": 0.25, "FactorGreen": 0.125,
    },
    "PictureLut3DKRT": {"MinX": 2, "MaxX": 40, "MinY": 3, "MaxY": 30},
}
PICTURES = {"SourcePicture", "DestinationPicture"}
METHODS = {"PictureSepiaKRT": {"Close", "Run"}, "PictureLut3DKRT": {"Close", "Run", "Table"}}


def registered():
    return {entry.name: entry for entry in _picturehost.classes() if not entry.extension}


def test_every_class_property_and_method_has_a_case():
    assert set(registered()) == set(SETTINGS)
    for name, entry in registered().items():
        assert {declared.name for declared in entry.properties} == PICTURES | set(SETTINGS[name])
        assert {method.name for method in entry.methods} == METHODS[name]


def equals_the_command_line(runner, tmp_path, name, settings, photo="photo.png", extra="", prepare=None):
    arguments = [f"{key} = {value}" for key, value in settings.items()] + ([extra] if extra else [])
    expected, _, _ = runner.run(f"{name}({', '.join(arguments)})", photo=photo)
    made = getattr(picturehost, name)(SourcePicture=Picture.open(runner.folder / photo), **settings)
    if prepare:
        prepare(made)
    assert made.Run() is True
    made.DestinationPicture.save(tmp_path / "got.png")
    assert (tmp_path / "got.png").read_bytes() == expected
    return made


@pytest.mark.parametrize("name, key", [(name, key) for name, keys in SETTINGS.items() for key in keys])
def test_each_property_equals_the_command_line(name, key, runner, tmp_path):
    equals_the_command_line(runner, tmp_path, name, {key: SETTINGS[name][key]})


@pytest.mark.parametrize("name", SETTINGS)
def test_all_properties_together(name, runner, tmp_path):
    made = equals_the_command_line(runner, tmp_path, name, SETTINGS[name])
    assert made.MinX == 2 and made.MaxY == 30
    assert made.SourcePicture.width == 53


def test_the_table_equals_the_command_line(runner, tmp_path):
    # Outputs are values of a channel, which the command line makes half a unit higher, and the
    # picture's pixels lie on the grid, so that the last bit of a coordinate decides nothing.
    random = np.random.default_rng(7)
    table = random.integers(0, 256, (16, 16, 16, 3)) * 1.0
    lines = ["LUT_3D_SIZE 16"]
    for b in range(16):
        for g in range(16):
            for r in range(16):
                lines.append(" ".join(repr(float(value) / 255) for value in table[r, g, b]))
    (runner.folder / "film.cube").write_text("\n".join(lines) + "\n")

    def fill(made):
        for (r, g, b, x), value in np.ndenumerate(table):
            made.Table[r, g, b, x] = value + 0.5
        assert made.Table[3, 4, 5, 2] == made.Table(3, 4, b=5, x=2) == table[3, 4, 5, 2] + 0.5

    equals_the_command_line(runner, tmp_path, "PictureLut3DKRT", {}, photo="grid.png",
                            extra='Table = cube("film.cube")', prepare=fill)


def test_a_closed_object_holds_no_pictures(runner):
    for name in SETTINGS:
        made = getattr(picturehost, name)(SourcePicture=Picture.open(runner.photo))
        assert made.SourcePicture is not None
        assert made.Close() is None
        assert made.SourcePicture is None and made.DestinationPicture is None


def test_an_object_without_a_source_runs_to_false():
    assert picturehost.PictureSepiaKRT().Run() is False


def test_properties_keep_their_pictures():
    sepia = picturehost.PictureSepiaKRT()
    picture = Picture(3, 2)
    sepia.SourcePicture = picture
    assert sepia.SourcePicture == picture
    del picture
    assert sepia.SourcePicture.width == 3
    sepia.SourcePicture = None
    assert sepia.SourcePicture is None


def test_values_that_do_not_fit_a_property():
    sepia = picturehost.PictureSepiaKRT()
    for value in (1.5, "12", None, 2**31):
        with pytest.raises(TypeError):
            sepia.MinX = value
    with pytest.raises(TypeError, match="no property Red; it has SourcePicture"):
        picturehost.PictureSepiaKRT(Red=1)
    with pytest.raises(AttributeError):
        picturehost.PictureLut3DKRT().Table = 3
