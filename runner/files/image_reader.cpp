#include "runner/files/image_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vips/vips8>

#include "runner/files.h"
#include "runner/files/decoded_rows.h"
#include "runner/files/file_facts.h"
#include "runner/files/metadata_fields.h"
#include "runner/files/placement.h"
#include "runner/files/vips_library.h"
#include "runner/files/vips_modules.h"
#include "runner/files/wholeness.h"
#include "runner/names.h"
#include "runner/pixel_rows.h"

namespace runner {
namespace {

namespace fs = std::filesystem;
using vips::VImage;
using vips::VSource;

// So many rows at a time: most decoders work on rows of blocks.
constexpr int kStrip = 16;

}  // namespace

class ImageReader::File {
 public:
  File(const fs::path& filePath, const ImageOptions& imageOptions)
      : path(filePath), name(filePath.native()), options(imageOptions) {
    RequireRegularFile(path);
    if (fs::file_size(path) == 0) throw Failure(Quoted(name) + " is empty");
    Start();
  }
  File(std::string fileBytes, std::string fileName, const ImageOptions& imageOptions)
      : bytes(std::move(fileBytes)), name(std::move(fileName)), options(imageOptions) {
    if (bytes.empty()) throw Failure(Quoted(name) + " is empty");
    Start();
  }

  size_t PageCount() const { return pages.size(); }
  const std::string& Name() const { return name; }
  const Origin& FileOrigin() const { return origin; }

  Page Read(host::Host& host, size_t page) {
    const int index = pages.at(page);
    try {
      return Decode(host, index);
    } catch (const vips::VError&) {
      throw Failure(Quoted(name) + " can't be decoded: " + TakeProblem());
    } catch (const host::Error& error) {
      throw Failure(Quoted(name) + " can't become a picture: " + error.what());
    }
  }

 private:
  // An open image: one page, or all of them one below the other.
  struct Opened {
    std::optional<VImage> image;        // nothing: the JPEG decoder has it
    std::unique_ptr<JpegDecoder> jpeg;  // null: libvips has it
    int page = -1;                      // -1: all of them
    bool lenient = false;
  };

  // What the thread's latest call reported, which is forgotten.
  static std::string TakeProblem() {
    const std::string problem = VipsProblem(vips_error_buffer());
    vips_error_clear();
    return problem;
  }

  void Start() {
    StartVips();
    vips_error_clear();
    origin.name = name;
    try {
      origin.format = &FindFormat();
      if (origin.format->name == "webp") RequireThreads();
      Examine();
      opened = Open(0, false);
    } catch (const vips::VError&) {
      FailToOpen(TakeProblem());
    }
    if (opened->jpeg != nullptr)
      DescribeJpeg(Content(), *opened->jpeg, &origin, &pages);
    else
      Describe(*opened->image);
    CheckSize();
    if (origin.bits > 8)
      Tell(Quoted(name) + " has " + std::to_string(origin.bits) +
           " bits a channel; its pixels are rounded to 8");
  }

  void Describe(const VImage& image) {
    if (origin.format->name == "heic" && image.get_typeof("heif-compression") != 0 &&
        std::string_view(image.get_string("heif-compression")) == "av1")
      origin.format = FormatCalled("avif");
    const bool converted = options.toSrgb || image.interpretation() == VIPS_INTERPRETATION_CMYK;
    DescribeFile(Content(), image.get_image(), &origin, &pages);
    if (converted) origin.metadata.icc = SrgbProfile();
  }

  [[noreturn]] void FailToOpen(const std::string& problem) const {
    throw Failure(Quoted(name) + (fault ? " " + fault->text + ", and nothing of it can be decoded"
                                        : " can't be decoded: " + problem));
  }

  FileContent Content() const { return {bytes, path}; }

  // What can be told before anything is decoded.
  void Examine() {
    if (origin.format->name == "bmp") {
      const BmpSize size = SizeOfBmp(Content());
      CheckPixels(size.width, size.height, 1);
    }
    fault = FaultOf(Content(), *origin.format);
    if (fault && (fault->hopeless || options.damage == Damage::kFail))
      throw Failure(Quoted(name) + " " + fault->text);
  }

  VSource NewSource() const {
    VipsSource* source = bytes.empty() ? vips_source_new_from_file(path.c_str())
                                       : vips_source_new_from_memory(bytes.data(), bytes.size());
    if (source == nullptr) throw Failure("can't open " + Quoted(name) + ": " + TakeProblem());
    return VSource(source);
  }

  // Null: none of the loaders that are there knows the content.
  static const ImageFormat* FormatByLoader(const VSource& source) {
    const char* found = vips_foreign_find_load_source(source.get_source());
    vips_error_clear();
    const std::string_view loader = found == nullptr ? "" : found;
    for (const ImageFormat& format : ImageFormats())
      if (loader.starts_with(format.loader)) return &format;
    return nullptr;
  }

  const ImageFormat& FindFormat() {
    const VSource source = NewSource();
    // The library's loader for BMP files would open a hundred other formats, and wants all bytes.
    const unsigned char* start = vips_source_sniff(source.get_source(), 2);
    if (start != nullptr && std::memcmp(start, "BM", 2) == 0) {
      if (bytes.empty()) bytes = ReadWholeFile(path);
      const ImageFormat& bmp = *FormatCalled("bmp");
      LoadModuleOf(bmp);
      return bmp;
    }
    if (const ImageFormat* format = FormatByLoader(source)) return *format;
    for (const ImageFormat& format : ImageFormats())
      if (format.name != "bmp") LoadModuleOf(format);
    if (const ImageFormat* format = FormatByLoader(source)) return *format;
    throw Failure(Quoted(name) + " isn't an image that can be opened (" + FormatTitles() +
                  "), or it is damaged");
  }

  bool IsAnimation() const { return origin.format->name == "gif" || origin.format->name == "webp"; }

  // What libvips has to convert, it decodes as well.
  std::unique_ptr<JpegDecoder> OpenJpeg() const {
    if (origin.format->name != "jpeg" || options.toSrgb) return nullptr;
    try {
      auto decoder = std::make_unique<JpegDecoder>(Content());
      return decoder->Channels() == 1 || decoder->Channels() == 3 ? std::move(decoder) : nullptr;
    } catch (const Failure& failure) {
      FailToOpen(failure.what());
    }
  }

  Opened Open(int page, bool lenient) const {
    if (std::unique_ptr<JpegDecoder> jpeg = OpenJpeg())
      return {std::nullopt, std::move(jpeg), page, lenient};
    // What JPEG's decoder warns of are pixels that it made up.
    const VipsFailOn strict =
        origin.format->name == "jpeg" ? VIPS_FAIL_ON_WARNING : VIPS_FAIL_ON_ERROR;
    vips::VOption* how = VImage::option()
                             ->set("access", VIPS_ACCESS_SEQUENTIAL)
                             ->set("fail_on", lenient ? VIPS_FAIL_ON_NONE : strict);
    if (IsAnimation()) {
      how->set("n", -1);
      page = -1;
    } else if (page > 0) {
      how->set("page", page);
    }
    if (origin.format->name == "bmp")
      return {VImage::new_from_buffer(bytes.data(), bytes.size(), "", how), nullptr, page, lenient};
    return {VImage::new_from_source(NewSource(), "", how), nullptr, page, lenient};
  }

  void CheckPixels(uint64_t width, uint64_t height, size_t count) const {
    if (width == 0 || height * count <= options.pixelLimit / width) return;
    throw Failure(Quoted(name) + " has " + std::to_string(width) + " x " + std::to_string(height) +
                  " pixels" + (count > 1 ? " on each of " + std::to_string(count) + " pages" : "") +
                  ", more than the limit of " + std::to_string(options.pixelLimit) +
                  " (see --pixel-limit)");
  }

  // Pages of a document may differ in size; none may be larger than all may be together.
  void CheckSize() const {
    const auto check = [&](const Opened& open) {
      const int width = open.jpeg != nullptr ? open.jpeg->Width() : open.image->width();
      const int height = open.jpeg != nullptr ? open.jpeg->Height() : HeightOf(*open.image);
      CheckPixels(static_cast<uint64_t>(width), static_cast<uint64_t>(height), pages.size());
    };
    check(*opened);
    if (!IsAnimation())
      for (const int page : pages)
        if (page > 0) check(Open(page, true));
  }

  int HeightOf(const VImage& image) const {
    return IsAnimation() ? vips_image_get_page_height(image.get_image()) : image.height();
  }

  // One to four channels of 8 or 16 bits, in the order grey or R, G, B, then alpha.
  VImage Plain(VImage image) {
    const VipsInterpretation space = image.interpretation();
    const bool hasProfile = image.get_typeof(VIPS_META_ICC_NAME) != 0;
    if (space == VIPS_INTERPRETATION_CMYK || (options.toSrgb && hasProfile)) {
      image = image.icc_transform(
          "srgb", VImage::option()
                      ->set("embedded", true)
                      ->set("input_profile", space == VIPS_INTERPRETATION_CMYK ? "cmyk" : "srgb")
                      ->set("intent", VIPS_INTENT_RELATIVE)
                      ->set("black_point_compensation", true));
    } else if (image.format() != VIPS_FORMAT_UCHAR && image.format() != VIPS_FORMAT_USHORT) {
      if (vips_colourspace_issupported(image.get_image()) == FALSE)
        throw Failure(Quoted(name) + " has samples of a kind that can't become 8 bits");
      image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    } else if (space == VIPS_INTERPRETATION_LAB || space == VIPS_INTERPRETATION_LABS ||
               space == VIPS_INTERPRETATION_LABQ || space == VIPS_INTERPRETATION_XYZ) {
      image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    }
    if (image.bands() <= 4) return image;
    Tell(Quoted(name) + " has " + std::to_string(image.bands()) +
         " channels; the first three are used");
    return image.extract_band(0, VImage::option()->set("n", 3));
  }

  std::unique_ptr<DecodedRows> Rows(int page) {
    if (opened->jpeg != nullptr) return RowsOf(opened->jpeg.get(), opened->lenient);
    const VImage image = Plain(*opened->image);
    const int height = HeightOf(image);
    return RowsOf(image, opened->page == -1 ? page * height : 0, height);
  }

  Page Decode(host::Host& host, int page) {
    if (!opened || (opened->page != -1 && opened->page != page) || usedUp) Reopen(page, false);
    std::unique_ptr<DecodedRows> rows = Rows(page);
    const int height = rows->Height();
    const Placement placement(rows->Width(), height, Orientation());
    Page result;
    result.picture = host.NewPicture(placement.Width(), placement.Height(), options.opaqueLayout);
    int done = DecodeRows(rows.get(), placement, &result);
    const int sound = done;
    std::string problem = fault ? fault->text : "";
    if (done < height && problem.empty()) problem = "is damaged (" + rows->Problem() + ")";
    if (done < height && !opened->lenient) {
      if (options.damage == Damage::kFail) throw Failure(Quoted(name) + " " + problem);
      rows.reset();
      Reopen(page, true);
      rows = Rows(page);
      done = DecodeRows(rows.get(), placement, &result);
      // Of a progressive picture all rows are there, coarser than they should be.
      if (done == 0 || (sound == 0 && !origin.interlaced))
        throw Failure(Quoted(name) + " " + problem + ", and nothing of it can be decoded");
    }
    vips_error_clear();
    if (!problem.empty() && options.damage == Damage::kWarn)
      Tell(Quoted(name) + " " + problem + ": " + HowMuch(sound, done, height));
    usedUp = opened->page != -1;
    rows.reset();
    // Decoders of some formats hold the whole picture.
    if (page == pages.back()) opened.reset();
    if (!options.keepAlpha && !result.alpha.empty()) AddAlpha(host, &result);
    return result;
  }

  // Decoders notice some faults late, so that rows before the place may be wrong, too.
  static std::string HowMuch(int sound, int done, int height) {
    const std::string all = std::to_string(height);
    if (sound == height) return "all of its " + all + " rows could be decoded";
    std::string text =
        "noticed after " + std::to_string(sound) + " of its " + all + " rows were decoded";
    if (done < height) text += "; the last " + std::to_string(height - done) + " are missing";
    return text;
  }

  void Tell(const std::string& message) const {
    if (options.warn) options.warn(message);
  }

  void Reopen(int page, bool lenient) {
    opened.reset();
    opened = Open(page, lenient);
    usedUp = false;
  }

  int Orientation() const {
    return origin.orientation > 0 || opened->jpeg != nullptr
               ? origin.orientation
               : vips_image_get_orientation(opened->image->get_image());
  }

  // How many rows could be decoded.
  int DecodeRows(DecodedRows* rows, const Placement& placement, Page* result) const {
    RowSamples samples(*rows);
    const int height = rows->Height();
    const auto width = static_cast<size_t>(rows->Width());
    if (samples.HasAlpha()) result->alpha.assign(width * static_cast<size_t>(height), 255);
    std::vector<uint8_t> words(width * kStrip * 4);
    std::vector<uint8_t> alpha(samples.HasAlpha() ? width * kStrip : 0);
    for (int y = 0; y < height; y += kStrip) {
      const int count = std::min(kStrip, height - y);
      if (!rows->Next(count)) return y;
      for (int row = 0; row < count; ++row) {
        const void* from = rows->Row(row);
        const size_t at = static_cast<size_t>(row) * width;
        uint8_t* to = placement.IsPlain() ? result->picture->Row(y + row) : &words[at * 4];
        PackRow(samples.Colours(from), 3, options.opaqueLayout, to, width);
        if (samples.HasAlpha()) samples.Alpha(from, &alpha[at]);
      }
      if (!placement.IsPlain())
        placement.Place<uint32_t>(words.data(), y, count,
                                  [&](int row) { return result->picture->Row(row); });
      if (samples.HasAlpha())
        placement.Place<uint8_t>(alpha.data(), y, count, [&](int row) {
          return &result->alpha[static_cast<size_t>(row) * static_cast<size_t>(placement.Width())];
        });
    }
    return height;
  }

  // The picture gets the alpha that lies beside it, in the way of its host.
  void AddAlpha(host::Host& host, Page* page) const {
    const std::vector<uint8_t> alpha = std::move(page->alpha);
    page->alpha.clear();
    if (std::all_of(alpha.begin(), alpha.end(), [](uint8_t a) { return a == 255; })) return;
    const host::Picture& colours = *page->picture;
    const auto width = static_cast<size_t>(colours.Width());
    const bool stored = StoresAlpha(options.alphaLayout);
    // Without a place for alpha, a picture beside it that is black where it is opaque.
    host::Ref<host::Picture> target = host.NewPicture(
        colours.Width(), colours.Height(), stored ? options.alphaLayout : options.opaqueLayout);
    std::vector<uint8_t> rgba(width * 4);
    for (int32_t y = 0; y < colours.Height(); ++y) {
      const uint8_t* values = &alpha[static_cast<size_t>(y) * width];
      UnpackRow(colours.Row(y), options.opaqueLayout, rgba.data(), 4, width);
      for (size_t x = 0; x < width; ++x) {
        if (!stored) std::fill_n(&rgba[4 * x], 3, static_cast<uint8_t>(255 - values[x]));
        rgba[4 * x + 3] = stored ? values[x] : 255;
      }
      PackRow(rgba.data(), 4, target->Layout(), target->Row(y), width);
    }
    if (stored)
      page->picture = target;
    else
      page->picture->SetMask(target);
  }

  fs::path path;
  std::string bytes;  // empty: those of the file at `path`
  std::string name;
  ImageOptions options;
  Origin origin;
  std::optional<Fault> fault;
  std::vector<int> pages;  // as the library counts them
  std::optional<Opened> opened;
  bool usedUp = false;
};

ImageReader::ImageReader(const fs::path& path, const ImageOptions& options)
    : file(std::make_unique<File>(path, options)) {}
ImageReader::ImageReader(std::string bytes, std::string name, const ImageOptions& options)
    : file(std::make_unique<File>(std::move(bytes), std::move(name), options)) {}
ImageReader::ImageReader(ImageReader&& other) noexcept = default;
ImageReader::~ImageReader() = default;

size_t ImageReader::PageCount() const { return file->PageCount(); }
const std::string& ImageReader::Name() const { return file->Name(); }
const Origin& ImageReader::FileOrigin() const { return file->FileOrigin(); }
Page ImageReader::Read(host::Host& host, size_t page) { return file->Read(host, page); }

host::Ref<host::Picture> LoadPicture(host::Host& host, const fs::path& path,
                                     const ImageOptions& options) {
  return ImageReader(path, options).Read(host, 0).picture;
}

}  // namespace runner
