#include "runner/files/xmp.h"

#include <exempi/xmp.h>
#include <exempi/xmpconsts.h>

#include <array>
#include <memory>
#include <mutex>

namespace runner {
namespace {

constexpr const char* kTiff = NS_TIFF;
constexpr const char* kExif = NS_EXIF;
constexpr const char* kXmp = NS_XAP;
constexpr const char* kGainMap = "http://ns.adobe.com/hdr-gain-map/1.0/";
constexpr const char* kContainer = "http://ns.google.com/photos/1.0/container/";
constexpr const char* kAppleGainMap = "http://ns.apple.com/HDRGainMap/1.0/";

struct Free {
  void operator()(XmpPtr packet) const { xmp_free(packet); }
};
using Packet = std::unique_ptr<_Xmp, Free>;

struct FreeString {
  void operator()(XmpStringPtr text) const { xmp_string_free(text); }
};
using Text = std::unique_ptr<_XmpString, FreeString>;

struct FreeIterator {
  void operator()(XmpIteratorPtr iterator) const { xmp_iterator_free(iterator); }
};
using Iterator = std::unique_ptr<_XmpIterator, FreeIterator>;

void StartOnce() {
  static std::once_flag once;
  std::call_once(once, [] { xmp_init(); });
}

// Whether there was one with another value.
bool SetNumber(const Packet& packet, const char* schema, const char* name, int number) {
  int32_t before = 0;
  if (!xmp_has_property(packet.get(), schema, name)) return false;
  if (xmp_get_property_int32(packet.get(), schema, name, &before, nullptr) && before == number)
    return false;
  return xmp_set_property_int32(packet.get(), schema, name, number, 0);
}

bool Delete(const Packet& packet, const char* schema, const char* name) {
  return xmp_has_property(packet.get(), schema, name) &&
         xmp_delete_property(packet.get(), schema, name);
}

// Whether there were any.
bool DeleteAll(const Packet& packet, const char* schema) {
  bool any = false;
  const Text name(xmp_string_new());
  for (;;) {
    const Iterator iterator(xmp_iterator_new(packet.get(), schema, nullptr, XMP_ITER_JUSTCHILDREN));
    if (iterator == nullptr ||
        !xmp_iterator_next(iterator.get(), nullptr, name.get(), nullptr, nullptr) ||
        !Delete(packet, schema, xmp_string_cstr(name.get())))
      return any;
    any = true;
  }
}

}  // namespace

std::string XmpOfResult(const std::string& xmp, int width, int height) {
  StartOnce();
  const Packet packet(xmp_new(xmp.data(), xmp.size()));
  if (packet == nullptr) return xmp;
  bool changed = SetNumber(packet, kTiff, "Orientation", 1);
  changed |= SetNumber(packet, kTiff, "ImageWidth", width);
  changed |= SetNumber(packet, kTiff, "ImageLength", height);
  changed |= SetNumber(packet, kExif, "PixelXDimension", width);
  changed |= SetNumber(packet, kExif, "PixelYDimension", height);
  changed |= Delete(packet, kXmp, "Thumbnails");
  for (const char* schema : {kGainMap, kContainer, kAppleGainMap})
    changed |= DeleteAll(packet, schema);
  if (!changed) return xmp;

  const Text text(xmp_string_new());
  if (!xmp_serialize(packet.get(), text.get(), XMP_SERIAL_USECOMPACTFORMAT, 0)) return xmp;
  return {xmp_string_cstr(text.get()), xmp_string_len(text.get())};
}

}  // namespace runner
