#include "runner/files/image_format.h"

#include <algorithm>
#include <cctype>

namespace runner {
namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

bool HasExtension(const ImageFormat& format, std::string_view extension) {
  return std::find(format.extensions.begin(), format.extensions.end(), extension) !=
         format.extensions.end();
}

}  // namespace

std::span<const ImageFormat> ImageFormats() {
  using Alpha = ImageFormat::Alpha;
  using Pages = ImageFormat::Pages;
  static const std::vector<ImageFormat> formats = {
      {"png",
       "PNG",
       {".png", ".apng"},
       "VipsForeignLoadPng",
       "pngsave_target",
       Pages::kOne,
       Alpha::kStored},
      {"jpeg",
       "JPEG",
       {".jpg", ".jpeg", ".jpe"},
       "VipsForeignLoadJpeg",
       "jpegsave_target",
       Pages::kOne,
       Alpha::kNone},
      {"tiff",
       "TIFF",
       {".tif", ".tiff"},
       "VipsForeignLoadTiff",
       "tiffsave_target",
       Pages::kSeveral,
       Alpha::kStored},
      {"webp",
       "WebP",
       {".webp"},
       "VipsForeignLoadWebp",
       "webpsave_target",
       Pages::kSeveral,
       Alpha::kStored},
      {"gif",
       "GIF",
       {".gif"},
       "VipsForeignLoadNsgif",
       "gifsave_target",
       Pages::kSeveral,
       Alpha::kStored},
      {"ppm",
       "PPM",
       {".ppm", ".pgm", ".pbm", ".pnm"},
       "VipsForeignLoadPpm",
       "ppmsave_target",
       Pages::kOne,
       Alpha::kNone},
      {"bmp",
       "BMP",
       {".bmp"},
       "VipsForeignLoadMagick",
       "magicksave_buffer",
       Pages::kOne,
       Alpha::kNone,
       "magick"},
      {"heic",
       "HEIC",
       {".heic", ".heif"},
       "VipsForeignLoadHeif",
       "heifsave_target",
       Pages::kOne,
       Alpha::kStored,
       "heif"},
      {"avif",
       "AVIF",
       {".avif"},
       "VipsForeignLoadHeif",
       "heifsave_target",
       Pages::kOne,
       Alpha::kStored,
       "heif"},
      {"jxl",
       "JPEG XL",
       {".jxl"},
       "VipsForeignLoadJxl",
       "jxlsave_target",
       Pages::kOne,
       Alpha::kStored,
       "jxl"},
      {"jp2",
       "JPEG 2000",
       {".jp2", ".j2k", ".j2c", ".jpc"},
       "VipsForeignLoadJp2k",
       "jp2ksave_target",
       Pages::kOne,
       Alpha::kStored},
  };
  return formats;
}

const ImageFormat* FormatCalled(std::string_view name) {
  const std::string lower = Lower(name);
  for (const ImageFormat& format : ImageFormats())
    if (format.name == lower || HasExtension(format, "." + lower)) return &format;
  return nullptr;
}

const ImageFormat* FormatByExtension(const std::filesystem::path& path) {
  const std::string extension = Lower(path.extension().native());
  for (const ImageFormat& format : ImageFormats())
    if (HasExtension(format, extension)) return &format;
  return nullptr;
}

std::string FormatTitles() {
  std::string titles;
  const auto formats = ImageFormats();
  for (const ImageFormat& format : formats) {
    if (!titles.empty()) titles += &format == &formats.back() ? " or " : ", ";
    titles += format.title;
  }
  return titles;
}

std::vector<std::string> FormatNames() {
  std::vector<std::string> names;
  for (const ImageFormat& format : ImageFormats()) {
    names.emplace_back(format.name);
    for (const std::string_view extension : format.extensions)
      if (extension.substr(1) != format.name) names.emplace_back(extension.substr(1));
  }
  return names;
}

}  // namespace runner
