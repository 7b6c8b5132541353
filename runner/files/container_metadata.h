// Metadata that libvips doesn't look for, from the chunks, segments and boxes of a file.
#pragma once

#include <vips/vips.h>

#include "runner/files/file_content.h"
#include "runner/files/origin.h"

namespace runner {

// Adds what `metadata` has none of yet. `image` is the file as libvips has opened it, or null. Any
// bytes may be there.
void AddContainerMetadata(const FileContent& content, VipsImage* image, const ImageFormat& format,
                          Metadata* metadata);

}  // namespace runner
