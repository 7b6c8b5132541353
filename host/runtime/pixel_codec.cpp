#include "host/runtime/pixel_codec.h"

#include <cstring>

namespace host::runtime {
namespace {

// Which byte of a 32-bit pixel holds what, and what alpha means there.
struct Order {
  int red, green, blue, spare;  // spare: alpha or unused
  bool alpha, premultiplied;
  uint8_t unused;  // goes into the spare byte where that isn't alpha
};

Order OrderOf(const PictureLayout& layout) {
  if (layout.storage == Storage::kRowTable) return {2, 1, 0, 3, false, false, 0};
  if (layout.storage == Storage::kGraphicsWorld) return {1, 2, 3, 0, false, false, 255};
  switch (layout.alphaInfo) {
    case kAlphaPremultipliedLast:
      return {0, 1, 2, 3, true, true, 255};
    case kAlphaPremultipliedFirst:
      return {1, 2, 3, 0, true, true, 255};
    case kAlphaLast:
      return {0, 1, 2, 3, true, false, 255};
    case kAlphaFirst:
      return {1, 2, 3, 0, true, false, 255};
    case kAlphaNoneSkipFirst:
      return {1, 2, 3, 0, false, false, 255};
    default:
      return {0, 1, 2, 3, false, false, 255};
  }
}

bool IsAlphaOnly(const PictureLayout& layout) {
  return layout.storage == Storage::kBitmapContext && layout.alphaInfo == kAlphaOnly;
}

uint8_t Grey(Rgba value) {
  return static_cast<uint8_t>((value.red * 299 + value.green * 587 + value.blue * 114 + 500) /
                              1000);
}

uint8_t Widen5(int bits) { return static_cast<uint8_t>(bits << 3 | bits >> 2); }

Rgba Divide(Rgba value) {
  if (value.alpha == 255) return value;
  if (value.alpha == 0) return {0, 0, 0, 0};
  const auto divide = [a = value.alpha](uint8_t channel) {
    const int straight = (channel * 255 + a / 2) / a;
    return static_cast<uint8_t>(straight > 255 ? 255 : straight);
  };
  return {divide(value.red), divide(value.green), divide(value.blue), value.alpha};
}

Rgba Multiply(Rgba value) {
  if (value.alpha == 255) return value;
  const auto multiply = [a = value.alpha](uint8_t channel) {
    return static_cast<uint8_t>((channel * a + 127) / 255);
  };
  return {multiply(value.red), multiply(value.green), multiply(value.blue), value.alpha};
}

bool IsPlain32(const PictureLayout& layout) {
  return layout.bitsPerPixel == 32 && !IsAlphaOnly(layout);
}

}  // namespace

bool HasPixels(const PictureLayout& layout) {
  return layout.bitsPerPixel == 8 || layout.bitsPerPixel == 16 || layout.bitsPerPixel == 24 ||
         layout.bitsPerPixel == 32;
}

size_t BytesPerPixel(const PictureLayout& layout) {
  return static_cast<size_t>(layout.bitsPerPixel) / 8;
}

Rgba FromRgb(uint32_t rgb) {
  return {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
          static_cast<uint8_t>(rgb), 255};
}

Rgba Decode(const uint8_t* pixel, const PictureLayout& layout) {
  if (IsAlphaOnly(layout)) return {0, 0, 0, pixel[0]};
  switch (layout.bitsPerPixel) {
    case 8:
      return {pixel[0], pixel[0], pixel[0], 255};
    case 16: {
      const int word = pixel[0] | pixel[1] << 8;
      return {Widen5(word >> 10 & 31), Widen5(word >> 5 & 31), Widen5(word & 31), 255};
    }
    case 24:
      return {pixel[0], pixel[1], pixel[2], 255};
    default: {
      const Order order = OrderOf(layout);
      const uint8_t alpha = order.alpha ? pixel[order.spare] : uint8_t{255};
      return {pixel[order.red], pixel[order.green], pixel[order.blue], alpha};
    }
  }
}

void Encode(uint8_t* pixel, const PictureLayout& layout, Rgba value) {
  if (IsAlphaOnly(layout)) {
    std::memset(pixel, 0, BytesPerPixel(layout));
    pixel[0] = value.alpha;
    return;
  }
  switch (layout.bitsPerPixel) {
    case 8:
      pixel[0] = Grey(value);
      return;
    case 16: {
      const int word = 0x8000 | value.red >> 3 << 10 | value.green >> 3 << 5 | value.blue >> 3;
      pixel[0] = static_cast<uint8_t>(word);
      pixel[1] = static_cast<uint8_t>(word >> 8);
      return;
    }
    case 24:
      pixel[0] = value.red;
      pixel[1] = value.green;
      pixel[2] = value.blue;
      return;
    default: {
      const Order order = OrderOf(layout);
      pixel[order.red] = value.red;
      pixel[order.green] = value.green;
      pixel[order.blue] = value.blue;
      pixel[order.spare] = order.alpha ? value.alpha : order.unused;
    }
  }
}

void DecodeStraight(const uint8_t* pixels, const PictureLayout& layout, int64_t count,
                    uint8_t* rgba) {
  const size_t step = BytesPerPixel(layout);
  const Order order = OrderOf(layout);
  const bool premultiplied = IsPlain32(layout) && order.premultiplied;
  for (; count > 0; --count, pixels += step, rgba += 4) {
    Rgba value;
    if (IsPlain32(layout)) {
      value = {pixels[order.red], pixels[order.green], pixels[order.blue],
               order.alpha ? pixels[order.spare] : uint8_t{255}};
      if (premultiplied) value = Divide(value);
    } else {
      value = Decode(pixels, layout);
    }
    rgba[0] = value.red;
    rgba[1] = value.green;
    rgba[2] = value.blue;
    rgba[3] = value.alpha;
  }
}

void EncodeStraight(uint8_t* pixels, const PictureLayout& layout, int64_t count,
                    const uint8_t* rgba) {
  const size_t step = BytesPerPixel(layout);
  const Order order = OrderOf(layout);
  const bool premultiplied = IsPlain32(layout) && order.premultiplied;
  for (; count > 0; --count, pixels += step, rgba += 4) {
    Rgba value{rgba[0], rgba[1], rgba[2], rgba[3]};
    if (!IsPlain32(layout)) {
      Encode(pixels, layout, value);
      continue;
    }
    if (premultiplied) value = Multiply(value);
    pixels[order.red] = value.red;
    pixels[order.green] = value.green;
    pixels[order.blue] = value.blue;
    pixels[order.spare] = order.alpha ? value.alpha : order.unused;
  }
}

void EncodeRun(uint8_t* pixels, const PictureLayout& layout, int64_t count, Rgba value) {
  uint8_t one[4] = {};
  Encode(one, layout, value);
  if (layout.bitsPerPixel == 32) {
    uint32_t word = 0;
    std::memcpy(&word, one, 4);
    for (int64_t i = 0; i < count; ++i) std::memcpy(pixels + i * 4, &word, 4);
  } else {
    const size_t step = BytesPerPixel(layout);
    for (int64_t i = 0; i < count; ++i) {
      std::memcpy(pixels + static_cast<size_t>(i) * step, one, step);
    }
  }
}

}  // namespace host::runtime
