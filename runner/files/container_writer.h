// Metadata that libvips doesn't write, put into the files that it has made.
#pragma once

#include <string>

#include "runner/files/origin.h"

namespace runner {

// The file with what `metadata` has and libvips leaves out. TIFF: EXIF and IPTC; GIF: comments, XMP
// and the profile; JPEG 2000: EXIF, XMP, IPTC and the profile; JPEG XL: EXIF and XMP. The file as
// it is where its format is another one.
std::string WithContainerMetadata(std::string file, const ImageFormat& format,
                                  const Metadata& metadata);

}  // namespace runner
