// MergePictureKRT(source1 as picture, source2 as picture) as picture
// CombinePicturesKRT(red as picture, blue as picture, green as picture) as picture
// ReplaceRedChannelKRT(RedChannel as picture) as picture
// ReplaceGreenChannelKRT(GreenChannel as picture) as picture
// ReplaceBlueChannelKRT(BlueChannel as picture) as picture
//
// New pictures from the channels of several, always without an alpha channel: the brighter of two
// pictures, channel by channel; one channel each of three pictures, in the order red, blue, green
// (intended); a picture with one channel taken from another, of which only the top left part counts
// where it is larger.
//
// Nil when a picture is nil or can't be opened, when sizes differ (a replacing channel: is
// smaller), and when the new picture can't be made. A nil replacing channel raises a
// NilObjectException.

#include "pixels/rows.h"
#include "plugin/binding/exceptions.h"

namespace {

constexpr Pixel Merge(Pixel a, Pixel b) {
  return {Larger(a.red, b.red), Larger(a.green, b.green), Larger(a.blue, b.blue)};
}

constexpr Pixel Combine(Pixel red, Pixel green, Pixel blue) {
  return {red.red, green.green, blue.blue};
}

constexpr Pixel ReplaceRed(Pixel source, Pixel channel) {
  return {channel.red, source.green, source.blue};
}
constexpr Pixel ReplaceGreen(Pixel source, Pixel channel) {
  return {source.red, channel.green, source.blue};
}
constexpr Pixel ReplaceBlue(Pixel source, Pixel channel) {
  return {source.red, source.green, channel.blue};
}

// A picture that is given twice is locked twice.
bool Open(PictureReader& reader, REALpicture picture) {
  return reader.GetPictureEditor(picture, true, false);
}

bool SameSize(const PictureReader& a, const PictureReader& b) {
  return a.width == b.width && a.height == b.height;
}

// A new picture of the first source's size, +1: `rule` of the pixels of all sources, none of which
// is smaller. Null when it can't be made.
template <class Rule, class... Sources>
REALpicture MapOpened(const Rule& rule, const PictureReader& first, const Sources&... others) {
  PictureWriter target;
  if (!target.NewPictureWriter(first.width, first.height, false)) return nullptr;
  MapPixels(target, {0, 0, first.width, first.height}, rule, first, others...);
  return target.RenderPictureWriter();
}

template <class Rule>
REALpicture ReplaceChannel(REALpicture picture, REALpicture channelPicture, const Rule& rule) {
  if (channelPicture == nullptr) {
    RaiseNilObject("The channel picture is nil.");
    return nullptr;
  }
  PictureReader source;
  PictureReader channel;
  if (!Open(source, picture) || !Open(channel, channelPicture)) return nullptr;
  if (channel.width < source.width || channel.height < source.height) return nullptr;
  return MapOpened(rule, source, channel);
}

}  // namespace

REALpicture MergePicture(REALpicture source1, REALpicture source2) {
  if (source1 == nullptr || source2 == nullptr) return nullptr;
  PictureReader first;
  PictureReader second;
  if (!Open(first, source1) || !Open(second, source2)) return nullptr;
  if (!SameSize(first, second)) return nullptr;
  return MapOpened([](Pixel a, Pixel b) { return Merge(a, b); }, first, second);
}

REALpicture CombinePicturesKRT(REALpicture red, REALpicture blue, REALpicture green) {
  PictureReader reds;
  PictureReader greens;
  PictureReader blues;
  if (!Open(reds, red) || !Open(greens, green) || !Open(blues, blue)) return nullptr;
  if (!SameSize(reds, greens) || !SameSize(greens, blues)) return nullptr;
  return MapOpened([](Pixel r, Pixel g, Pixel b) { return Combine(r, g, b); }, reds, greens, blues);
}

REALpicture ReplaceRedChannel(REALpicture picture, REALpicture channel) {
  return ReplaceChannel(picture, channel, [](Pixel s, Pixel c) { return ReplaceRed(s, c); });
}

REALpicture ReplaceGreenChannel(REALpicture picture, REALpicture channel) {
  return ReplaceChannel(picture, channel, [](Pixel s, Pixel c) { return ReplaceGreen(s, c); });
}

REALpicture ReplaceBlueChannel(REALpicture picture, REALpicture channel) {
  return ReplaceChannel(picture, channel, [](Pixel s, Pixel c) { return ReplaceBlue(s, c); });
}
