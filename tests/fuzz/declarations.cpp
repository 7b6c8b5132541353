// Declarations of methods. What is understood must be the same when it is spelt out and read again.
#include "host/declaration.h"
#include "host/error.h"
#include "tests/fuzz/spelling.h"
#include "tests/fuzz/target.h"

namespace fuzz {
namespace {

std::string Spelt(const host::Declaration& declaration) {
  std::string text = declaration.name + "(";
  for (const host::Parameter& parameter : declaration.parameters) {
    if (text.back() != '(') text += ", ";
    text += parameter.byref ? "byref " : "byval ";
    text += parameter.name + " as " + parameter.typeName;
    if (parameter.defaultValue) text += " = " + SpeltConstant(*parameter.defaultValue);
  }
  text += ')';
  if (declaration.result != host::Type::kNone) text += " as " + declaration.resultTypeName;
  return text;
}

void CheckSame(const host::Declaration& a, const host::Declaration& b, const std::string& text) {
  Require(host::SameSignature(a, b) && host::SameSignature(b, a), "another signature: " + text);
  Require(a.parameters.size() == b.parameters.size(), "other parameters: " + text);
  for (size_t i = 0; i < a.parameters.size(); ++i) {
    Require(a.parameters[i].name == b.parameters[i].name, "another name: " + text);
    Require(a.parameters[i].defaultValue == b.parameters[i].defaultValue,
            "another default: " + text);
  }
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace fuzz;
  // Plug-ins register them as C strings.
  const std::string_view text = TextOf(data, size).substr(0, TextOf(data, size).find('\0'));
  host::Declaration declaration;
  try {
    declaration = host::ParseDeclaration(text);
  } catch (const host::Error& error) {
    Require(std::string_view(error.what()).find(": expected ") != std::string_view::npos,
            "an error that doesn't say what was expected");
    return 0;
  }
  Require(declaration.RequiredCount() <= declaration.parameters.size(), "too many are required");
  const std::string spelt = Spelt(declaration);
  try {
    CheckSame(declaration, host::ParseDeclaration(spelt), spelt);
  } catch (const host::Error& error) {
    Require(false, error.what());
  }
  return 0;
}
