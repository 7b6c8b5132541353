// Cases whose result is a value.
#pragma once

#include <memory>

#include "bench/map_case.h"

namespace bench {

// `call` gives the result and `expected` what it has to be; libraries give theirs as a number.
template <class Value>
Work ValueWork(Size size, const std::vector<Picture>& sources, const std::function<Value()>& call,
               const std::function<Value()>& expected) {
  const auto number = std::make_shared<double>();
  Work work;
  work.sources = sources;
  work.area = AreaOf(sources, nullptr, WholeOf(size));
  work.area.number = number.get();
  work.pixels = size.Pixels();
  work.call = [call] { call(); };
  work.targetIsRight = [number, expected] { return *number == static_cast<double>(expected()); };
  work.check = [call, expected]() -> std::string {
    const Value got = call();
    const Value wanted = expected();
    if (got == wanted) return {};
    return std::to_string(got) + ", expected " + std::to_string(wanted);
  };
  return work;
}

// Pixels of a picture for which `holds`.
template <class Condition>
int64_t CountPixels(const Picture& picture, const Condition& holds) {
  int64_t count = 0;
  for (int32_t y = 0; y < picture->Height(); ++y) {
    const uint8_t* row = picture->Row(y);
    for (int32_t x = 0; x < picture->Width(); ++x) {
      count += holds(ReadPixel(picture->Layout(), row, x)) ? 1 : 0;
    }
  }
  return count;
}

}  // namespace bench
