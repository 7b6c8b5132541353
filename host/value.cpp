#include "host/value.h"

#include <array>
#include <charconv>
#include <limits>

#include "host/declaration.h"
#include "host/error.h"
#include "host/host.h"

namespace host {
namespace {

struct TypeRow {
  const char* name;
  Type type;
};
constexpr TypeRow kTypes[] = {
    {"integer", Type::kInteger}, {"int32", Type::kInteger},   {"uint32", Type::kUInt32},
    {"double", Type::kDouble},   {"boolean", Type::kBoolean}, {"color", Type::kColour},
    {"string", Type::kString},   {"picture", Type::kPicture}, {"memoryblock", Type::kMemoryBlock},
};
constexpr const char* kUnknownTypes[] = {
    "int8",  "int16",   "int64",    "uint8",   "uint16", "uint64", "uinteger", "single",
    "short", "variant", "currency", "cstring", "ptr",    "byte",   "text",     "auto",
};

bool IsObject(Type type) {
  return type == Type::kString || type == Type::kPicture || type == Type::kMemoryBlock ||
         type == Type::kObject;
}

[[noreturn]] void FailFit(const std::string& what, Type wanted) {
  throw Error(what + " doesn't fit a parameter of type " + NameOf(wanted));
}

std::string Number(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return {text.data(), end};
}

// A whole number as one of the numeric types; nothing where it doesn't keep its value.
std::optional<Value> FromWhole(int64_t whole, Type wanted) {
  const bool isInt =
      whole >= std::numeric_limits<int32_t>::min() && whole <= std::numeric_limits<int32_t>::max();
  const bool isUnsigned = whole >= 0 && whole <= std::numeric_limits<uint32_t>::max();
  switch (wanted) {
    case Type::kInteger:
      if (isInt) return static_cast<int32_t>(whole);
      return std::nullopt;
    case Type::kUInt32:
      if (isUnsigned) return static_cast<uint32_t>(whole);
      return std::nullopt;
    case Type::kColour:
      if (isUnsigned) return Colour{static_cast<uint32_t>(whole)};
      return std::nullopt;
    case Type::kDouble:
      return static_cast<double>(whole);
    default:
      return std::nullopt;
  }
}

std::optional<int64_t> WholeOf(const Value& value) {
  if (const auto* number = std::get_if<int32_t>(&value)) return *number;
  if (const auto* number = std::get_if<uint32_t>(&value)) return *number;
  if (const auto* colour = std::get_if<Colour>(&value)) return colour->rgb;
  return std::nullopt;
}

Object* ObjectOf(const Value& value) {
  return std::visit(
      [](const auto& held) -> Object* {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (native::IsRef<Held>::value) {
          return held.Get();
        } else {
          return nullptr;
        }
      },
      value);
}

bool HoldsRef(const Value& value) {
  return std::visit(
      [](const auto& held) { return native::IsRef<std::decay_t<decltype(held)>>::value; }, value);
}

Value FromObject(Object* object, Type wanted) {
  if (object == nullptr) return Nil{};
  const Kind kind = object->GetKind();
  if (wanted == Type::kString && kind == Kind::kString) {
    return Ref<String>::Share(static_cast<String*>(object));
  }
  if (wanted == Type::kPicture && kind == Kind::kPicture) {
    return Ref<Picture>::Share(static_cast<Picture*>(object));
  }
  if (wanted == Type::kMemoryBlock && kind == Kind::kMemoryBlock) {
    return Ref<MemoryBlock>::Share(static_cast<MemoryBlock*>(object));
  }
  if (wanted == Type::kObject && kind != Kind::kString) return Ref<Object>::Share(object);
  FailFit(object->Describe(), wanted);
}

}  // namespace

std::optional<Type> TypeByName(std::string_view name) {
  for (const TypeRow& row : kTypes) {
    if (SameName(name, row.name)) return row.type;
  }
  for (const char* unknown : kUnknownTypes) {
    if (SameName(name, unknown)) return std::nullopt;
  }
  return Type::kObject;
}

const char* NameOf(Type type) {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return row.name;
  }
  return type == Type::kObject ? "object" : "";
}

Value FromLiteral(const Literal& literal) {
  return std::visit(
      [](const auto& constant) -> Value {
        using Constant = std::decay_t<decltype(constant)>;
        if constexpr (std::is_same_v<Constant, int64_t>) {
          if (const auto value = FromWhole(constant, Type::kInteger)) return *value;
          return static_cast<uint32_t>(constant);
        } else if constexpr (std::is_same_v<Constant, std::string>) {
          return Host::Current().NewString(constant);
        } else {
          return constant;
        }
      },
      literal);
}

Value FromLiteral(const Literal& literal, Type wanted) {
  return ConvertValue(FromLiteral(literal), wanted);
}

Value ConvertValue(const Value& value, Type wanted) {
  if (std::holds_alternative<Nil>(value) || HoldsRef(value)) {
    if (!IsObject(wanted)) FailFit(ToText(value), wanted);
    return FromObject(ObjectOf(value), wanted);
  }
  const bool same = (wanted == Type::kDouble && std::holds_alternative<double>(value)) ||
                    (wanted == Type::kBoolean && std::holds_alternative<bool>(value)) ||
                    (wanted == Type::kColour && std::holds_alternative<Colour>(value));
  if (same) return value;
  // A colour passes as a whole number, but isn't an amount.
  const bool colourAsDouble = wanted == Type::kDouble && std::holds_alternative<Colour>(value);
  const auto whole = WholeOf(value);
  if (whole && !colourAsDouble) {
    if (const auto converted = FromWhole(*whole, wanted)) return *converted;
  }
  FailFit(ToText(value), wanted);
}

std::string ToText(const Value& value) {
  return std::visit(
      [](const auto& held) -> std::string {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, Nil>) {
          return "nil";
        } else if constexpr (std::is_same_v<Held, bool>) {
          return held ? "true" : "false";
        } else if constexpr (std::is_same_v<Held, double>) {
          return Number(held);
        } else if constexpr (std::is_same_v<Held, Colour>) {
          constexpr char kDigits[] = "0123456789ABCDEF";
          std::string text = "&c";
          for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[held.rgb >> shift & 15];
          return text;
        } else if constexpr (std::is_same_v<Held, Ref<String>>) {
          if (!held) return "nil";
          return ConvertEncoding(held->Bytes(), held->Encoding(), kEncodingUTF8)
              .value_or(held->Bytes());
        } else if constexpr (native::IsRef<Held>::value) {
          return held ? held->Describe() : "nil";
        } else {
          return std::to_string(held);
        }
      },
      value);
}

}  // namespace host
