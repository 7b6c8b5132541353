// What --help says after the options.
#pragma once

namespace runner {

inline constexpr const char* kHelp = R"(Examples:
  picturehost list
  picturehost run photo.jpg InvertKRT --output inverted.png
  picturehost run photo.jpg 'ColornessKRT(20)'
  picturehost batch 'ChangeSaturationKRT(150)' --output-dir vivid photos/*.jpg

`picturehost run --help` explains expressions.)";

inline constexpr const char* kRunHelp =
    R"(Expressions are calls as a program would write them, without the picture in front:
  InvertKRT(10, 10, 200, 100)         a method of the current picture, at first PHOTO
  ChangeContrastKRT(Contrast = 0.4)   arguments may have names
  MergePictureKRT(self, picture("b.png"))   `self` is the current picture
  EmbeddedMaskKRT(false) = picture("mask.png")   a pair is assigned to
  PictureSepiaKRT(SepiaRed = 40, SepiaGreen = 20)   a class: properties, then Run
  mask = ExtractColorRectangleMaskKRT   a name for a value, for later expressions
A picture that an expression comes to becomes the current one. Everything else is printed as
NAME = VALUE, results by reference with the names of their parameters; these, and names that were
assigned, can be used from then on. Names are the same in capitals and small letters.
Constants: 12, -0.5, &hFF, &o17, &b101, true, nil, "text", &c274C5A. Arithmetic with constant
numbers, + - * / \ Mod and parentheses, may stand where a number may: 10 + 5, -2 * (3 - 1).

Files in expressions:
  picture("f")       a picture, of several pages the first
  memoryblock("f")   the bytes of a file; string("f") the same as a string
  cube("f.cube")     a colour table for PictureLut3DKRT, of any size
  curves("f.cube")   the one-dimensional tables of such a file, for TransformColorsKRT
  samples("f.wav")   a sound file for RenderSamplesKRT, with the Bits and SampleCount that go
                     with it; samples("f.wav", 2) is its second channel alone, otherwise the mean

Examples:
  picturehost run photo.jpg InvertKRT 'ChangeSaturationKRT(150)' -o out.png
  picturehost run photo.jpg 'TintPictureKRT(self, &c4D961D, &cFFE4B0)' -o tinted.jpg
  picturehost run photo.jpg 'PictureLut3DKRT(table = cube("film.cube"))' -o graded.tiff
  picturehost run photo.jpg 'TransformColorsKRT(curves("gamma.cube"))' -o lighter.png
  picturehost run photo.jpg CountColorsKRT --save red=red.bin
  picturehost run photo.jpg 'data = PicturetoBinaryStringKRT(self)' --save data=photo.ppic
  picturehost run --no-picture -o wave.png \
      'RenderSamplesKRT(samples("speech.wav"), 0, 1, 800, 200, 1, AutoScale = true)'

The format of FILE is that of its extension; "out.jpg[Q=95,interlace]" has options of libvips for
it. Every page or frame of PHOTO is a picture of its own, and all are saved together. What the file
says, its EXIF, XMP, IPTC, profile, comments and resolution, is kept. What can't be done is one line on standard error, and
then nothing is written. Names that begin with a dash go after --.)";

inline constexpr const char* kBatchHelp =
    R"(Every file is a PHOTO of its own to the same expressions; `picturehost run --help` explains those.
A file that fails is one line on standard error, and the others go on; the exit status says whether
all succeeded. Results appear whole or not at all, so that an interrupted batch can be taken up again
with --skip-existing.

Examples:
  picturehost batch InvertKRT --output-dir inverted *.jpg
  picturehost batch 'PictureSepiaKRT(SepiaRed = 40)' -d sepia -f png --jobs 4 -- -odd-name.jpg)";

}  // namespace runner
