// The little of QuickDraw that old hosts' pictures need.
#pragma once

#include "host/picture.h"

namespace host {

// Locks the pixels of a picture that a graphics world backs, as LockPixels does, and gives the
// handle that the plug-in's "UnlockPixels" takes. The census counts the locks. Null for other
// pictures.
void* LockPixels(Picture& picture);

}  // namespace host
