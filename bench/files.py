#!/usr/bin/python3
"""What whole files take beside other programs, start to finish: seconds and the most memory at a time.

    bench/files.py PICTUREHOST WORK_DIR [DOCS]

Every program opens a file, does the same kind of work on it and saves it as good as it came: JPEG with
quality 92 and full colour, PNG with zlib's level 3, TIFF deflated, WebP with quality 92. Programs that
aren't there are left out. With DOCS the table is written to DOCS/files-speed.md.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import time

from PIL import Image

from runner import photograph

ROUNDS = 5
SIZES = {12: (4000, 3000), 48: (8000, 6000)}
# The goals: at most so many times the fastest, and the leanest that holds the whole picture.
TIME_GOAL, MEMORY_GOAL = 1.05, 1.2
FORMATS = {"JPEG": "jpg", "PNG": "png", "TIFF": "tif", "WebP": "webp"}
OPERATIONS = ["InvertKRT", "ChangeContrastKRT"]
# libvips never holds the whole picture.
STREAMS = {"vips"}

PILLOW = """
import sys
from PIL import Image, ImageEnhance, ImageOps
source, target, work, options = sys.argv[1:5]
picture = Image.open(source)
picture = ImageOps.invert(picture) if work == 'InvertKRT' else ImageEnhance.Contrast(picture).enhance(1.4)
picture.save(target, **eval(options))
"""


def commands(program, work, extension):
    """What each program is called with, the file first and the result last."""
    source, target = f"in.{extension}", f"out.{extension}"
    invert = work == "InvertKRT"
    vips = {"jpg": "[Q=92,subsample-mode=off]", "png": "[compression=3]", "tif": "[compression=deflate,predictor=horizontal]",
            "webp": "[Q=92]"}[extension]
    magick = {"jpg": ["-quality", "92", "-sampling-factor", "1x1"], "png": ["-quality", "35"],
              "tif": ["-compress", "zip"], "webp": ["-quality", "92"]}[extension]
    pillow = {"jpg": {"quality": 92, "subsampling": 0}, "png": {"compress_level": 3},
              "tif": {"compression": "tiff_adobe_deflate"}, "webp": {"quality": 92}}[extension]
    call = "InvertKRT" if invert else "ChangeContrastKRT(0.4)"
    return {
        "picturehost": [program, "run", call, source, "-o", target],
        "vips": ["vips", *(["invert", source, target + vips] if invert
                           else ["linear", "--uchar", source, target + vips, "1.4", "--", "-51"])],
        "convert": ["/usr/bin/convert", source, *(["-negate"] if invert else ["-brightness-contrast", "0x40"]),
                    *magick, target],
        "gm": ["gm", "convert", source, *(["-negate"] if invert else ["-operator", "All", "Multiply", "1.4"]),
               *magick, target],
        "Pillow": ["/usr/bin/python3", "-c", PILLOW, source, target, work, repr(pillow)],
    }


def run(command, folder):
    """Seconds and megabytes, or None where the program isn't there or fails."""
    if shutil.which(str(command[0])) is None:
        return None
    start = time.perf_counter()
    child = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        return None
    return time.perf_counter() - start, usage.ru_maxrss / 1024


def measure(program, folder):
    rows, missed = [], []
    for megapixels, size in SIZES.items():
        picture = photograph(size)
        for format_name, extension in FORMATS.items():
            options = {"jpg": {"quality": 92, "subsampling": 0}, "webp": {"quality": 92, "method": 0},
                       "tif": {"compression": "tiff_adobe_deflate"}, "png": {"compress_level": 3}}[extension]
            picture.save(folder / f"in.{extension}", **options)
            for operation in OPERATIONS:
                found = {}
                for _ in range(ROUNDS):
                    for name, command in commands(program, operation, extension).items():
                        got = run(command, folder)
                        if got is not None:
                            found[name] = tuple(map(min, zip(found[name], got))) if name in found else got
                rows.append((f"{megapixels} MP {format_name}, {operation}", found))
                print(line(*rows[-1]), flush=True)
                fastest = min(seconds for seconds, _ in found.values())
                leanest = min(memory for name, (_, memory) in found.items() if name not in STREAMS)
                if found["picturehost"][0] > TIME_GOAL * fastest:
                    missed.append(f"{rows[-1][0]}: {found['picturehost'][0] / fastest:.2f} times the fastest")
                if found["picturehost"][1] > MEMORY_GOAL * leanest:
                    missed.append(f"{rows[-1][0]}: {found['picturehost'][1] / leanest:.2f} times the leanest's memory")
            for name in (f"in.{extension}", f"out.{extension}"):
                (folder / name).unlink(missing_ok=True)
    return rows, missed


PROGRAMS = ["picturehost", "vips", "convert", "gm", "Pillow"]


def line(heading, found):
    cells = [f"{found[name][0]:.2f} s, {found[name][1]:.0f} MB" if name in found else "–" for name in PROGRAMS]
    return f"| {heading} | " + " | ".join(cells) + " |"


def page(rows, missed):
    text = ["# Files beside other programs", "",
            "From the start of a program to its end: open a file, work on it, save it as good as it came. The least",
            f"of {ROUNDS} runs, and the most memory that the program had at a time. The programs' operations are of",
            "the same kind and not the same. libvips works on strips and never holds the whole picture.",
            "`script/bench --runner` measures this anew.", "",
            "| | " + " | ".join(PROGRAMS) + " |", "| --- |" + " --- |" * len(PROGRAMS)]
    text += [line(*row) for row in rows]
    text += ["", f"Goals: at most {TIME_GOAL} times the time of the fastest, and {MEMORY_GOAL} times the memory of the",
             "leanest that holds the whole picture."]
    text += ["Missed:", ""] + [f"- {entry}" for entry in missed] if missed else ["None is missed."]
    return "\n".join(text) + "\n"


def main():
    program, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    Image.MAX_IMAGE_PIXELS = None
    rows, missed = measure(program, folder)
    print("missed: " + ("; ".join(missed) or "none"))
    if len(sys.argv) > 3:
        (pathlib.Path(sys.argv[3]) / "files-speed.md").write_text(page(rows, missed))


if __name__ == "__main__":
    main()
