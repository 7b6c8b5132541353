#include "host/call.h"

#include <string>

#include "host/error.h"

namespace host::native {
namespace {

std::string Plain(Word word) {
  switch (word) {
    case Word::kVoid:
      return "nothing";
    case Word::kInt8:
      return "a bool";
    case Word::kInt32:
      return "an int32";
    case Word::kUInt32:
      return "a uint32";
    case Word::kDouble:
      return "a double";
    case Word::kPointer:
      return "an object";
  }
  return {};
}

bool IsWhole(Word word) { return word == Word::kInt32 || word == Word::kUInt32; }

// Whether a variable of this word, or a handle of this type, is one of the declared type.
bool WordFits(Word word, std::optional<Type> object, Type declared) {
  switch (declared) {
    case Type::kNone:
      return word == Word::kVoid;
    case Type::kInteger:
    case Type::kUInt32:
    case Type::kColour:
      return IsWhole(word);
    case Type::kDouble:
      return word == Word::kDouble;
    case Type::kBoolean:
      return word == Word::kInt8;
    case Type::kObject:
      return word == Word::kPointer && object != Type::kString;
    default:
      return word == Word::kPointer && (!object || *object == declared);
  }
}

bool Fits(const Shape& shape, Type declared, bool byref) {
  if (shape.byref != byref) return false;
  return WordFits(byref ? shape.pointee : shape.word, shape.object, declared);
}

[[noreturn]] void Fail(const Callable& callable, const std::string& why) {
  throw Error(why + "; it is declared " + callable.text);
}

}  // namespace

void Check(const Callable& callable, bool setter, const Shape& result,
           std::initializer_list<Shape> arguments) {
  const Declaration& declaration = callable.declaration;
  if (setter && callable.setter == nullptr) Fail(callable, "nothing can be assigned to it");

  std::vector<Parameter> expected;
  if (!callable.className.empty() && !callable.shared) {
    Parameter self;
    self.name = "self";
    self.type = SameName(callable.className, "Picture") ? Type::kPicture : Type::kObject;
    expected.push_back(self);
  }
  expected.insert(expected.end(), declaration.parameters.begin(), declaration.parameters.end());
  if (setter) {
    Parameter value;
    value.name = "the assigned value";
    value.type = declaration.result;
    expected.push_back(value);
  }

  if (arguments.size() != expected.size()) {
    Fail(callable, "the call has " + std::to_string(arguments.size()) + " arguments, not " +
                       std::to_string(expected.size()));
  }
  const Shape* shape = arguments.begin();
  for (const Parameter& parameter : expected) {
    if (!Fits(*shape, parameter.type, parameter.byref)) {
      Fail(callable, Plain(shape->word) + " was given for " + parameter.name);
    }
    ++shape;
  }

  const bool ignored = result.word == Word::kVoid && declaration.result != Type::kNone;
  const bool ignorable =
      declaration.result == Type::kInteger || declaration.result == Type::kUInt32 ||
      declaration.result == Type::kColour || declaration.result == Type::kDouble ||
      declaration.result == Type::kBoolean;
  const bool fits = ignored ? ignorable : Fits(result, declaration.result, false);
  if (!setter && !fits) Fail(callable, "the result isn't " + Plain(result.word));
}

}  // namespace host::native
