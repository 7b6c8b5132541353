#include "runner/filter_class.h"

#include <vector>

#include "runner/failure.h"
#include "runner/names.h"
#include "runner/reasons.h"

namespace runner {
namespace {

using InstanceRef = host::Ref<host::Instance>;

constexpr const char* kSource = "SourcePicture";

[[noreturn]] void FailUnknownProperty(const host::RegisteredClass& type, const std::string& name) {
  std::vector<std::string> candidates;
  std::string list;
  for (const host::Property& property : type.properties) {
    candidates.push_back(property.name);
    list += (list.empty() ? "" : ", ") + property.name;
  }
  for (const host::Callable& method : type.methods)
    if (method.setter != nullptr) {
      candidates.push_back(method.declaration.name);
      list += ", " + method.declaration.name;
    }
  if (name.empty())
    throw Failure("arguments of " + type.name +
                  " set its properties and need their names: " + list);
  throw Failure(type.name + " has no property " + name + DidYouMean(name, candidates));
}

// Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as double
void FillTable(host::Host& host, const InstanceRef& instance, const host::RegisteredClass& type,
               const std::string& name, const LutGrid& grid) {
  for (const host::Callable& method : type.methods) {
    if (method.setter == nullptr || !host::SameName(method.declaration.name, name)) continue;
    for (size_t i = 0; i < grid.blueFastest.size(); ++i)
      for (uint32_t x = 0; x < 3; ++x) {
        const auto r = static_cast<uint32_t>(i / (kLutPoints * kLutPoints));
        const auto g = static_cast<uint32_t>(i / kLutPoints % kLutPoints);
        const auto b = static_cast<uint32_t>(i % kLutPoints);
        host.CallSetter(method, instance, r, g, b, x, grid.blueFastest[i][x]);
      }
    return;
  }
  std::vector<std::string> tables;
  for (const host::Callable& method : type.methods)
    if (method.setter != nullptr) tables.push_back(method.declaration.name);
  throw Failure(type.name + " has no table called " + name + DidYouMean(name, tables));
}

void FailOnException(host::Host& host, const host::RegisteredClass& type) {
  const std::optional<host::Exception> raised = host.TakeException();
  if (!raised) return;
  throw Failure(type.name + " raised " + raised->className +
                (raised->message ? ": " + *raised->message : ""));
}

}  // namespace

host::Ref<host::Picture> RunFilter(host::Host& host, const host::RegisteredClass& type,
                                   std::span<const std::pair<std::string, Operand>> arguments,
                                   const host::Ref<host::Picture>& current) {
  const InstanceRef instance = host.New(type.name);
  bool hasSource = false;
  for (const auto& [name, operand] : arguments) {
    if (operand.grid != nullptr && !name.empty()) {
      FillTable(host, instance, type, name, *operand.grid);
      continue;
    }
    if (name.empty() || host.registry.FindProperty(type.name, name) == nullptr)
      FailUnknownProperty(type, name);
    hasSource = hasSource || host::SameName(name, kSource);
    host.Set(instance, name, PlainValue(operand, name + " of " + type.name));
  }
  if (!hasSource && !current)
    throw Failure(type.name + " needs a picture, and there is no current picture");
  if (!hasSource) host.Set(instance, kSource, current);

  const bool done = host.Call<bool>(host.Method(type.name, "Run"), instance);
  FailOnException(host, type);
  const host::Value source = host.Get(instance, kSource);
  const auto* picture = std::get_if<host::Ref<host::Picture>>(&source);
  if (!done)
    throw Failure(type.name + ": Run gave false: " +
                  WhyNoPicture(picture == nullptr ? nullptr : *picture, host.settings));
  const host::Value result = host.Get(instance, "DestinationPicture");
  const auto* destination = std::get_if<host::Ref<host::Picture>>(&result);
  if (destination == nullptr || !*destination)
    throw Failure(type.name + " gave no DestinationPicture");
  return *destination;
}

}  // namespace runner
