// Memory of the C library, for the length of a scope.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <limits>

// Whether an operation may ask for `size` bytes at all: at least one, and no more than a signed
// 32-bit number counts, however wide pointers are.
constexpr bool IsBufferSize(int64_t size) {
  return size >= 1 && size <= std::numeric_limits<int32_t>::max();
}

// A block of memory, freed at the end of the scope; false where there was none to be had.
class Buffer {
 public:
  // `size` bytes as they come.
  static Buffer Uncleared(size_t size) { return Buffer(malloc(size)); }
  // `size` zero bytes.
  static Buffer Zeroed(size_t size) { return Buffer(calloc(size, 1)); }
  ~Buffer() { free(bytes_); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  explicit operator bool() const { return bytes_ != nullptr; }
  uint8_t* bytes() const { return bytes_; }

 private:
  explicit Buffer(void* bytes) : bytes_(static_cast<uint8_t*>(bytes)) {}

  uint8_t* bytes_;
};
