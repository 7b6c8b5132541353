#!/usr/bin/env python3
"""Packs files into a zip that is the same byte for byte whenever and wherever it is made.

    zip.py RESULT.zip FILE...

The files lie in a folder that is named like the zip; files that end in .bundle may be run.
"""
import pathlib
import sys
import zipfile

target, *files = map(pathlib.Path, sys.argv[1:])
unfinished = target.with_suffix(".unfinished")
with zipfile.ZipFile(unfinished, "w") as archive:
    for file in files:
        entry = zipfile.ZipInfo(f"{target.stem}/{file.name}", date_time=(1980, 1, 1, 0, 0, 0))
        entry.create_system = 3  # permissions are those of Unix
        entry.external_attr = (0o100755 if file.suffix == ".bundle" else 0o100644) << 16
        entry.compress_type = zipfile.ZIP_DEFLATED
        archive.writestr(entry, file.read_bytes(), compresslevel=9)
unfinished.replace(target)
print(target)
