// Pictures larger than anybody has: their memory is mapped and costs only what of it is written.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/support/fixture.h"

namespace large {

using support::PictureRef;
using support::Rgb;

// The pixels of a bitmap context, x R G B in memory, all zero at first.
class SparsePixels {
 public:
  SparsePixels(int32_t pixelsWide, int32_t rowCount, int64_t bytesPerRow);
  ~SparsePixels();
  SparsePixels(const SparsePixels&) = delete;
  SparsePixels& operator=(const SparsePixels&) = delete;

  int32_t Width() const { return width; }
  int32_t Height() const { return height; }
  size_t RowBytes() const { return static_cast<size_t>(rowBytes); }
  uint8_t* Data() const { return data; }
  uint8_t* At(int32_t x, int32_t y) const { return data + rowBytes * y + int64_t{x} * 4; }

  void Put(int32_t x, int32_t y, Rgb colour) const;
  Rgb Get(int32_t x, int32_t y) const;
  bool RowIsZero(int32_t y) const;

 private:
  int32_t width, height;
  int64_t rowBytes;
  uint8_t* data;
};

// A host that shows the plug-in such pixels as those of a picture of its own.
class SparseTest : public support::PluginTest {
 protected:
  SparseTest();
  ~SparseTest() override;

  // Whoever opens it meets `pixels`, which must live as long.
  PictureRef Show(SparsePixels& pixels);

 private:
  void* library = nullptr;
};

}  // namespace large
