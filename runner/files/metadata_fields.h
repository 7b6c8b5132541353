// Metadata as libvips keeps it on an image that it saves.
#pragma once

#include <string>
#include <vips/vips8>

#include "runner/files/origin.h"

namespace runner {

// The image with the blocks of `metadata`, which are those of the result, as far as libvips writes
// them into files of the format. `image` keeps no others.
vips::VImage WithMetadata(vips::VImage image, const Metadata& metadata, const ImageFormat& format);

// libvips's profile of the colour space sRGB.
std::string SrgbProfile();

}  // namespace runner
