// Objects of the host in the hands of Python.
#pragma once

#include <pybind11/pybind11.h>

#include "python/module/runtime.h"

namespace pyhost {

// Holds one reference, which it gives back under the host's lock.
template <class T>
class Held {
 public:
  explicit Held(host::Ref<T> heldReference) : reference(std::move(heldReference)) {}
  Held(Held&&) noexcept = default;
  Held& operator=(Held&&) = delete;
  ~Held() {
    const Locked locked;
    reference = nullptr;
  }

  const host::Ref<T>& Reference() const { return reference; }
  T* operator->() const { return reference.Get(); }
  bool operator==(const Held& other) const { return reference == other.reference; }

 private:
  host::Ref<T> reference;
};

using HeldPicture = Held<host::Picture>;
using HeldInstance = Held<host::Instance>;

// Each defines its part of the module.
void DefinePicture(pybind11::module_& module);
void DefineFiles(pybind11::module_& module);
void DefineRegistry(pybind11::module_& module);
void DefineCalls(pybind11::module_& module);
void DefineBatch(pybind11::module_& module);

}  // namespace pyhost
