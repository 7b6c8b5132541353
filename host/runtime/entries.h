// The table of everything that a plug-in can find in the host.
#pragma once

#include <span>
#include <string_view>

#include "host/object.h"

namespace host::runtime {

// Where a plug-in finds an entry.
enum class Origin {
  kResolver,        // by its name
  kQuickDraw,       // by its name in the bundle ApplicationServices.framework
  kPictureMethod,   // by declaration, from a picture
  kGraphicsMethod,  // by declaration, from a Graphics object
  kGlobalMethod,    // by declaration
};

struct Entry {
  const char* name;
  Origin origin;
  const char* declaration;  // of methods
  void* address;
};

std::span<const Entry> Entries();
bool IsEntry(std::string_view name);

// The address of an entry, null where there is none or a fault hides it.
void* FindEntry(Origin origin, std::string_view name);
void* FindMethod(Origin origin, std::string_view declaration);

}  // namespace host::runtime
