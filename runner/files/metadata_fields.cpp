#include "runner/files/metadata_fields.h"

#include <string_view>
#include <vector>

#include "runner/files/iptc.h"

namespace runner {
namespace {

using vips::VImage;

void SetBlob(const VImage& image, const char* name, const std::string& blob) {
  if (!blob.empty()) vips_image_set_blob_copy(image.get_image(), name, blob.data(), blob.size());
}

// A JPEG file of one pixel with a block of EXIF in it. libvips writes those tags alone that it has
// taken apart itself, which it does while it opens a file.
std::string CarrierOf(const std::string& exif) {
  VipsBlob* blob = VImage::black(1, 1).jpegsave_buffer();
  size_t size = 0;
  const void* data = vips_blob_get(blob, &size);
  std::string jpeg(static_cast<const char*>(data), size);
  vips_area_unref(VIPS_AREA(blob));

  constexpr size_t kStartOfImage = 2;
  const size_t length = exif.size() + 2;
  std::string segment = "\xFF\xE1";
  segment += static_cast<char>(length >> 8);
  segment += static_cast<char>(length & 255);
  return jpeg.insert(kStartOfImage, segment + exif);
}

// Larger blocks fit into no JPEG file.
constexpr size_t kLargestExif = 65533;

void SetExif(const VImage& image, const std::string& exif) {
  if (exif.empty() || exif.size() > kLargestExif) return;
  const std::string carrier = CarrierOf(exif);
  const VImage opened = VImage::new_from_buffer(carrier.data(), carrier.size(), "");
  gchar** names = vips_image_get_fields(opened.get_image());
  for (gchar** name = names; *name != nullptr; ++name) {
    if (!std::string_view(*name).starts_with("exif-")) continue;
    GValue value = G_VALUE_INIT;
    if (vips_image_get(opened.get_image(), *name, &value) != 0) continue;
    vips_image_set(image.get_image(), *name, &value);
    g_value_unset(&value);
  }
  g_strfreev(names);
}

void SetIptc(const VImage& image, const std::string& iptc, const ImageFormat& format) {
  const std::string resources = ResourcesOfResult(iptc);
  if (!resources.empty() && format.name == "jpeg")
    SetBlob(image, VIPS_META_IPTC_NAME, std::string(kResourcesStart) + resources);
}

}  // namespace

std::string SrgbProfile() {
  VipsBlob* blob = nullptr;
  if (vips_profile_load("srgb", &blob, nullptr) != 0) throw vips::VError();
  size_t size = 0;
  const void* data = vips_blob_get(blob, &size);
  std::string profile(static_cast<const char*>(data), size);
  vips_area_unref(VIPS_AREA(blob));
  return profile;
}

VImage WithMetadata(VImage image, const Metadata& metadata, const ImageFormat& format) {
  // Some formats always say something. Where nothing is known, it is what most programs assume.
  constexpr double kAssumed = 72 / 25.4;
  const Resolution resolution = metadata.resolution.value_or(Resolution{kAssumed, kAssumed, true});
  image = image.copy(
      VImage::option()->set("xres", resolution.horizontal)->set("yres", resolution.vertical));
  vips_image_set_string(image.get_image(), VIPS_META_RESOLUTION_UNIT,
                        resolution.inches ? "in" : "cm");
  SetExif(image, metadata.exif);
  if (format.name != "png") SetBlob(image, VIPS_META_XMP_NAME, metadata.xmp);
  SetIptc(image, metadata.iptc, format);
  SetBlob(image, VIPS_META_ICC_NAME, metadata.icc);
  for (size_t i = 0; i < metadata.comments.size(); ++i)
    vips_image_set_string(image.get_image(),
                          ("png-comment-" + std::to_string(i) + "-Comment").c_str(),
                          metadata.comments[i].c_str());
  return image;
}

}  // namespace runner
