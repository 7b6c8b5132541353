// What a picture file says besides its pixels, found out without decoding them.
#pragma once

#include <vips/vips.h>

#include <string>
#include <vector>

#include "runner/files/file_content.h"
#include "runner/files/jpeg_decoder.h"
#include "runner/files/origin.h"

namespace runner {

// Completes `origin`, whose format is set, and gives the numbers of the pages as libvips counts
// them; pages that are another one made smaller are left out.
void DescribeFile(const FileContent& content, VipsImage* image, Origin* origin,
                  std::vector<int>* pages);

// The same for a JPEG file that libvips hasn't opened.
void DescribeJpeg(const FileContent& content, const JpegDecoder& decoder, Origin* origin,
                  std::vector<int>* pages);

// The quality from 1 to 100 whose tables the usual encoder would have put into a JPEG file, or the
// nearest to it; 0: there are no tables.
int JpegQuality(std::string_view bytes);

}  // namespace runner
