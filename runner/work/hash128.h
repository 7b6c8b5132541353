// Hashes that stand for names and settings.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace runner {

// The first 128 bits of a SHA-256. Two texts with one hash aren't known and aren't to be expected.
struct Hash128 {
  uint64_t high = 0, low = 0;
  friend auto operator<=>(const Hash128&, const Hash128&) = default;
};

Hash128 HashOf(std::string_view bytes);

// 32 hexadecimal digits, as `sha256sum` begins.
std::string Hexadecimal(const Hash128& hash);

// For unordered containers: the bits are random already.
struct BucketOf {
  size_t operator()(const Hash128& hash) const { return static_cast<size_t>(hash.low); }
};

}  // namespace runner
