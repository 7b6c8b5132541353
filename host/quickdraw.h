// The little of QuickDraw that old hosts' pictures need.
#pragma once

#include "host/picture.h"

namespace host {

// Locks the pixels of a picture that a graphics world backs, as LockPixels does, and gives the
// handle that the plug-in's "UnlockPixels" takes. The census counts the locks. Null for other
// pictures.
void* LockPixels(Picture& picture);

// The picture whose graphics world is current; null while it is the screen's, as it is at first.
const Picture* CurrentGraphicsWorld();
// Whether the current device is the screen's, as it is at first.
bool CurrentDeviceIsScreen();

}  // namespace host
