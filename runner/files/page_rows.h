// Colour and alpha of the pages that are saved, row by row.
#pragma once

#include <cstdint>
#include <vector>

#include "host/host.h"
#include "runner/files/image_reader.h"

namespace runner {

// One page. Rows may be read by several threads at a time. The page outlives it.
class PageRows {
 public:
  explicit PageRows(const Page& page);

  int Width() const { return picture.Width(); }
  int Height() const { return picture.Height(); }

  // `count` pixels from `x` on as R, G, B, A, not premultiplied.
  void ReadRgba(int x, int y, int count, uint8_t* rgba) const;
  // The same as R, G, B.
  void ReadRgb(int x, int y, int count, uint8_t* rgb) const;
  // The same shown over white.
  void ReadOverWhite(int x, int y, int count, uint8_t* rgb) const;

  bool IsOpaque() const;
  // Whether every pixel has red, green and blue alike.
  bool IsGrey() const;
  // Whether every pixel is black or white.
  bool IsBlackAndWhite() const;
  // How many colours there are, alpha counted as part of them; at most `most` + 1.
  size_t CountColours(size_t most) const;

 private:
  // False only where no pixel can be anything but opaque.
  bool MayBeClear() const;
  template <class Body>
  bool AllPixels(Body holds) const;

  const host::Picture& picture;
  const std::vector<uint8_t>& alpha;
  host::Ref<host::Picture> mask;
  std::vector<uint8_t> whole;  // of layouts that only the host itself knows
};

}  // namespace runner
