// What the plug-in registered.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/declaration.h"

namespace host {

// A method of a class or an extension, or a global method.
struct Callable {
  std::string className;  // empty for global methods
  std::string text;       // the declaration as registered
  Declaration declaration;
  void* function = nullptr;
  void* setter = nullptr;  // null unless the method is a get/set pair
  uint32_t flags = 0;
  bool shared = false;  // called without an object
};

struct Property {
  std::string name;
  std::string typeName;
  Type type = Type::kInteger;
  uint32_t flags = 0;
  bool isField = false;
  size_t offset = 0;       // of the field from the object's address
  void* getter = nullptr;  // accessors, called with `parameter`; null where there is none
  void* setter = nullptr;
  intptr_t parameter = 0;
  bool shared = false;
};

struct RegisteredClass {
  std::string name;
  std::string superName;
  bool extension = false;
  int32_t definitionVersion = 0;
  uint32_t flags = 0;
  int32_t dataSize = 0;
  size_t dataOffset =
      0;  // of the instance data from the object's address; the definition's host word
  const RegisteredClass* super = nullptr;
  void* constructor = nullptr;
  void* destructor = nullptr;
  std::vector<Callable> methods;  // in the order of the definition, shared ones last
  std::vector<Property> properties;
  const REALclassDefinition* definition = nullptr;
};

// A row or definition that can't be understood is left out and becomes an error of the census.
class Registry {
 public:
  // Classes and extensions in the order of registration.
  const std::deque<RegisteredClass>& Classes() const { return classes; }
  const std::deque<Callable>& GlobalMethods() const { return globals; }
  // What "RegisterPluginVersion" was told; nothing: it wasn't called.
  std::optional<int32_t> AnnouncedVersion() const { return announcedVersion; }

  // Names in any case. An empty class name means the global methods. Methods of extensions and of
  // superclasses count as the class's own.
  const RegisteredClass* FindClass(std::string_view name) const;
  std::vector<const Callable*> FindAll(std::string_view className, std::string_view name) const;
  const Property* FindProperty(std::string_view className, std::string_view name) const;

  // One method by its declaration, or by its name where only one is so called. Throws Error when
  // there is none or more than one.
  const Callable& Find(std::string_view className, std::string_view nameOrDeclaration) const;
  // By name and number of declared parameters.
  const Callable& Find(std::string_view className, std::string_view name, size_t count) const;

  // For the host's own functions.
  void Announce(int32_t version) { announcedVersion = version; }
  void AddClass(REALclassDefinition* definition, bool extension);
  void AddGlobalMethod(const REALmethodDefinition* row);

 private:
  std::deque<RegisteredClass> classes;
  std::deque<Callable> globals;
  std::optional<int32_t> announcedVersion;
};

}  // namespace host
