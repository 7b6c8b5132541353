#include "runner/layouts.h"

#include <array>

namespace runner {
namespace {

using host::PictureLayout;

struct NamedLayout {
  std::string_view name;
  PictureLayout (*layout)();  // of pictures from files
  PictureLayout (*opaque)();  // of pictures without an alpha channel that the plug-in makes
};

template <uint32_t kAlphaInfo>
PictureLayout Context() {
  return PictureLayout::BitmapContext(kAlphaInfo);
}
template <uint32_t kAlphaInfo>
PictureLayout AlphaChannel() {
  return PictureLayout::WithAlpha(kAlphaInfo);
}
PictureLayout Rows() { return PictureLayout::RowTable(); }

constexpr auto kXrgb = Context<host::kAlphaNoneSkipFirst>;
constexpr auto kRgbx = Context<host::kAlphaNoneSkipLast>;

// Pictures with plain alpha have no "HasAlphaChannel": with it the plug-in takes premultiplied ones
// alone.
constexpr std::array<NamedLayout, 7> kLayouts = {{
    {"argb-premultiplied", AlphaChannel<host::kAlphaPremultipliedFirst>, kXrgb},
    {"argb", Context<host::kAlphaFirst>, kXrgb},
    {"xrgb", kXrgb, kXrgb},
    {"rgba-premultiplied", AlphaChannel<host::kAlphaPremultipliedLast>, kRgbx},
    {"rgba", Context<host::kAlphaLast>, kRgbx},
    {"rgbx", kRgbx, kRgbx},
    {"rows", Rows, Rows},
}};

}  // namespace

std::vector<std::string> LayoutNames() {
  std::vector<std::string> names;
  names.reserve(kLayouts.size());
  for (const NamedLayout& entry : kLayouts) names.emplace_back(entry.name);
  return names;
}

void ChooseLayouts(std::string_view name, host::Settings* settings, ImageOptions* images) {
  const bool desktop = settings->application == host::Application::kDesktop;
  images->opaqueLayout = desktop ? settings->opaqueLayout : settings->consoleLayout;
  images->alphaLayout = desktop ? settings->alphaLayout : settings->consoleLayout;
  for (const NamedLayout& entry : kLayouts) {
    if (entry.name != name) continue;
    const PictureLayout layout = entry.layout();
    images->opaqueLayout = layout;
    images->alphaLayout = layout;
    settings->opaqueLayout = entry.opaque();
    settings->consoleLayout = layout;
    if (layout.hasAlphaChannel.value_or(false) || layout.storage == host::Storage::kRowTable)
      settings->alphaLayout = layout;
  }
}

}  // namespace runner
