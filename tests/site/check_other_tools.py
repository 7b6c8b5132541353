#!/usr/bin/python3
"""Holds what the page for users of other tools says against Pillow.

    check_other_tools.py PICTUREHOST

Where it says that the pixels are the same they have to be, and where it says that they differ they
have to differ.
"""

import os
import pathlib
import sys
import tempfile

import yaml
from PIL import Image, ImageChops, ImageEnhance, ImageOps

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "docs" / "generator"))

import examples  # noqa: E402


def main():
    picturehost = pathlib.Path(sys.argv[1]).resolve()
    os.chdir(examples.EXAMPLES)
    photo, vignette = (Image.open(file).convert("RGB") for file in ("photos/coffee.png", "made/vignette.png"))
    names = {"photo": photo, "vignette": vignette, "pathlib": pathlib, "Image": Image, "ImageOps": ImageOps,
             "ImageEnhance": ImageEnhance, "ImageChops": ImageChops}
    rows = yaml.safe_load((ROOT / "docs" / "other-tools.yaml").read_text())["rows"]
    faults = checked = 0
    with tempfile.TemporaryDirectory() as folder:
        for row in (row for row in rows if "check" in row):
            result = pathlib.Path(folder) / "result.png"
            examples.run(picturehost, {"photo": "photos/coffee.png", "run": row["run"]}, result)
            with Image.open(result) as image:
                same = image.convert("RGB").tobytes() == eval(row["check"], names).tobytes()
            checked += 1
            if same != row["same"]:
                faults += 1
                print(f"{row['need']}: the pixels are {'the same' if same else 'different'}", file=sys.stderr)
    print(f"{checked} calls held against Pillow, {faults} faults")
    sys.exit(1 if faults or not checked else 0)


main()
