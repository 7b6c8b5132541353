// What the host keeps that its embedders needn't see.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/host.h"
#include "host/runtime/objects.h"

namespace host::runtime {

// Bytes that "PluginGetStringData" gave.
struct StringData {
  uint64_t serial = 0;
  std::string what;
};

// A QuickDraw graphics world: a picture's, or the screen's, which has none.
struct GraphicsWorld {
  Picture* picture = nullptr;
};

struct HostState {
  explicit HostState(Host& owner) : host(owner) {}

  Host& host;
  Objects objects;
  std::map<const void*, StringData> stringData;
  std::optional<Exception> raised;
  std::set<std::string> classReferences;  // an entry's address stands for the class

  GraphicsWorld screen;
  int screenDevice = 0;
  GraphicsWorld* currentWorld = &screen;
  void* currentDevice = &screenDevice;

  void* library = nullptr;  // of dlopen
};

// The living host's; null when there is none.
HostState* CurrentState();
void SetCurrentState(HostState* state);

// Adds an error to the living host's census, if there is one.
void Complain(std::string error);

}  // namespace host::runtime
