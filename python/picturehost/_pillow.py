"""Pictures from Pillow's images and back."""

from ._picturehost import Picture


def from_pil(image, *, like=None):
    """Make a picture from a Pillow image of any mode; it has memory of its own.

    What the file of the picture `like` said is the new picture's as well.
    """
    return Picture.from_array(image.convert("RGBA"), copy=True, like=like)


def to_pil(self):
    """Give a Pillow image of mode RGBA; it has memory of its own."""
    from PIL import Image  # only here, so that those without Pillow can use the rest

    return Image.fromarray(self.to_array()).copy()
