"""What Picture has for files: open and save, with the command line's options as keywords.

The keywords become words of the command line, and the program's own parser makes sense of them. Each
function that a user calls calls a helper here, and that calls the extension module: warnings name the
line two calls above.
"""

import os
import types

from . import _picturehost
from ._picturehost import Picture


def _words(**options):
    """Options as the command line has them; None and False are those that it leaves out."""
    words = []
    for name, value in options.items():
        if value is not None and value is not False:
            option = "--" + name.replace("_", "-")
            words.append(option if value is True else f"{option}={value}")
    return words


def _name_of(file):
    """The path of a file object; None where it has none."""
    name = getattr(file, "name", None)
    return name if isinstance(name, (str, bytes)) else None


def _content(file):
    """All bytes of a file object, from its beginning where it can go there."""
    if getattr(file, "seekable", lambda: hasattr(file, "seek"))():
        file.seek(0)
    data = file.read()
    if isinstance(data, str):
        raise TypeError("the file gives text; open it in binary mode")
    return data


def _open(path, words):
    if hasattr(path, "read"):
        return _picturehost.open_bytes(_content(path), os.fsdecode(_name_of(path) or "the file object"), words)
    return _picturehost.open(os.fspath(path), words)


def _open_bytes(data, words):
    return _picturehost.open_bytes(memoryview(data), "the bytes", words)


def _write(file, data):
    """Writes all of it; a file without a buffer may take less at a time."""
    while data:
        taken = file.write(data)
        if taken == 0:
            raise OSError("the file object takes no more bytes")
        data = data[taken:] if isinstance(taken, int) else b""


def _save(pictures, path, format, words):
    if not hasattr(path, "write"):
        return _picturehost.save(pictures, os.fspath(path), words + _words(format=format))
    if format is None:
        format = _picturehost.format_of(_name_of(path) or "")
    if format is None:
        raise ValueError("the name of the file object doesn't tell the format; format= does")
    data = _picturehost.to_bytes(pictures, format, words)
    # Where a warning is an error, or encoding fails, nothing is written.
    return _write(path, data)


def _to_bytes(pictures, format, words):
    return _picturehost.to_bytes(pictures, format, words)


def open_picture(path, *, page=1, damage="warn", keep_alpha=False, to_srgb=False, strict=False, pixel_limit=250):
    """Open one page of a picture file, turned as its orientation says.

    path          str, bytes or os.PathLike, or a file object that is open for reading bytes
    page          from 1
    damage        of files that are damaged: "warn" and use what can be decoded, "fail", or "ignore" it
    keep_alpha    the picture is opaque, and save puts the file's alpha over the result
    to_srgb       convert colours through the file's profile
    strict        what would be a PictureFileWarning is an Error
    pixel_limit   megapixels that all pages may have; larger files are not decoded
    """
    return _open(path, _words(page=page, damage=damage, keep_alpha=keep_alpha, to_srgb=to_srgb, strict=strict,
                              pixel_limit=pixel_limit))[0]


def open_pages(path, *, damage="warn", keep_alpha=False, to_srgb=False, strict=False, pixel_limit=250):
    """Open all pages or frames of a picture file, as a list. The keywords are those of Picture.open."""
    return _open(path, _words(damage=damage, keep_alpha=keep_alpha, to_srgb=to_srgb, strict=strict,
                              pixel_limit=pixel_limit))


def from_bytes(data, *, page=1, damage="warn", keep_alpha=False, to_srgb=False, strict=False, pixel_limit=250):
    """Open a picture file that lies in memory: anything with bytes. The keywords are those of Picture.open."""
    return _open_bytes(data, _words(page=page, damage=damage, keep_alpha=keep_alpha, to_srgb=to_srgb, strict=strict,
                                    pixel_limit=pixel_limit))[0]


def save(self, path, *, format=None, metadata="keep", quality=None, lossless=False, compression=None, strict=False):
    """Write a file, which appears whole or not at all. What isn't said is as in the file that the picture is from.

    path          str, bytes or os.PathLike, or a file object that is open for writing bytes. Options of libvips
                  for the format may stand behind a path: "out.jpg[Q=95,interlace]"
    format        "png", "jpeg", "tiff", ...; otherwise that of the name
    metadata      "keep" all that the file said, its "profile" alone, or "none"
    quality       from 1 to 100
    lossless      no pixel changes on its way to the file
    compression   PNG: 0 to 9; TIFF: "none", "lzw", "deflate", "zstd", "packbits", "jpeg" or "ccittfax4"
    strict        what would be a PictureFileWarning is an Error, and nothing is written
    """
    _save([self], path, format, _words(metadata=metadata, quality=quality, lossless=lossless,
                                       compression=compression, strict=strict))


def save_pages(pages, path, *, format=None, metadata="keep", quality=None, lossless=False, compression=None,
               strict=False):
    """Write pictures of one size as the pages or frames of one file. The keywords are those of save.

    What the file says is what the file of the first picture said.
    """
    pages = list(pages)
    for page in pages:
        if not isinstance(page, Picture):
            raise TypeError(f"a page is a Picture, not {type(page).__name__}")
    _save(pages, path, format, _words(metadata=metadata, quality=quality, lossless=lossless,
                                            compression=compression, strict=strict))


def to_bytes(self, format, *, metadata="keep", quality=None, lossless=False, compression=None, strict=False):
    """Give the file that save would write. The keywords are those of save.

    Options of libvips may stand behind the format: "jpeg[Q=95,interlace]".
    """
    return _to_bytes([self], format, _words(metadata=metadata, quality=quality, lossless=lossless,
                                            compression=compression, strict=strict))


def metadata_of(self):
    """What the picture's file said besides its pixels, to be read; empty for a picture from elsewhere.

    format, pages, bits, grey, palette, lossless and interlaced are always there; the others where the file
    says something of them: quality (JPEG), compression (TIFF), orientation, resolution (dots per inch,
    horizontally and vertically), comments, delays (milliseconds) and loop (0: for ever), and as bytes exif, xmp, iptc and
    icc_profile.
    """
    return types.MappingProxyType(_picturehost.metadata(self))


def repr_png(self):
    """The picture as notebooks show it."""
    return _picturehost.png(self)


def add_to(picture):
    picture.open = staticmethod(open_picture)
    picture.open_pages = staticmethod(open_pages)
    picture.from_bytes = staticmethod(from_bytes)
    picture.save = save
    picture.save_pages = staticmethod(save_pages)
    picture.to_bytes = to_bytes
    picture.metadata = property(metadata_of)
    picture._repr_png_ = repr_png
    for name in ("open", "open_pages", "from_bytes", "save", "save_pages", "to_bytes"):
        function = getattr(picture, name)
        function.__name__, function.__qualname__, function.__module__ = name, f"Picture.{name}", "picturehost"
