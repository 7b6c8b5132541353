#include <algorithm>

#include "host/runtime/picture_state.h"
#include "host/runtime/pixel_codec.h"

namespace host::runtime {
namespace {

uint64_t RowBytesOf(int64_t width, const PictureLayout& layout) {
  return (static_cast<uint64_t>(width) * static_cast<uint64_t>(layout.bitsPerPixel) + 7) / 8 +
         static_cast<uint64_t>(layout.rowPadding);
}

void FillFresh(PictureState& picture, uint32_t colour) {
  const size_t padding = static_cast<size_t>(picture.layout.rowPadding);
  for (int32_t y = 0; y < picture.height; ++y) {
    uint8_t* row = picture.Row(y);
    uint8_t* end = row + picture.rowBytes - padding;
    if (HasPixels(picture.layout)) {
      EncodeRun(row, picture.layout, picture.width, FromRgb(colour));
    } else {
      std::fill(row, end, uint8_t{0xFF});
    }
    std::fill(end, end + padding, Picture::kPaddingByte);
  }
}

// From the lowest address of its rows.
void SetUpRows(PictureState& picture, uint8_t* lowest) {
  const bool table = picture.layout.storage == Storage::kRowTable;
  const bool backwards = table && !picture.layout.contiguousRows;
  picture.stride = static_cast<ptrdiff_t>(picture.rowBytes);
  picture.firstRow = lowest;
  if (backwards) {
    picture.firstRow += (picture.height - 1) * picture.stride;
    picture.stride = -picture.stride;
  }
  picture.context.firstRow = picture.firstRow;
  if (picture.layout.bitsPerPixel != 32) return;
  picture.rows.resize(static_cast<size_t>(picture.height));
  for (int32_t y = 0; y < picture.height; ++y) {
    picture.rows[static_cast<size_t>(y)] = picture.Row(y);
  }
  picture.rowTable = {0, picture.rows.data(), picture.rows.data(), picture.width, picture.height};
}

}  // namespace

std::string WhyNoLayout(const PictureLayout& layout) {
  const bool bitmap = layout.storage == Storage::kBitmapContext;
  if (layout.alphaInfo > 7) return "alpha info goes from 0 to 7";
  if (layout.bitsPerPixel < 1 || layout.bitsPerPixel > 128) return "1 to 128 bits make a pixel";
  if (!bitmap && layout.bitsPerPixel != 32) return "only bitmap contexts have other than 32 bits";
  if (layout.rowPadding < 0 || layout.rowPadding > 4096) return "row padding goes from 0 to 4096";
  if (layout.startOffset < 0 || layout.startOffset > 63) return "start offsets go from 0 to 63";
  if (layout.locking == Locking::kBoth && layout.storage == Storage::kRowTable) {
    return "a row table can't be given as a bitmap context";
  }
  const bool asTable = layout.locking == Locking::kBoth || layout.locking == Locking::kRowTable;
  if (asTable && layout.bitsPerPixel != 32) return "the pixels of a row table have 32 bits";
  return {};
}

std::string WhyNoPicture(const Settings& settings, int64_t width, int64_t height,
                         const PictureLayout& layout) {
  const std::string size = std::to_string(width) + " x " + std::to_string(height);
  if (width < 1 || height < 1) return "a picture of " + size + " pixels has no pixels";
  if (width > settings.maximumSide || height > settings.maximumSide) {
    return "a picture of " + size + " pixels is larger than this host makes them";
  }
  if (layout.storage == Storage::kVector) return {};
  if (layout.storage == Storage::kEmpty) return "an empty picture has no size";
  std::string layoutFault = WhyNoLayout(layout);
  if (!layoutFault.empty()) return layoutFault;
  if (RowBytesOf(width, layout) * static_cast<uint64_t>(height) > settings.maximumPixelBytes) {
    return "a picture of " + size + " pixels takes more memory than this host gives";
  }
  return {};
}

PictureLayout FreshLayout(const Settings& settings, bool alpha) {
  if (settings.application == Application::kDesktop) {
    return alpha ? settings.alphaLayout : settings.opaqueLayout;
  }
  PictureLayout layout = settings.consoleLayout;
  if (alpha) layout.hasAlphaChannel = true;
  return layout;
}

bool GivePixels(HostState& state, Picture& picture, int32_t width, int32_t height,
                const PictureLayout& layout) {
  const Settings& settings = state.host.settings;
  if (!WhyNoPicture(settings, width, height, layout).empty()) return false;
  const uint64_t rowBytes = RowBytesOf(width, layout);
  std::unique_ptr<GuardedMemory> memory;
  if (layout.storage != Storage::kVector) {
    memory = GuardedMemory::Take(rowBytes * static_cast<uint64_t>(height),
                                 static_cast<size_t>(layout.startOffset));
    if (memory == nullptr) return false;
  }

  PictureState& inside = picture.State();
  inside.width = width;
  inside.height = height;
  inside.layout = layout;
  inside.memory = std::move(memory);
  inside.freshColour = settings.freshColour & 0xFFFFFF;
  inside.DiscardRendering();
  if (inside.memory == nullptr) return true;
  inside.rowBytes = static_cast<size_t>(rowBytes);
  SetUpRows(inside, inside.memory->First());
  FillFresh(inside, inside.freshColour);
  // Graphics worlds are shown as they are.
  if (layout.storage != Storage::kGraphicsWorld) inside.cached = CachedRendering::kFresh;
  return true;
}

Picture* MakeEmptyPicture(HostState& state) {
  Picture* picture = state.objects.Add(new Picture(std::make_unique<PictureState>()));
  picture->State().context.picture = picture;
  picture->State().world.picture = picture;
  return picture;
}

Picture* MakePicture(HostState& state, int32_t width, int32_t height, const PictureLayout& layout) {
  if (!WhyNoPicture(state.host.settings, width, height, layout).empty()) return nullptr;
  Picture* picture = MakeEmptyPicture(state);
  if (GivePixels(state, *picture, width, height, layout)) return picture;
  state.objects.Release(picture);
  return nullptr;
}

std::string WhyNoPictureOver(const Settings& settings, const ForeignPixels& pixels,
                             const PictureLayout& layout) {
  if (layout.storage != Storage::kBitmapContext || layout.bitsPerPixel != 32) {
    return "only bitmap contexts of 32 bits can have foreign pixels";
  }
  std::string fault = WhyNoPicture(settings, pixels.width, pixels.height, layout);
  if (!fault.empty()) return fault;
  if (pixels.first == nullptr || reinterpret_cast<uintptr_t>(pixels.first) % 4 != 0) {
    return "foreign pixels begin at a multiple of 4 bytes";
  }
  const size_t needed = static_cast<size_t>(pixels.width) * 4;
  if (pixels.rowBytes < needed || pixels.rowBytes % 4 != 0 || pixels.rowBytes > INT32_MAX) {
    return "foreign rows of " + std::to_string(pixels.width) + " pixels are a multiple of 4, " +
           std::to_string(needed) + " to 2147483647 bytes apart";
  }
  return {};
}

Picture* MakePictureOver(HostState& state, const ForeignPixels& pixels,
                         const PictureLayout& layout) {
  if (!WhyNoPictureOver(state.host.settings, pixels, layout).empty()) return nullptr;
  Picture* picture = MakeEmptyPicture(state);
  PictureState& inside = picture->State();
  inside.width = pixels.width;
  inside.height = pixels.height;
  inside.layout = layout;
  inside.layout.rowPadding = static_cast<int32_t>(pixels.rowBytes) - pixels.width * 4;
  inside.rowBytes = pixels.rowBytes;
  inside.foreignOwner = pixels.owner;
  inside.pixelsShared = true;
  SetUpRows(inside, pixels.first);
  return picture;
}

}  // namespace host::runtime
