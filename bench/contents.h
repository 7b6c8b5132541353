// What the pictures of the cases show. Each is a function of the place, so that it is the same at
// every run.
#pragma once

#include "bench/stage.h"

namespace bench {

// A number without any order, from two.
constexpr uint32_t Scatter(uint32_t x, uint32_t y) {
  uint32_t h = x * 0x9E3779B1U ^ y * 0x85EBCA77U;
  h = (h ^ h >> 15) * 0x2C1B3C6DU;
  h = (h ^ h >> 12) * 0x297A2D39U;
  return h ^ h >> 15;
}

constexpr int Clamped(int value) { return value < 0 ? 0 : value > 255 ? 255 : value; }

// Like a photograph: colours that change slowly, with grain, and grey tiles here and there.
constexpr Rgb Photo(int32_t x, int32_t y) {
  const uint32_t grain = Scatter(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
  const auto wave = [](int32_t at, int32_t period) {
    const int32_t place = at % (2 * period);
    return (place < period ? place : 2 * period - place) * 255 / period;
  };
  const auto noise = [&](int shift) { return static_cast<int>(grain >> shift & 15) - 8; };
  const Rgb colour{Clamped(wave(x, 700) + noise(0)), Clamped(wave(y + x / 3, 500) + noise(4)),
                   Clamped(wave(y, 900) + noise(8))};
  const bool grey = (x / 16 + y / 16) % 5 == 0;
  return grey ? Rgb{colour.green, colour.green, colour.green} : colour;
}

// Every colour anywhere.
constexpr Rgb Noise(int32_t x, int32_t y) {
  const uint32_t bits = Scatter(static_cast<uint32_t>(x) + 77, static_cast<uint32_t>(y));
  return {static_cast<int>(bits & 255), static_cast<int>(bits >> 8 & 255),
          static_cast<int>(bits >> 16 & 255)};
}

constexpr Rgb White(int32_t, int32_t) { return {255, 255, 255}; }
constexpr Rgb Black(int32_t, int32_t) { return {0, 0, 0}; }

constexpr Rgb Grey(int32_t x, int32_t y) {
  const int value = Photo(x, y).green;
  return {value, value, value};
}

}  // namespace bench
