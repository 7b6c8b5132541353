// Picture files as host pictures.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/host.h"
#include "runner/failure.h"
#include "runner/files/origin.h"

namespace runner {

// What becomes of a file that is damaged: what can be decoded is used and a warning says so,
// nothing is used, or what can be decoded is used and nothing said.
enum class Damage { kWarn, kFail, kIgnore };

// How pictures from files are opened.
struct ImageOptions {
  host::PictureLayout opaqueLayout;   // of pictures whose every pixel is opaque
  host::PictureLayout alphaLayout;    // of the others; where it stores no alpha, they get a mask
  uint64_t pixelLimit = 250'000'000;  // of all pages, looked at before anything is decoded
  Damage damage = Damage::kWarn;
  bool toSrgb = false;     // colours are converted through the file's profile
  bool keepAlpha = false;  // pictures are opaque, and their alpha is given beside them
  Warn warn;               // of files that can't be used as they are
};

// One page of a file, or one frame.
struct Page {
  host::Ref<host::Picture> picture;
  // A byte a pixel, row by row, 255 is opaque; empty: the page is opaque, or its picture has it.
  std::vector<uint8_t> alpha;
};

// An open picture file. It is one of ImageFormats() by its content, whatever its name. Its pixels
// are turned as its orientation says; samples of 16 bits are rounded to 8; CMYK and other spaces
// become sRGB. One thread at a time.
class ImageReader {
 public:
  // Throws Failure for a file that is missing, none of these formats, or larger than the limit;
  // nothing is decoded yet.
  ImageReader(const std::filesystem::path& path, const ImageOptions& options);
  // The bytes of a file, which messages call `name`.
  ImageReader(std::string bytes, std::string name, const ImageOptions& options);
  ImageReader(ImageReader&& other) noexcept;
  ImageReader& operator=(ImageReader&&) = delete;
  ~ImageReader();

  size_t PageCount() const;
  const std::string& Name() const;
  // Metadata is that of the first page.
  const Origin& FileOrigin() const;
  // Counted from 0; pages of an animation are read fastest in their order. Throws Failure for a
  // page that can't be decoded and, unless damage is ignored, tells of one that can be in part.
  Page Read(host::Host& host, size_t page);

 private:
  class File;
  std::unique_ptr<File> file;
};

// The first page, without what is beside it. Throws Failure.
host::Ref<host::Picture> LoadPicture(host::Host& host, const std::filesystem::path& path,
                                     const ImageOptions& options);

}  // namespace runner
