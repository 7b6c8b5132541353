// Properties of instances: fields of their data, or accessors of the plug-in's.

#include <cstring>

#include "host/error.h"
#include "host/runtime/classes.h"

namespace host::runtime {
namespace {

const Property& Find(HostState& state, const Instance& instance, std::string_view name) {
  const Property* property = state.host.registry.FindProperty(instance.ClassName(), name);
  if (property == nullptr) {
    throw Error(instance.ClassName() + " has no property " + std::string(name));
  }
  return *property;
}

uint8_t* FieldOf(Instance& instance, const Property& property) {
  return reinterpret_cast<uint8_t*>(&instance) + property.offset;
}

template <class T>
T ReadField(Instance& instance, const Property& property) {
  T value;
  // NOLINTNEXTLINE(bugprone-sizeof-expression): the size of a pointer is meant where T is one
  std::memcpy(&value, FieldOf(instance, property), sizeof value);
  return value;
}

template <class T>
void WriteField(Instance& instance, const Property& property, T value) {
  // NOLINTNEXTLINE(bugprone-sizeof-expression): as above
  std::memcpy(FieldOf(instance, property), &value, sizeof value);
}

REALobject Self(Instance& instance) { return reinterpret_cast<REALobject>(&instance); }

// The property's raw value. An accessor's handle comes with a reference, a field keeps its own.
template <class T>
T Read(Instance& instance, const Property& property) {
  if (property.isField) return ReadField<T>(instance, property);
  return reinterpret_cast<T (*)(REALobject, intptr_t)>(property.getter)(Self(instance),
                                                                        property.parameter);
}

template <class T>
void Write(Instance& instance, const Property& property, T value) {
  if (property.isField) {
    WriteField(instance, property, value);
  } else {
    reinterpret_cast<void (*)(REALobject, intptr_t, T)>(property.setter)(Self(instance),
                                                                         property.parameter, value);
  }
}

template <class T>
Value ReadObject(Instance& instance, const Property& property) {
  const HandleOf<T> handle = Read<HandleOf<T>>(instance, property);
  if (handle == nullptr) return Nil{};
  return property.isField ? ShareHandle<T>(handle) : AdoptHandle<T>(handle);
}

template <class T>
void WriteObject(Instance& instance, const Property& property, const Value& value) {
  const auto* held = std::get_if<Ref<T>>(&value);
  Ref<T> object = held == nullptr ? Ref<T>() : *held;
  if (!property.isField) {
    Write<HandleOf<T>>(instance, property, object.Handle());
    return;
  }
  // The field's reference goes over to `before`, the new object's to the field.
  Ref<T> before = AdoptHandle<T>(ReadField<HandleOf<T>>(instance, property));
  WriteField<HandleOf<T>>(instance, property, object.Handle());
  object.Detach();
}

}  // namespace

Value GetProperty(HostState& state, Instance& instance, std::string_view name) {
  if (instance.Class() == nullptr) {
    const Exception& carried = instance.Carried();
    if (SameName(name, "ErrorNumber")) return carried.errorNumber;
    if (!SameName(name, "Message"))
      throw Error("an exception has no property " + std::string(name));
    if (!carried.message) return Nil{};
    return state.host.NewString(*carried.message, carried.messageEncoding);
  }
  const Property& property = Find(state, instance, name);
  if (!property.isField && property.getter == nullptr) {
    throw Error("property " + property.name + " can't be read");
  }
  switch (property.type) {
    case Type::kInteger:
      return Read<int32_t>(instance, property);
    case Type::kUInt32:
      return Read<uint32_t>(instance, property);
    case Type::kColour:
      return Colour{Read<uint32_t>(instance, property)};
    case Type::kDouble:
      return Read<double>(instance, property);
    case Type::kBoolean:
      return Read<uint8_t>(instance, property) != 0;
    case Type::kString:
      return ReadObject<String>(instance, property);
    case Type::kPicture:
      return ReadObject<Picture>(instance, property);
    case Type::kMemoryBlock:
      return ReadObject<MemoryBlock>(instance, property);
    default:
      return ReadObject<Object>(instance, property);
  }
}

void SetProperty(HostState& state, Instance& instance, std::string_view name, const Value& given) {
  if (instance.Class() == nullptr) {
    Exception& carried = instance.Carried();
    if (SameName(name, "ErrorNumber")) {
      carried.errorNumber = std::get<int32_t>(ConvertValue(given, Type::kInteger));
    } else if (SameName(name, "Message")) {
      const Value message = ConvertValue(given, Type::kString);
      const auto* string = std::get_if<Ref<String>>(&message);
      carried.message.reset();
      if (string != nullptr) {
        carried.message = (*string)->Bytes();
        carried.messageEncoding = (*string)->Encoding();
      }
    } else {
      throw Error("an exception has no property " + std::string(name));
    }
    return;
  }
  const Property& property = Find(state, instance, name);
  if (!property.isField && property.setter == nullptr) {
    throw Error("property " + property.name + " can't be set");
  }
  const Value value = ConvertValue(given, property.type);
  switch (property.type) {
    case Type::kInteger:
      return Write(instance, property, std::get<int32_t>(value));
    case Type::kUInt32:
      return Write(instance, property, std::get<uint32_t>(value));
    case Type::kColour:
      return Write(instance, property, std::get<Colour>(value).rgb);
    case Type::kDouble:
      return Write(instance, property, std::get<double>(value));
    case Type::kBoolean:
      return Write(instance, property, static_cast<uint8_t>(std::get<bool>(value)));
    case Type::kString:
      return WriteObject<String>(instance, property, value);
    case Type::kPicture:
      return WriteObject<Picture>(instance, property, value);
    case Type::kMemoryBlock:
      return WriteObject<MemoryBlock>(instance, property, value);
    default:
      return WriteObject<Object>(instance, property, value);
  }
}

}  // namespace host::runtime
