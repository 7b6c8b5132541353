// The directories of tags that a TIFF file begins with, and that EXIF is made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "runner/files/file_content.h"

namespace runner {

// A tag with its value, in the byte order of its file.
struct TiffTag {
  uint16_t number = 0, type = 0;
  uint32_t count = 0;
  std::string value;
};

// What the tags say about the picture. How its pixels are stored isn't among them, nor are blocks
// that other members of Metadata hold.
struct TiffTags {
  bool bigEndian = false;
  std::vector<TiffTag> image, exif, gps, interoperability;

  bool Empty() const {
    return image.empty() && exif.empty() && gps.empty() && interoperability.empty();
  }
};

// Those of the first page of a TIFF file, and of what follows "Exif\0\0" in a block of EXIF. Reads
// no more than fits into such a block. Nothing: it isn't one, or it is a BigTIFF file.
std::optional<TiffTags> ReadTiffTags(const FileContent& content);

// A block from "Exif\0\0" on; empty where the tags are.
std::string ExifBlock(const TiffTags& tags);

// The file, whose first page gets the tags that it has no others for. The file as it is where it
// can't take them.
std::string WithTiffTags(std::string file, const TiffTags& tags);

}  // namespace runner
