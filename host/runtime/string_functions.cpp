#include <cstdlib>
#include <cstring>

#include "host/error.h"
#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"

namespace host::runtime {
namespace {

REALstring Give(HostState& state, std::string bytes, uint32_t encoding) {
  return reinterpret_cast<REALstring>(state.objects.Add(new String(std::move(bytes), encoding)));
}

}  // namespace

void LockString(HostState& state, REALstring handle) {
  if (handle == nullptr) return;
  if (String* string = LookUp<String>(state, handle, "REALLockString")) {
    state.objects.Retain(string);
  }
}

void UnlockString(HostState& state, REALstring handle) {
  if (handle == nullptr) return;
  if (String* string = LookUp<String>(state, handle, "REALUnlockString")) {
    state.objects.Release(string);
  }
}

REALstring BuildString(HostState& state, const char* bytes, int32_t length) {
  if (length < 0 || (bytes == nullptr && length > 0)) throw Error("there are no bytes");
  return Give(state, std::string(bytes == nullptr ? "" : bytes, static_cast<size_t>(length)),
              kEncodingUnknown);
}

uint32_t GetStringEncoding(HostState& state, REALstring handle) {
  const String* string = LookUp<String>(state, handle, "REALGetStringEncoding");
  return string == nullptr ? kEncodingUnknown : string->Encoding();
}

void SetStringEncoding(HostState& state, REALstring handle, uint32_t encoding) {
  if (String* string = LookUp<String>(state, handle, "REALSetStringEncoding")) {
    string->SetEncoding(encoding);
  }
}

REALstring ConvertString(HostState& state, REALstring handle, uint32_t encoding) {
  const String* string = LookUp<String>(state, handle, "REALConvertString");
  if (string == nullptr) return nullptr;
  auto converted = ConvertEncoding(string->Bytes(), string->Encoding(), encoding);
  return converted ? Give(state, std::move(*converted), encoding) : nullptr;
}

bool GetStringData(HostState& state, REALstring handle, uint32_t encoding, REALstringData* out) {
  const String* string = LookUp<String>(state, handle, "PluginGetStringData");
  if (string == nullptr || out == nullptr) return false;
  std::optional<std::string> converted;
  const bool asStored = encoding == kEncodingUnknown || string->Encoding() == kEncodingUnknown;
  if (!asStored) {
    converted = ConvertEncoding(string->Bytes(), string->Encoding(), encoding);
    if (!converted) return false;
  }
  const std::string& bytes = asStored ? string->Bytes() : *converted;
  if (bytes.size() > INT32_MAX - 4) return false;
  auto* data = static_cast<char*>(std::malloc(bytes.size() + 4));
  if (data == nullptr) return false;
  // NOLINTNEXTLINE(bugprone-not-null-terminated-result): the zeros come next
  std::memcpy(data, bytes.data(), bytes.size());
  std::memset(data + bytes.size(), 0, 4);
  const uint64_t serial = state.objects.NextSerial();
  state.stringData[data] = {serial,
                            "string data #" + std::to_string(serial) + " of " + string->Describe()};
  *out = {data, static_cast<int32_t>(bytes.size()), encoding};
  return true;
}

void DisposeStringData(HostState& state, REALstringData* data) {
  if (data == nullptr || state.stringData.erase(data->data) == 0) {
    throw Error("the data aren't what PluginGetStringData gave, or were disposed of before");
  }
  std::free(data->data);
  *data = {};
}

const char* StringGetCString(HostState& state, REALstring handle) {
  const String* string = LookUp<String>(state, handle, "StringGetCString");
  return string == nullptr ? nullptr : string->Bytes().c_str();
}

int32_t LenB(HostState& state, REALstring handle) {
  if (handle == nullptr) return 0;  // a nil string is an empty one to the language
  const String* string = LookUp<String>(state, handle, "LenB");
  return string == nullptr ? 0 : static_cast<int32_t>(string->Bytes().size());
}

}  // namespace host::runtime
