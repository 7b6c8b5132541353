// Pictures as a plug-in makes them, through the host's functions.
#pragma once

#include "tests/host/host_test.h"

namespace host {

class PictureTest : public HostTest {
 protected:
  Ref<Picture> MakeNew(int32_t width, int32_t height, int32_t depth = 32) {
    return AdoptHandle<Picture>(
        Find<REALpicture(int32_t, int32_t, int32_t)>("newPicture")(width, height, depth));
  }

  Ref<Picture> Construct(int32_t width, int32_t height) {
    const REALobject instance = Find<REALobject(const char*)>("PluginNewInstance")("Picture");
    void* method = Find<void*(REALobject, const char*)>("REALLoadObjectMethod")(
        instance, "Constructor(width as integer, height as integer)");
    reinterpret_cast<void (*)(REALobject, int32_t, int32_t)>(method)(instance, width, height);
    return AdoptHandle<Picture>(reinterpret_cast<REALpicture>(instance));
  }

  bool HasAlpha(const Ref<Picture>& picture) {
    uint8_t value = 77;
    const bool found = Find<bool(REALobject, const char*, uint8_t*)>("REALGetPropValueBool")(
        AsObject(picture.Get()), "HasAlphaChannel", &value);
    EXPECT_EQ(found, value != 77);
    return found && value != 0;
  }
};

inline constexpr Rgba kWhite = {255, 255, 255, 255};
inline constexpr Rgba kColour = {10, 20, 30, 255};

}  // namespace host
