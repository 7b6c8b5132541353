#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include "runner/failure.h"
#include "runner/files.h"
#include "runner/image_check.h"
#include "runner/image_file.h"
#include "runner/names.h"
#include "runner/pixbuf.h"
#include "runner/pixel_rows.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

// What is opened. The library knows more, but their decoders are not made for files from anywhere,
// or, as with drawings, fetch other files.
constexpr std::array<std::string_view, 5> kReadFormats = {"png", "jpeg", "tiff", "webp", "bmp"};

// Looks at the header alone; gives the format.
std::string CheckHeader(const fs::path& path, uint64_t pixelLimit) {
  RequireRegularFile(path);
  const std::string name = Quoted(path.native());
  int width = 0, height = 0;
  GdkPixbufFormat* found = gdk_pixbuf_get_file_info(path.c_str(), &width, &height);
  if (found == nullptr || width <= 0 || height <= 0) {
    if (fs::file_size(path) == 0) throw Failure(name + " is empty");
    throw Failure(name +
                  " isn't an image that can be opened (PNG, JPEG, TIFF, WebP or BMP), or it "
                  "is damaged");
  }
  const std::unique_ptr<char, decltype(&g_free)> format(gdk_pixbuf_format_get_name(found), g_free);
  if (std::find(kReadFormats.begin(), kReadFormats.end(), format.get()) == kReadFormats.end())
    throw Failure(name + " is a file of kind '" + format.get() +
                  "'; PNG, JPEG, TIFF, WebP and BMP can be opened");
  const auto pixels = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
  if (pixels > pixelLimit)
    throw Failure(name + " has " + std::to_string(width) + " x " + std::to_string(height) +
                  " pixels, more than the limit of " + std::to_string(pixelLimit) +
                  " (see --pixel-limit)");
  if (const auto missing = MissingFrom(path, format.get())) throw Failure(name + " " + *missing);
  return format.get();
}

// Orientation included, in rows of 3 or 4 samples.
Pixbuf Decode(const fs::path& path) {
  GError* problem = nullptr;
  Pixbuf pixbuf(gdk_pixbuf_new_from_file(path.c_str(), &problem));
  if (pixbuf == nullptr) {
    // The library's text names the file in its own way before a colon.
    std::string message = TakeMessage(problem);
    if (const size_t colon = message.find("\u201D: "); colon != std::string::npos)
      message.erase(0, colon + 5);
    throw Failure(Quoted(path.native()) + " can't be decoded, it may be truncated: " + message);
  }
  Pixbuf turned(gdk_pixbuf_apply_embedded_orientation(pixbuf.get()));
  if (turned == nullptr) throw Failure(Quoted(path.native()) + " needs too much memory");
  return turned;
}

bool IsOpaque(GdkPixbuf* pixbuf) {
  const auto width = static_cast<size_t>(gdk_pixbuf_get_width(pixbuf));
  if (gdk_pixbuf_get_n_channels(pixbuf) != 4) return true;
  for (int y = 0; y < gdk_pixbuf_get_height(pixbuf); ++y)
    if (!RowIsOpaque(Row(pixbuf, y), width)) return false;
  return true;
}

// TIFF files come with their colours premultiplied, whatever the file has.
void UndoPremultiplication(GdkPixbuf* pixbuf) {
  const host::PictureLayout premultiplied =
      host::PictureLayout::BitmapContext(host::kAlphaPremultipliedLast);
  for (int y = 0; y < gdk_pixbuf_get_height(pixbuf); ++y)
    UnpackRow(Row(pixbuf, y), premultiplied, Row(pixbuf, y), 4,
              static_cast<size_t>(gdk_pixbuf_get_width(pixbuf)));
}

// Beside a picture, as hosts without alpha channels have it: black where the picture is opaque.
host::Ref<host::Picture> MaskOf(host::Host& host, GdkPixbuf* pixbuf,
                                const host::PictureLayout& layout) {
  const int width = gdk_pixbuf_get_width(pixbuf), height = gdk_pixbuf_get_height(pixbuf);
  host::Ref<host::Picture> mask = host.NewPicture(width, height, layout);
  std::vector<uint8_t> grey(static_cast<size_t>(width) * 3);
  for (int y = 0; y < height; ++y) {
    for (size_t x = 0; x < static_cast<size_t>(width); ++x)
      std::fill_n(&grey[3 * x], 3, static_cast<uint8_t>(255 - Row(pixbuf, y)[4 * x + 3]));
    PackRow(grey.data(), 3, layout, mask->Row(y), static_cast<size_t>(width));
  }
  return mask;
}

}  // namespace

host::Ref<host::Picture> LoadPicture(host::Host& host, const fs::path& path,
                                     const ImageOptions& options) {
  const std::string format = CheckHeader(path, options.pixelLimit);
  const Pixbuf pixbuf = Decode(path);
  const bool opaque = IsOpaque(pixbuf.get());
  if (format == "tiff" && !opaque) UndoPremultiplication(pixbuf.get());

  const host::PictureLayout& layout = opaque ? options.opaqueLayout : options.alphaLayout;
  const int width = gdk_pixbuf_get_width(pixbuf.get());
  const int height = gdk_pixbuf_get_height(pixbuf.get());
  try {
    host::Ref<host::Picture> picture = host.NewPicture(width, height, layout);
    for (int y = 0; y < height; ++y)
      PackRow(Row(pixbuf.get(), y), gdk_pixbuf_get_n_channels(pixbuf.get()), layout,
              picture->Row(y), static_cast<size_t>(width));
    if (!opaque && !StoresAlpha(layout))
      picture->SetMask(MaskOf(host, pixbuf.get(), options.opaqueLayout));
    return picture;
  } catch (const host::Error& error) {
    throw Failure(Quoted(path.native()) + " can't become a picture: " + error.what());
  }
}

}  // namespace runner
