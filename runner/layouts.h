// The picture layouts that a person can choose from.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"
#include "runner/files/image_reader.h"

namespace runner {

// "argb-premultiplied", "argb", "xrgb", "rgba-premultiplied", "rgba", "rgbx" and "rows". The names
// give the order of the bytes in memory.
std::vector<std::string> LayoutNames();

// Makes pictures from files, and those that the plug-in makes, have a layout: `name` is one of the
// above, or empty for what such an application has by itself.
void ChooseLayouts(std::string_view name, host::Settings* settings, ImageOptions* images);

}  // namespace runner
