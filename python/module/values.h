// Values between Python and the host's language.
#pragma once

#include <pybind11/pybind11.h>

#include <span>

#include "host/value.h"

namespace pyhost {

// The value that a Python object stands for where one of the `wanted` types is declared:
//   None, bool, int, float and what converts to them without loss of kind, NumPy's scalars
//   included; str (UTF-8), or "#rrggbb" where a colour is wanted; bytes as a string without an
//   encoding; where a memory block is wanted, a copy of any object's bytes; pictures; instances of
//   classes.
// Throws TypeError for other objects and for whole numbers beyond 32 bits. Needs the host's lock.
host::Value FromPython(pybind11::handle object, std::span<const host::Type> wanted);

// None, bool, int, float; colours as int 0xRRGGBB; strings as bytes, whatever their encoding, which
// for data hangs on what they happen to be; memory blocks as arrays of uint8 that share their
// memory; pictures. Needs the host's lock.
pybind11::object ToPython(const host::Value& value);

}  // namespace pyhost
