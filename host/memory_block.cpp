#include "host/memory_block.h"

#include "host/runtime/guarded_memory.h"
#include "host/runtime/host_state.h"

namespace host {

MemoryBlock::MemoryBlock(std::unique_ptr<runtime::GuardedMemory> zeroedMemory)
    : Object(Kind::kMemoryBlock), memory(std::move(zeroedMemory)) {}
MemoryBlock::~MemoryBlock() = default;

std::span<uint8_t> MemoryBlock::Bytes() { return {memory->First(), memory->Size()}; }
std::span<const uint8_t> MemoryBlock::Bytes() const { return {memory->First(), memory->Size()}; }

std::string MemoryBlock::Describe() const {
  return "MemoryBlock #" + std::to_string(Serial()) + " (" + std::to_string(memory->Size()) +
         " bytes)";
}

bool MemoryBlock::GuardsIntact() const { return memory->GuardsIntact(); }

void MemoryBlock::BeforeEnd() {
  if (!GuardsIntact()) runtime::Complain(Describe() + " was written beside its bytes");
}

void MemoryBlock::Dispose() { memory = nullptr; }

}  // namespace host
