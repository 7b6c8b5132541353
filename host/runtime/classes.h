// The classes that the host knows by name, and instances of them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/runtime/host_state.h"

namespace host::runtime {

// The class's own spelling of its name; nothing where the host has no such class. "Application",
// "ConsoleApplication" and "WebApplication" are there according to the application's kind.
std::optional<std::string> KnownClassName(HostState& state, std::string_view name);

// The exception classes, their base first.
std::span<const char* const> ExceptionClasses();

// A new instance with one reference, no constructor run: of a registered class, an exception, an
// empty picture. Null for other classes.
Object* MakeInstance(HostState& state, std::string_view name);

// Properties of instances by name. Throw Error.
Value GetProperty(HostState& state, Instance& instance, std::string_view name);
void SetProperty(HostState& state, Instance& instance, std::string_view name, const Value& value);

}  // namespace host::runtime
