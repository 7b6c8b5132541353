#include "host/registry.h"

#include "host/error.h"
#include "host/runtime/class_rows.h"
#include "host/runtime/host_state.h"

namespace host {
namespace {

// A name alone, without parameters or result.
bool IsName(std::string_view text) { return text.find_first_of(" \t(") == std::string_view::npos; }

std::string ListOf(const std::vector<const Callable*>& candidates) {
  std::string list;
  for (const Callable* candidate : candidates) list += "\n  " + candidate->text;
  return list;
}

const Callable& Only(const std::vector<const Callable*>& candidates, std::string_view className,
                     std::string_view asked) {
  const std::string of = className.empty() ? "" : " of " + std::string(className);
  if (candidates.empty()) throw Error("there is no method " + std::string(asked) + of);
  if (candidates.size() > 1) {
    throw Error("there are several methods " + std::string(asked) + of + ":" + ListOf(candidates));
  }
  return *candidates.front();
}

}  // namespace

const RegisteredClass* Registry::FindClass(std::string_view name) const {
  for (const RegisteredClass& registered : classes) {
    if (!registered.extension && SameName(registered.name, name)) return &registered;
  }
  return nullptr;
}

std::vector<const Callable*> Registry::FindAll(std::string_view className,
                                               std::string_view name) const {
  std::vector<const Callable*> found;
  const auto addFrom = [&](const auto& methods) {
    for (const Callable& method : methods) {
      if (SameName(method.declaration.name, name)) found.push_back(&method);
    }
  };
  if (className.empty()) {
    addFrom(globals);
    return found;
  }
  for (const RegisteredClass& registered : classes) {
    if (SameName(registered.name, className)) addFrom(registered.methods);
  }
  const RegisteredClass* own = FindClass(className);
  for (const RegisteredClass* of = own; of != nullptr; of = of->super) {
    if (of != own) addFrom(of->methods);
  }
  return found;
}

const Property* Registry::FindProperty(std::string_view className, std::string_view name) const {
  const auto findIn = [&](const RegisteredClass& registered) -> const Property* {
    for (const Property& property : registered.properties) {
      if (SameName(property.name, name)) return &property;
    }
    return nullptr;
  };
  for (const RegisteredClass& registered : classes) {
    if (!SameName(registered.name, className)) continue;
    for (const RegisteredClass* of = &registered; of != nullptr; of = of->super) {
      if (const Property* property = findIn(*of)) return property;
    }
  }
  return nullptr;
}

const Callable& Registry::Find(std::string_view className,
                               std::string_view nameOrDeclaration) const {
  if (IsName(nameOrDeclaration)) {
    return Only(FindAll(className, nameOrDeclaration), className, nameOrDeclaration);
  }
  const Declaration wanted = ParseDeclaration(nameOrDeclaration);
  std::vector<const Callable*> same;
  for (const Callable* method : FindAll(className, wanted.name)) {
    if (SameSignature(method->declaration, wanted)) same.push_back(method);
  }
  return Only(same, className, nameOrDeclaration);
}

const Callable& Registry::Find(std::string_view className, std::string_view name,
                               size_t count) const {
  std::vector<const Callable*> same;
  for (const Callable* method : FindAll(className, name)) {
    if (method->declaration.parameters.size() == count) same.push_back(method);
  }
  return Only(same, className,
              std::string(name) + " with " + std::to_string(count) + " parameters");
}

void Registry::AddClass(REALclassDefinition* definition, bool extension) {
  if (definition == nullptr || definition->name == nullptr) {
    runtime::Complain("a class without a definition or a name was registered");
    return;
  }
  RegisteredClass& added = classes.emplace_back();
  try {
    runtime::ReadClass(*definition, extension, *this, added);
  } catch (const Error& error) {
    runtime::Complain(std::string("class ") + definition->name + ": " + error.what());
    classes.pop_back();
    return;
  }
  definition->host = added.dataOffset;
}

void Registry::AddGlobalMethod(const REALmethodDefinition* row) {
  try {
    if (row == nullptr) throw Error("there is no definition");
    globals.push_back(
        runtime::ReadMethod({}, row->declaration, row->function, row->setter, row->flags, false));
  } catch (const Error& error) {
    runtime::Complain(std::string("global method: ") + error.what());
  }
}

}  // namespace host
