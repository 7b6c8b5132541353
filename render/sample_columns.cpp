#include "render/sample_columns.h"

#include "pixels/instruction_set.h"
#include "pixels/numeric.h"

namespace {

// The negative samples of a column, and all others, each added up from first to last. A sample that
// isn't a number is in neither.
struct Sums {
  double negative;
  double positive;
};

// Whole numbers less kMiddle, of 8 or 16 bits. A double holds every sum of these exactly, so they
// may be added up as whole numbers.
template <class Number, int32_t kMiddle>
struct WholeSamples {
  using Sample [[gnu::aligned(1), gnu::may_alias]] = Number;

  // As many as can be added up in 32 bits.
  static constexpr int32_t kBlock = 32768;

  static Sums Add(const Sample* samples, int32_t count) {
    int64_t negative = 0;
    int64_t positive = 0;
    while (count > 0) {
      const int32_t blockCount = count < kBlock ? count : kBlock;
      int32_t blockNegative = 0;
      int32_t blockPositive = 0;
      for (int32_t i = 0; i < blockCount; ++i) {
        const int32_t value = samples[i] - kMiddle;
        blockNegative += value < 0 ? value : 0;
        blockPositive += value > 0 ? value : 0;
      }
      negative += blockNegative;
      positive += blockPositive;
      samples += blockCount;
      count -= blockCount;
    }
    return {static_cast<double>(negative), static_cast<double>(positive)};
  }
};

template <class Number>
struct FloatSamples {
  using Sample [[gnu::aligned(1), gnu::may_alias]] = Number;

  // In one vector, which adds 0 to the sum that a sample isn't part of; as two sums it becomes a
  // branch that processors can't guess. The positive samples are added up negated.
  static Sums Add(const Sample* samples, int32_t count) {
    using Pair = double __attribute__((vector_size(16)));
    constexpr Pair kNothing{0.0, 0.0};
    Pair sums = kNothing;
    for (int32_t i = 0; i < count; ++i) {
      const double value = samples[i];
      const Pair signs{value, -value};
      sums += signs < kNothing ? signs : kNothing;
    }
    return {sums[0], 0.0 - sums[1]};
  }
};

// The sample at which a column begins.
constexpr int32_t FirstSample(int32_t column, int32_t columnCount, int32_t sampleCount) {
  return TruncateToInt32(static_cast<double>(column) / columnCount * sampleCount);
}

template <class Samples>
double Reduce(const uint8_t* bytes, int32_t sampleCount, const SampleColumns& columns) {
  const typename Samples::Sample* samples =
      reinterpret_cast<const typename Samples::Sample*>(bytes);
  double peak = 0;
  RunWidest([&] {
    for (int32_t column = 0; column < columns.count; ++column) {
      const int32_t first = FirstSample(column, columns.count, sampleCount);
      const int32_t count = FirstSample(column + 1, columns.count, sampleCount) - first;
      if (count <= 0) continue;
      const Sums sums = Samples::Add(samples + first, count);
      const double half = count * 0.5;
      const double lower = sums.negative / half;
      const double upper = sums.positive / half;
      columns.lower[column] = lower;
      columns.upper[column] = upper;
      if (upper > peak) peak = upper;
      if (-lower > peak) peak = -lower;
    }
  });
  return peak;
}

constexpr SampleFormat kFormats[] = {
    {7, 1, 127.0, Reduce<WholeSamples<int8_t, 0>>},
    {8, 1, 127.0, Reduce<WholeSamples<uint8_t, 128>>},
    {15, 2, 32767.0, Reduce<WholeSamples<int16_t, 0>>},
    {16, 2, 32767.0, Reduce<WholeSamples<uint16_t, 32768>>},
    {-32, 4, 1.0, Reduce<FloatSamples<float>>},
    {-64, 8, 1.0, Reduce<FloatSamples<double>>},
};

}  // namespace

const SampleFormat* FindSampleFormat(int32_t bits) {
  for (const SampleFormat& format : kFormats) {
    if (format.bits == bits) return &format;
  }
  return nullptr;
}
