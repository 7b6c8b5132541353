#include "host/runtime/class_rows.h"

#include <span>

#include "host/error.h"
#include "host/runtime/host_state.h"
#include "host/runtime/instance_data.h"

namespace host::runtime {
namespace {

template <class Row>
std::span<const Row> RowsOf(const Row* rows, int32_t count) {
  if (rows == nullptr || count <= 0) return {};
  return {rows, static_cast<size_t>(count)};
}

size_t FieldSize(Type type) {
  switch (type) {
    case Type::kBoolean:
      return 1;
    case Type::kInteger:
    case Type::kUInt32:
    case Type::kColour:
      return 4;
    case Type::kDouble:
      return 8;
    default:
      return sizeof(void*);
  }
}

void* Accessor(void* function) {
  return reinterpret_cast<uintptr_t>(function) == kPropertyIsField ? nullptr : function;
}

template <class Row>
Property ReadProperty(const Row& row, const RegisteredClass& owner, bool shared) {
  if (row.name == nullptr || row.type == nullptr) throw Error("a property lacks its name or type");
  const auto type = TypeByName(row.type);
  if (!type) {
    throw Error("property " + std::string(row.name) + " has the type " + row.type +
                ", which this host doesn't carry");
  }
  Property property;
  property.name = row.name;
  property.typeName = row.type;
  property.type = *type;
  property.flags = row.flags;
  property.shared = shared;
  property.isField = reinterpret_cast<uintptr_t>(row.getter) == kPropertyIsField &&
                     reinterpret_cast<uintptr_t>(row.setter) == kPropertyIsField;
  if (property.isField) {
    const bool fits = row.parameter <= static_cast<size_t>(owner.dataSize) &&
                      FieldSize(*type) <= static_cast<size_t>(owner.dataSize) - row.parameter;
    if (!fits || shared) {
      throw Error("property " + property.name + " isn't a field inside the instance data");
    }
    property.offset = owner.dataOffset + row.parameter;
  } else {
    property.getter = Accessor(row.getter);
    property.setter = Accessor(row.setter);
    property.parameter = static_cast<intptr_t>(row.parameter);
  }
  return property;
}

template <class Row>
void ReadMethods(const Row* rows, int32_t count, bool shared, RegisteredClass& read) {
  for (const Row& row : RowsOf(rows, count)) {
    try {
      read.methods.push_back(
          ReadMethod(read.name, row.declaration, row.function, row.setter, row.flags, shared));
    } catch (const Error& error) {
      Complain("method of " + read.name + ": " + error.what());
    }
  }
}

template <class Row>
void ReadProperties(const Row* rows, int32_t count, bool shared, RegisteredClass& read) {
  for (const Row& row : RowsOf(rows, count)) {
    try {
      read.properties.push_back(ReadProperty(row, read, shared));
    } catch (const Error& error) {
      Complain("class " + read.name + ": " + error.what());
    }
  }
}

template <class Definition>
void ReadRows(const Definition& definition, RegisteredClass& read) {
  ReadProperties(definition.properties, definition.propertyCount, false, read);
  ReadProperties(definition.sharedProperties, definition.sharedPropertyCount, true, read);
  ReadMethods(definition.methods, definition.methodCount, false, read);
  ReadMethods(definition.sharedMethods, definition.sharedMethodCount, true, read);
  read.flags = definition.flags;
}

}  // namespace

void ReadClass(const REALclassDefinition& definition, bool extension, const Registry& registry,
               RegisteredClass& read) {
  read.name = definition.name;
  read.superName = definition.superName == nullptr ? "" : definition.superName;
  read.extension = extension;
  read.definitionVersion = definition.version;
  read.definition = &definition;
  read.dataSize = definition.dataSize;
  read.constructor = definition.constructor;
  read.destructor = definition.destructor;
  if (read.dataSize < 0) throw Error("the size of the instance data is negative");
  if (!extension && registry.FindClass(read.name) != &read && registry.FindClass(read.name)) {
    throw Error("it is registered already");
  }
  read.dataOffset = FirstDataOffset();
  if (!read.superName.empty()) {
    read.super = registry.FindClass(read.superName);
    if (read.super == nullptr) throw Error("its superclass " + read.superName + " isn't known");
    const size_t end = read.super->dataOffset + static_cast<size_t>(read.super->dataSize);
    read.dataOffset = (end + kDataAlignment - 1) / kDataAlignment * kDataAlignment;
  }
  if (definition.version <= kLastShortDefinition) {
    ReadRows(reinterpret_cast<const REALshortClassDefinition&>(definition), read);
  } else {
    ReadRows(definition, read);
  }
}

Callable ReadMethod(const std::string& className, const char* declaration, void* function,
                    void* setter, uint32_t flags, bool shared) {
  if (declaration == nullptr) throw Error("it has no declaration");
  if (function == nullptr) throw Error(std::string(declaration) + " has no function");
  Callable read;
  read.className = className;
  read.text = declaration;
  read.declaration = ParseDeclaration(declaration);
  read.function = function;
  read.setter = setter;
  read.flags = flags;
  read.shared = shared;
  return read;
}

}  // namespace host::runtime
