// The host with the plug-in in it, as each input finds it.
#pragma once

#include "host/host.h"

namespace fuzz {

// Lends one input the host of this process. There is one for all inputs, because to make a host
// takes longer than most inputs. The plug-in is linked into the target instead of loaded, so that
// its coverage counts.
//
// Each input finds the host and the plug-in as they are when just made, so that an input does the
// same alone as after a million others. What an input leaves behind is an error.
class InputHost {
 public:
  explicit InputHost(const host::Settings& settings);
  ~InputHost();
  InputHost(const InputHost&) = delete;
  InputHost& operator=(const InputHost&) = delete;

  host::Host* operator->() const { return &host; }
  host::Host& operator*() const { return host; }

 private:
  host::Host& host;
};

}  // namespace fuzz
