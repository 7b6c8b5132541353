#include "plugin/binding/exceptions.h"

#include <string.h>

#include "plugin/binding/runtime.h"

void RaiseException(const char* className, const char* message, uint32_t /*errorNumber*/) {
  REALstring text = nullptr;
  if (message != nullptr && message[0] != '\0') {
    text = REALBuildString(message, static_cast<int32_t>(strlen(message)));
    if (text != nullptr) REALSetStringEncoding(text, kEncodingASCII);
  }
  REALobject exception = REALnewInstance(className);
  if (exception == nullptr) exception = REALnewInstance("RuntimeException");
  if (exception != nullptr) {
    REALSetPropValueString(exception, "Message", text);
    REALSetPropValueInt32(exception, "ErrorNumber", 0);
    REALRaiseException(exception);
    REALUnlockObject(exception);
  }
  if (text != nullptr) REALUnlockString(text);
}
