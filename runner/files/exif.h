// EXIF as picture files carry it: a block that begins with "Exif\0\0" and holds directories of
// tags.
#pragma once

#include <optional>
#include <string>

namespace runner {

// Pixels per millimetre, and the unit that people gave it in.
struct Resolution {
  double horizontal = 0, vertical = 0;
  bool inches = true;
};

// The block for pixels that were turned upright and changed: the orientation, if there is one,
// becomes 1, the thumbnail goes, the numbers of pixels become `width` and `height` where there were
// any, the resolution is set where it is given. All other tags stay. Empty: nothing could be read.
std::string ExifOfResult(const std::string& exif, int width, int height,
                         const std::optional<Resolution>& resolution);

// A block that says nothing else.
std::string ExifWithResolution(const Resolution& resolution);

// What the block says of it.
std::optional<Resolution> ResolutionInExif(const std::string& exif);

// 1 to 8; 0: the block says nothing of it.
int OrientationInExif(const std::string& exif);

}  // namespace runner
