// Calling what the plug-in registered: with types known when the caller is compiled, or with
// values.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/instance.h"
#include "host/native.h"
#include "host/registry.h"

namespace host {

// Calls a registered function. The arguments are the object itself, unless the method is global or
// shared, then every declared parameter (defaults aren't filled in here):
//   integer int32_t; UInt32 and color uint32_t or Colour (a plain int literal passes too); double
//   double; boolean bool; string, picture, memoryblock, objects: Ref, handle or nullptr; byref T a
//   pointer to int32_t, uint32_t, double, uint8_t (boolean) or a handle.
// R is void, bool, int32_t, uint32_t, double, Colour, a Ref, which takes over the returned
// reference, or a handle, whose reference is then the caller's. Throws Error when arguments or R
// don't fit the declaration, before anything is called.
//   Ref<Picture> inverted = Call<Ref<Picture>>(method, photo, 10, 10, 200, 100);
template <class R = void, class... A>
R Call(const Callable& callable, const A&... arguments) {
  native::Check(callable, false, native::kResultOf<R>, {native::kArgument<A>...});
  return native::Invoke<R>(callable.function, native::Pass(arguments)...);
}

// Assigns to a get/set pair: the arguments of Call and then the value.
template <class... A>
void CallSetter(const Callable& callable, const A&... arguments) {
  native::Check(callable, true, native::kResultOf<void>, {native::kArgument<A>...});
  native::Invoke<void>(callable.setter, native::Pass(arguments)...);
}

// An argument of a call by value; without a name it stands for the next parameter in order.
struct Argument {
  std::string name;
  Value value;
};

// Performs a call of a C function whose signature is known only now. `arguments` point at values of
// the words named; `result` has room for 16 bytes. The runner supplies one.
using Invoker =
    std::function<void(void* function, native::Word result, std::span<const native::Word> words,
                       void** arguments, void* resultStorage)>;

// What a call by value came to.
struct Outcome {
  Value result;  // Nil for a method without a result and for a nil object
  std::vector<std::pair<std::string, Value>> byrefs;  // in declared order, after the call
  std::optional<Exception> exception;
};

// A call with everything in place: overload chosen, defaults filled in, values converted.
struct BoundCall {
  const Callable* callable = nullptr;
  void* function = nullptr;
  Type result = Type::kNone;
  bool hasSelf = false;
  Ref<Object> self;
  std::vector<Parameter> parameters;  // those of the declaration, and the value of a setter
  std::vector<Value> values;          // one for each parameter

  // Takes the exception that the call raised, if any, with it.
  Outcome Invoke(const Invoker& invoker) const;
};

// Binds arguments to a method. Byref parameters may be left out; they start as zero or nil. Throws
// Error, which names the declaration, for arguments that are unknown, missing, too many or unfit.
BoundCall Bind(const Callable& callable, Ref<Object> self, std::span<const Argument> arguments);
// The same for an assignment to a get/set pair.
BoundCall BindSetter(const Callable& callable, Ref<Object> self,
                     std::span<const Argument> arguments, const Value& value);
// Chooses among overloads by number, names and types of the arguments; exact types go before
// widened ones. Throws Error, which lists the declarations, when none fits or two fit equally well.
BoundCall Bind(std::span<const Callable* const> overloads, Ref<Object> self,
               std::span<const Argument> arguments);

}  // namespace host
