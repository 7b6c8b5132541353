// What stands between a plug-in and every function of the host.
#pragma once

#include <exception>
#include <string>

#include "host/runtime/host_state.h"

namespace host::runtime {

// Counts the call, lets it fail where a fault is planned or no host lives, and keeps C++ exceptions
// out of the plug-in. `failure` is what a failed call returns.
template <auto function, auto failure = 0>
struct GuardedCall;

template <class R, class... A, R (*function)(HostState&, A...), auto failure>
struct GuardedCall<function, failure> {
  static inline const char* name = nullptr;

  static R Enter(A... arguments) {
    HostState* state = CurrentState();
    if (state == nullptr || !state->host.faults.Enter(name)) return Failure();
    try {
      return function(*state, arguments...);
    } catch (const std::exception& exception) {
      Complain(std::string(name) + ": " + exception.what());
      return Failure();
    }
  }

 private:
  static R Failure() {
    if constexpr (std::is_void_v<R>) {
      return;
    } else if constexpr (std::is_pointer_v<R>) {
      return nullptr;
    } else {
      return static_cast<R>(failure);
    }
  }
};

// The live object behind a handle. What isn't one becomes an error of the census, and null.
Object* Look(HostState& state, const void* handle, std::optional<Kind> kind, const char* entry);

template <class T>
T* LookUp(HostState& state, HandleOf<T> handle, const char* entry) {
  return reinterpret_cast<T*>(Look(state, handle, detail::KindOf<T>(), entry));
}

}  // namespace host::runtime
