#include "runner/pixel_rows.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

namespace runner {
namespace {

// Where a pixel's four bytes lie.
struct Rgba {
  static constexpr size_t red = 0, green = 1, blue = 2, alpha = 3;
};
struct Argb {
  static constexpr size_t alpha = 0, red = 1, green = 2, blue = 3;
};
struct Bgrx {
  static constexpr size_t blue = 0, green = 1, red = 2, alpha = 3;
};

enum class Alpha { kNone, kPlain, kPremultiplied };

Alpha AlphaOf(const host::PictureLayout& layout) {
  if (layout.storage != host::Storage::kBitmapContext) return Alpha::kNone;
  switch (layout.alphaInfo) {
    case host::kAlphaPremultipliedFirst:
    case host::kAlphaPremultipliedLast:
      return Alpha::kPremultiplied;
    case host::kAlphaFirst:
    case host::kAlphaLast:
      return Alpha::kPlain;
    default:
      return Alpha::kNone;
  }
}

uint8_t Premultiply(uint32_t colour, uint32_t alpha) {
  return static_cast<uint8_t>((colour * alpha + 127) / 255);
}

uint8_t Unpremultiply(uint32_t colour, uint32_t alpha) {
  if (alpha == 0) return 0;
  return static_cast<uint8_t>(std::min<uint32_t>((colour * 255 + alpha / 2) / alpha, 255));
}

static_assert(std::endian::native == std::endian::little);

// Three samples as a little-endian word has them, the fourth byte anything, to and from the word of
// a pixel whose own fourth byte is 0.
template <class Order>
uint32_t PixelOfSamples(uint32_t samples) {
  if constexpr (std::is_same_v<Order, Argb>) return samples << 8;
  if constexpr (std::is_same_v<Order, Bgrx>) return __builtin_bswap32(samples) >> 8;
  return samples & 0xFFFFFF;
}
template <class Order>
uint32_t SamplesOfPixel(uint32_t pixel) {
  if constexpr (std::is_same_v<Order, Argb>) return pixel >> 8;
  if constexpr (std::is_same_v<Order, Bgrx>) return __builtin_bswap32(pixel) >> 8;
  return pixel;
}

// The rows of most photographs, a word at a time, which takes a third of the time of bytes. All but
// the last pixel, since a word of samples reaches one byte further than they do.
template <class Order>
size_t PackWords(const uint8_t* image, uint8_t fourth, uint8_t* row, size_t width) {
  const uint32_t fourthByte = uint32_t{fourth} << (8 * Order::alpha);
  for (size_t x = 0; x + 1 < width; ++x) {
    uint32_t samples = 0;
    std::memcpy(&samples, image + 3 * x, 4);
    const uint32_t pixel = PixelOfSamples<Order>(samples) | fourthByte;
    std::memcpy(row + 4 * x, &pixel, 4);
  }
  return width - std::min<size_t>(width, 1);
}
template <class Order>
size_t UnpackWords(const uint8_t* row, uint8_t* image, size_t width) {
  for (size_t x = 0; x + 1 < width; ++x) {
    uint32_t pixel = 0;
    std::memcpy(&pixel, row + 4 * x, 4);
    const uint32_t samples = SamplesOfPixel<Order>(pixel);
    std::memcpy(image + 3 * x, &samples, 4);
  }
  return width - std::min<size_t>(width, 1);
}

template <class Order, int kSamples, Alpha kAlpha>
void Pack(const uint8_t* image, uint8_t unused, uint8_t* row, size_t width) {
  size_t done = 0;
  if constexpr (kSamples == 3) {
    done = PackWords<Order>(image, kAlpha == Alpha::kNone ? unused : uint8_t{255}, row, width);
    image += 3 * done;
    row += 4 * done;
  }
  for (size_t x = done; x < width; ++x, image += kSamples, row += 4) {
    const uint8_t alpha = kSamples == 4 ? image[3] : 255;
    if constexpr (kAlpha == Alpha::kPremultiplied && kSamples == 4) {
      row[Order::red] = Premultiply(image[0], alpha);
      row[Order::green] = Premultiply(image[1], alpha);
      row[Order::blue] = Premultiply(image[2], alpha);
    } else {
      row[Order::red] = image[0];
      row[Order::green] = image[1];
      row[Order::blue] = image[2];
    }
    row[Order::alpha] = kAlpha == Alpha::kNone ? unused : alpha;
  }
}

template <class Order, int kSamples, Alpha kAlpha>
void Unpack(const uint8_t* row, uint8_t* image, size_t width) {
  size_t done = 0;
  if constexpr (kSamples == 3 && kAlpha == Alpha::kNone) {
    done = UnpackWords<Order>(row, image, width);
    image += 3 * done;
    row += 4 * done;
  }
  for (size_t x = done; x < width; ++x, image += kSamples, row += 4) {
    const uint8_t alpha = kAlpha == Alpha::kNone ? uint8_t{255} : row[Order::alpha];
    if (kAlpha == Alpha::kPremultiplied && alpha != 255) {
      image[0] = Unpremultiply(row[Order::red], alpha);
      image[1] = Unpremultiply(row[Order::green], alpha);
      image[2] = Unpremultiply(row[Order::blue], alpha);
    } else {
      image[0] = row[Order::red];
      image[1] = row[Order::green];
      image[2] = row[Order::blue];
    }
    if constexpr (kSamples == 4) image[3] = alpha;
  }
}

// Calls `body` with the order, the number of samples and the kind of alpha as types.
template <class Body>
void WithShape(const host::PictureLayout& layout, int samples, Body body) {
  const auto withAlpha = [&]<class Order, int kSamples>() {
    switch (AlphaOf(layout)) {
      case Alpha::kNone:
        return body.template operator()<Order, kSamples, Alpha::kNone>();
      case Alpha::kPlain:
        return body.template operator()<Order, kSamples, Alpha::kPlain>();
      case Alpha::kPremultiplied:
        return body.template operator()<Order, kSamples, Alpha::kPremultiplied>();
    }
  };
  const auto withOrder = [&]<class Order>() {
    if (samples == 3)
      withAlpha.template operator()<Order, 3>();
    else
      withAlpha.template operator()<Order, 4>();
  };
  if (layout.storage == host::Storage::kRowTable) return withOrder.template operator()<Bgrx>();
  switch (layout.alphaInfo) {
    case host::kAlphaPremultipliedFirst:
    case host::kAlphaFirst:
    case host::kAlphaNoneSkipFirst:
      return withOrder.template operator()<Argb>();
    default:
      return withOrder.template operator()<Rgba>();
  }
}

}  // namespace

bool StoresAlpha(const host::PictureLayout& layout) { return AlphaOf(layout) != Alpha::kNone; }

bool IsKnown(const host::PictureLayout& layout) {
  if (layout.storage == host::Storage::kRowTable) return true;
  return layout.storage == host::Storage::kBitmapContext && layout.bitsPerPixel == 32 &&
         layout.alphaInfo < host::kAlphaOnly;
}

void PackRow(const uint8_t* image, int samples, const host::PictureLayout& layout, uint8_t* row,
             size_t width) {
  const uint8_t unused = layout.storage == host::Storage::kRowTable ? 0 : 255;
  WithShape(layout, samples, [&]<class Order, int kSamples, Alpha kAlpha>() {
    Pack<Order, kSamples, kAlpha>(image, unused, row, width);
  });
}

void UnpackRow(const uint8_t* row, const host::PictureLayout& layout, uint8_t* image, int samples,
               size_t width) {
  WithShape(layout, samples, [&]<class Order, int kSamples, Alpha kAlpha>() {
    Unpack<Order, kSamples, kAlpha>(row, image, width);
  });
}

bool RowIsOpaque(const uint8_t* rgba, size_t width) {
  uint8_t all = 255;
  for (size_t x = 0; x < width; ++x) all &= rgba[4 * x + 3];
  return all == 255;
}

}  // namespace runner
