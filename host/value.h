// Types and values of the host's language.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/memory_block.h"
#include "host/object.h"
#include "host/picture.h"
#include "host/string_object.h"

namespace host {

enum class Type {
  kNone,     // a method without a result
  kInteger,  // int32
  kUInt32,
  kDouble,
  kBoolean,
  kColour,  // uint32 0x00RRGGBB
  kString,
  kPicture,
  kMemoryBlock,
  kObject,  // any other class, by its name
};

// The type that a declaration calls `name`, in any case; kObject for a class name. Nothing for
// types that no call of this host can carry, such as "single" or "variant".
std::optional<Type> TypeByName(std::string_view name);
// "integer", "color" and so on, as declarations spell them.
const char* NameOf(Type type);

struct Colour {
  uint32_t rgb = 0;  // 0x00RRGGBB
  friend bool operator==(Colour, Colour) = default;
};

// A constant as source code spells it: nil, 12, -0.5, true, &c274C5A, "text" (a doubled quote
// stands for one).
struct Nil {
  friend bool operator==(Nil, Nil) = default;
};
using Literal = std::variant<Nil, int64_t, double, bool, Colour, std::string>;

// The constant that `text` is, blanks around it ignored. Throws Error saying what is wrong with it.
// Whole numbers reach from -2147483648 to 4294967295.
Literal ParseLiteral(std::string_view text);

// A value in a program's hands. Objects and strings are held by a reference; Nil fits every one.
using Value = std::variant<Nil, int32_t, uint32_t, double, bool, Colour, Ref<String>, Ref<Picture>,
                           Ref<MemoryBlock>, Ref<Object>>;

// The value of a constant, of the type given where that is possible: whole numbers become double,
// UInt32 or color where wanted, texts become UTF-8 strings. Throws Error where it doesn't fit.
Value FromLiteral(const Literal& literal, Type wanted);
// The same without a wish: whole numbers are integer, or UInt32 where they are too large for it.
Value FromLiteral(const Literal& literal);

// The value as one of the type given. Whole numbers widen to double and pass between integer,
// UInt32 and color where they keep their value; nothing narrows. Throws Error where it doesn't fit.
Value ConvertValue(const Value& value, Type wanted);

// "12", "0.5", "true", "&c274C5A", "nil"; strings as they are, converted to UTF-8 if they can be;
// objects as the census names them.
std::string ToText(const Value& value);

}  // namespace host
