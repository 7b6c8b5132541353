#include "host/declaration.h"

#include <algorithm>

#include "host/error.h"

namespace host {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool StartsName(char c) { return (Lower(c) >= 'a' && Lower(c) <= 'z') || c == '_'; }
bool InName(char c) { return StartsName(c) || (c >= '0' && c <= '9'); }

bool TakesNil(Type type) {
  return type == Type::kString || type == Type::kPicture || type == Type::kMemoryBlock ||
         type == Type::kObject;
}

// Whether a constant fits a type, without making a value of it.
bool Fits(const Literal& literal, Type type) {
  if (std::holds_alternative<std::string>(literal)) return type == Type::kString;
  if (std::holds_alternative<Nil>(literal)) return TakesNil(type);
  if (TakesNil(type)) return false;
  try {
    FromLiteral(literal, type);
    return true;
  } catch (const Error&) {
    return false;
  }
}

class Parser {
 public:
  explicit Parser(std::string_view declarationText) : text(declarationText) {}

  Declaration Parse() {
    Declaration declaration;
    declaration.name = Name("the method's name");
    if (TakeSign('(') && !TakeSign(')')) {
      do {
        declaration.parameters.push_back(ParseParameter());
      } while (TakeSign(','));
      ExpectSign(')', "\",\" or \")\"");
    }
    if (TakeWord("as")) {
      declaration.resultTypeName = Name("the result's type");
      declaration.result = TypeOf(declaration.resultTypeName);
    }
    SkipBlanks();
    if (at < text.size()) Fail("nothing more");
    return declaration;
  }

 private:
  Parameter ParseParameter() {
    Parameter parameter;
    parameter.byref = TakeWord("byref");
    if (!parameter.byref) TakeWord("byval");
    parameter.name = Name("a parameter's name");
    if (!TakeWord("as")) Fail("\"as\"");
    parameter.typeName = Name("the parameter's type");
    parameter.type = TypeOf(parameter.typeName);
    if (TakeSign('=')) {
      if (parameter.byref) Fail("no default for a byref parameter");
      parameter.defaultValue = ParseDefault(parameter.type);
    }
    return parameter;
  }

  // Up to the next comma or parenthesis outside quotes.
  Literal ParseDefault(Type type) {
    const size_t begin = at;
    bool quoted = false;
    while (at < text.size() && (quoted || (text[at] != ',' && text[at] != ')'))) {
      if (text[at++] == '"') quoted = !quoted;
    }
    const std::string_view constant = text.substr(begin, at - begin);
    Literal literal;
    try {
      literal = ParseLiteral(constant);
    } catch (const Error& error) {
      at = begin;
      Fail("a default value (" + std::string(error.what()) + ")");
    }
    if (!Fits(literal, type)) {
      at = begin;
      Fail(std::string("a default value of type ") + NameOf(type));
    }
    return literal;
  }

  Type TypeOf(const std::string& name) {
    const auto type = TypeByName(name);
    if (type) return *type;
    at -= name.size();
    Fail("a type that calls can carry");
  }

  void SkipBlanks() {
    while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
  }

  std::string Name(const std::string& what) {
    SkipBlanks();
    if (at == text.size() || !StartsName(text[at])) Fail(what);
    const size_t begin = at;
    while (at < text.size() && InName(text[at])) ++at;
    return std::string(text.substr(begin, at - begin));
  }

  bool TakeSign(char sign) {
    SkipBlanks();
    if (at == text.size() || text[at] != sign) return false;
    ++at;
    return true;
  }

  void ExpectSign(char sign, const std::string& what) {
    if (!TakeSign(sign)) Fail(what);
  }

  // A keyword; a longer name that begins like one isn't it.
  bool TakeWord(std::string_view word) {
    SkipBlanks();
    const size_t end = at + word.size();
    if (end > text.size() || !SameName(text.substr(at, word.size()), word)) return false;
    if (end < text.size() && InName(text[end])) return false;
    at = end;
    return true;
  }

  [[noreturn]] void Fail(const std::string& expected) const {
    throw Error("\"" + std::string(text) + "\", character " + std::to_string(at + 1) +
                ": expected " + expected);
  }

  std::string_view text;
  size_t at = 0;
};

}  // namespace

size_t Declaration::RequiredCount() const {
  return static_cast<size_t>(std::count_if(
      parameters.begin(), parameters.end(),
      [](const Parameter& parameter) { return !parameter.byref && !parameter.defaultValue; }));
}

Declaration ParseDeclaration(std::string_view text) { return Parser(text).Parse(); }

bool SameSignature(const Declaration& a, const Declaration& b) {
  const auto sameParameter = [](const Parameter& p, const Parameter& q) {
    return p.byref == q.byref && p.type == q.type &&
           (p.type != Type::kObject || SameName(p.typeName, q.typeName));
  };
  return SameName(a.name, b.name) && a.result == b.result &&
         (a.result != Type::kObject || SameName(a.resultTypeName, b.resultTypeName)) &&
         std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(),
                    b.parameters.end(), sameParameter);
}

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char p, char q) { return Lower(p) == Lower(q); });
}

}  // namespace host
