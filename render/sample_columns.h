// Samples in memory, and what the columns of a waveform picture make of them.
#pragma once

#include <cstdint>

// The columns of a picture: `lower` from the negative samples, `upper` from the others.
struct SampleColumns {
  int32_t count;
  double* lower;
  double* upper;
};

// How samples lie in memory: one after the other from any address, in the processor's byte order.
struct SampleFormat {
  int32_t bits;      // the name that programs have for it; negative for floating point
  int32_t bytes;     // of a sample
  double fullScale;  // the greatest value
  // Divides the first `sampleCount` samples among the columns and gives each column twice the mean
  // of the negative and of the positive part of its samples; columns without samples keep what they
  // had. The result is the greatest distance of a column from 0.
  double (*reduce)(const uint8_t* samples, int32_t sampleCount, const SampleColumns& columns);
};

// Null for a number of bits that isn't supported.
const SampleFormat* FindSampleFormat(int32_t bits);

// The samples in a memory block of `size` bytes for a caller who doesn't say how many there are.
// Not positive for floating point, whose number of bits is negative (intended).
constexpr int32_t DefaultSampleCount(int32_t size, int32_t bits) { return size / ((bits + 7) / 8); }
