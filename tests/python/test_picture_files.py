"""Files that are opened, worked on and saved come out as the command line program writes them.

Pillow and exiftool make the files and judge of the results.
"""

import copy
import inspect
import io
import subprocess

import numpy as np
import pytest
from conftest import Sources, random_pixels, run_words
from PIL import Image

import picturehost
from picturehost import Picture


@pytest.fixture(scope="module")
def sources(program, tmp_path_factory):
    return Sources(program, tmp_path_factory.mktemp("sources"))


def words_of(options):
    words = []
    for name, value in options.items():
        words.append("--" + name.replace("_", "-"))
        if value is not True:
            words.append(str(value))
    return words


def by_the_program(sources, source, expressions, output, options, page=1):
    """What `picturehost run` writes under that name, in a folder of its own."""
    folder = sources.folder / "expected"
    folder.mkdir(exist_ok=True)
    for old in folder.iterdir():
        old.unlink()
    words = [sources.program, *run_words(sources.folder / source, *expressions), "--layout", "rgba",
             *words_of(options), "--output", folder / output]
    if page:
        words += ["--page", str(page)]
    done = subprocess.run(words, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    (written,) = folder.iterdir()
    return written.read_bytes()


# Not PPM: the library writes the time into it.
SAVED = [
    ("photo.jpg", "a.jpg", {}),
    ("photo.jpg", "a.jpg", {"quality": 60}),
    ("photo.jpg", "a.jpg", {"metadata": "none"}),
    ("photo.jpg", "a.jpg[Q=30,subsample-mode=off]", {}),
    ("photo.jpg", "a.png", {"metadata": "profile", "compression": 9}),
    ("photo.jpg", "a.picture", {"format": "png"}),
    ("photo.jpg", "a.tif", {"compression": "lzw"}),
    ("photo.jpg", "a.webp", {"lossless": True}),
    ("photo.jpg", "a.webp", {"quality": 20}),
    ("photo.jpg", "a.jxl", {}),
    ("photo.jpg", "a.jp2", {}),
    ("photo.jpg", "a.heic", {}),
    ("photo.jpg", "a.avif", {}),
    ("grey.jpg", "a.jpg", {}),
    ("palette.png", "a.png", {}),
    ("bilevel.png", "a.png", {}),
    ("fax.tif", "a.tif", {}),
    ("lzw.tif", "a.tif", {}),
    ("lossless.webp", "a.webp", {}),
    ("lossy.webp", "a.webp", {}),
    ("clear.png", "a.png", {}),
    ("clear.png", "a.jpg", {}),
    ("animation.gif", "a.gif", {}),
    ("photo.bmp", "a.bmp", {}),
]


@pytest.mark.filterwarnings("ignore:.* can't hold")
@pytest.mark.parametrize("source, output, options", SAVED)
def test_a_result_is_the_program_s_to_the_byte(sources, tmp_path, source, output, options):
    expected = by_the_program(sources, source, ["InvertKRT"], output, options)
    inverted = Picture.open(sources.folder / source).InvertKRT()
    inverted.save(str(tmp_path / output), **options)
    (written,) = tmp_path.iterdir()
    assert written.read_bytes() == expected
    how = dict(options)
    format = how.pop("format", None) or output.split(".")[1]
    assert inverted.to_bytes(format, **how) == expected


@pytest.mark.parametrize("source, output, options", [
    ("clear.png", "a.png", {"keep_alpha": True}),
    ("clear.png", "a.jpg", {"keep_alpha": True}),
    ("wide.png", "a.png", {"to_srgb": True}),
    ("photo.jpg", "a.png", {"pixel_limit": 0.01}),
])
def test_options_for_opening_mean_what_the_program_s_mean(sources, tmp_path, source, output, options):
    expected = by_the_program(sources, source, ["ChangeContrastKRT(0.3)"], output, options)
    Picture.open(sources.folder / source, **options).ChangeContrastKRT(0.3).save(tmp_path / output)
    assert (tmp_path / output).read_bytes() == expected
    plain = Picture.open(sources.folder / source).ChangeContrastKRT(0.3).to_bytes(output[2:])
    assert (plain == expected) == (list(options) == ["pixel_limit"]), "the option makes a difference"


def test_what_the_file_said_is_in_the_result(sources, tmp_path):
    """As Pillow and exiftool see it, not only as the program writes it."""
    Picture.open(sources.folder / "photo.jpg").InvertKRT().save(tmp_path / "a.jpg")
    before, after = Image.open(sources.folder / "photo.jpg"), Image.open(tmp_path / "a.jpg")
    assert after.info["icc_profile"] == before.info["icc_profile"]
    assert after.info["dpi"] == before.info["dpi"] == (300, 300)
    assert after.info["comment"] == b"a comment"
    assert after.quantization == before.quantization, "the quality"
    assert (before.getexif()[0x112], after.getexif()[0x112]) == (6, 1), "it was turned upright"
    assert after.size == before.size[::-1]
    told = sources.exiftool("-s3", "-Make", "-XMP-dc:Title", "-IPTC:Keywords", tmp_path / "a.jpg")
    assert told.splitlines() == ["Maker", "A title", "one"]


def test_results_of_every_kind_inherit(sources):
    photo = Picture.open(sources.folder / "photo.jpg")
    other = Picture(photo.width, photo.height)

    def profile(picture):
        return Image.open(io.BytesIO(picture.to_bytes("png"))).info.get("icc_profile")

    has = Image.open(sources.folder / "photo.jpg").info["icc_profile"]
    sepia = picturehost.PictureSepiaKRT(SourcePicture=photo)
    assert sepia.Run()
    results = {
        "method": photo.InvertKRT(),
        "method of a result": photo.InvertKRT().ChangeContrastKRT(0.1),
        "global method": picturehost.MergePictureKRT(photo, other),
        "named arguments": picturehost.MergePictureKRT(**dict(zip(merged_names(), (photo, other)))),
        "class": sepia.DestinationPicture,
        "property": sepia.SourcePicture,
        "copy": photo.copy(),
        "copy.copy": copy.copy(photo),
        "copy.deepcopy": copy.deepcopy(photo.InvertKRT()),
        "array, said so": Picture.from_array(photo.to_array()[3:9].copy(), like=photo),
        "Pillow, said so": Picture.from_pil(photo.to_pil().resize((9, 9)), like=photo),
        "pair": photo.EmbeddedMaskKRT[False],
    }
    assert {name: profile(picture) == has for name, picture in results.items()} == dict.fromkeys(results, True)
    nothing = {
        "new": other,
        "method of a new one": other.InvertKRT(),
        "first argument new": picturehost.MergePictureKRT(other, photo),
        "array": Picture.from_array(photo.to_array()),
        "Pillow": Picture.from_pil(photo.to_pil()),
    }
    assert {name: profile(picture) for name, picture in nothing.items()} == dict.fromkeys(nothing)
    assert all(not picture.metadata for picture in nothing.values())


def merged_names():
    return list(inspect.signature(picturehost.MergePictureKRT).parameters)[:2]


def test_what_is_set_on_an_instance_stays_what_it_was(sources):
    plain, photo = Picture(30, 20), Picture.open(sources.folder / "photo.jpg")
    sepia = picturehost.PictureSepiaKRT(SourcePicture=photo)
    assert sepia.Run()
    sepia.SourcePicture = plain
    assert sepia.Run()
    assert not sepia.SourcePicture.metadata and not plain.metadata
    assert not sepia.DestinationPicture.metadata


def test_a_copy_has_memory_of_its_own():
    pixels = random_pixels(7, 5, 6)
    picture = Picture.from_array(pixels)
    for copied in (picture.copy(), copy.copy(picture), copy.deepcopy([picture])[0]):
        assert copied != picture and np.array_equal(copied.to_array(), pixels)
        copied.to_array()[:] = 0
        assert picture.to_array().any()


def test_alpha_that_was_kept_wants_a_picture_of_its_size(sources):
    clear = Picture.open(sources.folder / "clear.png", keep_alpha=True)
    assert (clear.to_array()[..., 3] == 255).all()
    before = np.array(Image.open(sources.folder / "clear.png"))
    saved = np.array(Image.open(io.BytesIO(clear.InvertKRT().to_bytes("png"))))
    assert np.array_equal(saved[..., 3], before[..., 3])
    assert np.array_equal(saved[..., :3], 255 - before[..., :3])
    with pytest.raises(picturehost.Error, match=r"2 x 2 instead of 30 x 20: keep_alpha has no alpha"):
        Picture.from_array(np.zeros((2, 2, 4), np.uint8), like=clear).to_bytes("png")


def test_metadata_is_what_other_programs_read(sources):
    photo = Picture.open(sources.folder / "photo.jpg")
    said, pillow = photo.metadata, Image.open(sources.folder / "photo.jpg")
    assert said["exif"] == pillow.info["exif"]
    assert said["icc_profile"] == pillow.info["icc_profile"]
    assert said["xmp"] == sources.exiftool("-b", "-XMP", sources.folder / "photo.jpg", text=False)
    assert b"one" in said["iptc"]
    assert said["resolution"] == pytest.approx((300, 300))
    assert said["comments"] == ["a comment"]
    assert said["orientation"] == 6
    assert (said["format"], said["pages"], said["bits"], said["quality"]) == ("jpeg", 1, 8, 83)
    assert (said["grey"], said["palette"], said["lossless"], said["interlaced"]) == (False, False, False, True)
    assert "delays" not in said and "compression" not in said
    assert photo.InvertKRT().metadata == said
    with pytest.raises(TypeError):
        said["comments"] = []

    assert Picture.open(sources.folder / "grey.jpg").metadata["grey"]
    fax = Picture.open(sources.folder / "fax.tif").metadata
    assert (fax["compression"], fax["bits"]) == ("ccittfax4", 1)
    animation = Picture.open(sources.folder / "animation.gif").metadata
    with Image.open(sources.folder / "animation.gif") as frames:
        delays = []
        for number in range(frames.n_frames):
            frames.seek(number)
            delays.append(frames.info["duration"])
        assert (animation["pages"], animation["delays"]) == (3, delays)
        # The file has the number of repetitions.
        assert animation["loop"] == 1 + frames.info["loop"] == 3
    assert animation["palette"] and animation["lossless"]


def test_comments_in_other_encodings(tmp_path):
    for name, comment in (("a.jpg", "Grün".encode()), ("b.jpg", "Grün".encode("latin-1"))):
        Image.new("RGB", (4, 4)).save(tmp_path / name, comment=comment)
        assert Picture.open(tmp_path / name).metadata["comments"] == ["Grün"]


@pytest.mark.parametrize("source, output", [("animation.gif", "a.gif"), ("animation.gif", "a.webp"),
                                            ("pages.tif", "a.tif")])
def test_all_pages_of_a_file(sources, tmp_path, source, output):
    expected = by_the_program(sources, source, ["InvertKRT"], output, {}, page=None)
    pages = Picture.open_pages(sources.folder / source)
    assert len(pages) == 3
    Picture.save_pages((page.InvertKRT() for page in pages), tmp_path / output)
    assert (tmp_path / output).read_bytes() == expected
    with Image.open(sources.folder / source) as frames:
        for number, page in enumerate(pages):
            frames.seek(number)
            assert np.array_equal(page.to_array(), np.array(frames.convert("RGBA")))
            one = Picture.open(sources.folder / source, page=number + 1)
            assert np.array_equal(one.to_array(), page.to_array())


def test_pages_that_cannot_be(sources, tmp_path):
    with pytest.raises(picturehost.Error, match="has 3 pages, there is no page 4"):
        Picture.open(sources.folder / "pages.tif", page=4)
    pages = Picture.open_pages(sources.folder / "pages.tif")
    with pytest.raises(picturehost.Error, match="there are 3 pages, and a PNG file holds one"):
        Picture.save_pages(pages, tmp_path / "a.png")
    with pytest.raises(picturehost.Error, match="differ in size"):
        Picture.save_pages([pages[0], Picture(1, 1)], tmp_path / "a.tif")
    with pytest.raises(ValueError, match="no picture"):
        Picture.save_pages([], tmp_path / "a.tif")
    with pytest.raises(TypeError):
        Picture.save_pages([pages[0], "photo.jpg"], tmp_path / "a.tif")
    assert not list(tmp_path.iterdir())


@pytest.mark.parametrize("options, told", [
    ({"page": 0}, "page: Value 0 not in range"),
    ({"page": 1.5}, "page"),
    ({"damage": "fial"}, "damage: fial not in {warn,fail,ignore}"),
    ({"pixel_limit": -1}, "pixel_limit"),
])
def test_options_for_opening_that_cannot_be(sources, options, told):
    with pytest.raises(ValueError, match=told.replace("{", r"\{")):
        Picture.open(sources.folder / "photo.jpg", **options)


@pytest.mark.parametrize("options, error, told", [
    ({"format": "tga"}, ValueError, "format: tga not in"),
    ({"format": "png --lossless"}, ValueError, "format"),
    ({"metadata": "all"}, ValueError, r"metadata: all not in \{keep,profile,none\}"),
    ({"quality": 101}, ValueError, "quality: Value 101 not in range"),
    ({"quality": True}, ValueError, "quality: 1 required"),
    ({"quality": 50, "format": "png"}, picturehost.Error, "^PNG has no quality: nothing is lost in it"),
    ({"lossless": True}, picturehost.Error, "^JPEG can't be lossless"),
    ({"compression": 3}, picturehost.Error, "^JPEG has no compression; PNG and TIFF have"),
])
def test_options_for_saving_that_cannot_be(sources, tmp_path, options, error, told):
    with pytest.raises(error, match=told):
        Picture.open(sources.folder / "photo.jpg").save(tmp_path / "a.jpg", **options)
    assert not list(tmp_path.iterdir())


def test_the_limit_is_looked_at_before_anything_is_decoded(sources):
    with pytest.raises(picturehost.Error, match=r"more than the limit of 500 \(see pixel_limit\)"):
        Picture.open(sources.folder / "photo.jpg", pixel_limit=0.0005)


def test_the_bracket_of_a_format_is_closed():
    with pytest.raises(ValueError, match="end with ]"):
        Picture(2, 2).to_bytes("jpeg[Q=95")
    with pytest.raises(picturehost.Error, match="can't be encoded as JPEG"):
        Picture(2, 2).to_bytes("jpeg[Q=95,nonsense=1]")


def test_notebooks_show_colours_through_the_profile(sources):
    shown = Image.open(io.BytesIO(Picture.open(sources.folder / "wide.png").InvertKRT()._repr_png_()))
    assert shown.info["icc_profile"] == Image.open(sources.folder / "wide.png").info["icc_profile"]
    assert "comment" not in shown.info
