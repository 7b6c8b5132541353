// Pixels of one exact colour.
#pragma once

#include "pixels/layout.h"

// The bits of a word that hold red, green and blue.
template <Layout kLayout>
inline constexpr uint32_t kChannelBits =
    uint32_t{255} << LayoutBits<kLayout>::kRed | uint32_t{255} << LayoutBits<kLayout>::kGreen |
    uint32_t{255} << LayoutBits<kLayout>::kBlue;

// Whether the pixel in `word` has exactly `colour`: Unpack<kLayout>(word) == colour, as one
// comparison. The fourth byte takes no part.
template <Layout kLayout>
constexpr bool HasColour(uint32_t word, Pixel colour) {
  return ((word ^ Pack<kLayout>(colour)) & kChannelBits<kLayout>) == 0;
}
