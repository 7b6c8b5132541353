#include "host/runtime/guarded_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "host/runtime/sanitizer.h"

namespace host::runtime {
namespace {

constexpr size_t kAlignment = 64;
constexpr size_t kGuard = 64;
constexpr uint8_t kGuardByte = 0xC3;

[[maybe_unused]] bool IsGuard(const uint8_t* begin, const uint8_t* end) {
  return std::all_of(begin, end, [](uint8_t byte) { return byte == kGuardByte; });
}

constexpr size_t RoundedUp(size_t size, size_t step) { return (size + step - 1) / step * step; }

// Blocks from kLarge on are kept for the next picture when they are returned, and lie in huge pages
// if they are large enough and the system has them: most of the time of a large picture would go
// into faults of its pages otherwise.
constexpr size_t kPage = 4096;
constexpr size_t kHugePage = size_t{2} << 20;
constexpr size_t kLarge = size_t{128} << 10;
constexpr size_t kInHugePages = 2 * kHugePage;

// Returned blocks, the latest last.
class KeptBlocks {
 public:
  ~KeptBlocks() {
    for (const Block& block : blocks) std::free(block.memory);
  }

  // A block of `size` bytes or, if `size` is large, somewhat more; its size is stored. Null when
  // there is no memory.
  void* Take(size_t size, size_t* taken) {
    *taken = size;
    if (size < kLarge) return std::aligned_alloc(kAlignment, size);
    const auto fits = std::find_if(blocks.rbegin(), blocks.rend(), [&](const Block& block) {
      return block.size >= size && block.size - size <= size / 4;
    });
    if (fits != blocks.rend()) {
      const Block found = *fits;
      blocks.erase(std::next(fits).base());
      kept -= found.size;
      *taken = found.size;
      return found.memory;
    }
    const size_t page = size < kInHugePages ? kPage : kHugePage;
    *taken = RoundedUp(size, page);
    void* memory = std::aligned_alloc(page, *taken);
    // Advice: where it isn't taken, pages are small.
    if (page == kHugePage && memory != nullptr) (void)madvise(memory, *taken, MADV_HUGEPAGE);
    return memory;
  }

  void Return(void* memory, size_t size) {
#ifdef HOST_SANITIZED
    constexpr size_t kMost = 0;  // so that a use after the return is noticed
#else
    constexpr size_t kMost = size_t{256} << 20;
#endif
    if (size < kLarge || size > kMost) return std::free(memory);
    while (kept + size > kMost) {
      std::free(blocks.front().memory);
      kept -= blocks.front().size;
      blocks.erase(blocks.begin());
    }
    blocks.push_back({memory, size});
    kept += size;
  }

 private:
  struct Block {
    void* memory;
    size_t size;
  };
  std::vector<Block> blocks;
  size_t kept = 0;
};

KeptBlocks& Kept() {
  static KeptBlocks blocks;
  return blocks;
}

}  // namespace

std::unique_ptr<GuardedMemory> GuardedMemory::Take(uint64_t size, size_t offset) {
  const uint64_t needed = kGuard + offset + size + kGuard;
  if (needed > PTRDIFF_MAX - kHugePage) return nullptr;
  size_t taken = 0;
  void* block = Kept().Take(RoundedUp(static_cast<size_t>(needed), kAlignment), &taken);
  if (block == nullptr) return nullptr;
  return std::unique_ptr<GuardedMemory>(new GuardedMemory(
      static_cast<uint8_t*>(block), taken, kGuard + offset, static_cast<size_t>(size)));
}

GuardedMemory::GuardedMemory(uint8_t* memoryBlock, size_t wholeSize, size_t offset,
                             size_t contentSize)
    : block(memoryBlock), blockSize(wholeSize), first(memoryBlock + offset), size(contentSize) {
  std::fill(block, first, kGuardByte);
  std::fill_n(first + size, kGuard, kGuardByte);
#ifdef HOST_SANITIZED
  ASAN_POISON_MEMORY_REGION(block, static_cast<size_t>(first - block));
  ASAN_POISON_MEMORY_REGION(first + size, static_cast<size_t>(block + blockSize - first - size));
#endif
}

GuardedMemory::~GuardedMemory() {
#ifdef HOST_SANITIZED
  ASAN_UNPOISON_MEMORY_REGION(block, blockSize);
#endif
  Kept().Return(block, blockSize);
}

bool GuardedMemory::GuardsIntact() const {
#ifdef HOST_SANITIZED
  return true;
#else
  return IsGuard(block, first) && IsGuard(first + size, first + size + kGuard);
#endif
}

}  // namespace host::runtime
