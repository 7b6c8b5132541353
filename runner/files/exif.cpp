#include "runner/files/exif.h"

#include <libexif/exif-data.h>
#include <libexif/exif-utils.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "runner/files/tiff_tags.h"

namespace runner {
namespace {

struct Unreference {
  void operator()(ExifData* data) const { exif_data_unref(data); }
};
using Exif = std::unique_ptr<ExifData, Unreference>;

// The tags as they are: the library would otherwise add, drop and correct some.
Exif Read(const std::string& block) {
  Exif exif(exif_data_new());
  if (exif == nullptr) return exif;
  exif_data_unset_option(exif.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_unset_option(exif.get(), EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS);
  exif_data_load_data(exif.get(), reinterpret_cast<const unsigned char*>(block.data()),
                      static_cast<unsigned>(block.size()));
  return exif;
}

ExifEntry* Find(const Exif& exif, ExifIfd directory, ExifTag tag) {
  return exif_content_get_entry(exif->ifd[directory], tag);
}

// A whole number in a tag that has room for it.
void SetNumber(const Exif& exif, ExifIfd directory, ExifTag tag, unsigned number) {
  ExifEntry* entry = Find(exif, directory, tag);
  if (entry == nullptr || entry->components != 1) return;
  const ExifByteOrder order = exif_data_get_byte_order(exif.get());
  if (entry->format == EXIF_FORMAT_SHORT)
    exif_set_short(entry->data, order, static_cast<ExifShort>(number));
  else if (entry->format == EXIF_FORMAT_LONG)
    exif_set_long(entry->data, order, number);
}

// A positive ratio; 0: there is none.
double Ratio(const Exif& exif, ExifTag tag) {
  const ExifEntry* entry = Find(exif, EXIF_IFD_0, tag);
  if (entry == nullptr || entry->format != EXIF_FORMAT_RATIONAL || entry->components != 1) return 0;
  const ExifRational ratio = exif_get_rational(entry->data, exif_data_get_byte_order(exif.get()));
  return ratio.denominator == 0 ? 0 : double{1} * ratio.numerator / ratio.denominator;
}

void SetRatio(const Exif& exif, ExifTag tag, double value) {
  const ExifEntry* entry = Find(exif, EXIF_IFD_0, tag);
  if (entry == nullptr || entry->format != EXIF_FORMAT_RATIONAL || entry->components != 1) return;
  if (std::abs(Ratio(exif, tag) - value) < 0.005) return;  // what was written stays as it was
  constexpr ExifLong kDenominator = 1000;
  exif_set_rational(entry->data, exif_data_get_byte_order(exif.get()),
                    {static_cast<ExifLong>(std::llround(value * kDenominator)), kDenominator});
}

constexpr unsigned kInches = 2, kCentimetres = 3;

unsigned ResolutionUnit(const Exif& exif) {
  const ExifEntry* entry = Find(exif, EXIF_IFD_0, EXIF_TAG_RESOLUTION_UNIT);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components != 1)
    return kInches;
  return exif_get_short(entry->data, exif_data_get_byte_order(exif.get()));
}

double MillimetresIn(unsigned unit) { return unit == kCentimetres ? 10 : 25.4; }

void RemoveThumbnail(const Exif& exif) {
  free(exif->data);
  exif->data = nullptr;
  exif->size = 0;
  ExifContent* directory = exif->ifd[EXIF_IFD_1];
  while (directory->count > 0) exif_content_remove_entry(directory, directory->entries[0]);
}

}  // namespace

std::string ExifOfResult(const std::string& block, int width, int height,
                         const std::optional<Resolution>& resolution) {
  const Exif exif = Read(block);
  if (exif == nullptr) return {};
  RemoveThumbnail(exif);
  SetNumber(exif, EXIF_IFD_0, EXIF_TAG_ORIENTATION, 1);
  SetNumber(exif, EXIF_IFD_EXIF, EXIF_TAG_PIXEL_X_DIMENSION, static_cast<unsigned>(width));
  SetNumber(exif, EXIF_IFD_EXIF, EXIF_TAG_PIXEL_Y_DIMENSION, static_cast<unsigned>(height));
  if (resolution) {
    const double unit = MillimetresIn(ResolutionUnit(exif));
    SetRatio(exif, EXIF_TAG_X_RESOLUTION, resolution->horizontal * unit);
    SetRatio(exif, EXIF_TAG_Y_RESOLUTION, resolution->vertical * unit);
  }
  bool empty = true;
  for (const ExifContent* directory : exif->ifd) empty = empty && directory->count == 0;
  if (empty) return {};

  unsigned char* bytes = nullptr;
  unsigned size = 0;
  exif_data_save_data(exif.get(), &bytes, &size);
  const std::unique_ptr<unsigned char, decltype(&free)> owner(bytes, free);
  return bytes == nullptr ? std::string() : std::string(reinterpret_cast<char*>(bytes), size);
}

std::string ExifWithResolution(const Resolution& resolution) {
  const unsigned unit = resolution.inches ? kInches : kCentimetres;
  const auto ratio = [&](ExifTag tag, double perMillimetre) {
    constexpr uint32_t kDenominator = 1000;
    const std::array<uint32_t, 2> numbers = {
        static_cast<uint32_t>(std::llround(perMillimetre * MillimetresIn(unit) * kDenominator)),
        kDenominator};
    TiffTag made{static_cast<uint16_t>(tag), EXIF_FORMAT_RATIONAL, 1, std::string(8, '\0')};
    auto* bytes = reinterpret_cast<unsigned char*>(made.value.data());
    exif_set_long(bytes, EXIF_BYTE_ORDER_INTEL, numbers[0]);
    exif_set_long(bytes + 4, EXIF_BYTE_ORDER_INTEL, numbers[1]);
    return made;
  };
  TiffTags tags;
  tags.image = {ratio(EXIF_TAG_X_RESOLUTION, resolution.horizontal),
                ratio(EXIF_TAG_Y_RESOLUTION, resolution.vertical),
                {EXIF_TAG_RESOLUTION_UNIT, EXIF_FORMAT_SHORT, 1, {static_cast<char>(unit), '\0'}}};
  return ExifBlock(tags);
}

std::optional<Resolution> ResolutionInExif(const std::string& block) {
  const Exif exif = Read(block);
  if (exif == nullptr) return std::nullopt;
  const double x = Ratio(exif, EXIF_TAG_X_RESOLUTION), y = Ratio(exif, EXIF_TAG_Y_RESOLUTION);
  if (x <= 0 || y <= 0) return std::nullopt;
  const unsigned unit = ResolutionUnit(exif);
  return Resolution{x / MillimetresIn(unit), y / MillimetresIn(unit), unit != kCentimetres};
}

int OrientationInExif(const std::string& block) {
  const Exif exif = Read(block);
  const ExifEntry* entry = exif == nullptr ? nullptr : Find(exif, EXIF_IFD_0, EXIF_TAG_ORIENTATION);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components != 1) return 0;
  const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(exif.get()));
  return orientation <= 8 ? orientation : 0;
}

}  // namespace runner
