// The formats of picture files, by name, by extension and by content.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

struct ImageFormat {
  enum class Pages { kOne, kSeveral };
  enum class Alpha { kNone, kStored };

  std::string_view name;                     // "jpeg", as --format and messages have it
  std::string_view title;                    // "JPEG", as people write it
  std::vector<std::string_view> extensions;  // with the dot, the usual one first
  std::string_view loader;                   // what the class of libvips's loader begins with
  std::string_view saver;                    // libvips's operation that saves to a target
  Pages pages;                               // what is saved
  Alpha alpha;
  std::string_view module = {};  // the part of libvips that has both; empty: the library itself
};

// All that are opened and saved.
std::span<const ImageFormat> ImageFormats();

// By name or by extension without its dot, in any case; null: there is none.
const ImageFormat* FormatCalled(std::string_view name);

// By the extension of a file name; null: none ends so.
const ImageFormat* FormatByExtension(const std::filesystem::path& path);

// "PNG, JPEG, ... or JPEG 2000".
std::string FormatTitles();
// Everything that FormatCalled knows: names, then extensions.
std::vector<std::string> FormatNames();

}  // namespace runner
