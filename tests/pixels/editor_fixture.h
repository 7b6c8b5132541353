// What the tests of opening pictures share.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/internals_fixture.h"

namespace editor {

using host::PictureLayout;
using support::InternalsTest;
using support::PictureRef;

inline constexpr char kDrawPicture[] = "Graphics.DrawPicture";

class EditorTest : public InternalsTest {
 protected:
  host::Host& StartKind(host::Application application, double version = 2013.03,
                        const std::vector<std::string>& hidden = {}) {
    host::Settings settings;
    settings.application = application;
    settings.version = version;
    return StartInternals(settings, hidden);
  }
  host::Host& StartDesktop(double version = 2013.03, const std::vector<std::string>& hidden = {}) {
    return StartKind(host::Application::kDesktop, version, hidden);
  }
  host::Host& StartConsole(double version = 2013.03, const std::vector<std::string>& hidden = {}) {
    return StartKind(host::Application::kConsole, version, hidden);
  }

  // Opens `picture` and closes it again; the picture must be left as it was.
  bool Opens(const PictureRef& picture, bool rasterizeIfNeeded = true, bool modifies = false) {
    const host::Snapshot before = Host().census.Take();
    Reader reader = MakeReader();
    const bool opened = Open(reader, picture, rasterizeIfNeeded, modifies);
    EXPECT_EQ(reader->picture != nullptr, opened);
    reader.reset();
    EXPECT_EQ(Host().census.DifferenceText(before), "");
    return opened;
  }

  // A vector picture: red left of x = 3, else blue.
  PictureRef MakeVector(int32_t width = 6, int32_t height = 4) {
    return Host().NewVectorPicture(width, height, [](int32_t x, int32_t) {
      return std::optional<uint32_t>(x < 3 ? 0xFF0000 : 0x0000FF);
    });
  }

  static support::Rgb PixelOf(const Reader& reader, int32_t x, int32_t y) {
    const Pixel pixel = ReadPixel(reader->PixelAt(x, y), reader->format);
    return {pixel.red, pixel.green, pixel.blue};
  }
};

}  // namespace editor
