// The bytes of a host string.
#pragma once

#include "plugin/binding/records.h"

// Fills `out` with the bytes of `string` in `encoding` (kEncodingUnknown: as stored, unconverted).
// True when `out` was filled; it is then to be given back with REALDisposeStringData. Hosts that
// can't do this themselves are served through their older functions, with a copy of the plug-in's
// own that is followed by four zero bytes.
bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* out);

// Gives back what REALGetStringData filled: to the host what came from the host, to the C library
// what the plug-in copied itself. `data->data` is null afterwards.
void REALDisposeStringData(REALstringData* data);

// String data for the length of a scope.
class StringDataGuard {
 public:
  StringDataGuard(REALstring string, uint32_t encoding)
      : held_(REALGetStringData(string, encoding, &data_)) {}
  ~StringDataGuard() {
    if (held_) REALDisposeStringData(&data_);
  }
  StringDataGuard(const StringDataGuard&) = delete;
  StringDataGuard& operator=(const StringDataGuard&) = delete;

  explicit operator bool() const { return held_ && data_.data != nullptr; }
  const uint8_t* bytes() const { return static_cast<const uint8_t*>(data_.data); }
  int32_t length() const { return data_.length; }

 private:
  REALstringData data_{};
  bool held_;
};
