// Declarations of methods, as a plug-in registers them.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/value.h"

namespace host {

struct Parameter {
  std::string name;
  Type type = Type::kInteger;
  std::string typeName;  // as declared
  bool byref = false;
  std::optional<Literal> defaultValue;
};

struct Declaration {
  std::string name;
  std::vector<Parameter> parameters;
  Type result = Type::kNone;
  std::string resultTypeName;

  // How many arguments a call must give at least.
  size_t RequiredCount() const;
};

// Reads "InvertKRT(left as integer, byref out as picture, dest as picture = nil) as picture".
// Keywords and types in any case, blanks where one likes, parentheses left out or empty when there
// are no parameters. Throws Error naming the declaration, the place and what was expected there.
Declaration ParseDeclaration(std::string_view text);

// Same name, same parameter types and byref, same result; names of parameters, defaults, blanks and
// case don't matter.
bool SameSignature(const Declaration& a, const Declaration& b);

// Equal but for the case of ASCII letters, as the host's language compares names.
bool SameName(std::string_view a, std::string_view b);

}  // namespace host
