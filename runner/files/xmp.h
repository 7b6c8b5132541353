// XMP packets, which programs for photographs write beside EXIF.
#pragma once

#include <string>

namespace runner {

// The packet for pixels that were turned upright and changed: the orientation, if there is one,
// becomes 1; numbers of pixels become `width` and `height` where there were any; embedded
// thumbnails and what speaks of a gain map or of further pictures in the file go. The packet as it
// is where nothing of that holds, or where it can't be read.
std::string XmpOfResult(const std::string& xmp, int width, int height);

}  // namespace runner
