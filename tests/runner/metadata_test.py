"""What picture files say besides their pixels is still said by their results. exiftool writes it into
a file of each format and reads it from the results; picturehost converts each file to each format.

    metadata_test.py --write-table    writes the table of docs/picture-files.md anew, from what it saw

Without the option a test fails where the table differs. PICTURE_BINARY_DIR is the build folder.
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import PIL.Image
import PIL.ImageCms

SOURCE = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = pathlib.Path(os.environ.get("PICTURE_BINARY_DIR", SOURCE / "build/release")) / "picturehost"
PAGE = SOURCE / "docs/picture-files.md"
START, END = "<!-- table of metadata -->\n", "<!-- end of the table -->\n"

FORMATS = {
    "png": "PNG",
    "jpg": "JPEG",
    "tif": "TIFF",
    "webp": "WebP",
    "gif": "GIF",
    "heic": "HEIC",
    "avif": "AVIF",
    "jxl": "JPEG XL",
    "jp2": "JPEG 2000",
    "bmp": "BMP",
    "ppm": "PPM",
}
BLOCKS = ["EXIF", "XMP", "IPTC", "profile", "resolution", "comment", "loop and delay"]
# exiftool's names of what it wrote.
WRITTEN = {
    "EXIF": [
        "IFD0:Make",
        "IFD0:Model",
        "IFD0:Orientation",
        "ExifIFD:ExposureTime",
        "ExifIFD:UserComment",
        "GPS:GPSLatitude",
        "GPS:GPSLatitudeRef",
    ],
    "XMP": ["XMP-dc:Title", "XMP-xmp:Rating", "XMP-tiff:Orientation"],
    "IPTC": ["IPTC:Keywords"],
    "profile": ["ICC_Profile:ProfileDescription", "ICC_Profile:RedMatrixColumn"],
}
TAGS = [
    "-EXIF:Make=Maker",
    "-EXIF:Model=Modell Ä",
    "-EXIF:Orientation#=6",
    "-ExifIFD:ExifImageWidth=24",
    "-ExifIFD:ExifImageHeight=16",
    "-EXIF:ExposureTime=1/50",
    "-EXIF:UserComment=Grüße ☀",
    "-EXIF:GPSLatitude=47.5",
    "-EXIF:GPSLatitudeRef=N",
    "-EXIF:XResolution=300",
    "-EXIF:YResolution=300",
    "-EXIF:ResolutionUnit=inches",
    "-XMP-dc:Title=Überschrift",
    "-XMP-xmp:Rating=4",
    "-XMP-tiff:Orientation#=6",
    "-PNG-pHYs:PixelUnits=meters",
    "-PNG-pHYs:PixelsPerUnitX=11811",
    "-PNG-pHYs:PixelsPerUnitY=11811",
    "-JFIF:ResolutionUnit=inches",
    "-JFIF:XResolution=300",
    "-JFIF:YResolution=300",
    "-IPTC:Keywords=eins",
    "-IPTC:Keywords=zwei",
    "-Comment=a comment",
]
# These say how a TIFF file stores its pixels.
STORAGE = set(
    "ImageWidth ImageHeight BitsPerSample Compression PhotometricInterpretation StripOffsets"
    " SamplesPerPixel RowsPerStrip StripByteCounts PlanarConfiguration SampleFormat Predictor"
    " SubfileType PageNumber ExtraSamples".split()
)
# These lose something at first, and JPEG XL then keeps colours in a space of its own.
WITH_LOSS = {"jpg", "webp", "heic", "avif"}
# EXIF in these formats doesn't turn the pixels: the format has another place for that.
TURNED_BY_CONTAINER = {"heic", "avif", "jxl"}


def exiftool(*words):
    done = subprocess.run(["exiftool", "-q", "-m", *map(str, words)], text=True, capture_output=True)
    return done.stdout


def what_they_say(files):
    """For each file what exiftool says of it."""
    told = json.loads(exiftool("-j", "-G1", "-struct", *files))
    return {pathlib.Path(entry["SourceFile"]).name: entry for entry in told}


def resolution_of(tags):
    """Pixels per inch, rounded; the file's own word comes before that of EXIF."""
    if tags.get("PNG-pHYs:PixelUnits") == "meters":
        return round(tags["PNG-pHYs:PixelsPerUnitX"] * 0.0254)
    if "File:PixelsPerMeterX" in tags:
        return round(tags["File:PixelsPerMeterX"] * 0.0254)
    for group in ("JFIF", "IFD0"):
        if tags.get(f"{group}:ResolutionUnit") == "inches":
            return round(tags[f"{group}:XResolution"])
    return None


def comment_of(tags):
    comment = tags.get("File:Comment", tags.get("PNG:Comment"))
    # The library signs PPM files.
    return None if comment is None or comment.startswith("vips2ppm") else comment


def blocks_in(tags):
    """Which blocks of those that were written are there, each with its tags."""
    blocks = {}
    for block, names in WRITTEN.items():
        if all(name in tags for name in names):
            blocks[block] = {name: tags[name] for name in names}
    if resolution_of(tags) == 300:  # many formats say 72 where nothing is known
        blocks["resolution"] = 300
    if comment_of(tags) is not None:
        blocks["comment"] = comment_of(tags)
    return blocks


def expected_after(name, value):
    return "Horizontal (normal)" if name.endswith(":Orientation") else value


class MetadataTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.problems = {}
        plain = cls.folder / "plain.png"
        # The left half red, the right half blue.
        picture = PIL.Image.new("RGB", (24, 16), (255, 0, 0))
        picture.paste((0, 0, 255), (12, 0, 24, 16))
        picture.save(plain)
        profile = cls.folder / "a.icc"
        profile.write_bytes(cls.profile())
        cls.sources = {}
        for name in FORMATS:
            source = cls.folder / f"source.{name}"
            cls.run_program(plain, source)
            exiftool("-overwrite_original", *TAGS, f"-ICC_Profile<={profile}", source)
            cls.sources[name] = source
        for name in FORMATS:
            for other in FORMATS:
                target = cls.folder / f"{name}-to.{other}"
                cls.problems[target.name] = cls.run_program(cls.sources[name], target)
        for name in FORMATS:
            cls.run_program(cls.folder / f"png-to.{name}", cls.folder / f"{name}-and-back.png")
        for what in ("profile", "none"):
            for name in FORMATS:
                cls.run_program(
                    cls.sources["png"], cls.folder / f"{what}.{name}", "--metadata", what
                )
        cls.told = what_they_say(sorted(cls.folder.glob("*.*")))
        cls.has = {name: blocks_in(tags) for name, tags in cls.told.items()}
        cls.look_into_jxl()

    @classmethod
    def look_into_jxl(cls):
        """The profile is in the midst of the pixels, where exiftool doesn't look for it. A PNG file
        that is made of the file shows it."""
        files = sorted(cls.folder.glob("*.jxl"))
        for file in files:
            cls.run_program(file, file.with_suffix(".jxl.png"))
        shown = what_they_say([file.with_suffix(".jxl.png") for file in files])
        for file in files:
            blocks = blocks_in(shown[file.name + ".png"])
            made = blocks.get("profile", {}).get("ICC_Profile:ProfileDescription")
            if made == cls.told["source.png"]["ICC_Profile:ProfileDescription"]:
                cls.has[file.name]["profile"] = blocks["profile"]

    @classmethod
    def profile(cls):
        """Bytes that are the same in each call; the library would note the time in them."""
        if not hasattr(cls, "_profile"):
            made = PIL.ImageCms.ImageCmsProfile(PIL.ImageCms.createProfile("sRGB"))
            cls._profile = made.tobytes()
        return cls._profile

    @classmethod
    def run_program(cls, source, target, *options):
        done = subprocess.run(
            [PROGRAM, "run", "InvertKRT", source, "--output", target, *options],
            text=True,
            capture_output=True,
        )
        if done.returncode != 0:
            raise AssertionError(f"{source.name} to {target.name}: {done.stderr}")
        return done.stderr

    def source(self, name):
        return self.has[f"source.{name}"]

    def holds(self, name):
        """What a format's results have of a PNG file that has everything."""
        return set(self.has[f"png-to.{name}"])

    def test_a_png_file_has_everything(self):
        self.assertEqual(set(self.source("png")), set(BLOCKS) - {"loop and delay"})

    def test_every_format_has_what_exiftool_can_write(self):
        for name, blocks in {
            "jpg": set(WRITTEN) | {"resolution", "comment"},
            "tif": set(WRITTEN) | {"resolution"},
            "webp": {"EXIF", "XMP", "profile", "resolution"},
            "gif": {"XMP", "profile", "comment"},
            "heic": {"EXIF", "XMP", "resolution"},
            "avif": {"EXIF", "XMP", "resolution"},
            "jxl": {"EXIF", "XMP", "resolution"},
            "jp2": {"EXIF", "XMP", "IPTC", "profile", "resolution"},
        }.items():
            with self.subTest(name):
                self.assertLessEqual(blocks, set(self.source(name)))

    def test_what_a_format_holds_comes_from_every_other_one(self):
        for name in FORMATS:
            for other in FORMATS:
                before, after = self.source(name), self.has[f"{name}-to.{other}"]
                for block in self.holds(other) & set(before):
                    if block == "profile" and other == "jxl" and name in WITH_LOSS:
                        continue
                    with self.subTest(block, source=name, result=other):
                        self.assertIn(block, after)
                        if not isinstance(before[block], dict):
                            self.assertEqual(after[block], before[block])
                            continue
                        for tag, value in before[block].items():
                            self.assertEqual(after[block][tag], expected_after(tag, value), tag)

    def test_the_same_format_keeps_every_tag(self):
        changed = {"ExifImageWidth", "ExifImageHeight"} | STORAGE
        groups = ("IFD0:", "ExifIFD:", "GPS:", "InteropIFD:", "XMP-", "IPTC:", "ICC", "PNG-pHYs:")
        for name in FORMATS:
            before, after = self.told[f"source.{name}"], self.told[f"{name}-to.{name}"]
            for tag, value in before.items():
                group, _, key = tag.partition(":")
                if not tag.startswith(groups) or key in changed:
                    continue
                if group.startswith("XMP-") and "XMP" not in self.holds(name):
                    continue
                if tag == "XMP-x:XMPToolkit":  # names who wrote the packet last
                    continue
                with self.subTest(tag, format=name):
                    self.assertEqual(after.get(tag), expected_after(tag, value))

    def test_profiles_stay_byte_for_byte(self):
        for name in FORMATS:
            if "profile" not in self.holds(name):
                continue
            file = f"png-to.{name}" + (".png" if name == "jxl" else "")
            done = subprocess.run(
                ["exiftool", "-b", "-ICC_Profile", self.folder / file], capture_output=True
            )
            with self.subTest(name):
                self.assertEqual(done.stdout, self.profile())

    def test_pixels_are_turned_upright(self):
        for name in FORMATS:
            if "EXIF" not in self.source(name):
                continue
            with self.subTest(name), PIL.Image.open(self.folder / f"{name}-to.png") as picture:
                rgb = picture.convert("RGB")
                if name in TURNED_BY_CONTAINER:
                    self.assertEqual(rgb.size, (24, 16))
                    continue
                # Turned clockwise, the left half is on top; inverted twice, red is red again.
                self.assertEqual(rgb.size, (16, 24))
                top, bottom = rgb.getpixel((8, 3)), rgb.getpixel((8, 20))
                self.assertTrue(top[0] > 170 and top[2] < 80, top)
                self.assertTrue(bottom[0] < 80 and bottom[2] > 170, bottom)

    def test_numbers_of_pixels_follow(self):
        tags = self.told["jpg-to.jpg"]
        self.assertEqual(self.told["source.jpg"]["ExifIFD:ExifImageWidth"], 24)
        self.assertEqual(tags["ExifIFD:ExifImageWidth"], 16)
        self.assertEqual(tags["ExifIFD:ExifImageHeight"], 24)

    def test_thumbnails_go(self):
        source = self.folder / "thumbnail.jpg"
        shutil.copy(self.sources["jpg"], source)
        exiftool("-overwrite_original", f"-ThumbnailImage<={self.sources['jpg']}", source)
        exiftool("-overwrite_original", f"-PhotoshopThumbnail<={self.sources['jpg']}", source)
        told = what_they_say([source])[source.name]
        self.assertIn("IFD1:ThumbnailImage", told)
        self.assertIn("Photoshop:PhotoshopThumbnail", told)
        for name in FORMATS:
            target = self.folder / f"thumbless.{name}"
            self.run_program(source, target)
            tags = what_they_say([target])[target.name]
            with self.subTest(name):
                self.assertEqual([tag for tag in tags if "IFD1" in tag or "Thumbnail" in tag], [])

    def test_chunks_behind_the_pixels_of_a_png_file_count(self):
        chunks = {}
        data = self.sources["png"].read_bytes()
        at = 8
        order = []
        while at < len(data):
            end = at + 12 + int.from_bytes(data[at : at + 4], "big")
            kind = data[at + 4 : at + 8]
            if kind in (b"eXIf", b"iTXt", b"tEXt"):
                chunks.setdefault(kind, b"")
                chunks[kind] += data[at:end]
            else:
                order.append(data[at:end])
            at = end
        self.assertEqual(set(chunks), {b"eXIf", b"iTXt", b"tEXt"})
        source, target = self.folder / "behind.png", self.folder / "behind.tif"
        source.write_bytes(data[:8] + b"".join(order[:-1] + list(chunks.values()) + order[-1:]))
        self.run_program(source, target)
        result = self.folder / "behind-to.png"
        self.run_program(source, result)
        told = what_they_say([target, result])
        self.assertLessEqual({"EXIF", "XMP"}, set(blocks_in(told[target.name])))
        self.assertLessEqual({"EXIF", "XMP", "comment"}, set(blocks_in(told[result.name])))
        with PIL.Image.open(result) as picture:
            self.assertEqual(picture.size, (16, 24))

    def test_the_profile_alone(self):
        for name in FORMATS:
            tags = self.has[f"profile.{name}"]
            with self.subTest(name):
                self.assertEqual("profile" in tags, "profile" in self.holds(name))
                self.assertEqual(set(tags) & {"EXIF", "XMP", "IPTC", "comment"}, set())

    def test_nothing_at_all(self):
        for name in FORMATS:
            with self.subTest(name):
                lost = {"EXIF", "XMP", "IPTC", "comment", "profile"}
                self.assertEqual(set(self.has[f"none.{name}"]) & lost, set())
                if name == "webp":
                    said = [tag for tag in self.told["none.webp"] if tag.startswith("IFD0")]
                    self.assertEqual(said, [])

    def test_what_a_format_cannot_hold_is_told_in_one_line(self):
        for name, lost in {
            "jpg": "",
            "tif": "comment: it is",
            "webp": "IPTC and comment: they are",
            "gif": "EXIF, IPTC and resolution: they are",
            "heic": "IPTC and comment: they are",
            "jxl": "IPTC and comment: they are",
            "jp2": "comment: it is",
            "bmp": "EXIF, XMP, IPTC, profile and comment: they are",
            "ppm": "EXIF, XMP, IPTC, profile and resolution: they are",
        }.items():
            told = self.problems[f"png-to.{name}"]
            lines = [line for line in told.splitlines() if "can't hold" in line]
            with self.subTest(name):
                if not lost:
                    self.assertEqual(lines, [])
                    continue
                self.assertEqual(len(lines), 1, told)
                self.assertIn(f"source.png': the result as {FORMATS[name]} can't hold {lost} left out", lines[0])

    def test_what_is_told_is_what_is_lost(self):
        names = ["EXIF", "XMP", "IPTC", "profile", "resolution", "comment"]
        for name in FORMATS:
            for other in FORMATS:
                told = self.problems[f"{name}-to.{other}"]
                # Every JPEG XL file has a profile, if only one that its decoder makes.
                jxl = "jxl" in (name, other)
                for block in names[:3] + names[4:] if jxl else names:
                    with self.subTest(block, source=name, result=other):
                        lost = block in self.source(name) and block not in self.has[f"{name}-to.{other}"]
                        if block == "resolution":  # 72 counts as well
                            before, after = (resolution_of(self.told[file])
                                             for file in (f"source.{name}", f"{name}-to.{other}"))
                            lost = before is not None and after is None
                        line = [l for l in told.splitlines() if "can't hold" in l and block in l]
                        self.assertEqual(len(line), int(lost), told)

    def animation(self, source, other):
        """Whether the loop and the delays of a file's frames come into a result. GIF files say how
        often frames are shown again, WebP files how often they are shown."""
        target = self.folder / f"animated-{source.suffix[1:]}-to.{other}"
        self.run_program(source, target)
        with PIL.Image.open(target) as picture:
            delays = []
            for frame in range(getattr(picture, "n_frames", 1)):
                picture.seek(frame)
                picture.load()
                delays.append(picture.info.get("duration"))
            loops = picture.info.get("loop") + (other == "gif")
            return loops == 3 + (source.suffix == ".gif") and delays == [100, 250]

    def animated(self, name):
        frames = [PIL.Image.new("RGB", (8, 8), colour) for colour in ("red", "blue")]
        source = self.folder / f"animated.{name}"
        frames[0].save(
            source, save_all=True, append_images=frames[1:], duration=[100, 250], loop=3, lossless=True
        )
        return source

    def test_animations_keep_loop_and_delay(self):
        for name in ("gif", "webp"):
            for other in ("gif", "webp"):
                with self.subTest(name, result=other):
                    self.assertTrue(self.animation(self.animated(name), other))

    def table(self):
        rows = ["| format | " + " | ".join(BLOCKS) + " |", "| --- " * (len(BLOCKS) + 1) + "|"]
        for name, title in FORMATS.items():
            cells = []
            for block in BLOCKS[:-1]:
                written = block in self.holds(name)
                read = block in self.has[f"{name}-to.png"] or (
                    written and block in self.has[f"{name}-and-back.png"]
                )
                cells.append(
                    "kept" if written and read else "read" if read else "written" if written else "–"
                )
            kept = name in ("gif", "webp") and self.animation(self.animated(name), name)
            cells.append("kept" if kept else "–")
            rows.append(f"| {title} | " + " | ".join(cells) + " |")
        return "\n".join(rows) + "\n"

    def test_the_page_has_the_table(self):
        before, _, rest = PAGE.read_text().partition(START)
        table, mark, after = rest.partition(END)
        self.assertTrue(mark, f"{PAGE.name} has no place for the table")
        made = self.table()
        if os.environ.get("WRITE_TABLE"):
            PAGE.write_text(before + START + made + END + after)
        else:
            self.assertEqual(table, made, "metadata_test.py --write-table writes it anew")


if __name__ == "__main__":
    if "--write-table" in sys.argv:
        sys.argv.remove("--write-table")
        os.environ["WRITE_TABLE"] = "1"
        sys.argv.append("MetadataTest.test_the_page_has_the_table")
    unittest.main()
