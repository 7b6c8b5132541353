// Exceptions of the host, raised from the plug-in.
#pragma once

#include "plugin/binding/records.h"

// Raises an exception of the class `className` with `message`; where the host can't make that
// class, a "RuntimeException"; where it can't make that either, nothing. The program sees it when
// the registered function returns, so the caller returns its failure value right after this call.
// "ErrorNumber" is always 0; the argument is accepted and not used.
void RaiseException(const char* className, const char* message, uint32_t errorNumber);

// What the plug-in raises for an object argument that must not be nil.
inline void RaiseNilObject(const char* message) {
  RaiseException("NilObjectException", message, 0);
}
