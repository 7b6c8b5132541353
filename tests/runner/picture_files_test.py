#!/usr/bin/python3
"""Picture files through the program, made and judged by Pillow: pixels come out as they went in."""

import io
import os
import pathlib
import struct
import subprocess
import tempfile
import unittest
import zlib

import numpy as np
from PIL import Image, ImageCms

PROGRAM = pathlib.Path(os.environ["PICTURE_BINARY_DIR"]) / "picturehost"
random = np.random.default_rng(5)


def noise(height, width, channels=3):
    return random.integers(0, 256, (height, width, channels), dtype=np.uint8)


def smooth(height, width):
    """What a JPEG file keeps close."""
    y, x = np.mgrid[0:height, 0:width]
    return np.stack([x * 255 // width, y * 255 // height, (x + y) * 255 // (width + height)], -1).astype(np.uint8)


def striped_tiff(picture, rows):
    """A TIFF file of strips of so many rows, deflated, behind its directory."""
    height, width = picture.shape[:2]
    strips = [zlib.compress(picture[y:y + rows].tobytes()) for y in range(0, height, rows)]
    tags = [(256, width), (257, height), (258, 8), (259, 8), (262, 2), (277, 3), (278, rows)]
    entries = len(tags) + 2
    lists = 8 + 2 + 12 * entries + 4
    data = lists + 8 * len(strips)
    starts = [data + sum(map(len, strips[:i])) for i in range(len(strips))]
    directory = struct.pack("<H", entries)
    for tag, value in sorted(tags + [(273, lists), (279, lists + 4 * len(strips))]):
        count = len(strips) if tag in (273, 279) else 1
        directory += struct.pack("<HHII", tag, 4 if tag != 258 else 3, count, value)
    header = b"II*\0" + struct.pack("<I", 8) + directory + struct.pack("<I", 0)
    counts = [len(strip) for strip in strips]
    return header + struct.pack(f"<{2 * len(strips)}I", *starts, *counts) + b"".join(strips)


class PictureFiles(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def run_program(self, *words, **options):
        return subprocess.run([PROGRAM, "run", *map(str, words)], cwd=self.folder, capture_output=True, check=False,
                              **options)

    def made(self, *words):
        """Runs what has to succeed without a word; gives the last word's file, opened."""
        done = self.run_program(*words)
        self.assertEqual((done.returncode, done.stderr), (0, b""), done.stderr.decode())
        return self.opened(words[-1].split("[")[0])

    def opened(self, name):
        return Image.open(io.BytesIO((self.folder / name).read_bytes()))

    def complaint(self, *words, status=1):
        done = self.run_program(*words)
        text = done.stderr.decode()
        self.assertEqual(done.returncode, status, text)
        self.assertEqual(text.count("\n"), 1, text)
        self.assertTrue(text.startswith("picturehost: "), text)
        return text.removeprefix("picturehost: ").rstrip("\n")

    def save(self, name, image, **options):
        if isinstance(image, np.ndarray):
            image = Image.fromarray(image)
        image.save(self.folder / name, **options)
        return image


class KindsOfPixels(PictureFiles):
    def test_grey_comes_back_as_grey(self):
        grey = noise(20, 30, 1)[:, :, 0]
        for name in ("g.png", "g.tif", "g.pgm"):
            self.save(name, grey)
            out = self.made("InvertKRT", name, "-o", "out-" + name)
            self.assertEqual(out.mode, "L", name)
            self.assertTrue(np.array_equal(np.array(out), 255 - grey), name)
        self.save("g.jpg", smooth(32, 32)[:, :, 0], quality=95)
        self.assertEqual(self.made("InvertKRT", "g.jpg", "-o", "out.jpg").mode, "L")

    def test_grey_becomes_colour_where_the_result_has_colours(self):
        self.save("g.png", noise(20, 30, 1)[:, :, 0])
        out = self.made("TintPictureKRT(self, &cFF0000, &c0000FF)", "g.png", "-o", "out.png")
        self.assertEqual(out.mode, "RGB")

    def test_a_palette_comes_back_as_one(self):
        for colours, bits in ((2, 1), (4, 2), (16, 4), (256, 8)):
            palette = noise(1, colours)[0]
            indexes = random.integers(0, colours, (40, 50), dtype=np.uint8)
            indexes.flat[:colours] = np.arange(colours)
            image = Image.fromarray(indexes, "P")
            image.putpalette(palette.tobytes())
            self.save("p.png", image, bits=bits)
            out = self.made("InvertKRT", "p.png", "-o", "out.png")
            self.assertEqual(out.mode, "P", colours)
            self.assertTrue(np.array_equal(np.array(out.convert("RGB")), 255 - palette[indexes]), colours)
            # The depth in the header, behind the size.
            self.assertEqual((self.folder / "out.png").read_bytes()[24], bits)

    def test_black_and_white_comes_back_as_it_was(self):
        bits = random.integers(0, 2, (20, 30), dtype=np.uint8).astype(bool)
        for name, options in (("b.png", {}), ("b.tif", {"compression": "group4"})):
            self.save(name, Image.fromarray(bits), **options)
            out = self.made("InvertKRT", name, "-o", "out-" + name)
            self.assertEqual(out.mode, "1", name)
            self.assertTrue(np.array_equal(np.array(out), ~bits), name)
        self.assertEqual(out.info["compression"], "group4")

    def test_sixteen_bits_are_rounded_with_a_warning(self):
        values = np.arange(65536, dtype=np.uint16).reshape(256, 256)
        self.save("wide.png", Image.fromarray(values))
        done = self.run_program("-e", "InvertKRT", "-e", "InvertKRT", "wide.png", "-o", "out.png")
        self.assertEqual(done.stderr, b"picturehost: warning: 'wide.png' has 16 bits a channel; its pixels are "
                                      b"rounded to 8\n")
        out = np.array(self.opened("out.png"))
        self.assertTrue(np.array_equal(out, np.round(values / 257).astype(np.uint8)))
        self.assertIn("16 bits", self.complaint("InvertKRT", "wide.png", "-o", "strict.png", "--strict"))
        self.assertFalse((self.folder / "strict.png").exists())


class Colour(PictureFiles):
    srgb = ImageCms.createProfile("sRGB")

    def profile(self, name):
        return pathlib.Path("/usr/share/color/icc/ghostscript", name).read_bytes()

    def test_numbers_and_profile_stay(self):
        image = noise(20, 30)
        icc = self.profile("a98.icc")
        for name in ("c.png", "c.tif"):
            self.save(name, image, icc_profile=icc)
            out = self.made("InvertKRT", name, "-o", "out-" + name)
            self.assertEqual(out.info["icc_profile"], icc, name)
            self.assertTrue(np.array_equal(np.array(out), 255 - image), name)

    def test_to_srgb_converts_and_says_so(self):
        image = smooth(60, 60)
        icc = self.profile("a98.icc")
        self.save("c.png", image, icc_profile=icc)
        out = self.made("-e", "InvertKRT", "-e", "InvertKRT", "c.png", "--to-srgb", "-o", "out.png")
        expected = ImageCms.profileToProfile(
            Image.fromarray(image), io.BytesIO(icc), self.srgb, renderingIntent=1,
            flags=ImageCms.FLAGS["BLACKPOINTCOMPENSATION"])
        self.assertLessEqual(np.abs(np.array(out).astype(int) - np.array(expected)).max(), 2)
        self.assertGreater(np.abs(np.array(out).astype(int) - image).max(), 20)
        kept = ImageCms.ImageCmsProfile(io.BytesIO(out.info["icc_profile"]))
        self.assertIn("sRGB", ImageCms.getProfileDescription(kept))

    def test_cmyk_is_converted_through_its_own_profile(self):
        icc = self.profile("default_cmyk.icc")
        image = Image.fromarray(np.dstack([smooth(64, 64), np.full((64, 64), 40, np.uint8)]), "CMYK")
        self.save("c.tif", image, icc_profile=icc)
        out = self.made("-e", "InvertKRT", "-e", "InvertKRT", "c.tif", "-o", "out.tif")
        self.assertEqual(out.mode, "RGB")
        expected = ImageCms.profileToProfile(
            image, io.BytesIO(icc), self.srgb, renderingIntent=1, outputMode="RGB",
            flags=ImageCms.FLAGS["BLACKPOINTCOMPENSATION"])
        self.assertLessEqual(np.abs(np.array(out).astype(int) - np.array(expected)).max(), 2)
        kept = ImageCms.ImageCmsProfile(io.BytesIO(out.info["icc_profile"]))
        self.assertIn("sRGB", ImageCms.getProfileDescription(kept))


class Alpha(PictureFiles):
    def test_results_are_opaque_unless_alpha_is_kept(self):
        image = noise(20, 30, 4)
        image[0, :8, 3] = 0
        self.save("logo.png", image)
        self.assertEqual(self.made("InvertKRT", "logo.png", "-o", "out.png").mode, "RGB")
        out = np.array(self.made("InvertKRT", "logo.png", "--keep-alpha", "-o", "kept.png"))
        self.assertTrue(np.array_equal(out[:, :, 3], image[:, :, 3]))
        self.assertTrue(np.array_equal(out[:, :, :3], 255 - image[:, :, :3]))

    def test_a_result_of_another_size_has_no_alpha(self):
        self.save("logo.png", noise(20, 30, 4))
        self.save("large.png", noise(40, 30))
        text = self.complaint("-e", "InvertKRT", "-e", 'self = picture("large.png")', "logo.png", "--keep-alpha",
                              "-o", "out.png")
        self.assertIn("30 x 40 instead of 30 x 20", text)
        self.assertFalse((self.folder / "out.png").exists())


class Pages(PictureFiles):
    def frames(self, name):
        image = self.opened(name)
        result = []
        for page in range(getattr(image, "n_frames", 1)):
            image.seek(page)
            result.append(np.array(image.convert("RGB")))
        return result, image

    def setUp(self):
        super().setUp()
        self.pictures = [noise(20, 30) for _ in range(3)]
        images = [Image.fromarray(picture) for picture in self.pictures]
        images[0].save(self.folder / "p.tif", save_all=True, append_images=images[1:])
        images[0].save(self.folder / "p.webp", save_all=True, append_images=images[1:], lossless=True, loop=3,
                       duration=[100, 200, 300])

    def test_all_pages_are_done_and_saved_together(self):
        for name in ("p.tif", "p.webp"):
            done = self.run_program("InvertKRT", name, "-o", "out-" + name)
            self.assertEqual((done.returncode, done.stderr), (0, b""))
            got, image = self.frames("out-" + name)
            self.assertEqual(len(got), 3, name)
            for picture, page in zip(self.pictures, got):
                self.assertTrue(np.array_equal(page, 255 - picture), name)
        self.assertEqual(image.info["loop"], 3)

    def test_an_animation_keeps_its_delays(self):
        plain = [np.full((16, 16, 3), shade, np.uint8) for shade in (10, 120, 230)]
        images = [Image.fromarray(picture) for picture in plain]
        images[0].save(self.folder / "a.gif", save_all=True, append_images=images[1:], loop=2,
                       duration=[100, 200, 300])
        self.made("InvertKRT", "a.gif", "-o", "out.gif")
        got, image = self.frames("out.gif")
        for picture, page in zip(plain, got):
            self.assertTrue(np.array_equal(page, 255 - picture))
        delays = []
        for page in range(3):
            image.seek(page)
            delays.append(image.info["duration"])
        self.assertEqual(delays, [100, 200, 300])

    def test_one_page(self):
        out = self.made("InvertKRT", "p.tif", "--page", "2", "-o", "out.png")
        self.assertTrue(np.array_equal(np.array(out), 255 - self.pictures[1]))
        self.assertEqual(self.complaint("InvertKRT", "p.tif", "--page", "4", "-o", "x.png"),
                         "'p.tif' has 3 pages, there is no page 4")

    def test_a_format_of_one_page_refuses_several(self):
        self.assertEqual(self.complaint("InvertKRT", "p.tif", "-o", "out.jpg"),
                         "there are 3 pages, and a JPEG file holds one; --page N takes one of them")
        self.assertFalse((self.folder / "out.jpg").exists())

    def test_printed_values_name_their_page(self):
        done = self.run_program("ColornessKRT(20)", "p.tif")
        lines = done.stdout.decode().splitlines()
        self.assertEqual([line.split(" = ")[0] for line in lines],
                         [f"page {page}: ColornessKRT" for page in (1, 2, 3)])


class AsGoodAsItCame(PictureFiles):
    def test_quality_and_samples_of_colour_of_a_jpeg(self):
        for quality, subsampling in ((98, 0), (70, 2), (35, 2)):
            self.save("q.jpg", smooth(64, 64), quality=quality, subsampling=subsampling)
            before = self.opened("q.jpg")
            out = self.made("InvertKRT", "q.jpg", "-o", "out.jpg")
            self.assertEqual(out.quantization, before.quantization, quality)
            self.assertEqual(out.layer, before.layer, quality)

    def test_tables_and_samples_that_no_quality_has(self):
        tables = [[1 + i // 3 for i in range(64)], [40 - i // 2 for i in range(64)]]
        for subsampling, samples in ((0, (1, 1)), (1, (2, 1)), (2, (2, 2))):
            self.save("q.jpg", smooth(64, 64), qtables=tables, subsampling=subsampling)
            before = self.opened("q.jpg")
            self.assertEqual(before.layer[0][1:3], samples)
            out = self.made("InvertKRT", "q.jpg", "-o", "out.jpg")
            self.assertEqual(out.quantization, before.quantization)
            self.assertEqual(out.layer, before.layer)
            out = self.made("InvertKRT", "q.jpg", "--quality", "50", "-o", "out.jpg")
            self.assertNotEqual(out.quantization, before.quantization)
        Image.fromarray(smooth(64, 64)).convert("L").save(self.folder / "g.jpg", qtables=tables[:1])
        out = self.made("InvertKRT", "g.jpg", "-o", "out.jpg")
        self.assertEqual((out.mode, list(out.quantization)), ("L", [0]))
        self.assertEqual(out.quantization, self.opened("g.jpg").quantization)

    def test_a_ppm_file_says_nothing_but_its_pixels(self):
        image = noise(3, 5)
        self.save("s.png", image)
        self.made("InvertKRT", "s.png", "-o", "out.ppm")
        self.assertEqual((self.folder / "out.ppm").read_bytes(), b"P6\n5 3\n255\n" + (255 - image).tobytes())

    def test_what_a_tiff_compresses_stays(self):
        predictor = 317
        for compression in ("tiff_lzw", "tiff_adobe_deflate"):
            for differences in (1, 2):
                self.save("t.tif", smooth(32, 32), compression=compression, tiffinfo={predictor: differences})
                out = self.made("InvertKRT", "t.tif", "-o", "out.tif")
                self.assertEqual(out.info["compression"], compression)
                self.assertEqual(out.tag_v2.get(predictor, 1), differences)

    def test_a_lossless_webp_stays_lossless(self):
        image = noise(30, 40)
        self.save("l.webp", image, lossless=True)
        out = self.made("InvertKRT", "l.webp", "-o", "out.webp")
        self.assertTrue(np.array_equal(np.array(out), 255 - image))

    def test_options_of_the_format(self):
        self.save("s.png", smooth(64, 64))
        self.save("expected.jpg", smooth(64, 64), quality=35)
        tables = self.opened("expected.jpg").quantization
        for words in (["-o", "a.jpg[Q=35]"], ["--quality", "35", "-o", "b.jpg"],
                      ["--quality", "80", "-o", "c.jpg[Q=35]"]):
            self.assertEqual(self.made("InvertKRT", "s.png", *words).quantization, tables, words)
        self.assertTrue(self.made("InvertKRT", "s.png", "-o", "p.jpg[interlace]").info.get("progressive"))
        sizes = []
        for level in ("0", "9"):
            self.made("InvertKRT", "s.png", "--compression", level, "-o", "z.png")
            sizes.append((self.folder / "z.png").stat().st_size)
        self.assertGreater(sizes[0], sizes[1])
        image = noise(16, 16)
        self.save("n.png", image)
        for name in ("n.webp", "n.jp2"):
            out = self.made("InvertKRT", "n.png", "--lossless", "-o", name)
            self.assertTrue(np.array_equal(np.array(out.convert("RGB")), 255 - image), name)

    def test_options_that_do_not_fit(self):
        self.save("s.png", smooth(8, 8))
        self.assertEqual(self.complaint("InvertKRT", "s.png", "-o", "a.jpg[QQ=3]"),
                         "the picture can't be encoded as JPEG: no property named `QQ'")
        self.assertEqual(self.complaint("InvertKRT", "s.png", "--quality", "9", "-o", "a.png"),
                         "PNG has no --quality: nothing is lost in it")
        self.assertEqual(self.complaint("InvertKRT", "s.png", "--lossless", "-o", "a.jpg"), "JPEG can't be --lossless")
        self.assertEqual(self.complaint("InvertKRT", "s.png", "--compression", "lzw", "-o", "a.jpg"),
                         "JPEG has no --compression; PNG and TIFF have")
        self.assertEqual(sorted(os.listdir(self.folder)), ["s.png"])


NOTICED = r"^picturehost: warning: '{}' is .*: noticed after [1-9]\d* of its {} rows were decoded(; the last \d+ are missing)?$"


class Damage(PictureFiles):
    def tries(self, name):
        """Warned of, refused, and used without a word; gives the warning."""
        warned = self.run_program("InvertKRT", name, "-o", "warned.png")
        refused = self.run_program("InvertKRT", name, "--damage", "fail", "-o", "refused.png")
        ignored = self.run_program("InvertKRT", name, "--damage", "ignore", "-o", "ignored.png")
        self.assertEqual([run.returncode for run in (warned, refused, ignored)], [0, 1, 0], warned.stderr)
        self.assertFalse((self.folder / "refused.png").exists())
        self.assertEqual(ignored.stderr, b"")
        self.assertEqual((self.folder / "warned.png").read_bytes(), (self.folder / "ignored.png").read_bytes())
        return warned.stderr.decode()

    def damage(self, name, start, bytes_=None):
        path = self.folder / name
        data = path.read_bytes()
        at = int(len(data) * start)
        path.write_bytes(data[:at] if bytes_ is None else data[:at] + bytes(bytes_) + data[at + bytes_:])

    def rows_right(self, picture):
        """How many rows at the top are the inverted picture's."""
        got = np.array(self.opened("warned.png").convert("RGB"))
        right = (got == 255 - picture).all(axis=(1, 2))
        return int(right.argmin()) if not right.all() else len(right)

    def test_truncated_and_overwritten_png(self):
        picture = noise(200, 100)
        for bytes_ in (None, 300):
            self.save("d.png", picture)
            self.damage("d.png", 0.5, bytes_)
            self.assertRegex(self.tries("d.png"), NOTICED.format("d.png", 200))
            self.assertGreater(self.rows_right(picture), 60)

    def test_truncated_and_overwritten_jpeg(self):
        picture = smooth(256, 256)
        for bytes_ in (None, 600):
            self.save("d.jpg", picture, quality=100)
            self.made("InvertKRT", "d.jpg", "-o", "whole.png")
            self.damage("d.jpg", 0.5, bytes_)
            self.assertRegex(self.tries("d.jpg"), NOTICED.format("d.jpg", 256))
            whole = 255 - np.array(self.opened("whole.png"))
            self.assertGreater(self.rows_right(whole), 90)

    def test_half_a_jpeg_with_an_end(self):
        self.save("d.jpg", smooth(256, 256), quality=100)
        self.damage("d.jpg", 0.5)
        with open(self.folder / "d.jpg", "ab") as file:
            file.write(b"\xFF\xD9")
        self.assertIn("is damaged", self.tries("d.jpg"))

    def test_a_jpeg_of_more_scans_than_a_picture_has(self):
        self.save("d.jpg", smooth(64, 64), progressive=True)
        data = (self.folder / "d.jpg").read_bytes()
        scan = data[data.rfind(b"\xFF\xDA"):-2]
        (self.folder / "d.jpg").write_bytes(data[:-2] + 10_000 * scan + data[-2:])
        for damage in ("warn", "ignore"):
            self.assertEqual(self.complaint("InvertKRT", "d.jpg", "--damage", damage, "-o", "out.png"),
                             "'d.jpg' is damaged (more scans than a picture has), and nothing of it can be decoded")

    def test_a_jpeg_without_its_last_two_bytes(self):
        self.save("d.jpg", smooth(64, 64), quality=100)
        data = (self.folder / "d.jpg").read_bytes()
        (self.folder / "d.jpg").write_bytes(data[:-2])
        self.assertTrue(self.tries("d.jpg").startswith("picturehost: warning: 'd.jpg' is truncated: "))
        whole = 255 - smooth(64, 64).astype(int)
        got = np.array(self.opened("warned.png").convert("RGB"))
        self.assertLessEqual(np.abs(got - whole).max(), 16)

    def test_truncated_and_overwritten_tiff(self):
        picture = noise(200, 100)
        for truncated in (False, True):
            data = striped_tiff(picture, 20)
            at = len(data) // 2
            (self.folder / "d.tif").write_bytes(data[:at] if truncated else data[:at] + bytes(400) + data[at + 400:])
            self.assertRegex(self.tries("d.tif"), NOTICED.format("d.tif", 200))
            self.assertGreaterEqual(self.rows_right(picture), 80)

    def test_webp_cannot_be_decoded_in_part(self):
        self.save("d.webp", smooth(256, 256), quality=100)
        self.damage("d.webp", 0.5)
        self.assertEqual(self.complaint("InvertKRT", "d.webp", "-o", "out.png"),
                         "'d.webp' is truncated, and nothing of it can be decoded")


class Pipes(PictureFiles):
    def test_from_standard_input_to_standard_output(self):
        image = noise(20, 30)
        self.save("p.png", image)
        data = (self.folder / "p.png").read_bytes()
        done = self.run_program("-e", "InvertKRT", "-e", "CountColorsKRT", "-", "-f", "tiff", "-o", "-", input=data)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(np.array_equal(np.array(Image.open(io.BytesIO(done.stdout))), 255 - image))
        self.assertIn(b"count = 600\n", done.stderr)

    def test_mistakes(self):
        self.save("p.png", noise(4, 4))
        self.assertEqual(self.complaint("InvertKRT", "p.png", "-o", "-", status=2),
                         "a picture for standard output needs --format, like --format png")
        done = self.run_program("InvertKRT", "-", "-o", "out.png", input=b"no picture")
        self.assertIn(b"picturehost: 'standard input' isn't an image that can be opened", done.stderr)


if __name__ == "__main__":
    unittest.main()
