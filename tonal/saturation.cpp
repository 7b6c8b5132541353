// ChangeSaturationKRT(Amount as integer) as picture
//
// A copy whose colours are pushed away from their grey value (Amount above 0) or pulled towards it.
// 0 leaves colours as they are, 255 doubles the distance from grey, -255 gives grey, and what lies
// below that turns the colour about grey. Any Amount is taken. Nil when the picture can't be opened
// or the copy can't be made.

#include "pixels/rows.h"

namespace {

// One channel at `factor` 255ths of its distance from grey. The product wraps in 32 bits; the
// quotient is truncated toward zero.
constexpr int32_t PushFromGrey(int32_t channel, int32_t grey, int32_t factor) {
  return ClampToByte(grey + WrappingMultiply(channel - grey, factor) / 255);
}

constexpr Pixel Saturate(Pixel p, int32_t factor) {
  const int32_t grey = (p.red + 2 * p.green + p.blue) >> 2;
  return {PushFromGrey(p.red, grey, factor), PushFromGrey(p.green, grey, factor),
          PushFromGrey(p.blue, grey, factor)};
}

// The same in 16-bit lanes, twice as many of which fit into a vector, for factors so small that
// nothing wraps there: distance * factor / 255 is distance * whole + distance * rest / 255, and
// truncating the second quotient truncates both.
struct SaturateStrip {
  static constexpr int32_t kMostFactor = 127 * 255 + 254;  // distance * 127 + 254 fits

  explicit constexpr SaturateStrip(int32_t factor)
      : sign(factor < 0 ? -1 : 1),
        whole(static_cast<uint16_t>(factor * sign / 255)),
        rest(static_cast<uint16_t>(factor * sign % 255)) {}

  int16_t sign;
  uint16_t whole;
  uint16_t rest;

  constexpr uint16_t Push(uint16_t channel, uint16_t grey) const {
    const auto distance = static_cast<int16_t>((channel - grey) * sign);
    const auto length = static_cast<uint16_t>(distance < 0 ? -distance : distance);
    // v / 255 for the products that there are, 0 to 255 * 254.
    const auto v = static_cast<uint16_t>(length * rest);
    const auto quotient = static_cast<uint16_t>(static_cast<uint16_t>(v + 1 + (v >> 8)) >> 8);
    const auto push = static_cast<uint16_t>(length * whole + quotient);
    const auto pushed = static_cast<int16_t>(
        grey + (distance < 0 ? static_cast<int16_t>(-push) : static_cast<int16_t>(push)));
    // Clamped as 16 bits: an int in between makes compilers widen the lanes.
    constexpr int16_t kNone = 0;
    constexpr int16_t kFull = 255;
    const int16_t positive = pushed < kNone ? kNone : pushed;
    const int16_t clamped = positive > kFull ? kFull : positive;
    return static_cast<uint16_t>(clamped);
  }

  template <Layout kTo, Layout kFrom, class Count>
  void operator()(Count count, Word* target, const Word* source) const {
    using From = LayoutBits<kFrom>;
    uint16_t red[kStripLength];
    uint16_t green[kStripLength];
    uint16_t blue[kStripLength];
    for (int32_t i = 0; i < count; ++i) {
      const uint32_t word = source[i];
      red[i] = static_cast<uint16_t>(word >> From::kRed & 255);
      green[i] = static_cast<uint16_t>(word >> From::kGreen & 255);
      blue[i] = static_cast<uint16_t>(word >> From::kBlue & 255);
    }
    for (int32_t i = 0; i < count; ++i) {
      const auto sum = static_cast<uint16_t>(red[i] + 2 * green[i] + blue[i]);
      const auto grey = static_cast<uint16_t>(sum >> 2);
      red[i] = Push(red[i], grey);
      green[i] = Push(green[i], grey);
      blue[i] = Push(blue[i], grey);
    }
    for (int32_t i = 0; i < count; ++i) target[i] = Pack<kTo>({red[i], green[i], blue[i]});
  }
};

}  // namespace

REALpicture SaturationPicture(REALpicture picture, int32_t amount) {
  const int32_t factor = WrappingAdd(amount, 255);
  PictureReader source;
  if (!source.GetPictureEditor(picture, true, false)) return nullptr;
  PictureWriter target;
  if (!target.NewPictureWriter(source.width, source.height, source.hasAlpha)) return nullptr;
  const Rectangle whole = ClipRectangle(kWholePicture, source.width, source.height);
  if (factor >= -SaturateStrip::kMostFactor && factor <= SaturateStrip::kMostFactor) {
    MapStrips(target, whole, SaturateStrip(factor), source);
  } else {
    MapPixels(
        target, whole, [=](Pixel p) { return Saturate(p, factor); }, source);
  }
  return target.RenderPictureWriter();
}
