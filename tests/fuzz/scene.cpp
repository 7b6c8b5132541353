#include "tests/fuzz/scene.h"

#include <algorithm>

#include "host/runtime/picture_state.h"
#include "host/runtime/platform_objects.h"

namespace fuzz {
namespace {

using host::PictureLayout;

constexpr double kVersions[] = {2009.0, 2010.05, 2011.04, 2011.1, 2012.0, 2013.0, 2013.03, 2019.01};

PictureLayout ReadLayout(Choices& choices) {
  const uint32_t kind = choices.Below(16);
  PictureLayout layout = PictureLayout::BitmapContext(choices.Below(8));
  if (kind < 3) {
    layout = PictureLayout::RowTable();
    layout.contiguousRows = kind == 0;
  } else if (kind == 3) {
    layout = PictureLayout::GraphicsWorld();
  } else if (kind < 6) {
    layout.hasAlphaChannel = true;
  } else if (kind == 6) {
    layout.hasAlphaChannel = std::nullopt;
  }
  const uint32_t shape = choices.Byte();
  layout.rowPadding = static_cast<int32_t>(shape % 4 * (shape / 64 + 1));
  layout.startOffset = static_cast<int32_t>(shape / 4 % 16);
  const uint32_t locking = choices.Below(32);
  if (locking == 31) layout.locking = host::Locking::kRefused;
  if (layout.storage != host::Storage::kBitmapContext) return layout;
  if (locking == 30) layout.locking = host::Locking::kRowTable;
  if (locking == 29) layout.locking = host::Locking::kBoth;
  if (locking == 28) layout.bitsPerPixel = 8 << choices.Below(3);
  return layout;
}

// The plug-in leaves its lock on a picture whose alpha layout it refuses.
bool LeavesLock(const PictureLayout& layout) {
  const uint32_t last = layout.hasAlphaChannel.value_or(false) ? 2 : 6;
  return layout.storage == host::Storage::kBitmapContext &&
         (layout.alphaInfo < 1 || layout.alphaInfo > last);
}

// All bytes of a picture from its lowest row to its highest, with what pads the rows. None of a
// picture that has no bytes.
std::span<const uint8_t> BytesOf(const host::Picture* picture) {
  if (picture == nullptr || picture->Row(0) == nullptr) return {};
  const uint8_t* lowest = std::min(picture->Row(0), picture->Row(picture->Height() - 1));
  return {lowest, picture->RowBytes() * static_cast<size_t>(picture->Height())};
}

// A bundle whose code is loaded; the plug-in keeps it for the life of the process.
bool StaysForEver(const host::Object& object) {
  return object.GetKind() == host::Kind::kPlatform &&
         static_cast<const host::runtime::PlatformObject&>(object).loaded;
}

// Bytes that are the same for the same seed.
class Noise {
 public:
  explicit Noise(uint32_t seed) : state(seed * 2654435761U + 1) {}
  uint8_t Next() {
    state = state * 1664525 + 1013904223;
    return static_cast<uint8_t>(state >> 24);
  }

 private:
  uint32_t state;
};

}  // namespace

host::Settings ReadSettings(Choices& choices) {
  host::Settings settings;
  settings.application = static_cast<host::Application>(choices.Below(3));
  settings.version = kVersions[choices.Below(8)];
  const uint32_t manner = choices.Byte();
  settings.freshColour = manner % 2 == 1 ? 0xFFFFFF : 0x102030;
  if (manner >= 192) settings.lockManner = static_cast<host::LockManner>(1 + manner / 2 % 3);
  const uint32_t shape = choices.Byte();
  const auto padding = static_cast<int32_t>(shape / 12 % 5 * 3);
  settings.opaqueLayout = PictureLayout::BitmapContext(1 + shape % 6, padding);
  settings.alphaLayout = PictureLayout::WithAlpha(1 + shape % 2, padding);
  settings.consoleLayout = PictureLayout::RowTable(padding);
  settings.consoleLayout.contiguousRows = shape % 2 == 0;
  settings.maximumPixelBytes = 1 << 21;
  return settings;
}

Scene::Scene(host::Host& livingHost, Choices& choices) : host(livingHost) {
  const uint32_t count = 1 + choices.Below(4);
  while (pictures.size() < count) pictures.push_back(ReadPicture(choices));
  remembered.resize(pictures.size() * 2);
  for (const PictureRef& picture : pictures) {
    Remember(picture.Get());
    for (const PictureRef& each : {picture, picture->Mask()}) {
      if (each && LeavesLock(each->Layout())) lockLeft.push_back(each->Serial());
    }
  }
}

PictureRef Scene::ReadPicture(Choices& choices) {
  const uint32_t size = choices.Byte();
  const uint32_t shape = size % 16;
  int32_t width = 1 + static_cast<int32_t>(choices.Below(48));
  int32_t height = 1 + static_cast<int32_t>(choices.Below(8));
  // Some are wider than a strip of a row, or larger than what is walked together.
  if (shape == 15) width *= size == 255 ? 20 : 3;
  if (shape == 14) height *= size == 254 ? 20 : 4;
  // Most operations on more than one picture want them equal in size.
  if (shape < 8 && !pictures.empty()) {
    width = pictures.front()->Width();
    height = pictures.front()->Height();
  }
  if (shape == 13) {
    const uint32_t colour = choices.Word() & 0xFFFFFF;
    return host.NewVectorPicture(width, height, [colour](int32_t x, int32_t y) {
      return x == y ? std::nullopt : std::optional(colour ^ static_cast<uint32_t>(x));
    });
  }
  PictureRef picture = host.NewPicture(width, height, ReadLayout(choices));
  Paint(picture, choices);
  if (choices.OneIn(4)) {
    const PictureRef mask = host.NewPicture(width, height, ReadLayout(choices));
    Paint(mask, choices);
    picture->SetMask(mask);
  }
  return picture;
}

void Scene::Paint(const PictureRef& picture, Choices& choices) const {
  const uint32_t kind = choices.Below(5);
  const uint32_t seed = choices.Byte();
  const uint8_t levels = kind == 0 ? 255 : kind == 1 ? 1 : 128;  // a mask of the noise's bits
  const size_t pixelBytes = static_cast<size_t>(picture->Layout().bitsPerPixel) / 8;
  const size_t rowBytes = static_cast<size_t>(picture->Width()) * pixelBytes;
  Noise noise(seed);
  for (int32_t y = 0; y < picture->Height(); ++y) {
    if (kind == 4) noise = Noise(seed);  // every row the same
    uint8_t* row = picture->Row(y);
    for (size_t i = 0; i < rowBytes; ++i) {
      row[i] = kind == 3 ? static_cast<uint8_t>(seed) : noise.Next() & levels;
    }
  }
}

PictureRef Scene::AnyPicture(Choices& choices) const {
  const uint32_t index = choices.Below(static_cast<uint32_t>(pictures.size()) * 8 + 1);
  return index == pictures.size() * 8 ? nullptr : pictures[index % pictures.size()];
}

BlockRef Scene::ReadBlock(Choices& choices) const {
  constexpr size_t kSizes[] = {256, 1024, 0, 1, 255, 257, 1023, 1025, 4096, 100};
  const uint8_t kind = choices.Byte();
  if (kind >= 250) return nullptr;
  const size_t size = kind < 128 ? kSizes[kind % std::size(kSizes)] : size_t{kind} * 7;
  BlockRef block = host.NewMemoryBlock(size);
  Noise noise(choices.Byte());
  for (uint8_t& byte : block->Bytes()) byte = noise.Next();
  if (choices.OneIn(16)) block->HidePointer();
  return block;
}

host::Value Scene::ArgumentFor(const host::Parameter& parameter, Choices& choices) const {
  switch (parameter.type) {
    case host::Type::kInteger:
      return choices.Integer();
    case host::Type::kUInt32:
      return static_cast<uint32_t>(choices.Integer());
    case host::Type::kDouble:
      return choices.Real();
    case host::Type::kBoolean:
      return choices.OneIn(2);
    case host::Type::kColour: {
      constexpr uint32_t kColours[] = {0, 0xFFFFFF, 0xFF000000, 0x808080};
      const uint8_t kind = choices.Byte();
      return host::Colour{kind < 128 ? kColours[kind % 4] : choices.Word()};
    }
    case host::Type::kString:
      if (choices.OneIn(16)) return host::Nil{};
      return host.NewString("PPIC" + std::string(choices.Below(64), '\1'), 0xFFFF);
    case host::Type::kPicture:
      if (PictureRef picture = AnyPicture(choices)) return picture;
      return host::Nil{};
    case host::Type::kMemoryBlock:
      if (BlockRef block = ReadBlock(choices)) return block;
      return host::Nil{};
    default:
      return host::Nil{};
  }
}

void Scene::Remember(const host::Picture* changed) {
  for (size_t i = 0; i < pictures.size(); ++i) {
    if (pictures[i].Get() != changed) continue;
    for (size_t part = 0; part < 2; ++part) {
      const std::span<const uint8_t> bytes = BytesOf(Part(i, part).Get());
      remembered[i * 2 + part].assign(bytes.begin(), bytes.end());
    }
  }
}

bool Scene::IsAsRemembered(const host::Picture* changing) const {
  for (size_t i = 0; i < pictures.size(); ++i) {
    if (pictures[i].Get() == changing) continue;
    for (size_t part = 0; part < 2; ++part) {
      const std::span<const uint8_t> bytes = BytesOf(Part(i, part).Get());
      const std::vector<uint8_t>& before = remembered[i * 2 + part];
      if (!std::equal(bytes.begin(), bytes.end(), before.begin(), before.end())) return false;
    }
  }
  return true;
}

PictureRef Scene::Part(size_t index, size_t part) const {
  return part == 0 ? pictures[index] : pictures[index]->Mask();
}

Holdings Scene::HeldByHost() const {
  const host::runtime::HostState& state = host.State();
  Holdings holdings;
  holdings.reserve(state.objects.Live().size() + state.stringData.size());
  for (const auto& [serial, object] : state.objects.Live()) {
    if (StaysForEver(*object)) continue;
    Held& held = holdings.emplace_back(Held{serial, object->References(), 0, 0});
    if (object->GetKind() != host::Kind::kPicture) continue;
    const host::runtime::PictureState& picture = static_cast<const host::Picture*>(object)->State();
    const bool mayStayLocked =
        std::find(lockLeft.begin(), lockLeft.end(), serial) != lockLeft.end();
    held.descriptionLocks = mayStayLocked ? 0 : picture.descriptionLocks;
    held.pixelLocks = picture.pixelLocks;
  }
  for (const auto& [data, record] : state.stringData) holdings.push_back({record.serial, 1, 0, 0});
  return holdings;
}

std::string TextOf(const Holdings& holdings) {
  std::string text;
  for (const Held& held : holdings) {
    text += "#" + std::to_string(held.serial) + ": " + std::to_string(held.references) +
            " references, " + std::to_string(held.descriptionLocks) + " and " +
            std::to_string(held.pixelLocks) + " locks\n";
  }
  return text;
}

}  // namespace fuzz
