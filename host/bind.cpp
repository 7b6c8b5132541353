#include <algorithm>

#include "host/call.h"
#include "host/error.h"

namespace host {
namespace {

[[noreturn]] void Fail(const Callable& callable, const std::string& why) {
  throw Error(why + "; it is declared " + callable.text);
}

// What a byref variable starts as when the caller has none.
Value Zero(Type type) {
  switch (type) {
    case Type::kInteger:
      return int32_t{0};
    case Type::kUInt32:
      return uint32_t{0};
    case Type::kDouble:
      return 0.0;
    case Type::kBoolean:
      return false;
    case Type::kColour:
      return Colour{};
    default:
      return Nil{};
  }
}

// The parameter that each argument stands for.
std::vector<const Argument*> Place(const Callable& callable, std::span<const Argument> arguments) {
  const std::vector<Parameter>& parameters = callable.declaration.parameters;
  std::vector<const Argument*> placed(parameters.size(), nullptr);
  size_t next = 0;
  bool named = false;
  for (const Argument& argument : arguments) {
    size_t index = next;
    if (argument.name.empty()) {
      if (named) Fail(callable, "an argument without a name follows one with a name");
      if (next >= parameters.size()) {
        Fail(callable, std::to_string(arguments.size()) + " arguments are too many");
      }
      ++next;
    } else {
      named = true;
      const auto found = std::find_if(
          parameters.begin(), parameters.end(),
          [&](const Parameter& parameter) { return SameName(parameter.name, argument.name); });
      if (found == parameters.end()) Fail(callable, "no parameter is called " + argument.name);
      index = static_cast<size_t>(found - parameters.begin());
    }
    if (placed[index] != nullptr) Fail(callable, parameters[index].name + " is given twice");
    placed[index] = &argument;
  }
  return placed;
}

Value Converted(const Callable& callable, const std::string& name, const Value& value, Type type) {
  try {
    return ConvertValue(value, type);
  } catch (const Error& error) {
    Fail(callable, name + ": " + error.what());
  }
}

// How many arguments the binding had to convert to another type.
size_t Conversions(const BoundCall& bound, std::span<const Argument> arguments) {
  size_t converted = 0;
  const std::vector<const Argument*> placed = Place(*bound.callable, arguments);
  for (size_t i = 0; i < placed.size(); ++i) {
    if (placed[i] != nullptr) converted += placed[i]->value.index() != bound.values[i].index();
  }
  return converted;
}

}  // namespace

BoundCall Bind(const Callable& callable, Ref<Object> self, std::span<const Argument> arguments) {
  BoundCall bound;
  bound.callable = &callable;
  bound.function = callable.function;
  bound.result = callable.declaration.result;
  bound.hasSelf = !callable.className.empty() && !callable.shared;
  bound.self = std::move(self);
  bound.parameters = callable.declaration.parameters;
  const std::vector<const Argument*> placed = Place(callable, arguments);
  for (size_t i = 0; i < placed.size(); ++i) {
    const Parameter& parameter = bound.parameters[i];
    if (placed[i] != nullptr) {
      bound.values.push_back(Converted(callable, parameter.name, placed[i]->value, parameter.type));
    } else if (parameter.defaultValue) {
      bound.values.push_back(FromLiteral(*parameter.defaultValue, parameter.type));
    } else if (parameter.byref) {
      bound.values.push_back(Zero(parameter.type));
    } else {
      Fail(callable, parameter.name + " is missing");
    }
  }
  return bound;
}

BoundCall BindSetter(const Callable& callable, Ref<Object> self,
                     std::span<const Argument> arguments, const Value& value) {
  if (callable.setter == nullptr) Fail(callable, "nothing can be assigned to it");
  BoundCall bound = Bind(callable, std::move(self), arguments);
  bound.function = callable.setter;
  Parameter assigned;
  assigned.name = "value";
  assigned.type = bound.result;
  bound.parameters.push_back(assigned);
  bound.values.push_back(Converted(callable, "the assigned value", value, bound.result));
  bound.result = Type::kNone;
  return bound;
}

BoundCall Bind(std::span<const Callable* const> overloads, Ref<Object> self,
               std::span<const Argument> arguments) {
  if (overloads.empty()) throw Error("there is no such method");
  if (overloads.size() == 1) return Bind(*overloads.front(), std::move(self), arguments);

  std::optional<BoundCall> best;
  size_t fewest = 0;
  bool tied = false;
  std::string declarations;
  for (const Callable* callable : overloads) {
    declarations += "\n  " + callable->text;
    try {
      BoundCall bound = Bind(*callable, self, arguments);
      const size_t conversions = Conversions(bound, arguments);
      if (best && conversions >= fewest) {
        tied = tied || conversions == fewest;
        continue;
      }
      best = std::move(bound);
      fewest = conversions;
      tied = false;
    } catch (const Error&) {
      // Another may fit.
    }
  }
  if (!best) throw Error("the arguments fit none of" + declarations);
  if (tied) throw Error("the arguments fit more than one of" + declarations);
  return *best;
}

}  // namespace host
