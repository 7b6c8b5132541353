// Host pictures as picture files.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "host/host.h"
#include "runner/failure.h"
#include "runner/files/image_format.h"
#include "runner/files/image_reader.h"
#include "runner/files/origin.h"

namespace runner {

// How pictures are saved. What isn't said is as it was in the file that they came from, as near as
// the format can have it; without one, nothing is lost where the format allows that, and quality is
// 92 where it doesn't.
struct SaveOptions {
  enum class Keep { kEverything, kProfile, kNothing };
  Keep metadata = Keep::kEverything;
  std::optional<int> quality;  // 1 to 100
  bool lossless = false;
  std::string
      compression;  // PNG: 0 to 9; TIFF: none, lzw, deflate, jpeg, packbits, ccittfax4, zstd
  Warn warn;        // of what the file can't hold
};

// What a file is saved as. `options` are libvips's own for the format, as in "Q=95,interlace".
struct Encoding {
  const ImageFormat* format = nullptr;
  std::string options;
};

// Where a picture goes: a path, behind which options may stand in brackets: "out.jpg[Q=95]".
struct OutputName {
  std::filesystem::path path;
  Encoding encoding;
};

// Makes sense of it. The format is that of the extension, or `format` where one is given. Devices
// and pipes have no extension and get PNG. Throws Failure, which names the extensions.
OutputName OutputNamed(const std::string& text, const ImageFormat* format = nullptr);

// Takes bytes in their order; what it throws ends the encoding.
using ByteSink = std::function<void(const void* bytes, size_t count)>;

// Encodes the pages, which `origin` tells more about, unless it is null: the file that they came
// from. An alpha channel or separate mask with anything to say is kept where the format can store
// it, and shown over white where it can't. Throws Failure, also for more pages than the format
// holds.
void EncodePages(std::span<const Page> pages, const Encoding& encoding, const Origin* origin,
                 const SaveOptions& options, const ByteSink& write);

// One picture that came from nowhere.
void EncodePicture(const host::Ref<host::Picture>& picture, const Encoding& encoding,
                   const ByteSink& write);

}  // namespace runner
