#include "runner/arithmetic.h"

#include <cmath>
#include <cstdint>

namespace runner {
namespace {

constexpr const char* kByZero = "division by zero";

double Real(const host::Literal& number) {
  const auto* whole = std::get_if<int64_t>(&number);
  return whole != nullptr ? static_cast<double>(*whole) : std::get<double>(number);
}

Calculated CalculateReal(double left, char operation, double right) {
  double result = 0;
  switch (operation) {
    case '+':
      result = left + right;
      break;
    case '-':
      result = left - right;
      break;
    case '*':
      result = left * right;
      break;
    case '/':
      if (right == 0) return {{}, kByZero};
      result = left / right;
      break;
    default:
      return {{}, "'\\' and Mod take whole numbers"};
  }
  if (!std::isfinite(result)) return {{}, "the result is too large"};
  return {result};
}

Calculated CalculateWhole(int64_t left, char operation, int64_t right) {
  int64_t result = 0;
  bool overflow = false;
  switch (operation) {
    case '+':
      overflow = __builtin_add_overflow(left, right, &result);
      break;
    case '-':
      overflow = __builtin_sub_overflow(left, right, &result);
      break;
    case '*':
      overflow = __builtin_mul_overflow(left, right, &result);
      break;
    default:
      if (right == 0) return {{}, kByZero};
      // The smallest number has no positive counterpart, and the processor traps on both.
      if (right == -1 && operation == '%') break;
      if (right == -1)
        overflow = __builtin_sub_overflow(int64_t{0}, left, &result);
      else
        result = operation == '%' ? left % right : left / right;
  }
  if (overflow) return {{}, "the result doesn't fit 64 bits"};
  return {result};
}

}  // namespace

bool IsNumber(const host::Literal& literal) {
  return std::holds_alternative<int64_t>(literal) || std::holds_alternative<double>(literal);
}

Calculated Calculate(const host::Literal& left, char operation, const host::Literal& right) {
  const auto* a = std::get_if<int64_t>(&left);
  const auto* b = std::get_if<int64_t>(&right);
  if (a != nullptr && b != nullptr && operation != '/') return CalculateWhole(*a, operation, *b);
  return CalculateReal(Real(left), operation, Real(right));
}

}  // namespace runner
