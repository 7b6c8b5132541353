// Calls between this process and a macOS bundle, where the two pass values differently.
//
// On x86 they agree in all that is passed here. On 64-bit ARM a Mac differs in two ways. Arguments
// that find no register lie side by side on the stack, each as wide as it is; Linux gives each
// eight bytes. And who passes or returns a value narrower than 32 bits extends it; on Linux who
// gets it does. So there stand functions between the two, for exactly the calls that this concerns.
#pragma once

#include "host/registry.h"
#include "tests/support/internals.h"

namespace support {

// Gives what `resolver` gives, in the shape in which a bundle calls it. One at a time.
REALresolver ResolverForBundle(REALresolver resolver);

// Lets the host call the methods that a bundle has registered. Throws host::Error for a method that
// the bundle takes differently and nothing here knows.
void BridgeMethods(const host::Registry& registry);

// The table of a bundle's internals in the shape in which the tests call them.
const Internals* InternalsOfBundle(const Internals* internals);

}  // namespace support
