// What --help says after the options.
#pragma once

namespace runner {

inline constexpr const char* kHelp = R"(Examples:
  picturehost list
  picturehost run InvertKRT photo.jpg --output inverted.png
  picturehost run 'ColornessKRT(20)' photo.jpg
  picturehost batch 'ChangeSaturationKRT(150)' --output-dir vivid photos/*.jpg

`picturehost run --help` explains expressions.)";

inline constexpr const char* kRunHelp =
    R"(The first word is the expression, unless -e gives one or more. Expressions are calls as a program would write them, without the picture in front:
  InvertKRT(10, 10, 200, 100)         a method of the current picture, at first FILE
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
  picturehost run -e InvertKRT -e 'ChangeSaturationKRT(150)' photo.jpg -o out.png
  picturehost run 'TintPictureKRT(self, &c4D961D, &cFFE4B0)' photo.jpg -o tinted.jpg
  picturehost run 'PictureLut3DKRT(table = cube("film.cube"))' photo.jpg -o graded.tiff
  picturehost run 'TransformColorsKRT(curves("gamma.cube"))' photo.jpg -o lighter.png
  picturehost run CountColorsKRT photo.jpg --save red=red.bin
  picturehost run 'data = PicturetoBinaryStringKRT(self)' photo.jpg --save data=photo.ppic
  picturehost run --no-picture -o wave.png \
      'RenderSamplesKRT(samples("speech.wav"), 0, 1, 800, 200, 1, AutoScale = true)'

The format of an output is that of its extension; "out.jpg[Q=95,interlace]" has options of libvips
for it. Every page or frame of FILE is a picture of its own, and all are saved together. What the file
says, its EXIF, XMP, IPTC, profile, comments and resolution, is kept. What can't be done is one line on
standard error, and then nothing is written. Names that begin with a dash go after --.)";

inline constexpr const char* kBatchHelp =
    R"(The expressions are evaluated on every file by itself; `picturehost run --help` explains them.
Without -d, -o, --in-place and --save what the expressions print is all. A file that fails is one
line on standard error, and the others go on; the exit status says whether all succeeded.

Names, formats and places are checked before anything is written. Results appear whole or not at all.
What was made of what stands in picturehost-manifest.jsonl with the results: --resume takes an
interrupted batch up again, and does anew what has changed.

In PATTERN {dir} is the folder of the file, {below} the folders between the input folder and the
file, {stem} its name without extension, {ext} its extension or that of --format, and {name} is
{stem}{ext}. {{ and }} are braces.

Examples:
  picturehost batch InvertKRT --output-dir inverted *.jpg
  picturehost batch InvertKRT -r archive -d inverted --resume
  picturehost batch 'PictureSepiaKRT(SepiaRed = 40)' -o '{dir}/{stem}-sepia{ext}' *.jpg
  find . -name '*.jpg' -print0 | picturehost batch InvertKRT --files-from - -0 --in-place
  picturehost batch 'ColornessKRT(20)' -r archive --csv
  picturehost batch InvertKRT -d inverted --jobs 4 -- -odd-name.jpg)";

}  // namespace runner
