#include "tests/faults/scene.h"

#include <cstdio>

namespace faults {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

void AddHex(std::string& text, int byte) {
  text += kDigits[byte >> 4 & 15];
  text += kDigits[byte & 15];
}

std::string Start(int32_t width, int32_t height) {
  return std::to_string(width) + " x " + std::to_string(height) + ":";
}

void AddPixel(std::string& text, Rgb colour) {
  text += ' ';
  AddHex(text, colour.red);
  AddHex(text, colour.green);
  AddHex(text, colour.blue);
}

void PaintOver(const PictureRef& picture, const Paint& paint) {
  const uint8_t opaque = picture->Layout().storage == host::Storage::kRowTable ? 0 : 255;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) support::Put(picture, x, y, paint(x, y), opaque);
  }
}

}  // namespace

Rgb Photo(int32_t x, int32_t y) { return {20 + 41 * x, 200 - 50 * y, 100 + 13 * x + 7 * y}; }
Rgb Other(int32_t x, int32_t y) { return {250 - 30 * y, 10 + 47 * x, 90 - 11 * x + 5 * y}; }
Rgb Greys(int32_t x, int32_t y) {
  const int32_t grey = 30 + 37 * x + 9 * y;
  return {grey, grey, grey};
}
Rgb White(int32_t, int32_t) { return {255, 255, 255}; }
Rgb Black(int32_t, int32_t) { return {0, 0, 0}; }

std::string Text(const PictureRef& picture) {
  if (!picture) return "nil";
  std::string text = Start(picture->Width(), picture->Height());
  if (picture->Layout().storage == host::Storage::kVector) return text + " no pixels";
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) AddPixel(text, support::At(picture, x, y));
  }
  return text;
}

std::string Painted(const Paint& paint, int32_t width, int32_t height) {
  std::string text = Start(width, height);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) AddPixel(text, paint(x, y));
  }
  return text;
}

std::string Text(bool value) { return value ? "true" : "false"; }
std::string Text(int32_t value) { return std::to_string(value); }
std::string Text(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", value);
  return text;
}

std::string TextOfBytes(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) AddHex(text, static_cast<uint8_t>(byte));
  return text;
}

PictureRef Scene::MakeChanging(const Paint& paint, int32_t width, int32_t height) {
  const Stand stand = made < stands.size() ? stands[made] : Stand::kItself;
  ++made;
  if (stand == Stand::kBlank) return host.NewPicture(width, height);
  if (stand == Stand::kItself && opening.Vector()) {
    return host.NewVectorPicture(
        width, height, [paint](int32_t x, int32_t y) -> std::optional<uint32_t> {
          const Rgb colour = paint(x, y);
          return static_cast<uint32_t>(colour.red << 16 | colour.green << 8 | colour.blue);
        });
  }
  PictureRef picture = stand == Stand::kDrawn ? host.NewPicture(width, height)
                                              : host.NewPicture(width, height, opening.layout);
  PaintOver(picture, paint);
  return picture;
}

PictureRef Scene::Make(const Paint& paint, int32_t width, int32_t height) {
  PictureRef picture = MakeChanging(paint, width, height);
  if (picture->Layout().storage != host::Storage::kVector) {
    kept.push_back({picture, support::Bytes(picture)});
  }
  return picture;
}

PictureRef Scene::MakeNative(const Paint& paint) {
  PictureRef picture = host.NewPicture(kWidth, kHeight);
  PaintOver(picture, paint);
  return picture;
}

bool Scene::SourcesUntouched() const {
  for (const Kept& source : kept) {
    if (support::Bytes(source.picture) != source.bytes) return false;
  }
  return true;
}

}  // namespace faults
