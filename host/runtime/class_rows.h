// Class definitions of either shape, read into the registry's own records.
#pragma once

#include <string>

#include "host/registry.h"

namespace host::runtime {

// Reads a definition with its rows. Rows that can't be understood are left out and become errors of
// the census; throws Error for a definition that can't be.
void ReadClass(const REALclassDefinition& definition, bool extension, const Registry& registry,
               RegisteredClass& read);

// One method row. Throws Error.
Callable ReadMethod(const std::string& className, const char* declaration, void* function,
                    void* setter, uint32_t flags, bool shared);

}  // namespace host::runtime
