// Arithmetic on constant numbers, as the host's language does it.
#pragma once

#include "host/value.h"

namespace runner {

struct Calculated {
  host::Literal value;
  const char* mistake = nullptr;  // "division by zero"; null: the value counts
};

// Whether arithmetic takes the constant: a whole number or a double.
bool IsNumber(const host::Literal& literal);

// One of + - * / \ and % for Mod, between two numbers. + - * give a whole number where both are
// one; / gives a double always; \ and Mod take whole numbers alone and round towards zero, so that
// a remainder has the sign of `left`.
Calculated Calculate(const host::Literal& left, char operation, const host::Literal& right);

}  // namespace runner
