#include "tests/host/host_test.h"

namespace host {
namespace {

class MemoryBlockTest : public HostTest {
 protected:
  void* Pointer(REALmemoryBlock block) {
    return Find<void*(REALmemoryBlock)>("memoryBlockGetPtr")(block);
  }
  int32_t Size(REALmemoryBlock block) {
    return Find<int32_t(REALmemoryBlock)>("memoryBlockGetSize")(block);
  }
};

TEST_F(MemoryBlockTest, NewBlocksAreZeroFilled) {
  const Ref<MemoryBlock> block =
      AdoptHandle<MemoryBlock>(Find<REALmemoryBlock(int32_t)>("newMemoryBlock")(1024));
  EXPECT_EQ(Size(block.Handle()), 1024);
  EXPECT_EQ(Pointer(block.Handle()), block->Bytes().data());
  for (const uint8_t byte : block->Bytes()) ASSERT_EQ(byte, 0);
  EXPECT_EQ(block->References(), 1);
}

TEST_F(MemoryBlockTest, NegativeSizesGiveNilAndZeroAnEmptyBlock) {
  auto* make = Find<REALmemoryBlock(int32_t)>("newMemoryBlock");
  EXPECT_EQ(make(-1), nullptr);
  const Ref<MemoryBlock> empty = AdoptHandle<MemoryBlock>(make(0));
  EXPECT_EQ(Size(empty.Handle()), 0);
}

TEST_F(MemoryBlockTest, SizeAndPointerCanBeHidden) {
  const uint8_t bytes[] = {1, 2, 3};
  const Ref<MemoryBlock> block = host.NewMemoryBlock(std::span<const uint8_t>(bytes));
  EXPECT_EQ(block->Bytes()[2], 3);
  block->HideSize();
  EXPECT_EQ(Size(block.Handle()), -1);
  EXPECT_NE(Pointer(block.Handle()), nullptr);
  block->HidePointer();
  EXPECT_EQ(Pointer(block.Handle()), nullptr);
}

}  // namespace
}  // namespace host
