// Why the plug-in gave nil, as far as the arguments tell.
#pragma once

#include <string>

#include "host/host.h"

namespace runner {

// The likely cause that a call gave nil, for the end of a sentence.
std::string WhyNil(const host::BoundCall& call, const host::Settings& settings);

// The cause alone where the arguments explain it; empty where they don't.
std::string NilByArguments(const host::BoundCall& call, const host::Settings& settings);

// The likely cause that a picture couldn't be opened or a result of its size not be made; null is a
// picture that isn't there.
std::string WhyNoPicture(const host::Ref<host::Picture>& picture, const host::Settings& settings);

}  // namespace runner
