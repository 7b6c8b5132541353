// Files that lie, stop too soon or hold no picture.
#include <gtest/gtest.h>

#include "tests/runner/image_file_fixture.h"

namespace runner {
namespace {

TEST_F(ImageFile, RefusesTruncatedFilesOfEveryFormat) {
  const Image image = Noise(64, 48, 3, 7);
  for (const char* format : {"png", "jpeg", "tiff", "webp", "bmp"}) {
    Save(image, scratch / "whole", format);
    const std::string bytes = ReadBytes(scratch / "whole");
    ASSERT_EQ(ErrorOf(scratch / "whole"), "(no error)") << format;
    std::vector<size_t> lengths = {0, 1, 2, 3, 10, 20, 53, 54, bytes.size() - 1};
    for (size_t part = 1; part < 40; ++part) lengths.push_back(bytes.size() * part / 40);
    for (const size_t length : lengths) {
      WriteBytes(scratch / "cut", bytes.substr(0, length));
      EXPECT_NE(ErrorOf(scratch / "cut"), "(no error)") << format << " of " << length << " bytes";
    }
  }
  SaveTiff(image, scratch / "first.tif", 1);
  const std::string bytes = ReadBytes(scratch / "first.tif");
  WriteBytes(scratch / "cut", bytes.substr(0, bytes.size() - 100));
  EXPECT_NE(ErrorOf(scratch / "cut"), "(no error)");
}

TEST_F(ImageFile, AJpegWithMoreBehindItsEndIsWhole) {
  Save(Noise(20, 20), scratch / "tail.jpg", "jpeg");
  WriteBytes(scratch / "tail.jpg", ReadBytes(scratch / "tail.jpg") + std::string(1000, 'x'));
  EXPECT_EQ(ErrorOf(scratch / "tail.jpg"), "(no error)");
}

TEST_F(ImageFile, DoesNotBelieveHeaders) {
  // A JPEG of 16 x 16 pixels that says it had 65500 x 3000, and one within what its data can hold.
  Save(Noise(16, 16), scratch / "small.jpg", "jpeg");
  std::string bytes = ReadBytes(scratch / "small.jpg");
  const size_t frame = bytes.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  bytes.replace(frame + 5, 4, std::string("\x0B\xB8\xFF\xDC", 4));
  WriteBytes(scratch / "lie.jpg", bytes);
  EXPECT_EQ(
      ErrorOf(scratch / "lie.jpg"),
      "'" + (scratch / "lie.jpg") + "' promises more pixels in its header than its data can hold");

  // More than the limit: refused whatever the format, and at once.
  options.pixelLimit = 1000;
  for (const char* format : {"png", "jpeg", "tiff", "webp", "bmp"}) {
    Save(Noise(40, 26), scratch / "large", format);
    EXPECT_EQ(ErrorOf(scratch / "large"),
              "'" + (scratch / "large") +
                  "' has 40 x 26 pixels, more than the limit of 1000 (see --pixel-limit)")
        << format;
    Save(Noise(40, 25), scratch / "just", format);
    EXPECT_EQ(ErrorOf(scratch / "just"), "(no error)") << format;
  }
}

TEST_F(ImageFile, OpensNothingThatIsNoPictureFile) {
  WriteBytes(scratch / "text.png", "not a picture");
  EXPECT_NE(ErrorOf(scratch / "text.png").find("isn't an image that can be opened"),
            std::string::npos);
  WriteBytes(scratch / "empty.png", "");
  EXPECT_EQ(ErrorOf(scratch / "empty.png"), "'" + (scratch / "empty.png") + "' is empty");
  WriteBytes(scratch / "drawing.svg",
             "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'></svg>");
  EXPECT_NE(ErrorOf(scratch / "drawing.svg"), "(no error)");
  WriteBytes(scratch / "icon.png", std::string("\0\0\1\0\1\0\1\1\0\0\1\0\x18\0", 14));
  EXPECT_NE(ErrorOf(scratch / "icon.png").find("isn't an image that can be opened"),
            std::string::npos);
  EXPECT_EQ(ErrorOf(scratch / "missing.png"),
            "can't open '" + (scratch / "missing.png") + "': No such file or directory");
  EXPECT_EQ(ErrorOf(scratch.Folder().native()),
            "can't open '" + scratch.Folder().native() + "': Is a directory");
  EXPECT_EQ(ErrorOf("/dev/zero"), "can't open '/dev/zero': it isn't a regular file");
}

}  // namespace
}  // namespace runner
