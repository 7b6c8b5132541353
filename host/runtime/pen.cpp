#include "host/runtime/pen.h"

#include <algorithm>

namespace host::runtime {
namespace {

// a / b rounded up; b is positive.
int64_t DivideUp(int64_t a, int64_t b) { return a >= 0 ? (a + b - 1) / b : -(-a / b); }

}  // namespace

PenLine::PenLine(int32_t fromX, int32_t fromY, int32_t toX, int32_t toY, int32_t width,
                 int32_t height)
    : x1(fromX),
      y1(fromY),
      penWidth(width),
      penHeight(height),
      leftwards(toX < fromX),
      upwards(toY < fromY),
      dx(leftwards ? x1 - toX : toX - x1),
      dy(upwards ? y1 - toY : toY - y1) {}

// round(i * b / a). The product of two distances below 2^32 fits 64 bits without a sign.
int64_t PenLine::ShorterAt(int64_t i) const {
  const uint64_t a = static_cast<uint64_t>(std::max(dx, dy));
  const uint64_t b = static_cast<uint64_t>(std::min(dx, dy));
  if (a == 0) return 0;
  const uint64_t product = static_cast<uint64_t>(i) * b;
  const uint64_t remainder = product % a;
  return static_cast<int64_t>(product / a + (2 * remainder >= a ? 1 : 0));
}

// The first point i with round(i * b / a) >= k, for 1 <= k <= b: i >= (2k - 1) * a / 2b. Written as
// k * a / b - a / 2b, so that every product fits.
int64_t PenLine::FirstWithShorter(int64_t k) const {
  const uint64_t a = static_cast<uint64_t>(std::max(dx, dy));
  const uint64_t b = static_cast<uint64_t>(std::min(dx, dy));
  const uint64_t product = static_cast<uint64_t>(k) * a;
  const int64_t quotient = static_cast<int64_t>(product / b);
  const int64_t remainder = static_cast<int64_t>(product % b);
  return quotient + DivideUp(2 * remainder - static_cast<int64_t>(a), 2 * static_cast<int64_t>(b));
}

PenSpan PenLine::At(int32_t y) const {
  if (penWidth < 1 || penHeight < 1) return {};
  // The pen covers row y from points in rows y - penHeight + 1 .. y; how far those lie from the
  // first end, along the line's own direction.
  const int64_t nearest = upwards ? y1 - y : y - penHeight + 1 - y1;
  const int64_t first = std::max<int64_t>(nearest, 0);
  const int64_t last = std::min<int64_t>(nearest + penHeight - 1, dy);
  if (first > last) return {};

  // How far to the side the first and the last of those points lie.
  int64_t from = 0;
  int64_t to = 0;
  if (dx >= dy) {
    from = first == 0 ? 0 : FirstWithShorter(first);
    to = last == dy ? dx : FirstWithShorter(last + 1) - 1;
  } else {
    from = ShorterAt(first);
    to = ShorterAt(last);
  }
  return leftwards ? PenSpan{x1 - to, x1 - from + penWidth}
                   : PenSpan{x1 + from, x1 + to + penWidth};
}

}  // namespace host::runtime
