// Pictures that end where the process's memory does.
#pragma once

#include "tests/support/pictures.h"

namespace support {

// A picture without row padding, over memory behind which lies a page that can't be touched:
// reading or writing behind its last pixel ends the process. Hosts that lock copies
// (--locks=copied) hand out other memory.
PictureRef NewPictureAtMemoryEnd(host::Host& host, int32_t width, int32_t height,
                                 const host::PictureLayout& layout);

}  // namespace support
