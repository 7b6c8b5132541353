// The plug-in's classes as expressions: properties are set, Run is called, the destination comes
// out.
#pragma once

#include <span>
#include <string>
#include <utility>

#include "host/host.h"
#include "runner/operand.h"

namespace runner {

// Makes an instance, sets the properties named, and SourcePicture to `current` unless it is among
// them; calls "Run" and gives "DestinationPicture". A colour table goes, point by point, into the
// indexed property of its name. Throws Failure.
host::Ref<host::Picture> RunFilter(host::Host& host, const host::RegisteredClass& type,
                                   std::span<const std::pair<std::string, Operand>> arguments,
                                   const host::Ref<host::Picture>& current);

}  // namespace runner
