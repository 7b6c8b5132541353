#include "host/runtime/guarded_memory.h"

#include <algorithm>
#include <cstdlib>

#include "host/runtime/sanitizer.h"

namespace host::runtime {
namespace {

constexpr size_t kAlignment = 64;
constexpr size_t kGuard = 64;
constexpr uint8_t kGuardByte = 0xC3;

[[maybe_unused]] bool IsGuard(const uint8_t* begin, const uint8_t* end) {
  return std::all_of(begin, end, [](uint8_t byte) { return byte == kGuardByte; });
}

}  // namespace

std::unique_ptr<GuardedMemory> GuardedMemory::Take(uint64_t size, size_t offset) {
  const uint64_t needed = kGuard + offset + size + kGuard;
  const uint64_t rounded = (needed + kAlignment - 1) / kAlignment * kAlignment;
  if (rounded > PTRDIFF_MAX) return nullptr;
  void* block = std::aligned_alloc(kAlignment, static_cast<size_t>(rounded));
  if (block == nullptr) return nullptr;
  return std::unique_ptr<GuardedMemory>(
      new GuardedMemory(static_cast<uint8_t*>(block), static_cast<size_t>(rounded), kGuard + offset,
                        static_cast<size_t>(size)));
}

GuardedMemory::GuardedMemory(uint8_t* memoryBlock, size_t wholeSize, size_t offset,
                             size_t contentSize)
    : block(memoryBlock), blockSize(wholeSize), first(memoryBlock + offset), size(contentSize) {
  std::fill(block, first, kGuardByte);
  std::fill(first + size, block + blockSize, kGuardByte);
#ifdef HOST_SANITIZED
  ASAN_POISON_MEMORY_REGION(block, static_cast<size_t>(first - block));
  ASAN_POISON_MEMORY_REGION(first + size, static_cast<size_t>(block + blockSize - first - size));
#endif
}

GuardedMemory::~GuardedMemory() {
#ifdef HOST_SANITIZED
  ASAN_UNPOISON_MEMORY_REGION(block, blockSize);
#endif
  std::free(block);
}

bool GuardedMemory::GuardsIntact() const {
#ifdef HOST_SANITIZED
  return true;
#else
  return IsGuard(block, first) && IsGuard(first + size, block + blockSize);
#endif
}

}  // namespace host::runtime
