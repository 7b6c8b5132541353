// What Python's callers are told when something can't be done.
#pragma once

#include <pybind11/pybind11.h>

#include <stdexcept>

#include "host/instance.h"

namespace pyhost {

// A call gave nil, and its arguments explain it.
class NilResult : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Makes the module's exception classes: Error, NilResultError, and one for each that the host
// knows.
void DefineErrors(pybind11::module_& module);

// The class of warnings about files. Borrowed.
PyObject* FileWarningClass();

// Raises the exception that the plug-in raised, as the class of its name.
[[noreturn]] void Raise(const host::Exception& exception);

}  // namespace pyhost
