// Whether an image file holds all that its header promises. The decoders of some formats fill up
// what a truncated file lacks, and say nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runner/files/file_content.h"
#include "runner/files/image_format.h"

namespace runner {

struct Fault {
  std::string text;       // the end of a sentence that begins with the file
  bool hopeless = false;  // what is promised can't be there: nothing is decoded
};

// Nothing: all is there, or the decoder will report what isn't. Pixels that a file can't hold are
// hopeless. Throws Failure for a file that can't be read.
std::optional<Fault> FaultOf(const FileContent& content, const ImageFormat& format);

// The same for the bytes of a JPEG file.
std::optional<Fault> FaultOfJpeg(std::string_view bytes);

// The width times the height that the header of a BMP file tells of, the whole of which is decoded
// when it is opened; 0: it has none that is known.
struct BmpSize {
  uint64_t width = 0, height = 0;
};
BmpSize SizeOfBmp(const FileContent& content);

}  // namespace runner
