#include "runner/files/page_rows.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "runner/pixel_rows.h"

namespace runner {

PageRows::PageRows(const Page& page)
    : picture(*page.picture), alpha(page.alpha), mask(page.picture->Mask()) {
  if (!IsKnown(picture.Layout())) whole = picture.ToRgba();
  if (mask && !IsKnown(mask->Layout())) mask = {};
}

bool PageRows::MayBeClear() const {
  return !alpha.empty() || mask || !whole.empty() || StoresAlpha(picture.Layout());
}

void PageRows::ReadRgba(int x, int y, int count, uint8_t* rgba) const {
  const auto pixels = static_cast<size_t>(count), left = static_cast<size_t>(x);
  const size_t start = static_cast<size_t>(y) * static_cast<size_t>(Width()) + left;
  if (whole.empty())
    UnpackRow(picture.Row(y) + 4 * left, picture.Layout(), rgba, 4, pixels);
  else
    std::copy_n(&whole[4 * start], 4 * pixels, rgba);
  if (!alpha.empty())
    for (size_t i = 0; i < pixels; ++i) rgba[4 * i + 3] = alpha[start + i];
  if (!mask || y >= mask->Height() || x >= mask->Width()) return;
  const size_t masked = std::min(pixels, static_cast<size_t>(mask->Width() - x));
  std::vector<uint8_t> row(3 * masked);
  UnpackRow(mask->Row(y) + 4 * left, mask->Layout(), row.data(), 3, masked);
  for (size_t i = 0; i < masked; ++i)
    rgba[4 * i + 3] = static_cast<uint8_t>(rgba[4 * i + 3] * (255 - row[3 * i]) / 255);
}

void PageRows::ReadRgb(int x, int y, int count, uint8_t* rgb) const {
  if (whole.empty())
    return UnpackRow(picture.Row(y) + 4 * static_cast<size_t>(x), picture.Layout(), rgb, 3,
                     static_cast<size_t>(count));
  const uint8_t* from =
      &whole[4 * (static_cast<size_t>(y) * static_cast<size_t>(Width()) + static_cast<size_t>(x))];
  for (int i = 0; i < count; ++i) std::copy_n(from + 4 * i, 3, rgb + 3 * i);
}

void PageRows::ReadOverWhite(int x, int y, int count, uint8_t* rgb) const {
  std::vector<uint8_t> rgba(static_cast<size_t>(count) * 4);
  ReadRgba(x, y, count, rgba.data());
  for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
    const int opacity = rgba[4 * i + 3];
    for (size_t c = 0; c < 3; ++c)
      rgb[3 * i + c] =
          static_cast<uint8_t>((rgba[4 * i + c] * opacity + 255 * (255 - opacity) + 127) / 255);
  }
}

template <class Body>
bool PageRows::AllPixels(Body holds) const {
  std::vector<uint8_t> row(static_cast<size_t>(Width()) * 4);
  for (int y = 0; y < Height(); ++y) {
    ReadRgba(0, y, Width(), row.data());
    for (size_t x = 0; x < static_cast<size_t>(Width()); ++x)
      if (!holds(&row[4 * x])) return false;
  }
  return true;
}

bool PageRows::IsOpaque() const {
  return !MayBeClear() || AllPixels([](const uint8_t* rgba) { return rgba[3] == 255; });
}

bool PageRows::IsGrey() const {
  return AllPixels([](const uint8_t* rgba) { return rgba[0] == rgba[1] && rgba[1] == rgba[2]; });
}

bool PageRows::IsBlackAndWhite() const {
  return AllPixels([](const uint8_t* rgba) {
    return rgba[0] == rgba[1] && rgba[1] == rgba[2] && (rgba[0] == 0 || rgba[0] == 255);
  });
}

size_t PageRows::CountColours(size_t most) const {
  std::unordered_set<uint32_t> colours;
  uint32_t latest = 0;
  AllPixels([&](const uint8_t* rgba) {
    uint32_t colour = 0;
    std::memcpy(&colour, rgba, 4);
    if (colours.empty() || colour != latest) colours.insert(latest = colour);
    return colours.size() <= most;
  });
  return colours.size();
}

}  // namespace runner
