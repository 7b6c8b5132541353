// Memory for pixels and memory blocks: taken and returned here and nowhere else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace host::runtime {

class GuardedMemory {
 public:
  // `size` bytes that begin `offset` (0 to 63) bytes behind a 64-byte boundary, not initialised,
  // with guards on both sides. Null when there isn't so much.
  static std::unique_ptr<GuardedMemory> Take(uint64_t size, size_t offset);
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  uint8_t* First() const { return first; }
  size_t Size() const { return size; }
  // Whether both guards are as they were made. With the address sanitizer they can't be touched at
  // all, and this is always true.
  bool GuardsIntact() const;

 private:
  GuardedMemory(uint8_t* memoryBlock, size_t wholeSize, size_t offset, size_t contentSize);

  uint8_t* block;
  size_t blockSize;
  uint8_t* first;
  size_t size;
};

}  // namespace host::runtime
