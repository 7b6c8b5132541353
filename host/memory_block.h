// Memory blocks.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "host/object.h"

namespace host {

namespace runtime {
class GuardedMemory;
}

class MemoryBlock final : public Object {
 public:
  std::span<uint8_t> Bytes();
  std::span<const uint8_t> Bytes() const;
  std::string Describe() const override;

  // Makes the block one whose size nobody knows: the plug-in is told -1.
  void HideSize() { sizeHidden = true; }
  // Makes the plug-in get nil for the block's bytes.
  void HidePointer() { pointerHidden = true; }
  bool SizeHidden() const { return sizeHidden; }
  bool PointerHidden() const { return pointerHidden; }

  // Whether nobody wrote just before or just after the bytes; the census looks at this too.
  bool GuardsIntact() const;

  // Made by Host::NewMemoryBlock; zero-filled.
  explicit MemoryBlock(std::unique_ptr<runtime::GuardedMemory> zeroedMemory);

 private:
  ~MemoryBlock() override;
  void BeforeEnd() override;
  void Dispose() override;

  std::unique_ptr<runtime::GuardedMemory> memory;
  bool sizeHidden = false;
  bool pointerHidden = false;
};

}  // namespace host
