"""The picture-processing plug-in, called from Python as its host would call it.

    import picturehost
    photo = picturehost.Picture.open("photo.jpg")
    photo.InvertKRT(10, 10, width=200, height=100).save("inverted.png")

Methods, functions and classes are those that the plug-in registered, under their own names; their
docstrings begin with the declarations. Arguments may have names, and defaults are the declared ones.

    colours         0xRRGGBB or "#rrggbb"
    strings         str (UTF-8) or bytes; results are bytes
    memory blocks   anything with bytes: bytes, bytearray, arrays; the method gets a copy. Results are
                    arrays of uint8
    byref           parameters may be left out. What they hold after the call comes back as a named
                    tuple; where the method itself tells true or false, as the tuple or None
    pairs           read as picture.EmbeddedMaskKRT[False], assigned in the same way
    nil             None, or NilResultError where the arguments explain it

The host is one thread's. Every call keeps the interpreter lock, since pictures share their memory
with arrays, and the module has a lock of its own besides: threads may call at any time, one at a time
is in the host. Opening and saving files and batches let other threads run meanwhile. A process that is
forked from one that has saved pictures, or opened WebP files, can do neither.
"""

import functools as _functools
import os as _os
import pathlib as _pathlib

from . import _picturehost
from ._picturehost import Picture

_picturehost.start(_pathlib.Path(__file__).with_name("Picture.so"))

from . import _entries, _files, _pillow  # noqa: E402  the entries are made by asking the host

for _name in ("Error", "NilResultError", "PictureFileWarning", *_picturehost.exception_classes()):
    globals()[_name] = getattr(_picturehost, _name)
_entries.add_to(globals())
_files.add_to(Picture)
_os.register_at_fork(before=_picturehost.before_fork, after_in_parent=_functools.partial(_picturehost.after_fork, False),
                     after_in_child=_functools.partial(_picturehost.after_fork, True))
Picture.from_pil = staticmethod(_pillow.from_pil)
Picture.to_pil = _pillow.to_pil
Picture.__module__ = __name__
__all__ = sorted(name for name in globals() if not name.startswith("_"))
