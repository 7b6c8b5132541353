#include "plugin/binding/strings.h"

#include <stdlib.h>
#include <string.h>

#include "plugin/binding/runtime.h"

namespace {

using GetStringData = uint8_t(REALstring, uint32_t, REALstringData*);

// Null on hosts that are older than the function. Which of the two ways a host goes never changes
// while it runs, so that dispose can tell by it whose buffer it is given.
GetStringData* HostGetStringData() {
  static GetStringData* pGetStringData;
  Bind(pGetStringData, "PluginGetStringData");
  return pGetStringData;
}

const char* StringGetCString(REALstring string) {
  static const char* (*pCString)(REALstring);
  return Bind(pCString, "StringGetCString") ? pCString(string) : nullptr;
}

using LenBMethod = int32_t(REALstring);

LenBMethod* LenB() {
  static LenBMethod* pLenB;
  if (pLenB == nullptr) {
    pLenB =
        reinterpret_cast<LenBMethod*>(REALLoadFrameworkMethod("LenB( s as string ) as integer"));
  }
  return pLenB;
}

// Copies the bytes of `string` as they stand, four zero bytes behind them.
bool CopyStoredBytes(REALstring string, uint32_t encoding, REALstringData* out) {
  const char* text = StringGetCString(string);
  const int32_t length = LenB()(string);
  if (text == nullptr || length < 0) return false;
  const size_t size = static_cast<size_t>(length);
  char* copy = static_cast<char*>(malloc(size + 4));
  if (copy == nullptr) return false;
  memcpy(copy, text, size);
  memset(copy + size, 0, 4);
  *out = {copy, length, encoding};
  // cppcheck-suppress memleak ; *out has it now
  return true;
}

}  // namespace

bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* out) {
  if (GetStringData* getStringData = HostGetStringData()) {
    return getStringData(string, encoding, out) != 0;
  }
  if (string == nullptr || LenB() == nullptr) return false;
  if (encoding == kEncodingUnknown || REALGetStringEncoding(string) == encoding) {
    return CopyStoredBytes(string, encoding, out);
  }
  REALstring converted = REALConvertString(string, encoding);
  if (converted == nullptr) return false;
  const bool copied = CopyStoredBytes(converted, encoding, out);
  REALUnlockString(converted);
  return copied;
}

void REALDisposeStringData(REALstringData* data) {
  if (HostGetStringData() != nullptr) {
    static void (*pDisposeStringData)(REALstringData*);
    if (Bind(pDisposeStringData, "PluginDisposeStringData")) pDisposeStringData(data);
  } else {
    free(data->data);
  }
  data->data = nullptr;
}
