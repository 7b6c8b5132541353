// A host with the plug-in in it for each input. The plug-in is linked into the target instead of
// loaded, so that its coverage counts, and is put back to what it is when just loaded.
#pragma once

#include <memory>

#include "host/host.h"

namespace fuzz {

class FreshHost {
 public:
  explicit FreshHost(const host::Settings& settings);
  ~FreshHost();
  FreshHost(const FreshHost&) = delete;
  FreshHost& operator=(const FreshHost&) = delete;

  host::Host* operator->() const { return host.get(); }
  host::Host& operator*() const { return *host; }

 private:
  std::unique_ptr<host::Host> host;
};

}  // namespace fuzz
