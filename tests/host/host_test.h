// A host whose functions a test calls as a plug-in would: by name, through the resolver.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "host/host.h"

namespace host {

// The resolver's function of a name, with the signature that a plug-in expects of it.
template <class Function>
Function* Entry(const Host& host, const char* name) {
  auto* entry = reinterpret_cast<Function*>(host.Resolver()(name));
  EXPECT_NE(entry, nullptr) << name;
  return entry;
}

inline REALobject AsObject(const void* handle) {
  return static_cast<REALobject>(const_cast<void*>(handle));
}

class HostTest : public ::testing::Test {
 protected:
  Host host;

  template <class Function>
  Function* Find(const char* name) {
    return Entry<Function>(host, name);
  }

  void Lock(const void* handle) { Find<void(REALobject)>("REALLockObject")(AsObject(handle)); }
  void Unlock(const void* handle) { Find<void(REALobject)>("REALUnlockObject")(AsObject(handle)); }

  bool LockDescription(const Ref<Picture>& picture, REALpictureDescription& out, uint32_t wanted) {
    return Find<bool(REALpicture, REALpictureDescription*, uint32_t)>("REALLockPictureDescription")(
        picture.Handle(), &out, wanted);
  }
  bool LockDescription(const Ref<Picture>& picture, REALpictureDescription& out) {
    return Find<bool(REALpicture, REALpictureDescription*)>("lockPictureDescription")(
        picture.Handle(), &out);
  }
  void UnlockDescription(const Ref<Picture>& picture) {
    Find<void(REALpicture)>("unlockPictureDescription")(picture.Handle());
  }

  // The census's errors so far, joined, and forgotten.
  std::string TakeErrors() {
    std::string text;
    for (const std::string& error : host.census.Errors()) text += error + "\n";
    host.census.ClearErrors();
    return text;
  }

  void TearDown() override { EXPECT_EQ(TakeErrors(), "") << "errors that no test looked at"; }
};

// The text of the Error that `action` throws; empty when it throws none.
template <class Action>
std::string ErrorOf(Action action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  return {};
}

inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace host
