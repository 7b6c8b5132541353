// Pictures through a table of 256 bytes for each channel.
#pragma once

#include "pixels/rows.h"

struct ChannelTables {
  static constexpr int32_t kValues = 256;
  uint8_t red[kValues];
  uint8_t green[kValues];
  uint8_t blue[kValues];
};

constexpr Pixel LookUp(Pixel p, const ChannelTables& tables) {
  return {tables.red[p.red], tables.green[p.green], tables.blue[p.blue]};
}

#if defined(PICTURE_CHOOSES_INSTRUCTION_SET) && !defined(__clang__)
#define PICTURE_TABLES_IN_REGISTERS 1

// AVX-512 holds a table in four registers and looks 32 values up at a time: four times as fast as
// one after the other. (Compiled for less, this would be slower than that; clang has no such
// shuffles.)
namespace in_registers {

using Lanes = uint16_t __attribute__((vector_size(64)));
using Words = uint32_t __attribute__((vector_size(64)));
constexpr int32_t kCount = 32;

// Pairs of neighbours of a table, 32 in each part.
struct Table {
  Lanes pairs[4];
};

inline void Load(const uint8_t* values, Table& table) {
  __builtin_memcpy(&table, values, sizeof table);
}

inline void LookUp(const Table& table, Lanes& value) {
  const Lanes pair = value >> 1;
  const Lanes lower = __builtin_shuffle(table.pairs[0], table.pairs[1], pair);
  const Lanes upper = __builtin_shuffle(table.pairs[2], table.pairs[3], pair);
  const Lanes found = (pair & 64) != 0 ? upper : lower;
  value = (found >> ((value & 1) << 3)) & 255;
}

// The bytes of 32 pixels, each kind in lanes of its own: of the first 16 in the lower halves of
// pairs of lanes, of the others in the upper ones.
struct Bytes {
  Lanes at[4];
};

inline void Split(const Word* pixels, Bytes& bytes) {
  Words first;
  Words second;
  __builtin_memcpy(&first, pixels, sizeof first);
  __builtin_memcpy(&second, pixels + 16, sizeof second);
  const Lanes even = reinterpret_cast<Lanes>((first & 0xFFFF) | second << 16);
  const Lanes odd = reinterpret_cast<Lanes>(first >> 16 | (second & 0xFFFF0000));
  bytes = {{even & 255, even >> 8, odd & 255, odd >> 8}};
}

inline void Join(const Bytes& bytes, Word* pixels) {
  const Words even = reinterpret_cast<Words>(bytes.at[0] | bytes.at[1] << 8);
  const Words odd = reinterpret_cast<Words>(bytes.at[2] | bytes.at[3] << 8);
  const Words first = (even & 0xFFFF) | odd << 16;
  const Words second = even >> 16 | (odd & 0xFFFF0000);
  __builtin_memcpy(pixels, &first, sizeof first);
  __builtin_memcpy(pixels + 16, &second, sizeof second);
}

struct Tables {
  Table red;
  Table green;
  Table blue;
};

template <Layout kTo, Layout kFrom>
void LookUpRow(int32_t count, const Tables& tables, Word* target, const Word* source) {
  using To = LayoutBits<kTo>;
  using From = LayoutBits<kFrom>;
  constexpr int kFourth = 6 - (To::kRed + To::kGreen + To::kBlue) / 8;
  for (int32_t x = 0; x < count; x += kCount) {
    Bytes from;
    Split(source + x, from);
    LookUp(tables.red, from.at[From::kRed / 8]);
    LookUp(tables.green, from.at[From::kGreen / 8]);
    LookUp(tables.blue, from.at[From::kBlue / 8]);
    Bytes to;
    to.at[To::kRed / 8] = from.at[From::kRed / 8];
    to.at[To::kGreen / 8] = from.at[From::kGreen / 8];
    to.at[To::kBlue / 8] = from.at[From::kBlue / 8];
    to.at[kFourth] = Lanes{} + static_cast<uint16_t>(To::kOpaque >> kFourth * 8);
    Join(to, target + x);
  }
}

}  // namespace in_registers
#endif

// Takes every pixel of `rectangle`, which lies inside the source, through the tables. The target
// may be the source; what it doesn't have is left out.
inline void MapThroughTables(const PictureEditor& target, const Rectangle& rectangle,
                             const ChannelTables& tables, const PictureEditor& source) {
  Rectangle rest = Within(target, rectangle);
#ifdef PICTURE_TABLES_IN_REGISTERS
  const Rectangle area = rest;
  const int32_t whole = (area.right - area.left) / in_registers::kCount * in_registers::kCount;
  if (CurrentInstructionSet() == InstructionSet::avx512 && whole > 0) {
    WithLayouts(
        [&]<Layout kTo, Layout kFrom>() {
          RunAvx512([&] {
            in_registers::Tables loaded;
            in_registers::Load(tables.red, loaded.red);
            in_registers::Load(tables.green, loaded.green);
            in_registers::Load(tables.blue, loaded.blue);
            for (int32_t y = area.top; y < area.bottom; ++y) {
              in_registers::LookUpRow<kTo, kFrom>(whole, loaded, target.PixelAt(area.left, y),
                                                  source.PixelAt(area.left, y));
            }
          });
        },
        target, source);
    rest.left += whole;
  }
#endif
  MapPixels(
      target, rest, [&](Pixel p) { return LookUp(p, tables); }, source);
}
