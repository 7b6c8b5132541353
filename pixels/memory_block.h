// The bytes of the host's memory blocks.
#pragma once

#include "plugin/binding/runtime.h"

// Where a block's bytes are and how many there are, as the host tells it. They stay there as long
// as the program doesn't resize the block, which it can't do during a call.
struct MemoryBlockBytes {
  uint8_t* data = nullptr;  // null where the host gives no pointer
  int32_t size = 0;         // 0 where the host doesn't tell the size
  bool sizeKnown = false;

  // Whether the first `count` bytes may be used. Where the host doesn't tell the size, the program
  // answers for it.
  bool Holds(int64_t count) const { return data != nullptr && (!sizeKnown || count <= size); }
};

// What the host tells of `block`: first its size, then its pointer.
inline MemoryBlockBytes BytesOfMemoryBlock(REALmemoryBlock block) {
  MemoryBlockBytes bytes;
  const int32_t told = REALMemoryBlockGetSize(block);
  bytes.sizeKnown = HasMemoryBlockGetSize() && told >= 0;
  bytes.size = told < 0 ? 0 : told;
  bytes.data = static_cast<uint8_t*>(REALMemoryBlockGetPtr(block));
  return bytes;
}

// A memory block kept locked for the length of a scope.
class LockedMemoryBlock {
 public:
  explicit LockedMemoryBlock(REALmemoryBlock block)
      : block_(block),
        locked_(REALLockObject(AsObject(block))),
        bytes_(BytesOfMemoryBlock(block)) {}
  ~LockedMemoryBlock() {
    if (locked_) REALUnlockObject(AsObject(block_));
  }
  LockedMemoryBlock(const LockedMemoryBlock&) = delete;
  LockedMemoryBlock& operator=(const LockedMemoryBlock&) = delete;

  const MemoryBlockBytes& bytes() const { return bytes_; }

 private:
  REALmemoryBlock block_;
  bool locked_;
  MemoryBlockBytes bytes_;
};
