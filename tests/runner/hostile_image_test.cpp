// Image files as nobody honest makes them: each is refused with a line, at once and without taking
// the memory that its header asks for; nothing that is missing is made up.
#include <gtest/gtest.h>

#include "runner/failure.h"
#include "runner/files/image_reader.h"
#include "runner/layouts.h"
#include "tests/runner/images.h"
#include "tests/runner/scratch.h"

namespace runner {
namespace {

void PutBigEndian(std::string* bytes, size_t at, uint32_t value) {
  for (int i = 0; i < 4; ++i) (*bytes)[at + size_t(i)] = char(value >> (24 - 8 * i));
}
void PutLittleEndian(std::string* bytes, size_t at, uint32_t value, int count = 4) {
  for (int i = 0; i < count; ++i) (*bytes)[at + size_t(i)] = char(value >> (8 * i));
}

// The checksum of a PNG chunk, bit by bit.
uint32_t Checksum(std::string_view bytes) {
  uint32_t sum = ~0U;
  for (const char c : bytes) {
    sum ^= uint8_t(c);
    for (int i = 0; i < 8; ++i) sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320 : 0);
  }
  return ~sum;
}

class HostileImage : public ::testing::Test {
 protected:
  HostileImage() {
    ChooseLayouts("", &host.settings, &options);
    options.damage = Damage::kFail;
  }

  // What is wrong with a file of these bytes, without its name; empty: nothing.
  std::string Fault(const std::string& bytes) {
    WriteBytes(scratch / "file", bytes);
    try {
      LoadPicture(host, scratch / "file", options);
    } catch (const Failure& failure) {
      const std::string text = failure.what(), start = "'" + (scratch / "file") + "' ";
      EXPECT_TRUE(text.starts_with(start)) << text;
      EXPECT_EQ(text.find('\n'), std::string::npos) << text;
      return text.substr(start.size());
    }
    return "";
  }

  // A small file of that format whose header tells of another size.
  std::string Lying(const char* format, uint32_t width, uint32_t height) {
    Save(Noise(16, 16), scratch / "honest", format);
    std::string bytes = ReadBytes(scratch / "honest");
    const std::string_view name = format;
    if (name == "png") {
      PutBigEndian(&bytes, 16, width);
      PutBigEndian(&bytes, 20, height);
      PutBigEndian(&bytes, 29, Checksum(std::string_view(bytes).substr(12, 17)));
    } else if (name == "bmp") {
      PutLittleEndian(&bytes, 18, width);
      PutLittleEndian(&bytes, 22, height);
    } else if (name == "webp") {
      const size_t frame = bytes.find("\x9D\x01\x2A");
      EXPECT_NE(frame, std::string::npos);
      PutLittleEndian(&bytes, frame + 3, width, 2);
      PutLittleEndian(&bytes, frame + 5, height, 2);
    } else {
      SaveTiff(Noise(16, 16), scratch / "honest", 1);
      bytes = ReadBytes(scratch / "honest");
      PutLittleEndian(&bytes, 10 + 8, width);  // the values of the directory's first two entries
      PutLittleEndian(&bytes, 22 + 8, height);
      bytes[10 + 2] = bytes[22 + 2] = 4;  // 32 bits wide
    }
    return bytes;
  }

  // Run-length coded: a palette of greys and these codes.
  static std::string RunLengthBmp(uint32_t width, uint32_t height, const std::string& codes,
                                  bool halfBytes = false) {
    const uint32_t colours = halfBytes ? 16 : 256;
    std::string bytes(54, '\0');
    bytes.replace(0, 2, "BM");
    PutLittleEndian(&bytes, 2, uint32_t(54 + 4 * colours + codes.size()));
    PutLittleEndian(&bytes, 10, 54 + 4 * colours);
    PutLittleEndian(&bytes, 14, 40);
    PutLittleEndian(&bytes, 18, width);
    PutLittleEndian(&bytes, 22, height);
    PutLittleEndian(&bytes, 26, 1, 2);
    PutLittleEndian(&bytes, 28, halfBytes ? 4 : 8, 2);
    PutLittleEndian(&bytes, 30, halfBytes ? 2 : 1);
    for (uint32_t i = 0; i < colours; ++i) bytes += std::string(3, char(i)) + '\0';
    return bytes + codes;
  }

  Scratch scratch;
  host::Host host;
  ImageOptions options;
};

TEST_F(HostileImage, HeadersThatTellOfMoreThanThereIs) {
  for (const char* format : {"png", "tiff", "webp", "bmp"}) {
    EXPECT_EQ(Fault(Lying(format, 16, 16)), "") << format;
    const std::string fault = Fault(Lying(format, 6000, 5000));
    EXPECT_TRUE(fault.starts_with("is damaged (") || fault == "is truncated")
        << format << ": " << fault;
  }
}

TEST_F(HostileImage, HeadersThatTellOfTheEnormous) {
  for (const char* format : {"png", "tiff", "bmp"}) {
    EXPECT_EQ(Fault(Lying(format, 100000, 2501)),
              "has 100000 x 2501 pixels, more than the limit of 250000000 (see --pixel-limit)")
        << format;
    // 0xFFFFFC00 is 1024 rows from the top for BMP, of which there are fewer.
    for (const uint32_t side : {0U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFC00U}) {
      EXPECT_NE(Fault(Lying(format, side, side)), "") << format << " " << side;
      EXPECT_NE(Fault(Lying(format, side, 1)), "") << format << " " << side;
      EXPECT_NE(Fault(Lying(format, 1, side)), "") << format << " " << side;
    }
  }
  EXPECT_EQ(Fault(Lying("webp", 16383, 16383)),
            "has 16383 x 16383 pixels, more than the limit of 250000000 (see --pixel-limit)");
}

TEST_F(HostileImage, RunLengthsThatStopTooSoon) {
  const std::string end("\0\x01", 2), row("\x0A\x07\0\0", 4), left("\0\x05wxyz5\0", 8);
  std::string rows;
  for (int y = 0; y < 4; ++y) rows += row;
  EXPECT_EQ(Fault(RunLengthBmp(10, 4, rows + end)), "");
  EXPECT_EQ(Fault(RunLengthBmp(10, 4, rows)), "");  // ends with its last pixel
  EXPECT_EQ(Fault(RunLengthBmp(5, 1, left + end)), "");
  for (size_t length = 0; length + 2 < rows.size(); ++length) {
    EXPECT_EQ(Fault(RunLengthBmp(10, 4, rows.substr(0, length))), "is truncated") << length;
  }
  EXPECT_EQ(Fault(RunLengthBmp(10, 1, left.substr(0, 4))), "is truncated");
  EXPECT_EQ(Fault(RunLengthBmp(10, 4, std::string("\0\x02\x03", 3))), "is truncated");
  EXPECT_EQ(Fault(RunLengthBmp(15000, 15000, "")), "is truncated");

  const std::string halves("\x0A\x12\0\0\0\x05\x12\x34\x50\0", 10);
  EXPECT_EQ(Fault(RunLengthBmp(10, 2, halves + end, true)), "");
  EXPECT_EQ(Fault(RunLengthBmp(10, 2, halves, true)), "is truncated");
}

TEST_F(HostileImage, FilesThatAreSomethingElse) {
  const std::string none =
      "isn't an image that can be opened (PNG, JPEG, TIFF, WebP, GIF, PPM, BMP, HEIC, AVIF, JPEG "
      "XL or JPEG 2000), or it is damaged";
  EXPECT_EQ(Fault("<html><body>404 Not Found</body></html>"), none);
  EXPECT_EQ(Fault(std::string(1000, '\0')), none);
  EXPECT_EQ(Fault("\x89PNG\r\n\x1A\n"), "is truncated");
  EXPECT_EQ(Fault("\xFF\xD8\xFF"), "is truncated");
  EXPECT_EQ(Fault("RIFF\x10\0\0\0WAVEfmt "), none);
  EXPECT_EQ(Fault("BM"), "is truncated");
  // A TIFF directory that is its own successor.
  std::string loop("II*\0\x08\0\0\0\x01\0\0\x01\x04\0\x01\0\0\0\x05\0\0\0\x08\0\0\0", 26);
  EXPECT_EQ(Fault(loop), none);
  EXPECT_TRUE(Fault("GIF89a\x01\0\x01").starts_with("can't be decoded"));
}

// Any one byte of an honest file may be anything: what comes is a picture or a fault of one line.
TEST_F(HostileImage, FilesWithOneByteChanged) {
  options.pixelLimit = 1 << 20;
  uint32_t random = 1;
  for (const char* format : {"png", "jpeg", "tiff", "webp", "bmp"}) {
    Save(Noise(16, 16), scratch / "honest", format);
    const std::string honest = ReadBytes(scratch / "honest");
    for (size_t at = 0; at < honest.size(); at += at < 100 ? 1 : 17) {
      std::string bytes = honest;
      random = random * 1664525 + 1013904223;
      bytes[at] = char(bytes[at] ^ (1 + random / 16777216 % 255));
      Fault(bytes);
    }
    EXPECT_EQ(Fault(honest), "") << format;
  }
}

}  // namespace
}  // namespace runner
