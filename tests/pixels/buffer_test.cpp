#include "pixels/buffer.h"

#include <gtest/gtest.h>

namespace {

TEST(BufferSize, IsFrom1ByteToWhatASigned32BitNumberCounts) {
  constexpr int64_t kMost = 2147483647;
  EXPECT_FALSE(IsBufferSize(-1));
  EXPECT_FALSE(IsBufferSize(0));
  EXPECT_TRUE(IsBufferSize(1));
  EXPECT_TRUE(IsBufferSize(kMost));
  EXPECT_FALSE(IsBufferSize(kMost + 1));
  EXPECT_FALSE(IsBufferSize(int64_t{1} << 32 | 1)) << "more than 32 bits hold";
}

}  // namespace
