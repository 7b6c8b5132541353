// Where in an instance its data lie.
#pragma once

#include <cstddef>

namespace host::runtime {

inline constexpr size_t kDataAlignment = 16;

// Of the data of a class without a registered superclass, from the object's address.
size_t FirstDataOffset();

}  // namespace host::runtime
