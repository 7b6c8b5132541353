// What can't be done is one clear line, and then nothing is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "places.h"
#include "tests/runner/images.h"
#include "tests/runner/program.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

class Mistakes : public ::testing::Test {
 protected:
  Mistakes() {
    Save(Noise(20, 10), scratch / "in.png", "png");
    Save(Noise(10, 20), scratch / "tall.png", "png");
    WriteBytes(scratch / "text.png", "not a picture");
    WriteBytes(scratch / "cut.png", ReadBytes(scratch / "in.png").substr(0, 300));
    WriteBytes(scratch / "bad.cube", "LUT_3D_SIZE 2\n0 0\n");
    WriteBytes(scratch / "one.cube", "LUT_1D_SIZE 2\n0 0 0\n1 1 1\n");
    WriteBytes(scratch / "three.cube",
               "LUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n");
    WriteBytes(scratch / "short.bin", "abc");
    WriteBytes(scratch / "out.png", "before");
    fs::create_directory(scratch / "folder");
  }

  // Runs in the scratch folder; gives the line without its beginning. Nothing there may change.
  std::string Complaint(const std::vector<std::string>& arguments, int status = 1) {
    const size_t before = FileCount();
    const Finished finished = RunProgram(arguments, {scratch.Folder().native()});
    EXPECT_EQ(finished.status, status) << finished.err;
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
    EXPECT_EQ(FileCount(), before);
    EXPECT_EQ(ReadBytes(scratch / "out.png"), "before");
    const std::string start = "picturehost: ";
    EXPECT_TRUE(finished.err.starts_with(start)) << finished.err;
    return finished.err.size() < start.size() + 1
               ? ""
               : finished.err.substr(start.size(), finished.err.size() - start.size() - 1);
  }
  // The same for one expression on in.png.
  std::string Of(const std::string& expression) {
    return Complaint({"run", expression, "in.png", "-o", "out.png"});
  }

  size_t FileCount() {
    return size_t(std::distance(fs::recursive_directory_iterator(scratch.Folder()),
                                fs::recursive_directory_iterator()));
  }

  Scratch scratch;
};

TEST_F(Mistakes, FilesThatAreNoPictures) {
  EXPECT_EQ(Complaint({"run", "InvertKRT", "no.png", "-o", "out.png"}),
            "can't open 'no.png': No such file or directory");
  EXPECT_EQ(Complaint({"run", "InvertKRT", "folder", "-o", "out.png"}),
            "can't open 'folder': Is a directory");
  EXPECT_EQ(Complaint({"run", "InvertKRT", "cut.png", "-o", "out.png"}),
            "'cut.png' is truncated, and nothing of it can be decoded");
  EXPECT_NE(Complaint({"run", "InvertKRT", "text.png", "-o", "out.png"}).find("isn't an image"),
            std::string::npos);
  EXPECT_EQ(Complaint({"run", "InvertKRT", "in.png", "-o", "out.png", "--pixel-limit", "0.000199"}),
            "'in.png' has 20 x 10 pixels, more than the limit of 199 (see --pixel-limit)");
  EXPECT_EQ(Of("MergePictureKRT(self, picture(\"no\nno.png\"))"),
            "can't open 'no\\nno.png': No such file or directory");
  EXPECT_EQ(Of("PictureLut3DKRT(table = cube(\"bad.cube\"))"),
            "'bad.cube' isn't a table that can be used, line 2: expected three numbers");
  EXPECT_NE(Of("RenderSamplesKRT(samples(\"in.png\"), 0, 1, 9, 9, 0)")
                .find("'in.png' isn't a sound file that can be opened"),
            std::string::npos);
}

TEST_F(Mistakes, ExpressionsThatAreNone) {
  EXPECT_EQ(Of("InvertKRT(10, 10"),
            "in 'InvertKRT(10, 10', column 17: expected ',' or ')' but it ends here");
  EXPECT_EQ(Of(""), "in '', column 1: expected a call or a value but it ends here");
  EXPECT_EQ(Of("PictureSepiaKRT(SepiaRed = 40, sepiared = 20)"),
            "in 'PictureSepiaKRT(SepiaRed = 40, sepiared = 20)', column 32: sepiared is given "
            "twice");
  EXPECT_EQ(
      Of("PictureLut3DKRT(Table = cube(\"three.cube\"), table = cube(\"three.cube\"))"),
      "in '...DKRT(Table = cube(\"three.cube\"), table = cube(\"three.cube\"))', column 45: table "
      "is given twice");
  EXPECT_EQ(Of("ChangeContrastKRT(Contrast = 1.5, CONTRAST = 2)"),
            "in 'ChangeContrastKRT(Contrast = 1.5, CONTRAST = 2)', column 35: CONTRAST is given "
            "twice");
  EXPECT_EQ(Of("ChangeSaturationKRT(150, amount = 2)"),
            "Amount is given twice; it is declared ChangeSaturationKRT(Amount as integer) as "
            "picture");
  EXPECT_EQ(Of("picture(\"caf\xC3\xA9.png\") + 1"),
            "in 'picture(\"caf\xC3\xA9.png\") + 1', column 1: only constants can be calculated "
            "with, and 'picture' is a name");
  EXPECT_EQ(Of("picture(\"caf\xC3\xA9.png\", 1 / 0)"),
            "in 'picture(\"caf\xC3\xA9.png\", 1 / 0)', column 23: division by zero");
  EXPECT_EQ(Of("ChangeSaturationKRT(&h1FFFFFFFF)"),
            "in 'ChangeSaturationKRT(&h1FFFFFFFF)', column 21: whole numbers reach from "
            "-2147483648 to 4294967295");
}

TEST_F(Mistakes, NamesThatNothingHas) {
  EXPECT_EQ(Of("InvrtKRT"),
            "there is no method, class or value called InvrtKRT; did you mean InvertKRT?");
  EXPECT_EQ(Of("Blur(3)"), "there is no method, class or value called Blur");
  EXPECT_EQ(Of("self.TintPictureKRT"),
            "there is no method of pictures called TintPictureKRT; did you mean FindPictureKRT?");
  EXPECT_EQ(Of("MergePictureKRT(self, pictur(\"in.png\"))"),
            "there is no method, class or value called pictur; did you mean picture?");
  EXPECT_EQ(Of("PictureSepiaKRT(SepiaRde = 4)"),
            "PictureSepiaKRT has no property SepiaRde; did you mean SepiaRed?");
  EXPECT_EQ(Of("INVRTKRT"),
            "there is no method, class or value called INVRTKRT; did you mean InvertKRT?");
  EXPECT_EQ(Of("picturesepiakrt(SEPIARDE = 4)"),
            "PictureSepiaKRT has no property SEPIARDE; did you mean SepiaRed?");
  EXPECT_EQ(Of("PictureLut3DKRT(TABEL = cube(\"three.cube\"), table = cube(\"three.cube\"))"),
            "PictureLut3DKRT has no table called TABEL; did you mean Table?");
  EXPECT_EQ(Of("PictureSepiaKRT(SepiaRed = cube(\"three.cube\"))"),
            "PictureSepiaKRT has no table called SepiaRed");
  EXPECT_EQ(Complaint({"run", "CountColorsKRT", "in.png", "--save", "RDE=x.bin"}),
            "nothing is called RDE that could be saved; did you mean red?");
  EXPECT_EQ(Complaint({"run", "CountColorsKRT", "in.png", "--save", "rde=x.bin"}),
            "nothing is called rde that could be saved; did you mean red?");
  // Found before anything is evaluated.
  EXPECT_EQ(Complaint({"run", "-e", "InvertKRT", "-e", "InvrtKRT", "no.png", "-o", "out.png"}),
            "there is no method, class or value called InvrtKRT; did you mean InvertKRT?");
}

TEST_F(Mistakes, ArgumentsThatDoNotFit) {
  EXPECT_EQ(Of("ReplaceColorKRT(&c000000)"),
            "ReplaceWithColor is missing; it is declared ReplaceColorKRT(SearchColor as color, "
            "ReplaceWithColor as color) as picture");
  EXPECT_NE(
      Of("ChangeSaturationKRT(1, 2)").find("ChangeSaturationKRT(Amount as integer) as picture"),
      std::string::npos);
  EXPECT_NE(
      Of("ChangeSaturationKRT(\"much\")").find("ChangeSaturationKRT(Amount as integer) as picture"),
      std::string::npos);
  EXPECT_NE(Of("ChangeSaturationKRT(Amuont = 3)")
                .find("ChangeSaturationKRT(Amount as integer) as picture"),
            std::string::npos);
  EXPECT_EQ(Of("InvertKRT(1, 2, 3)"),
            "the arguments fit none of: InvertKRT(left as integer,top as integer,width as "
            "integer,height as integer) as picture; InvertKRT as picture");
  EXPECT_EQ(Of("picture(3)"),
            "picture takes the name of a file in quotation marks: picture(\"file\")");
  EXPECT_EQ(Of("InvertKRT = self"), "nothing can be assigned to InvertKRT");
  EXPECT_EQ(Of("PictureSepiaKRT(4)").substr(0, 54),
            "arguments of PictureSepiaKRT set its properties and ne");
  EXPECT_EQ(Of("CountColorKRT(&c000000).InvertKRT"),
            "what stands before .InvertKRT isn't a picture");
}

TEST_F(Mistakes, TablesThatDoNotFit) {
  EXPECT_EQ(Of("PictureLut3DKRT(table = cube(\"one.cube\"))"),
            "'one.cube' holds a one-dimensional table alone, which goes to "
            "TransformColorsKRT(curves(\"file.cube\"))");
  EXPECT_EQ(Of("TransformColorsKRT(curves(\"three.cube\"))"),
            "'three.cube' holds a three-dimensional table alone, which goes to "
            "PictureLut3DKRT(table = cube(\"file.cube\"))");
  EXPECT_EQ(Of("CountColorKRT(cube(\"three.cube\"))"),
            "a colour table is for a class that has one, not for CountColorKRT");
  EXPECT_EQ(Of("EmbeddedMaskKRT(false) = cube(\"three.cube\")"),
            "a colour table is for a class that has one, not for EmbeddedMaskKRT");
  const std::string curves =
      "curves are three memory blocks, as in TransformColorsKRT(curves(\"file.cube\")), and don't "
      "fit ";
  // These blocks are results.
  EXPECT_EQ(Of("CountColorsKRT(curves(\"one.cube\"))"), curves + "CountColorsKRT");
  EXPECT_EQ(Of("InvertKRT(curves(\"one.cube\"))"), curves + "InvertKRT");
  EXPECT_EQ(Of("TransformColorsKRT(red = curves(\"one.cube\"))"),
            curves + "red of TransformColorsKRT");
  EXPECT_EQ(Of("TransformColorsKRT(nil, curves(\"one.cube\"))"), curves + "TransformColorsKRT");
  EXPECT_EQ(Of("EmbeddedMaskKRT(false) = curves(\"one.cube\")"), curves + "EmbeddedMaskKRT");
  EXPECT_EQ(Of("PictureSepiaKRT(SourcePicture = curves(\"one.cube\"))"),
            curves + "SourcePicture of PictureSepiaKRT");
  EXPECT_EQ(Of("curves(3)"),
            "curves takes the name of a file in quotation marks: curves(\"file\")");
  // Found before the picture is looked for.
  EXPECT_EQ(
      Complaint({"run", "PictureLut3DKRT(table = cube(\"one.cube\"))", "no.png", "-o", "out.png"})
          .substr(0, 10),
      "'one.cube'");
}

TEST_F(Mistakes, ExceptionsOfTheHost) {
  EXPECT_EQ(Of("ReplaceRedChannelKRT(nil)"),
            "ReplaceRedChannelKRT raised NilObjectException: The channel picture is nil.");
  EXPECT_EQ(Of("TransformColorsKRT(nil, nil, nil)"),
            "TransformColorsKRT raised NilObjectException: red memoryblock is nil");
}

TEST_F(Mistakes, NilResultsSayWhy) {
  EXPECT_EQ(Of("MergePictureKRT(self, picture(\"tall.png\"))"),
            "MergePictureKRT gave nil: the pictures differ in size, 20 x 10 and 10 x 20");
  EXPECT_EQ(Of("MergePictureKRT(self, nil)"),
            "MergePictureKRT gave nil: a picture among the arguments is nil");
  EXPECT_EQ(
      Of("BinaryStringtoPictureKRT(\"text\")"),
      "BinaryStringtoPictureKRT gave nil: the string isn't a whole picture in the binary format");
  EXPECT_EQ(Of("RenderSamplesKRT(memoryblock(\"short.bin\"), 3, 1, 9, 9, 0, Bits = 24)"),
            "RenderSamplesKRT gave nil: Bits must be 7, 8, 15, 16, -32 or -64");
  EXPECT_EQ(Of("RenderSamplesKRT(memoryblock(\"short.bin\"), 4, 1, 9, 9, 0)"),
            "RenderSamplesKRT gave nil: the memory block holds fewer than SampleCount samples");
  EXPECT_EQ(Of("RenderSamplesKRT(memoryblock(\"short.bin\"), 4, 1, 0, 9, 0)"),
            "RenderSamplesKRT gave nil: the memory block holds fewer than SampleCount samples");
  EXPECT_EQ(Of("RenderSamplesKRT(memoryblock(\"short.bin\"), 0, 1, 0, 9, 0, Bits = -32)"),
            "RenderSamplesKRT gave nil: SampleCount must be given for floating-point samples");
  EXPECT_EQ(Of("RenderSamplesKRT(memoryblock(\"short.bin\"), 0, 1, 9, 32768, 0, Bits = -32)"),
            "RenderSamplesKRT gave nil: Width and Height are at most 32767");
  EXPECT_EQ(Of("RenderSamplesKRT(memoryblock(\"short.bin\"), 40000, 1, 0, 9, 0)"),
            "RenderSamplesKRT gave nil: Width must be given where there are more than 32767 "
            "samples or none");
  EXPECT_EQ(Of("PictureSepiaKRT(SourcePicture = nil)"),
            "PictureSepiaKRT: Run gave false: a picture among the arguments is nil");
  Save(Noise(4, 4, 4), scratch / "alpha.png", "png");
  EXPECT_EQ(
      Complaint({"run", "InvertKRT", "alpha.png", "-o", "out.png", "--host-version", "2011.03"}),
      "InvertKRT gave nil: hosts before 2011.04 can't make pictures with an alpha channel");
  Save(MakeImage(32768, 1, [](int, int) { return Pixel{1, 2, 3}; }), scratch / "wide.png", "png");
  EXPECT_EQ(Complaint({"run", "InvertKRT", "wide.png", "-o", "out.png"}),
            "InvertKRT gave nil: the picture has 32768 x 1 pixels, and a side of a result has at "
            "most 32767");
}

TEST_F(Mistakes, OutputsThatCannotBeWritten) {
  EXPECT_EQ(Complaint({"run", "InvertKRT", "in.png", "-o", "/dev/full"}),
            "can't write '/dev/full': No space left on device");
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_EQ(Complaint({"run", "InvertKRT", "in.png", "-o", "no/out.png"}),
            "can't write 'no/out.png': No such file or directory");
  EXPECT_EQ(
      Complaint({"run", "InvertKRT", "in.png", "-o", "out.svg"}),
      "can't write 'out.svg': the name must end in .png, .jpg, .tif, .webp, .gif, .ppm, .bmp, "
      ".heic, .avif, .jxl or .jp2");
  EXPECT_EQ(Complaint({"run", "InvertKRT", "in.png", "-o", "folder"}),
            "can't write 'folder': the name must end in .png, .jpg, .tif, .webp, .gif, .ppm, .bmp, "
            ".heic, .avif, .jxl or .jp2");
  EXPECT_EQ(Complaint({"run", "InvertKRT", "in.png"}),
            "the last expression came to a picture, and there is no --output to put it in");
  EXPECT_EQ(Complaint({"run", "CountColorsKRT", "in.png", "--save", "count=count.txt"}),
            "only pictures, strings and memory blocks can be saved, and count is 200");
  // Of two outputs the second is impossible: the first isn't written either.
  EXPECT_EQ(Complaint({"run", "-e", "InvertKRT", "-e", "CountColorsKRT", "in.png", "-o", "new.png",
                       "--save", "red=no/red.bin"}),
            "can't write 'no/red.bin': No such file or directory");
}

TEST_F(Mistakes, ADiskThatFillsUpLeavesWhatWasThere) {
  const std::string folder = scratch.Folder().native();
  Save(Noise(300, 300), scratch / "noise.png", "png");
  for (const std::string name : {"out.png", "out.jpg", "out.tiff", "out.webp", "out.bmp"}) {
    WriteBytes(scratch / name, "before");
    const Finished finished =
        RunProgram({"run", "InvertKRT", "noise.png", "-o", name}, {folder, false, 16384});
    EXPECT_EQ(finished.status, 1) << name;
    EXPECT_EQ(finished.err, "picturehost: can't write '" + name + "': File too large\n");
    EXPECT_EQ(ReadBytes(scratch / name), "before") << name;
  }
  for (const auto& entry : fs::directory_iterator(folder))
    EXPECT_FALSE(entry.path().filename().native().starts_with(".")) << entry.path();
}

TEST_F(Mistakes, StandardOutputThatIsFull) {
  const Surroundings full{scratch.Folder().native(), false, 0, "/dev/full"};
  for (const std::vector<std::string>& arguments : std::initializer_list<std::vector<std::string>>{
           {"list"},
           {"list", "--json"},
           {"--help"},
           {"run", "--help"},
           {"run", "isWhiteKRT", "in.png"},
           {"run", "-e", "isWhiteKRT", "-e", "InvertKRT", "in.png", "-o", "new.png"}}) {
    const Finished finished = RunProgram(arguments, full);
    EXPECT_EQ(finished.status, 1) << arguments.back();
    EXPECT_EQ(finished.err,
              "picturehost: can't write to standard output: No space left on device\n");
  }
  EXPECT_FALSE(fs::exists(scratch / "new.png"));
}

TEST_F(Mistakes, CommandLines) {
  EXPECT_EQ(Complaint({}, 2), "list, run or batch? (picturehost --help explains)");
  EXPECT_NE(Complaint({"run", "--wrong"}, 2), "");
  EXPECT_EQ(Complaint({"batch", "--recusive", "InvertKRT", "in.png", "-d", "new"}, 2),
            "The following argument was not expected: --recusive; did you mean --recursive? "
            "(picturehost --help explains)");
  EXPECT_EQ(
      Complaint({"run", "InvertKRT"}, 2),
      "there is no picture file behind the expression, as in picturehost run InvertKRT photo.jpg "
      "-o out.png; --no-picture says that none is needed");
  EXPECT_NE(Complaint({"run"}, 2), "");
  EXPECT_NE(Complaint({"paint"}, 2), "");
  EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--layout", "cmyk"}, 2), "");
  EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--application", "phone"}, 2), "");
  EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--layout", "rows"}, 2), "");
  EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--host-version", "new"}, 2), "");
  EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--save", "nothing"}, 2), "");
  EXPECT_NE(Complaint({"run", "InvertKRT", "InvertKRT()", "-o", "out.png"}, 2).find("--no-picture"),
            std::string::npos);
  EXPECT_EQ(Complaint({"run", "InvertKRT", "in.png", "out.png"}, 2),
            "run takes one picture file, and these are 2; batch takes many, and expressions beyond "
            "the first go after -e");
  EXPECT_NE(Complaint({"run", "--no-picture", "1 + 2", "in.png"}, 2).find("'in.png' is one"),
            std::string::npos);
  for (const std::string value : {"nan", "inf", "-1", "1e99", "5 x", ""}) {
    EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--pixel-limit", value}, 2)
                  .find("--pixel-limit: "),
              std::string::npos)
        << value;
    EXPECT_NE(Complaint({"run", "InvertKRT", "in.png", "--host-version", value}, 2), "") << value;
  }
}

TEST_F(Mistakes, WordsInAnotherOrderAreAnsweredWithTheRightCommand) {
  const std::string start = "expressions come before files: " PICTURE_HOST_PROGRAM " ";
  EXPECT_EQ(Complaint({"run", "in.png", "-o", "new file.png", "InvertKRT"}, 2),
            start + "run InvertKRT in.png -o 'new file.png'");
  EXPECT_EQ(Complaint({"batch", "-d", "new", "-j2", "in.png", "tall.png", "ColornessKRT(20)",
                       "InvertKRT", "--layout=argb"},
                      2),
            start +
                "batch -e 'ColornessKRT(20)' -e InvertKRT in.png tall.png -d new -j2 "
                "--layout=argb");
  EXPECT_EQ(Complaint({"batch", "InvertKRT", "isWhiteKRT", "in.png", "-d", "new"}, 2),
            start + "batch -e InvertKRT -e isWhiteKRT in.png -d new");
  EXPECT_EQ(Complaint({"run", "--no-picture", "1 + 2", "InvertKRT", "-o", "x.png"}, 2),
            start + "run -e '1 + 2' -e InvertKRT --no-picture -o x.png");
}

TEST_F(Mistakes, PluginsThatAreNone) {
  EXPECT_EQ(Complaint({"list", "--plugin", "no.so"}),
            "can't open 'no.so': No such file or directory");
  EXPECT_NE(Complaint({"list", "--plugin", "text.png"}), "");
}

}  // namespace
}  // namespace runner
