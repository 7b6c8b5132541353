#include <cstring>

#include "host/runtime/functions.h"
#include "host/runtime/guarded_call.h"
#include "host/runtime/guarded_memory.h"

namespace host::runtime {

MemoryBlock* MakeMemoryBlock(HostState& state, size_t size) {
  auto memory = GuardedMemory::Take(size, 0);
  if (memory == nullptr) return nullptr;
  std::memset(memory->First(), 0, size);
  return state.objects.Add(new MemoryBlock(std::move(memory)));
}

REALmemoryBlock NewMemoryBlock(HostState& state, int32_t size) {
  if (size < 0) return nullptr;
  return reinterpret_cast<REALmemoryBlock>(MakeMemoryBlock(state, static_cast<size_t>(size)));
}

void* MemoryBlockPointer(HostState& state, REALmemoryBlock handle) {
  MemoryBlock* block = LookUp<MemoryBlock>(state, handle, "memoryBlockGetPtr");
  return block == nullptr || block->PointerHidden() ? nullptr : block->Bytes().data();
}

int32_t MemoryBlockSize(HostState& state, REALmemoryBlock handle) {
  const MemoryBlock* block = LookUp<MemoryBlock>(state, handle, "memoryBlockGetSize");
  if (block == nullptr) return 0;
  return block->SizeHidden() ? -1 : static_cast<int32_t>(block->Bytes().size());
}

}  // namespace host::runtime
