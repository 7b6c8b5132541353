#include "runner/session.h"

#include <algorithm>
#include <utility>

#include "runner/failure.h"
#include "runner/filter_class.h"
#include "runner/invoker.h"
#include "runner/names.h"
#include "runner/reasons.h"

namespace runner {
namespace {

using host::SameName;
using PictureRef = host::Ref<host::Picture>;

// A constant as the type that it has by itself; the host widens it where a parameter wants that.
host::Value ValueOf(host::Host& host, const host::Literal& literal) {
  if (const auto* whole = std::get_if<int64_t>(&literal)) {
    if (*whole > INT32_MAX) return static_cast<uint32_t>(*whole);
    return static_cast<int32_t>(*whole);
  }
  if (const auto* real = std::get_if<double>(&literal)) return *real;
  if (const auto* truth = std::get_if<bool>(&literal)) return *truth;
  if (const auto* colour = std::get_if<host::Colour>(&literal)) return *colour;
  if (const auto* text = std::get_if<std::string>(&literal)) return host.NewString(*text);
  return host::Nil{};
}

bool IsSelf(const Call& call) {
  return call.target == nullptr && !call.hasParentheses && SameName(call.name, "self");
}

void FailOnException(const host::Callable& callable, const std::optional<host::Exception>& raised) {
  if (!raised) return;
  throw Failure(callable.declaration.name + " raised " + raised->className +
                (raised->message ? ": " + *raised->message : ""));
}

// The host lists declarations a line each.
std::string OneLine(std::string text) {
  for (size_t count = 0, at = 0; (at = text.find("\n  ", at)) != std::string::npos; ++count)
    text.replace(at, 3, count == 0 ? ": " : "; ");
  return text;
}

}  // namespace

std::vector<Named> Session::Run(const Statement& statement) {
  shown.clear();
  const PictureRef before = current;
  try {
    if (statement.assigned != nullptr) {
      Assign(statement);
    } else {
      Operand result = Evaluate(statement.expression);
      const Call* call = std::get_if<Call>(&statement.expression.content);
      if (const PictureRef picture = PictureIn(result))
        current = picture;
      else if (!std::holds_alternative<host::Nil>(result.value) || result.grid != nullptr ||
               result.curves)
        Show(call != nullptr ? call->name : "value", std::move(result));
    }
  } catch (const host::Error& error) {
    throw Failure(OneLine(error.what()));
  }
  madePicture = !(before == current);
  return std::move(shown);
}

const Operand* Session::Find(std::string_view name) const {
  for (const Named& entry : defined)
    if (SameName(entry.name, name)) return &entry.operand;
  return nullptr;
}

std::vector<std::string> Session::Names() const {
  std::vector<std::string> names;
  for (const Named& entry : defined) names.push_back(entry.name);
  return names;
}

void Session::Define(std::string name, Operand operand) {
  for (Named& entry : defined)
    if (SameName(entry.name, name)) {
      entry.operand = std::move(operand);
      return;
    }
  defined.push_back({std::move(name), std::move(operand)});
}

void Session::Show(std::string name, Operand operand) {
  Define(name, operand);
  shown.push_back({std::move(name), std::move(operand)});
}

Operand Session::Evaluate(const Expression& expression) {
  if (const auto* literal = std::get_if<host::Literal>(&expression.content))
    return {ValueOf(runtime, *literal), nullptr, std::nullopt};
  return EvaluateCall(std::get<Call>(expression.content));
}

Operand Session::EvaluateCall(const Call& call) {
  if (IsSelf(call)) {
    if (!current) throw Failure("there is no current picture for 'self'");
    return {current, nullptr, std::nullopt};
  }
  if (const Overloads methods = runtime.registry.FindAll("Picture", call.name); !methods.empty())
    return EvaluateMethod(methods, SelfFor(call), call);
  if (call.target == nullptr) {
    if (const Overloads methods = runtime.registry.FindAll({}, call.name); !methods.empty())
      return EvaluateMethod(methods, nullptr, call);
    const host::RegisteredClass* type = runtime.registry.FindClass(call.name);
    if (type != nullptr && !type->extension)
      return {RunFilter(runtime, *type, EvaluateArguments(call), current), nullptr, std::nullopt};
    if (const Operand* value = call.hasParentheses ? nullptr : Find(call.name)) return *value;
    if (IsFileFunction(call.name)) return ReadFile(call);
  }
  FailUnknown(call, Names());
}

PictureRef Session::SelfFor(const Call& call) {
  PictureRef self = call.target == nullptr ? current : PictureIn(Evaluate(*call.target));
  if (self) return self;
  throw Failure(call.target == nullptr
                    ? call.name + " is a method of a picture, and there is no current picture"
                    : "what stands before ." + call.name + " isn't a picture");
}

Session::Arguments Session::EvaluateArguments(const Call& call) {
  Arguments arguments;
  for (const CallArgument& argument : call.arguments)
    arguments.emplace_back(argument.name, Evaluate(*argument.value));
  return arguments;
}

Operand Session::EvaluateMethod(const Overloads& overloads, const PictureRef& self,
                                const Call& call) {
  const Arguments given = EvaluateArguments(call);
  std::vector<host::Argument> arguments;
  for (const auto& [name, operand] : given) {
    if (operand.curves)
      AddCurves(operand, name, *overloads.front(), &arguments);
    else
      arguments.push_back({name, PlainValue(operand, call.name)});
  }
  for (const auto& [name, operand] : given)
    if (operand.sound) AddSound(*operand.sound, *overloads.front(), &arguments);

  const host::BoundCall bound = host::Bind(overloads, self, arguments);
  host::Outcome outcome = bound.Invoke(InvokeByFfi);
  FailOnException(*bound.callable, outcome.exception);
  const host::Declaration& declaration = bound.callable->declaration;
  for (auto& [name, value] : outcome.byrefs) Show(name, {std::move(value), nullptr, std::nullopt});
  if (declaration.result != host::Type::kNone && std::holds_alternative<host::Nil>(outcome.result))
    throw Failure(declaration.name + " gave nil: " + WhyNil(bound, runtime.settings));
  return {std::move(outcome.result), nullptr, std::nullopt};
}

Operand Session::ReadFile(const Call& call) {
  const Arguments given = EvaluateArguments(call);
  FileFunction function{call.name, given, runtime, imageOptions, tables};
  Operand operand = function.Read();
  if (operand.sound) {
    Show("SampleCount", {operand.sound->count, nullptr, std::nullopt});
    Show("Bits", {operand.sound->bits, nullptr, std::nullopt});
  }
  return operand;
}

void Session::Assign(const Statement& statement) {
  const Call& call = std::get<Call>(statement.expression.content);
  if (IsSelf(call)) {
    const Operand value = Evaluate(*statement.assigned);
    if (!PictureIn(value)) throw Failure("only a picture can be assigned to self");
    return SetCurrent(PictureIn(value));
  }
  if (runtime.registry.FindAll("Picture", call.name).empty()) {
    const host::RegisteredClass* type = runtime.registry.FindClass(call.name);
    if (call.target != nullptr || (type != nullptr && !type->extension) ||
        !runtime.registry.FindAll({}, call.name).empty())
      throw Failure("nothing can be assigned to " + call.name);
    if (call.hasParentheses) FailUnknown(call, Names());
    return Define(call.name, Evaluate(*statement.assigned));
  }
  const PictureRef self = SelfFor(call);
  AssignPair(call, self, Evaluate(*statement.assigned));
}

void Session::AssignPair(const Call& call, const PictureRef& self, const Operand& value) {
  std::vector<host::Argument> arguments;
  for (const auto& [name, operand] : EvaluateArguments(call))
    arguments.push_back({name, PlainValue(operand, call.name)});
  for (const host::Callable* callable : runtime.registry.FindAll("Picture", call.name)) {
    if (callable->setter == nullptr) continue;
    const host::BoundCall bound =
        host::BindSetter(*callable, self, arguments, PlainValue(value, call.name));
    return FailOnException(*callable, bound.Invoke(InvokeByFfi).exception);
  }
  throw Failure("nothing can be assigned to " + call.name);
}

}  // namespace runner
