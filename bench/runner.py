#!/usr/bin/python3
"""What the command line program's own work takes, start to finish, on a 12-megapixel JPEG.

    bench/runner.py PICTUREHOST WORK_DIR

Prints, for every kind of operation, how much of the time goes into decoding and encoding: what a run
takes that hands the picture on as it is. Then what a batch gains from a second job.
"""

import pathlib
import shutil
import statistics
import subprocess
import sys
import time

from PIL import Image, ImageOps

PHOTO = pathlib.Path(__file__).resolve().parent.parent / "examples/photos/coffee.png"
SIZE = (4000, 3000)
ROUNDS = 9
GOAL = 90
BATCH = 6

# What hands the picture on: channels replaced by themselves cost as little as an operation can.
IDENTITY = "self"
CALLS = [
    "InvertKRT",
    "InvertGrayKRT",
    "ChangeContrastKRT(0.3)",
    "ChangeBrightnessLinearKRT(20)",
    "ChangeContrastBrightnessAbsoluteKRT(0.3, 0.1, -0.2, 20, 0, -20)",
    "ChangeSaturationKRT(60)",
    "TintPictureKRT(self, &c4C961D, &cFFE4B0)",
    "ColornessKRT",
    "CountColorKRT(&cFFFFFF)",
    "CountColorsKRT",
    "ReplaceColorKRT(&cFFFFFF, &c000000)",
    "ExtractColorKRT(&cFFFFFF, &c000000, &cFF0000)",
    "isGrayKRT(255)",
    "FindPictureKRT(self)",
    "ExtractColorRectangleMaskKRT",
    "ScrollKRT(1000, 1000, true, false)",
    "MergePictureKRT(self, self)",
    "CombinePicturesKRT(self, self, self)",
    "ReplaceRedChannelKRT(self)",
    "EmbeddedMaskKRT(false)",
    "BinaryStringtoPictureKRT(PicturetoBinaryStringKRT(self))",
    "PictureSepiaKRT(SepiaRed = 40, SepiaGreen = 20)",
]


def seconds(command, cwd):
    """Processor time, so that what else the machine does counts less."""
    import resource

    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    done = subprocess.run(command, cwd=cwd, capture_output=True, text=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stderr}")
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def photograph(size=SIZE):
    """A picture with as much detail in each as a photograph has: mirrored tiles. Enlarged, it would be
    smooth, and its file a third as large."""
    tile = Image.open(PHOTO).convert("RGB")
    whole = Image.new("RGB", size)
    for column in range(0, size[0], tile.width):
        for row in range(0, size[1], tile.height):
            turned = ImageOps.mirror(tile) if column // tile.width % 2 else tile
            whole.paste(ImageOps.flip(turned) if row // tile.height % 2 else turned, (column, row))
    return whole


def main():
    program, work = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    photograph().save(work / "photo.jpg", quality=92)
    megabytes = (work / "photo.jpg").stat().st_size / 1e6

    # The result isn't written where it says something else than the photograph: encoding it takes
    # another time. The picture before the call is what is encoded in every run.
    def run(*expressions):
        kept = [f"kept = {IDENTITY}", *expressions, "kept"]
        words = [word for expression in kept for word in ("-e", expression)]
        return seconds([program, "run", *words, "photo.jpg", "--output", "out.jpg"], work)

    heading = f"of a run on 12 megapixels ({megabytes:.1f} MB), decoding and encoding are"
    print(f"{heading:68s}   goal: more than {GOAL} %")
    missed = []
    for call in CALLS:
        # The least of each, since whatever else the machine does only adds.
        rounds = [(run(), run(call)) for _ in range(ROUNDS)]
        plain, called = (min(times) for times in zip(*rounds))
        share = 100 * plain / called
        name = call.split("(")[0]
        print(f"  {name:66s} {min(share, 100):5.1f} %  {'yes' if share > GOAL else 'NO'}", flush=True)
        if share <= GOAL:
            missed.append(name)
    print("missed: " + (", ".join(missed) or "none"))

    for i in range(BATCH):
        shutil.copy(work / "photo.jpg", work / f"copy{i}.jpg")
    copies = [f"copy{i}.jpg" for i in range(BATCH)]

    def batch(jobs):
        command = [program, "batch", "ChangeSaturationKRT(60)", "--jobs", str(jobs),
                   "--output-dir", f"out{jobs}", *copies]
        start = time.perf_counter()
        seconds(command, work)
        return time.perf_counter() - start

    gains = [batch(1) / batch(2) for _ in range(3)]
    print(f"batch of {BATCH}, elapsed: one job takes {statistics.median(gains):.2f} times as long as two")


if __name__ == "__main__":
    main()
