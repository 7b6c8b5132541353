// Names that nothing stands behind, found before anything is done.
#include <algorithm>

#include "runner/failure.h"
#include "runner/file_function.h"
#include "runner/names.h"
#include "runner/session.h"

namespace runner {
namespace {

bool Contains(const std::vector<std::string>& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& entry) { return host::SameName(entry, name); });
}

}  // namespace

void Session::FailUnknown(const Call& call, const std::vector<std::string>& more) const {
  std::vector<std::string> candidates = more;
  for (const host::RegisteredClass& type : runtime.registry.Classes()) {
    if (!type.extension && call.target == nullptr) candidates.push_back(type.name);
    if (host::SameName(type.name, "Picture"))
      for (const host::Callable& method : type.methods)
        candidates.push_back(method.declaration.name);
  }
  if (call.target == nullptr) {
    for (const host::Callable& method : runtime.registry.GlobalMethods())
      candidates.push_back(method.declaration.name);
    for (const std::string_view function : kFileFunctions) candidates.emplace_back(function);
  }
  throw Failure("there is no method" +
                std::string(call.target == nullptr ? ", class or value" : " of pictures") +
                " called " + call.name + DidYouMean(call.name, candidates));
}

void Session::CheckExpression(const Expression& expression,
                              const std::vector<std::string>& known) const {
  const Call* call = std::get_if<Call>(&expression.content);
  if (call == nullptr) return;
  const host::Registry& registry = runtime.registry;
  bool found = !registry.FindAll("Picture", call->name).empty();
  if (call->target == nullptr && !found) {
    const host::RegisteredClass* type = registry.FindClass(call->name);
    found = !registry.FindAll({}, call->name).empty() || (type != nullptr && !type->extension) ||
            IsFileFunction(call->name) || host::SameName(call->name, "self") ||
            (!call->hasParentheses && Contains(known, call->name));
  }
  if (!found) FailUnknown(*call, known);
  if (call->target != nullptr) CheckExpression(*call->target, known);
  for (const CallArgument& argument : call->arguments) CheckExpression(*argument.value, known);
}

void Session::CheckNames(const Statement& statement, std::vector<std::string>* known) const {
  const Call* call = std::get_if<Call>(&statement.expression.content);
  const bool defines = statement.assigned != nullptr && call != nullptr &&
                       call->target == nullptr && !call->hasParentheses;
  if (!defines) CheckExpression(statement.expression, *known);
  if (statement.assigned != nullptr) CheckExpression(*statement.assigned, *known);
  // What a statement shows can be used by name, the byref results of its calls included.
  if (call != nullptr) known->push_back(call->name);
  known->insert(known->end(), {"SampleCount", "Bits"});
  for (const host::RegisteredClass& type : runtime.registry.Classes())
    for (const host::Callable& method : type.methods)
      for (const host::Parameter& parameter : method.declaration.parameters)
        if (parameter.byref) known->push_back(parameter.name);
}

}  // namespace runner
