#include "runner/files/image_writer.h"

#include <algorithm>
#include <array>
#include <exception>
#include <map>
#include <utility>
#include <vector>
#include <vips/vips8>

#include "runner/files/bytes.h"
#include "runner/files/container_writer.h"
#include "runner/files/jpeg_encoder.h"
#include "runner/files/metadata_fields.h"
#include "runner/files/page_rows.h"
#include "runner/files/vips_library.h"
#include "runner/files/vips_modules.h"
#include "runner/files/xmp.h"
#include "runner/names.h"
#include "runner/output_file.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using vips::VImage;
using vips::VTarget;

constexpr size_t kPaletteSize = 256;

// How the pixels of the result are stored.
struct Shape {
  enum class Samples { kRgb, kRgba, kOverWhite, kGrey, kGreyAlpha };
  Samples samples = Samples::kRgb;
  bool blackAndWhite = false;
  size_t colours = 0;  // that a palette has to hold; 0: no palette

  bool IsGrey() const { return samples == Samples::kGrey || samples == Samples::kGreyAlpha; }
  int Bands() const {
    switch (samples) {
      case Samples::kGrey:
        return 1;
      case Samples::kGreyAlpha:
        return 2;
      case Samples::kRgba:
        return 4;
      default:
        return 3;
    }
  }
};

using PageList = std::vector<PageRows>;

template <class Holds>
bool All(const PageList& pages, Holds holds) {
  return std::all_of(pages.begin(), pages.end(), holds);
}

// Grey, palette and bilevel come back as such where the pixels allow it.
Shape ShapeOf(const PageList& pages, const ImageFormat& format, const Origin* origin) {
  using Samples = Shape::Samples;
  Shape shape;
  const bool stored = format.alpha == ImageFormat::Alpha::kStored;
  const bool opaque = All(pages, [](const PageRows& page) { return page.IsOpaque(); });
  shape.samples = opaque ? Samples::kRgb : stored ? Samples::kRgba : Samples::kOverWhite;
  const bool mixes = !opaque && !stored;
  if (origin != nullptr && (origin->grey || origin->palette) && !mixes &&
      All(pages, [](const PageRows& page) { return page.IsGrey(); })) {
    const bool fits = format.name != "gif" && format.name != "webp" && format.name != "bmp" &&
                      format.name != "heic" && format.name != "avif";
    if (origin->grey && fits) shape.samples = opaque ? Samples::kGrey : Samples::kGreyAlpha;
    shape.blackAndWhite = origin->bits == 1 && opaque && fits &&
                          All(pages, [](const PageRows& page) { return page.IsBlackAndWhite(); });
    if (shape.blackAndWhite) shape.samples = Samples::kGrey;
  }
  if (origin != nullptr && origin->palette && format.name == "png" && opaque && !shape.IsGrey()) {
    const size_t colours = pages[0].CountColours(kPaletteSize);
    if (colours <= kPaletteSize) shape.colours = colours;
  }
  return shape;
}

// What the callback of the image that is saved reads: pages, one below the other.
struct Roll {
  const PageList& pages;
  Shape shape;
};

void ReadRow(const Roll& roll, int x, int y, int count, uint8_t* to) {
  const int height = roll.pages[0].Height();
  const PageRows& page = roll.pages[static_cast<size_t>(y / height)];
  const int row = y % height;
  switch (roll.shape.samples) {
    case Shape::Samples::kRgb:
      return page.ReadRgb(x, row, count, to);
    case Shape::Samples::kRgba:
      return page.ReadRgba(x, row, count, to);
    case Shape::Samples::kOverWhite:
      return page.ReadOverWhite(x, row, count, to);
    default:
      break;
  }
  const size_t bands = roll.shape.samples == Shape::Samples::kGrey ? 1 : 2;
  std::vector<uint8_t> rgba(static_cast<size_t>(count) * 4);
  page.ReadRgba(x, row, count, rgba.data());
  for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
    to[bands * i] = rgba[4 * i];
    if (bands == 2) to[bands * i + 1] = rgba[4 * i + 3];
  }
}

// The library's callback: nothing can be thrown through it, and reading throws nothing but
// std::bad_alloc.
int GenerateRows(VipsRegion* region, void*, void* data, void*, gboolean*) {
  const VipsRect& area = region->valid;
  try {
    for (int y = area.top; y < area.top + area.height; ++y)
      ReadRow(*static_cast<const Roll*>(data), area.left, y, area.width,
              VIPS_REGION_ADDR(region, area.left, y));
  } catch (const std::bad_alloc&) {
    vips_error("rows", "there isn't enough memory");
    return -1;
  }
  return 0;
}

// Reads the pages when it is saved.
VImage ImageOf(Roll* roll) {
  VipsImage* image = vips_image_new();
  const VImage owner(image);
  const int height = roll->pages[0].Height() * static_cast<int>(roll->pages.size());
  vips_image_init_fields(image, roll->pages[0].Width(), height, roll->shape.Bands(),
                         VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                         roll->shape.IsGrey() ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB,
                         1, 1);
  if (vips_image_pipelinev(image, VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0 ||
      vips_image_generate(image, nullptr, GenerateRows, nullptr, roll, nullptr) != 0)
    throw vips::VError();
  return owner;
}

// What a profile is for, four letters of its header.
std::string_view SpaceOf(const std::string& icc) {
  constexpr size_t kSpace = 16;
  return icc.size() < kSpace + 4 ? std::string_view() : std::string_view(icc).substr(kSpace, 4);
}

// What files of a format have a place for.
struct Places {
  std::string_view format;
  bool exif, xmp, iptc, profile, resolution, comment;
};
constexpr auto kPlaces = std::to_array<Places>({
    {"png", true, true, true, true, true, true},
    {"jpeg", true, true, true, true, true, true},
    {"tiff", true, true, true, true, true, false},
    {"webp", true, true, false, true, true, false},
    {"gif", false, true, false, true, false, true},
    {"ppm", false, false, false, false, false, true},
    {"bmp", false, false, false, false, true, false},
    {"heic", true, true, false, true, true, false},
    {"avif", true, true, false, true, true, false},
    {"jxl", true, true, false, true, true, false},
    {"jp2", true, true, true, true, true, false},
});

void WarnOfLosses(const Metadata& metadata, const ImageFormat& format, const Warn& warn) {
  if (!warn) return;
  const auto* found = std::find_if(kPlaces.begin(), kPlaces.end(), [&](const Places& places) {
    return places.format == format.name;
  });
  const Places places = found == kPlaces.end() ? Places() : *found;
  std::vector<std::string> lost;
  if (!places.exif && !metadata.exif.empty()) lost.emplace_back("EXIF");
  if (!places.xmp && !metadata.xmp.empty()) lost.emplace_back("XMP");
  if (!places.iptc && !metadata.iptc.empty()) lost.emplace_back("IPTC");
  if (!places.profile && !metadata.icc.empty()) lost.emplace_back("profile");
  if (!places.resolution && metadata.resolution) lost.emplace_back("resolution");
  if (!places.comment && !metadata.comments.empty()) lost.emplace_back("comment");
  if (lost.empty()) return;
  std::string names = lost[0];
  for (size_t i = 1; i < lost.size(); ++i)
    names += (i + 1 == lost.size() ? " and " : ", ") + lost[i];
  warn("the result as " + std::string(format.title) + " can't hold " + names + ": " +
       (lost.size() == 1 ? "it is" : "they are") + " left out");
}

bool TellsResolutionInExif(const ImageFormat& format) {
  return format.name == "webp" || format.name == "heic" || format.name == "avif" ||
         format.name == "jxl" || format.name == "jp2";
}

Metadata MetadataOf(const Roll& roll, const ImageFormat& format, const Origin& origin,
                    const SaveOptions& options) {
  Metadata metadata;
  if (options.metadata == SaveOptions::Keep::kNothing) return metadata;
  if (SpaceOf(origin.metadata.icc) == (roll.shape.IsGrey() ? "GRAY" : "RGB "))
    metadata.icc = origin.metadata.icc;
  else if (!origin.metadata.icc.empty() && options.warn)
    options.warn(roll.shape.IsGrey()
                     ? "the result is grey and the file's profile is for colours: it is left out"
                     : "the result has colours and the file's profile is for grey pictures: it is "
                       "left out");
  if (options.metadata == SaveOptions::Keep::kEverything) {
    std::string icc = std::move(metadata.icc);
    metadata = origin.metadata;
    metadata.icc = std::move(icc);
  }
  WarnOfLosses(metadata, format, options.warn);
  const int width = roll.pages[0].Width(), height = roll.pages[0].Height();
  // Where the format has no other place for it, EXIF tells the resolution.
  if (metadata.exif.empty() && metadata.resolution && TellsResolutionInExif(format))
    metadata.exif = ExifWithResolution(*metadata.resolution);
  else if (!metadata.exif.empty())
    metadata.exif = ExifOfResult(metadata.exif, width, height, metadata.resolution);
  if (!metadata.xmp.empty()) metadata.xmp = XmpOfResult(metadata.xmp, width, height);
  return metadata;
}

// Options as the library takes them, one by its name.
using Choices = std::map<std::string, std::string>;

const char* YesNo(bool value) { return value ? "true" : "false"; }

// A file as good as the one it came from, or else as good as the format can have it.
Choices DefaultsFor(const ImageFormat& format, const Shape& shape, const Origin* origin) {
  const bool same = origin != nullptr && origin->format == &format;
  const bool interlaced = origin != nullptr && origin->interlaced;
  const bool lossless = origin == nullptr || origin->lossless;
  Choices choices;
  if (format.name == "jpeg") {
    const int quality = same && origin->jpegQuality > 0 ? origin->jpegQuality : 92;
    choices["Q"] = std::to_string(quality);
    choices["subsample-mode"] = same && !origin->fullColour ? "on" : "off";
    choices["interlace"] = YesNo(same && interlaced);
  } else if (format.name == "png") {
    // 12 megapixels take 1 second at level 3 and 2.3 at 6, for 5.9 instead of 5.0 megabytes.
    choices["compression"] = "3";
    choices["interlace"] = YesNo(same && interlaced);
    if (shape.blackAndWhite) choices["bitdepth"] = "1";
    if (shape.colours > 0) {
      choices["palette"] = "true";
      choices["dither"] = "0";
      choices["Q"] = "100";
      choices["bitdepth"] = shape.colours <= 2    ? "1"
                            : shape.colours <= 4  ? "2"
                            : shape.colours <= 16 ? "4"
                                                  : "8";
    }
  } else if (format.name == "tiff") {
    std::string compression = same ? origin->compression : "deflate";
    if (compression == "ccittfax4" && !shape.blackAndWhite) compression = "deflate";
    choices["compression"] = compression;
    const bool differences = !shape.blackAndWhite && (!same || origin->differences);
    if (compression == "deflate" || compression == "lzw" || compression == "zstd")
      choices["predictor"] = differences ? "horizontal" : "none";
    if (compression == "jpeg") choices["Q"] = "92";
    if (shape.blackAndWhite) choices["bitdepth"] = "1";
  } else if (format.name == "webp") {
    choices["lossless"] = YesNo(same && lossless);
    choices["Q"] = same && lossless ? "75" : "92";  // lossless: how hard it tries
  } else if (format.name == "gif") {
    choices["dither"] = "0";
  } else if (format.name == "ppm") {
    choices["format"] = shape.blackAndWhite ? "pbm" : shape.IsGrey() ? "pgm" : "ppm";
  } else if (format.name == "bmp") {
    choices["format"] = "bmp3";  // what every program reads
  } else if (format.name == "heic" || format.name == "avif") {
    choices["compression"] = format.name == "heic" ? "hevc" : "av1";
    choices["Q"] = "92";
    choices["bitdepth"] = "8";
  } else if (format.name == "jxl" || format.name == "jp2") {
    choices["lossless"] = YesNo(lossless);
    if (!lossless) choices["Q"] = "92";
  }
  return choices;
}

bool HasQuality(const ImageFormat& format) {
  return format.name == "jpeg" || format.name == "webp" || format.name == "heic" ||
         format.name == "avif" || format.name == "jxl" || format.name == "jp2" ||
         format.name == "tiff";
}

void AddCommon(const ImageFormat& format, const SaveOptions& options, Choices* choices) {
  const std::string title(format.title);
  if (options.quality) {
    if (!HasQuality(format)) throw Failure(title + " has no --quality: nothing is lost in it");
    (*choices)["Q"] = std::to_string(*options.quality);
    if (format.name == "tiff") (*choices)["compression"] = "jpeg";
    if (format.name != "jpeg" && format.name != "tiff") (*choices)["lossless"] = "false";
  }
  if (options.lossless) {
    if (format.name == "jpeg") throw Failure("JPEG can't be --lossless");
    if (format.name == "tiff" && (*choices)["compression"] == "jpeg")
      (*choices)["compression"] = "deflate";
    if (format.name != "tiff" && HasQuality(format)) {
      (*choices)["lossless"] = "true";
      choices->erase("Q");
    }
    if (format.name == "heic" || format.name == "avif") (*choices)["subsample-mode"] = "off";
  }
  if (!options.compression.empty()) {
    if (format.name != "png" && format.name != "tiff")
      throw Failure(title + " has no --compression; PNG and TIFF have");
    (*choices)["compression"] = options.compression;
  }
}

// The names of options as a person gives them: "Q=95,interlace".
std::vector<std::string> NamesIn(std::string_view options) {
  std::vector<std::string> names;
  while (!options.empty()) {
    const size_t end = std::min(options.find(','), options.size());
    const std::string_view option = options.substr(0, end);
    names.emplace_back(option.substr(0, option.find('=')));
    options.remove_prefix(std::min(end + 1, options.size()));
  }
  return names;
}

// What a person gives replaces ours: the library takes the first of two.
std::string InBrackets(Choices choices, const std::string& more) {
  for (const std::string& name : NamesIn(more)) choices.erase(name);
  std::string text = "[";
  for (const auto& [name, value] : choices) text += name + "=" + value + ",";
  text += more;
  if (text.back() == ',') text.pop_back();
  return text + "]";
}

// Where encoded bytes go, and what went wrong on the way: nothing may be thrown through the
// encoder.
struct Target {
  const ByteSink& write;
  std::exception_ptr problem;
};

gint64 WriteToTarget(VipsTargetCustom*, const void* bytes, gint64 count, gpointer data) {
  auto* target = static_cast<Target*>(data);
  try {
    target->write(bytes, static_cast<size_t>(count));
    return count;
  } catch (...) {
    target->problem = std::current_exception();
    return -1;
  }
}

// Puts a file's comments behind the first segment, which is that of JFIF or EXIF.
class WithComments {
 public:
  WithComments(const ByteSink& sink, const std::vector<std::string>& comments) : write(sink) {
    for (const std::string& comment : comments) {
      constexpr size_t kLongest = 65533;
      const std::string text = comment.substr(0, kLongest);
      const size_t length = text.size() + 2;
      segments += "\xFF\xFE";
      segments += static_cast<char>(length >> 8);
      segments += static_cast<char>(length & 255);
      segments += text;
    }
  }

  void Write(const char* bytes, size_t count) {
    while (!segments.empty() && count > 0) {
      const size_t missing = std::min(count, HeaderSize() - header.size());
      header.append(bytes, missing);
      bytes += missing;
      count -= missing;
      if (header.size() < HeaderSize()) continue;
      header += std::exchange(segments, {});
      write(header.data(), header.size());
    }
    if (count > 0) write(bytes, count);
  }

 private:
  // As far as it is known: the file's first marker, then a segment's marker and length.
  size_t HeaderSize() const {
    constexpr size_t kStart = 2, kLengthEnd = 6;
    return header.size() < kLengthEnd
               ? kLengthEnd
               : kStart + 2 + std::max<size_t>(2, BigEndian16(header, kStart + 2));
  }

  const ByteSink& write;
  std::string segments, header;
};

// Takes the blob.
void WriteCompleted(VipsBlob* blob, const ImageFormat& format, const Metadata& metadata,
                    const ByteSink& write) {
  size_t size = 0;
  const void* data = vips_blob_get(blob, &size);
  std::string file(static_cast<const char*>(data), size);
  vips_area_unref(VIPS_AREA(blob));
  file = WithContainerMetadata(std::move(file), format, metadata);
  write(file.data(), file.size());
}

// Formats that libvips leaves metadata out of, or that it can't write from their beginning to their
// end. They are completed in memory.
bool IsCompleted(const ImageFormat& format, const Metadata& metadata) {
  if (format.name == "tiff" || format.name == "jp2" || format.name == "webp") return true;
  if (format.name == "ppm") return true;  // libvips writes the time into it
  const bool some = !metadata.exif.empty() || !metadata.xmp.empty() || !metadata.iptc.empty() ||
                    !metadata.icc.empty() || !metadata.comments.empty();
  return some && (format.name == "png" || format.name == "gif" || format.name == "jxl");
}

void Save(const VImage& image, const ImageFormat& format, const Metadata& metadata,
          const std::string& options, const ByteSink& write) {
  const std::string saver(format.saver);
  if (saver.ends_with("_buffer")) {
    VipsBlob* blob = nullptr;
    VImage::call_option_string(saver.c_str(), options.c_str(),
                               VImage::option()->set("in", image)->set("buffer", &blob));
    return WriteCompleted(blob, format, metadata, write);
  }
  if (IsCompleted(format, metadata)) {
    VipsBlob* blob = nullptr;
    {
      const VTarget target = VTarget::new_to_memory();
      VImage::call_option_string(saver.c_str(), options.c_str(),
                                 VImage::option()->set("in", image)->set("target", target));
      g_object_get(target.get_target(), "blob", &blob, nullptr);
    }
    return WriteCompleted(blob, format, metadata, write);
  }
  Target sink{write, nullptr};
  const VTarget target(VIPS_TARGET(vips_target_custom_new()));
  g_signal_connect(target.get_target(), "write", G_CALLBACK(WriteToTarget), &sink);
  try {
    VImage::call_option_string(saver.c_str(), options.c_str(),
                               VImage::option()->set("in", image)->set("target", target));
  } catch (const vips::VError&) {
    if (sink.problem == nullptr) throw;
  }
  if (sink.problem != nullptr) std::rethrow_exception(sink.problem);
}

// What is said in libvips's own words, libvips has to understand.
bool IsSavedDirectly(const ImageFormat& format, const Encoding& encoding) {
  return format.name == "jpeg" && encoding.options.empty();
}

void SaveJpeg(const Roll& roll, const Metadata& metadata, const Origin* origin,
              const SaveOptions& options, const ByteSink& write) {
  JpegSettings settings;
  const bool same = origin != nullptr && origin->format->name == "jpeg";
  if (same) {
    settings.progressive = origin->interlaced;
    settings.fullColour = origin->fullColour;
    if (origin->jpegQuality > 0) settings.quality = origin->jpegQuality;
    if (origin->jpegCoding) settings.coding = &*origin->jpegCoding;
  }
  if (options.quality) {
    settings.quality = *options.quality;
    settings.coding = nullptr;
  }
  const PageRows& page = roll.pages[0];
  const auto read = [&](int y, uint8_t* row) { ReadRow(roll, 0, y, page.Width(), row); };
  EncodeJpeg({page.Width(), page.Height(), roll.shape.Bands(), read}, settings, metadata, write);
}

void CheckPages(std::span<const Page> pages, const ImageFormat& format) {
  if (pages.size() > 1 && format.pages == ImageFormat::Pages::kOne)
    throw Failure("there are " + std::to_string(pages.size()) + " pages, and a " +
                  std::string(format.title) + " file holds one; --page N takes one of them");
  const auto size = [](const Page& page) {
    return std::pair(page.picture->Width(), page.picture->Height());
  };
  for (const Page& page : pages)
    if (size(page) != size(pages[0]))
      throw Failure("the pages differ in size; --page N takes one of them");
}

void SetAnimation(const VImage& image, const PageList& pages, const Origin* origin) {
  if (pages.size() < 2) return;
  VipsImage* header = image.get_image();
  vips_image_set_int(header, VIPS_META_PAGE_HEIGHT, pages[0].Height());
  vips_image_set_int(header, VIPS_META_N_PAGES, static_cast<int>(pages.size()));
  if (origin == nullptr || origin->delays.empty()) return;
  vips_image_set_array_int(header, "delay", origin->delays.data(),
                           static_cast<int>(origin->delays.size()));
  vips_image_set_int(header, "loop", origin->loops);
}

}  // namespace

OutputName OutputNamed(const std::string& text, const ImageFormat* format) {
  OutputName name{text, {format, ""}};
  const size_t open = text.rfind('[');
  if (text.ends_with("]") && open != std::string::npos && open > 0) {
    const fs::path plain = text.substr(0, open);
    if (format != nullptr || FormatByExtension(plain) != nullptr) {
      name.path = plain;
      name.encoding.options = text.substr(open + 1, text.size() - open - 2);
    }
  }
  if (name.encoding.format == nullptr) name.encoding.format = FormatByExtension(name.path);
  if (name.encoding.format != nullptr) return name;
  if (OutputFile::IsDirect(name.path)) {
    name.encoding.format = FormatCalled("png");
    return name;
  }
  std::string extensions;
  for (const ImageFormat& known : ImageFormats())
    extensions += (extensions.empty()                 ? ""
                   : &known == &ImageFormats().back() ? " or "
                                                      : ", ") +
                  std::string(known.extensions[0]);
  throw Failure("can't write " + Quoted(name.path.native()) + ": the name must end in " +
                extensions);
}

void EncodePages(std::span<const Page> pages, const Encoding& encoding, const Origin* origin,
                 const SaveOptions& saveOptions, const ByteSink& write) {
  SaveOptions options = saveOptions;
  if (origin != nullptr && options.warn)
    options.warn = [&](const std::string& message) {
      saveOptions.warn(Quoted(origin->name) + ": " + message);
    };
  const ImageFormat& format = *encoding.format;
  CheckPages(pages, format);
  PageList rows;
  rows.reserve(pages.size());
  for (const Page& page : pages) rows.emplace_back(page);
  Roll roll{rows, ShapeOf(rows, format, origin)};
  const Metadata metadata =
      origin == nullptr ? Metadata() : MetadataOf(roll, format, *origin, options);
  Choices choices = DefaultsFor(format, roll.shape, origin);
  AddCommon(format, options, &choices);
  if (format.name == "gif" && options.warn && !All(rows, [](const PageRows& page) {
        return page.CountColours(kPaletteSize) <= kPaletteSize;
      }))
    options.warn("the result has more colours than GIF holds: the nearest 256 are used");
  if (IsSavedDirectly(format, encoding)) return SaveJpeg(roll, metadata, origin, options, write);
  StartVips();
  RequireThreads();
  LoadModuleOf(format);
  vips_error_clear();
  try {
    const VImage image = WithMetadata(ImageOf(&roll), metadata, format);
    SetAnimation(image, rows, origin);
    WithComments comments(write, metadata.comments);
    const ByteSink commented = [&](const void* bytes, size_t count) {
      comments.Write(static_cast<const char*>(bytes), count);
    };
    Save(image, format, metadata, InBrackets(choices, encoding.options),
         format.name == "jpeg" ? commented : write);
  } catch (const vips::VError&) {
    const std::string problem = VipsProblem(vips_error_buffer());
    vips_error_clear();
    throw Failure("the picture can't be encoded as " + std::string(format.title) + ": " + problem);
  }
}

void EncodePicture(const host::Ref<host::Picture>& picture, const Encoding& encoding,
                   const ByteSink& write) {
  const Page page{picture, {}};
  EncodePages(std::span(&page, 1), encoding, nullptr, SaveOptions(), write);
}

}  // namespace runner
