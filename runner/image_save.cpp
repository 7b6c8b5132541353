#include <array>
#include <cctype>
#include <exception>
#include <string_view>
#include <utility>

#include "runner/failure.h"
#include "runner/image_file.h"
#include "runner/names.h"
#include "runner/pixbuf.h"
#include "runner/pixel_rows.h"

namespace runner {
namespace {

namespace fs = std::filesystem;

struct Format {
  std::string_view extension;
  const char* name;
};
constexpr std::array<Format, 7> kWrittenFormats = {{{".png", "png"},
                                                    {".jpg", "jpeg"},
                                                    {".jpeg", "jpeg"},
                                                    {".tif", "tiff"},
                                                    {".tiff", "tiff"},
                                                    {".webp", "webp"},
                                                    {".bmp", "bmp"}}};

// Colour and alpha of a picture, row by row.
class RowSource {
 public:
  explicit RowSource(const host::Picture& source)
      : picture(source), mask(source.Mask()), width(static_cast<size_t>(source.Width())) {
    if (!IsKnown(picture.Layout())) whole = picture.ToRgba();
    if (mask) maskRow.resize(width * 3);
  }

  // R, G, B, A, not premultiplied.
  void Read(int32_t y, uint8_t* rgba) {
    if (whole.empty())
      UnpackRow(picture.Row(y), picture.Layout(), rgba, 4, width);
    else
      std::copy_n(&whole[width * 4 * static_cast<size_t>(y)], width * 4, rgba);
    if (!mask || y >= mask->Height() || !IsKnown(mask->Layout())) return;
    const auto masked = std::min(width, static_cast<size_t>(mask->Width()));
    UnpackRow(mask->Row(y), mask->Layout(), maskRow.data(), 3, masked);
    for (size_t x = 0; x < masked; ++x)
      rgba[4 * x + 3] = static_cast<uint8_t>(rgba[4 * x + 3] * (255 - maskRow[3 * x]) / 255);
  }

  // False only where no pixel can be anything but opaque.
  bool MayBeClear() const { return mask || !whole.empty() || StoresAlpha(picture.Layout()); }

 private:
  const host::Picture& picture;
  host::Ref<host::Picture> mask;
  size_t width;
  std::vector<uint8_t> whole;  // layouts that only the host itself knows
  std::vector<uint8_t> maskRow;
};

bool IsOpaque(const host::Picture& picture) {
  RowSource source(picture);
  if (!source.MayBeClear()) return true;
  std::vector<uint8_t> row(static_cast<size_t>(picture.Width()) * 4);
  for (int32_t y = 0; y < picture.Height(); ++y) {
    source.Read(y, row.data());
    if (!RowIsOpaque(row.data(), static_cast<size_t>(picture.Width()))) return false;
  }
  return true;
}

Pixbuf NewPixbuf(const host::Picture& picture, bool alpha) {
  Pixbuf pixbuf(gdk_pixbuf_new(GDK_COLORSPACE_RGB, alpha, 8, picture.Width(), picture.Height()));
  if (pixbuf == nullptr) throw Failure("there isn't enough memory to encode the picture");
  return pixbuf;
}

Pixbuf WithoutAlpha(const host::Picture& picture) {
  Pixbuf pixbuf = NewPixbuf(picture, false);
  const auto width = static_cast<size_t>(picture.Width());
  if (IsKnown(picture.Layout()) && !picture.Mask()) {
    for (int32_t y = 0; y < picture.Height(); ++y)
      UnpackRow(picture.Row(y), picture.Layout(), Row(pixbuf.get(), y), 3, width);
    return pixbuf;
  }
  RowSource source(picture);
  std::vector<uint8_t> rgba(width * 4);
  for (int32_t y = 0; y < picture.Height(); ++y) {
    source.Read(y, rgba.data());
    for (size_t x = 0; x < width; ++x) std::copy_n(&rgba[4 * x], 3, Row(pixbuf.get(), y) + 3 * x);
  }
  return pixbuf;
}

Pixbuf WithAlpha(const host::Picture& picture) {
  Pixbuf pixbuf = NewPixbuf(picture, true);
  RowSource source(picture);
  for (int32_t y = 0; y < picture.Height(); ++y) source.Read(y, Row(pixbuf.get(), y));
  return pixbuf;
}

Pixbuf OverWhite(const host::Picture& picture) {
  Pixbuf pixbuf = NewPixbuf(picture, false);
  RowSource source(picture);
  const auto width = static_cast<size_t>(picture.Width());
  std::vector<uint8_t> rgba(width * 4);
  for (int32_t y = 0; y < picture.Height(); ++y) {
    source.Read(y, rgba.data());
    uint8_t* row = Row(pixbuf.get(), y);
    for (size_t x = 0; x < width; ++x)
      for (size_t i = 0; i < 3; ++i) {
        const int alpha = rgba[4 * x + 3];
        row[3 * x + i] =
            static_cast<uint8_t>((rgba[4 * x + i] * alpha + 255 * (255 - alpha) + 127) / 255);
      }
  }
  return pixbuf;
}

// An option of the encoder, or none. 12 megapixels as PNG take 1 second at level 3 and 2.3 at the
// library's own 6, for 5.9 instead of 5.0 megabytes.
std::pair<const char*, const char*> OptionOf(const std::string& format) {
  if (format == "jpeg") return {"quality", "92"};
  if (format == "webp") return {"quality", "92"};
  if (format == "png") return {"compression", "3"};
  if (format == "tiff") return {"compression", "8"};  // deflate
  return {nullptr, nullptr};
}

// Where encoded bytes go, and what went wrong on the way: nothing may be thrown through the
// encoder.
struct Sink {
  const ByteSink& write;
  std::exception_ptr problem;
};

gboolean WriteToSink(const gchar* bytes, gsize count, GError** error, gpointer data) {
  auto* sink = static_cast<Sink*>(data);
  try {
    sink->write(bytes, count);
    return TRUE;
  } catch (...) {
    sink->problem = std::current_exception();
    g_set_error_literal(error, GDK_PIXBUF_ERROR, GDK_PIXBUF_ERROR_FAILED, "write failed");
    return FALSE;
  }
}

const char* FormatByExtension(const fs::path& path) {
  std::string extension = path.extension().native();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const Format& format : kWrittenFormats)
    if (format.extension == extension) return format.name;
  return nullptr;
}

}  // namespace

bool HasImageExtension(const fs::path& path) { return FormatByExtension(path) != nullptr; }

std::string FormatFor(const fs::path& path) {
  if (const char* format = FormatByExtension(path)) return format;
  std::error_code ignored;
  const fs::file_status status = fs::status(path, ignored);
  if (fs::exists(status) && status.type() != fs::file_type::regular &&
      status.type() != fs::file_type::directory)
    return "png";
  throw Failure("can't write " + Quoted(path.native()) +
                ": the name must end in .png, .jpg, .tiff, .webp or .bmp");
}

void EncodePicture(const host::Picture& picture, const std::string& format, OutputFile* file) {
  EncodePicture(picture, format,
                [file](const void* bytes, size_t count) { file->Write(bytes, count); });
}

void EncodePicture(const host::Picture& picture, const std::string& format, const ByteSink& write) {
  const bool keepsAlpha = format == "png" || format == "tiff" || format == "webp";
  const Pixbuf pixbuf = IsOpaque(picture) ? WithoutAlpha(picture)
                        : keepsAlpha      ? WithAlpha(picture)
                                          : OverWhite(picture);
  Sink sink{write, nullptr};
  GError* problem = nullptr;
  const auto [key, value] = OptionOf(format);
  const gboolean written = gdk_pixbuf_save_to_callback(
      pixbuf.get(), WriteToSink, &sink, format.c_str(), &problem, key, value, nullptr);
  std::string message = written ? "" : TakeMessage(problem);
  if (sink.problem != nullptr) std::rethrow_exception(sink.problem);
  if (!written) throw Failure("the picture can't be encoded as " + format + ": " + message);
}

}  // namespace runner
