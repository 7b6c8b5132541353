// Calls of what the plug-in registered, and instances of its classes.
#include <pybind11/stl.h>

#include "python/module/errors.h"
#include "python/module/objects.h"
#include "python/module/origin.h"
#include "python/module/values.h"
#include "runner/invoker.h"
#include "runner/reasons.h"

namespace pyhost {
namespace {

namespace py = pybind11;
using Overloads = std::vector<const host::Callable*>;

// The types that overloads declare where an argument would go, by its place or its name.
std::vector<host::Type> TypesAt(const Overloads& overloads, size_t place, std::string_view name) {
  std::vector<host::Type> types;
  for (const host::Callable* method : overloads) {
    const auto& parameters = method->declaration.parameters;
    for (size_t i = 0; i < parameters.size(); ++i) {
      const bool here = name.empty() ? i == place : host::SameName(parameters[i].name, name);
      if (here) types.push_back(parameters[i].type);
    }
  }
  return types;
}

std::vector<host::Argument> ArgumentsFrom(const Overloads& overloads, const py::tuple& values,
                                          const py::dict& named) {
  std::vector<host::Argument> arguments;
  for (size_t i = 0; i < values.size(); ++i)
    arguments.push_back({{}, FromPython(values[i], TypesAt(overloads, i, {}))});
  for (const auto& [key, value] : named) {
    const auto name = key.cast<std::string>();
    arguments.push_back({name, FromPython(value, TypesAt(overloads, 0, name))});
  }
  return arguments;
}

bool IsOf(const host::Instance& instance, const std::string& className) {
  for (const auto* type = instance.Class(); type != nullptr; type = type->super)
    if (host::SameName(type->name, className)) return true;
  return false;
}

// A method's own object: a picture or an instance of its class; none for global methods.
host::Ref<host::Object> SelfFrom(const std::string& className, const py::object& self) {
  if (className.empty()) return nullptr;
  if (host::SameName(className, "Picture") && py::isinstance<HeldPicture>(self))
    return self.cast<HeldPicture&>().Reference();
  if (py::isinstance<HeldInstance>(self) &&
      IsOf(*self.cast<HeldInstance&>().Reference(), className))
    return self.cast<HeldInstance&>().Reference();
  throw py::type_error("a method of " + className + " is called on an object of that class");
}

Overloads Find(const std::string& className, const std::string& name) {
  const Overloads found = TheHost().registry.FindAll(className, name);
  if (found.empty()) throw host::Error("there is no method " + name);
  return found;
}

// What doesn't fit a declaration is the caller's mistake.
template <class F>
auto Fitting(F bind) {
  try {
    return bind();
  } catch (const host::Error& error) {
    throw py::type_error(error.what());
  }
}

py::object ResultOf(const host::BoundCall& call, const host::Value& result) {
  const bool nil = std::holds_alternative<host::Nil>(result);
  if (nil && call.result != host::Type::kNone)
    if (const std::string why = runner::NilByArguments(call, TheHost().settings); !why.empty())
      throw NilResult(call.callable->declaration.name + " gave nil: " + why);
  return ToPython(result);
}

// The result, and by name what byref parameters hold after the call.
py::tuple Call(const std::string& className, const std::string& name, const py::object& self,
               const py::tuple& values, const py::dict& named) {
  const Locked locked;
  const Overloads overloads = Find(className, name);
  const host::BoundCall call = Fitting([&] {
    return host::Bind(overloads, SelfFrom(className, self),
                      ArgumentsFrom(overloads, values, named));
  });
  const host::Outcome outcome = call.Invoke(runner::InvokeByFfi);
  if (outcome.exception) Raise(*outcome.exception);
  const SharedOrigin origin = OriginForResults(call);
  Inherit(outcome.result, origin);
  for (const auto& [parameter, value] : outcome.byrefs) Inherit(value, origin);
  if (call.self && call.self->GetKind() == host::Kind::kInstance)
    InheritWithin(self.cast<HeldInstance&>().Reference());
  py::dict byrefs;
  for (const auto& [parameter, value] : outcome.byrefs)
    byrefs[py::str(parameter)] = ToPython(value);
  return py::make_tuple(ResultOf(call, outcome.result), byrefs);
}

// Assigns to a get/set pair.
void Assign(const std::string& className, const std::string& name, const py::object& self,
            const py::tuple& values, const py::object& assigned) {
  const Locked locked;
  Overloads pairs = Find(className, name);
  std::erase_if(pairs, [](const host::Callable* method) { return method->setter == nullptr; });
  if (pairs.empty()) throw py::type_error("nothing can be assigned to " + name);
  const host::Callable& pair = *pairs.front();
  const std::vector<host::Type> type = {pair.declaration.result};
  const host::BoundCall call = Fitting([&] {
    return host::BindSetter(pair, SelfFrom(className, self), ArgumentsFrom(pairs, values, {}),
                            FromPython(assigned, type));
  });
  if (const auto raised = call.Invoke(runner::InvokeByFfi).exception) Raise(*raised);
}

void RaiseWhatWasRaised() {
  if (const auto raised = TheHost().TakeException()) Raise(*raised);
}

HeldInstance NewInstance(const std::string& className) {
  const Locked locked;
  HeldInstance instance(TheHost().New(className));
  RaiseWhatWasRaised();
  return instance;
}

py::object Get(const HeldInstance& instance, const std::string& property) {
  const Locked locked;
  const host::Value value = TheHost().Get(instance.Reference(), property);
  RaiseWhatWasRaised();
  return ToPython(value);
}

void Set(const HeldInstance& instance, const std::string& property, const py::object& value) {
  const Locked locked;
  const host::Property* declared = TheHost().registry.FindProperty(instance->ClassName(), property);
  if (declared == nullptr) throw py::type_error("there is no property " + property);
  const std::vector<host::Type> type = {declared->type};
  Fitting([&] { TheHost().Set(instance.Reference(), property, FromPython(value, type)); });
  RaiseWhatWasRaised();
}

}  // namespace

void DefineCalls(py::module_& module) {
  module.def("call", &Call, "Call a method by its class's name, its own, self and arguments.");
  module.def("assign", &Assign, "Assign to a get/set pair.");
  py::class_<HeldInstance>(module, "Instance", "An instance of a registered class.")
      .def(py::init(&NewInstance))
      .def("_get", &Get)
      .def("_set", &Set)
      .def("__repr__",
           [](const HeldInstance& self) { return "<picturehost." + self->ClassName() + ">"; });
}

}  // namespace pyhost
