// What memory alone takes: the least that an operation could.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace bench {

enum class Limit { none, copy, read, fill, twoReadsAndWrite, moveInPlace };

const char* NameOf(Limit limit);

// The rows that a case reads and writes, each `rowSize` bytes long.
struct Area {
  std::vector<const uint8_t*> sources;  // first rows
  uint8_t* target = nullptr;
  size_t rowSize = 0;
  size_t rows = 0;
  size_t stride = 0;         // from row to row, in sources and target alike
  double* number = nullptr;  // where libraries put a result that isn't a picture
};

// One pass over the area; empty for Limit::none and for what the area lacks.
std::function<void()> MakeLimit(Limit limit, const Area& area);

}  // namespace bench
