#include "host/error.h"
#include "host/runtime/classes.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/picture_state.h"

namespace host::runtime {
namespace {

// The value of an object's property; nothing where the object has no such property.
std::optional<Value> Get(HostState& state, Object& object, std::string_view name) {
  if (object.GetKind() == Kind::kPicture) {
    const auto& picture = static_cast<const Picture&>(object);
    const std::optional<bool> hasAlpha = picture.Layout().hasAlphaChannel;
    if (SameName(name, "Width")) return picture.Width();
    if (SameName(name, "Height")) return picture.Height();
    if (SameName(name, "Depth")) return picture.Layout().bitsPerPixel;
    if (SameName(name, "HasAlphaChannel") && hasAlpha) return *hasAlpha;
  } else if (object.GetKind() == Kind::kGraphics) {
    const auto& graphics = static_cast<const Graphics&>(object);
    if (SameName(name, "PenWidth")) return graphics.penWidth;
    if (SameName(name, "PenHeight")) return graphics.penHeight;
    if (SameName(name, "ForeColor")) return Colour{graphics.foreColour};
    if (SameName(name, "Width")) return graphics.Target().Width();
    if (SameName(name, "Height")) return graphics.Target().Height();
  } else if (object.GetKind() == Kind::kMemoryBlock) {
    const auto& block = static_cast<const MemoryBlock&>(object);
    if (SameName(name, "Size")) return static_cast<int32_t>(block.Bytes().size());
  } else if (object.GetKind() == Kind::kInstance) {
    try {
      return GetProperty(state, static_cast<Instance&>(object), name);
    } catch (const Error&) {
      return std::nullopt;
    }
  }
  return std::nullopt;
}

bool SetOfGraphics(Graphics& graphics, std::string_view name, const Value& value) {
  if (SameName(name, "ForeColor")) {
    graphics.foreColour = std::get<Colour>(ConvertValue(value, Type::kColour)).rgb & 0xFFFFFF;
    return true;
  }
  if (SameName(name, "PenWidth")) {
    graphics.penWidth = std::get<int32_t>(ConvertValue(value, Type::kInteger));
    return true;
  }
  if (SameName(name, "PenHeight")) {
    graphics.penHeight = std::get<int32_t>(ConvertValue(value, Type::kInteger));
    return true;
  }
  return false;
}

bool Set(HostState& state, Object* object, const char* name, const Value& value) {
  if (object == nullptr || name == nullptr) return false;
  try {
    if (object->GetKind() == Kind::kGraphics) {
      return SetOfGraphics(static_cast<Graphics&>(*object), name, value);
    }
    if (object->GetKind() != Kind::kInstance) return false;
    SetProperty(state, static_cast<Instance&>(*object), name, value);
    return true;
  } catch (const Error&) {
    return false;  // no such property, or one of another type
  }
}

template <class T, class Out>
bool GetInto(HostState& state, Object* object, const char* name, Out* out) {
  if (object == nullptr || name == nullptr || out == nullptr) return false;
  const auto value = Get(state, *object, name);
  const T* held = value ? std::get_if<T>(&*value) : nullptr;
  if (held == nullptr) return false;
  *out = static_cast<Out>(*held);
  return true;
}

}  // namespace

bool GetPropertyInt(HostState& state, REALobject object, const char* name, int32_t* out) {
  return GetInto<int32_t>(state, LookUp<Object>(state, object, "REALGetPropValueInt"), name, out);
}

bool GetPropertyBool(HostState& state, REALobject object, const char* name, uint8_t* out) {
  return GetInto<bool>(state, LookUp<Object>(state, object, "REALGetPropValueBool"), name, out);
}

bool SetPropertyInt(HostState& state, REALobject object, const char* name, int32_t value) {
  return Set(state, LookUp<Object>(state, object, "REALSetPropValueInt"), name, value);
}

bool SetPropertyString(HostState& state, REALobject object, const char* name, REALstring value) {
  Object* target = LookUp<Object>(state, object, "REALSetPropValueString");
  if (value == nullptr) return Set(state, target, name, Nil{});
  String* string = LookUp<String>(state, value, "REALSetPropValueString");
  return string != nullptr && Set(state, target, name, Ref<String>::Share(string));
}

bool SetPropertyUInt32(HostState& state, REALobject object, const char* name, uint32_t value) {
  return Set(state, LookUp<Object>(state, object, "REALSetPropValueUInt32"), name, value);
}

}  // namespace host::runtime
