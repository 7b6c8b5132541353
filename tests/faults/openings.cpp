#include "tests/faults/openings.h"

namespace faults {

using host::PictureLayout;

namespace {

host::Settings SettingsOf(host::Application application, double version) {
  host::Settings settings;
  settings.application = application;
  settings.version = version;
  return settings;
}

PictureLayout WithoutPixels() {
  PictureLayout layout;
  layout.storage = host::Storage::kVector;
  return layout;
}

// A picture that gives its rows, but no bitmap context, to an application that has both.
Opening RowsCopied(std::string name, double version) {
  host::Settings settings = SettingsOf(host::Application::kDesktop, version);
  settings.opaqueLayout.locking = host::Locking::kBoth;
  Opening opening{std::move(name), settings, settings.opaqueLayout};
  opening.layout.locking = host::Locking::kRowTable;
  opening.hidden = {"Graphics.DrawPicture"};
  opening.drawn = opening.rowsCopied = true;
  return opening;
}

std::vector<Opening> MakeOpenings() {
  constexpr double kNew = 2013.03;
  constexpr double kOld = 2011.05;      // counts refused locks, reads short definitions
  constexpr double kNoAlpha = 2011.03;  // makes no pictures with an alpha channel
  constexpr double kOldest = 2010.0;    // has no flags for console-safe methods
  const host::Settings desktop = SettingsOf(host::Application::kDesktop, kNew);
  const host::Settings old = SettingsOf(host::Application::kDesktop, kOld);
  const host::Settings noAlpha = SettingsOf(host::Application::kDesktop, kNoAlpha);
  const host::Settings console = SettingsOf(host::Application::kConsole, kNew);
  const host::Settings web = SettingsOf(host::Application::kWeb, kNew);
  const host::Settings oldConsole = SettingsOf(host::Application::kConsole, kOldest);
  const PictureLayout argb = PictureLayout::BitmapContext(host::kAlphaNoneSkipFirst);
  const PictureLayout rgba = PictureLayout::BitmapContext(host::kAlphaNoneSkipLast, 8);
  const PictureLayout premultipliedArgb = PictureLayout::WithAlpha();
  const PictureLayout premultipliedRgba =
      PictureLayout::WithAlpha(host::kAlphaPremultipliedLast, 12);
  PictureLayout alphaRows = PictureLayout::RowTable();
  alphaRows.hasAlphaChannel = true;

  std::vector<Opening> openings = {
      {"bitmap_argb", desktop, argb},
      {"bitmap_rgba", desktop, rgba},
      {"bitmap_old_host", old, argb},
      {"alpha_argb", desktop, premultipliedArgb},
      {"alpha_rgba", desktop, premultipliedRgba},
      {"alpha_old_host", old, premultipliedArgb},
      {"alpha_host_without", noAlpha, premultipliedArgb},
      {"vector", desktop, WithoutPixels()},
      {"vector_old_host", old, WithoutPixels()},
      {"graphics_world", desktop, PictureLayout::GraphicsWorld()},
      {"graphics_world_old_host", old, PictureLayout::GraphicsWorld()},
      RowsCopied("rows_copied", kNew),
      RowsCopied("rows_copied_old_host", kOld),
      {"rows_console", console, PictureLayout::RowTable(4)},
      {"rows_web_alpha", web, alphaRows},
      {"rows_old_console", oldConsole, PictureLayout::RowTable()},
  };
  for (Opening& opening : openings) {
    if (opening.Vector() || opening.layout.storage == host::Storage::kGraphicsWorld) {
      opening.drawn = true;
    }
    opening.makesAlpha = opening.settings.version >= 2011.04;
  }
  return openings;
}

// Opening, which takes a reference, and releasing.
constexpr int kBitmap = 1 /* alpha channel? */ + 1 /* lock */ + 6 /* context */ +
                        1 /* reference */ + 2 /* given back */;
constexpr int kRows = 1 + 1 + 1 + 2;
// What is asked of a picture without pixels, and its copy as the host makes it.
constexpr int kCopy = 1 /* alpha channel? */ + 1 /* refused lock */ + 2 /* size */ + 1 /* made */ +
                      1 /* graphics */ + 1 /* its method */ + 1 /* graphics given back */ +
                      1 /* copy given back */;
constexpr int kDraw = 1;
constexpr int kCopyRows = 4 /* locks */ + 1 /* cleared cache */;

}  // namespace

int Opening::CallsToRead() const {
  if (!Desktop()) return kRows;
  if (!drawn) return kBitmap;
  return kCopy + (rowsCopied ? kCopyRows : kDraw) + kBitmap;
}

int Opening::CallsToMake() const {
  constexpr int kMadeAndHandedOver =
      1 /* made */ + 1 /* given back */ + 1 /* reference for the caller */ + 2 /* cleared caches */;
  return kMadeAndHandedOver + (Desktop() ? kBitmap : kRows);
}

const std::vector<Opening>& Openings() {
  static const std::vector<Opening> openings = MakeOpenings();
  return openings;
}

}  // namespace faults
