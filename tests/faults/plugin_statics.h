// The plug-in's own variables: what it has found out about the host it is in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/host.h"

namespace faults {

// Puts the plug-in back to where it was just after its registration, as if it had been loaded anew,
// which takes a hundred times as long. All of what it keeps between calls starts as zeros, and so
// lies in the memory that loading fills with zeros.
class PluginStatics {
 public:
  // Of the plug-in that is loaded into `host`; keeps what they are now.
  explicit PluginStatics(const host::Host& host);
  void Restore() const;

 private:
  uint8_t* memory = nullptr;
  std::vector<uint8_t> saved;
};

}  // namespace faults
