// Image files as host pictures, and host pictures as image files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "host/host.h"
#include "runner/failure.h"
#include "runner/output_file.h"

namespace runner {

// How pictures from files are opened.
struct ImageOptions {
  host::PictureLayout opaqueLayout;   // of pictures whose every pixel is opaque
  host::PictureLayout alphaLayout;    // of the others; where it stores no alpha, they get a mask
  uint64_t pixelLimit = 250'000'000;  // looked at before anything is decoded
  Warn warn;                          // of files that can't be used as they are
};

// A PNG, JPEG, TIFF, WebP or BMP file, turned as its orientation says. Throws Failure for a file
// that is missing, truncated, none of these, or larger than the limit.
host::Ref<host::Picture> LoadPicture(host::Host& host, const std::filesystem::path& path,
                                     const ImageOptions& options);

// Whether a name ends as those of these files do.
bool HasImageExtension(const std::filesystem::path& path);

// The format that a file name asks for by its extension, "png", "jpeg", "tiff", "webp" or "bmp".
// Devices and pipes have none and get "png". Throws Failure for any other.
std::string FormatFor(const std::filesystem::path& path);

// Writes the picture into `file`, which isn't committed. An alpha channel or separate mask with
// anything to say is kept by "png", "tiff" and "webp"; "jpeg" and "bmp" show it over white. Throws
// Failure.
void EncodePicture(const host::Picture& picture, const std::string& format, OutputFile* file);
// The same for anything that takes bytes.
using ByteSink = std::function<void(const void* bytes, size_t count)>;
void EncodePicture(const host::Picture& picture, const std::string& format, const ByteSink& write);

}  // namespace runner
