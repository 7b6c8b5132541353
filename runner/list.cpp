// picturehost list
#include <nlohmann/json.hpp>
#include <string>
#include <variant>

#include "runner/commands.h"
#include "runner/host_setup.h"

namespace runner {
namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const host::Literal& literal) {
  if (const auto* colour = std::get_if<host::Colour>(&literal)) return host::ToText(*colour);
  if (const auto* whole = std::get_if<int64_t>(&literal)) return *whole;
  if (const auto* real = std::get_if<double>(&literal)) return *real;
  if (const auto* truth = std::get_if<bool>(&literal)) return *truth;
  if (const auto* text = std::get_if<std::string>(&literal)) return *text;
  return nullptr;
}

Json ToJson(const host::Callable& callable) {
  const host::Declaration& declaration = callable.declaration;
  Json parameters = Json::array();
  for (const host::Parameter& parameter : declaration.parameters) {
    Json entry = {
        {"name", parameter.name}, {"type", parameter.typeName}, {"byref", parameter.byref}};
    if (parameter.defaultValue) entry["default"] = ToJson(*parameter.defaultValue);
    parameters.push_back(std::move(entry));
  }
  Json json = {{"name", declaration.name},
               {"declaration", callable.text},
               {"parameters", std::move(parameters)},
               {"assignable", callable.setter != nullptr}};
  json["result"] =
      declaration.result == host::Type::kNone ? Json() : Json(declaration.resultTypeName);
  return json;
}

Json ToJson(const host::RegisteredClass& type) {
  Json properties = Json::array(), methods = Json::array();
  for (const host::Property& property : type.properties)
    properties.push_back({{"name", property.name}, {"type", property.typeName}});
  for (const host::Callable& method : type.methods) methods.push_back(ToJson(method));
  return {{"name", type.name},
          {"extension", type.extension},
          {"properties", std::move(properties)},
          {"methods", std::move(methods)}};
}

std::string AsJson(const host::Registry& registry) {
  Json json = {{"classes", Json::array()}, {"globalMethods", Json::array()}};
  for (const host::RegisteredClass& type : registry.Classes())
    json["classes"].push_back(ToJson(type));
  for (const host::Callable& method : registry.GlobalMethods())
    json["globalMethods"].push_back(ToJson(method));
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string Line(const host::Callable& callable) {
  return "  " + callable.text + (callable.setter != nullptr ? "   (can be assigned to)" : "") +
         "\n";
}

std::string AsText(const host::Registry& registry) {
  std::string text;
  for (const host::RegisteredClass& type : registry.Classes()) {
    text += (type.extension ? "Added to class " : "Class ") + type.name + "\n";
    for (const host::Property& property : type.properties)
      text += "  " + property.name + " as " + property.typeName + "   (property)\n";
    for (const host::Callable& method : type.methods) text += Line(method);
    text += "\n";
  }
  text += "Global methods\n";
  for (const host::Callable& method : registry.GlobalMethods()) text += Line(method);
  return text;
}

}  // namespace

int RunList(const Options& options) {
  const HostSetup setup = StartHost(options);
  const host::Registry& registry = setup.host->registry;
  Print(options.json ? AsJson(registry) : AsText(registry));
  return 0;
}

}  // namespace runner
