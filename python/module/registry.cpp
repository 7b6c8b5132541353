// What the plug-in registered, for the Python side to generate its methods and classes from.
#include <pybind11/stl.h>

#include "python/module/objects.h"
#include "python/module/values.h"

namespace pyhost {
namespace {

namespace py = pybind11;

template <class T>
py::list ListOf(const T& entries) {
  py::list list;
  for (const auto& entry : entries)
    list.append(py::cast(&entry, py::return_value_policy::reference));
  return list;
}

py::object DefaultOf(const host::Parameter& parameter) {
  const Locked locked;
  return ToPython(host::FromLiteral(*parameter.defaultValue, parameter.type));
}

const char* KindOf(host::Type type) { return host::NameOf(type); }

void DefineParameter(py::module_& module) {
  py::class_<host::Parameter>(module, "Parameter", "A declared parameter.")
      .def_readonly("name", &host::Parameter::name)
      .def_property_readonly("type", [](const host::Parameter& self) { return KindOf(self.type); })
      .def_readonly("byref", &host::Parameter::byref)
      .def_property_readonly(
          "has_default", [](const host::Parameter& self) { return self.defaultValue.has_value(); })
      .def_property_readonly("default", &DefaultOf);
}

void DefineMethod(py::module_& module) {
  using host::Callable;
  py::class_<Callable>(module, "Method", "A registered method.")
      .def_property_readonly("name", [](const Callable& self) { return self.declaration.name; })
      .def_readonly("declaration", &Callable::text)
      .def_property_readonly(
          "parameters", [](const Callable& self) { return ListOf(self.declaration.parameters); })
      .def_property_readonly("result",
                             [](const Callable& self) { return KindOf(self.declaration.result); })
      .def_property_readonly("assignable",
                             [](const Callable& self) { return self.setter != nullptr; });
}

void DefineClass(py::module_& module) {
  py::class_<host::Property>(module, "Property", "A registered property.")
      .def_readonly("name", &host::Property::name)
      .def_readonly("type_name", &host::Property::typeName)
      .def_property_readonly("type", [](const host::Property& self) { return KindOf(self.type); });
  py::class_<host::RegisteredClass>(module, "Class", "A registered class, or methods added to one.")
      .def_readonly("name", &host::RegisteredClass::name)
      .def_readonly("extension", &host::RegisteredClass::extension)
      .def_property_readonly("methods",
                             [](const host::RegisteredClass& self) { return ListOf(self.methods); })
      .def_property_readonly(
          "properties", [](const host::RegisteredClass& self) { return ListOf(self.properties); });
}

}  // namespace

void DefineRegistry(py::module_& module) {
  DefineParameter(module);
  DefineMethod(module);
  DefineClass(module);
  module.def(
      "classes", [] { return ListOf(TheHost().registry.Classes()); },
      "Classes and extensions, in the order of their registration.");
  module.def(
      "global_methods", [] { return ListOf(TheHost().registry.GlobalMethods()); },
      "Global methods, in the order of their registration.");
  module.def("exception_classes", &host::Host::ExceptionClasses,
             "The names of the exceptions that a call can raise, their base first.");
}

}  // namespace pyhost
