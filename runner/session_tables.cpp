// Colour tables, looked at before anything is done.
#include <algorithm>

#include "runner/session.h"

namespace runner {
namespace {

bool IsConstant(const CallArgument& argument) {
  return std::holds_alternative<host::Literal>(argument.value->content);
}

}  // namespace

void Session::PrepareExpression(const Expression& expression) {
  const Call* call = std::get_if<Call>(&expression.content);
  if (call == nullptr) return;
  if (call->target != nullptr) PrepareExpression(*call->target);
  for (const CallArgument& argument : call->arguments) PrepareExpression(*argument.value);
  if (call->target != nullptr) return;
  if (IsTableFunction(call->name) && call->hasParentheses &&
      std::all_of(call->arguments.begin(), call->arguments.end(), IsConstant))
    ReadFile(*call);
  const host::RegisteredClass* type = runtime.registry.FindClass(call->name);
  if (type == nullptr || type->extension || !imageOptions.warn) return;
  for (const host::Callable& method : type->methods) {
    const std::string& table = method.declaration.name;
    const bool given = std::any_of(
        call->arguments.begin(), call->arguments.end(),
        [&](const CallArgument& argument) { return host::SameName(argument.name, table); });
    if (method.setter != nullptr && !given)
      imageOptions.warn(type->name +
                        " is given no table and makes every pixel that it processes black; " +
                        table + " = cube(\"file.cube\") gives it one");
  }
}

void Session::Prepare(const Statement& statement) {
  PrepareExpression(statement.expression);
  if (statement.assigned != nullptr) PrepareExpression(*statement.assigned);
}

}  // namespace runner
