#include "tests/support/pictures.h"

#include <cstring>
#include <iomanip>
#include <sstream>

namespace support {

namespace {

using host::PictureLayout;
using host::Storage;

// Which byte of a pixel, in memory order, holds which channel.
struct ByteOrder {
  int red, green, blue, fourth;
  uint8_t opaque;
};

ByteOrder OrderOf(const PictureLayout& layout) {
  if (layout.storage == Storage::kRowTable) return {2, 1, 0, 3, 0};
  const bool alphaComesFirst =
      layout.alphaInfo == 2 || layout.alphaInfo == 4 || layout.alphaInfo == 6;
  return alphaComesFirst ? ByteOrder{1, 2, 3, 0, 255} : ByteOrder{0, 1, 2, 3, 255};
}

uint8_t* PixelBytes(const PictureRef& picture, int32_t x, int32_t y) {
  return picture->Row(y) + static_cast<ptrdiff_t>(x) * 4;
}

std::string Hex(uint32_t word) {
  std::ostringstream out;
  out << "0x" << std::hex << std::setw(8) << std::setfill('0') << word;
  return out.str();
}

uint32_t LoadWord(const uint8_t* bytes) {
  uint32_t word = 0;
  std::memcpy(&word, bytes, 4);
  return word;
}

std::vector<LayoutPair> MakeLayoutPairs() {
  std::vector<LayoutPair> pairs;
  for (uint32_t from = 1; from <= 6; ++from) {
    for (uint32_t to = 1; to <= 6; ++to) {
      LayoutPair pair{{}, AnySettings(), {}};
      pair.name = "desktop " + std::to_string(from) + " -> " + std::to_string(to);
      pair.source = PictureLayout::BitmapContext(from, static_cast<int32_t>(4 * from + to));
      pair.source.startOffset = static_cast<int32_t>(to);
      pair.settings.opaqueLayout =
          PictureLayout::BitmapContext(to, static_cast<int32_t>(from % 3 * 4 + to / 5));
      pairs.push_back(pair);
    }
  }
  for (uint32_t from = 1; from <= 2; ++from) {
    for (uint32_t to = 1; to <= 2; ++to) {
      LayoutPair pair{{}, AnySettings(), {}};
      pair.name = "desktop alpha " + std::to_string(from) + " -> " + std::to_string(to);
      pair.source = PictureLayout::WithAlpha(from, static_cast<int32_t>(4 * to));
      pair.settings.alphaLayout = PictureLayout::WithAlpha(to, static_cast<int32_t>(12 * from));
      pair.settings.opaqueLayout = PictureLayout::BitmapContext(4 + to, 8);
      pairs.push_back(pair);
    }
  }
  for (const host::Application application :
       {host::Application::kConsole, host::Application::kWeb}) {
    LayoutPair pair{{}, AnySettings(), {}};
    const bool console = application == host::Application::kConsole;
    pair.name = console ? "console 8 -> 8" : "web 8 -> 8";
    pair.settings.application = application;
    pair.source = PictureLayout::RowTable(console ? 12 : 0);
    pair.settings.consoleLayout = PictureLayout::RowTable(console ? 0 : 3);
    pairs.push_back(pair);
  }
  return pairs;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Rgb& colour) {
  return out << "(" << colour.red << ", " << colour.green << ", " << colour.blue << ")";
}

const std::vector<LayoutPair>& AllLayoutPairs() {
  static const std::vector<LayoutPair> pairs = MakeLayoutPairs();
  return pairs;
}

const std::vector<LayoutPair>& AllSourceLayouts() {
  static const std::vector<LayoutPair> pairs = [] {
    std::vector<LayoutPair> chosen;
    for (const LayoutPair& pair : AllLayoutPairs()) {
      const bool seen = !chosen.empty() &&
                        chosen.back().source.alphaInfo == pair.source.alphaInfo &&
                        chosen.back().source.storage == pair.source.storage &&
                        chosen.back().source.hasAlphaChannel == pair.source.hasAlphaChannel &&
                        chosen.back().settings.application == pair.settings.application;
      if (!seen) chosen.push_back(pair);
    }
    return chosen;
  }();
  return pairs;
}

bool HasAlpha(const PictureLayout& layout) { return layout.hasAlphaChannel.value_or(false); }

uint32_t OpaqueWord(const PictureLayout& layout, Rgb colour) {
  const ByteOrder order = OrderOf(layout);
  uint8_t bytes[4];
  bytes[order.red] = static_cast<uint8_t>(colour.red);
  bytes[order.green] = static_cast<uint8_t>(colour.green);
  bytes[order.blue] = static_cast<uint8_t>(colour.blue);
  bytes[order.fourth] = order.opaque;
  return LoadWord(bytes);
}

Rgb At(const PictureRef& picture, int32_t x, int32_t y) {
  const ByteOrder order = OrderOf(picture->Layout());
  const uint8_t* bytes = PixelBytes(picture, x, y);
  return {bytes[order.red], bytes[order.green], bytes[order.blue]};
}

void Put(const PictureRef& picture, int32_t x, int32_t y, Rgb colour, uint8_t fourth) {
  const ByteOrder order = OrderOf(picture->Layout());
  uint8_t* bytes = PixelBytes(picture, x, y);
  bytes[order.red] = static_cast<uint8_t>(colour.red);
  bytes[order.green] = static_cast<uint8_t>(colour.green);
  bytes[order.blue] = static_cast<uint8_t>(colour.blue);
  bytes[order.fourth] = fourth;
}

void Fill(const PictureRef& picture, Rgb colour, uint8_t fourth) {
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) Put(picture, x, y, colour, fourth);
  }
}

void FillWithNoise(const PictureRef& picture, Random& random, int32_t levels) {
  const auto channel = [&] {
    return levels >= 256 ? random.Byte() : random.Between(0, levels - 1) * 255 / (levels - 1);
  };
  for (int32_t y = 0; y < picture->Height(); ++y) {
    for (int32_t x = 0; x < picture->Width(); ++x) {
      const Rgb colour{channel(), channel(), channel()};
      Put(picture, x, y, colour, random.Byte());
    }
  }
}

std::vector<uint8_t> Bytes(const PictureRef& picture) {
  std::vector<uint8_t> bytes;
  const size_t rowBytes = static_cast<size_t>(picture->Width()) * 4;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    const uint8_t* row = picture->Row(y);
    bytes.insert(bytes.end(), row, row + rowBytes);
    const auto padding = picture->Padding(y);
    bytes.insert(bytes.end(), padding.begin(), padding.end());
  }
  return bytes;
}

::testing::AssertionResult PixelsAre(const PictureRef& actual, const std::vector<uint8_t>& before,
                                     const Expected& expected) {
  const std::vector<uint8_t> bytes = Bytes(actual);
  if (bytes.size() != before.size()) {
    return ::testing::AssertionFailure()
           << "the pictures lie differently in memory: " << bytes.size() << " and " << before.size()
           << " bytes";
  }
  const int32_t width = actual->Width();
  const int32_t height = actual->Height();
  const size_t rowBytes = height > 0 ? bytes.size() / static_cast<size_t>(height) : 0;
  for (int32_t y = 0; y < height; ++y) {
    const size_t row = static_cast<size_t>(y) * rowBytes;
    for (int32_t x = 0; x < width; ++x) {
      const size_t place = row + static_cast<size_t>(x) * 4;
      const std::optional<Rgb> colour = expected(x, y);
      const uint32_t wanted =
          colour ? OpaqueWord(actual->Layout(), *colour) : LoadWord(&before[place]);
      const uint32_t got = LoadWord(&bytes[place]);
      if (got == wanted) continue;
      ::testing::AssertionResult failure = ::testing::AssertionFailure();
      failure << "pixel (" << x << ", " << y << ") of " << width << " x " << height << " is "
              << At(actual, x, y) << " " << Hex(got) << ", expected ";
      if (colour) {
        failure << *colour << " ";
      } else {
        failure << "untouched ";
      }
      return failure << Hex(wanted) << "; seed " << Seed();
    }
    const size_t pixels = static_cast<size_t>(width) * 4;
    if (std::memcmp(&bytes[row] + pixels, &before[row] + pixels, rowBytes - pixels) != 0) {
      return ::testing::AssertionFailure() << "the padding of row " << y << " was written";
    }
  }
  return ::testing::AssertionSuccess();
}

std::vector<uint8_t> FreshBytes(int32_t width, int32_t height, bool alpha) {
  host::Host& host = host::Host::Current();
  const host::Settings& settings = host.settings;
  const bool desktop = settings.application == host::Application::kDesktop;
  const PictureLayout& layout = !desktop ? settings.consoleLayout
                                : alpha  ? settings.alphaLayout
                                         : settings.opaqueLayout;
  return Bytes(host.NewPicture(width, height, layout));
}

::testing::AssertionResult IsNewPicture(const PictureRef& actual, int32_t width, int32_t height,
                                        bool alpha, const Expected& expected) {
  if (!actual) return ::testing::AssertionFailure() << "the result is nil";
  if (actual->Width() != width || actual->Height() != height) {
    return ::testing::AssertionFailure()
           << "the result is " << actual->Width() << " x " << actual->Height() << ", expected "
           << width << " x " << height;
  }
  const ::testing::AssertionResult pixels =
      PixelsAre(actual, FreshBytes(width, height, alpha), expected);
  if (!pixels) return pixels;
  if (!actual->RenderingIsCurrent()) {
    return ::testing::AssertionFailure() << "the host still shows what was there before";
  }
  return ::testing::AssertionSuccess();
}

}  // namespace support
