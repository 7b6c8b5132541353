#include "host/graphics.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "host/runtime/pen.h"
#include "host/runtime/picture_state.h"
#include "host/runtime/pixel_codec.h"

namespace host {
namespace {

using runtime::PictureState;

// One row of a picture, R, G, B, A, not premultiplied, its mask in the alpha.
void ReadRow(const Picture& image, int32_t y, std::vector<uint8_t>& rgba) {
  const PictureState& from = image.State();
  rgba.assign(static_cast<size_t>(from.width) * 4, 0);
  if (from.layout.storage == Storage::kVector) {
    for (int32_t x = 0; x < from.width; ++x) {
      const auto colour = from.paint(x, y);
      if (!colour) continue;
      const Rgba value = runtime::FromRgb(*colour);
      std::memcpy(&rgba[static_cast<size_t>(x) * 4], &value, 4);
    }
    return;
  }
  runtime::DecodeStraight(from.Row(y), from.layout, from.width, rgba.data());
  const bool opaque = !from.layout.hasAlphaChannel.value_or(false);
  const Picture* mask = from.mask.Get();
  for (int32_t x = 0; x < from.width; ++x) {
    uint8_t& alpha = rgba[static_cast<size_t>(x) * 4 + 3];
    if (opaque) alpha = 255;
    // A mask is white where its picture is clear.
    if (mask != nullptr && x < mask->Width() && y < mask->Height()) {
      alpha = static_cast<uint8_t>((alpha * (255 - mask->Pixel(x, y).red) + 127) / 255);
    }
  }
}

// `over` on top of `under`, neither premultiplied.
void Blend(const uint8_t* over, uint8_t* under) {
  const int a = over[3];
  if (a == 255) {
    std::memcpy(under, over, 4);
  } else if (a > 0) {
    const int rest = under[3] * (255 - a) / 255;
    const int alpha = a + rest;
    for (int i = 0; i < 3; ++i) {
      under[i] = static_cast<uint8_t>((over[i] * a + under[i] * rest + alpha / 2) / alpha);
    }
    under[3] = static_cast<uint8_t>(alpha);
  }
}

// The rows or columns of an area that are inside 0 .. size - 1, counted from the area's start.
struct Range {
  int64_t begin, end;
};
Range Inside(int32_t start, int32_t length, int32_t size) {
  const int64_t begin = std::max<int64_t>(0, -static_cast<int64_t>(start));
  const int64_t end = std::min<int64_t>(length, static_cast<int64_t>(size) - start);
  return {begin, end};
}

// Paints what the lines before left out.
void DrawSpan(PictureState& to, int32_t y, runtime::PenSpan span, Rgba colour) {
  const auto paint = [&](int64_t left, int64_t right) {
    if (left >= right) return;
    runtime::EncodeRun(to.Row(y) + static_cast<size_t>(left) * runtime::BytesPerPixel(to.layout),
                       to.layout, right - left, colour);
  };
  span = {std::max<int64_t>(span.left, 0), std::min<int64_t>(span.right, to.width)};
  if (span.left >= span.right) return;
  runtime::PenSpan& covered = to.coveredByLines.rows[static_cast<size_t>(y)];
  if (span.right < covered.left || span.left > covered.right) {
    paint(span.left, span.right);
    covered = span;
    return;
  }
  paint(span.left, covered.left);
  paint(covered.right, span.right);
  covered = {std::min(covered.left, span.left), std::max(covered.right, span.right)};
}

bool CanBeDrawn(const Picture& picture) {
  const PictureLayout& layout = picture.Layout();
  if (layout.storage == Storage::kVector) return true;
  return picture.State().HasMemory() && runtime::HasPixels(layout);
}

}  // namespace

std::string Graphics::Describe() const {
  return "Graphics #" + std::to_string(Serial()) +
         (target ? " of Picture #" + std::to_string(target->Serial()) : std::string());
}

void Graphics::DrawLine(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
  PictureState& to = target->State();
  if (!to.HasMemory() || !runtime::HasPixels(to.layout)) return;
  runtime::CoveredByLines& covered = to.coveredByLines;
  // Whoever holds a lock, or shares the pixels, may write at any time.
  const bool watched = to.descriptionLocks == 0 && !to.pixelsShared;
  if (covered.version != to.version || covered.colour != foreColour || !watched) {
    covered.rows.assign(static_cast<size_t>(to.height), {});
  }
  const runtime::PenLine line(x1, y1, x2, y2, penWidth, penHeight);
  const int64_t top = std::max<int64_t>(std::min(y1, y2), 0);
  const int64_t bottom = std::min<int64_t>(int64_t{std::max(y1, y2)} + penHeight, to.height);
  for (int64_t row = top; row < bottom; ++row) {
    const auto y = static_cast<int32_t>(row);
    DrawSpan(to, y, line.At(y), runtime::FromRgb(foreColour));
  }
  to.DiscardRendering();
  covered.version = to.version;
  covered.colour = foreColour;
}

void Graphics::DrawPicture(const Picture& image, Area to, Area from) {
  PictureState& onto = target->State();
  if (onto.layout.storage == Storage::kVector || !CanBeDrawn(*target) || !CanBeDrawn(image)) {
    return;
  }
  if (to.width < 1 || to.height < 1 || from.width < 1 || from.height < 1) return;
  const Range rows = Inside(to.top, to.height, onto.height);
  const Range columns = Inside(to.left, to.width, onto.width);
  std::vector<uint8_t> source;
  std::vector<uint8_t> row(static_cast<size_t>(onto.width) * 4);
  int64_t sourceRead = -1;
  for (int64_t v = rows.begin; v < rows.end; ++v) {
    const int64_t sourceY = from.top + v * from.height / to.height;
    if (sourceY < 0 || sourceY >= image.Height()) continue;
    if (sourceY != sourceRead) ReadRow(image, static_cast<int32_t>(sourceY), source);
    sourceRead = sourceY;
    uint8_t* pixels = onto.Row(static_cast<int32_t>(to.top + v));
    runtime::DecodeStraight(pixels, onto.layout, onto.width, row.data());
    for (int64_t u = columns.begin; u < columns.end; ++u) {
      const int64_t sourceX = from.left + u * from.width / to.width;
      if (sourceX < 0 || sourceX >= image.Width()) continue;
      Blend(&source[static_cast<size_t>(sourceX) * 4], &row[static_cast<size_t>(to.left + u) * 4]);
    }
    runtime::EncodeStraight(pixels, onto.layout, onto.width, row.data());
  }
  onto.DiscardRendering();
}

}  // namespace host
