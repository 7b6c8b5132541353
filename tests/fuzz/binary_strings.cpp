// Strings that are, or nearly are, pictures in the binary format. The first three bytes choose the
// host. Whatever becomes a picture must have the pixels that stand in the string; written again, it
// must read back the same.
#include "host/host.h"
#include "tests/fuzz/choices.h"
#include "tests/fuzz/input_host.h"
#include "tests/fuzz/target.h"

namespace fuzz {
namespace {

using host::PictureLayout;
using PictureRef = host::Ref<host::Picture>;
using StringRef = host::Ref<host::String>;

host::Settings ReadSettings(Choices& choices) {
  host::Settings settings;
  settings.application = static_cast<host::Application>(choices.Below(3));
  settings.opaqueLayout = PictureLayout::BitmapContext(1 + choices.Below(6));
  const auto padding = static_cast<int32_t>(choices.Below(9));
  settings.opaqueLayout.rowPadding = padding;
  settings.opaqueLayout.startOffset = padding;
  settings.consoleLayout = PictureLayout::RowTable(padding);
  settings.maximumPixelBytes = 1 << 22;
  return settings;
}

size_t BigEndian(std::string_view bytes, size_t at) {
  size_t value = 0;
  for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(bytes[at + i]);
  return value;
}

// Red, green and blue of every pixel, row by row.
std::string Colours(const PictureRef& picture) {
  std::string bytes;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) {
      const host::Rgba pixel = picture->Pixel(x, y);
      for (const uint8_t channel : {pixel.red, pixel.green, pixel.blue}) {
        bytes += static_cast<char>(channel);
      }
    }
  }
  return bytes;
}

void CheckRead(const PictureRef& picture, std::string_view string) {
  Require(string.size() >= 24, "a picture came of less than a header");  // pixels may lie inside
  Require(BigEndian(string, 4) == string.size(), "a string of another length was taken");
  Require(BigEndian(string, 8) == static_cast<size_t>(picture->Width()), "another width");
  Require(BigEndian(string, 12) == static_cast<size_t>(picture->Height()), "another height");
  const std::string colours = Colours(picture);
  Require(string.substr(BigEndian(string, 20)).starts_with(colours), "other pixels");
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fuzz;
  Choices choices(data, size);
  const InputHost host(ReadSettings(choices));
  const std::string_view string = choices.Rest();
  const host::Callable& read = host->GlobalMethod("BinaryStringtoPictureKRT");
  const host::Callable& write = host->GlobalMethod("PicturetoBinaryStringKRT");
  const host::Snapshot before = host->census.Take();
  {
    const auto picture = host->Call<PictureRef>(read, host->NewString(string, 0xFFFF));
    if (picture) {
      CheckRead(picture, string);
      const auto written = host->Call<StringRef>(write, picture);
      Require(static_cast<bool>(written), "a picture that was read can't be written");
      const auto again = host->Call<PictureRef>(read, written);
      Require(static_cast<bool>(again), "what was written can't be read");
      Require(again->Width() == picture->Width() && again->Height() == picture->Height() &&
                  Colours(again) == Colours(picture),
              "what was written reads back otherwise");
    }
  }
  const std::string difference = host->census.DifferenceText(before);
  Require(difference.empty(), difference);
  Require(!host->TakeException(), "an exception was raised");
  return 0;
}
