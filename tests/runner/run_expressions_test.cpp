// picturehost run: calls, their arguments, and the files that go with them.
#include <gtest/gtest.h>

#include <array>

#include "tests/runner/run_fixture.h"

namespace runner {
namespace {

TEST_F(RunCommand, SeveralExpressionsWorkInTurn) {
  const Image image = Noise(10, 10);
  Save(image, At("in.png"), "png");
  const std::string out =
      Done({"run", "-e", "InvertKRT", "-e", "CountColorKRT(&c010203)", "-e",
            "self.InvertKRT.InvertKRT", "-e", "InvertKRT()", At("in.png"), "-o", At("out.png")});
  ExpectPixels(At("out.png"), 10, 10, [&](int x, int y) { return image.At(x, y); });
  EXPECT_EQ(out, "CountColorKRT = 0\n");
}

TEST_F(RunCommand, NamesAreTheSameInCapitalsAndSmallLetters) {
  const Image image = Noise(12, 9);
  Save(image, At("in.png"), "png");
  const Surroundings here{scratch.Folder().native()};
  // A method, a parameter, a value, the current picture, constants, and what is saved.
  Done({"run", "-e", "DARK = invertkrt(LEFT = 0, TOP = 0, WIDTH = 12, HEIGHT = 9)", "-e",
        "MERGEPICTUREKRT(dark, SELF.INVERTKRT)", "in.png", "--save", "Dark=dark.png", "-o",
        "out.png"},
       here);
  for (const std::string name : {"dark.png", "out.png"})
    ExpectPixels(At(name), 12, 9, [&](int x, int y) { return Inverted(image.At(x, y)); });
  EXPECT_EQ(Done({"run", "SCROLLHORIZONTALKRT(0, TRUE, False)", "in.png"}, here),
            "SCROLLHORIZONTALKRT = true\n");
  EXPECT_EQ(RunProgram({"run", "replaceredchannelkrt(NIL)", "in.png", "-o", "no.png"}, here).err,
            "picturehost: ReplaceRedChannelKRT raised NilObjectException: The channel picture is "
            "nil.\n");
  // A file, a pair that is assigned to, and results by reference.
  Done({"run", "-e", "embeddedmaskkrt(FALSE) = PICTURE(\"in.png\")", "-e",
        "EMBEDDEDMASKKRT(SWAP = TRUE)", "-e", "COUNTCOLORSKRT", "in.png", "--save", "RED=red.bin",
        "-o", "mask.png"},
       here);
  EXPECT_EQ(ReadBytes(At("red.bin")).size(), 1024U);
  // A class and its properties.
  Done({"run", "PICTURESEPIAKRT(SEPIARED = 40, sourcepicture = Self)", "in.png", "-o", "sepia.png"},
       here);
  ExpectPixels(At("sepia.png"), 12, 9, [&](int x, int y) {
    const Pixel pixel = image.At(x, y);
    const auto grey = uint8_t((pixel[0] * 306 + pixel[1] * 601 + pixel[2] * 116) / 1024);
    return Pixel{uint8_t(std::min(255, grey + 40)), grey, grey};
  });
  // A class's table.
  std::string cube = "LUT_3D_SIZE 2\n";
  for (int i = 0; i < 8; ++i) cube += i % 2 == 0 ? "1 1 1\n" : "0 0 0\n";
  WriteBytes(At("film.cube"), cube);
  Done({"run", "PICTURELUT3DKRT(TABLE = CUBE(\"film.cube\"))", "in.png", "-o", "film.png"}, here);
  EXPECT_EQ(Read(At("film.png")).width, 12);
}

TEST_F(RunCommand, ConstantsMayBeCalculated) {
  EXPECT_EQ(Done({"run", "-e", "10 + 5", "-e", "&hFF Mod &b1000", "-e", "-2 * 3", "--no-picture"}),
            "value = 15\nvalue = 7\nvalue = -6\n");
  EXPECT_EQ(Done({"run", "-e", "1 / 4", "-e", "7 \\ 2", "-e", "&hFFFFFFFF", "--no-picture"}),
            "value = 0.25\nvalue = 3\nvalue = 4294967295\n");
  const Image image = Noise(20, 10);
  Save(image, At("in.png"), "png");
  Done({"run", "InvertKRT(2 * 2, 10 \\ 5, &hA - 1, (1 + 2) * 2)", At("in.png"), "-o",
        At("out.png")});
  ExpectPixels(At("out.png"), 20, 10, [&](int x, int y) {
    const bool inside = x >= 4 && x < 13 && y >= 2 && y < 8;
    return inside ? Inverted(image.At(x, y)) : Pixel{255, 255, 255};
  });
}

TEST_F(RunCommand, AMethodIsCalledEachTimeItIsNamed) {
  Save(MakeImage(3, 3, [](int, int) { return Pixel{255, 255, 255}; }), At("white.png"), "png");
  EXPECT_EQ(Done({"run", "-e", "isWhiteKRT", "-e", "InvertKRT", "-e", "isWhiteKRT", "-e",
                  "isBlackKRT", At("white.png"), "-o", At("out.png")}),
            "isWhiteKRT = true\nisWhiteKRT = false\nisBlackKRT = true\n");
}

TEST_F(RunCommand, PrintsNumbers) {
  Save(MakeImage(4, 2,
                 [](int x, int) {
                   return x == 0 ? Pixel{9, 8, 7} : Pixel{50, 50, 50};
                 }),
       At("in.png"), "png");
  EXPECT_EQ(Done({"run", "-e", "CountColorKRT(&c090807)", "-e", "isGrayKRT", "-e", "isGrayKRT(2)",
                  At("in.png")}),
            "CountColorKRT = 2\nisGrayKRT = false\nisGrayKRT = true\n");
}

TEST_F(RunCommand, GlobalMethodsTakeSelfAndFiles) {
  const Image one = Noise(20, 10, 3, 1), two = Noise(20, 10, 3, 2);
  Save(one, At("one.png"), "png");
  Save(two, At("two.png"), "png");
  Done({"run", "MergePictureKRT(self, picture(\"two.png\"))", At("one.png"), "-o", "merged.png"},
       {scratch.Folder().native()});
  ExpectPixels(At("merged.png"), 20, 10, [&](int x, int y) {
    const Pixel a = one.At(x, y), b = two.At(x, y);
    return Pixel{std::max(a[0], b[0]), std::max(a[1], b[1]), std::max(a[2], b[2])};
  });
  // In the order red, blue, green.
  Done({"run", "-e", "other = picture(\"two.png\")", "-e",
        "CombinePicturesKRT(self, other, other.InvertKRT)", At("one.png"), "-o", "combined.png"},
       {scratch.Folder().native()});
  ExpectPixels(At("combined.png"), 20, 10, [&](int x, int y) {
    return Pixel{one.At(x, y)[0], uint8_t(255 - two.At(x, y)[1]), two.At(x, y)[2]};
  });
}

TEST_F(RunCommand, ResultsByReferenceHaveTheirNames) {
  const Image haystack = Noise(40, 30);
  Save(haystack, At("haystack.png"), "png");
  Save(MakeImage(5, 4, [&](int x, int y) { return haystack.At(x + 22, y + 13); }), At("needle.png"),
       "png");
  EXPECT_EQ(
      Done({"run", "FindPictureKRT(picture(\"" + At("needle.png") + "\"))", At("haystack.png")}),
      "x = 22\ny = 13\nFindPictureKRT = true\n");
  EXPECT_EQ(ValueOf(Done({"run", "FindPictureKRT(picture(\"" + At("haystack.png") + "\"))",
                          At("needle.png")}),
                    "FindPictureKRT"),
            "false");
}

TEST_F(RunCommand, MemoryBlocksAreSavedAndPassedOn) {
  const Image image = Noise(50, 40);
  Save(image, At("in.png"), "png");
  std::array<std::array<uint32_t, 256>, 3> counts{};
  for (size_t i = 0; i < image.bytes.size(); ++i) ++counts[i % 3][image.bytes[i]];

  const std::string out =
      Done({"run", "CountColorsKRT", At("in.png"), "--save=green=" + At("green.bin"), "--save",
            "red=" + At("red.bin"), "--save", "blue=" + At("blue.bin")});
  EXPECT_EQ(ValueOf(out, "count"), "2000");
  EXPECT_EQ(ValueOf(out, "red").substr(0, 27), "memoryblock of 1024 bytes: ");
  // The block declared blue counts green, and the other way round.
  const std::string blocks[3] = {ReadBytes(At("red.bin")), ReadBytes(At("blue.bin")),
                                 ReadBytes(At("green.bin"))};
  for (size_t channel = 0; channel < 3; ++channel) {
    ASSERT_EQ(blocks[channel].size(), 1024U);
    for (size_t i = 0; i < 256; ++i) EXPECT_EQ(Word(blocks[channel], i), counts[channel][i]);
  }

  // Blocks accumulate when they are given again, by name or from a file.
  Done({"run", "-e", "CountColorsKRT", "-e", "CountColorsKRT(red, blue, green)", "-e",
        "CountColorsKRT(red = memoryblock(\"" + At("red.bin") + "\"))", At("in.png"), "--save",
        "red=" + At("again.bin"), "--save", "blue=" + At("fresh.bin")});
  for (size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(Word(ReadBytes(At("again.bin")), i), 2 * counts[0][i]);
    EXPECT_EQ(Word(ReadBytes(At("fresh.bin")), i), counts[1][i]);
  }
}

TEST_F(RunCommand, TablesComeFromFiles) {
  const Image image = Noise(8, 8);
  Save(image, At("in.png"), "png");
  std::string reversed, same;
  for (int i = 0; i < 256; ++i) {
    same += char(i);
    reversed += char(255 - i);
  }
  WriteBytes(At("same.bin"), same);
  WriteBytes(At("reversed.bin"), reversed);
  Done({"run", "-e", "same = memoryblock(\"same.bin\")", "-e",
        "TransformColorsKRT(memoryblock(\"reversed.bin\"), blue = same, green = same)", "in.png",
        "-o", "out.png"},
       {scratch.Folder().native()});
  ExpectPixels(At("out.png"), 8, 8, [&](int x, int y) {
    const Pixel pixel = image.At(x, y);
    return Pixel{uint8_t(255 - pixel[0]), pixel[1], pixel[2]};
  });
}

TEST_F(RunCommand, APairIsReadAndAssigned) {
  const Image image = Noise(14, 11), mask = Noise(14, 11, 3, 9);
  Save(image, At("in.png"), "png");
  Save(mask, At("mask.png"), "png");
  Done({"run", "-e", "EmbeddedMaskKRT(false) = picture(\"mask.png\")", "-e",
        "EmbeddedMaskKRT(true)", "in.png", "-o", "out.png"},
       {scratch.Folder().native()});
  ExpectPixels(At("out.png"), 14, 11, [&](int x, int y) {
    const auto grey = uint8_t(255 - mask.At(x, y)[0]);
    return Pixel{grey, grey, grey};
  });
  // The alpha bytes of the photograph itself.
  Done({"run", "EmbeddedMaskKRT(true) = picture(\"mask.png\")", "in.png", "--layout", "argb", "-o",
        "masked.png"},
       {scratch.Folder().native()});
  ExpectPixels(At("masked.png"), 14, 11, [&](int x, int y) {
    Pixel pixel = image.At(x, y);
    pixel.push_back(uint8_t(255 - mask.At(x, y)[0]));
    return pixel;
  });
}

TEST_F(RunCommand, MethodsInPlaceChangeTheCurrentPicture) {
  const Image image = Noise(9, 6);
  Save(image, At("in.png"), "png");
  EXPECT_EQ(Done({"run", "ScrollHorizontalKRT(2, true, false)", At("in.png"), "-o", At("out.png")}),
            "ScrollHorizontalKRT = true\n");
  ExpectPixels(At("out.png"), 9, 6, [&](int x, int y) { return image.At((x + 7) % 9, y); });
}

TEST_F(RunCommand, SepiaSetsItsPropertiesAndRuns) {
  const Image image = Noise(25, 15);
  Save(image, At("in.png"), "png");
  Done({"run", "PictureSepiaKRT(SepiaRed = 40, SepiaGreen = 20, FactorRed = 0.5)", At("in.png"),
        "-o", At("out.png")});
  ExpectPixels(At("out.png"), 25, 15, [&](int x, int y) {
    const Pixel pixel = image.At(x, y);
    const int grey = (pixel[0] * 512 + pixel[1] * 601 + pixel[2] * 116) / 1024;
    return Pixel{uint8_t(std::min(255, grey + 40)), uint8_t(std::min(255, grey + 20)),
                 uint8_t(std::min(255, grey))};
  });
  // Another source, and bounds that anchor at the top left.
  Done({"run",
        "PictureSepiaKRT(SourcePicture = picture(\"" + At("in.png") + "\"), MaxX = 10, MinX = 4)",
        At("out.png"), "-o", At("part.png")});
  ExpectPixels(At("part.png"), 25, 15, [&](int x, int y) {
    const Pixel pixel = image.At(x, y);
    const auto grey = uint8_t((pixel[0] * 306 + pixel[1] * 601 + pixel[2] * 116) / 1024);
    return x < 6 ? Pixel{grey, grey, grey} : Pixel{255, 255, 255};
  });
}

TEST_F(RunCommand, ATableComesFromACubeFile) {
  // Channel values of the grid come out as the table says: here green, blue and red exchanged, red
  // turned round.
  const Image image = MakeImage(16, 16, [](int x, int y) {
    return Pixel{uint8_t(17 * x), uint8_t(17 * y), uint8_t(17 * ((x * 7 + y) % 16))};
  });
  Save(image, At("in.png"), "png");
  std::string cube = "LUT_3D_SIZE 16\n";
  char line[64];
  for (int b = 0; b < 16; ++b)
    for (int g = 0; g < 16; ++g)
      for (int r = 0; r < 16; ++r) {
        std::snprintf(line, sizeof line, "%.6f %.6f %.6f\n", g / 15.0, b / 15.0, (15 - r) / 15.0);
        cube += line;
      }
  WriteBytes(At("film.cube"), cube);
  Done({"run", "PictureLut3DKRT(table = cube(\"" + At("film.cube") + "\"))", At("in.png"), "-o",
        At("out.png")});
  ExpectPixels(At("out.png"), 16, 16, [&](int x, int y) {
    const Pixel pixel = image.At(x, y);
    return Pixel{pixel[1], pixel[2], uint8_t(255 - pixel[0])};
  });
}

// A table of three points a side that darkens: 0, an eighth, 1.
std::string Darkening() {
  std::string text = "LUT_3D_SIZE 3\n";
  const std::string value[3] = {"0 ", "0.125 ", "1 "};
  for (size_t i = 0; i < 27; ++i)
    text += value[i % 3] + value[i / 3 % 3] + value[i / 9] + "# entry\n";
  return text;
}

TEST_F(RunCommand, ATableThatLosesLevelsWarnsOnce) {
  Save(Noise(16, 16), At("in.png"), "png");
  WriteBytes(At("dark.cube"), Darkening());
  // In the middle, at 127 and 128, where the file is at an eighth, the grid lies between 119 and
  // 136, where the file is at 29.75 and 46.75. Rounded, 127 is 32 in the file and
  // 29.75 + 8 / 17 * 17 = 37.75 of the grid.
  const Finished finished = RunProgram(
      {"run", "-e", "PictureLut3DKRT(table = cube(\"dark.cube\"))", "-e",
       "PictureLut3DKRT(table = cube(\"dark.cube\"))", At("in.png"), "-o", At("out.png")},
      {scratch.Folder().native()});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.err,
            "picturehost: warning: 'dark.cube' has 3 points a side and is resampled to 16: colours "
            "are up to 6 levels off\n");
}

TEST_F(RunCommand, AClassWithoutItsTableWarns) {
  const Image image = Noise(9, 7);
  Save(image, At("in.png"), "png");
  const Finished finished =
      RunProgram({"run", "PictureLut3DKRT(MaxX = 4)", At("in.png"), "-o", At("out.png")});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.err,
            "picturehost: warning: PictureLut3DKRT is given no table and makes every pixel that it "
            "processes black; Table = cube(\"file.cube\") gives it one\n");
  ExpectPixels(At("out.png"), 9, 7, [](int x, int) {
    return x < 4 ? Pixel{0, 0, 0} : Pixel{255, 255, 255};
  });
}

TEST_F(RunCommand, CurvesComeFromACubeFile) {
  const Image image = Noise(12, 12);
  Save(image, At("in.png"), "png");
  Save(Noise(12, 12, 3, 5), At("other.png"), "png");
  // Red as it is, green turned round, blue half.
  WriteBytes(At("film.cube"), "TITLE \"curves\"\nLUT_1D_SIZE 2\n0 1 0\n1 0 0.502 # blue\n");
  const auto expected = [&](int x, int y) {
    const Pixel pixel = image.At(x, y);
    return Pixel{pixel[0], uint8_t(255 - pixel[1]), uint8_t(pixel[2] * 0.502 + 0.5)};
  };
  const Surroundings here{scratch.Folder().native()};
  Done({"run", "TransformColorsKRT(curves(\"film.cube\"))", "in.png", "-o", "out.png"}, here);
  ExpectPixels(At("out.png"), 12, 12, expected);
  // With a name, and with an argument that follows.
  Done({"run", "-e", "film = curves(\"film.cube\")", "-e", "before = self", "-e",
        "TransformColorsKRT(film, picture(\"other.png\"))", "in.png", "-o", "out.png"},
       here);
  ExpectPixels(At("out.png"), 12, 12, expected);
  EXPECT_EQ(Done({"run", "curves(\"film.cube\")", "--no-picture"}, here),
            "curves = curves of red, green and blue\n");
}

TEST_F(RunCommand, OneFileHasCurvesAndATable) {
  const Image image = MakeImage(16, 16, [](int x, int y) {
    return Pixel{uint8_t(17 * x), uint8_t(17 * y), uint8_t(17 * ((x * 3 + y) % 16))};
  });
  Save(image, At("in.png"), "png");
  // The curves turn round, the table makes grey of red.
  std::string cube = "LUT_1D_SIZE 2\nLUT_3D_SIZE 2\n1 1 1\n0 0 0\n";
  for (int i = 0; i < 4; ++i) cube += "0 0 0\n1 1 1\n";
  WriteBytes(At("both.cube"), cube);
  const Surroundings here{scratch.Folder().native()};
  Done({"run", "PictureLut3DKRT(table = cube(\"both.cube\"))", "in.png", "-o", "cube.png"}, here);
  Done({"run", "TransformColorsKRT(curves(\"both.cube\"))", "in.png", "-o", "curves.png"}, here);
  ExpectPixels(At("cube.png"), 16, 16, [&](int x, int y) {
    const auto grey = uint8_t(255 - image.At(x, y)[0]);
    return Pixel{grey, grey, grey};
  });
  ExpectPixels(At("curves.png"), 16, 16, [&](int x, int y) { return Inverted(image.At(x, y)); });
}

TEST_F(RunCommand, StringsAreSavedAndReadBack) {
  const Image image = Noise(3, 2);
  Save(image, At("in.png"), "png");
  // 40 bytes of header, then red, green, blue.
  std::string expected("PPIC\0\0\0\x3A\0\0\0\3\0\0\0\2\0\0\0\x20\0\0\0\x28", 24);
  expected += std::string(16, '\0') + std::string(image.bytes.begin(), image.bytes.end());
  EXPECT_EQ(Done({"run", "PicturetoBinaryStringKRT(self)", At("in.png"), "--save",
                  "PicturetoBinaryStringKRT=" + At("in.ppic")}),
            "PicturetoBinaryStringKRT = string of 58 bytes\n");
  EXPECT_EQ(ReadBytes(At("in.ppic")), expected);
  Done({"run", "BinaryStringtoPictureKRT(string(\"" + At("in.ppic") + "\"))", "--no-picture", "-o",
        At("out.png")});
  EXPECT_EQ(Read(At("out.png")).bytes, image.bytes);
}

TEST_F(RunCommand, SoundsBringTheirBits) {
  const std::string sound = "samples(\"" + kExamples + "sounds/chord.wav\")";
  const std::string out = Done(
      {"run",
       "RenderSamplesKRT(" + sound + ", Smooth = 1, Width = 120, Height = 50, outlinewidth = 0)",
       "--no-picture", "-o", At("wave.png")});
  EXPECT_EQ(out, "SampleCount = 22050\nBits = 8\n");
  const Image wave = Read(At("wave.png"));
  EXPECT_EQ(wave.width, 120);
  EXPECT_EQ(wave.height, 50);
  // Floating point needs its SampleCount, which is filled in too. Silence is a line in the middle.
  std::string header(
      "RIFF\0\0\0\0WAVEfmt \x10\0\0\0\3\0\1\0\x40\x1F\0\0\0\x7D\0\0\4\0\x20\0data\0\0\0\0", 44);
  header[4] = char(36 + 400 - 256);
  header[5] = 1;
  header[40] = char(400 - 256);
  header[41] = 1;
  WriteBytes(At("silence.wav"), header + std::string(400, '\0'));
  EXPECT_EQ(
      Done({"run",
            "RenderSamplesKRT(samples(\"" + At("silence.wav") +
                "\"), Smooth = 1, Width = 10, Height = 8, outlinewidth = 0, BackColor = &c010203, "
                "ForeColor = &c040506)",
            "--no-picture", "-o", At("line.png")}),
      "SampleCount = 100\nBits = -32\n");
  ExpectPixels(At("line.png"), 10, 8, [](int, int y) {
    return y == 4 ? Pixel{4, 5, 6} : Pixel{1, 2, 3};
  });
}

TEST_F(RunCommand, PicturesWithNamesAreSavedToo) {
  const Image image = Noise(6, 5);
  Save(image, At("in.png"), "png");
  Done({"run", "dark = InvertKRT", At("in.png"), "--save", "dark=" + At("dark.bmp"), "-o",
        At("same.png")});
  ExpectPixels(At("dark.bmp"), 6, 5, [&](int x, int y) { return Inverted(image.At(x, y)); });
  ExpectPixels(At("same.png"), 6, 5, [&](int x, int y) { return image.At(x, y); });
}

TEST_F(RunCommand, NamesOfFilesMayBeOdd) {
  const Image image = Noise(5, 5);
  const Surroundings here{scratch.Folder().native()};
  for (const std::string name :
       {"-photo.png", "a b.png", "line\nend.png", "--output.png", "'q\".png"}) {
    Save(image, At(name), "png");
    Done({"run", "--output=-out.png", "--", "InvertKRT", name}, here);
    ExpectPixels(At("-out.png"), 5, 5, [&](int x, int y) { return Inverted(image.At(x, y)); });
    std::filesystem::remove(At("-out.png"));
  }
}

}  // namespace
}  // namespace runner
